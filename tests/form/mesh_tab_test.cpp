// tests/form/mesh_tab_test.cpp - the mesh tab: unloading the rows, padding totals, handlers.
#include "form/mesh_tab.h"

#include <gtest/gtest.h>

#include "mesh/inversion_mesh.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

struct MeshTab : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    FormModel& form = session.form;
    void SetUp() override {
        session.definition.inversion_method = method_ubc_mag_v5;
        session.definition.add_mesh_padding = 1;
        form.updating_form = true;
        set_row(0, "0", "1000", "30");
        set_row(1, "0", "500", "50");
        set_row(2, "0", "1000", "25");
        form.set_text("Text_num_cells", 3, "");
        form.set_text("Text_cell_size", 3, "1");
        form.set_text("Text_padding_multipliers", 0, "1,2,4,8");
        form.set_text("Text_padding_multipliers", 1, "1,2");
        form.updating_form = false;
    }
    void set_row(int row, const char* min, const char* max, const char* size) {
        form.set_text("Text_min_val", row, min);
        form.set_text("Text_max_val", row, max);
        form.set_text("Text_cell_size", row, size);
        form.set_text("Text_num_cells", row, "");
    }
};

TEST_F(MeshTab, LimitsMoveToAWholeNumberOfCells) {
    ASSERT_EQ(unload_mesh_from_form(session, -1, 0), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    EXPECT_EQ(session.definition.mesh_cell_count[0], 33);
    EXPECT_EQ(form.text("Text_max_val", 0), "990");
    EXPECT_EQ(form.text("Text_num_cells", 0), "33");
    EXPECT_EQ(form.text("Text_max_val", 3), "990");
    // Totals with padding: 4 cells each side in X and Y, 2 below Z.
    EXPECT_EQ(form.text("Text_num_cells", 5), "41");
    EXPECT_EQ(form.text("Text_num_cells", 7), "42");
    EXPECT_EQ(form.text("Text_num_cells", 8), std::to_string(41 * 18 * 42));
    EXPECT_EQ(form.text("Text_min_east"), "-450");
    EXPECT_EQ(form.text("Text_range_east"), "1890");
    EXPECT_EQ(form.text("Text_min_elev"), "-75");
    EXPECT_EQ(form.text("Text_min_val", 3), "0.0");
    EXPECT_EQ(session.mesh.nx, 41);  // the first unload computes the mesh
}

TEST_F(MeshTab, ZRowHangsFromItsTop) {
    ASSERT_EQ(unload_mesh_from_form(session, -1, 0), 0);
    form.updating_form = true;
    form.set_text("Text_cell_size", 2, "30");
    form.updating_form = false;
    ASSERT_EQ(unload_mesh_from_form(session, 2, 1), 0);
    EXPECT_EQ(session.definition.mesh_min[2], 10);
    EXPECT_EQ(form.text("Text_min_val", 2), "10");
    EXPECT_EQ(form.text("Text_max_val", 2), "1000");
}

TEST_F(MeshTab, TypedCountAboveOneMovesTheUpperLimit) {
    ASSERT_EQ(unload_mesh_from_form(session, -1, 0), 0);
    form.updating_form = true;
    form.set_text("Text_num_cells", 0, "10");
    form.updating_form = false;
    ASSERT_EQ(unload_mesh_from_form(session, 0, 0), 0);
    EXPECT_EQ(session.definition.mesh_cell_count[0], 10);
    EXPECT_EQ(form.text("Text_max_val", 0), "300");
}

TEST_F(MeshTab, NonUniformPartSetsTheBottomOfTheWholeMesh) {
    form.updating_form = true;
    form.set_text("Text_num_cells", 3, "3");
    form.set_text("Text_cell_size", 3, "2");
    form.updating_form = false;
    ASSERT_EQ(unload_mesh_from_form(session, -1, 0), 0);
    EXPECT_EQ(session.definition.mesh_min[3], -175);  // 25 * (2^3 - 1)
    EXPECT_EQ(form.text("Text_num_cells", 4), "43");
    EXPECT_EQ(form.text("Text_num_cells", 7), "43");  // no Z padding beside a non-uniform part
}

TEST_F(MeshTab, EachBadValueHasItsMessage) {
    form.updating_form = true;
    form.set_text("Text_max_val", 1, "-5");
    form.updating_form = false;
    EXPECT_EQ(unload_mesh_from_form(session, -1, 0), -1);
    form.updating_form = true;
    form.set_text("Text_max_val", 1, "500");
    form.set_text("Text_padding_multipliers", 1, "1,0,2");  // the Z list is parsed last
    form.updating_form = false;
    EXPECT_EQ(unload_mesh_from_form(session, -1, 0), -1);
    EXPECT_EQ(dialogue.messages, (std::vector<std::string>{"The minimum Y value must be less than the maximum value",
                                                           "There is a problem with the padding cell definitions"}));
    EXPECT_EQ(form.text("Text_num_cells", 5), "");
}

TEST_F(MeshTab, HandlerIgnoresChangesBelowOneTenth) {
    ASSERT_EQ(unload_mesh_from_form(session, -1, 0), 0);
    form.set_text("Text_min_val", 0, "0.05");  // as a user's edit
    EXPECT_EQ(form.text("Text_max_val", 0), "990");
    EXPECT_EQ(session.definition.mesh_min[0], 0);
    form.set_text("Text_min_val", 0, "100");
    EXPECT_EQ(session.definition.mesh_min[0], 100);
    EXPECT_EQ(form.text("Text_max_val", 0), "1000");
}

// A refined mesh shows on the tab the limits it snapped to the loaded nodes, its counts and tiles;
// building it alone leaves the tab as typed.
TEST_F(MeshTab, RefinedMeshShowsItsSnappedLimitsAndTiles) {
    InversionDefinition& d = session.definition;
    session.loaded_mesh = testing::coarse_mesh();
    d.refinement_mode = 1;
    d.add_mesh_padding = 0;
    d.mesh_min = {250, 200, -200, -200};
    d.mesh_max = {750, 800, 0, 0};
    d.mesh_cell_size = {25, 25, 25, 1};
    d.mesh_cell_count = {20, 24, 8, 0};
    d.x_tile_size = d.y_tile_size = 16;
    d.tile_overlap = 2;
    d.tile_z_blend = 1;
    ASSERT_EQ(build_inversion_mesh(session), 0);
    EXPECT_EQ(form.text("Text_min_val", 0), "0");
    EXPECT_EQ(form.text("Text_number_x_tiles"), "");

    ASSERT_EQ(determine_inversion_mesh(session), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    const std::pair<const char*, int> shown[] = {{"Text_min_val", 0}, {"Text_max_val", 0}, {"Text_num_cells", 0},
                                                 {"Text_min_val", 1}, {"Text_max_val", 1}, {"Text_num_cells", 1},
                                                 {"Text_min_val", 2}, {"Text_max_val", 2}, {"Text_num_cells", 2},
                                                 {"Text_min_val", 3}, {"Text_num_cells", 3}, {"Text_num_cells", 4},
                                                 {"Text_max_val", 3}, {"Text_max_val", 4}, {"Text_max_val", 5},
                                                 {"Text_num_cells", 5}, {"Text_num_cells", 8}, {"Text_num_z_cells", -1}};
    std::string texts;
    for (const auto& [name, index] : shown) texts += form.text(name, index) + " ";
    EXPECT_EQ(texts, "200 700 20 200 800 24 -200 0 8 -200.0 0 8 500 600 200 20 3840 8 ");
    EXPECT_EQ(form.text("Text_number_x_tiles"), "2");
    EXPECT_EQ(form.text("Text_number_y_tiles"), "2");
}

}  // namespace
}  // namespace invsetup
