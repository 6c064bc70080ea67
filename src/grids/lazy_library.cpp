// src/grids/lazy_library.cpp - shared libraries opened on first use.
#include "grids/lazy_library.h"

#include <dlfcn.h>

#include <mutex>
#include <stdexcept>
#include <string>

namespace invsetup::lazy {

void* library_function(const char* library, const char* function) {
    // dlopen keeps its own count: opening a library again hands back the same handle.
    void* handle = dlopen(library, RTLD_NOW | RTLD_GLOBAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        throw std::runtime_error("the library " + std::string(library) + " could not be loaded" +
                                 (reason ? std::string(": ") + reason : std::string()));
    }
    void* address = dlsym(handle, function);
    if (address == nullptr)
        throw std::runtime_error("the library " + std::string(library) + " has no function " + function);
    return address;
}

}  // namespace invsetup::lazy
