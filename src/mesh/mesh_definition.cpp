// src/mesh/mesh_definition.cpp - the mesh as the form defines it.
#include "mesh/mesh_definition.h"

#include "session.h"

namespace invsetup {

void display_cell_counts(Session& /*session*/, int /*n_x*/, int /*n_y*/, int /*n_z*/, int /*n_nonuniform*/) {}

}  // namespace invsetup
