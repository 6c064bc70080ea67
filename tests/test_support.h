// tests/test_support.h - what the test programs share: a temporary directory per test, file helpers.
#pragma once
#include <filesystem>
#include <string>

namespace invsetup::testing {

/// A fresh directory under the system's temporary directory, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The whole file as bytes.
std::string read_file_bytes(const std::filesystem::path& path);
/// Writes the bytes as they are (no line-end translation).
void write_file_bytes(const std::filesystem::path& path, const std::string& bytes);
/// A fixture below tests/data.
std::filesystem::path test_data(const std::string& relative);

}  // namespace invsetup::testing
