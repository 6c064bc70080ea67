// tests/mesh/inversion_mesh_test.cpp - the mesh of normal mode: core, non-uniform Z, padding.
#include "mesh/inversion_mesh.h"

#include <gtest/gtest.h>

#include "session.h"

namespace invsetup {
namespace {

struct NormalMesh : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    void SetUp() override {
        InversionDefinition& d = session.definition;
        d.inversion_method = method_ubc_mag_v5;
        d.refinement_mode = 0;
        d.add_mesh_padding = 0;
        d.mesh_min = {0, 0, 500, 500};
        d.mesh_max = {1000, 500, 1000, 0};
        d.mesh_cell_size = {100, 50, 10, 1};
        d.mesh_cell_count = {10, 10, 50, 0};
    }
};

TEST_F(NormalMesh, WithoutPaddingTheCoreIsTheWholeMesh) {
    ASSERT_EQ(build_inversion_mesh(session), 0);
    const InversionMesh& m = session.mesh;
    EXPECT_EQ(m.nx, 10);
    EXPECT_EQ(m.core_x_first, 1);
    EXPECT_EQ(m.core_x_last, 11);
    EXPECT_EQ(m.mesh_z_bottom, 500);
    EXPECT_EQ(m.z_nodes[1], 1000);
    EXPECT_EQ(m.z_nodes[51], 500);
    EXPECT_EQ(m.z_nodes_up[1], 500);
    EXPECT_EQ(m.x_centres[1], 50);
    EXPECT_EQ(m.cell_state.size(), 10u * 10u * 50u);
}

TEST_F(NormalMesh, PaddingPutsTheLastListItemOutside) {
    session.definition.add_mesh_padding = 1;
    session.definition.padding_multipliers = {"1,2,4,8", "1,2", ""};
    ASSERT_EQ(build_inversion_mesh(session), 0);
    const InversionMesh& m = session.mesh;
    EXPECT_EQ(m.nx, 18);
    EXPECT_EQ(m.dx[1], 800);
    EXPECT_EQ(m.dx[4], 100);
    EXPECT_EQ(m.dx[18], 800);
    EXPECT_EQ(m.dy[1], 400);
    EXPECT_EQ(m.mesh_x_min, -1500);
    EXPECT_EQ(m.mesh_x_max, 2500);
    EXPECT_EQ(m.x_nodes[1], -1500);
    EXPECT_EQ(m.core_x_first, 5);
    EXPECT_EQ(m.core_x_last, 15);
    EXPECT_EQ(m.x_nodes[m.core_x_first], 0);
    EXPECT_EQ(m.x_nodes[m.core_x_last], 1000);
    // Z padding below: widths 10, 20 under the core.
    EXPECT_EQ(m.nz, 52);
    EXPECT_EQ(m.dz[51], 10);
    EXPECT_EQ(m.dz[52], 20);
    EXPECT_EQ(m.core_z_last, 51);
    EXPECT_EQ(m.mesh_z_bottom, 470);
}

TEST_F(NormalMesh, NonUniformPartGrowsFromItsSecondCellAndReplacesZPadding) {
    InversionDefinition& d = session.definition;
    d.add_mesh_padding = 1;
    d.padding_multipliers = {"", "1,2,4", ""};
    d.mesh_cell_count[3] = 3;
    d.mesh_cell_size[3] = 2;
    d.mesh_min[3] = 430;
    ASSERT_EQ(build_inversion_mesh(session), 0);
    const InversionMesh& m = session.mesh;
    EXPECT_EQ(m.nx, 10);  // an empty list is no padding
    EXPECT_EQ(m.nz, 53);
    EXPECT_EQ(m.dz[50], 10);
    EXPECT_EQ(m.dz[51], 10);
    EXPECT_EQ(m.dz[52], 20);
    EXPECT_EQ(m.dz[53], 40);
    EXPECT_EQ(m.z_nodes[54], 430);
    EXPECT_EQ(m.mesh_z_bottom, 430);
}

TEST_F(NormalMesh, BadPaddingListLeavesNoPaddingOnThatAxis) {
    session.definition.add_mesh_padding = 1;
    session.definition.padding_multipliers = {"1,0,2", "1,2", ""};
    ASSERT_EQ(build_inversion_mesh(session), 0);
    EXPECT_EQ(session.mesh.nx, 10);
    EXPECT_EQ(session.mesh.mesh_x_min, 0);
    EXPECT_EQ(session.mesh.nz, 52);
    EXPECT_TRUE(dialogue.messages.empty());  // the definition checks name the list; see their tests
}

TEST_F(NormalMesh, SeventeenPaddingItemsEndInTheTrap) {
    session.definition.add_mesh_padding = 1;
    session.definition.padding_multipliers = {"1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1", "", ""};
    EXPECT_EQ(build_inversion_mesh(session), -1);
    EXPECT_EQ(dialogue.messages.size(), 1u);
}

TEST_F(NormalMesh, InHouseMethodMovesTheTopToZeroInTheRecordOnly) {
    session.definition.inversion_method = method_zarninv3d;
    session.definition.mesh_min = {0, 0, 0, 0};
    session.definition.mesh_cell_count[2] = 100;
    session.form.set_text("Text_max_val", 2, "1000");
    ASSERT_EQ(build_inversion_mesh(session), 0);
    EXPECT_EQ(session.mesh.z_nodes[1], 0);
    EXPECT_EQ(session.mesh.mesh_z_bottom, -1000);
    EXPECT_EQ(session.definition.mesh_max[2], 0);
    EXPECT_EQ(session.definition.mesh_min[2], -1000);
    EXPECT_EQ(session.form.text("Text_max_val", 2), "1000");
}

TEST_F(NormalMesh, CountNotPositiveFailsSilentlyAndKeepsTheOldMesh) {
    ASSERT_EQ(build_inversion_mesh(session), 0);
    session.definition.mesh_cell_count[1] = 0;
    EXPECT_EQ(build_inversion_mesh(session), -1);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_EQ(session.mesh.nx, 10);
}

}  // namespace
}  // namespace invsetup

namespace invsetup {

TEST(InversionMeshSize, AMeshBeyondTheMachineIsRefusedBeforeItsTablesAreTaken) {
    InversionMesh mesh;
    mesh.nx = 100000;
    mesh.ny = 100000;
    mesh.nz = 1000;
    try {
        mesh.size_arrays();
        ADD_FAILURE() << "ten trillion cells were taken";
    } catch (const std::runtime_error& fault) {
        EXPECT_EQ(std::string(fault.what()).rfind("The mesh has 10,000,000,000,000 cells, 40 TB for one model", 0), 0u);
    }
    EXPECT_EQ(mesh.dx.size(), 0);
}

}  // namespace invsetup
