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

/// A path in double quotes, for a shell command line.
std::string quoted(const std::filesystem::path& path);

/// What a run of the invsetup command line gave back.
struct CliRun {
    int exit_code = -1;
    std::string out;
    std::string err;
};
/// Runs the invsetup command line with `arguments` (already quoted where needed) and collects its
/// exit status, standard output and standard error.
CliRun run_cli(const std::string& arguments);

}  // namespace invsetup::testing
