// apps/cli/commands.h - the subcommands of the invsetup command line. Each registers itself on the
// application; its callback runs the work and leaves the process exit status in `exit_code`
// (0 success, 1 failure).
#pragma once
#include <CLI/CLI.hpp>

namespace invsetup::cli {

void register_show_command(CLI::App& app, int& exit_code);
void register_upgrade_command(CLI::App& app, int& exit_code);
void register_limits_command(CLI::App& app, int& exit_code);
void register_grid_info_command(CLI::App& app, int& exit_code);
void register_create_command(CLI::App& app, int& exit_code);
void register_check_command(CLI::App& app, int& exit_code);
void register_mesh_command(CLI::App& app, int& exit_code);

}  // namespace invsetup::cli
