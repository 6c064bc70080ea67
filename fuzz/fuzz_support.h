// fuzz/fuzz_support.h - what every harness shares: the input written as a file the reader opens.
#pragma once
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace invsetup::fuzz {

/// A folder of this process under the temporary folder, made once.
inline const std::filesystem::path& work_folder() {
    static const std::filesystem::path folder = [] {
        std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("invsetup-fuzz-" + std::to_string(getpid()));
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

/// Writes the bytes as `name` in the work folder and returns its path.
inline std::string input_file(const std::string& name, const std::uint8_t* data, std::size_t size) {
    const std::filesystem::path path = work_folder() / name;
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path.string();
}

}  // namespace invsetup::fuzz
