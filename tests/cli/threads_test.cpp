// tests/cli/threads_test.cpp - a run on two threads writes the same bytes as a run on one, and a run
// that fails on two threads leaves the same files and says the same as on one.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace invsetup::testing;

/// The magnetic example with a survey dense enough to be split between threads: 24,000 readings on
/// 120 lines and 14,400 scattered topography points.
class ThreadCount : public ::testing::Test {
protected:
    TempDir dir;
    fs::path survey = dir.path() / "survey";

    void SetUp() override {
        copy_example("magnetic", survey);
        auto hills = [](double x, double y) { return 1000 + 30 * std::sin(x / 400) * std::cos(y / 300); };
        std::string readings = "x,y,z,tmi,line\r\n";
        for (int line = 0; line < 120; ++line)
            for (int n = 0; n < 200; ++n) {
                const double x = 500000 + 20.0 * n + 3.3, y = 7000000 + 33.3 * line + 7.1 * std::sin(n);
                readings += std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(hills(x, y) + 80) + "," +
                            std::to_string(std::cos(x / 500) * 40 + n % 7) + "," + std::to_string(1000 + line) + "\r\n";
            }
        write_file_bytes(survey / "mag_data.csv", readings);
        std::string topo = "x,y,z\r\n";
        for (int row = 0; row < 120; ++row)
            for (int column = 0; column < 120; ++column) {
                const double x = 499300 + 45.0 * column + 11 * std::sin(row * 1.7 + column);
                const double y = 6999300 + 45.0 * row + 11 * std::cos(column * 2.3 + row);
                topo += std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(hills(x, y)) + "\r\n";
            }
        write_file_bytes(survey / "topo.xyz", topo);
    }

    CliRun create(const char* threads, const std::string& run) {
        setenv("INVSETUP_THREADS", threads, 1);
        CliRun result = run_cli("create --quiet " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / run));
        unsetenv("INVSETUP_THREADS");
        return result;
    }
};

TEST_F(ThreadCount, OneAndTwoThreadsWriteTheSamePackage) {
    const CliRun one = create("1", "one");
    const CliRun two = create("2", "two");
    ASSERT_EQ(one.exit_code, 0) << one.err;
    ASSERT_EQ(two.exit_code, 0) << two.err;
    EXPECT_EQ(one.err, two.err);
    const auto first = package(dir.path() / "one"), second = package(dir.path() / "two");
    ASSERT_EQ(first.size(), second.size());
    for (const auto& [name, bytes] : first) EXPECT_TRUE(second.at(name) == bytes) << name;
    EXPECT_GT(first.at("mag.obs").size(), 1000u * 60);  // the survey filled many columns
}

TEST_F(ThreadCount, AFailureLeavesTheSameFilesAndMessages) {
    // Topography on one line: gridding fails while the survey is being read on the other thread.
    std::string topo = "x,y,z\r\n";
    for (int n = 0; n < 100; ++n) topo += std::to_string(499500 + 50 * n) + ",7002000,1000\r\n";
    write_file_bytes(survey / "topo.xyz", topo);
    const CliRun one = create("1", "one");
    const CliRun two = create("2", "two");
    EXPECT_EQ(one.exit_code, 1);
    EXPECT_EQ(two.exit_code, 1);
    EXPECT_NE(one.err.find("All Points in the topography file are colinear"), std::string::npos) << one.err;
    EXPECT_EQ(one.err, two.err);
    EXPECT_EQ(package(dir.path() / "one"), package(dir.path() / "two"));
}

}  // namespace
