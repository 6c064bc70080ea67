// tests/create/tile_files_test.cpp - the insert line of a tile (its cell range and where the blend
// numbers go), and the batch file of an in-house tile over two data types, worked out by hand.
#include "create/tile_files.h"

#include <gtest/gtest.h>

#include "mesh/inversion_mesh.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "test_support.h"

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

TEST(TileBatchLines, InHouseTileWithTwoDataTypesAndTheCoarseForwardModel) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    // One 4 x 4 x 3 tile of 10 m cells (5 m deep, top at 0) taking the top 2 cells and a z blend of 1.
    session.mesh = testing::uniform_mesh({4, 4, 3}, {10, 10, 5});
    session.tiles.tile_x_limits = Array2<int>(1, 4);
    session.tiles.tile_y_limits = Array2<int>(1, 4);
    const int limits[] = {1, 1, 5, 5};
    for (int k = 1; k <= 4; ++k) session.tiles.tile_x_limits(1, k) = session.tiles.tile_y_limits(1, k) = limits[k - 1];
    InversionDefinition& d = session.definition;
    d.inversion_method = method_zarninv3d;
    d.data_type_count = 2;
    d.data_types = {1, 20, -1, -1, -1, -1, -1};
    d.sensitivity_matrix_names[0] = "a.mtx";
    d.sensitivity_matrix_names[1] = "b.mtx";
    d.mesh_cell_count[2] = 2;
    d.tile_z_blend = 1;
    d.tile_xy_blend = 0;
    d.tile_coarse_model = 1;
    d.use_expanded_mesh = 0;
    d.use_cluster_controller = 0;
    session.original_mesh_name = "/runs/coarse/mesh";
    session.original_model_name = "/runs/coarse/model.sus";
    RunContext context;
    context.run_directory = "/runs/fine";

    // The matrix of the coarse run isn't found, the chooser is cancelled: the warning, and "..\..\".
    EXPECT_EQ(tile_batch_lines(session, context, 1, 1),
              testing::lines_of(testing::test_data("create/tile0101_coarse_model.bat")));
    ASSERT_EQ(dialogue.file_requests.size(), 1u);
    EXPECT_EQ(dialogue.file_requests[0].title, "Select the location of the coarse model MTX file");
    EXPECT_EQ(dialogue.file_requests[0].filter, "MTX files|*.mtx|All files (*.*)|*.*");
    EXPECT_EQ(dialogue.messages,
              std::vector<std::string>{"Warning: The tiling may not work correctly if the MTX file does not exist when "
                                       "the inversion is run"});
}

}  // namespace
}  // namespace invsetup
