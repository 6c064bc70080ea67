// src/mesh/mesh_definition.h - the mesh as the form defines it: limits, cell counts and padding.
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

/// Reads both padding lists from the form when padding is on. Returns the status of the last parse
/// (0 when padding is off); counts stay 0 when off.
int decode_padding_cells(Session& session);
/// Decodes the padding and sets the totals with padding. Z padding counts only without a
/// non-uniform part. Returns the decode status.
int calculate_cell_counts(Session& session, int n_x, int n_y, int n_z, int n_nonuniform);

/// Writes the cell counts with padding into the form's total boxes.
void display_cell_counts(Session& session, int n_x, int n_y, int n_z, int n_nonuniform);

/// Writes the limits of the mesh with its padding into the Total Mesh boxes.
void display_total_mesh(Session& session, const MeshLimits& limits);

/// Fills the mesh limits from the form's mesh tab and recomputes what follows from them. `row` -1
/// for all rows, or 0 to 2; `anchor` 1 keeps max_val and moves min_val, anything else keeps
/// min_val. Returns 0, or -1 after one message.
int unload_mesh_from_form(Session& session, int row, int anchor);

/// The Update buttons of the mesh tab: below 3 one row; 3 or more all rows and the mesh.
void command_update(Session& session, int index);

/// Registers the change handlers of the mesh tab's text boxes.
void register_mesh_behaviour(Session& session);

}  // namespace invsetup
