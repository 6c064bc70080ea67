// apps/cli/definition_commands.cpp - show and upgrade: reading and saving definition files.
#include "commands.h"

namespace invsetup::cli {

void register_show_command(CLI::App& app, int& /*exit_code*/) { app.add_subcommand("show", "Print what a definition file holds"); }
void register_upgrade_command(CLI::App& app, int& /*exit_code*/) { app.add_subcommand("upgrade", "Save a definition file as Version 3.0"); }

}  // namespace invsetup::cli
