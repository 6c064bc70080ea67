// apps/cli/main.cpp - the invsetup command line: subcommands, exit status 0 success, 1 failure,
// 2 usage error.
#include <iostream>

#include "commands.h"

int main(int argc, char** argv) {
    CLI::App app{"invsetup: prepares 3D magnetic and gravity inversions"};
    app.set_version_flag("--version", std::string("invsetup ") + INVSETUP_VERSION);
    app.require_subcommand(1);
    int exit_code = 0;

    invsetup::cli::register_show_command(app, exit_code);
    invsetup::cli::register_upgrade_command(app, exit_code);
    invsetup::cli::register_limits_command(app, exit_code);
    invsetup::cli::register_grid_info_command(app, exit_code);
    invsetup::cli::register_create_command(app, exit_code);
    invsetup::cli::register_check_command(app, exit_code);
    invsetup::cli::register_mesh_command(app, exit_code);
    invsetup::cli::register_plan_command(app, exit_code);
    invsetup::cli::register_start_command(app, exit_code);
    invsetup::cli::register_export_command(app, exit_code);
    invsetup::cli::register_igrf_command(app, exit_code);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        int code = app.exit(error);
        return code == 0 ? 0 : 2;
    } catch (const std::exception& fault) {
        std::cerr << "invsetup: " << fault.what() << '\n';
        return 1;
    }
    return exit_code;
}
