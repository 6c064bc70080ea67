// tests/test_support.cpp - shared test helpers.
#include "test_support.h"

#include <atomic>
#include <fstream>
#include <random>
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

}  // namespace invsetup::testing
