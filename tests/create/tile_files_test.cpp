// tests/create/tile_files_test.cpp - the insert line of a tile: its cell range and where the blend
// numbers go.
#include "create/tile_files.h"

#include <gtest/gtest.h>

#include "mesh/tile_layout.h"

namespace invsetup {
namespace {

TEST(TileInsertLine, BlendsStandOnlyBehindAnXyBlend) {
    TileTable tiles;
    tiles.tile_x_limits = Array2<int>(2, 4);
    tiles.tile_y_limits = Array2<int>(1, 4);
    const int x2[] = {20, 30, 60, 70}, y1[] = {1, 1, 40, 48};
    for (int k = 1; k <= 4; ++k) {
        tiles.tile_x_limits(2, k) = x2[k - 1];
        tiles.tile_y_limits(1, k) = y1[k - 1];
    }
    struct Case {
        int method, first_type, xy_blend, z_blend;
        const char* line;
    };
    const Case cases[] = {
        {3, 1, 4, 2, "Vorlinsert mesh maginv3d.sus ..\\mesh ..\\maginv3d.sus 30 59 1 39 1 12 4 2"},
        {3, 1, 4, 0, "Vorlinsert mesh maginv3d.sus ..\\mesh ..\\maginv3d.sus 30 59 1 39 1 12 4"},
        {2, 1, 0, 2, "Vorlinsert mesh gzinv3d.den ..\\mesh ..\\gzinv3d.den 30 59 1 39 1 12"},
        {4, 1, 1, 1, "Zarninsert mesh zarninv3d.sus ..\\mesh ..\\zarninv3d.sus 30 59 1 39 1 12 1 1"},
        {4, 3, 1, 1, "Zarninsert mesh zarninv3d.den ..\\mesh ..\\zarninv3d.den 30 59 1 39 1 12 1 1"},
    };
    for (const Case& c : cases) {
        InversionDefinition d;
        d.inversion_method = c.method;
        d.data_types[0] = c.first_type;
        d.tile_xy_blend = c.xy_blend;
        d.tile_z_blend = c.z_blend;
        EXPECT_EQ(tile_insert_line(d, tiles, 2, 1, 12), c.line);
    }
    EXPECT_EQ(tile_name(3, 12), "tile0312");
}

}  // namespace
}  // namespace invsetup
