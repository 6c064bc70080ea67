// tests/mesh/mesh_definition_test.cpp - padding lists and cell totals, and the limits a spin control moves.
#include "mesh/mesh_definition.h"

#include <gtest/gtest.h>

#include "mesh/tiling_view.h"
#include "session.h"

namespace invsetup {
namespace {

struct PaddingCase {
    const char* name;
    int add_padding;
    const char* xy_list;
    const char* z_list;
    int nonuniform;
    int status;
    int x, y, z;       // totals for a core of 10 x 20 x 30
    float xy_sum, z_sum;
};

TEST(MeshPadding, ListsGiveTheTotalsAndSums) {
    const PaddingCase cases[] = {
        {"off: lists ignored", 0, "1,2,4", "1,2", 0, 0, 10, 20, 30, 0, 0},
        {"both sides of X and Y, below Z", 1, "1,2,4", "1,2", 0, 0, 16, 26, 32, 7, 3},
        {"a non-uniform part replaces Z padding", 1, "1,2,4", "1,2", 5, 0, 16, 26, 35, 7, 3},
        {"empty lists", 1, "", "", 0, 0, 10, 20, 30, 0, 0},
        {"a bad Z list counts the items before the bad one", 1, "1,2", "1,x", 0, -1, 14, 24, 31, 3, 1},
    };
    for (const PaddingCase& c : cases) {
        SCOPED_TRACE(c.name);
        HeadlessDialogue dialogue;
        Session session{dialogue};
        session.definition.add_mesh_padding = c.add_padding;
        session.definition.padding_multipliers = {c.xy_list, c.z_list, ""};
        EXPECT_EQ(decode_padding(session) < 0 ? -1 : 0, c.status);
        MeshPadding& padding = session.padding;
        count_padded_cells(padding, 10, 20, 30, c.nonuniform);
        sum_padding(padding);
        EXPECT_EQ(padding.total_x_cells, c.x);
        EXPECT_EQ(padding.total_y_cells, c.y);
        EXPECT_EQ(padding.total_z_cells, c.z);
        EXPECT_FLOAT_EQ(padding.padding_xy_sum, c.xy_sum);
        EXPECT_FLOAT_EQ(padding.padding_z_sum, c.z_sum);
    }
}

struct MoveCase {
    int axis;
    bool minimum, up;
    int step, cells_before;
    bool moved;
    double min_after, max_after;
    int cells_after;
};

TEST(SpinMove, LimitsMoveByWholeStepsAndKeepACell) {
    // Row 0 from 100 to 300 in cells of 20, as many cells as the case says.
    const MoveCase cases[] = {
        {0, true, false, 1, 10, true, 80, 300, 11},    // minimum down: one more cell
        {0, true, true, 1, 10, true, 120, 300, 9},     // minimum up: one fewer
        {0, false, false, 2, 10, true, 100, 260, 8},   // maximum down by two cells
        {0, false, true, 4, 10, true, 100, 380, 14},   // maximum up by four
        {0, true, true, 1, 1, false, 100, 300, 1},     // the last cell stays
        {0, false, false, 1, 0, false, 100, 300, 0},
        {2, true, false, 1, 10, true, 80, 300, 11},    // Z moves the same way
    };
    for (const MoveCase& c : cases) {
        SCOPED_TRACE(::testing::Message() << "axis " << c.axis << (c.minimum ? " minimum" : " maximum")
                                          << (c.up ? " up" : " down") << " by " << c.step);
        InversionFields fields;
        const std::size_t n = static_cast<std::size_t>(c.axis);
        fields.mesh_min[n] = 100;
        fields.mesh_max[n] = 300;
        fields.mesh_cell_size[n] = 20;
        fields.mesh_cell_count[n] = c.cells_before;
        EXPECT_EQ(move_mesh_limit(mesh_limits(fields), c.axis, c.minimum, c.up, c.step), c.moved);
        EXPECT_EQ(fields.mesh_min[n], c.min_after);
        EXPECT_EQ(fields.mesh_max[n], c.max_after);
        EXPECT_EQ(fields.mesh_cell_count[n], c.cells_after);
    }
}

TEST(SpinMove, RefinedStepIsTheLoadedCoreCell) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    session.definition.mesh_cell_size = {25, 50, 10, 1};
    session.loaded_mesh.loaded = true;
    session.loaded_mesh.core_dx = 100;
    session.loaded_mesh.core_dy = 100;
    session.loaded_mesh.core_dz = 50;
    EXPECT_EQ(spin_step(session, 0), 1);  // standard mode
    session.definition.refinement_mode = 1;
    EXPECT_EQ(spin_step(session, 0), 4);
    EXPECT_EQ(spin_step(session, 1), 2);
    EXPECT_EQ(spin_step(session, 2), 5);
    session.loaded_mesh.loaded = false;
    EXPECT_EQ(spin_step(session, 0), 1);
}

}  // namespace
}  // namespace invsetup
