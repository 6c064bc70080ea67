// src/form/field_validators.cpp - text boxes that feed the definition, and the file boxes' chooser.
#include "form/field_validators.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "form/column_definitions.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

enum class Rule { any, above_zero, at_least_zero, not_zero };

/// A box whose numeric text goes straight into a single real field.
struct RealBox {
    const char* name;
    float InversionFields::*field;
    Rule rule;
};

constexpr RealBox real_boxes[] = {
    {"Text_alpha_s", &InversionFields::alpha_s, Rule::any},
    {"Text_alpha_e", &InversionFields::alpha_e, Rule::any},
    {"Text_alpha_n", &InversionFields::alpha_n, Rule::any},
    {"Text_alpha_v", &InversionFields::alpha_v, Rule::any},
    {"Text_mag_inclination", &InversionFields::mag_inclination, Rule::any},
    {"Text_mag_declination", &InversionFields::mag_declination, Rule::any},
    {"Text_mag_intensity", &InversionFields::mag_intensity, Rule::any},
    {"Text_line_azimuth", &InversionFields::line_azimuth, Rule::any},
    {"Text_weighting_beta", &InversionFields::weighting_beta, Rule::any},
    {"Text_weighting_znot", &InversionFields::weighting_znot, Rule::any},
    {"Text_UBC_regional_field", &InversionFields::regional_base, Rule::any},
    {"Text_UBC_integration_interval", &InversionFields::integration_interval, Rule::any},
    {"Text_inversion_background_value", &InversionFields::background_value, Rule::any},
    {"Text_inversion_par", &InversionFields::trade_off_parameter, Rule::above_zero},
    {"Text_inversion_tolc", &InversionFields::misfit_tolerance, Rule::above_zero},
    {"Text_wavelet_eps", &InversionFields::wavelet_eps, Rule::above_zero},
    {"Text_wavelet_itol", &InversionFields::wavelet_itol, Rule::above_zero},
    {"Text_error_floor", &InversionFields::error_floor, Rule::at_least_zero},
    {"Text_percent_error", &InversionFields::error_percent, Rule::at_least_zero},
    {"Text_UBC_regional_scale", &InversionFields::regional_scale, Rule::not_zero},
};

bool meets(Rule rule, float value) {
    switch (rule) {
        case Rule::above_zero: return value > 0;
        case Rule::at_least_zero: return value >= 0;
        case Rule::not_zero: return value != 0;
        case Rule::any: break;
    }
    return true;
}

/// The numeric value of a box as a single real, or nothing for any other text.
std::optional<float> single_value(const std::string& text) {
    if (!is_numeric(text)) return std::nullopt;
    return static_cast<float>(parse_number_prefix(text));
}

/// The numeric value of a box as an integer, or nothing for other text or a value beyond 32 bits.
std::optional<int> integer_value(const std::string& text) {
    if (!is_numeric(text)) return std::nullopt;
    try {
        return to_integer(parse_number_prefix(text));
    } catch (const std::overflow_error&) {
        return std::nullopt;
    }
}

struct FileBox {
    const char* name;
    int index;  // no_index, or the one member of an array this row is for
    const char* title;
    const char* filter;
};

constexpr const char* model_filter = "Data Files (*.sus;*.den;*.mod)|*.sus;*.den;*.mod|All files (*.*)|*.*";
constexpr const char* grid_filter = "Grid Files (*.grd;*.ers)|*.grd;*.ers|All files (*.*)|*.*";

constexpr FileBox file_boxes[] = {
    {"Text_initial_file", no_index, "Select the initial model file", model_filter},
    {"Text_reference_file", no_index, "Select the reference model file", model_filter},
    {"Text_weight_file", no_index, "Select the weight model file", model_filter},
    {"Text_depth_weighting_file", 0, "Select the model weighting file",
     "Data Files (*.sus;*.den;*.mod;*.bnd)|*.sus;*.den;*.mod;*.bnd|All files (*.*)|*.*"},
    {"Text_depth_weighting_file", 1, "Select the model weighting file",
     "Data Files (*.sus;*.den;*.mod;*.bnd)|*.sus;*.den;*.mod;*.bnd|All files (*.*)|*.*"},
    {"Text_rock_propery_file", no_index, "Select the rock property file",
     "Data Files (*.lkp;*.csv)|*.lkp;*.csv|All files (*.*)|*.*"},
    {"Text_image_file", no_index, "Select the image file to display in the tiling layout",
     "Image Files (*.grd;*.ers)|*.grd;*.ers|All files (*.*)|*.*"},
    {"Text_data_locations", 0, "Select the observed data file",
     "Data Files (*.dat;*.xyz;*.stn;*.gdb;*.csv)|*.dat;*.xyz;*.stn;*.gdb;*.csv|All files (*.*)|*.*"},
    {"Text_data_locations", 1, "Select the topo data file",
     "Data Files (*.dat;*.xyz;*.csv,*.grd;*.ers)|*.dat;*.xyz;*.csv;*.grd;*.ers|All files (*.*)|*.*"},
    {"Text_data_locations", 2, "Select the observed data grid file", grid_filter},
    {"Text_data_locations", 3, "Select the second data grid file", grid_filter},
    {"Text_data_locations", 4, "Select the third data grid file", grid_filter},
    {"Text_data_locations", 5, "Select the sensor grid file", grid_filter},
};

/// The file dialogue with the working directory kept: a dialogue may move it, and only the
/// commands that move it on purpose may leave it moved.
std::optional<std::string> select_file(Session& session, const std::string& start_name, const std::string& filter,
                                       const std::string& title) {
    const std::filesystem::path kept = session.working_directory;
    FileChoice request;
    request.title = title;
    request.filter = filter;
    request.start_name = start_name;
    std::optional<std::string> chosen = session.dialogue.choose_file(request);
    if (!session.working_directory_changed) session.working_directory = kept;
    return chosen;
}

void store_real_box(Session& session, const RealBox& box) {
    std::optional<float> value = single_value(session.form.text(box.name));
    if (value && meets(box.rule, *value)) session.definition.*box.field = *value;
}

}  // namespace

void register_field_validators(Session& session) {
    FormModel& form = session.form;
    Session* s = &session;
    for (const RealBox& box : real_boxes)
        form.on_change(box.name, [s, &box](int) { store_real_box(*s, box); });

    form.on_change("Text_UBC_elevation_offset", [s](int index) {
        if (std::optional<float> value = single_value(s->form.text("Text_UBC_elevation_offset", index)))
            s->definition.elevation_offsets.at(static_cast<std::size_t>(index)) = *value;
    });
    form.on_change("Text_NumThreads", [s](int) {
        if (std::optional<int> value = integer_value(s->form.text("Text_NumThreads")))
            s->definition.number_of_threads = *value;
    });
    form.on_change("Text_max_iter", [s](int) {
        // Letters mean "no limit given": the outside program then uses its own default.
        s->definition.maximum_iterations = integer_value(s->form.text("Text_max_iter")).value_or(0);
    });
    form.on_change("Text_inversion_background_topo", [s](int) {
        const std::string& text = s->form.text("Text_inversion_background_topo");
        if (trim(text).empty())
            s->definition.background_topo = null_value_single;  // worked out by the inversion program
        else if (std::optional<float> value = single_value(text))
            s->definition.background_topo = *value;
    });
    form.on_change("Text_weight_multipliers", [s](int) {
        s->definition.weight_multipliers = s->form.text("Text_weight_multipliers");
    });

    // The buttons beside the file boxes run the box's chooser.
    form.on_change("Command_select_initial_file", [s](int) { choose_file_for_box(*s, "Text_initial_file", no_index); });
    form.on_change("Command_select_reference_file",
                   [s](int) { choose_file_for_box(*s, "Text_reference_file", no_index); });
    form.on_change("Command_select_weight_file", [s](int) { choose_file_for_box(*s, "Text_weight_file", no_index); });
    form.on_change("Command_depth_weighting_file",
                   [s](int index) { choose_file_for_box(*s, "Text_depth_weighting_file", index); });
    form.on_change("Command_rock_property_file",
                   [s](int) { choose_file_for_box(*s, "Text_rock_propery_file", no_index); });
    form.on_change("Command_select_image_file", [s](int) { choose_file_for_box(*s, "Text_image_file", no_index); });
}

void leave_text_box(Session& session, std::string_view name, int index) {
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    const std::string& text = form.text(name, index);
    if (name == "Text_chi_factor") {
        if (std::optional<float> value = single_value(text)) {
            definition.chi_factor = *value;
            return;
        }
        form.set_text(name, index, format_picture(definition.chi_factor, "0.000"));
    } else if (name == "Text_iterations" || name == "Text_subspace") {
        int& field = name == "Text_iterations" ? definition.grav_iterations : definition.subspace_size;
        if (std::optional<int> value = integer_value(text)) {
            field = *value;
            return;
        }
        form.set_text(name, index, format_picture(field, "0"));
    } else {
        return;
    }
    session.dialogue.beep();
}

bool choose_file_for_box(Session& session, std::string_view name, int index) {
    const FileBox* box = nullptr;
    for (const FileBox& candidate : file_boxes)
        if (name == candidate.name && candidate.index == index) box = &candidate;
    if (!box) throw std::out_of_range("no file chooser for " + std::string(name));

    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    std::string start_name = form.text(name, index);
    if (iequals(trim(start_name), "null")) start_name.clear();
    if (name == "Text_depth_weighting_file") {
        const std::string& stored = definition.model_bounds_files.at(static_cast<std::size_t>(index));
        if (!stored.empty() && !iequals(stored, "null")) start_name = stored;
    }
    std::string title = box->title;
    if (name == "Text_data_locations" && index == 1 && definition.data_file_kinds[1] == 1)
        title = "Select the topo grid file";

    std::optional<std::string> chosen = select_file(session, start_name, box->filter, title);
    if (!chosen || chosen->empty()) return false;

    if (name != "Text_data_locations") {
        form.set_text(name, index, *chosen);
        return true;
    }
    // A data file box shows the name alone; the path lives in the definition.
    const std::size_t slot = static_cast<std::size_t>(index);
    definition.data_file_names.at(slot) = *chosen;
    const bool was_updating = form.updating_form;
    form.updating_form = true;
    if (index == 1) {
        form.set_checked("Check_topo_type", 0, true);
        form.set_checked("Check_topo_type", 1, false);
        definition.topo_type = 0;
    }
    form.set_text("Text_data_locations", index, file_name_only(*chosen));
    form.updating_form = was_updating;
    display_data_file(session, index);
    if (index <= 1) display_location_column_definitions(session, index);
    return true;
}

void show_coordinate_transform_state(Session& session) {
    session.form.set_back_colour("Command_define_coordinate_transform", no_index,
                                 session.definition.coordinate_transform.active ? colour_red : colour_window);
}

}  // namespace invsetup
