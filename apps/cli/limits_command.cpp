// apps/cli/limits_command.cpp - limits: "Set Limits from Data" on a definition's data file, saved as
// a new definition, so that a first mesh can start from the data.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands/limits_commands.h"
#include "definition/parameter_file.h"
#include "commands/commands.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"

namespace invsetup::cli {

namespace {

int set_limits(const std::string& definition, int index, const std::string& new_file) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    const std::filesystem::path target = std::filesystem::absolute(new_file);
    if (!read_definition(session, dialogue, definition)) return 1;
    if (Command_set_limits_from_file(session, index) < 0) return 1;
    // The record holds every field the file said; the command brought its mesh fields up to date.
    ParameterRecord& record = session.record;
    record.mesh_min = session.definition.mesh_min;
    record.mesh_max = session.definition.mesh_max;
    record.mesh_cell_size = session.definition.mesh_cell_size;
    record.mesh_cell_count = session.definition.mesh_cell_count;
    if (index == 0) record.regional_base = session.definition.regional_base;
    try {
        save_inversion_parameters(record, record.comments, target);
    } catch (const std::exception& fault) {
        std::cerr << "invsetup: the definition could not be saved as " << target.string() << ": " << fault.what() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace

void register_limits_command(CLI::App& app, int& exit_code) {
    CLI::App* limits = app.add_subcommand(
        "limits", "Set the mesh limits from the observed data (X, Y) or the topography (Z and depth)");
    auto definition = std::make_shared<std::string>();
    auto new_file = std::make_shared<std::string>();
    auto observed = std::make_shared<bool>(false);
    auto topo = std::make_shared<bool>(false);
    limits->add_option("DEFINITION", *definition, "The definition file (.inp), any version")->required();
    CLI::Option* observed_flag = limits->add_flag("--observed", *observed, "From the observed data file");
    CLI::Option* topo_flag = limits->add_flag("--topo", *topo, "From the topography file");
    observed_flag->excludes(topo_flag);
    limits->add_option("-o,--output", *new_file, "The Version 3.0 file to write (replaced when it exists)")
        ->required();
    limits->callback([&exit_code, definition, new_file, observed, topo] {
        if (!*observed && !*topo) throw CLI::RequiredError("--observed or --topo");
        exit_code = set_limits(*definition, *topo ? 1 : 0, *new_file);
    });
}

}  // namespace invsetup::cli
