// src/mesh/mesh_definition.h - the mesh as the form defines it: limits, cell counts and padding, in
// numbers (the Mesh tab that shows them is src/form/mesh_tab.h).
#pragma once
#include <array>
#include <string>
#include <vector>

namespace invsetup {
struct Session;
struct InversionFields;

/// The form's mesh definition in numbers, by row: 0 X, 1 Y, 2 Z uniform core, 3 non-uniform Z part
/// (min_val[3] is the bottom of the whole Z mesh, cell_size[3] the growth multiplier). It names the
/// definition's own mesh_min, mesh_max, mesh_cell_size and mesh_cell_count: there is one record.
struct MeshLimits {
    std::array<double, 4>& min_val;
    std::array<double, 4>& max_val;
    std::array<double, 4>& cell_size;
    std::array<int, 4>& num_cells;
};
MeshLimits mesh_limits(InversionFields& fields);

/// Most items of a padding list (the arrays hold indices 0 to 16).
inline constexpr int max_padding_items = 16;

/// What the padding lists decode to, and the cell totals shown on the form.
struct MeshPadding {
    int num_padding_xy = 0;  // padding cells on each X or Y side
    int num_padding_z = 0;   // padding cells below the Z mesh
    std::vector<std::string> padding_xy_texts, padding_z_texts;  // list items, from 0
    std::array<float, max_padding_items + 1> padding_xy{};        // multipliers, 1 next to the core
    std::array<float, max_padding_items + 1> padding_z{};
    float padding_xy_sum = 0;
    float padding_z_sum = 0;
    int total_x_cells = 0, total_y_cells = 0, total_z_cells = 0;
};

/// Decodes both padding lists of the definition (padding_multipliers) when padding is on. Returns
/// the status of the last parse (0 when padding is off); counts stay 0 when off.
int decode_padding(Session& session);
/// The totals with padding of a mesh of n_x, n_y, n_z core cells and n_nonuniform cells below: Z
/// padding counts only without a non-uniform part.
void count_padded_cells(MeshPadding& padding, int n_x, int n_y, int n_z, int n_nonuniform);
/// The sums of the multipliers of both decoded padding lists (padding_xy_sum, padding_z_sum).
void sum_padding(MeshPadding& padding);

}  // namespace invsetup
