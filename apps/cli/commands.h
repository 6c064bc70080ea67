// apps/cli/commands.h - the subcommands of the invsetup command line. Each registers itself on the
// application; its callback runs the work and leaves the process exit status in `exit_code`
// (0 success, 1 failure).
#pragma once
#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {
struct Session;
class HeadlessDialogue;
}  // namespace invsetup

namespace invsetup::cli {

/// Reads a definition file into a fresh session as the file menu would (`read_command` with `group`).
/// Relative names inside it resolve against `working_directory`, or the definition's own folder when
/// that is empty. False after the message.
bool read_definition(Session& session, HeadlessDialogue& dialogue, const std::filesystem::path& definition,
                     int group = 0, const std::filesystem::path& working_directory = {});

/// Switches the tiles of `--skip-tile I,J` options off as clicks in the tiling layout do. False
/// after a message on stderr for a text that isn't I,J or a tile outside the layout.
bool skip_tiles(Session& session, const std::vector<std::string>& tiles);

void register_show_command(CLI::App& app, int& exit_code);
void register_upgrade_command(CLI::App& app, int& exit_code);
void register_limits_command(CLI::App& app, int& exit_code);
void register_grid_info_command(CLI::App& app, int& exit_code);
void register_create_command(CLI::App& app, int& exit_code);
void register_check_command(CLI::App& app, int& exit_code);
void register_mesh_command(CLI::App& app, int& exit_code);
void register_plan_command(CLI::App& app, int& exit_code);
void register_start_command(CLI::App& app, int& exit_code);
void register_export_command(CLI::App& app, int& exit_code);
void register_igrf_command(CLI::App& app, int& exit_code);

}  // namespace invsetup::cli
