// tests/grids/grid_file_test.cpp - headers, windows, nulls and statistics of grids in several formats.
#include "grids/grid_file.h"

#include <gtest/gtest.h>

#include <cmath>

#include "grid_fixtures.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::write_file_bytes;
using testing::write_gdal_grid;
using testing::ramp_values;

constexpr float null_float = -1e32f;

GridHeader header_of(const std::filesystem::path& path, int expected_status = 0) {
    GridHeader header;
    int status = -9;
    GRDRDH(path.string(), header.grid_ints, header.grid_reals, header.grid_text, status);
    EXPECT_EQ(status, expected_status) << path;
    return header;
}

GridWindow whole_grid(const std::filesystem::path& path) {
    GridWindow window;
    int status = -9;
    GRDRDGD(path.string(), window, -1e300, 1e300, 0, -1e300, 1e300, 0, status);
    EXPECT_EQ(status, 0) << path;
    return window;
}

// Surfer's text grid lists its rows from the south; a reader that assumed north-first rows would
// swap these values.
TEST(GridFormats, SurferTextRowsRunFromTheSouthAndBlanksAreNull) {
    TempDir dir;
    const auto path = dir.path() / "small.grd";
    write_file_bytes(path, "DSAA\r\n3 2\r\n100 120\r\n200 210\r\n0 5\r\n0 1 2\r\n3 4 1.70141e38\r\n");
    const GridHeader header = header_of(path);
    EXPECT_EQ(header.kind(), grid_kind_gdal);
    EXPECT_EQ(header.columns(), 3);
    EXPECT_EQ(header.rows(), 2);
    EXPECT_DOUBLE_EQ(header.x_min(), 100);
    EXPECT_DOUBLE_EQ(header.x_max(), 120);
    EXPECT_DOUBLE_EQ(header.y_min(), 200);
    EXPECT_DOUBLE_EQ(header.y_max(), 210);
    EXPECT_DOUBLE_EQ(header.x_spacing(), 10);
    EXPECT_DOUBLE_EQ(header.y_spacing(), 10);
    EXPECT_TRUE(is_valid_grid_header(header.grid_ints, header.grid_reals));

    const GridWindow grid = whole_grid(path);
    EXPECT_EQ(grid.value(1, 1), 0.0f);
    EXPECT_EQ(grid.value(3, 1), 2.0f);
    EXPECT_EQ(grid.value(1, 2), 3.0f);
    EXPECT_EQ(grid.value(3, 2), null_float);
}

// ESRI's text grid places its lower-left corner, lists rows from the north, and names its null.
TEST(GridFormats, EsriTextLimitsAreNodeCentresAndNoDataIsNull) {
    TempDir dir;
    const auto path = dir.path() / "small.asc";
    write_file_bytes(path, "ncols 3\nnrows 2\nxllcorner 100\nyllcorner 200\ncellsize 10\nNODATA_value -9999\n"
                           "1 2 3\n4 -9999 6\n");
    const GridHeader header = header_of(path);
    EXPECT_DOUBLE_EQ(header.x_min(), 105);
    EXPECT_DOUBLE_EQ(header.x_max(), 125);
    EXPECT_DOUBLE_EQ(header.y_min(), 205);
    EXPECT_DOUBLE_EQ(header.y_max(), 215);
    const GridWindow grid = whole_grid(path);
    EXPECT_EQ(grid.value(1, 1), 4.0f);
    EXPECT_EQ(grid.value(2, 1), null_float);
    EXPECT_EQ(grid.value(3, 2), 3.0f);
}

TEST(GridFormats, BinaryFormatsReadTheSameNodesAndNulls) {
    TempDir dir;
    std::vector<float> values = ramp_values(4, 3);
    values[1] = -5555.0f;  // north row, second column
    const std::pair<const char*, const char*> formats[] = {
        {"GTiff", ".tif"}, {"ERS", ".ers"}, {"GSBG", ".grd"}, {"GS7BG", ".grd"}, {"AAIGrid", ".asc"}, {"GSAG", ".grd"}};
    for (const auto& [driver, extension] : formats) {
        SCOPED_TRACE(driver);
        const auto path = dir.path() / (std::string("ramp_") + driver + extension);
        write_gdal_grid(path, driver, 4, 3, 1000, 2030, 10, 10, values, -5555.0);
        const GridHeader header = header_of(path);
        EXPECT_EQ(header.columns(), 4);
        EXPECT_EQ(header.rows(), 3);
        EXPECT_NEAR(header.x_min(), 1005, 1e-9);
        EXPECT_NEAR(header.x_max(), 1035, 1e-9);
        EXPECT_NEAR(header.y_min(), 2005, 1e-9);
        EXPECT_NEAR(header.y_max(), 2025, 1e-9);
        const GridWindow grid = whole_grid(path);
        EXPECT_EQ(grid.value(1, 1), 0.0f);
        EXPECT_EQ(grid.value(4, 2), 13.0f);
        EXPECT_EQ(grid.value(2, 3), null_float);
        EXPECT_EQ(grid.value(3, 3), 22.0f);
    }
}

// Height files carry no header: the size comes from the file's length, the place from its name.
TEST(GridFormats, HeightFileIsPlacedByItsNameAndVoidsAreNull) {
    TempDir dir;
    const auto path = dir.path() / "S01E002.hgt";
    const short heights[9] = {1, 2, 3, -32768, 5, 6, 7, 8, 300};
    std::string bytes;
    for (short height : heights) {
        bytes += static_cast<char>((static_cast<unsigned short>(height) >> 8) & 0xff);
        bytes += static_cast<char>(static_cast<unsigned short>(height) & 0xff);
    }
    write_file_bytes(path, bytes);
    const GridHeader header = header_of(path);
    EXPECT_EQ(header.kind(), grid_kind_height);
    EXPECT_EQ(header.columns(), 3);
    EXPECT_DOUBLE_EQ(header.x_min(), 2);
    EXPECT_DOUBLE_EQ(header.x_max(), 3);
    EXPECT_DOUBLE_EQ(header.y_min(), -1);
    EXPECT_DOUBLE_EQ(header.y_max(), 0);
    EXPECT_DOUBLE_EQ(header.y_spacing(), 0.5);
    const GridWindow grid = whole_grid(path);
    EXPECT_EQ(grid.value(3, 1), 300.0f);  // big-endian: a low byte first would read 11265
    EXPECT_EQ(grid.value(1, 2), null_float);
    EXPECT_EQ(grid.value(1, 3), 1.0f);

    write_file_bytes(dir.path() / "S01E003.hgt", bytes + "xyz");  // not a square of heights
    header_of(dir.path() / "S01E003.hgt", -1);
}

TEST(GridHeaders, UnreadableAndRotatedGridsFail) {
    TempDir dir;
    write_file_bytes(dir.path() / "notes.grd", "this is not a grid\n");
    EXPECT_EQ(header_of(dir.path() / "notes.grd", -1).kind(), 0);

    GDALAllRegister();
    const auto rotated = dir.path() / "rotated.tif";
    GDALDatasetH dataset =
        GDALCreate(GDALGetDriverByName("GTiff"), rotated.string().c_str(), 4, 4, 1, GDT_Float32, nullptr);
    double transform[6] = {0, 10, 2, 100, 2, -10};
    GDALSetGeoTransform(dataset, transform);
    GDALClose(dataset);
    header_of(rotated, -1);
}

// A list of points is a point file even when the grid layer could read it as a raster; a grid
// format is a grid whatever its file is called.
TEST(GridHeaders, OnlyGridFormatsAreGridFiles) {
    TempDir dir;
    const struct {
        const char* name;
        const char* text;
        bool grid;
    } cases[] = {
        {"regular.csv", "x,y,z\n0,0,1\n10,0,2\n0,10,3\n10,10,4\n", false},
        {"regular.xyz", "0 0 1\n10 0 2\n0 10 3\n10 10 4\n", false},
        {"scattered.csv", "x,y,z\n0,0,1\n13,2,2\n4,17,3\n", false},
        {"points.dat", "x y z\r\n0 0 1\r\n13 2 2\r\n\r\n4 17 3", false},
        {"dem.txt", "ncols 2\nnrows 2\nxllcenter 0\nyllcenter 0\ncellsize 10\n1 2\n3 4\n", true},
        {"surfer.grd", "DSAA\n2 2\n0 10\n0 10\n1 4\n1 2\n3 4\n", true},
        {"notes.grd", "this is not a grid\n", false},
    };
    for (const auto& c : cases) {
        write_file_bytes(dir.path() / c.name, c.text);
        EXPECT_EQ(is_grid_file((dir.path() / c.name).string()), c.grid) << c.name;
    }
    EXPECT_FALSE(is_grid_file((dir.path() / "missing.asc").string()));
    EXPECT_FALSE(is_grid_file(dir.path().string()));
}

TEST(GridHeaders, ValidityNeedsOrderedLimitsAndPositiveSpacings) {
    GridHeader header;
    header.grid_ints[grid_int::kind] = 1;
    header.grid_ints[grid_int::columns] = 2;
    header.grid_ints[grid_int::rows] = 2;
    header.grid_reals[grid_real::x_min] = 0;
    header.grid_reals[grid_real::x_max] = 10;
    header.grid_reals[grid_real::y_min] = 0;
    header.grid_reals[grid_real::y_max] = 10;
    header.grid_reals[grid_real::x_spacing] = 10;
    header.grid_reals[grid_real::y_spacing] = 10;
    EXPECT_TRUE(is_valid_grid_header(header.grid_ints, header.grid_reals));
    const auto valid_with = [&header](auto change) {
        GridHeader changed = header;
        change(changed);
        return is_valid_grid_header(changed.grid_ints, changed.grid_reals);
    };
    EXPECT_FALSE(valid_with([](GridHeader& h) { h.grid_reals[grid_real::x_max] = 0; }));  // flat
    EXPECT_FALSE(valid_with([](GridHeader& h) { h.grid_ints[grid_int::kind] = 0; }));
    EXPECT_FALSE(valid_with([](GridHeader& h) { h.grid_reals[grid_real::y_spacing] = 0; }));
}

// A window takes the nodes on or just beyond its limits, cut at the grid's edge.
TEST(GridWindows, LimitsTakeTheNodesOnOrBeyondThem) {
    TempDir dir;
    const auto path = dir.path() / "ramp.tif";
    // 10 x 8 nodes from (1005, 1925) to (1095, 1995), 10 apart; value column + 10 * row (from 0).
    write_gdal_grid(path, "GTiff", 10, 8, 1000, 2000, 10, 10, ramp_values(10, 8));
    const struct {
        double limits[4];  // x min, x max, y min, y max
        int columns, rows;
        double nodes[4];  // the window's own limits
        float first;  // at node (1, 1)
        int column, row;
        float value;
    } cases[] = {
        {{1012, 1031, 1940, 1950}, 4, 3, {1005, 1035, 1935, 1955}, 10, 4, 3, 33},  // between nodes
        {{1015, 1035, 1935, 1945}, 3, 2, {1015, 1035, 1935, 1945}, 11, 3, 2, 23},  // on nodes
        {{500, 1020, 1990, 3000}, 3, 2, {1005, 1025, 1985, 1995}, 60, 2, 2, 71},   // past the edge
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.limits[0]);
        GridWindow window;
        int status = -9;
        GRDRDGD(path.string(), window, c.limits[0], c.limits[1], 0, c.limits[2], c.limits[3], 0, status);
        ASSERT_EQ(status, 0);
        EXPECT_EQ(window.header.columns(), c.columns);
        EXPECT_EQ(window.header.rows(), c.rows);
        EXPECT_DOUBLE_EQ(window.header.x_min(), c.nodes[0]);
        EXPECT_DOUBLE_EQ(window.header.x_max(), c.nodes[1]);
        EXPECT_DOUBLE_EQ(window.header.y_min(), c.nodes[2]);
        EXPECT_DOUBLE_EQ(window.header.y_max(), c.nodes[3]);
        EXPECT_DOUBLE_EQ(window.header.x_spacing(), 10);
        EXPECT_EQ(window.value(1, 1), c.first);
        EXPECT_EQ(window.value(c.column, c.row), c.value);
    }
    // Limits that miss the grid.
    GridWindow window;
    int status = -9;
    GRDRDGD(path.string(), window, 2000, 3000, 0, 1925, 1995, 0, status);
    EXPECT_EQ(status, -1);
    EXPECT_TRUE(window.empty());
}

TEST(GridStatisticsOf, CountsOnlyPresentValues) {
    TempDir dir;
    const auto path = dir.path() / "small.grd";
    write_file_bytes(path, "DSAA\n3 2\n0 2\n0 1\n0 4\n0 1 2\n3 4 1.70141e38\n");
    GridStatistics statistics;
    int status = -9;
    GRDSTAT(path.string(), statistics, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(statistics.present_count, 5);
    EXPECT_EQ(statistics.null_count, 1);
    EXPECT_DOUBLE_EQ(statistics.mean, 2);
    EXPECT_DOUBLE_EQ(statistics.minimum, 0);
    EXPECT_DOUBLE_EQ(statistics.maximum, 4);
    EXPECT_NEAR(statistics.standard_deviation, std::sqrt(2.0), 1e-12);

    GridWindow window;
    GRDRDGD(path.string(), window, 0, 2, 0, 0, 1, 0, status);
    GridStatistics of_window;
    GRDSTAT(window, of_window, status);
    EXPECT_EQ(of_window.present_count, 5);
    EXPECT_DOUBLE_EQ(of_window.mean, 2);

    std::vector<std::int64_t> counts;
    double minimum = 0, maximum = 0;
    GRDHST(window, 2, counts, minimum, maximum, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(counts, (std::vector<std::int64_t>{2, 3}));  // 0 1 | 2 3 4: the maximum is in the last bin
}

// Map elevations in the millions must not lose the spread in the sums.
TEST(GridStatisticsOf, LargeValuesKeepTheirSpread) {
    GridWindow window;
    window.values = {7000000.5f, 7000001.5f, -1e32f, 7000000.5f, 7000001.5f};
    GridStatistics statistics;
    int status = -9;
    GRDSTAT(window, statistics, status);
    EXPECT_EQ(status, 0);
    EXPECT_DOUBLE_EQ(statistics.mean, 7000001.0);
    EXPECT_DOUBLE_EQ(statistics.standard_deviation, 0.5);

    GridWindow empty;
    empty.values = {-1e32f};
    GRDSTAT(empty, statistics, status);
    EXPECT_EQ(status, -1);
}

}  // namespace
}  // namespace invsetup
