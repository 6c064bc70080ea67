// src/create/tile_files.h - the files of one tile of a refinement run: its directory, the batch file
// beside it that does the whole tile, the copies of the sensitivity input files and the tile's own
// inversion input files.
#pragma once
#include <string>
#include <vector>

#include "create/run_context.h"
#include "form/inversion_definition.h"

namespace invsetup {
struct Session;
struct TileTable;

/// "tile" and the tile's x and y numbers, two digits each: "tile0101".
std::string tile_name(int i, int j);

/// The cells of the top portion of the z mesh that a tile takes: all nz cells when the in-house
/// method includes the regional mesh, else the top cells and the z blend.
int tile_z_cells(const InversionDefinition& definition, int nz);

/// The insert line that puts tile (i, j)'s core back into the whole model, with `z_cells` top cells,
/// the xy blend (when above 0) and behind it the z blend (when above 0).
std::string tile_insert_line(const InversionDefinition& definition, const TileTable& tiles, int i, int j,
                             int z_cells);

/// The lines of tile (i, j)'s batch file. For the in-house method with the coarse forward model the
/// person is asked where the coarse sensitivity matrix lies (a cancel warns and goes on).
std::vector<std::string> tile_batch_lines(Session& session, const RunContext& context, int i, int j);

/// The lines of a tile's inversion input file (`restart_flag` 0 ".inp", 1 ".restart").
std::vector<std::string> tile_inversion_input_lines(const InversionDefinition& definition, const RunContext& context,
                                                    int restart_flag);

/// Makes tile (i, j)'s directory and writes its batch file and input files (the first tile writes
/// its input files, the others copy them from "tile0101"). Throws std::runtime_error naming the file
/// on an I/O fault.
void write_tile_run_files(Session& session, const RunContext& context, int i, int j);

}  // namespace invsetup
