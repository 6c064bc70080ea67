// src/commands/create_commands.h - the Create tab's commands: create a run package (new, update,
// variation) and find the batch file that starts a run.
#pragma once
#include <filesystem>
#include <string>

namespace invsetup {
struct Session;

/// The run directory the form names: the path of Dir1 with Text_directory_name (trimmed) below it.
std::filesystem::path output_directory(const Session& session);

/// Command_create_inversion(index): 0 "Create Inversion", 1 "Update Parameters" (input and batch
/// files only), 2 "Generate Variation" (with Check_update_data_files on, new observation files too).
/// Tests Drive1, Dir1 and Text_directory_name, refuses a directory name that is one of the run's file
/// names, checks the definition (which builds the mesh), makes the run directory, saves the
/// definition as "inversion.inp" in the working directory and as "<directory name>.inp" beside the
/// run directory, then runs create_inversion. Returns 0 when the package was written, -1 after the
/// message that ended the command. In refinement mode the tiling layout opens for the tile choice
/// instead (the run directory and create mode kept in session.tiling_view) and 2 is returned:
/// continue_tile_command then writes the package.
int create_command(Session& session, int index);

/// Draws the tiling layout view; `status` 0 checks the definition first (-1 when it fails).
int display_tiling_layout(Session& session, int status);
/// Command_continue_tile: closes the layout and runs create_inversion for the run the create command
/// kept. Returns as create_inversion.
int continue_tile_command(Session& session);
/// Command_cancel_tile: closes the layout; nothing is created.
void cancel_tile_command(Session& session);

/// The batch file that runs the package in the form's run directory: "iter_all.bat" for a tiled
/// run, the inversion program's own file for a variation run, else "run_inversion.bat".
std::string start_batch_file_name(const Session& session);

/// Command_start_inversion: finds the file that starts the run and puts its full path in `batch_file`:
/// on Windows the batch file, elsewhere its sh twin. Starting it without waiting is the caller's part
/// (start_in_background of commands/start_run.h on a POSIX system). Returns 0 when it exists; -1
/// after "No drive has been selected", "No file location has been selected", "The inversion batch
/// file does not exist" or, for a package written before the twins, a message naming the missing
/// script.
int start_command(Session& session, std::filesystem::path& batch_file);

}  // namespace invsetup
