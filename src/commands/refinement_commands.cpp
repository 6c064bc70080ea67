// src/commands/refinement_commands.cpp - reading the mesh and model of an existing inversion.
#include "commands/refinement_commands.h"

#include <optional>
#include <stdexcept>

#include "commands/form_commands.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/model_file_read.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// The loaded mesh's extent, core cell sizes and counts in the mesh fields of the form, as a mesh
/// definition read from a file would put them.
void show_loaded_mesh(Session& session) {
    const LoadedMesh& mesh = session.loaded_mesh;
    FormModel& form = session.form;
    const double low[3] = {mesh.x_nodes[1], mesh.y_nodes[1], mesh.z_nodes[mesh.nz + 1]};
    const double high[3] = {mesh.x_nodes[mesh.nx + 1], mesh.y_nodes[mesh.ny + 1], mesh.z_nodes[1]};
    const double size[3] = {mesh.core_dx, mesh.core_dy, mesh.core_dz};
    const int count[3] = {mesh.nx, mesh.ny, mesh.nz};
    const bool updating = form.updating_form;
    form.updating_form = true;
    for (int axis = 0; axis < 3; ++axis) {
        form.set_text("Text_min_val", axis, general_number_text(low[axis]));
        form.set_text("Text_max_val", axis, general_number_text(high[axis]));
        form.set_text("Text_cell_size", axis, general_number_text(size[axis]));
        form.set_text("Text_num_cells", axis, format_picture(count[axis], "0"));
        form.set_text("Text_max_val", axis + 3, general_number_text(high[axis] - low[axis]));
    }
    form.updating_form = updating;
}

std::string chosen_path(const Session& session, const std::string& choice) {
    return resolve_path(session.working_directory, choice).string();
}

}  // namespace

int read_inversion_mesh_command(Session& session) {
    FileChoice request;
    request.title = "Select the mesh definition file";
    request.filter =
        "UBC mesh Files|*.mesh;*.msh;*.dat;mesh|RES3DINV Inversion Files|*.inv|GoCad voxet files|*.vo|VTK grid "
        "files|*.vtk|All files (*.*)|*.*";
    if (!session.original_mesh_name.empty()) request.start_name = directory_of(session.original_mesh_name);
    const std::optional<std::string> choice = session.dialogue.choose_file(request);
    if (!choice) return 1;
    clear_mesh(session.loaded_mesh);
    clear_model(session.loaded_model);
    session.form.set_visible("menu_read_inversion_model", false);
    session.original_mesh_name = chosen_path(session, *choice);
    session.form.set_visible("ProgressBar_load_ubc_model", true);
    const int status = read_mesh_file(session, session.original_mesh_name);
    session.form.set_visible("ProgressBar_load_ubc_model", false);
    if (status != 0) return -1;
    show_loaded_mesh(session);
    switch_inversion_mode(session, 1);
    session.dialogue.message_box("The mesh file has been loaded and refinement mode is enabled");
    session.form.set_visible("menu_read_inversion_model", true);
    return 0;
}

int read_inversion_model_command(Session& session) {
    if (trim(session.original_mesh_name).empty() || !session.loaded_mesh.loaded) {
        session.dialogue.message_box("No mesh file has been specified");
        return -1;
    }
    if (find_file(session.original_mesh_name).empty()) {
        session.dialogue.message_box("The specified mesh file does not exist");
        return -1;
    }
    clear_model(session.loaded_model);
    FileChoice request;
    request.title = "Select the UBC model file";
    request.filter =
        "UBC model Files|*.sus;*.mod;*.kap;*.den;*.rho;*.con;*.res;*.chg;*.eta;*.sns|All files (*.*)|*.*";
    request.start_name = directory_of(session.original_model_name.empty() ? session.original_mesh_name
                                                                           : session.original_model_name);
    const std::filesystem::path kept = session.working_directory;
    const std::optional<std::string> choice = session.dialogue.choose_file(request);
    if (!choice) return 1;
    const std::string file = chosen_path(session, *choice);
    // The progress bar is in view while the model is read.
    session.form.set_visible("ProgressBar_load_ubc_model", true);
    const int status = load_model(session, file);
    session.form.set_visible("ProgressBar_load_ubc_model", false);
    if (!session.working_directory_changed) session.working_directory = kept;
    if (status < 0) return -1;
    session.original_model_name = file;
    return 0;
}

}  // namespace invsetup
