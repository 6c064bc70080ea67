// apps/cli/run_commands.cpp - start: runs a package's sh script in the background; export: the
// package as ParaView files.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands/start_run.h"
#include "create/shell_twin.h"
#include "modelfiles/vtk_export.h"
#include "session.h"
#include "support/dialogue.h"

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

int export_run(const std::string& run_text, const std::string& output_text) {
    const std::filesystem::path run = std::filesystem::absolute(run_text).lexically_normal();
    const std::filesystem::path output =
        output_text.empty() ? run / "paraview" : std::filesystem::absolute(output_text).lexically_normal();
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    VtkExportSummary summary;
    if (export_run_to_vtk(session, run, output, summary) < 0) return 1;
    for (const std::string& skipped : summary.skipped) std::cerr << "Passed over " << skipped << '\n';
    for (const std::filesystem::path& path : summary.written) std::cout << path.string() << '\n';
    return 0;
}

}  // namespace

void register_export_command(CLI::App& app, int& exit_code) {
    auto run = std::make_shared<std::string>();
    auto output = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand(
        "export",
        "Write the package as VTK XML files ParaView opens: mesh.vtr (the models and the air cells), "
        "topography.vts, mag_obs.vtp or grav_obs.vtp (the readings), tiles.vtp (a tiled run), run.pvd (all)");
    command->add_option("RUN_DIR", *run, "The run directory")->required();
    command->add_option("-o,--output", *output, "Folder of the files (default: RUN_DIR/paraview)");
    command->callback([&exit_code, run, output] { exit_code = export_run(*run, *output); });
}

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
