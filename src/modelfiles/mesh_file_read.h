// src/modelfiles/mesh_file_read.h - the existing mesh of refinement mode and the readers of the mesh
// files it may come from: UBC (with this system's trailer, or by node coordinates), the two-axis
// mesh, the layered mesh with its node table; RES3DINV files only through their option dialogue.
#pragma once
#include <array>
#include <istream>
#include <string>
#include <string_view>

#include "support/array1.h"

namespace invsetup {
struct Session;

/// Trapezoidal geometry of a mesh whose nodes are not on a rectangular grid.
struct MeshTrapezoid {
    double rotation = 0;  // mean bearing of the y rows, degrees from the x axis, anticlockwise
    double sin_rotation = 0, cos_rotation = 0;
    /// nodes(i, j) = {x, y} of node i (x index), j (y index).
    Array2<std::array<double, 2>> nodes = Array2<std::array<double, 2>>(1, 1);
    /// cell_corners(i, j)[corner 0..1][0..2]: kept for the model lookup.
    Array2<std::array<std::array<double, 3>, 2>> cell_corners = Array2<std::array<std::array<double, 3>, 2>>(1, 1);
    /// x_table(i, 1..2): node (i, 1); x_table(i, 3..4): its offset from node (1, 1) in the rotated
    /// frame (along, across). y_table(j, ...) the same for node (1, j).
    Array2<double> x_table = Array2<double>(1, 4);
    Array2<double> y_table = Array2<double>(1, 4);
};

/// One mesh read from a file. Arrays count from 1; z falls with the index.
struct LoadedMesh {
    bool loaded = false;
    int mesh_format = 0;  // 0 plain, 1 layered, 2..5 with topography; -100 while a two-axis mesh is read
    int nx = 0, ny = 0, nz = 0;
    double x0 = 0, y0 = 0, z0 = 0;  // west, south, top
    Array1<double> dx, dy, dz;
    Array1<double> x_nodes, y_nodes, z_nodes, z_nodes_up;
    Array1<double> x_centres, y_centres, z_centres;
    int air_cells = 0, sea_cells = 0, earth_cells = 0;
    bool has_topo = false;
    Array2<float> topo_grid;  // (nx+1, ny+1), -1e32 for no value
    float topo_max = -1e32f, topo_min = 1e32f;
    float drape_top = 0, drape_bottom = 0, drape_range = 0;
    int has_trapezoid = 0;
    MeshTrapezoid trapezoid;
    int pad_x_low = -1, pad_x_high = -1, pad_y_low = -1, pad_y_high = -1, pad_z_low = -1, pad_z_high = -1;
    double core_dx = 0, core_dy = 0, core_dz = 0;
    /// The mesh surface, for the tile and topography logic.
    float surface_level = 0;
    int surface_varies = 0;
    double scale_factor = 1.0;
};

/// Back to no mesh: not loaded, format and counts 0, one-element trapezoid arrays, padding -1.
void clear_mesh(LoadedMesh& mesh);

/// Reads a mesh file of any accepted form into session.loaded_mesh. Returns 0 on success, -1 after
/// a message. A GOCAD voxet or VTK file is turned away silently: returns -2, says nothing and loads
/// nothing.
/// `model_kind` 3 moves the origin south by the mesh's Y extent (the model's rows run north down).
int read_mesh_file(Session& session, const std::string& file_name, int model_kind = 0);

/// The UBC readers on an open stream; `file_name` names the file in messages. Each returns 0, or -1
/// after a message through session.dialogue. read_ubc_mesh reads from the start of the stream.
int read_ubc_mesh(Session& session, std::istream& in, LoadedMesh& mesh);
int read_layered_mesh(Session& session, std::istream& in, LoadedMesh& mesh);

/// Nodes, centres, padding counts and core widths from counts, origin and widths. Returns 0, or -1
/// after "Bad x cell ..." (which names `file_name` when given) with the count of that axis set to 0.
int derive_mesh_geometry(Session& session, LoadedMesh& mesh, std::string_view file_name = {});

}  // namespace invsetup
