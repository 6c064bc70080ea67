// tests/form/mesh_tab_test.cpp - the mesh tab: unloading the rows, padding totals, handlers.
#include "form/mesh_tab.h"

#include <gtest/gtest.h>

#include "session.h"

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

}  // namespace
}  // namespace invsetup
