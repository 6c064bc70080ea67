// src/data/topo_file.h - "topo.dat", the surface as the outside programs read it (UBC topography
// format): the point count, then "x y z" for each mesh node of the area.
#pragma once
#include <filesystem>

namespace invsetup {
struct Session;

/// Writes `file` from session.mesh and session.topography.topo_nodes for the nodes x_first..x_last by
/// y_first..y_last (1-based, inclusive), rows from the south, west to east within a row. x and y are
/// written with up to 15 significant digits (map coordinates stay whole), z as the single real it is
/// (up to 7), each without a leading blank and separated by one blank; lines end CR LF. Returns 0, or
/// -1 after "The topo file could not be written: " and the fault (a node range outside the mesh, a
/// file that can't be created).
int write_topo_file(Session& session, const std::filesystem::path& file, int x_first, int x_last, int y_first,
                    int y_last);

}  // namespace invsetup
