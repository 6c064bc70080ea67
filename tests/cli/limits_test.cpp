// tests/cli/limits_test.cpp - `invsetup limits`: the mesh limits of a definition from its data.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>

#include "test_support.h"

namespace {

using invsetup::testing::quoted;
using invsetup::testing::TempDir;
using invsetup::testing::read_file_bytes;
using invsetup::testing::test_data;
using invsetup::testing::write_file_bytes;

int exit_code_of(const std::string& arguments) { return invsetup::testing::run_cli(arguments).exit_code; }

std::string line_of(const std::string& text, const std::string& key) {
    const std::size_t start = text.find(key);
    if (start == std::string::npos) return "";
    return text.substr(start, text.find("\r\n", start) - start);
}

// A definition beside its data: observed points on x 500120..502980, y 7000040..7001960, and
// topography from 310 to 640 m. Mesh cells are 50 m across and 25 m high.
class LimitsCommand : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::copy_file(test_data("topo/limits.inp"), dir.path() / "inversion.inp");
        write_file_bytes(dir.path() / "mag_data.csv",
                         "x,y,z,tmi\r\n500120,7000040,35,57000\r\n502980,7001960,35,57100\r\n");
        write_file_bytes(dir.path() / "topo.xyz", "x y z\r\n500000 7000000 310\r\n504000 7000000 640\r\n"
                                                  "502000 7004000 400\r\n");
    }
    /// Runs `limits` on a definition here with the options, writing new.inp; gives the exit status.
    int limits(const std::string& options, const char* definition = "inversion.inp") {
        return exit_code_of("limits " + quoted(dir.path() / definition) + " " + options + " -o " +
                            quoted(dir.path() / "new.inp"));
    }
    std::string saved() { return read_file_bytes(dir.path() / "new.inp"); }
    TempDir dir;
};

TEST_F(LimitsCommand, ObservedDataGiveTheXAndYLimits) {
    ASSERT_EQ(limits("--observed"), 0);
    EXPECT_EQ(line_of(saved(), "X Range:").rfind("X Range: 500100.0", 0), 0u) << line_of(saved(), "X Range:");
    EXPECT_NE(line_of(saved(), "X Range:").find(" 503000.0"), std::string::npos);
    EXPECT_EQ(line_of(saved(), "Y Range:").rfind("Y Range: 7000000.0", 0), 0u) << line_of(saved(), "Y Range:");
    EXPECT_NE(line_of(saved(), "Y Range:").find(" 7002000.0"), std::string::npos);
    EXPECT_EQ(line_of(saved(), "Z Range:"), line_of(read_file_bytes(dir.path() / "inversion.inp"), "Z Range:"));
}

TEST_F(LimitsCommand, TopographyGivesTheZLimitsAndTheDepth) {
    ASSERT_EQ(limits("--topo"), 0);
    // 4000 m wide: a depth of 1000 below zero; the top 640 rises to 650.
    EXPECT_EQ(line_of(saved(), "Z Range:").rfind("Z Range: -1000.0", 0), 0u) << line_of(saved(), "Z Range:");
    EXPECT_NE(line_of(saved(), "Z Range:").find(" 650.0"), std::string::npos);
}

TEST_F(LimitsCommand, NeedsOneSourceAndAReadableDefinition) {
    EXPECT_EQ(limits(""), 2);
    EXPECT_EQ(limits("--observed --topo"), 2);
    EXPECT_EQ(limits("--topo", "absent.inp"), 1);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.inp"));
}

TEST_F(LimitsCommand, DataThatCantBeReadIsNamedOnTheErrorStreamWithoutWaiting) {
    // A pipe or a device would be read forever; an empty file or one without numbers holds no reading.
    write_file_bytes(dir.path() / "empty.csv", "");
    write_file_bytes(dir.path() / "names.csv", "x,y,z,tmi\r\n");
    std::filesystem::create_directory(dir.path() / "folder.csv");
    ASSERT_EQ(mkfifo((dir.path() / "pipe.csv").c_str(), 0600), 0);
    const std::string definition = read_file_bytes(dir.path() / "inversion.inp");
    const struct {
        std::string file;
        const char* reason;
    } cases[] = {
        {"empty.csv", "holds no reading with numbers in the columns given: the limits were not changed."},
        {"names.csv", "holds no reading with numbers in the columns given: the limits were not changed."},
        {"folder.csv", "is a folder, not a file that can be read."},
        {"pipe.csv", "is a pipe, not a file that can be read."},
        {"/dev/zero", "is a device, not a file that can be read."},
    };
    for (const auto& c : cases) {
        for (const char* option : {"--observed", "--topo"}) {
            SCOPED_TRACE(c.file + " " + option);
            std::string text = definition;
            const std::string key = std::string(option) == "--observed" ? "Obs data file  : " : "Topo data file : ";
            const std::size_t at = text.find(key) + key.size();
            text.replace(at, text.find("\r\n", at) - at, c.file);
            write_file_bytes(dir.path() / "damaged.inp", text);
            const invsetup::testing::CliRun run = invsetup::testing::run_cli(
                "limits " + quoted(dir.path() / "damaged.inp") + " " + option + " -o " + quoted(dir.path() / "new.inp"));
            EXPECT_EQ(run.exit_code, 1);
            EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
            EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.inp"));
        }
    }
}

}  // namespace
