// tests/modelfiles/model_interpolation_test.cpp - a model on a 2 x 2 x 2 mesh of 10 m cells sampled at
// points worked out by hand: inside, on a cell boundary, in the edge cells beyond the centres, above
// the top centre, outside, under a null cell, and a target column cut at its surface; a trapezoidal
// source whose cells are found from map points.
#include "modelfiles/model_interpolation.h"

#include <gtest/gtest.h>

#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/model_file_read.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

struct Interpolation : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    LoadedMesh& source = session.loaded_mesh;
    LoadedModel& model = session.loaded_model;

    // Nodes x, y 0, 10, 20 (centres 5, 15); z 20, 10, 0 from the top (centres 15, 5). Cell (i, j, k)
    // holds i + 10 j + 100 k, k from the top: a linear field, which every rule gives back exactly.
    void SetUp() override {
        source.nx = source.ny = source.nz = 2;
        source.x0 = source.y0 = 0;
        source.z0 = 20;
        source.dx = source.dy = source.dz = Array1<double>(2, 10.0);
        ASSERT_EQ(derive_mesh_geometry(session, source), 0);
        model.values.size(2, 2, 2);
        for (int k = 1; k <= 2; ++k)
            for (int j = 1; j <= 2; ++j)
                for (int i = 1; i <= 2; ++i) model.values.at(i, j, k) = static_cast<float>(i + 10 * j + 100 * k);
    }
    float at(double x, double y, double z) const { return sample_model(1, source, model, x, y, z); }
};

TEST_F(Interpolation, SamplesAtHandComputedPoints) {
    struct Case {
        double x, y, z;
        float expected;
    };
    const Case cases[] = {
        {7, 12, 14, 128.2f},   // x 1 + .2, y 10 + 7 (10 + .7 * 10), z 200 - .9 * 100
        {10, 10, 10, 166.5f},  // on the cell boundaries: half way between the centres on every axis
        {5, 15, 5, 221},       // a centre: the cell's own value
        {2, 5, 5, 210.7f},     // before the first x centre: the line through the two centres, carried on
        {5, 5, 18, 111},       // above the top centre: the top layer alone
        {5, 5, 1, 211},        // below the bottom centre: the bottom layer alone
    };
    for (const Case& c : cases) EXPECT_NEAR(at(c.x, c.y, c.z), c.expected, 1e-3) << c.x << " " << c.y << " " << c.z;
    // Outside the columns, and on the last node, nothing.
    for (double x : {-1.0, 20.0, 25.0}) EXPECT_FLOAT_EQ(at(x, 5, 5), -1e32f) << x;
    EXPECT_FLOAT_EQ(at(5, 20, 5), -1e32f);
}

TEST_F(Interpolation, NullCornersTakeTheSlopeRule) {
    // One null corner (not the point's own cell): the mean slopes of the edges left give the linear
    // field back.
    model.values.at(1, 1, 1) = -1e32f;
    EXPECT_NEAR(at(10, 10, 10), 166.5f, 1e-3);
    // Only the first corner present: its value.
    for (int k = 1; k <= 2; ++k)
        for (int j = 1; j <= 2; ++j)
            for (int i = 1; i <= 2; ++i)
                if (!(i == 1 && j == 1 && k == 2)) model.values.at(i, j, k) = -1e32f;
    EXPECT_FLOAT_EQ(at(10, 10, 4), 211);
    // The first corner null: the slope rule starts from its null value.
    model.values.at(1, 1, 2) = -1e32f;
    model.values.at(2, 1, 2) = 212;
    model.values.at(1, 2, 2) = 221;
    EXPECT_LT(at(10, 10, 4), -1e30f);
}

TEST_F(Interpolation, FillsColumnsFromTheirFirstCellAndCutsAtTheSurface) {
    // Column (1, 1) null at the top, column (2, 2) null throughout.
    model.values.at(1, 1, 1) = -1e32f;
    model.values.at(2, 2, 1) = model.values.at(2, 2, 2) = -1e32f;
    // The target: the same columns, four layers of 5 m.
    const InversionMesh target = testing::uniform_mesh({2, 2, 4}, {10, 10, 5}, {0, 0, 20});
    // The surface lies at 12 over column (1, 2): the layers whose top is above it go.
    Array2<float> surface(2, 2, 20.0f);
    surface(1, 2) = 12;
    InterpolationTarget where;
    where.mesh = &target;
    where.surface_cells = &surface;
    ModelValues values;
    interpolate_model_to_mesh(dialogue, 1, 1, source, model, where, values);

    // Column (1, 1) at its centre, z 17.5: the first present cell (211) stands in for the null one
    // above it. Column (2, 2) reads 0 meanwhile; (1, 2) keeps its cells below 15.
    EXPECT_FLOAT_EQ(values.at(1, 1, 1), 211);
    EXPECT_FLOAT_EQ(values.at(1, 1, 4), 211);
    EXPECT_FLOAT_EQ(values.at(2, 2, 1), 0);
    EXPECT_FLOAT_EQ(values.at(2, 1, 1), 112);
    EXPECT_FLOAT_EQ(values.at(2, 1, 3), 187);  // z 7.5: a quarter of the way from 212 to 112
    EXPECT_FLOAT_EQ(values.at(1, 2, 1), -1e32f);
    EXPECT_FLOAT_EQ(values.at(1, 2, 2), -1e32f);
    EXPECT_FLOAT_EQ(values.at(1, 2, 3), 196);  // top node 10 is not above 12
    // The source is put back as it was.
    EXPECT_FLOAT_EQ(model.values.at(1, 1, 1), -1e32f);
    EXPECT_FLOAT_EQ(model.values.at(1, 1, 2), 211);
    EXPECT_FLOAT_EQ(model.values.at(2, 2, 2), -1e32f);
}

// A trapezoidal mesh of 3 x 2 x 2 cells of 10 m, its nodes on the map turned by the 3-4-5 bearing
// (along the rows 0.8, 0.6 per metre, across them -0.6, 0.8) from (1000, 2000); the far corner node
// (4, 3) is moved 5 m further along its row, so cell (3, 2) is a true trapezoid. The surface rises
// 1 m a column from 20. The model is the linear field of the rectangular cases, in the mesh's frame.
struct TrapezoidInterpolation : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    LoadedMesh& source = session.loaded_mesh;
    LoadedModel& model = session.loaded_model;

    void SetUp() override {
        ASSERT_EQ(read_mesh_file(session, testing::test_data("mesh/trapezoid.msh").string()), 0);
        model.values.size(3, 2, 2);
        for (int k = 1; k <= 2; ++k)
            for (int j = 1; j <= 2; ++j)
                for (int i = 1; i <= 3; ++i) model.values.at(i, j, k) = static_cast<float>(i + 10 * j + 100 * k);
    }
};

TEST_F(TrapezoidInterpolation, ReaderBuildsTheBearingAndRowTables) {
    EXPECT_EQ(source.mesh_format, 4);
    EXPECT_EQ(source.has_trapezoid, 1);
    EXPECT_TRUE(source.has_topo);
    const MeshTrapezoid& t = source.trapezoid;
    EXPECT_NEAR(t.rotation, 36.869898, 1e-5);  // every row, the moved one too, runs 3 across 4
    EXPECT_NEAR(t.cos_rotation, 0.8, 1e-6);
    EXPECT_NEAR(t.sin_rotation, 0.6, 1e-6);
    EXPECT_EQ(t.x_table(2, 1), 1008);
    EXPECT_EQ(t.x_table(2, 2), 2006);
    EXPECT_NEAR(t.x_table(4, 3), 30, 1e-4);  // along the bearing
    EXPECT_NEAR(t.x_table(4, 4), 0, 1e-4);
    EXPECT_EQ(t.y_table(3, 1), 988);
    EXPECT_NEAR(t.y_table(3, 3), 0, 1e-4);
    EXPECT_NEAR(t.y_table(3, 4), 20, 1e-4);  // across it
}

TEST_F(TrapezoidInterpolation, MapPointsFindTheirCellAndSampleTheModel) {
    // Map points worked out from the nodes: the blend of the cell's corners at (fx, fy); the mesh
    // position is the cell's node plus the fractions of its widths, the depth counts from the
    // surface blended the same way (d = z - surface + 20).
    struct Case {
        double x, y, z;
        int i, j;
        double fx, fy;
        float expected;
    };
    const Case cases[] = {
        {1009, 2013, 16.5, 2, 1, 0.5, 0.5, 112},          // position (15, 5), surface 21.5, d 15: a centre
        {999.8, 2003.6, 15.2, 1, 1, 0.2, 0.3, 108.7f},    // (2, 3), before the first centres, surface 20.2
        {1012, 2027.75, 12.5, 3, 2, 0.5, 0.5, 173},       // the trapezoid's middle: (25, 15), d 10
        {1009.5, 2025.875, 12.25, 3, 2, 0.25, 0.5, 172.75f},  // (22.5, 15), surface 22.25, d 10
        {1016, 2037, 13, 3, 2, 1, 1, 178.5f},             // the far corner node: (30, 20), surface 23, d 10
    };
    const TrapezoidLookup lookup(source);
    for (const Case& c : cases) {
        TrapezoidCell cell;
        ASSERT_TRUE(lookup.find(c.x, c.y, cell)) << c.x << " " << c.y;
        EXPECT_EQ(cell.i, c.i) << c.x << " " << c.y;
        EXPECT_EQ(cell.j, c.j) << c.x << " " << c.y;
        EXPECT_NEAR(cell.fx, c.fx, 1e-9) << c.x << " " << c.y;
        EXPECT_NEAR(cell.fy, c.fy, 1e-9) << c.x << " " << c.y;
        EXPECT_NEAR(sample_model(1, source, model, c.x, c.y, c.z), c.expected, 1e-3) << c.x << " " << c.y;
    }
    // Beside the first row, beyond the moved corner, past the last column: nothing.
    for (const auto& [x, y] : {std::pair{990.0, 2000.0}, std::pair{1020.0, 2040.0}, std::pair{1030.0, 2020.0}}) {
        TrapezoidCell cell;
        EXPECT_FALSE(lookup.find(x, y, cell)) << x << " " << y;
        EXPECT_FLOAT_EQ(sample_model(1, source, model, x, y, 10), -1e32f) << x << " " << y;
    }
    // Without its surface the mesh's z is an elevation: z 15 is the top centre.
    source.has_topo = false;
    EXPECT_NEAR(sample_model(1, source, model, 1009, 2013, 15), 112, 1e-3);
}

TEST_F(TrapezoidInterpolation, RefinedMeshInTheSourceFrameIsSampledThroughTheMap) {
    // Cells of 5 x 5 x 10 m over the same frame: each centre goes to the map through the source's
    // nodes and is found there again.
    const InversionMesh target = testing::uniform_mesh({6, 4, 2}, {5, 5, 10}, {0, 0, 20});
    InterpolationTarget where;
    where.mesh = &target;
    ModelValues values;
    interpolate_model_to_mesh(dialogue, 1, 1, source, model, where, values);
    // (7.5, 12.5, 15): source cell (1, 2) at (.75, .25), surface 20.75, d 14.25.
    EXPECT_NEAR(values.at(2, 3, 1), 1.25f + 17.5f + 107.5f, 1e-3);
    // (27.5, 17.5, 5) in the trapezoid at (.75, .75): surface 22.75, d 2.25, below the bottom centre.
    EXPECT_NEAR(values.at(6, 4, 2), 3.25f + 22.5f + 200, 1e-3);
}

TEST(ModelTransforms, SinhUndoesAsinh) {
    for (float v : {-50.0f, -1.0f, 0.0f, 0.25f, 3.0f}) EXPECT_NEAR(sinh_value(asinh_value(v)), v, 1e-4f * (1 + std::abs(v)));
    EXPECT_FLOAT_EQ(asinh_value(-2), -asinh_value(2));
}

}  // namespace
}  // namespace invsetup
