// tests/mesh/tile_layout_test.cpp - tile counts, the interval search and tiles inside a loaded mesh.
#include "mesh/tile_layout.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <vector>

#include "grids/interval_search.h"
#include "mesh/inversion_mesh.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::coarse_mesh;

Array1<double> table_of(std::initializer_list<double> values) {
    Array1<double> table(static_cast<int>(values.size()));
    int i = 1;
    for (double v : values) table[i++] = v;
    return table;
}

TEST(IntervalSearch, GivesLastNodeNotAboveAndClampsAtBothEnds) {
    const Array1<double> nodes = table_of({0, 10, 20, 20, 40});
    int flag = 9;
    EXPECT_EQ(interval_search(nodes, 5, -1.0, flag), 1);
    EXPECT_EQ(flag, interval_below);
    EXPECT_EQ(interval_search(nodes, 5, 0.0, flag), 1);
    EXPECT_EQ(flag, interval_inside);
    EXPECT_EQ(interval_search(nodes, 5, 19.999, flag), 2);
    EXPECT_EQ(interval_search(nodes, 5, 20.0, flag), 4);  // the last of equal entries
    EXPECT_EQ(interval_search(nodes, 5, 40.0, flag), 5);
    EXPECT_EQ(flag, interval_beyond);
    EXPECT_EQ(interval_search(nodes, 3, 35.0, flag), 3);  // only the first three entries count
    EXPECT_THROW(interval_search(nodes, 6, 1.0), std::out_of_range);
}

TEST(TileCount, GrowsUntilATileWithItsOverlapFits) {
    // 300 cells, size 128, overlap 20: 3 tiles cover 304, but 100 + 40 is above 128, so 4 of 75.
    int tiles = 0;
    EXPECT_EQ(tile_count_for_axis(300, 128, 20, tiles), 75);
    EXPECT_EQ(tiles, 4);
}

TEST(TileCount, SmallAxisNeedsOneTileAndNonPositiveInputsChangeNothing) {
    int tiles = 7;
    EXPECT_EQ(tile_count_for_axis(1, 128, 20, tiles), 1);
    EXPECT_EQ(tiles, 1);
    tiles = 7;
    EXPECT_EQ(tile_count_for_axis(0, 128, 20, tiles), 0);
    EXPECT_EQ(tile_count_for_axis(100, 0, 20, tiles), 0);
    EXPECT_EQ(tiles, 7);
}

TEST(TileCount, TileNoLargerThanTwiceTheOverlapIsAFault) {
    int tiles = 0;
    EXPECT_THROW(tile_count_for_axis(300, 40, 20, tiles), std::domain_error);
    EXPECT_THROW(tile_count_for_axis(300, 30, 20, tiles), std::domain_error);
}

struct RefinedSession : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    void SetUp() override {
        InversionDefinition& d = session.definition;
        session.loaded_mesh = coarse_mesh();
        d.inversion_method = method_ubc_mag_v5;
        d.refinement_mode = 1;
        d.mesh_min = {250, 200, -200, -200};
        d.mesh_max = {750, 800, 0, 0};
        d.mesh_cell_size = {25, 25, 25, 1};
        d.mesh_cell_count = {20, 24, 8, 0};
        d.x_tile_size = 16;
        d.y_tile_size = 16;
        d.tile_overlap = 2;
        d.tile_z_blend = 1;
    }
};

TEST_F(RefinedSession, KeepsLoadedOuterCellsAndSnapsLimitsToLoadedNodes) {
    ASSERT_EQ(build_inversion_mesh(session), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    const InversionMesh& mesh = session.mesh;
    // 250 snaps down to 200: two loaded cells west, 20 fine cells, three loaded cells east.
    EXPECT_EQ(session.definition.mesh_min[0], 200);
    EXPECT_EQ(mesh.core_x_first, 3);
    EXPECT_EQ(mesh.core_x_last, 8);
    EXPECT_EQ(mesh.nx, 25);
    EXPECT_EQ(mesh.ny, 28);
    EXPECT_EQ(mesh.nz, 8 + 6);
    EXPECT_EQ(mesh.dx[2], 100);
    EXPECT_EQ(mesh.dx[3], 25);
    EXPECT_EQ(mesh.dx[22], 25);
    EXPECT_EQ(mesh.dx[23], 100);
    EXPECT_EQ(mesh.x_nodes[1], 0);
    EXPECT_EQ(mesh.x_nodes[26], 1000);
    EXPECT_EQ(mesh.fine_x_first, 3);
    EXPECT_EQ(mesh.fine_x_last, 22);
    // One cell short of the fine region's end, as the tile layout expects.
    EXPECT_EQ(mesh.mesh_x_max, 675);
    EXPECT_EQ(mesh.mesh_y_max, 775);
    EXPECT_EQ(mesh.z_nodes[9], -200);
    EXPECT_EQ(mesh.mesh_z_bottom, -500);
}

TEST_F(RefinedSession, LaysTilesOnLoadedCellEdgesWithOverlap) {
    ASSERT_EQ(build_inversion_mesh(session), 0);
    const TileTable& tiles = session.tiles;
    ASSERT_EQ(session.definition.number_of_x_tiles, 2);
    ASSERT_EQ(session.definition.number_of_y_tiles, 2);
    // X: the middle end 12 (node 425) moves down to the loaded node 400, node 11.
    const int x_expected[2][4] = {{3, 3, 11, 13}, {9, 11, 22, 22}};
    // Y shares out one cell more: the middle end is node 15 (500), already on a loaded node.
    const int y_expected[2][4] = {{3, 3, 15, 17}, {13, 15, 26, 26}};
    for (int i = 1; i <= 2; ++i)
        for (int k = 1; k <= 4; ++k) {
            EXPECT_EQ(tiles.tile_x_limits(i, k), x_expected[i - 1][k - 1]) << "x tile " << i << " k " << k;
            EXPECT_EQ(tiles.tile_y_limits(i, k), y_expected[i - 1][k - 1]) << "y tile " << i << " k " << k;
        }
}

TEST_F(RefinedSession, TileLimitsAtTheBoundaries) {
    // X limits worked out by the layout rules: ends at i * span / count + first (half to even), each
    // middle end moved down to a loaded node, cores touching, the overlap added outside them.
    struct Case {
        const char* name;
        double x_min;
        int x_cells, overlap;
        std::vector<std::array<int, 4>> tiles;
    };
    const Case cases[] = {
        // The whole loaded width refined (nodes 1..41 at 25 m): 4 tiles of 10; the first tile starts
        // on the mesh's west edge. Ends 10.75 -> 11 (250 -> 200, node 9), 20.5 -> 20 (475 -> 400,
        // node 17), 30.25 -> 30 (725 -> 700, node 29), and the last one cell short of the end.
        {"at the mesh edge", 0, 40, 2, {{1, 1, 9, 11}, {7, 9, 17, 19}, {15, 17, 29, 31}, {27, 29, 40, 40}}},
        // An overlap of 6 in tiles of 16, near half a tile: 5 tiles over nodes 3..22. Ends 6.8 -> 7
        // (300), 10.6 -> 11 (400), 14.4 -> 14 (475 -> 400, node 11 again: the third tile's core is
        // clipped to nothing), 18.2 -> 18 (575 -> 500, node 15). The second tile's overlap reaches
        // node 1, the mesh's edge.
        {"overlap near half a tile", 250, 20, 6,
         {{3, 3, 7, 13}, {1, 7, 11, 17}, {5, 11, 11, 17}, {5, 11, 15, 21}, {9, 15, 22, 22}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        InversionDefinition& d = session.definition;
        d.mesh_min[0] = c.x_min;
        d.mesh_cell_count[0] = c.x_cells;
        d.mesh_max[0] = c.x_min + 25 * c.x_cells;
        d.tile_overlap = c.overlap;
        ASSERT_EQ(build_inversion_mesh(session), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
        ASSERT_EQ(d.number_of_x_tiles, static_cast<int>(c.tiles.size()));
        for (int i = 1; i <= d.number_of_x_tiles; ++i)
            for (int k = 1; k <= 4; ++k)
                EXPECT_EQ(session.tiles.tile_x_limits(i, k), c.tiles[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(k - 1)])
                    << "tile " << i << " k " << k;
    }
}

TEST_F(RefinedSession, TileLongerThanItsSizeLosesTheExcessAtItsEnd) {
    ASSERT_EQ(build_inversion_mesh(session), 0);
    session.definition.number_of_x_tiles = 1;
    session.definition.x_tile_size = 10;
    const LoadedMesh& loaded = session.loaded_mesh;
    lay_out_tiles(session.mesh, LoadedNodes{loaded.x_nodes, loaded.nx, loaded.y_nodes, loaded.ny}, session.definition,
                  session.tiles);
    // 3..22 spans 22 - 3 - 1 = 18 cells against 10: 8 come off the end.
    EXPECT_EQ(session.tiles.tile_x_limits(1, tile_outer_start), 3);
    EXPECT_EQ(session.tiles.tile_x_limits(1, tile_core_end), 14);
    EXPECT_EQ(session.tiles.tile_x_limits(1, tile_outer_end), 14);
}

TEST_F(RefinedSession, LimitOutsideLoadedCoreIsRefusedAndKeepsThePreviousMesh) {
    session.loaded_mesh.pad_x_low = 3;  // core starts at 300
    EXPECT_EQ(build_inversion_mesh(session), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0],
              "The minimum x limit of the refined area is outside the core mesh region of the original model");
    EXPECT_EQ(session.mesh.nx, 0);
}

TEST_F(RefinedSession, ZBottomSnapsFromBelowWithinOneMetre) {
    session.definition.mesh_min[2] = -149.5;  // within 1.0 above the node at -150
    ASSERT_EQ(build_inversion_mesh(session), 0);
    EXPECT_EQ(session.definition.mesh_min[2], -150);
    session.definition.mesh_min[2] = -148.5;  // more than 1.0 above it: the next node up
    ASSERT_EQ(build_inversion_mesh(session), 0);
    EXPECT_EQ(session.definition.mesh_min[2], -100);
}

TEST_F(RefinedSession, TopOffTheLoadedTopIsRefusedWithTheNode) {
    session.definition.mesh_max[2] = 5;
    EXPECT_EQ(build_inversion_mesh(session), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0],
              "The top z limit of the refined volume has to be the same as the top node in the original model: 0.0");
}

TEST_F(RefinedSession, TileSizeOfTwiceTheOverlapEndsInTheTrapAndKeepsThePreviousMesh) {
    session.definition.x_tile_size = 4;
    EXPECT_EQ(build_inversion_mesh(session), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_NE(dialogue.messages[0].find("An error occurred while determining the inversion mesh"), std::string::npos);
    EXPECT_EQ(session.mesh.nx, 0);
}

TEST_F(RefinedSession, ExpandedMeshDropsCellsThatLeaveTheMesh) {
    ASSERT_EQ(build_inversion_mesh(session), 0);
    session.expanded_mesh.expansion_weights = Array1<float>(5);
    for (int k = 1; k <= 5; ++k) session.expanded_mesh.expansion_weights[k] = static_cast<float>(1 << (k - 1));
    set_expanded_mesh_limits(session, 1, 1);
    const ExpandedMesh& e = session.expanded_mesh;
    // West of node 3 (x 200, first cell 25 wide): 31 * 25 = 775 leaves the mesh; dropping 16 and 8
    // leaves 7 * 25 = 175, inside.
    EXPECT_EQ(e.expansion_count[0], 3);
    EXPECT_DOUBLE_EQ(e.expansion_limits[0], 25);
    EXPECT_EQ(e.expansion_source_cells[0][1], 2);  // 187.5 lies in the loaded cell 100..200
    EXPECT_EQ(e.expansion_count[1], 4);  // east of node 13 (x 450) only the 16 leaves the mesh
    EXPECT_DOUBLE_EQ(e.expansion_limits[1], 450 + 15 * 25);
    EXPECT_EQ(e.expansion_range[1], 2);
}

}  // namespace
}  // namespace invsetup
