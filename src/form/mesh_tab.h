// src/form/mesh_tab.h - the Mesh tab: the limits typed into its text boxes, the padding lists, the
// cell counts and the Total Mesh it shows, its Update buttons and change handlers.
#pragma once
#include "mesh/mesh_definition.h"

namespace invsetup {
struct Session;

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

/// Writes the numbers of tiles of the definition into their boxes.
void display_tile_counts(Session& session);

/// Builds session.mesh (build_inversion_mesh); in refinement mode the tab shows the limits snapped
/// to the loaded mesh, the cell counts and the numbers of tiles. Returns its status.
int determine_inversion_mesh(Session& session);

/// The Update buttons of the mesh tab: below 3 one row; 3 or more all rows and the mesh.
void command_update(Session& session, int index);

/// Registers the change handlers of the mesh tab's text boxes.
void register_mesh_behaviour(Session& session);

}  // namespace invsetup
