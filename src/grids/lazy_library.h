// src/grids/lazy_library.h - GDAL, FreeImage and the TIFF library, opened the first time a grid or a picture is
// touched. Between them they bring some 130 shared libraries; a run without grids, and a plain
// `invsetup --version`, never loads them. Only the grid layer's own .cpp files include this.
#pragma once

namespace invsetup::lazy {

/// The address of `function` in the shared library `library` (opened on first use and kept for the
/// life of the process). Throws std::runtime_error naming the library and the function when either
/// can't be found.
void* library_function(const char* library, const char* function);

/// The libraries by the names the build found them under.
inline constexpr const char* gdal_library = INVSETUP_GDAL_LIBRARY;
inline constexpr const char* freeimage_library = INVSETUP_FREEIMAGE_LIBRARY;
inline constexpr const char* tiff_library = INVSETUP_TIFF_LIBRARY;

}  // namespace invsetup::lazy

// GDAL_CALL(GDALOpenEx)(...) calls GDALOpenEx through the lazily opened library, typed by its own
// declaration; each call site looks its function up once.
#define INVSETUP_LAZY_CALL(library, name)                                                                \
    ([] {                                                                                                 \
        static const auto function =                                                                      \
            reinterpret_cast<decltype(&::name)>(::invsetup::lazy::library_function(library, #name));     \
        return function;                                                                                  \
    }())
#define GDAL_CALL(name) INVSETUP_LAZY_CALL(::invsetup::lazy::gdal_library, name)
#define FREEIMAGE_CALL(name) INVSETUP_LAZY_CALL(::invsetup::lazy::freeimage_library, name)
#define TIFF_CALL(name) INVSETUP_LAZY_CALL(::invsetup::lazy::tiff_library, name)
