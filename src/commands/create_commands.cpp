// src/commands/create_commands.cpp - the Create tab's commands: create a run package and find its batch file.
#include "commands/create_commands.h"

#include <stdexcept>

#include "create/create_inversion.h"
#include "create/shell_twin.h"
#include "definition/definition_checks.h"
#include "definition/parameter_file.h"
#include "form/tiling_tab.h"
#include "session.h"
#include "support/files.h"
#include "support/text.h"

namespace invsetup {

namespace {

std::string upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// The base names of the files written beside the run directory's name: a run directory of the same
/// name would be taken for one of them.
bool conflicts_with_file_names(int method, const std::string& directory_name) {
    const std::string name = upper(directory_name);
    if (method == method_zarninv3d) return name == "ZARNINV3D" || name == "ZARNSEN3D";
    if (is_magnetic_method(method)) return name == "MAGINV3D" || name == "MAGSEN3D";
    return name == "GZINV3D" || name == "GZSEN3D";
}

bool has_blank(const std::string& text) { return text.find(' ') != std::string::npos; }

/// The three tests that create_command and start_command share; false after the message.
bool run_directory_named(Session& session, bool need_name) {
    if (trim(session.form.text("Drive1")).empty()) {
        session.dialogue.message_box("No drive has been selected");
        return false;
    }
    if (trim(session.form.text("Dir1")).empty()) {
        session.dialogue.message_box("No file location has been selected");
        return false;
    }
    if (need_name && trim(session.form.text("Text_directory_name")).empty()) {
        session.dialogue.message_box("No output directory name has been specified");
        return false;
    }
    return true;
}

int run_create_command(Session& session, int index) {
    InversionDefinition& definition = session.definition;
    session.form.set_text("Text_progress", "");
    if (!run_directory_named(session, true)) return -1;
    const std::string directory_name = trim(session.form.text("Text_directory_name"));
    if (conflicts_with_file_names(definition.inversion_method, directory_name)) {
        session.dialogue.message_box("The output directory name conflicts with the output file names");
        return -1;
    }
    const std::filesystem::path run_directory = output_directory(session);

    if (!session.original_mesh_name.empty() && definition.refinement_mode == 1 && definition.tile_use_reference == 1) {
        const std::string mesh_directory = directory_of(session.original_mesh_name);
        if (upper(run_directory.string()) == upper(mesh_directory) ||
            upper(run_directory.string() + "/") == upper(mesh_directory + "/")) {
            session.dialogue.message_box("The refinement directory must be different from the original inversion directory");
            return -1;
        }
        if (has_blank(session.original_mesh_name)) {
            session.dialogue.message_box("The original mesh path/file name cannot contain blank characters");
            return -1;
        }
        if (has_blank(session.original_model_name)) {
            session.dialogue.message_box("The original model path/file name cannot contain blank characters");
            return -1;
        }
    }
    if (definition.refinement_mode == 1 && definition.inversion_method == method_zarninv3d) {
        if (index == 2) {
            session.dialogue.message_box("The inversion variation option is not available for refined inversions");
            return -1;
        }
        if (definition.tile_coarse_model == 0) definition.tile_coarse_model = 1;
        if (definition.use_expanded_mesh == 1) definition.use_expanded_mesh = 0;
    }
    update_point_transform(definition.coordinate_transform);

    append_progress(session, "Checking inversion definitions");
    if (check_inversion_definitions(session) < 0) return -1;
    if (index == 2 && definition.rock_properties_used && definition.rock_application != 1) {
        session.dialogue.message_box("The inversion variation option is not available for Rock Property inversions");
        return -1;
    }
    if (!directory_exists(run_directory.string())) {
        append_progress(session, "Creating inversion directory");
        make_directory_path(run_directory.string());
    }

    append_progress(session, "Saving the inversion definitions");
    const std::string description = session.form.text("Text_description");
    const std::filesystem::path working_copy = session.working_directory / "inversion.inp";
    std::error_code ignored;
    std::filesystem::remove(working_copy, ignored);
    save_inversion_parameters(definition, description, working_copy);
    std::filesystem::path beside = run_directory;
    if (!beside.has_filename()) beside = beside.parent_path();
    beside += ".inp";
    save_inversion_parameters(definition, description, beside);

    int create_mode = index;
    if (index == 2 && session.form.checked("Check_update_data_files")) create_mode = 3;
    if (definition.refinement_mode == 1) {
        // The tiles are chosen in the layout view; Command_continue_tile creates the run.
        TilingView& view = session.tiling_view;
        view.run_directory = run_directory;
        view.create_mode = create_mode;
        view.tile_choice = true;
        if (display_tiling_layout(session, 1) < 0) return -1;
        return 2;
    }
    return create_inversion(session, run_directory, create_mode);
}

}  // namespace

std::filesystem::path output_directory(const Session& session) {
    return std::filesystem::path(session.form.text("Dir1")) / native_path(trim(session.form.text("Text_directory_name")));
}

int display_tiling_layout(Session& session, int status) {
    if (status == 0 && check_inversion_definitions(session) < 0) return -1;
    draw_tiling_layout(session);
    return 0;
}

int continue_tile_command(Session& session) {
    TilingView& view = session.tiling_view;
    view.tiling_cancelled = false;
    view.tile_choice = false;
    session.form.set_visible("Frame_tiling_layout", false);
    session.form.set_visible("Frame_do_tile", false);
    return create_inversion(session, view.run_directory, view.create_mode);
}

void cancel_tile_command(Session& session) {
    TilingView& view = session.tiling_view;
    view.tiling_cancelled = true;
    view.tile_choice = false;
    session.form.set_visible("Frame_tiling_layout", false);
    session.form.set_visible("Frame_do_tile", false);
}

int create_command(Session& session, int index) {
    try {
        return run_create_command(session, index);
    } catch (const std::exception& fault) {
        session.dialogue.message_box(std::string("An error occurred while creating the inversion: ") + fault.what());
        return -1;
    }
}

std::string start_batch_file_name(const Session& session) {
    const InversionDefinition& definition = session.definition;
    if (definition.refinement_mode != 0) return "iter_all.bat";
    if (!session.form.checked("Check_generate_inversion_variation")) return "run_inversion.bat";
    if (is_magnetic_method(definition.inversion_method)) return "run_maginv3d.bat";
    if (is_gravity_method(definition.inversion_method)) return "run_gzinv3d.bat";
    return "run_zarninv3d.bat";
}

int start_command(Session& session, std::filesystem::path& batch_file) {
    if (!run_directory_named(session, false)) return -1;
    batch_file = output_directory(session) / start_batch_file_name(session);
    if (find_file(batch_file.string()).empty()) {
        session.dialogue.message_box("The inversion batch file does not exist");
        return -1;
    }
#ifndef _WIN32
    // Here the batch file's sh twin runs, the Linux builds of the programs being on the search path.
    batch_file = shell_twin_path(batch_file);
    if (find_file(batch_file.string()).empty()) {
        session.dialogue.message_box("The shell script " + batch_file.string() +
                                     " does not exist: update the inversion files to write it");
        return -1;
    }
#endif
    return 0;
}

}  // namespace invsetup
