// src/mesh/inversion_mesh.h - the run's tensor mesh and the operation that builds it from the
// definition's mesh limits, in normal mode or refined inside a loaded mesh.
#pragma once
#include <cstddef>
#include <functional>
#include <vector>

#include "support/array1.h"

namespace invsetup {
struct Session;
struct MeshLimits;

/// The computed mesh. Arrays count from 1; metres. Cell i lies between node i and node i + 1.
/// z_nodes fall from the top of the mesh; z_nodes_up holds the same elevations rising.
struct InversionMesh {
    int nx = 0, ny = 0, nz = 0;
    Array1<double> dx, dy, dz;                     // cell widths, all positive, 1..n
    Array1<double> x_nodes, y_nodes, z_nodes;      // 1..n+1
    Array1<double> z_nodes_up;                     // 1..nz+1
    Array1<double> x_centres, y_centres, z_centres;  // 1..n
    /// One value per cell, z fastest (top down), then x, then y: see cell_state_at.
    std::vector<float> cell_state;

    // Node index range of the core (without padding or loaded outer cells).
    int core_x_first = 0, core_x_last = 0;
    int core_y_first = 0, core_y_last = 0;
    int core_z_first = 0, core_z_last = 0;
    double mesh_x_min = 0, mesh_x_max = 0, mesh_y_min = 0, mesh_y_max = 0;
    double mesh_z_top = 0, mesh_z_bottom = 0;

    /// The fine cells of refinement mode, as cell indices; the tile layout starts from them.
    int fine_x_first = 0, fine_x_last = 0, fine_y_first = 0, fine_y_last = 0;

    /// Sizes every array for the current nx, ny, nz (values 0, cell_state 0).
    void size_arrays();
    /// cell_state of cell (i, j, k), each from 1; throws std::out_of_range outside the mesh.
    float& cell_state_at(int i, int j, int k);
};

/// Two levels closer than this are one level when a surface or a reading is placed on the mesh's
/// Z nodes: a ten-thousandth of the thinnest cell. Far below any difference a survey can resolve,
/// and far above the round-off of interpolating a flat surface (349.9999999 for ground at 350), which
/// would otherwise move that ground a whole cell down.
double level_tolerance(const InversionMesh& mesh);

/// Lays the nodes from the first node and the widths: x and y rising from x_nodes[1], y_nodes[1],
/// z falling from z_nodes[1]; fills the centres and z_nodes_up.
void lay_nodes(InversionMesh& mesh);

/// What a caller shows while a refined mesh is built, each at its moment: the limits once they sit on
/// the loaded mesh's nodes (before the mesh is laid), the tile counts once they are known (before the
/// tiles are laid out). Either may be empty.
struct MeshSteps {
    std::function<void(const MeshLimits&)> refined_limits;
    std::function<void()> tile_counts;
};

/// Builds session.mesh from the definition's mesh limits, the padding lists and, in refinement mode,
/// session.loaded_mesh and the tile settings (then lays out the tiles too). Returns 0, or -1: counts
/// not positive (silently), a refined limit outside the loaded core (after its message), or a fault
/// (after the trap's message). The in-house method's Z limits are shifted to a top of 0 first. The
/// form's operation, which shows the refined limits and tile counts, is determine_inversion_mesh
/// (src/form/mesh_tab.h).
int build_inversion_mesh(Session& session, const MeshSteps& steps = {});

}  // namespace invsetup
