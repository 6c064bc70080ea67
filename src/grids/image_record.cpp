// src/grids/image_record.cpp - the kind of a displayed or read file, and the loading of pictures.
#include "grids/image_record.h"
#include "grids/lazy_library.h"

#include <FreeImage.h>
#include <cpl_error.h>
#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

#include "session.h"

namespace invsetup {

namespace {

std::string upper_extension(const std::string& file_name) {
    std::string extension = std::filesystem::path(file_name).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return extension;
}

struct BitmapUnloader {
    void operator()(FIBITMAP* bitmap) const { FREEIMAGE_CALL(FreeImage_Unload)(bitmap); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapUnloader>;

// What the picture libraries said while the last picture was read. A picture that loads drops it
// (the TIFF library complains of every EXIF tag it doesn't know, which is no fault of the picture);
// one that can't be read is reported with the last complaint, the one that stopped the read.
thread_local std::string library_complaint;

void keep_complaint(const char* text) {
    if (text != nullptr && *text != '\0') library_complaint = text;
}

// FreeImage writes its complaints to the console by default; they are kept instead, to explain a
// picture it can't read.
void route_freeimage_messages() {
    static const bool routed = [] {
        FREEIMAGE_CALL(FreeImage_SetOutputMessage)([](FREE_IMAGE_FORMAT, const char* text) { keep_complaint(text); });
        // FreeImage's TIFF reader asks the TIFF library for every EXIF tag it knows, and the library
        // calls each one it lacks an "Internal error" on stderr. GDAL sets handlers of its own when its
        // TIFF driver starts, which then take these over (see load_raster).
        TIFF_CALL(TIFFSetErrorHandler)(nullptr);
        TIFF_CALL(TIFFSetWarningHandler)(nullptr);
        return true;
    }();
    (void)routed;
}

void copy_pixels(FIBITMAP* bitmap, ImageRecord& record) {
    Bitmap standard;
    if (FREEIMAGE_CALL(FreeImage_GetImageType)(bitmap) != FIT_BITMAP) {
        standard.reset(FREEIMAGE_CALL(FreeImage_ConvertToStandardType)(bitmap, TRUE));
        if (standard) bitmap = standard.get();
    }
    Bitmap colour(FREEIMAGE_CALL(FreeImage_ConvertTo32Bits)(bitmap));
    if (!colour) return;
    const auto width = static_cast<std::size_t>(record.width);
    record.pixels.resize(width * static_cast<std::size_t>(record.height));
    // FreeImage keeps the bottom row first.
    for (int row = 0; row < record.height; ++row) {
        const BYTE* line = FREEIMAGE_CALL(FreeImage_GetScanLine)(colour.get(), record.height - 1 - row);
        std::memcpy(record.pixels.data() + static_cast<std::size_t>(row) * width, line, width * 4);
    }
}

// Width and height of the picture, and its pixels when asked; false when FreeImage can't read it.
bool load_raster(ImageRecord& record, bool load_pixels) {
    route_freeimage_messages();
    library_complaint.clear();
    const std::string& name = record.file_name;
    FREE_IMAGE_FORMAT format = FREEIMAGE_CALL(FreeImage_GetFileType)(name.c_str(), 0);
    if (format == FIF_UNKNOWN) format = FREEIMAGE_CALL(FreeImage_GetFIFFromFilename)(name.c_str());
    if (format == FIF_UNKNOWN) return false;
    const int flags = !load_pixels && FREEIMAGE_CALL(FreeImage_FIFSupportsNoPixels)(format) ? FIF_LOAD_NOPIXELS : 0;
    // GDAL owns the TIFF library's error handler in this process, so the TIFF reader's complaints come
    // through GDAL's: its failures are kept, its warnings dropped.
    GDAL_CALL(CPLPushErrorHandler)([](CPLErr level, CPLErrorNum, const char* text) {
        if (level >= CE_Failure) keep_complaint(text);
    });
    Bitmap bitmap(FREEIMAGE_CALL(FreeImage_Load)(format, name.c_str(), flags));
    GDAL_CALL(CPLPopErrorHandler)();
    if (!bitmap) return false;
    record.width = static_cast<int>(FREEIMAGE_CALL(FreeImage_GetWidth)(bitmap.get()));
    record.height = static_cast<int>(FREEIMAGE_CALL(FreeImage_GetHeight)(bitmap.get()));
    if (load_pixels && FREEIMAGE_CALL(FreeImage_HasPixels)(bitmap.get())) copy_pixels(bitmap.get(), record);
    return record.width > 0 && record.height > 0;
}

void place_raster(ImageRecord& record) {
    const bool is_tiff = upper_extension(record.file_name) == "TIF" || upper_extension(record.file_name) == "TIFF";
    record.sidecar_name = find_sidecar_file(record.file_name);
    // A TIFF without a sidecar may carry its placement in its own tags. Its own placement also wins
    // over a sidecar any picture could have beside it (.tab, .hdr, .grf, .egb): only a world file of
    // the TIFF's own kind (.tfw) stands above its tags.
    const bool world_file = !record.sidecar_name.empty() && !upper_extension(record.sidecar_name).empty() &&
                            upper_extension(record.sidecar_name).back() == 'W';
    if (is_tiff && !world_file) {
        SidecarGeoreference own = read_sidecar_file(record.file_name);
        double x0 = 0, x1 = 0, y0 = 0, y1 = 0, dx = 0, dy = 0;
        if (record.sidecar_name.empty() || georeference_limits(own, record.width, record.height, x0, x1, y0, y1, dx, dy))
            record.sidecar_name = record.file_name;
    }
    record.georeference = read_sidecar_file(record.sidecar_name);
    record.georeference_file = record.sidecar_name;
    Array1<int>& ints = record.grid_ints;
    Array1<double>& reals = record.grid_reals;
    ints[grid_int::kind] = grid_kind_raster;
    ints[grid_int::raster_width] = record.width;
    ints[grid_int::columns] = record.width;
    ints[grid_int::rows] = record.height;
    ints[grid_int::bands] = 1;
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0, x_spacing = 0, y_spacing = 0;
    if (georeference_limits(record.georeference, record.width, record.height, x_min, x_max, y_min, y_max, x_spacing,
                            y_spacing)) {
        ints[grid_int::sub_kind] = record.georeference.kind == SidecarKind::tiff_tags ? raster_geotiff : raster_sidecar;
    } else {
        // Shown without a position: pixel numbers stand in for coordinates.
        ints[grid_int::sub_kind] = raster_unplaced;
        record.sidecar_name.clear();
        x_min = y_min = 1;
        x_max = record.width;
        y_max = record.height;
        x_spacing = y_spacing = 1;
    }
    reals[grid_real::x_min] = x_min;
    reals[grid_real::x_max] = x_max;
    reals[grid_real::y_min] = y_min;
    reals[grid_real::y_max] = y_max;
    reals[grid_real::x_spacing] = x_spacing;
    reals[grid_real::y_spacing] = y_spacing;
}

}  // namespace

ImageRecord::ImageRecord() : grid_ints(grid_int_count), grid_reals(grid_real_count) {
    grid_reals[grid_real::x_min] = 1000000.0;
    grid_reals[grid_real::x_max] = -1000000.0;
    grid_reals[grid_real::y_min] = 1000000.0;
    grid_reals[grid_real::y_max] = -1000000.0;
}

int image_kind_of(const std::string& file_name) {
    const std::string extension = upper_extension(file_name);
    if (extension == "HGT") return grid_kind_height;
    for (const char* raster : {"BMP", "JPG", "JPEG", "GIF", "TIF", "TIFF", "PNG", "TGA"})
        if (extension == raster) return grid_kind_raster;
    if (is_grid_file(file_name)) return grid_kind_gdal;
    for (const char* points : {"XYZ", "CSV", "OBS", "TXT", "DAT"})
        if (extension == points) return grid_kind_points;
    if (grid_format_name(file_name) == "XYZ") return grid_kind_points;
    return grid_kind_gdal;  // a format nothing here reads: the grid reader says so
}

int read_image_record(Session& session, ImageRecord& record, const std::string& file_name, int list_position,
                      bool load_pixels) {
    record = ImageRecord{};
    record.file_name = file_name;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file_name, error)) {
        session.dialogue.message_box("The specified image file : " + file_name + " does not exist");
        return record.status = -1;
    }
    const int kind = image_kind_of(file_name);
    switch (kind) {
    case grid_kind_points:
        record.grid_ints[grid_int::kind] = grid_kind_points;
        return record.status = 0;
    case grid_kind_raster: {
        if (list_position != 1) {
            session.dialogue.message_box("Raster files only valid as first image file");
            return record.status = -1;
        }
        if (!load_raster(record, load_pixels)) {
            const std::string complaint = library_complaint;
            const auto unreadable = [&] {
                session.dialogue.message_box("The picture " + file_name + " can't be read: " +
                                             (complaint.empty() ? std::string("its contents are damaged or of a kind "
                                                                              "the picture library doesn't know")
                                                                : complaint));
                return record.status = -1;
            };
            // FreeImage doesn't read every TIFF layout that carries a grid; GDAL may.
            const std::string extension = upper_extension(file_name);
            if (extension != "TIF" && extension != "TIFF") return unreadable();
            Array1<int> ints;
            Array1<double> reals;
            std::string text;
            int status = -1;
            GRDRDH(file_name, ints, reals, text, status);
            if (status < 0) return unreadable();
            record.width = ints[grid_int::columns];
            record.height = ints[grid_int::rows];
        }
        place_raster(record);
        if (!record.georeference.refusal.empty()) {
            session.dialogue.message_box("The picture " + file_name + " can't be placed on the map: its sidecar " +
                                         record.georeference_file + " is refused (" + record.georeference.refusal + ").");
            return record.status = -1;
        }
        return record.status = 0;
    }
    default: {
        if (grid_format_name(file_name).empty()) return record.status = -1;
        std::string text;
        int status = -1;
        GRDRDH(file_name, record.grid_ints, record.grid_reals, text, status);
        record.grid_ints[grid_int::kind] = kind;
        return record.status = 0;
    }
    }
}

}  // namespace invsetup
