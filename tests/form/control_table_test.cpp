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

// A sample of the described controls: each tab, the overlay and menus, and every control array at its
// highest index (an array declared one short loses its last member silently).
const std::vector<Name> described_controls = {
    {"Form_mag3d", n}, {"Tab_inversion", n}, {"Tab_images", n}, {"Frame_tiling_layout", n},
    // tab 0
    {"Combo_inversion_method", n}, {"Combo_data_type", 2}, {"Label_data_type", 1}, {"Combo_optional_data_type", 0},
    {"Frame_magsen3d", 1}, {"Option_depth_weighting_parameters", 1}, {"Option_wavelet_parameters", 1},
    {"Text_depth_weighting_file", 1}, {"Command_depth_weighting_file", 1}, {"Text_rock_propery_file", n},
    {"Label_inversion_mode", 4}, {"Option_alphas", 1}, {"Label_alpha", 3}, {"Label_model", 4},
    {"Check_generate_inversion_variation", n}, {"Command_define_coordinate_transform", n},
    // tab 1
    {"Command_set_limits_from_file", 0}, {"Text_data_locations", 5}, {"Command_select_data_location_file", 5},
    {"Picture_mag", 5}, {"Text_UBC_locations_magpos", 2}, {"Label_obs_data", 2}, {"Text_UBC_locations_valcount", n},
    {"Text_UBC_integration_interval", n}, {"Text_UBC_elevation_offset", 2}, {"Text_UBC_regional_scale", n},
    // tab 2
    {"Frame_data_file", 1}, {"Check_topo_type", 1}, {"Check_topo_shift", n}, {"Frame_data_file_definitions", 1},
    {"Text_UBC_locations_zpos", 1}, {"Combo_names", 1}, {"Grid_database", 1}, {"Frame_data_file_image", 1},
    // tab 3
    {"Text_cell_size", 3}, {"Text_min_val", 3}, {"Text_max_val", 5}, {"Text_num_cells", 8}, {"Command_update", 3},
    {"Text_padding_multipliers", 1}, {"Text_range_elev", n}, {"Text_z_blend", n}, {"Combo_tile_order", 2},
    {"Check_include_regional_mesh", n}, {"Command_select_image_file", n},
    // tab 4
    {"Dir1", n}, {"Text_directory_name", n}, {"ProgressBar_load_ubc_model", n}, {"Command_create_inversion", 2},
    {"Command_set_cur_dir", n},
    // overlay and menus
    {"Picture_tiling_layout", n}, {"StatusBar_coords", n}, {"UpDown_clip", 11}, {"Check_do_tile", n},
    {"menu_read_file", 4}, {"menu_define_inversion_mode", 1}, {"menu_working_directory", n},
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
    EXPECT_EQ(form.text("Text_weight_multipliers"), "16,8,4,2,1");
    EXPECT_EQ(form.text("Text_depth_weighting_file", 1), "null");
    EXPECT_EQ(form.text("Text_UBC_locations_magpos", 0), "4");
    EXPECT_EQ(form.text("Text_UBC_locations_magpos", 1), "");
    EXPECT_EQ(form.text("Text_x_tile_size"), "128");
    EXPECT_EQ(form.control("menu_read_file", 4).caption, "Mesh Defintions");
    EXPECT_EQ(form.control("Command_create_inversion", 2).caption, "Generate Variation");
    EXPECT_EQ(form.control("Text_min_val", 2).declared->meaning,
              "Bottom elevation  of core of mesh with uniform cell size");
    EXPECT_EQ(form.control("Text_description").declared->kind, ControlKind::rich_text);
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
