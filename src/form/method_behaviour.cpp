// src/form/method_behaviour.cpp - the form follows the chosen inversion method and data types.
#include "form/method_behaviour.h"

#include <algorithm>
#include <array>
#include <string>

#include "session.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// A control state a method sets, or leaves as an earlier method gave it.
enum class Tri : signed char { keep = -1, off = 0, on = 1 };
constexpr Tri K = Tri::keep, Y = Tri::on, N = Tri::off;

void show(FormModel& form, std::string_view name, int index, Tri state) {
    if (state != Tri::keep) form.set_visible(name, index, state == Tri::on);
}
void enable(FormModel& form, std::string_view name, int index, Tri state) {
    if (state != Tri::keep) form.set_enabled(name, index, state == Tri::on);
}

/// One column of the method table; nullptr captions and a row of -1 keep what is there.
struct MethodColumn {
    int method;
    Tri field_frame;
    Tri gravity_frame;
    Tri sensitivity_frames;
    Tri bounds_frame;
    const char* bounds_caption;
    const char* weight_caption;
    Tri inversion_mode;
    Tri trade_off_enabled;
    int alpha_row;
    Tri alpha_enabled;
    Tri variation_check;
    Tri update_files_check;
    Tri upper_bound_enabled;
    Tri smoothness_and_threads;
    Tri threads_enabled;
};

constexpr std::array<MethodColumn, 7> method_table{{
    {1, N, Y, N, N, nullptr, "Depth Weighting", N, N, 0, N, N, N, K, K, K},
    {2, N, N, Y, Y, "Model Density Bounds", "Density Bounds File", Y, Y, 1, Y, Y, N, N, N, N},
    {5, N, N, Y, Y, "Model Density Bounds", "Density Bounds File", Y, Y, 1, Y, Y, N, Y, Y, Y},
    {0, Y, N, Y, N, nullptr, nullptr, Y, Y, 0, N, Y, N, K, K, K},
    {3, Y, N, Y, Y, "Model Susceptability Bounds", "Susc Bounds File", K, K, 0, Y, Y, N, N, N, N},
    {6, Y, N, Y, Y, "Model Bounds", "Model Bounds File", Y, Y, 1, Y, Y, N, Y, Y, Y},
    {4, Y, N, Y, Y, "Model Bounds", "Model Bounds File", Y, K, -1, K, K, K, N, N, N},
}};

void fill_inversion_modes(Session& session) {
    FormModel& form = session.form;
    form.clear_rows("Combo_inversion_mode");
    if (session.definition.inversion_method == method_zarninv3d) {
        form.add_row("Combo_inversion_mode", no_index, "Normal 3D", 0);
        form.add_row("Combo_inversion_mode", no_index, "Equivalent Source", 1);
        form.add_row("Combo_inversion_mode", no_index, "Apparent den/susc", 2);
        form.add_row("Combo_inversion_mode", no_index, "Surface + Apparent den/susc", 3);
        form.add_row("Combo_inversion_mode", no_index, "3D volume with edge correction", 4);
    } else {
        // The first two rows share the value 0 on purpose: a stored mode of 0 always selects the first.
        form.add_row("Combo_inversion_mode", no_index, "1: Tradeoff from line search", 0);
        form.add_row("Combo_inversion_mode", no_index, "2: Tradeoff is user defined", 0);
        form.add_row("Combo_inversion_mode", no_index, "3: Tradeoff from GCV analysis", 2);
    }
    form.select_item_data("Combo_inversion_mode", no_index, session.definition.inversion_mode);
}

void set_depth_weighting_rows(FormModel& form, const char* first, const char* second) {
    // The refill would drop the selection; the same row stays chosen under its new name.
    int row = form.list_index("Combo_depth_weighting_type");
    form.clear_rows("Combo_depth_weighting_type");
    form.add_row("Combo_depth_weighting_type", no_index, first);
    form.add_row("Combo_depth_weighting_type", no_index, second);
    if (row >= 0 && row < 2) form.set_list_index("Combo_depth_weighting_type", row);
}

void apply_method_family(Session& session) {
    FormModel& form = session.form;
    const bool in_house = session.definition.inversion_method == method_zarninv3d;
    if (in_house) {
        form.set_visible("Label_inversion_iter", true);
        form.set_enabled("Text_max_iter", true);
        form.set_visible("Check_do_expanded", false);
        form.set_visible("Label_inversion_mode", 0, true);
        form.set_visible("Label_inversion_mode", 1, true);
        form.set_visible("Label_inversion_mode", 2, false);
        form.set_visible("Combo_inversion_mode", true);
        form.set_enabled("Combo_inversion_mode", true);
        form.set_enabled("Text_inversion_tolc", false);
        fill_inversion_modes(session);
        if (!form.updating_form) form.raise_change("Combo_data_type", 0);
        set_depth_weighting_rows(form, "Simple", "Cell normalized");
    } else {
        form.set_visible("Label_inversion_iter", false);
        form.set_enabled("Text_max_iter", false);
        form.set_visible("Label_inversion_mode", 2, true);
        form.set_enabled("Text_inversion_tolc", true);
        form.set_visible("Check_do_expanded", true);
        form.set_enabled("Combo_inversion_mode", true);
        fill_inversion_modes(session);
        if (session.definition.inversion_method == method_ubc_grav_v2) {
            form.set_visible("Label_inversion_mode", 2, false);
            form.set_enabled("Text_inversion_tolc", false);
        }
        set_depth_weighting_rows(form, "Depth", "Distance");
    }
    for (const char* name : {"Frame_background_removal_method", "Label_zarninv3d_positivity",
                             "Combo_zarninv3d_positivity", "Check_use_cluster_controller"})
        form.set_visible(name, in_house);
    form.set_visible("Check_topo_shift", !in_house);
    form.set_visible("Check_create_weighting_file", true);
    form.set_enabled("Text_weight_multipliers", true);
}

/// Defaults that follow the first data type while the user leaves them alone.
struct TypeDefaults {
    float trade_off, error_floor, wavelet_eps, weighting_beta;
};

TypeDefaults type_defaults(int type, bool as_old_type) {
    // -1 (no type yet) counts with the magnetic types only as the type being left.
    if ((type == -1 && as_old_type) || type == 1 || type == 100 || type >= 20) return {1.0f, 1.0f, 0.001f, 3.0f};
    if (type >= 2 && type <= 19) return {0.1f, 1.0f, 0.001f, 3.0f};
    return {0.01f, 0.01f, 0.001f, 3.0f};
}

void follow_default(FormModel& form, std::string_view box, float old_default, float new_default) {
    const std::string& text = form.text(box);
    if (!is_numeric(text) || static_cast<float>(parse_number_prefix(text)) != old_default) return;
    form.set_text(box, general_number_text(new_default));
}

void apply_first_data_type(Session& session) {
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    const int old_type = definition.data_types[0];
    const int row = form.list_index("Combo_data_type", 0);
    const int type = row >= 0 ? form.item_data("Combo_data_type", 0, row) : -1;
    definition.data_types[0] = type;

    const bool second = type == 5 || type == 6 || type == 100 || type == 20;
    const bool third = type == 100 || type == 20;
    form.set_visible("Combo_data_type", 1, second);
    form.set_visible("Combo_data_type", 2, third);

    if (definition.inversion_method != method_zarninv3d) {
        form.set_visible("Frame_tensor", false);
        return;
    }
    if (type == 100 || type == 1 || type >= 20) {
        form.set_visible("Frame_field", true);
        form.set_visible("Frame_tensor", false);
    } else {
        form.set_visible("Frame_field", false);
        form.set_visible("Frame_tensor", type == 3 || type == 4);
    }
    if (form.updating_form) return;

    form.set_text("Text_percent_error", "0");
    const TypeDefaults before = type_defaults(old_type, true);
    const TypeDefaults after = type_defaults(type, false);
    follow_default(form, "Text_inversion_par", before.trade_off, after.trade_off);
    follow_default(form, "Text_error_floor", before.error_floor, after.error_floor);
    follow_default(form, "Text_wavelet_eps", before.wavelet_eps, after.wavelet_eps);
    follow_default(form, "Text_weighting_beta", before.weighting_beta, after.weighting_beta);
}

void apply_extra_data_type(Session& session, int index) {
    FormModel& form = session.form;
    int row = form.list_index("Combo_data_type", index);
    int type = row >= 0 ? form.item_data("Combo_data_type", index, row) : -1;
    session.definition.data_types[static_cast<std::size_t>(index)] = type;
    // Rows of lists 1 and 2 carry the code of the row above them, so "NA" reads 0 and counts as none.
    const bool used = type > 0;
    for (int column = 1; column <= 2; ++column) {
        form.set_enabled("Text_UBC_locations_magpos", column, used);
        form.set_visible("Label_obs_data", column, used);
    }
}

const char* obs_data_caption(int type) {
    switch (type) {
        case 100: return "VMI data";
        case 0: return "Grav data";
        case 1: return "Mag data";
        case 2: return "Gzz data";
        case 3: return "VKa data";
        case 4: return "VKc data";
        case 5: return "Gne data";
        case 6: return "Guv data";
        case 20: return "Tx data";
        case 21: return "Ty data";
        case 22: return "Tz data";
        default: return "Obs data";
    }
}

}  // namespace

void apply_inversion_method(Session& session) {
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    const int row = form.list_index("Combo_inversion_method");
    if (row < 0) return;
    definition.inversion_method =
        to_integer(parse_number_prefix(std::to_string(form.item_data("Combo_inversion_method", no_index, row))));
    const int method = definition.inversion_method;
    auto column = std::find_if(method_table.begin(), method_table.end(),
                               [method](const MethodColumn& c) { return c.method == method; });
    if (column == method_table.end()) return;

    show(form, "Frame_field", no_index, column->field_frame);
    show(form, "Frame_gravity_parameters", no_index, column->gravity_frame);
    if (column->gravity_frame == Tri::on) {
        const Control& field = form.control("Frame_field");
        form.move_to("Frame_gravity_parameters", no_index, field.left, field.top);
    }
    show(form, "Frame_magsen3d", 0, column->sensitivity_frames);
    show(form, "Frame_magsen3d", 1, column->sensitivity_frames);
    show(form, "Frame_parameter_bounds", no_index, column->bounds_frame);
    if (column->bounds_caption) form.set_caption("Frame_parameter_bounds", column->bounds_caption);
    if (column->weight_caption) form.set_caption("Label_weight", column->weight_caption);
    show(form, "Label_inversion_mode", 0, column->inversion_mode);
    show(form, "Label_inversion_mode", 1, column->inversion_mode);
    show(form, "Combo_inversion_mode", no_index, column->inversion_mode);
    enable(form, "Text_inversion_par", no_index, column->trade_off_enabled);
    if (column->alpha_row >= 0) form.set_list_index("Combo_alpha_method", column->alpha_row);
    enable(form, "Combo_alpha_method", no_index, column->alpha_enabled);

    const bool in_house = method == method_zarninv3d;
    form.set_visible("Label_data_type", 0, in_house);
    form.set_visible("Combo_data_type", 0, in_house);
    form.set_visible("Combo_optional_data_type", 0, in_house);
    if (in_house) {
        const int first_type = definition.data_types[0];
        const bool second = first_type == 5 || first_type == 6 || first_type == 100 || first_type == 20;
        const bool third = first_type == 100 || first_type == 20;
        form.set_visible("Label_data_type", 1, second);
        form.set_visible("Combo_data_type", 1, second);
        form.set_visible("Combo_data_type", 2, third);
        // The data type handler shows the frame again for a magnetic type once it runs.
        if (form.list_index("Combo_data_type", 0) == 1) form.set_visible("Frame_field", false);
    } else {
        form.set_visible("Label_data_type", 1, false);
        form.set_visible("Combo_data_type", 1, false);
        form.set_visible("Combo_data_type", 2, false);
    }

    show(form, "Check_generate_inversion_variation", no_index, column->variation_check);
    if (column->variation_check == Tri::off) form.set_checked("Check_generate_inversion_variation", false);
    show(form, "Check_update_data_files", no_index, column->update_files_check);
    if (method == method_ubc_grav_v2) form.set_checked("Check_update_data_files", false);
    enable(form, "Text_depth_weighting_file", 1, column->upper_bound_enabled);
    enable(form, "Command_depth_weighting_file", 1, column->upper_bound_enabled);
    for (const char* name : {"Label_smoothness_method", "Combo_smoothness_method", "Label_NumThreads",
                             "Check_OutputDebugInformation"})
        show(form, name, no_index, column->smoothness_and_threads);
    enable(form, "Text_NumThreads", no_index, column->threads_enabled);

    apply_method_family(session);
}

void apply_data_type(Session& session, int index) {
    if (index == 0)
        apply_first_data_type(session);
    else
        apply_extra_data_type(session, index);
}

void update_obs_data_labels(Session& session) {
    FormModel& form = session.form;
    const InversionDefinition& definition = session.definition;
    const int method = definition.inversion_method;
    if (method == method_zarninv3d) {
        // Only three value columns exist on the form; further types have no label to caption.
        const int count = std::min(definition.data_type_count, 3);
        for (int index = 0; index < count; ++index)
            form.set_caption("Label_obs_data", index, obs_data_caption(definition.data_types[static_cast<std::size_t>(index)]));
    } else if (is_magnetic_method(method)) {
        form.set_caption("Label_obs_data", 0, "Mag data");
    } else if (is_gravity_method(method)) {
        form.set_caption("Label_obs_data", 0, "Grav data");
    }
}

void register_method_behaviour(Session& session) {
    FormModel& form = session.form;
    Session* s = &session;
    form.on_change("Combo_inversion_method", [s](int) { apply_inversion_method(*s); });
    form.on_change("Combo_data_type", [s](int index) { apply_data_type(*s, index); });
    form.on_change("Combo_optional_data_type", [s](int) {
        s->definition.calculation_data_types[0] = s->form.selected_item_data("Combo_optional_data_type", 0);
    });
    form.on_change("Combo_inversion_mode", [s](int) {
        // A list emptied for a refill has no row; the stored mode waits for the next selection.
        if (s->form.list_index("Combo_inversion_mode") >= 0)
            s->definition.inversion_mode = s->form.selected_item_data("Combo_inversion_mode");
    });
    form.on_change("Combo_alpha_method", [s](int) {
        const int row = s->form.list_index("Combo_alpha_method");
        if (row < 0) return;
        s->definition.alpha_method = row;
        s->form.set_visible("Label_alpha", 0, row == 0);
        s->form.set_enabled("Text_alpha_s", row == 0);
    });
}

}  // namespace invsetup
