// src/form/form_behaviour.cpp - the form's change handlers: option pairs, the topography pair, the
// variation switch, lists and check boxes that store their state.
#include "form/form_behaviour.h"

#include "form/column_definitions.h"
#include "form/field_validators.h"
#include "form/mesh_tab.h"
#include "form/method_behaviour.h"
#include "session.h"

namespace invsetup {

namespace {

/// Option buttons (0) and (1) of a pair: turning one on turns the other off, as a toolkit's group
/// would. Returns the mode, 0 with (0) on, else 1.
int option_pair_mode(FormModel& form, std::string_view name, int index) {
    if ((index == 0 || index == 1) && form.checked(name, index)) form.set_checked(name, 1 - index, false);
    return form.checked(name, 0) ? 0 : 1;
}

// The controls a variation run may change; they turn green while the variation is on.
constexpr std::pair<const char*, int> variation_controls[] = {
    {"Label_inversion_mode", 1}, {"Label_inversion_iter", no_index}, {"Label_ubc_res_alpha_method", no_index},
    {"Option_alphas", 0}, {"Option_alphas", 1}, {"Label_alpha", 0}, {"Label_alpha", 1}, {"Label_alpha", 2},
    {"Label_alpha", 3}, {"Label_model", 0}, {"Label_model", 1}, {"Label_model", 2}, {"Label_model", 3},
    {"Label_model", 4}, {"Label_zarninv3d_positivity", no_index}, {"Label_weight", no_index},
    {"Label_inversion_mode", 3}, {"Label_inversion_mode", 4}, {"Check_create_weighting_file", no_index},
    {"Label_weights", no_index},
};

void register_options_and_pairs(Session& session) {
    FormModel& form = session.form;
    Session* s = &session;
    form.on_change("Option_depth_weighting_parameters", [s](int index) {
        s->definition.depth_weighting_mode = option_pair_mode(s->form, "Option_depth_weighting_parameters", index);
        s->form.set_visible("Frame_specify_weighting", s->definition.depth_weighting_mode == 1);
    });
    form.on_change("Option_wavelet_parameters", [s](int index) {
        s->definition.wavelet_mode = option_pair_mode(s->form, "Option_wavelet_parameters", index);
        s->form.set_visible("Frame_specify_wavelet", s->definition.wavelet_mode == 1);
    });
    form.on_change("Option_alphas", [s](int index) {
        s->definition.alpha_mode = option_pair_mode(s->form, "Option_alphas", index);
    });
    form.on_change("Check_topo_type", [s](int index) {
        FormModel& f = s->form;
        if (f.updating_form || (index != 0 && index != 1)) return;
        f.updating_form = true;
        f.set_checked("Check_topo_type", 1 - index, !f.checked("Check_topo_type", index));
        f.updating_form = false;
        s->definition.topo_type = f.checked("Check_topo_type", 0) ? 0 : 1;
    });
    form.on_change("Check_generate_inversion_variation", [s](int) {
        FormModel& f = s->form;
        const bool on = f.checked("Check_generate_inversion_variation");
        f.set_enabled("Command_create_inversion", 2, on);
        f.set_visible("Check_update_data_files", on);
        for (const auto& [name, index] : variation_controls)
            f.set_back_colour(name, index, on ? colour_green : colour_button_face);
    });
}

void register_list_handlers(Session& session) {
    FormModel& form = session.form;
    Session* s = &session;
    form.on_change("Combo_observed_data_file_type", [s](int) {
        FormModel& f = s->form;
        const int row = f.list_index("Combo_observed_data_file_type");
        if (row < 0) return;
        s->definition.obs_data_file_type = row;
        if (row == 0) {
            f.set_visible("Tab_images", false);
            return;
        }
        // The grids take the place of the point data file.
        const Control& point_frame = f.control("Frame_point_data");
        f.move_to("Tab_images", no_index, point_frame.left, point_frame.top);
        f.set_visible("Tab_images", true);
    });
    form.on_change("Combo_UBC_elevation_offset", [s](int) {
        const int row = s->form.list_index("Combo_UBC_elevation_offset");
        if (row < 0) return;
        s->definition.sensor_height_type = row;
        s->form.set_caption("Label_sensor", row == 1 ? "Sensor elevation" : "Radar altimeter");
    });
    form.on_change("Tab_inversion", [s](int) { update_obs_data_labels(*s); });
}

/// A check box or list whose only job is to keep its state in a definition field.
void store_check(Session& session, const char* name, int InversionFields::*field) {
    Session* s = &session;
    session.form.on_change(name, [s, name, field](int) { s->definition.*field = s->form.checked(name) ? 1 : 0; });
}
void store_row(Session& session, const char* name, int InversionFields::*field) {
    Session* s = &session;
    session.form.on_change(name, [s, name, field](int) {
        const int row = s->form.list_index(name);
        if (row >= 0) s->definition.*field = row;
    });
}

void register_plain_value_handlers(Session& session) {
    store_check(session, "Check_add_padding_cells", &InversionFields::add_mesh_padding);
    store_check(session, "Check_create_weighting_file", &InversionFields::smoothness_weighting);
    store_check(session, "Check_do_expanded", &InversionFields::use_expanded_mesh);
    store_check(session, "Check_do_refinement", &InversionFields::tile_use_reference);
    store_check(session, "Check_include_regional_mesh", &InversionFields::include_regional_mesh);
    store_check(session, "Check_OutputDebugInformation", &InversionFields::output_debug_information);
    store_check(session, "Check_topo_shift", &InversionFields::topo_shift_option);
    store_check(session, "Check_use_cluster_controller", &InversionFields::use_cluster_controller);
    store_row(session, "Combo_depth_weighting_type", &InversionFields::depth_weighting_type);
    store_row(session, "Combo_forward_model", &InversionFields::tile_coarse_model);
    store_row(session, "Combo_inversion_background_method", &InversionFields::background_method);
    store_row(session, "Combo_zarninv3d_positivity", &InversionFields::positivity_flag);
    store_row(session, "Combo_positivity", &InversionFields::positivity_flag);
    store_row(session, "Combo_rock_property_file", &InversionFields::rock_application);
    store_row(session, "Combo_smoothness_method", &InversionFields::smoothness_method);
    store_row(session, "Combo_wavelet_type", &InversionFields::wavelet_type);
    Session* s = &session;
    session.form.on_change("Combo_tile_order", [s](int index) {
        const int row = s->form.list_index("Combo_tile_order", index);
        if (row >= 0) s->definition.tile_order.at(static_cast<std::size_t>(index)) = row;
    });
}

/// The data stages report into the progress label, the progress bar and the progress log.
void connect_progress_report(Session& session) {
    ProgressReport& report = session.progress_report;
    report.stage = [&session](const std::string& text) { session.form.set_caption("Label_progress", no_index, text); };
    report.show_bar = [&session] { session.form.set_visible("ProgressBar_load_ubc_model", true); };
    report.log = [&session](const std::string& line) {
        std::string progress = session.form.text("Text_progress");
        progress += line;
        session.form.set_text("Text_progress", std::move(progress));
    };
}

}  // namespace

void register_form_behaviour(Session& session) {
    connect_progress_report(session);
    register_method_behaviour(session);
    register_field_validators(session);
    register_options_and_pairs(session);
    register_list_handlers(session);
    register_plain_value_handlers(session);
    register_mesh_behaviour(session);
    register_column_behaviour(session);
}

}  // namespace invsetup
