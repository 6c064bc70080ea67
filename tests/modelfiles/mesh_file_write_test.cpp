// tests/modelfiles/mesh_file_write_test.cpp - the bytes of the mesh file.
#include "modelfiles/mesh_file_write.h"

#include <gtest/gtest.h>

#include "mesh/inversion_mesh.h"
#include "test_support.h"

namespace invsetup {
namespace {

/// A mesh of the given widths from (x0, y0, top).
InversionMesh mesh_of(std::vector<double> dx, std::vector<double> dy, std::vector<double> dz, double x0 = 0,
                      double y0 = 0, double top = 0) {
    InversionMesh mesh;
    mesh.nx = static_cast<int>(dx.size());
    mesh.ny = static_cast<int>(dy.size());
    mesh.nz = static_cast<int>(dz.size());
    mesh.size_arrays();
    for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = dx[static_cast<std::size_t>(i - 1)];
    for (int i = 1; i <= mesh.ny; ++i) mesh.dy[i] = dy[static_cast<std::size_t>(i - 1)];
    for (int i = 1; i <= mesh.nz; ++i) mesh.dz[i] = dz[static_cast<std::size_t>(i - 1)];
    mesh.x_nodes[1] = x0;
    mesh.y_nodes[1] = y0;
    mesh.z_nodes[1] = top;
    lay_nodes(mesh);
    return mesh;
}

/// The whole mesh with the extended trailer of the format.
MeshFileRequest extended_request(const InversionMesh& mesh, int format) {
    MeshFileRequest request = whole_mesh_request(mesh);
    request.write_extended = true;
    request.mesh_format = format;
    return request;
}

Array1<double> widths(std::vector<double> values) {
    Array1<double> a(static_cast<int>(values.size()));
    for (int i = 1; i <= a.size(); ++i) a[i] = values[static_cast<std::size_t>(i - 1)];
    return a;
}

TEST(MeshWidthLine, UniformAxisIsOneUnpaddedToken) {
    EXPECT_EQ(width_lines(Array1<double>(40, 25.0), 1, 41), std::vector<std::string>{"40*25.0000"});
}

TEST(MeshWidthLine, TokensButTheLastAreElevenCharactersAndABlank) {
    EXPECT_EQ(width_lines(widths({10, 10, 20}), 1, 4), std::vector<std::string>{"  2*10.0000 20.0000"});
    // A token longer than 11 characters is cut.
    Array1<double> long_run(101, 100.0);
    long_run[101] = 5;
    EXPECT_EQ(width_lines(long_run, 1, 102), std::vector<std::string>{"100*100.000 5.0000"});
}

TEST(MeshWidthLine, RunsTolerateLessThanAThousandth) {
    EXPECT_EQ(width_lines(widths({10, 10.0005}), 1, 3), std::vector<std::string>{"2*10.0000"});
    EXPECT_EQ(width_lines(widths({10, 10.001}), 1, 3), std::vector<std::string>{"    10.0000 10.0010"});
}

TEST(MeshWidthLine, BreaksOnceALineHolds132Characters) {
    std::vector<double> w;
    for (int i = 0; i < 14; ++i) w.push_back(i % 2 ? 10 : 20);
    const std::vector<std::string> lines = width_lines(widths(w), 1, 15);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].size(), 132u);  // eleven tokens of 11 characters and a blank
    EXPECT_EQ(lines[1], "    10.0000     20.0000 10.0000");
}

TEST(MeshFile, PlainFileHasCountsOriginAndWidths) {
    const InversionMesh mesh = mesh_of({10, 10, 20}, {50}, {5, 5}, 1000, 2000.5, 300);
    EXPECT_EQ(mesh_file_lines(mesh, whole_mesh_request(mesh)),
              (std::vector<std::string>{"3 1 2", " 1000  2000.5  300", "  2*10.0000 20.0000", "50.0000", "2*5.0000"}));
}

TEST(MeshFile, TrailerWritesFormatCountsAndTopographyRows) {
    const InversionMesh mesh = mesh_of({10}, {10}, {5, 5, 5});
    MeshFileRequest request = extended_request(mesh, 5);
    request.drape_top = 100;
    request.drape_bottom = 20.25f;
    request.air_cells = 8;
    request.has_topo = true;
    Array2<float> topo(2, 2);
    topo(1, 1) = 1.5f;
    topo(2, 1) = -2;
    topo(1, 2) = 3;
    topo(2, 2) = 4.125f;
    request.topo_grid = &topo;
    const std::vector<std::string> lines = mesh_file_lines(mesh, request);
    const std::vector<std::string> trailer(lines.begin() + 5, lines.end());
    EXPECT_EQ(trailer, (std::vector<std::string>{"Mesh format: 5", "Mesh topo drape: 100.0 20.3", "Number of air cells: 8.0",
                                                 "Topography (from lower-left by row)", "1.50  -2.00  ", "3.00  4.13  "}));
}

TEST(MeshFile, TopographyLineBreaksPastSeventyCharacters) {
    const InversionMesh mesh = mesh_of(std::vector<double>(12, 10.0), {10}, {5});
    MeshFileRequest request = extended_request(mesh, 2);
    request.has_topo = true;
    Array2<float> topo(13, 2, 100.0f);
    request.topo_grid = &topo;
    const std::vector<std::string> lines = mesh_file_lines(mesh, request);
    // Each value is "100.00  " (8 characters): the ninth passes 70, the remaining four end the row.
    ASSERT_EQ(lines.size(), 5u + 2u + 4u);
    EXPECT_EQ(lines[7].size(), 72u);
    EXPECT_EQ(lines[8].size(), 32u);
}

TEST(MeshFile, TrapezoidalWithoutTopographySaysFormatTwo) {
    const InversionMesh mesh = mesh_of({10}, {10}, {5});
    MeshFileRequest request = extended_request(mesh, 4);
    request.has_trapezoid = true;
    Array2<std::array<double, 2>> nodes(2, 2, {0.0, 0.0});
    nodes(2, 1) = {10.004, 0.5};
    request.trapezoid_nodes = &nodes;
    const std::vector<std::string> lines = mesh_file_lines(mesh, request);
    EXPECT_EQ(lines.at(5), "Mesh format: 2");
    EXPECT_EQ(lines.at(6), "Trapezoidal nodes");
    EXPECT_EQ(lines.at(8), "10.00  0.50");
    EXPECT_EQ(lines.size(), 11u);
}

TEST(MeshFile, FormatZeroHasNoTopographyBlockEvenWithTopography) {
    const InversionMesh mesh = mesh_of({10}, {10}, {5});
    MeshFileRequest request = extended_request(mesh, 0);
    request.has_topo = true;
    Array2<float> topo(2, 2);
    request.topo_grid = &topo;
    EXPECT_EQ(mesh_file_lines(mesh, request).back(), "Mesh format: 0");
}

TEST(MeshFile, HeaderlessTileHasOnlyZWidths) {
    const InversionMesh mesh = mesh_of({10, 10}, {10}, {5, 5, 7});
    MeshFileRequest request = whole_mesh_request(mesh);
    request.headerless = 1;
    request.first_z = 2;
    EXPECT_EQ(mesh_file_lines(mesh, request), (std::vector<std::string>{"0*-1.0000", "0*-1.0000", "     5.0000 7.0000"}));
}

TEST(MeshFile, WritesCrLfLines) {
    testing::TempDir dir;
    const InversionMesh mesh = mesh_of({10}, {10}, {5});
    write_mesh_file(dir.path() / "mesh", mesh, whole_mesh_request(mesh));
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "mesh"), "1 1 1\r\n 0  0  0\r\n10.0000\r\n10.0000\r\n5.0000\r\n");
}

}  // namespace
}  // namespace invsetup
