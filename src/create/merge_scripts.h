// src/create/merge_scripts.h - the two scripts that end a refinement run: "iter_all.bat" runs the
// tile batch files in turn, "insert_all.bat" puts every tile's result back into the whole model.
// The same walk over the tiles writes each tile's observation file.
#pragma once
#include <filesystem>

namespace invsetup {
struct Session;

/// Walks the tiles in the order of the form's tile order lists (Combo_tile_order), writes each
/// tile's observation file from the readings of the run and the lines of both scripts; a tile that is switched off or
/// has no more data than the definition's minimum stays in the scripts as "rem " lines. Needs the
/// readings of process_inversion_data. Returns 0, or -1 when a tile's data could not be written
/// (after the writer's message); throws std::runtime_error on a script that can't be written.
int write_merge_scripts(Session& session, const std::filesystem::path& run_directory);

}  // namespace invsetup
