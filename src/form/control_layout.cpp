// src/form/control_layout.cpp - the arrangement of the form's controls in a window.
//
// Grid containers: rows separated by ";", cells by blanks. A cell is a control ("Name" or
// "Name(3)"), a caption in single quotes, or "_" for an empty place; "*n" after a cell spans n
// columns, "^n" n rows; "A+B" puts two controls in one place (the last visible one shows).
// Column containers: columns separated by ";", items stacked by blanks; items joined by "," stand
// side by side in one row.
#include "form/control_layout.h"

#include <stdexcept>

namespace invsetup {

namespace {

struct LayoutText {
    const char* key;
    LayoutStyle style;
    const char* text;
};

using S = LayoutStyle;

constexpr LayoutText layout_table[] = {
    // ---- Parameters ----
    {"Tab_inversion#0", S::columns,
     "Frame1 Frame_magsen3d(0) Frame_magsen3d(1) Frame_tensor;"
     "Frame_field+Frame_gravity_parameters Frame_maginv;"
     "Frame_parameter_bounds Frame3 Frame_background_removal_method Check_generate_inversion_variation "
     "Check_update_data_files Command_define_coordinate_transform"},
    {"Frame1", S::grid,
     "'Method' Combo_inversion_method*3;"
     "Label_inversion_mode(0) Combo_inversion_mode*3;"
     "Label_data_type(0) Combo_data_type(0) 'Extra type' Combo_optional_data_type(0);"
     "Label_data_type(1) Combo_data_type(1) _ Combo_data_type(2);"
     "Label_NumThreads Text_NumThreads Check_OutputDebugInformation*2"},
    {"Frame_field", S::grid,
     "'Intensity (nT)' Text_mag_intensity;"
     "'Inclination (deg)' Text_mag_inclination;"
     "'Declination (deg)' Text_mag_declination;"
     "_ Command_calculate_IGRF"},
    {"Frame_gravity_parameters", S::grid,
     "'Iterations' Text_iterations;"
     "Label_chi Text_chi_factor;"
     "'Subspace size' Text_subspace;"
     "'Sign constraint' Combo_positivity"},
    {"Frame_magsen3d(0)", S::grid,
     "Option_depth_weighting_parameters(0) Option_depth_weighting_parameters(1);"
     "Frame_specify_weighting*2"},
    {"Frame_specify_weighting", S::grid,
     "'Type' Combo_depth_weighting_type;"
     "'Beta' Text_weighting_beta;"
     "'Znot' Text_weighting_znot"},
    {"Frame_magsen3d(1)", S::grid,
     "Option_wavelet_parameters(0) Option_wavelet_parameters(1);"
     "Frame_specify_wavelet*2"},
    {"Frame_specify_wavelet", S::grid,
     "'Wavelet' Combo_wavelet_type;"
     "'itol' Text_wavelet_itol;"
     "'eps' Text_wavelet_eps"},
    {"Frame_tensor", S::grid, "'Line azimuth (deg)' Text_line_azimuth"},
    {"Frame_maginv", S::grid,
     "Label_inversion_mode(1) Text_inversion_par*2;"
     "Label_inversion_mode(2) Text_inversion_tolc*2;"
     "Label_inversion_iter Text_max_iter*2;"
     "Label_smoothness_method Combo_smoothness_method*2;"
     "Label_ubc_res_alpha_method Combo_alpha_method*2;"
     "Check_create_weighting_file*3;"
     "Label_weights Text_weight_multipliers*2;"
     "Label_inversion_mode(3) Option_alphas(0) Option_alphas(1);"
     "Label_alpha(0) Text_alpha_s*2;"
     "Label_alpha(1) Text_alpha_e*2;"
     "Label_alpha(2) Text_alpha_n*2;"
     "Label_alpha(3) Text_alpha_v*2;"
     "Label_inversion_mode(4)*3;"
     "Label_model(0) Text_initial_file Command_select_initial_file;"
     "Label_model(1) Text_reference_file Command_select_reference_file;"
     "Label_model(2) Text_weight_file Command_select_weight_file"},
    {"Frame_parameter_bounds", S::grid,
     "Label_weight*3;"
     "Label_model(3) Text_depth_weighting_file(0) Command_depth_weighting_file(0);"
     "Label_model(4) Text_depth_weighting_file(1) Command_depth_weighting_file(1);"
     "Label_zarninv3d_positivity Combo_zarninv3d_positivity*2"},
    {"Frame3", S::grid,
     "'File' Text_rock_propery_file Command_rock_property_file;"
     "'Use for' Combo_rock_property_file*2"},
    {"Frame_background_removal_method", S::grid,
     "'Method' Combo_inversion_background_method;"
     "'Model value' Text_inversion_background_value;"
     "'Topo elevation' Text_inversion_background_topo"},

    // ---- Observed Data ----
    {"Tab_inversion#1", S::columns,
     "Frame_data_file(0) Frame_errors,Frame4 Frame_sensor_definition;"
     "Frame_data_file_definitions(0)"},
    {"Frame_data_file(0)", S::grid,
     "'Data type' Combo_observed_data_file_type Command_set_limits_from_file(0);"
     "Frame_point_data+Tab_images*3"},
    {"Frame_point_data", S::grid,
     "Text_data_locations(0) Command_select_data_location_file(0);"
     "Picture_data_points*2"},
    {"Tab_images#0", S::grid, "Text_data_locations(2) Command_select_data_location_file(2); Picture_mag(2)*2"},
    {"Tab_images#1", S::grid, "Text_data_locations(3) Command_select_data_location_file(3); Picture_mag(3)*2"},
    {"Tab_images#2", S::grid, "Text_data_locations(4) Command_select_data_location_file(4); Picture_mag(4)*2"},
    {"Tab_images#3", S::grid, "Text_data_locations(5) Command_select_data_location_file(5); Picture_mag(5)*2"},
    {"Frame_data_file_definitions(0)", S::grid,
     "'First data line' Text_UBC_locations_nhead(0) 'Read step' Text_UBC_locations_nstep(0) "
     "'Names line' Text_UBC_locations_name_line(0);"
     "'X column' Text_UBC_locations_xpos(0) 'Y column' Text_UBC_locations_ypos(0) "
     "'Z column' Text_UBC_locations_zpos(0);"
     "Label_obs_data(0) Text_UBC_locations_magpos(0) Label_obs_data(1) Text_UBC_locations_magpos(1) "
     "Label_obs_data(2) Text_UBC_locations_magpos(2);"
     "'Line column' Text_UBC_locations_lpos 'Extra value' Text_UBC_locations_valpos "
     "'Values per cell' Text_UBC_locations_valcount;"
     "'Integration interval' Text_UBC_integration_interval;"
     "Grid_database(0)+Text_data_file(0)*6"},
    {"Frame_errors", S::grid,
     "'Error floor' Text_error_floor;"
     "'Percent error' Text_percent_error"},
    {"Frame_sensor_definition", S::grid,
     "'Height' Combo_UBC_elevation_offset;"
     "Label_sensor Text_UBC_elevation_offset(0);"
     "'Minimum clearance' Text_UBC_elevation_offset(2)"},
    {"Frame4", S::grid,
     "'Base value' Text_UBC_regional_field;"
     "'Scale' Text_UBC_regional_scale"},

    // ---- Topo Data ----
    {"Tab_inversion#2", S::columns,
     "Frame_data_file(1);"
     "Frame_data_file_definitions(1)+Frame_data_file_image(1)"},
    {"Frame_data_file(1)", S::grid,
     "Text_data_locations(1) Command_select_data_location_file(1);"
     "Check_topo_type(0)*2;"
     "Check_topo_type(1)*2;"
     "Check_topo_shift*2;"
     "'Topo offset' Text_UBC_elevation_offset(1);"
     "Command_set_limits_from_file(1)*2;"
     "Picture_topo_points*2"},
    {"Frame_data_file_definitions(1)", S::grid,
     "'First data line' Text_UBC_locations_nhead(1) 'Read step' Text_UBC_locations_nstep(1) "
     "'Names line' Text_UBC_locations_name_line(1);"
     "'X column' Text_UBC_locations_xpos(1) 'Y column' Text_UBC_locations_ypos(1) "
     "'Z column' Text_UBC_locations_zpos(1);"
     "Grid_database(1)+Text_data_file(1)*6"},
    {"Frame_data_file_image(1)", S::grid, "Picture_mag(1)"},

    // ---- Mesh ----
    {"Tab_inversion#3", S::columns,
     "Frame_xmesh Frame_ymesh Frame_zmesh;"
     "Frame_mesh_options Frame_mesh_sizes Command_view_tiling,Combo_view_limits "
     "'Background grid',Text_image_file,Command_select_image_file;"
     "Frame_refinement"},
    {"Frame_xmesh", S::grid,
     "'Cell size' Text_cell_size(0) 'Cells' Text_num_cells(0);"
     "'Minimum' Text_min_val(0) UpDown_clip(4) _;"
     "'Maximum' Text_max_val(0) UpDown_clip(5) _;"
     "'Range' Text_max_val(3) Command_update(0)*2"},
    {"Frame_ymesh", S::grid,
     "'Cell size' Text_cell_size(1) 'Cells' Text_num_cells(1);"
     "'Minimum' Text_min_val(1) UpDown_clip(6) _;"
     "'Maximum' Text_max_val(1) UpDown_clip(7) _;"
     "'Range' Text_max_val(4) Command_update(1)*2"},
    {"Frame_zmesh", S::grid,
     "'Cell size' Text_cell_size(2) 'Uniform cells' Text_num_cells(2);"
     "'Core bottom' Text_min_val(2) UpDown_clip(8) _;"
     "'Core top' Text_max_val(2) UpDown_clip(9) _;"
     "'Range' Text_max_val(5) _ _;"
     "'Expanding cells' Text_num_cells(3) 'Multiplier' Text_cell_size(3);"
     "'Total cells' Text_num_cells(4) 'Mesh bottom' Text_min_val(3);"
     "_ _ Command_update(2)*2"},
    {"Frame_mesh_options", S::grid,
     "Check_add_padding_cells*2;"
     "'XY multipliers' Text_padding_multipliers(0);"
     "'Z multipliers' Text_padding_multipliers(1);"
     "'X cells' Text_num_cells(5);"
     "'Y cells' Text_num_cells(6);"
     "'Z cells' Text_num_cells(7);"
     "'Total cells' Text_num_cells(8)"},
    {"Frame_mesh_sizes", S::grid,
     "_ 'Minimum' 'Maximum' 'Range';"
     "'East' Text_min_east Text_max_east Text_range_east;"
     "'North' Text_min_north Text_max_north Text_range_north;"
     "'Elevation' Text_min_elev Text_max_elev Text_range_elev;"
     "'Cells' Text_num_x_cells Text_num_y_cells Text_num_z_cells"},
    {"Frame_refinement", S::grid,
     "'X tile size' Text_x_tile_size;"
     "'Y tile size' Text_y_tile_size;"
     "'Tile overlap' Text_tile_overlap;"
     "'Blend overlap' Text_blend_overlap;"
     "'Z blend' Text_z_blend;"
     "'Minimum points' Text_minimum_points;"
     "'X tiles' Text_number_x_tiles;"
     "'Y tiles' Text_number_y_tiles;"
     "'Tile order' Combo_tile_order(0);"
     "_ Combo_tile_order(1);"
     "_ Combo_tile_order(2);"
     "Check_do_refinement*2;"
     "Check_do_expanded*2;"
     "Check_include_regional_mesh*2;"
     "Check_use_cluster_controller*2;"
     "'Forward model' Combo_forward_model;"
     "_ Command_update(3)"},

    // ---- Create Inversion ----
    {"Tab_inversion#4", S::columns,
     "Drive1 Dir1 Command_make_folder,Command_refresh,Command_copy_dir_name,Command_set_cur_dir;"
     "'Directory name',Text_directory_name "
     "Command_create_inversion(0),Command_create_inversion(1),Command_create_inversion(2) "
     "Command_start_inversion,Command_size_estimate,Command_done_mag3d 'Description' Text_description Text_progress Frame_progress"},
    {"Frame_progress", S::grid, "Label_progress; ProgressBar_load_ubc_model"},

    // ---- The tiling layout overlay ----
    {"Frame_tiling_layout", S::grid,
     "Picture_tiling_layout*3;"
     "Frame_cells+Frame_do_tile Command_done_tiling_layout;"
     "StatusBar_coords*3"},
    {"Frame_cells", S::grid,
     "'X min' UpDown_clip(0) 'X max' UpDown_clip(1) 'Shift X' UpDown_clip(10);"
     "'Y min' UpDown_clip(2) 'Y max' UpDown_clip(3) 'Shift Y' UpDown_clip(11)"},
    {"Frame_do_tile", S::grid, "Check_do_tile Command_continue_tile Command_cancel_tile"},
};

constexpr std::string_view floating_controls[] = {"Combo_names"};
constexpr std::string_view multi_line_controls[] = {"Text_data_file", "Text_progress"};

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

/// Splits at `separator`, leaving separators inside single quotes alone.
std::vector<std::string> split_outside_quotes(std::string_view text, char separator) {
    std::vector<std::string> parts;
    std::string current;
    bool quoted = false;
    for (char c : text) {
        if (c == '\'') quoted = !quoted;
        if (!quoted && (c == separator || (separator == ' ' && is_blank(c)))) {
            if (!current.empty() || separator != ' ') parts.push_back(current);
            current.clear();
            continue;
        }
        current += c;
    }
    if (!current.empty() || separator != ' ') parts.push_back(current);
    return parts;
}

std::string trimmed(std::string_view text) {
    std::size_t first = 0, last = text.size();
    while (first < last && is_blank(text[first])) ++first;
    while (last > first && is_blank(text[last - 1])) --last;
    return std::string(text.substr(first, last - first));
}

std::pair<std::string, int> parse_control(std::string_view token, std::string_view key) {
    const std::size_t open = token.find('(');
    if (open == std::string_view::npos) return {std::string(token), no_index};
    if (token.back() != ')') throw std::logic_error("layout " + std::string(key) + ": bad control " + std::string(token));
    return {std::string(token.substr(0, open)), std::stoi(std::string(token.substr(open + 1, token.size() - open - 2)))};
}

/// One cell token with its spans; returns false for "_".
bool parse_cell(std::string token, std::string_view key, LayoutCell& cell) {
    // Spans come last, outside any quotes.
    for (;;) {
        const std::size_t mark = token.find_last_of("*^");
        const std::size_t quote = token.find_last_of('\'');
        if (mark == std::string::npos || (quote != std::string::npos && mark < quote)) break;
        const int span = std::stoi(token.substr(mark + 1));
        if (token[mark] == '*')
            cell.column_span = span;
        else
            cell.row_span = span;
        token.resize(mark);
    }
    if (token == "_") return false;
    if (token.size() >= 2 && token.front() == '\'' && token.back() == '\'') {
        cell.caption = token.substr(1, token.size() - 2);
        return true;
    }
    for (const std::string& part : split_outside_quotes(token, '+')) cell.controls.push_back(parse_control(part, key));
    return true;
}

/// Captions stand for the next control of their row.
void link_captions(ContainerLayout& layout) {
    for (LayoutCell& cell : layout.cells) {
        if (!cell.controls.empty()) continue;
        // Grids: the cell right of the caption; stacked columns: the next item of the same row.
        const bool grid = layout.style == LayoutStyle::grid;
        for (const LayoutCell& other : layout.cells) {
            if (other.controls.empty() || other.row != cell.row) continue;
            if ((grid && other.column == cell.column + cell.column_span) ||
                (!grid && other.column == cell.column && other.side == cell.side + 1))
                cell.names = other.controls.back();
        }
    }
}

ContainerLayout parse_layout(const LayoutText& entry) {
    ContainerLayout layout;
    layout.key = entry.key;
    layout.style = entry.style;
    const std::vector<std::string> groups = split_outside_quotes(entry.text, ';');
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const int major = static_cast<int>(g);
        int minor = 0;
        for (const std::string& item : split_outside_quotes(trimmed(groups[g]), ' ')) {
            if (entry.style == LayoutStyle::grid) {
                // Grid: group = row, item = cell at the next free column.
                LayoutCell cell;
                cell.row = major;
                cell.column = minor;
                const bool placed = parse_cell(item, entry.key, cell);
                minor += cell.column_span;
                if (placed) layout.cells.push_back(std::move(cell));
            } else {
                // Columns: group = column, item = row of cells side by side.
                int side = 0;
                for (const std::string& part : split_outside_quotes(item, ',')) {
                    LayoutCell cell;
                    cell.row = minor;
                    cell.column = major;
                    cell.side = side++;
                    if (parse_cell(part, entry.key, cell)) layout.cells.push_back(std::move(cell));
                }
                ++minor;
            }
        }
        layout.row_count = std::max(layout.row_count, entry.style == LayoutStyle::grid ? major + 1 : minor);
        if (entry.style == LayoutStyle::grid) layout.column_count = std::max(layout.column_count, minor);
    }
    if (entry.style == LayoutStyle::columns) layout.column_count = static_cast<int>(groups.size());
    link_captions(layout);
    return layout;
}

}  // namespace

const std::vector<ContainerLayout>& form_layouts() {
    static const std::vector<ContainerLayout> layouts = [] {
        std::vector<ContainerLayout> parsed;
        for (const LayoutText& entry : layout_table) parsed.push_back(parse_layout(entry));
        return parsed;
    }();
    return layouts;
}

const ContainerLayout* find_layout(std::string_view key) {
    for (const ContainerLayout& layout : form_layouts())
        if (layout.key == key) return &layout;
    return nullptr;
}

std::string tab_page_key(std::string_view tabs, int page) { return std::string(tabs) + "#" + std::to_string(page); }

bool is_floating_control(std::string_view name) {
    for (std::string_view floating : floating_controls)
        if (name == floating) return true;
    return false;
}

bool is_multi_line_control(std::string_view name) {
    for (std::string_view multi_line : multi_line_controls)
        if (name == multi_line) return true;
    return false;
}

std::string control_key(std::string_view name, int index) {
    std::string key(name);
    if (index != no_index) {
        key.push_back('(');
        key.append(std::to_string(index));
        key.push_back(')');
    }
    return key;
}

}  // namespace invsetup
