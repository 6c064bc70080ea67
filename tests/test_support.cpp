// tests/test_support.cpp - shared test helpers.
#include "test_support.h"

#include <atomic>
#include <fstream>
#include <random>
#include <cstdio>
#include <sys/wait.h>
#include <sstream>
#include <stdexcept>

namespace invsetup::testing {

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    std::random_device random;
    auto base = std::filesystem::temp_directory_path();
    for (;;) {
        path_ = base / ("invsetup-test-" + std::to_string(random()) + "-" + std::to_string(counter++));
        if (std::filesystem::create_directory(path_)) break;
    }
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string read_file_bytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path.string());
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

void write_file_bytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

std::filesystem::path test_data(const std::string& relative) { return std::filesystem::path(INVSETUP_TEST_DATA) / relative; }

std::string quoted(const std::filesystem::path& path) {
    std::string text(1, '"');
    text.append(path.string());
    text.push_back('"');
    return text;
}

CliRun run_cli(const std::string& arguments) {
    CliRun run;
    TempDir scratch;
    const std::filesystem::path err_file = scratch.path() / "stderr.txt";
    const std::string command = quoted(INVSETUP_CLI) + " " + arguments + " 2>" + quoted(err_file);
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return run;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) run.out.append(buffer, n);
    const int status = pclose(pipe);
    run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (std::filesystem::exists(err_file)) run.err = read_file_bytes(err_file);
    return run;
}

}  // namespace invsetup::testing
