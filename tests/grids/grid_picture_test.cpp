// tests/grids/grid_picture_test.cpp - the picture frame, grid and point painting, rendering a grid
// file and writing a PNG.
#include "grids/grid_picture.h"

#include <gtest/gtest.h>

#include <fstream>

#include "grid_fixtures.h"
#include "test_support.h"

namespace invsetup {
namespace {

GridWindow window_of(int columns, int rows, double x0, double y0, double spacing, std::vector<float> south_first) {
    GridWindow grid;
    grid.name = "~WD test";
    grid.header.grid_ints[grid_int::kind] = grid_kind_gdal;
    grid.header.grid_ints[grid_int::columns] = columns;
    grid.header.grid_ints[grid_int::rows] = rows;
    grid.header.grid_reals[grid_real::x_min] = x0;
    grid.header.grid_reals[grid_real::x_max] = x0 + (columns - 1) * spacing;
    grid.header.grid_reals[grid_real::y_min] = y0;
    grid.header.grid_reals[grid_real::y_max] = y0 + (rows - 1) * spacing;
    grid.header.grid_reals[grid_real::x_spacing] = spacing;
    grid.header.grid_reals[grid_real::y_spacing] = spacing;
    grid.values = std::move(south_first);
    return grid;
}

int brightness(Rgba p) { return p.r + p.g + p.b; }

TEST(PictureFrame, FitsTheRegionCentredWithTheMarginOnTheTighterSide) {
    struct Case {
        double x_min, x_max, y_min, y_max;
        int width, height;
        double left, top, scale;
    };
    const Case cases[] = {
        {0, 1000, 0, 500, 220, 220, 10, 60, 0.2},     // wide: margin left and right
        {0, 500, 0, 1000, 220, 220, 60, 10, 0.2},     // tall: margin top and bottom
        {100, 200, 100, 200, 120, 220, 10, 60, 1.0},  // square in a tall picture
    };
    for (const Case& c : cases) {
        const PictureFrame frame = fit_picture_frame(c.x_min, c.x_max, c.y_min, c.y_max, c.width, c.height, 10);
        EXPECT_DOUBLE_EQ(frame.left, c.left);
        EXPECT_DOUBLE_EQ(frame.top, c.top);
        EXPECT_DOUBLE_EQ(frame.scale, c.scale);
        // The north-west corner lands on (left, top); pixels map back to the same point.
        EXPECT_DOUBLE_EQ(frame.pixel_x(c.x_min), c.left);
        EXPECT_DOUBLE_EQ(frame.pixel_y(c.y_max), c.top);
        EXPECT_NEAR(frame.map_x(frame.pixel_x(c.x_min + 37)), c.x_min + 37, 1e-9);
        EXPECT_NEAR(frame.map_y(frame.pixel_y(c.y_min + 41)), c.y_min + 41, 1e-9);
    }
    // A region without extent still gets a usable scale.
    EXPECT_GT(fit_picture_frame(5, 5, 0, 10, 100, 100, 10).scale, 0);
}

TEST(GridPicture, RampRunsLowToHighAcrossTheGridAndLeavesNullsAndOutsideAlone) {
    // 5 x 3 nodes rising to the east; the middle node of the top row is null.
    std::vector<float> values;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 5; ++c) values.push_back(static_cast<float>(c));
    values[2 * 5 + 2] = -1e32f;
    const GridWindow grid = window_of(5, 3, 0, 0, 10, values);
    RgbaImage image(120, 120);
    const PictureFrame frame = fit_picture_frame(-5, 45, -5, 25, image.width, image.height, 10);
    paint_grid(grid, frame, ColourTable::spectrum(), image);

    auto pixel_at = [&](double x, double y) { return image.at(static_cast<int>(frame.pixel_x(x)), static_cast<int>(frame.pixel_y(y))); };
    const Rgba west = pixel_at(0, 0), east = pixel_at(40, 0);
    EXPECT_GT(west.b, west.r) << "lowest values are blue";
    EXPECT_GT(east.r, east.b) << "highest values are red";
    EXPECT_EQ(pixel_at(20, 20), picture_background) << "a null node is not painted";
    EXPECT_EQ(image.at(2, 2), picture_background) << "outside the grid stays white";
}

TEST(GridPicture, SlopesFacingTheNorthWestSunAreBrighter) {
    // Same values mirrored: the middle node has the same ramp colour in both and differs only by light.
    std::vector<float> rising_east, rising_west;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 5; ++c) {
            rising_east.push_back(static_cast<float>(c));
            rising_west.push_back(static_cast<float>(4 - c));
        }
    const PictureFrame frame = fit_picture_frame(-5, 45, -5, 25, 120, 120, 10);
    RgbaImage facing_west(120, 120), facing_east(120, 120);
    paint_grid(window_of(5, 3, 0, 0, 10, rising_east), frame, ColourTable::spectrum(), facing_west);
    paint_grid(window_of(5, 3, 0, 0, 10, rising_west), frame, ColourTable::spectrum(), facing_east);
    const int px = static_cast<int>(frame.pixel_x(20)), py = static_cast<int>(frame.pixel_y(10));
    EXPECT_GT(brightness(facing_west.at(px, py)), brightness(facing_east.at(px, py)));
}

TEST(PointPicture, DotsSitAtTheirPointsColouredByValueNullsGrey) {
    const std::vector<double> x{0, 100, 50}, y{0, 100, 50}, v{1, 2, -1e32};
    RgbaImage image(120, 120);
    const PictureFrame frame = fit_picture_frame(0, 100, 0, 100, image.width, image.height, 10);
    paint_points(x, y, v, frame, ColourTable::spectrum(), image, 3);
    const Rgba low = image.at(10, 110), high = image.at(110, 10), null = image.at(60, 60);
    EXPECT_GT(low.b, low.r);
    EXPECT_GT(high.r, high.b);
    EXPECT_EQ(null, (Rgba{150, 150, 150, 255}));
    EXPECT_EQ(image.at(30, 30), picture_background);
}

TEST(GridPicture, RendersAGridFileAndWritesAPng) {
    const testing::TempDir dir;
    const auto grid_path = dir.path() / "ramp.tif";
    testing::write_gdal_grid(grid_path, "GTiff", 6, 4, 1000, 2040, 10, 10, testing::ramp_values(6, 4));

    RgbaImage image;
    PictureFrame frame;
    ASSERT_EQ(render_grid_picture(grid_path.string(), 1, 0, 1, 0, 200, 150, 10, image, frame), 0);
    EXPECT_EQ(image.width, 200);
    EXPECT_DOUBLE_EQ(frame.x_min, 1005);  // the whole grid: node limits
    EXPECT_NE(image.at(static_cast<int>(frame.pixel_x(1030)), static_cast<int>(frame.pixel_y(2020))), picture_background);

    const auto png = dir.path() / "ramp.png";
    ASSERT_EQ(write_png(image, png), 0);
    std::ifstream in(png, std::ios::binary);
    char signature[4] = {};
    in.read(signature, 4);
    EXPECT_EQ(std::string(signature + 1, 3), "PNG");

    EXPECT_EQ(render_grid_picture((dir.path() / "missing.grd").string(), 0, 10, 0, 10, 50, 50, 10, image, frame), -1);
    EXPECT_EQ(image.at(25, 25), picture_background);
}

}  // namespace
}  // namespace invsetup
