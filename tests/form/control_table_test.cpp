// tests/form/control_table_test.cpp - the declared form: names, indices and design-time state.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "form/form_model.h"

namespace invsetup {
namespace {

using Name = std::pair<const char*, int>;
constexpr int n = no_index;

// Every control the form's description names, written out by hand from its tables and lists.
const std::vector<Name> described_controls = {
    {"Form_mag3d", n}, {"Tab_inversion", n}, {"Tab_images", n}, {"Frame_tiling_layout", n},
    // tab 0
    {"Frame1", n}, {"Combo_inversion_method", n}, {"Combo_inversion_mode", n}, {"Label_inversion_mode", 0},
    {"Combo_data_type", 0}, {"Combo_data_type", 1}, {"Combo_data_type", 2}, {"Label_data_type", 0},
    {"Label_data_type", 1}, {"Combo_optional_data_type", 0}, {"Text_NumThreads", n}, {"Label_NumThreads", n},
    {"Check_OutputDebugInformation", n}, {"Frame_field", n}, {"Text_mag_intensity", n},
    {"Text_mag_inclination", n}, {"Text_mag_declination", n}, {"Command_calculate_IGRF", n},
    {"Frame_gravity_parameters", n}, {"Text_iterations", n}, {"Text_chi_factor", n}, {"Label_chi", n},
    {"Text_subspace", n}, {"Combo_positivity", n}, {"Frame_magsen3d", 0}, {"Frame_magsen3d", 1},
    {"Option_depth_weighting_parameters", 0}, {"Option_depth_weighting_parameters", 1},
    {"Frame_specify_weighting", n}, {"Combo_depth_weighting_type", n}, {"Text_weighting_beta", n},
    {"Text_weighting_znot", n}, {"Option_wavelet_parameters", 0}, {"Option_wavelet_parameters", 1},
    {"Frame_specify_wavelet", n}, {"Combo_wavelet_type", n}, {"Text_wavelet_itol", n}, {"Text_wavelet_eps", n},
    {"Frame_parameter_bounds", n}, {"Text_depth_weighting_file", 0}, {"Text_depth_weighting_file", 1},
    {"Command_depth_weighting_file", 0}, {"Command_depth_weighting_file", 1}, {"Label_weight", n},
    {"Combo_zarninv3d_positivity", n}, {"Label_zarninv3d_positivity", n}, {"Frame3", n},
    {"Text_rock_propery_file", n}, {"Command_rock_property_file", n}, {"Combo_rock_property_file", n},
    {"Frame_background_removal_method", n}, {"Combo_inversion_background_method", n},
    {"Text_inversion_background_value", n}, {"Text_inversion_background_topo", n}, {"Frame_maginv", n},
    {"Combo_smoothness_method", n}, {"Label_smoothness_method", n}, {"Check_create_weighting_file", n},
    {"Text_weight_multipliers", n}, {"Label_weights", n}, {"Text_max_iter", n}, {"Label_inversion_iter", n},
    {"Combo_alpha_method", n}, {"Label_ubc_res_alpha_method", n}, {"Text_inversion_tolc", n},
    {"Label_inversion_mode", 1}, {"Label_inversion_mode", 2}, {"Label_inversion_mode", 3},
    {"Label_inversion_mode", 4}, {"Text_inversion_par", n}, {"Option_alphas", 0}, {"Option_alphas", 1},
    {"Text_alpha_s", n}, {"Text_alpha_e", n}, {"Text_alpha_n", n}, {"Text_alpha_v", n}, {"Label_alpha", 0},
    {"Label_alpha", 3}, {"Label_model", 0}, {"Label_model", 4}, {"Text_initial_file", n},
    {"Text_reference_file", n}, {"Text_weight_file", n}, {"Command_select_initial_file", n},
    {"Command_select_reference_file", n}, {"Command_select_weight_file", n}, {"Frame_tensor", n},
    {"Text_line_azimuth", n}, {"Check_generate_inversion_variation", n}, {"Check_update_data_files", n},
    {"Command_define_coordinate_transform", n},
    // tab 1
    {"Frame_data_file", 0}, {"Combo_observed_data_file_type", n}, {"Command_set_limits_from_file", 0},
    {"Frame_point_data", n}, {"Text_data_locations", 0}, {"Command_select_data_location_file", 0},
    {"Text_data_locations", 2}, {"Text_data_locations", 5}, {"Command_select_data_location_file", 4},
    {"Command_select_data_location_file", 5}, {"Picture_mag", 2}, {"Picture_mag", 5},
    {"Frame_data_file_definitions", 0}, {"Text_UBC_locations_nhead", 0}, {"Text_UBC_locations_nstep", 0},
    {"Text_UBC_locations_name_line", 0}, {"Text_UBC_locations_xpos", 0}, {"Text_UBC_locations_ypos", 0},
    {"Text_UBC_locations_zpos", 0}, {"Text_UBC_locations_magpos", 0}, {"Text_UBC_locations_magpos", 2},
    {"Label_obs_data", 0}, {"Label_obs_data", 2}, {"Text_UBC_locations_lpos", n}, {"Text_UBC_locations_valpos", n},
    {"Text_UBC_locations_valcount", n}, {"Text_UBC_integration_interval", n}, {"Combo_names", 0},
    {"Grid_database", 0}, {"Text_data_file", 0}, {"Frame_errors", n}, {"Text_error_floor", n},
    {"Text_percent_error", n}, {"Frame_sensor_definition", n}, {"Combo_UBC_elevation_offset", n},
    {"Label_sensor", n}, {"Text_UBC_elevation_offset", 0}, {"Text_UBC_elevation_offset", 2}, {"Frame4", n},
    {"Text_UBC_regional_field", n}, {"Text_UBC_regional_scale", n},
    // tab 2
    {"Frame_data_file", 1}, {"Text_data_locations", 1}, {"Command_select_data_location_file", 1},
    {"Command_set_limits_from_file", 1}, {"Check_topo_type", 0}, {"Check_topo_type", 1}, {"Check_topo_shift", n},
    {"Text_UBC_elevation_offset", 1}, {"Frame_data_file_definitions", 1}, {"Text_UBC_locations_nhead", 1},
    {"Text_UBC_locations_nstep", 1}, {"Text_UBC_locations_name_line", 1}, {"Text_UBC_locations_xpos", 1},
    {"Text_UBC_locations_ypos", 1}, {"Text_UBC_locations_zpos", 1}, {"Combo_names", 1}, {"Grid_database", 1},
    {"Text_data_file", 1}, {"Frame_data_file_image", 1}, {"Picture_mag", 1},
    // tab 3
    {"Frame_xmesh", n}, {"Frame_ymesh", n}, {"Frame_zmesh", n}, {"Text_cell_size", 0}, {"Text_cell_size", 3},
    {"Text_min_val", 0}, {"Text_min_val", 3}, {"Text_max_val", 0}, {"Text_max_val", 5}, {"Text_num_cells", 0},
    {"Text_num_cells", 8}, {"Command_update", 0}, {"Command_update", 3}, {"UpDown_clip", 4}, {"UpDown_clip", 9},
    {"Frame_mesh_options", n}, {"Check_add_padding_cells", n}, {"Text_padding_multipliers", 0},
    {"Text_padding_multipliers", 1}, {"Frame_mesh_sizes", n}, {"Text_min_east", n}, {"Text_max_east", n},
    {"Text_range_east", n}, {"Text_min_north", n}, {"Text_max_north", n}, {"Text_range_north", n},
    {"Text_min_elev", n}, {"Text_max_elev", n}, {"Text_range_elev", n}, {"Text_num_x_cells", n},
    {"Text_num_y_cells", n}, {"Text_num_z_cells", n}, {"Frame_refinement", n}, {"Text_x_tile_size", n},
    {"Text_y_tile_size", n}, {"Text_tile_overlap", n}, {"Text_blend_overlap", n}, {"Text_z_blend", n},
    {"Text_minimum_points", n}, {"Text_number_x_tiles", n}, {"Text_number_y_tiles", n}, {"Combo_tile_order", 0},
    {"Combo_tile_order", 2}, {"Check_do_refinement", n}, {"Check_do_expanded", n}, {"Check_include_regional_mesh", n},
    {"Check_use_cluster_controller", n}, {"Combo_forward_model", n}, {"Command_view_tiling", n},
    {"Combo_view_limits", n}, {"Text_image_file", n}, {"Command_select_image_file", n},
    // tab 4
    {"Drive1", n}, {"Dir1", n}, {"Text_directory_name", n}, {"Text_description", n}, {"Text_progress", n},
    {"Frame_progress", n}, {"ProgressBar_load_ubc_model", n}, {"Label_progress", n},
    {"Command_create_inversion", 0}, {"Command_create_inversion", 1}, {"Command_create_inversion", 2},
    {"Command_start_inversion", n}, {"Command_done_mag3d", n}, {"Command_make_folder", n}, {"Command_refresh", n},
    {"Command_copy_dir_name", n}, {"Command_set_cur_dir", n},
    // overlay and menus
    {"Picture_tiling_layout", n}, {"Command_done_tiling_layout", n}, {"StatusBar_coords", n}, {"Frame_cells", n},
    {"UpDown_clip", 0}, {"UpDown_clip", 3}, {"UpDown_clip", 10}, {"UpDown_clip", 11}, {"Frame_do_tile", n},
    {"Command_continue_tile", n}, {"Command_cancel_tile", n}, {"Check_do_tile", n}, {"menu_file", n},
    {"menu_read", n}, {"menu_read_file", 0}, {"menu_read_file", 4}, {"menu_save", n}, {"sep_file", n},
    {"menu_define_inversion_mode", 0}, {"menu_define_inversion_mode", 1}, {"menu_read_inversion_mesh", n},
    {"menu_read_inversion_model", n}, {"menu_exit", n}, {"menu_working_directory", n},
};

TEST(ControlTable, DeclaresEveryDescribedControl) {
    FormModel form;
    for (const auto& [name, index] : described_controls)
        EXPECT_TRUE(form.has_control(name, index)) << name << "(" << index << ")";
}

TEST(ControlTable, ArraysHaveNoPlainTwin) {
    // A control array member must not also exist without an index, or handlers would read the wrong one.
    FormModel form;
    for (const char* name : {"Combo_data_type", "Text_data_locations", "Text_num_cells", "UpDown_clip",
                             "Check_topo_type", "Label_inversion_mode", "menu_read_file", "Picture_mag"})
        EXPECT_FALSE(form.has_control(name)) << name;
    EXPECT_FALSE(form.has_control("Picture_mag", 0));
    EXPECT_FALSE(form.has_control("Text_data_locations", 6));
}

TEST(ControlTable, DesignTimeTextsAreTheForms) {
    FormModel form;
    EXPECT_EQ(form.text("Text_iterations"), "30");
    EXPECT_EQ(form.text("Text_wavelet_eps"), "0.01");
    EXPECT_EQ(form.text("Text_alpha_s"), "0.0001");
    EXPECT_EQ(form.text("Text_weight_multipliers"), "16,8,4,2,1");
    EXPECT_EQ(form.text("Text_depth_weighting_file", 1), "null");
    EXPECT_EQ(form.text("Text_UBC_locations_magpos", 0), "4");
    EXPECT_EQ(form.text("Text_UBC_locations_magpos", 1), "");
    EXPECT_EQ(form.text("Text_cell_size", 3), "1");
    EXPECT_EQ(form.text("Text_x_tile_size"), "128");
    EXPECT_EQ(form.control("menu_read_file", 0).caption, "All Defintions");
    EXPECT_EQ(form.control("menu_read_file", 4).caption, "Mesh Defintions");
    EXPECT_EQ(form.control("Command_create_inversion", 2).caption, "Generate Variation");
    EXPECT_EQ(form.control("Check_topo_type", 1).caption, "Use top of inversion mesh");
    EXPECT_EQ(form.control("Text_min_val", 2).spec->meaning,
              "Bottom elevation  of core of mesh with uniform cell size");
    EXPECT_EQ(form.control("Text_description").spec->kind, ControlKind::rich_text);
}

TEST(ControlTable, ListRowsAreTheForms) {
    FormModel form;
    const Control& method = form.control("Combo_inversion_method");
    ASSERT_EQ(method.rows.size(), 7u);
    EXPECT_EQ(method.rows[6].text, "7: Orvane Zarninv3D");
    EXPECT_EQ(form.row_count("Combo_data_type", 0), 10);
    EXPECT_EQ(form.row_count("Combo_data_type", 1), 11);
    EXPECT_EQ(form.control("Combo_data_type", 2).rows[0].text, "NA");
    EXPECT_EQ(form.control("Combo_optional_data_type", 0).rows[10].text, "22: Tz");
    EXPECT_EQ(form.row_count("Combo_wavelet_type"), 10);
    const Control& images = form.control("Tab_images");
    ASSERT_EQ(images.rows.size(), 4u);
    EXPECT_EQ(images.rows[3].text, "Sensor Grid");
    EXPECT_EQ(form.control("StatusBar_coords").rows.size(), 6u);
}

}  // namespace
}  // namespace invsetup
