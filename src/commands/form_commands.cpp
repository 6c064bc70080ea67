// src/commands/form_commands.cpp - the form's buttons and menus wired to the commands.
#include "commands/form_commands.h"

#include <exception>

#include "commands/commands.h"
#include "commands/create_commands.h"
#include "commands/refinement_commands.h"
#include "create/size_estimate.h"
#include "definition/definition_checks.h"
#include "form/column_definitions.h"
#include "form/field_validators.h"
#include "form/form_load.h"
#include "form/tiling_tab.h"
#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// The folder Dir1 shows, without a closing separator.
std::string dir1_path(const Session& session) {
    std::string path = trim(session.form.text("Dir1"));
    while (path.size() > 1 && (path.back() == '/' || path.back() == '\\')) path.pop_back();
    return path;
}

/// Runs a long command unless one runs already; the create buttons are off meanwhile.
template <class Command>
void run_exclusive(Session& session, FormCommands& state, Command command) {
    if (state.busy) {
        session.dialogue.beep();
        return;
    }
    FormModel& form = session.form;
    state.busy = true;
    bool enabled[3];
    for (int i = 0; i < 3; ++i) {
        enabled[i] = form.control("Command_create_inversion", i).enabled;
        form.set_enabled("Command_create_inversion", i, false);
    }
    const bool start_enabled = form.control("Command_start_inversion").enabled;
    form.set_enabled("Command_start_inversion", false);
    try {
        command();
    } catch (...) {
        state.busy = false;
        for (int i = 0; i < 3; ++i) form.set_enabled("Command_create_inversion", i, enabled[i]);
        form.set_enabled("Command_start_inversion", start_enabled);
        throw;
    }
    state.busy = false;
    for (int i = 0; i < 3; ++i) form.set_enabled("Command_create_inversion", i, enabled[i]);
    form.set_enabled("Command_start_inversion", start_enabled);
}

/// "Size Estimate": the definition checked and its mesh built, then the size of the run the Create
/// button would make (cells, readings, the sensitivity matrix, memory and disk) in one message, the
/// same report as the command line's check.
void size_estimate_command(Session& session) {
    if (check_inversion_definitions(session) < 0) return;
    SizeEstimateOptions options;
    options.run_folder = dir1_path(session);
    SizeEstimate estimate;
    if (estimate_run_size(session, options, estimate) < 0) return;
    std::string text = "Size estimate";
    for (const std::string& line : size_report(estimate)) text += "\n" + line;
    session.dialogue.message_box(text);
}

void start_inversion(Session& session, CommandHost& host) {
    std::filesystem::path batch_file;
    if (start_command(session, batch_file) != 0) return;
    if (!host.start_process(batch_file, batch_file.parent_path())) {
        session.dialogue.message_box("The inversion batch file " + batch_file.string() + " could not be started");
        return;
    }
    session.dialogue.message_box("The 3D inversion process has been started");
}

void calculate_igrf(Session& session, CommandHost& host) {
    GeomagneticField field;
    if (host.calculate_igrf(field)) copy_igrf_values(session, field);
}

void define_transform(Session& session, CommandHost& host) {
    PointTransform working = session.definition.coordinate_transform;
    const bool accepted = host.define_point_transform(working);
    apply_coordinate_transform(session, accepted ? &working : nullptr);
}

void change_working_directory(Session& session, CommandHost& host) {
    std::optional<std::string> chosen =
        host.choose_directory("Select the working directory", session.working_directory.string());
    if (!chosen) return;
    set_working_directory_command(session, *chosen);
}

}  // namespace

void copy_igrf_values(Session& session, const GeomagneticField& field) {
    if (!session.dialogue.ask_yes_no("Copy the IGRF values?")) return;
    FormModel& form = session.form;
    form.set_text("Text_mag_intensity", format_picture(field.intensity, "0.00"));
    form.set_text("Text_mag_inclination", format_picture(field.inclination, "0.000"));
    form.set_text("Text_mag_declination", format_picture(field.declination, "0.000"));
}

void apply_coordinate_transform(Session& session, const PointTransform* edited) {
    PointTransform& transform = session.definition.coordinate_transform;
    if (edited != nullptr) transform = *edited;
    update_point_transform(transform);
    show_coordinate_transform_state(session);
}

void click_control(Session& session, std::string_view name, int index) {
    if (name.rfind("Text_UBC_locations_", 0) == 0) click_column_box(session, name, index);
}

void double_click_control(Session& session, std::string_view name, int index) {
    static constexpr std::string_view file_boxes[] = {
        "Text_initial_file", "Text_reference_file", "Text_weight_file", "Text_depth_weighting_file",
        "Text_rock_propery_file", "Text_image_file", "Text_data_locations"};
    for (std::string_view box : file_boxes)
        if (name == box) {
            if (name == "Text_data_locations")
                session.form.raise_change("Command_select_data_location_file", index);
            else
                choose_file_for_box(session, name, index);
            return;
        }
}

void leave_control(Session& session, std::string_view name, int index) {
    if (name == "Text_UBC_locations_nhead" || name == "Text_UBC_locations_nstep" ||
        name == "Text_UBC_locations_name_line")
        leave_column_definition_box(session, name, index);
    else
        leave_text_box(session, name, index);
}

int make_folder_command(Session& session) {
    const FormModel& form = session.form;
    if (trim(form.text("Drive1")).empty()) {
        session.dialogue.message_box("No drive has been selected");
        return -1;
    }
    if (dir1_path(session).empty()) {
        session.dialogue.message_box("No file location has been selected");
        return -1;
    }
    if (trim(form.text("Text_directory_name")).empty()) {
        session.dialogue.message_box("No output directory name has been specified");
        return -1;
    }
    const std::filesystem::path folder = output_directory(session);
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) std::filesystem::create_directories(folder, error);
    if (error) {
        session.dialogue.message_box("The folder " + folder.string() + " could not be made: " + error.message());
        return -1;
    }
    return 0;
}

void copy_directory_name_command(Session& session) {
    const std::string path = dir1_path(session);
    const std::size_t cut = path.find_last_of("/\\");
    const std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
    if (!name.empty()) session.form.set_text("Text_directory_name", name);
}

void set_working_directory_command(Session& session, const std::string& directory) {
    const std::string path = trim(directory);
    if (path.empty()) return;
    session.working_directory = std::filesystem::path(path);
    session.working_directory_changed = true;
    session.form.set_text("Dir1", path);
}

void spin_control(Session& session, int index, bool up) {
    if (tiling_spin(session, index, up)) display_tiling_layout(session, 1);
}

std::string spin_tip(const Session& session, int index) {
    if (index != 10 && index != 11) return {};
    if (session.definition.refinement_mode == 1) return "Increase/decrease the tile overlap";
    return index == 10 ? "Shift the min and max x location" : "Shift the min and max y location";
}

void view_tiling_command(Session& session) {
    FormModel& form = session.form;
    session.tiling_view.tile_choice = false;
    form.set_visible("Frame_cells", true);
    if (display_tiling_layout(session, 0) < 0) return;
    session.tiling_view.panels[4].clear();
    session.tiling_view.panels[5].clear();
    form.set_visible("Frame_tiling_layout", true);
}

void switch_inversion_mode(Session& session, int index) {
    session.definition.refinement_mode = index == 1 ? 1 : 0;
    session.form.set_visible("menu_define_inversion_mode", 0, index == 1);
    session.form.set_visible("menu_define_inversion_mode", 1, index != 1);
}

void register_form_commands(Session& session, CommandHost& host, FormCommands& state) {
    FormModel& form = session.form;
    Session* s = &session;
    CommandHost* h = &host;
    FormCommands* busy = &state;
    form.on_change("Command_create_inversion", [s, busy](int index) {
        run_exclusive(*s, *busy, [s, index] { create_command(*s, index); });
    });
    form.on_change("Command_start_inversion", [s, h, busy](int) {
        run_exclusive(*s, *busy, [s, h] { start_inversion(*s, *h); });
    });
    form.on_change("Command_size_estimate", [s, busy](int) {
        run_exclusive(*s, *busy, [s] { size_estimate_command(*s); });
    });
    form.on_change("Command_make_folder", [s, h](int) {
        if (make_folder_command(*s) == 0) h->refresh_directories();
    });
    form.on_change("Command_refresh", [h](int) { h->refresh_directories(); });
    form.on_change("Command_copy_dir_name", [s](int) { copy_directory_name_command(*s); });
    form.on_change("Command_set_cur_dir", [s](int) { set_working_directory_command(*s, dir1_path(*s)); });
    form.on_change("Command_calculate_IGRF", [s, h](int) { calculate_igrf(*s, *h); });
    form.on_change("Command_define_coordinate_transform", [s, h](int) { define_transform(*s, *h); });
    form.on_change("Command_done_mag3d", [h](int) { h->close_form(); });
    form.on_change("menu_exit", [h](int) { h->close_form(); });
    form.on_change("menu_read_file", [s, busy](int group) {
        run_exclusive(*s, *busy, [s, group] { read_command(*s, group); });
    });
    form.on_change("menu_save", [s](int) { save_command(*s); });
    form.on_change("menu_working_directory", [s, h](int) { change_working_directory(*s, *h); });
    form.on_change("menu_define_inversion_mode", [s](int index) { switch_inversion_mode(*s, index); });
    form.on_change("menu_read_inversion_mesh", [s, busy](int) {
        run_exclusive(*s, *busy, [s] {
            try {
                read_inversion_mesh_command(*s);
            } catch (const std::exception& fault) {
                s->dialogue.message_box(std::string("An error occurred while reading the mesh file: ") + fault.what());
            }
        });
    });
    // The tiling layout is an overlay that opens on demand.
    form.set_visible("Frame_tiling_layout", false);
    form.on_change("Command_view_tiling", [s](int) { view_tiling_command(*s); });
    form.on_change("Command_done_tiling_layout", [s](int) { s->form.set_visible("Frame_tiling_layout", false); });
    form.on_change("menu_read_inversion_model", [s, busy](int) {
        run_exclusive(*s, *busy, [s] { read_inversion_model_command(*s); });
    });
    // The tiling layout of a refinement run: the tile choice, then the creation or nothing.
    form.on_change("Command_continue_tile", [s, busy](int) {
        run_exclusive(*s, *busy, [s] { continue_tile_command(*s); });
    });
    form.on_change("Command_cancel_tile", [s](int) { cancel_tile_command(*s); });
    form.on_change("Check_do_tile", [s](int) {
        if (!s->form.updating_form) tiling_check_do_tile(*s);
    });
}

}  // namespace invsetup
