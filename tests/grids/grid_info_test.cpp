// tests/grids/grid_info_test.cpp - the grid-info command of the command line.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>

#include "grid_fixtures.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::read_file_bytes;
using testing::write_file_bytes;

testing::CliRun run_grid_info(const TempDir&, const std::filesystem::path& file) {
    return testing::run_cli("grid-info " + testing::quoted(file));
}

TEST(GridInfoCommand, PrintsSizeLimitsAndStatistics) {
    TempDir dir;
    write_file_bytes(dir.path() / "small.grd", "DSAA\n3 2\n100 120\n200 210\n0 4\n0 1 2\n3 4 1.70141e38\n");
    const testing::CliRun result = run_grid_info(dir, dir.path() / "small.grd");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    for (const char* line : {"Columns: 3\n", "Rows: 2\n", "X minimum: 100\n", "X maximum: 120\n", "Y spacing: 10\n",
                             "Present values: 5\n", "Null values: 1\n", "Mean: 2\n", "Maximum: 4\n"})
        EXPECT_NE(result.out.find(line), std::string::npos) << line << " in\n" << result.out;
}

TEST(GridInfoCommand, AFloatGeoTiffSaysNothingOnTheErrorStream) {
    // The TIFF library's "Internal error, unknown tag" lines are no fault of the grid.
    TempDir dir;
    testing::write_gdal_grid(dir.path() / "float.tif", "GTiff", 4, 3, 0, 30, 10, 10, testing::ramp_values(4, 3));
    const testing::CliRun result = run_grid_info(dir, dir.path() / "float.tif");
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("Columns: 4\n"), std::string::npos) << result.out;
}

TEST(GridInfoCommand, PrintsWhereAPictureLies) {
    TempDir dir;
    // A 1 x 1 BMP is small enough to write by hand: 24-bit, one blue pixel padded to 4 bytes.
    const std::string bmp = std::string("BM") + std::string("\x3a\0\0\0", 4) + std::string(4, '\0') +
                            std::string("\x36\0\0\0", 4) + std::string("\x28\0\0\0", 4) + std::string("\x01\0\0\0", 4) +
                            std::string("\x01\0\0\0", 4) + std::string("\x01\0\x18\0", 4) + std::string(4, '\0') +
                            std::string("\x04\0\0\0", 4) + std::string(16, '\0') + std::string("\xff\0\0\0", 4);
    write_file_bytes(dir.path() / "dot.bmp", bmp);
    write_file_bytes(dir.path() / "dot.bpw", "10\n0\n0\n-10\n500005\n7000095\n");
    const testing::CliRun result = run_grid_info(dir, dir.path() / "dot.bmp");
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_NE(result.out.find("Georeference: world file"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("X minimum: 500005\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Y maximum: 7000095\n"), std::string::npos) << result.out;

    // A pixel size that isn't finite would place the picture at "X maximum: Inf": it is refused.
    write_file_bytes(dir.path() / "dot.bpw", "inf\n0\n0\n-10\n500005\n7000095\n");
    const testing::CliRun refused = run_grid_info(dir, dir.path() / "dot.bmp");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_NE(refused.err.find("can't be placed on the map: its sidecar " + (dir.path() / "dot.bpw").string() +
                               " is refused (it gives the x pixel size as inf"),
              std::string::npos)
        << refused.err;
    EXPECT_EQ(refused.out.find("Inf"), std::string::npos) << refused.out;
}

TEST(GridInfoCommand, UnreadableFileFailsWithTheMessage) {
    TempDir dir;
    write_file_bytes(dir.path() / "notes.grd", "not a grid\n");
    const testing::CliRun result = run_grid_info(dir, dir.path() / "notes.grd");
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_NE(result.err.find("Failed to determine grid format"), std::string::npos) << result.err;
    const testing::CliRun missing = run_grid_info(dir, dir.path() / "absent.grd");
    EXPECT_EQ(missing.exit_code, 1);
    EXPECT_NE(missing.err.find("does not exist"), std::string::npos) << missing.err;
}

}  // namespace
}  // namespace invsetup
