// tests/data/topography_test.cpp - the surface on the mesh from points, the air cells and the lift
// of readings out of the ground, and "topo.dat".
#include <gtest/gtest.h>

#include <string>

#include "data/topo_file.h"
#include "data/topography.h"
#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace {

using namespace invsetup;
using invsetup::testing::TempDir;
using invsetup::testing::read_file_bytes;

// Readings on the plane z = top - 0.1 x over the area the mesh and its margin cover.
Array2<double> plane_points(double top, int count = 9) {
    Array2<double> locations(count, 3);
    for (int n = 1; n <= count; ++n) {
        const double x = -10 + 40.0 * ((n - 1) % 3) / 2, y = -10 + 40.0 * ((n - 1) / 3) / 2;
        locations(n, 1) = x;
        locations(n, 2) = y;
        locations(n, 3) = top - 0.1 * x;
    }
    return locations;
}

class GridTopo : public ::testing::Test {
protected:
    void SetUp() override {
        session.mesh = invsetup::testing::uniform_mesh({2, 2, 3}, {10, 10, 10}, {0, 0, 100});  // 100 down to 70
        session.definition.topo_shift_option = 0;
        session.definition.elevation_offsets[1] = 0;
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
};

TEST_F(GridTopo, CentresAndNodesTakeThePlaneAndTheCellsAboveIt) {
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(95)), 0);
    const Topography& topo = session.topography;
    EXPECT_FLOAT_EQ(topo.topo_grid(1, 1), 94.5f);
    EXPECT_FLOAT_EQ(topo.topo_grid(2, 2), 93.5f);
    EXPECT_FLOAT_EQ(topo.topo_nodes(1, 3), 95.0f);
    EXPECT_FLOAT_EQ(topo.topo_nodes(3, 1), 93.0f);
    EXPECT_EQ(topo.topo_cell(1, 1), 1);  // only the top node, 100, lies above 94.5
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(GridTopo, OffsetIsAddedAndTheShiftMovesDownToANode) {
    session.definition.elevation_offsets[1] = -20;
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(95)), 0);
    EXPECT_FLOAT_EQ(session.topography.topo_grid(1, 1), 74.5f);
    EXPECT_EQ(session.topography.topo_cell(1, 1), 3);

    session.definition.elevation_offsets[1] = 0;
    session.definition.topo_shift_option = 1;
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(95)), 0);
    EXPECT_FLOAT_EQ(session.topography.topo_grid(1, 1), 90.0f);
    EXPECT_FLOAT_EQ(session.topography.topo_nodes(1, 1), 90.0f);
    EXPECT_EQ(session.topography.topo_cell(1, 1), 1);

    // A surface above the mesh comes down to its top; one exactly on a node stays.
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(131)), 0);
    EXPECT_FLOAT_EQ(session.topography.topo_grid(2, 2), 100.0f);
    EXPECT_EQ(session.topography.topo_cell(2, 2), 0);
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(81.5)), 0);
    EXPECT_FLOAT_EQ(session.topography.topo_grid(2, 1), 80.0f);  // 80.0 exactly at the centre
    EXPECT_EQ(session.topography.topo_cell(2, 1), 2);
}

TEST_F(GridTopo, ASurfaceBelowTheMeshLeavesEveryCellAbove) {
    ASSERT_EQ(grid_topo_from_points(session, 9, plane_points(50)), 0);
    EXPECT_EQ(session.topography.topo_cell(1, 2), 3);
}

TEST_F(GridTopo, FourUsablePointsAreTooFewAndFiveAreEnough) {
    Array2<double> points = plane_points(95);
    points(5, 2) = -10.01;    // beyond one cell of the mesh
    points(6, 3) = -9999.5;   // a dummy elevation
    points(7, 1) = 30.01;
    points(8, 3) = -99999;
    points(9, 3) = -998.2;
    EXPECT_EQ(grid_topo_from_points(session, 9, points), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0], "The topo data file did not contain enough data points to be meaningful");

    points(9, 3) = 95;
    EXPECT_EQ(grid_topo_from_points(session, 9, points), 0);
    EXPECT_EQ(session.topography.topo_point_count, 5 + 4);
}

TEST_F(GridTopo, ManyPointsOnOneLineAreColinear) {
    Array2<double> points(50, 3);
    for (int n = 1; n <= 50; ++n) {
        points(n, 1) = -5 + 0.5 * n;
        points(n, 2) = 2 + 0.25 * n;
        points(n, 3) = 90;
    }
    EXPECT_EQ(grid_topo_from_points(session, 50, points), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0], "All Points in the topography file are colinear");
}

class ProcessTopo : public GridTopo {
protected:
    void SetUp() override {
        GridTopo::SetUp();
        session.bins.size_bins(2, 2);
        session.topography.size_surface(2, 2);
    }
    void reading(int i, int j, double z) {
        session.bins.bin_used(i, j) = 1;
        session.bins.bin_z(i, j) = z;
    }
};

TEST_F(ProcessTopo, MarksTheAirCellsOfEachColumn) {
    session.topography.topo_cell(1, 1) = 0;
    session.topography.topo_cell(2, 1) = 1;
    session.topography.topo_cell(1, 2) = 3;  // the surface lies below the mesh
    session.topography.topo_cell(2, 2) = 2;
    ASSERT_EQ(process_inversion_topo(session), 0);
    InversionMesh& mesh = session.mesh;
    EXPECT_EQ(mesh.cell_state_at(1, 1, 1), 0.0f);
    EXPECT_EQ(mesh.cell_state_at(2, 1, 1), -1.0f);
    EXPECT_EQ(mesh.cell_state_at(2, 1, 2), 0.0f);
    for (int k = 1; k <= 3; ++k) EXPECT_EQ(mesh.cell_state_at(1, 2, k), -1.0f) << k;
    EXPECT_EQ(mesh.cell_state_at(2, 2, 2), -1.0f);
    EXPECT_EQ(mesh.cell_state_at(2, 2, 3), 0.0f);
}

TEST_F(ProcessTopo, LiftsReadingsTo0Point1AboveTheTopGroundNode) {
    session.definition.inversion_method = method_ubc_mag_v5;
    session.topography.topo_cell(1, 1) = 1;  // ground starts at node 2, 90
    session.topography.topo_cell(2, 1) = 1;
    session.topography.topo_cell(1, 2) = 3;  // all air: the bottom node, 70
    session.topography.topo_cell(2, 2) = 1;
    reading(1, 1, 85);
    reading(2, 1, 90 + 0.1);  // exactly 0.1 above already
    reading(1, 2, 60);
    session.bins.bin_z(2, 2) = 10;  // no reading in this bin
    ASSERT_EQ(process_inversion_topo(session), 0);
    EXPECT_DOUBLE_EQ(session.bins.bin_z(1, 1), 90.1);
    EXPECT_EQ(session.bins.bin_z(2, 1), 90 + 0.1);
    EXPECT_DOUBLE_EQ(session.bins.bin_z(1, 2), 70.1);
    EXPECT_EQ(session.bins.bin_z(2, 2), 10);
}

TEST_F(ProcessTopo, TheInHouseMethodKeepsItsReadings) {
    session.definition.inversion_method = method_zarninv3d;
    session.topography.topo_cell(1, 1) = 2;
    reading(1, 1, 20);
    ASSERT_EQ(process_inversion_topo(session), 0);
    EXPECT_EQ(session.bins.bin_z(1, 1), 20);
    EXPECT_EQ(session.mesh.cell_state_at(1, 1, 2), -1.0f);
}

TEST_F(GridTopo, TopoFileListsTheNodesOfItsArea) {
    session.mesh.x_nodes[1] = 612345.25;  // map coordinates keep every digit
    lay_nodes(session.mesh);
    session.topography.size_surface(2, 2);
    for (int j = 1; j <= 3; ++j)
        for (int i = 1; i <= 3; ++i) session.topography.topo_nodes(i, j) = 100.0f + 0.1f * static_cast<float>(i + 3 * j);
    TempDir dir;
    ASSERT_EQ(write_topo_file(session, dir.path() / "topo.dat", 2, 3, 1, 2), 0);
    EXPECT_EQ(read_file_bytes(dir.path() / "topo.dat"),
              "4\r\n"
              "612355.25 0 100.5\r\n"
              "612365.25 0 100.6\r\n"
              "612355.25 10 100.8\r\n"
              "612365.25 10 100.9\r\n");

    EXPECT_EQ(write_topo_file(session, dir.path() / "bad.dat", 1, 4, 1, 3), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0].rfind("The topo file could not be written: ", 0), 0u);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "bad.dat"));
}

}  // namespace
