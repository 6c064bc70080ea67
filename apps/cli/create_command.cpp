// apps/cli/create_command.cpp - create and check: a definition file to a run package, or to the
// checks and the mesh alone, as the Create tab's buttons do it.
#include "commands.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "definition/definition_checks.h"
#include "commands/commands.h"
#include "commands/create_commands.h"
#include "commands/refinement_commands.h"
#include "create/size_estimate.h"
#include "create/survey_check.h"
#include "form/form_load.h"
#include "form/tiling_tab.h"
#include "cluster_options.h"
#include "session.h"
#include "size_report.h"
#include "support/dialogue.h"
#include "support/numbers.h"

namespace invsetup::cli {

namespace {

/// The dialogue of a script: every message to stderr, questions answered as --yes says, and, unless
/// quiet, a progress bar on stderr when it is a terminal.
class ScriptDialogue : public HeadlessDialogue {
public:
    ScriptDialogue(bool answer_yes_to_questions, bool quiet)
        : HeadlessDialogue(&std::cerr), quiet_(quiet), bar_(!quiet && isatty(fileno(stderr)) != 0) {
        answer_yes = answer_yes_to_questions;
    }

    bool ask_yes_no(const std::string& text) override {
        end_bar();
        const bool yes = HeadlessDialogue::ask_yes_no(text);
        std::cerr << text << (yes ? " -> Yes" : " -> No (use --yes to answer Yes)") << '\n';
        return yes;
    }
    void message_box(const std::string& text) override {
        end_bar();
        HeadlessDialogue::message_box(text);
    }
    void progress(int percent) override {
        HeadlessDialogue::progress(percent);
        if (!bar_) return;
        const int filled = percent / 5;
        std::cerr << "\r  [" << std::string(static_cast<std::size_t>(filled), '#')
                  << std::string(static_cast<std::size_t>(20 - filled), ' ') << "] " << percent << "% " << std::flush;
        bar_shown_ = true;
    }
    /// A stage line of the progress text.
    void stage(const std::string& line) {
        if (quiet_) return;
        end_bar();
        std::cerr << line << '\n';
    }

private:
    void end_bar() {
        if (!bar_shown_) return;
        std::cerr << "\r" << std::string(32, ' ') << "\r";
        bar_shown_ = false;
    }
    bool quiet_;
    bool bar_;
    bool bar_shown_ = false;
};

/// Echoes each line added to Text_progress.
void follow_progress_text(Session& session, ScriptDialogue& dialogue) {
    auto printed = std::make_shared<std::size_t>(0);
    session.form.subscribe([&dialogue, printed](const Control& control, ControlProperty property) {
        if (property != ControlProperty::value || control.declared->name != "Text_progress") return;
        const std::string& text = control.text;
        if (text.size() < *printed) *printed = 0;
        while (true) {
            const std::size_t end = text.find("\r\n", *printed);
            if (end == std::string::npos) break;
            dialogue.stage(text.substr(*printed, end - *printed));
            *printed = end + 2;
        }
    });
}

struct CreateOptions {
    std::string definition;
    std::string run_directory;
    std::string working_directory;
    bool update = false;
    bool variation = false;
    bool update_data = false;
    bool yes = false;
    bool quiet = false;
    ClusterOptions cluster;
    std::string mesh;
    std::string model;
    std::vector<std::string> skip_tiles;
};

std::filesystem::path working_directory_for(const std::string& definition, const std::string& option) {
    if (!option.empty()) return std::filesystem::absolute(option).lexically_normal();
    return std::filesystem::absolute(definition).parent_path().lexically_normal();
}

/// The existing mesh and model, read as the file menu reads them, before the definition.
bool read_existing_inversion(Session& session, HeadlessDialogue& dialogue, const std::string& definition,
                             const std::string& working_directory, const std::string& mesh, const std::string& model) {
    session.working_directory = working_directory_for(definition, working_directory);
    dialogue.file_answers.push_back(std::filesystem::absolute(mesh).string());
    const std::size_t messages_before = dialogue.messages.size();
    if (read_inversion_mesh_command(session) != 0) {
        if (dialogue.messages.size() == messages_before)
            std::cerr << "invsetup: " << mesh << " is not a mesh this program reads\n";
        return false;
    }
    if (model.empty()) return true;
    dialogue.file_answers.push_back(std::filesystem::absolute(model).string());
    return read_inversion_model_command(session) == 0;
}


int run_create(const CreateOptions& options) {
    ScriptDialogue dialogue(options.yes, options.quiet);
    Session session(dialogue);
    follow_progress_text(session, dialogue);
    if (!options.mesh.empty() && !read_existing_inversion(session, dialogue, options.definition,
                                                          options.working_directory, options.mesh, options.model))
        return 1;
    if (!read_definition(session, dialogue, options.definition, 0,
                         working_directory_for(options.definition, options.working_directory)))
        return 1;
    if (!options.skip_tiles.empty() && session.definition.refinement_mode != 1) {
        std::cerr << "invsetup: --skip-tile needs a refinement run (--mesh)\n";
        return 1;
    }

    std::filesystem::path run = std::filesystem::absolute(options.run_directory).lexically_normal();
    if (!run.has_filename()) run = run.parent_path();
    const std::filesystem::path parent = run.parent_path();
    session.form.set_text("Drive1", parent.root_path().string());
    session.form.set_text("Dir1", parent.string());
    session.form.set_text("Text_directory_name", run.filename().string());
    if (options.variation) session.form.set_checked("Check_generate_inversion_variation", true);
    session.form.set_checked("Check_update_data_files", options.update_data);

    const int index = options.update ? 1 : options.variation ? 2 : 0;
    const int status = create_command(session, index);
    if (status < 0) return 1;
    if (status == 2) {
        // The tiling layout is open: the tiles are chosen, then Command_continue_tile creates the run.
        if (!skip_tiles(session, options.skip_tiles)) return 1;
        if (continue_tile_command(session) < 0) return 1;
    }
    if (session.readings_kept == 0) {
        std::cerr << "No reading was kept, so the run package in " << run.string()
                  << " can't be inverted: the messages above say which tests left the readings out.\n";
        return 1;
    }
    if (!options.quiet) std::cerr << "Run package: " << run.string() << '\n';
    return write_cluster_files(options.cluster, options.definition,
                               working_directory_for(options.definition, options.working_directory), run,
                               options.quiet);
}

/// The readings as a creation will take them, one test at a time, so that a survey that would come
/// out empty is seen before a long run.
void print_coverage(const SurveyCoverage& c) {
    const std::string file = std::filesystem::path(c.data_file).filename().string();
    if (c.grids) {
        std::cout << "Readings:    " << c.readings << " cells of the mesh core under " << file << '\n';
        std::cout << "  valid:     " << c.valid << " (" << c.readings - c.valid << " without a grid value)\n";
    } else {
        std::cout << "Readings:    " << c.readings << " in " << file << '\n';
        std::cout << "  valid:     " << c.valid << " (" << c.readings - c.valid << " with a null value or elevation)\n";
        std::cout << "  in core:   " << c.inside_core << " (" << c.valid - c.inside_core << " outside the mesh core)\n";
        if (!c.topography_file.empty())
            std::cout << "  on topo:   " << c.on_topography << " (" << c.inside_core - c.on_topography
                      << " with no topography under them)\n";
    }
    std::cout << "  kept:      " << c.kept << ", one per mesh column\n";
    if (!c.topography_file.empty() && !c.points_hold_core)
        std::cout << "Warning:     the topography points of " << std::filesystem::path(c.topography_file).filename().string()
                  << " don't reach over the whole mesh core; beyond them the surface is drawn towards their mean "
                     "elevation\n";
    if (c.kept == 0) std::cout << "Warning:     no reading would be kept, so the run package could not be inverted\n";
}

int run_check(const std::string& definition, const std::string& working_directory, const SizeOptions& size,
              const std::string& existing_mesh, const std::string& existing_model) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    if (!existing_mesh.empty() &&
        !read_existing_inversion(session, dialogue, definition, working_directory, existing_mesh, existing_model))
        return 1;
    if (!read_definition(session, dialogue, definition, 0, working_directory_for(definition, working_directory)))
        return 1;
    if (check_inversion_definitions(session) < 0) {
        std::cout << "The definition is not valid: " << (dialogue.messages.empty() ? "the mesh could not be built"
                                                                                  : dialogue.messages.back())
                  << '\n';
        return 1;
    }
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    const int method_row = session.form.list_index("Combo_inversion_method");
    std::cout << "Definition:  " << std::filesystem::absolute(definition).string() << '\n';
    std::cout << "Method:      "
              << (method_row >= 0 ? session.form.control("Combo_inversion_method").rows[method_row].text : "(none)")
              << " (code " << d.inversion_method << ")\n";
    std::cout << "Observed:    " << (d.obs_data_file_type == 0 ? d.data_file_names[0] : d.data_file_names[2]) << '\n';
    std::cout << "Topography:  " << (d.topo_type == 0 ? d.data_file_names[1] : "none (top of the mesh)") << '\n';
    std::cout << "Mesh cells:  " << mesh.nx << " x " << mesh.ny << " x " << mesh.nz << " = "
              << static_cast<long long>(mesh.nx) * mesh.ny * mesh.nz << '\n';
    std::cout << "Mesh X:      " << general_number_text(mesh.x_nodes[1]) << " to "
              << general_number_text(mesh.x_nodes[mesh.nx + 1]) << '\n';
    std::cout << "Mesh Y:      " << general_number_text(mesh.y_nodes[1]) << " to "
              << general_number_text(mesh.y_nodes[mesh.ny + 1]) << '\n';
    std::cout << "Mesh Z:      " << general_number_text(mesh.z_nodes[mesh.nz + 1]) << " to "
              << general_number_text(mesh.z_nodes[1]) << '\n';
    // One pass over the data gives both the readings report and the size estimate.
    SizeEstimateOptions estimate_options;
    estimate_options.run_folder = working_directory_for(definition, working_directory);
    SizeEstimate estimate;
    SurveyCoverage coverage;
    if (estimate_run_size(session, estimate_options, estimate, &coverage) < 0) {
        std::cout << "The observed data could not be tried on the mesh: "
                  << (dialogue.messages.empty() ? "see the messages above" : dialogue.messages.back()) << '\n';
        return 1;
    }
    print_coverage(coverage);
    std::cout << "The definition is valid.\n";
    return print_size_estimate(session, size, estimate);
}

}  // namespace

namespace {

/// "I,J" (x tile, y tile, from 1).
bool parse_tile(const std::string& text, int& i, int& j) {
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos) return false;
    try {
        std::size_t used = 0;
        i = std::stoi(text.substr(0, comma), &used);
        if (used != comma) return false;
        j = std::stoi(text.substr(comma + 1), &used);
        return used == text.size() - comma - 1;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

/// Switches the tiles off as clicks in the tiling layout do: the tile under the pointer is chosen,
/// then its "Skip Tile" box is ticked.
bool skip_tiles(Session& session, const std::vector<std::string>& tiles) {
    for (const std::string& text : tiles) {
        int i = 0, j = 0;
        if (!parse_tile(text, i, j)) {
            std::cerr << "invsetup: --skip-tile " << text << ": give the x and y tile numbers as I,J\n";
            return false;
        }
        const InversionDefinition& d = session.definition;
        if (i < 1 || j < 1 || i > d.number_of_x_tiles || j > d.number_of_y_tiles) {
            std::cerr << "invsetup: --skip-tile " << text << ": the layout has " << d.number_of_x_tiles << " x "
                      << d.number_of_y_tiles << " tiles\n";
            return false;
        }
        switch_tile_off(session, i, j);
    }
    return true;
}

void register_create_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<CreateOptions>();
    CLI::App* create = app.add_subcommand(
        "create",
        "Check a definition, build its mesh and write the run package into RUN_DIR.\n"
        "Saves the definition as inversion.inp in the working directory and as RUN_DIR.inp beside RUN_DIR.\n"
        "Exit status 0 when the run ends with \"Output complete\", 1 when anything failed.");
    create->add_option("DEFINITION", options->definition, "The definition file (.inp), any version")->required();
    create->add_option("RUN_DIR", options->run_directory, "The run directory (made when missing)")->required();
    create->add_option("--workdir", options->working_directory,
                       "Working directory: relative names in the definition resolve here (default: the "
                       "folder of DEFINITION)");
    CLI::Option* update = create->add_flag("--update", options->update,
                                           "Rewrite only the input and batch files (Update Parameters)");
    CLI::Option* variation = create->add_flag(
        "--variation", options->variation,
        "A variation run in a sub-directory of the run holding the sensitivity matrix (Generate Variation)");
    create->add_flag("--update-data", options->update_data, "With --variation: write new observation files too")
        ->needs(variation);
    update->excludes(variation);
    create->add_option("--mesh", options->mesh,
                       "An existing inversion mesh: read first (refinement mode on), the run is refined inside it");
    create->add_option("--model", options->model, "The existing inversion model on --mesh, moved onto the refined mesh")
        ->needs(create->get_option("--mesh"));
    create->add_option("--skip-tile", options->skip_tiles, "Switch tile I,J off (x and y tile numbers from 1); repeatable")
        ->needs(create->get_option("--mesh"));
    create->add_flag("--yes", options->yes, "Answer Yes to every question (without it every question is answered No)");
    create->add_flag("--quiet", options->quiet, "No progress lines or bar; messages still go to stderr");
    add_cluster_options(*create, options->cluster);
    create->callback([&exit_code, options] { exit_code = run_create(*options); });
}

void register_check_command(CLI::App& app, int& exit_code) {
    auto definition = std::make_shared<std::string>();
    auto working_directory = std::make_shared<std::string>();
    CLI::App* check = app.add_subcommand("check", "Check a definition and build its mesh; print a summary");
    check->add_option("DEFINITION", *definition, "The definition file (.inp), any version")->required();
    check->add_option("--workdir", *working_directory,
                      "Working directory for relative names (default: the folder of DEFINITION)");
    auto size = std::make_shared<SizeOptions>();
    add_size_options(*check, *size);
    auto mesh = std::make_shared<std::string>();
    auto model = std::make_shared<std::string>();
    check->add_option("--mesh", *mesh,
                      "An existing inversion mesh: the definition is checked as a refinement inside it, and the "
                      "size estimate is given for each tile");
    auto model_option = check->add_option("--model", *model, "The existing inversion model on --mesh");
    model_option->needs(check->get_option("--mesh"));
    check->callback([&exit_code, definition, working_directory, size, mesh, model] {
        exit_code = run_check(*definition, *working_directory, *size, *mesh, *model);
    });
}

}  // namespace invsetup::cli
