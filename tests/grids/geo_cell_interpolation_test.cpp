// tests/grids/geo_cell_interpolation_test.cpp - grid values at cell centres, checked by hand.
#include "grids/grid_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace invsetup {
namespace {

// 3 x 3 nodes, x 0..20 by 10, y 0..40 by 20; rows from the south:
//   y 40:  60  70  null
//   y 20:  30  40  50
//   y  0:   0  10  20
GridWindow small_grid() {
    GridWindow grid;
    grid.header.grid_ints[grid_int::kind] = grid_kind_gdal;
    grid.header.grid_ints[grid_int::columns] = 3;
    grid.header.grid_ints[grid_int::rows] = 3;
    grid.header.grid_reals[grid_real::x_min] = 0;
    grid.header.grid_reals[grid_real::x_max] = 20;
    grid.header.grid_reals[grid_real::y_min] = 0;
    grid.header.grid_reals[grid_real::y_max] = 40;
    grid.header.grid_reals[grid_real::x_spacing] = 10;
    grid.header.grid_reals[grid_real::y_spacing] = 20;
    grid.values = {0, 10, 20, 30, 40, 50, 60, 70, -1e32f};
    return grid;
}

double value_at(const GridWindow& grid, double x, double y) {
    double value = 0;
    GEO_CELL_INTERPOLATION(grid, std::span<const double>(&x, 1), std::span<const double>(&y, 1),
                           std::span<double>(&value, 1));
    return value;
}

TEST(GeoCellInterpolation, BlendsTheFourNodesRoundThePoint) {
    const GridWindow grid = small_grid();
    EXPECT_DOUBLE_EQ(value_at(grid, 5, 10), 20.0);   // centre of the first cell: (0+10+30+40)/4
    // tx 0.2, ty 0.25: 0.6*10 + 0.15*20 + 0.2*40 + 0.05*50
    EXPECT_DOUBLE_EQ(value_at(grid, 12, 5), 19.5);
    EXPECT_DOUBLE_EQ(value_at(grid, 10, 20), 40.0);  // on a node
}

TEST(GeoCellInterpolation, EdgesOfTheGridAreInside) {
    const GridWindow grid = small_grid();
    EXPECT_DOUBLE_EQ(value_at(grid, 20, 10), 35.0);  // east edge: halfway between 20 and 50
    EXPECT_DOUBLE_EQ(value_at(grid, 0, 40), 60.0);   // north-west corner node
    EXPECT_DOUBLE_EQ(value_at(grid, 0, 0), 0.0);
    EXPECT_DOUBLE_EQ(value_at(grid, 20 + 1e-12, 0), 20.0);  // rounding past the edge is forgiven
}

TEST(GeoCellInterpolation, OutsideTheGridIsNull) {
    const GridWindow grid = small_grid();
    EXPECT_EQ(value_at(grid, -0.001, 10), -1e32);
    EXPECT_EQ(value_at(grid, 25, 10), -1e32);
    EXPECT_EQ(value_at(grid, 5, 40.01), -1e32);
    EXPECT_EQ(value_at(grid, std::numeric_limits<double>::quiet_NaN(), 10), -1e32);
}

TEST(GeoCellInterpolation, ANullNodeNullsItsWholeCell) {
    const GridWindow grid = small_grid();
    EXPECT_EQ(value_at(grid, 15, 30), -1e32);
    EXPECT_EQ(value_at(grid, 15, 40), -1e32);  // on the north edge, half way to the null
    EXPECT_EQ(value_at(grid, 20, 30), -1e32);  // on the east edge, half way to the null
    EXPECT_DOUBLE_EQ(value_at(grid, 5, 30), 50.0);  // the neighbouring cell is whole: (30+40+60+70)/4
}

// A mesh aligned with the grid samples nodes exactly; a hole beyond a node must not blank it.
TEST(GeoCellInterpolation, APointOnANodeNeedsOnlyThatNode) {
    const GridWindow grid = small_grid();
    EXPECT_DOUBLE_EQ(value_at(grid, 10, 40), 70.0);
    EXPECT_DOUBLE_EQ(value_at(grid, 20, 20), 50.0);
    EXPECT_DOUBLE_EQ(value_at(grid, 10, 30), 55.0);  // on a grid line: between 40 and 70 only
}

TEST(GeoCellInterpolation, FillsAOneBasedRowOfCentres) {
    const GridWindow grid = small_grid();
    Array1<double> x(4), y(4, 10.0), values(4, 123.0);
    x[1] = 5;
    x[2] = 15;
    x[3] = 25;
    x[4] = 5;
    GEO_CELL_INTERPOLATION(grid, x, y, 3, values);
    EXPECT_DOUBLE_EQ(values[1], 20.0);
    EXPECT_DOUBLE_EQ(values[2], 30.0);
    EXPECT_EQ(values[3], -1e32);
    EXPECT_EQ(values[4], 123.0);  // beyond the count: untouched
    EXPECT_THROW(GEO_CELL_INTERPOLATION(grid, x, y, 5, values), std::out_of_range);
}

TEST(GeoCellInterpolation, AnEmptyGridGivesNulls) {
    GridWindow empty;
    EXPECT_EQ(value_at(empty, 0, 0), -1e32);
}

}  // namespace
}  // namespace invsetup
