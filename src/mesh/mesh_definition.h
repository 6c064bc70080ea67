// src/mesh/mesh_definition.h - the mesh as the form defines it: limits, cell counts and padding.
#pragma once

namespace invsetup {
struct Session;

/// Writes the cell counts with padding into the form's total boxes.
void display_cell_counts(Session& session, int n_x, int n_y, int n_z, int n_nonuniform);

}  // namespace invsetup
