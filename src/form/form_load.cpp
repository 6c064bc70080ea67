// src/form/form_load.cpp - filling the form and the definition from the parameter record.
#include "form/form_load.h"

#include <cmath>
#include <exception>
#include <string>

#include "form/column_definitions.h"
#include "form/field_validators.h"
#include "form/mesh_tab.h"
#include "grids/grid_access.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

constexpr int data_type_codes[] = {0, 1, 2, 3, 4, 5, 6, 20, 21, 22};

std::string integer_text(int value) { return format_picture(value, "0"); }

/// Selects the first of the first `row_limit` rows whose item data equals `code`, after clearing
/// the selection; nothing matches, nothing is selected.
void select_code(FormModel& form, std::string_view name, int index, int code, int row_limit) {
    form.set_list_index(name, index, -1);
    for (int row = 0; row < row_limit; ++row) {
        if (form.item_data(name, index, row) == code) {
            form.set_list_index(name, index, row);
            return;
        }
    }
}

/// Sets option button (1) when `specified`, else (0), and shows the frame of the specified values.
void set_option_pair(FormModel& form, std::string_view options, std::string_view frame, bool specified) {
    form.set_checked(options, 0, !specified);
    form.set_checked(options, 1, specified);
    form.set_visible(frame, specified);
}

int method_row(int& method) {
    switch (method) {
        case 0: return 0;
        case 3: return 1;
        case 6: return 2;
        case 1: return 3;
        case 2: return 4;
        case 5: return 5;
        case 4: return 6;
        default: method = method_zarninv3d; return 6;  // an unknown method loads as the in-house one
    }
}

void load_inversion_parameters(Session& session) {
    FormModel& form = session.form;
    ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;

    // Method. Selecting the row runs the method behaviour, also when the row was selected already.
    definition.inversion_method = record.inversion_method;
    const int row = method_row(definition.inversion_method);
    if (form.list_index("Combo_inversion_method") == row)
        form.raise_change("Combo_inversion_method");
    else
        form.set_list_index("Combo_inversion_method", row);

    // Data types. Lists (1) and (2) carry their codes one row out of step, and the optional list is
    // walked only as far as list (0) reaches, so its last row is never found. Both are the form's
    // long-standing behaviour and files rely on it.
    definition.data_type_count = record.data_type_count;
    definition.calculation_data_type_count = record.calculation_data_type_count;
    for (std::size_t i = 0; i < 5; ++i) {
        definition.data_types[i] = record.data_types[i];
        definition.calculation_data_types[i] = record.calculation_data_types[i];
    }
    // Codes that no row carries (the tensor components, VMI) stay in the definition although the
    // list can show none of them: the walk's pass through "no selection" must not lose them.
    for (int index = 0; index <= 2; ++index) {
        const std::size_t i = static_cast<std::size_t>(index);
        const int code = record.data_types[i];
        if (code <= -1) continue;
        select_code(form, "Combo_data_type", index, code, form.row_count("Combo_data_type", index));
        if (form.list_index("Combo_data_type", index) < 0) definition.data_types[i] = code;
    }
    if (record.calculation_data_types[0] >= 0) {
        select_code(form, "Combo_optional_data_type", 0, record.calculation_data_types[0],
                    form.row_count("Combo_data_type", 0));
        if (form.list_index("Combo_optional_data_type", 0) < 0)
            definition.calculation_data_types[0] = record.calculation_data_types[0];
    }

    // A mode that fits no row leaves the list without a selection; the stored mode stays.
    form.select_item_data("Combo_inversion_mode", no_index, record.inversion_mode);
    definition.inversion_mode = record.inversion_mode;

    definition.trade_off_parameter = record.trade_off_parameter;
    definition.misfit_tolerance = record.misfit_tolerance;
    definition.maximum_iterations = record.maximum_iterations;
    form.set_text("Text_inversion_par", general_number_text(record.trade_off_parameter));
    form.set_text("Text_inversion_tolc", general_number_text(record.misfit_tolerance));
    form.set_text("Text_max_iter", record.maximum_iterations > 0 ? integer_text(record.maximum_iterations) : "");

    // Smoothness.
    definition.alpha_method = record.alpha_method;
    definition.alpha_mode = record.alpha_mode;
    definition.alpha_s = record.alpha_s;
    definition.alpha_e = record.alpha_e;
    definition.alpha_n = record.alpha_n;
    definition.alpha_v = record.alpha_v;
    form.set_list_index("Combo_alpha_method", record.alpha_method);
    form.set_checked("Option_alphas", 0, record.alpha_mode != 1);
    form.set_checked("Option_alphas", 1, record.alpha_mode == 1);
    form.set_text("Text_alpha_s", general_number_text(record.alpha_s));
    form.set_text("Text_alpha_e", general_number_text(record.alpha_e));
    form.set_text("Text_alpha_n", general_number_text(record.alpha_n));
    form.set_text("Text_alpha_v", general_number_text(record.alpha_v));
    definition.initial_model_file = record.initial_model_file;
    definition.reference_model_file = record.reference_model_file;
    definition.weighting_model_file = record.weighting_model_file;
    form.set_text("Text_initial_file", record.initial_model_file);
    form.set_text("Text_reference_file", record.reference_model_file);
    form.set_text("Text_weight_file", record.weighting_model_file);

    // Inducing field.
    definition.mag_inclination = record.mag_inclination;
    definition.mag_declination = record.mag_declination;
    definition.mag_intensity = record.mag_intensity;
    definition.line_azimuth = record.line_azimuth;
    form.set_text("Text_mag_inclination", format_picture(record.mag_inclination, "0.00"));
    form.set_text("Text_mag_declination", format_picture(record.mag_declination, "0.00"));
    form.set_text("Text_mag_intensity", format_picture(record.mag_intensity, "0.0"));
    form.set_text("Text_line_azimuth", format_picture(record.line_azimuth, "0.0"));

    // Depth weighting and the sensitivity settings beside it.
    definition.depth_weighting_mode = record.depth_weighting_mode;
    definition.depth_weighting_type = record.depth_weighting_type;
    definition.weighting_beta = record.weighting_beta;
    definition.weighting_znot = record.weighting_znot;
    definition.smoothness_method = record.smoothness_method;
    definition.number_of_threads = record.number_of_threads;
    definition.output_debug_information = record.output_debug_information;
    set_option_pair(form, "Option_depth_weighting_parameters", "Frame_specify_weighting",
                    record.depth_weighting_mode == 1);
    form.set_list_index("Combo_depth_weighting_type", record.depth_weighting_type);
    form.set_text("Text_weighting_beta", general_number_text(record.weighting_beta));
    form.set_text("Text_weighting_znot", general_number_text(record.weighting_znot));
    form.set_list_index("Combo_smoothness_method", record.smoothness_method);
    form.set_text("Text_NumThreads", integer_text(record.number_of_threads));
    form.set_checked("Check_OutputDebugInformation", record.output_debug_information != 0);

    // Wavelet compression.
    definition.wavelet_mode = record.wavelet_mode;
    definition.wavelet_type = record.wavelet_type;
    definition.wavelet_itol = record.wavelet_itol;
    definition.wavelet_eps = record.wavelet_eps;
    set_option_pair(form, "Option_wavelet_parameters", "Frame_specify_wavelet", record.wavelet_mode == 1);
    form.set_list_index("Combo_wavelet_type", record.wavelet_type);
    form.set_text("Text_wavelet_itol", general_number_text(record.wavelet_itol));
    form.set_text("Text_wavelet_eps", general_number_text(record.wavelet_eps));

    // Bounds.
    definition.model_bounds_files = record.model_bounds_files;
    form.set_text("Text_depth_weighting_file", 0, record.model_bounds_files[0]);
    form.set_text("Text_depth_weighting_file", 1, record.model_bounds_files[1]);
    definition.positivity_flag = record.positivity_flag;
    form.set_list_index("Combo_zarninv3d_positivity",
                        form.row_count("Combo_zarninv3d_positivity") > record.positivity_flag ? record.positivity_flag : 0);

    // Background removal and rock properties.
    definition.background_method = record.background_method;
    definition.background_value = record.background_value;
    definition.background_topo = record.background_topo;
    form.set_list_index("Combo_inversion_background_method", record.background_method);
    form.set_text("Text_inversion_background_value", format_picture(record.background_value, "0.0000"));
    form.set_text("Text_inversion_background_topo",
                  is_null(record.background_topo) ? std::string() : format_picture(record.background_topo, "0.0"));
    definition.rock_property_file = record.rock_property_file;
    definition.rock_application = record.rock_application;
    form.set_text("Text_rock_propery_file", record.rock_property_file);
    form.set_list_index("Combo_rock_property_file", record.rock_application);

    // Gravity.
    form.set_list_index("Combo_positivity", record.positivity_flag);
    definition.grav_iterations = record.grav_iterations;
    definition.chi_factor = record.chi_factor;
    definition.subspace_size = record.subspace_size;
    form.set_text("Text_iterations", integer_text(record.grav_iterations));
    form.set_text("Text_chi_factor", format_picture(record.chi_factor, "0.000"));
    form.set_text("Text_subspace", integer_text(record.subspace_size));

    definition.coordinate_transform = record.coordinate_transform;
    show_coordinate_transform_state(session);
    definition.use_cluster_controller = record.use_cluster_controller == 1 ? 1 : 0;
    form.set_checked("Check_use_cluster_controller", definition.use_cluster_controller == 1);
}

/// Error percent and floor for a definition that gives neither: by method and first data type.
void default_errors(int method, int first_type, float& percent, float& floor) {
    if (method == method_zarninv3d) {
        percent = 0.0f;
        floor = first_type == 1 ? 1.0f : first_type >= 2 ? 0.1f : 0.01f;
    } else {
        percent = 1.0f;
        floor = first_type == 1 ? 1.0f : 0.05f;
    }
}

/// Name and column definitions of a point file slot (0 observed data, 1 topography).
void load_point_file(Session& session, int slot) {
    FormModel& form = session.form;
    const ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;
    const std::size_t i = static_cast<std::size_t>(slot);
    definition.data_file_names[i] = record.data_file_names[i];
    form.set_text("Text_data_locations", slot, file_name_only(record.data_file_names[i]));
    definition.data_first_lines[i] = record.data_first_lines[i];
    definition.data_read_steps[i] = record.data_read_steps[i];
    definition.data_name_lines[i] = record.data_name_lines[i];
    definition.data_x_columns[i] = record.data_x_columns[i];
    definition.data_y_columns[i] = record.data_y_columns[i];
    definition.data_z_columns[i] = record.data_z_columns[i];
    form.set_text("Text_UBC_locations_nhead", slot, integer_text(record.data_first_lines[i]));
    form.set_text("Text_UBC_locations_nstep", slot, integer_text(record.data_read_steps[i]));
    form.set_text("Text_UBC_locations_name_line", slot, integer_text(record.data_name_lines[i]));
    form.set_text("Text_UBC_locations_xpos", slot, integer_text(record.data_x_columns[i]));
    form.set_text("Text_UBC_locations_ypos", slot, integer_text(record.data_y_columns[i]));
    form.set_text("Text_UBC_locations_zpos", slot, integer_text(record.data_z_columns[i]));
    if (slot == 0) {
        definition.data_value_columns = record.data_value_columns;
        definition.line_column = record.line_column;
        definition.extra_value_column = record.extra_value_column;
        definition.values_per_cell = record.values_per_cell;
        definition.integration_interval = record.integration_interval;
        for (int column = 0; column < 3; ++column)
            form.set_text("Text_UBC_locations_magpos", column,
                          integer_text(record.data_value_columns[static_cast<std::size_t>(column)]));
        form.set_text("Text_UBC_locations_lpos", integer_text(record.line_column));
        form.set_text("Text_UBC_locations_valpos", integer_text(record.extra_value_column));
        form.set_text("Text_UBC_locations_valcount", integer_text(record.values_per_cell));
        form.set_text("Text_UBC_integration_interval", format_picture(record.integration_interval, "0.0000"));
    }
    definition.data_last_columns[i] = 0;
    form.set_text("Text_data_file", slot, "");
    display_data_file(session, slot);
    if (definition.data_file_kinds[i] != 2) {
        form.clear_rows("Combo_names", slot);
        display_location_column_definitions(session, slot);
    }
}

void load_observed_data(Session& session) {
    FormModel& form = session.form;
    ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;

    definition.obs_data_file_type = record.obs_data_file_type;
    form.set_list_index("Combo_observed_data_file_type", record.obs_data_file_type);
    // Both errors zero would leave the inversion without any error: give the usual ones.
    if (record.error_percent == 0 && record.error_floor == 0)
        default_errors(definition.inversion_method, definition.data_types[0], record.error_percent,
                       record.error_floor);
    definition.error_percent = record.error_percent;
    definition.error_floor = record.error_floor;
    form.set_text("Text_error_floor", general_number_text(record.error_floor));
    form.set_text("Text_percent_error", general_number_text(record.error_percent));

    form.set_list_index("Combo_UBC_elevation_offset", record.sensor_height_type == 1 ? 1 : 0);
    definition.sensor_height_type = form.list_index("Combo_UBC_elevation_offset");
    definition.elevation_offsets[0] = record.elevation_offsets[0];
    definition.elevation_offsets[2] = record.elevation_offsets[2];
    form.set_text("Text_UBC_elevation_offset", 0, format_picture(record.elevation_offsets[0], "0.0"));
    form.set_text("Text_UBC_elevation_offset", 2, format_picture(record.elevation_offsets[2], "0.0"));
    definition.regional_base = record.regional_base;
    form.set_text("Text_UBC_regional_field", format_picture(record.regional_base, "0.0"));
    if (record.regional_scale == 0) record.regional_scale = 1;
    definition.regional_scale = record.regional_scale;
    form.set_text("Text_UBC_regional_scale", format_picture(record.regional_scale, "0.0000"));

    load_point_file(session, 0);
    for (int slot = 2; slot <= 5; ++slot) {
        const std::size_t i = static_cast<std::size_t>(slot);
        definition.data_file_names[i] = record.data_file_names[i];
        form.set_text("Text_data_locations", slot, file_name_only(record.data_file_names[i]));
        display_data_file(session, slot);
    }
}

void load_topo_data(Session& session) {
    FormModel& form = session.form;
    const ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;
    definition.topo_type = record.topo_type;
    form.set_checked("Check_topo_type", 0, record.topo_type != 1);
    form.set_checked("Check_topo_type", 1, record.topo_type == 1);
    definition.topo_shift_option = record.topo_shift_option;
    form.set_checked("Check_topo_shift", record.topo_shift_option != 0);
    definition.elevation_offsets[1] = record.elevation_offsets[1];
    form.set_text("Text_UBC_elevation_offset", 1, format_picture(record.elevation_offsets[1], "0.0"));
    load_point_file(session, 1);
}

void load_mesh(Session& session) {
    FormModel& form = session.form;
    const ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;

    for (std::size_t i = 0; i <= 2; ++i) {
        definition.mesh_min[i] = record.mesh_min[i];
        definition.mesh_max[i] = record.mesh_max[i];
        definition.mesh_cell_size[i] = record.mesh_cell_size[i];
        definition.mesh_cell_count[i] = record.mesh_cell_count[i];
    }
    // A z core without height gets one of 1000 below its top.
    if (!(definition.mesh_max[2] > definition.mesh_min[2])) definition.mesh_min[2] = definition.mesh_max[2] - 1000;

    for (int axis = 0; axis <= 2; ++axis) {
        const std::size_t i = static_cast<std::size_t>(axis);
        double& size = definition.mesh_cell_size[i];
        int& count = definition.mesh_cell_count[i];
        const double range = definition.mesh_max[i] - definition.mesh_min[i];
        if (size <= 0) {
            // No cell size: take it from the count, and a single cell over the whole range is taken
            // as no definition at all, so the usual size applies.
            if (count < 1) count = 1;
            size = range / count;
            if (count == 1) size = axis == 2 ? 50.0 : 100.0;
        }
        form.set_text("Text_cell_size", axis, general_number_text(size));
        count = to_integer(range / size);
        form.set_text("Text_num_cells", axis, integer_text(count));
        form.set_text("Text_min_val", axis, general_number_text(definition.mesh_min[i]));
        definition.mesh_max[i] = definition.mesh_min[i] + count * size;
        form.set_text("Text_max_val", axis, general_number_text(definition.mesh_max[i]));
    }

    // The growing cells below the uniform z core.
    int& extra_count = definition.mesh_cell_count[3];
    double& multiplier = definition.mesh_cell_size[3];
    extra_count = record.mesh_cell_count[3];
    multiplier = record.mesh_cell_size[3];
    definition.mesh_max[3] = record.mesh_max[3];
    const double core_bottom = definition.mesh_min[2];
    const double core_size = definition.mesh_cell_size[2];
    if (extra_count > 0 && multiplier > 1) {
        definition.mesh_min[3] = core_bottom - core_size * (std::pow(multiplier, extra_count) - 1) / (multiplier - 1);
    } else if (extra_count > 0) {
        definition.mesh_min[3] = core_bottom - extra_count * core_size;
    } else {
        extra_count = 0;
        multiplier = 1.0;
        definition.mesh_min[3] = core_bottom;
    }
    form.set_text("Text_num_cells", 3, integer_text(extra_count));
    form.set_text("Text_cell_size", 3, general_number_text(multiplier));
    form.set_text("Text_num_cells", 4, integer_text(definition.mesh_cell_count[2] + extra_count));
    display_cell_counts(session, definition.mesh_cell_count[0], definition.mesh_cell_count[1],
                        definition.mesh_cell_count[2], extra_count);
    form.set_text("Text_min_val", 3, format_picture(definition.mesh_min[3], "0.0"));
    for (int axis = 0; axis <= 2; ++axis) {
        const std::size_t i = static_cast<std::size_t>(axis);
        form.set_text("Text_max_val", 3 + axis, general_number_text(definition.mesh_max[i] - definition.mesh_min[i]));
    }

    definition.add_mesh_padding = record.add_mesh_padding;
    definition.padding_multipliers[0] = record.padding_multipliers[0];
    definition.padding_multipliers[1] = record.padding_multipliers[1];
    definition.smoothness_weighting = record.smoothness_weighting;
    definition.weight_multipliers = record.weight_multipliers;
    definition.use_expanded_mesh = record.use_expanded_mesh;
    form.set_checked("Check_add_padding_cells", record.add_mesh_padding != 0);
    form.set_text("Text_padding_multipliers", 0, record.padding_multipliers[0]);
    form.set_text("Text_padding_multipliers", 1, record.padding_multipliers[1]);
    form.set_checked("Check_create_weighting_file", record.smoothness_weighting != 0);
    form.set_text("Text_weight_multipliers", record.weight_multipliers);
    form.set_visible("Check_create_weighting_file", true);
    form.set_enabled("Check_create_weighting_file", true);
    form.set_visible("Text_weight_multipliers", true);
    form.set_enabled("Text_weight_multipliers", true);
    form.set_checked("Check_do_expanded", record.use_expanded_mesh != 0);

    const bool refined = definition.refinement_mode == 1;
    if (record.refinement_mode == 1 && refined) {
        definition.x_tile_size = record.x_tile_size;
        definition.y_tile_size = record.y_tile_size;
        definition.tile_overlap = record.tile_overlap;
        definition.tile_xy_blend = record.tile_xy_blend;
        definition.tile_z_blend = record.tile_z_blend;
        definition.tile_min_points = record.tile_min_points;
        form.set_text("Text_x_tile_size", integer_text(record.x_tile_size));
        form.set_text("Text_y_tile_size", integer_text(record.y_tile_size));
        form.set_text("Text_tile_overlap", integer_text(record.tile_overlap));
        form.set_text("Text_blend_overlap", integer_text(record.tile_xy_blend));
        form.set_text("Text_z_blend", integer_text(record.tile_z_blend));
        form.set_text("Text_minimum_points", integer_text(record.tile_min_points));
        definition.include_regional_mesh = record.include_regional_mesh;
        form.set_checked("Check_include_regional_mesh", record.include_regional_mesh != 0);
        const int coarse = record.tile_coarse_model >= 0 && record.tile_coarse_model <= 2 ? record.tile_coarse_model : 2;
        definition.tile_coarse_model = coarse;
        form.set_list_index("Combo_forward_model", coarse);
        definition.tile_use_reference = record.tile_use_reference;
        form.set_checked("Check_do_refinement", record.tile_use_reference != 0);
        for (int i = 0; i < 3; ++i) {
            const int order = record.tile_order[static_cast<std::size_t>(i)] == 1 ? 1 : 0;
            definition.tile_order[static_cast<std::size_t>(i)] = order;
            form.set_list_index("Combo_tile_order", i, order);
        }
    }
    form.set_visible("Frame_refinement", refined);
    form.set_visible("Frame_mesh_sizes", !refined);
    if (definition.add_mesh_padding == 1) {
        // The totals with the padding just read, as an edit of the mesh would show them.
        display_cell_counts(session, definition.mesh_cell_count[0], definition.mesh_cell_count[1],
                            definition.mesh_cell_count[2], extra_count);
        display_total_mesh(session, mesh_limits(definition));
    }
    int x_cells_per_tile = 0, y_cells_per_tile = 0;
    determine_number_of_tiles(session, x_cells_per_tile, y_cells_per_tile);
    display_tile_counts(session);
}

}  // namespace

void init_form_inversion_parameters(Session& session) {
    session.record = ParameterRecord{};
    clear_point_transform(session.record.coordinate_transform);
}

void initialise_inversion_form(Session& session) {
    FormModel& form = session.form;
    init_form_inversion_parameters(session);

    const bool refined = session.definition.refinement_mode == 1;
    form.set_visible("menu_define_inversion_mode", 0, refined);
    form.set_visible("menu_define_inversion_mode", 1, !refined);
    if (refined) {
        const ParameterRecord& record = session.record;
        InversionDefinition& definition = session.definition;
        definition.x_tile_size = record.x_tile_size;
        definition.y_tile_size = record.y_tile_size;
        definition.tile_overlap = record.tile_overlap;
        definition.tile_xy_blend = record.tile_xy_blend;
        definition.tile_z_blend = record.tile_z_blend;
        definition.tile_min_points = record.tile_min_points;
    }
    form.set_list_index("Tab_inversion", 4);

    constexpr int method_codes[] = {0, 3, 6, 1, 2, 5, 4};
    for (int row = 0; row < 7; ++row) form.set_item_data("Combo_inversion_method", no_index, row, method_codes[row]);
    // One loop gives all three data type lists the codes of list (0), row for row; lists (1) and (2)
    // start with "NA", so their codes sit one row out of step and their last row keeps its own.
    for (int index = 0; index <= 2; ++index)
        for (int row = 0; row < 10; ++row) form.set_item_data("Combo_data_type", index, row, data_type_codes[row]);
    form.set_item_data("Combo_optional_data_type", 0, 0, -1);
    for (int row = 0; row < 10; ++row) form.set_item_data("Combo_optional_data_type", 0, row + 1, data_type_codes[row]);

    load_mag3d_form(session, 0);
}

void load_mag3d_form(Session& session, int group) {
    FormModel& form = session.form;
    form.updating_form = true;
    try {
        if (group == 0 || group == 1) load_inversion_parameters(session);
        if (group == 0 || group == 2) load_observed_data(session);
        if (group == 0 || group == 3) load_topo_data(session);
        if (group == 0 || group == 4) load_mesh(session);
        if (group == 0) form.set_text("Text_description", session.record.comments);
    } catch (const std::exception&) {
        // A fault stops the load where it happened; the form keeps what was written so far.
    }
    form.updating_form = false;
}

std::filesystem::path unload_mag3d_form(Session& session) {
    remove_temporary_grid(session.grids.current_grid_file, session.grids.temporary_grid_name);
    return session.working_directory;
}

}  // namespace invsetup
