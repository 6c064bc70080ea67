// apps/cli/run_commands.cpp - start: runs a package's sh script in the background.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands/start_run.h"
#include "create/shell_twin.h"

namespace invsetup::cli {

namespace {

int start_run(const std::string& run_text) {
    const std::filesystem::path run = std::filesystem::absolute(run_text).lexically_normal();
    std::error_code ignored;
    if (!std::filesystem::is_directory(run, ignored)) {
        std::cerr << "invsetup: " << run.string() << " is not a run directory\n";
        return 1;
    }
    const std::filesystem::path script = start_script_in(run);
    if (script.empty()) {
        std::cerr << "The inversion batch file does not exist (" << run.string()
                  << " holds no iter_all.bat, run_inversion.bat or run_*inv3d.bat)\n";
        return 1;
    }
    if (!std::filesystem::is_regular_file(script, ignored)) {
        std::cerr << "The shell script " << script.string()
                  << " does not exist: update the inversion files to write it\n";
        return 1;
    }
    const std::filesystem::path log = run / "run.log";
    std::string error;
    const long process = start_in_background(script, log, error);
    if (process < 0) {
        std::cerr << "invsetup: " << error << '\n';
        return 1;
    }
    std::cout << "Started " << script.string() << " (process " << process << ")\n"
              << "Its output goes to " << log.string() << '\n';
    return 0;
}

}  // namespace

void register_start_command(CLI::App& app, int& exit_code) {
    auto run = std::make_shared<std::string>();
    CLI::App* start = app.add_subcommand(
        "start",
        "Run a package's sh script in the background (iter_all.sh for a tiled run, else run_inversion.sh, "
        "or the inversion script of a variation run); its output goes to RUN_DIR/run.log.\n"
        "The outside programs (Linux builds) must be on the search path.");
    start->add_option("RUN_DIR", *run, "The run directory")->required();
    start->callback([&exit_code, run] { exit_code = start_run(*run); });
}

}  // namespace invsetup::cli
