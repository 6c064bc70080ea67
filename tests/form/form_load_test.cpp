// tests/form/form_load_test.cpp - pushing a parameter record into the form and the definition.
#include <gtest/gtest.h>

#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

class LoadForm : public ::testing::Test {
protected:
    void SetUp() override { initialise_inversion_form(session); }
    /// A read of the whole record, as the read command does after the reader filled it.
    void load(int group = 0) { load_mag3d_form(session, group); }

    HeadlessDialogue dialogue;
    Session session{dialogue};
    FormModel& form = session.form;
    ParameterRecord& record = session.record;
    InversionDefinition& definition = session.definition;
};

TEST_F(LoadForm, FreshFormShowsTheDefaults) {
    EXPECT_EQ(form.list_index("Combo_inversion_method"), 6);
    EXPECT_TRUE(form.control("Frame_field").visible);  // in-house magnetic, after the type handler
    EXPECT_EQ(form.text("Text_inversion_tolc"), "0.02");
    EXPECT_TRUE(form.checked("Option_alphas", 1));
    EXPECT_EQ(form.text("Text_UBC_regional_scale"), "1.0000");
    EXPECT_FALSE(form.updating_form);
    EXPECT_TRUE(form.control("menu_define_inversion_mode", 1).visible);
    EXPECT_FALSE(form.control("menu_define_inversion_mode", 0).visible);
    EXPECT_TRUE(form.control("Frame_mesh_sizes").visible);
    EXPECT_FALSE(form.control("Frame_refinement").visible);
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(LoadForm, UnknownMethodLoadsAsInHouse) {
    record.inversion_method = 2;
    load();
    EXPECT_EQ(form.list_index("Combo_inversion_method"), 4);
    record.inversion_method = 9;
    load();
    EXPECT_EQ(definition.inversion_method, 4);
    EXPECT_EQ(form.list_index("Combo_inversion_method"), 6);
    EXPECT_EQ(form.row_count("Combo_inversion_mode"), 5);
}

TEST_F(LoadForm, DataTypeListsAreWalkedByItemData) {
    record.data_type_count = 3;
    record.data_types[0] = 5;
    record.data_types[1] = 1;   // out of step: the row that reads "0: Gravity"
    record.data_types[2] = 22;  // "21: Ty"; the row "22: Tz" carries 0
    record.calculation_data_types[0] = 21;
    load(1);
    EXPECT_EQ(form.list_index("Combo_data_type", 0), 5);
    EXPECT_EQ(form.list_index("Combo_data_type", 1), 1);
    EXPECT_EQ(form.list_index("Combo_data_type", 2), 9);
    EXPECT_EQ(form.list_index("Combo_optional_data_type", 0), 9);
    EXPECT_EQ(definition.data_types[2], 22);
    EXPECT_TRUE(form.control("Combo_data_type", 1).visible);

    // The optional walk stops where list (0) ends, so its last row is out of reach.
    record.calculation_data_types[0] = 22;
    load(1);
    EXPECT_EQ(form.list_index("Combo_optional_data_type", 0), -1);
}

TEST_F(LoadForm, TypesWithoutARowSurviveTheLoad) {
    // VMI and the tensor components come only from files; losing them would change the run.
    record.data_type_count = 2;
    record.data_types[0] = 100;
    record.data_types[1] = 13;
    load();
    EXPECT_EQ(form.list_index("Combo_data_type", 0), -1);
    EXPECT_EQ(definition.data_types[0], 100);
    EXPECT_EQ(definition.data_types[1], 13);
    form.set_list_index("Tab_inversion", 1);
    EXPECT_EQ(form.control("Label_obs_data", 0).caption, "VMI data");
    EXPECT_EQ(form.control("Label_obs_data", 1).caption, "Obs data");
}

TEST_F(LoadForm, InHouseMagneticTypeEndsWithTheFieldFrameShown) {
    record.data_types[0] = 3;
    load();
    EXPECT_FALSE(form.control("Frame_field").visible);
    EXPECT_TRUE(form.control("Frame_tensor").visible);
    record.data_types[0] = 1;
    record.trade_off_parameter = 7;
    record.error_percent = 4;
    load();
    EXPECT_TRUE(form.control("Frame_field").visible);
    EXPECT_FALSE(form.control("Frame_tensor").visible);
    // The type defaults don't run during a load: the file's values stay.
    EXPECT_EQ(form.text("Text_inversion_par"), "7");
    EXPECT_EQ(form.text("Text_percent_error"), "4");
}

TEST_F(LoadForm, BothErrorsZeroTakeTheDefaultsOfMethodAndType) {
    struct Case {
        int method, first_type;
        const char *percent, *floor;
    };
    const Case cases[] = {{4, 1, "0", "1"}, {4, 2, "0", "0.1"}, {4, 6, "0", "0.1"}, {4, 0, "0", "0.01"},
                          {0, 1, "1", "1"}, {2, 0, "1", "0.05"}};
    for (const Case& c : cases) {
        record.inversion_method = c.method;
        record.data_types[0] = c.first_type;
        record.error_percent = 0;
        record.error_floor = 0;
        load();
        SCOPED_TRACE(std::to_string(c.method) + "/" + std::to_string(c.first_type));
        EXPECT_EQ(form.text("Text_percent_error"), c.percent);
        EXPECT_EQ(form.text("Text_error_floor"), c.floor);
    }
    record.error_percent = 0;
    record.error_floor = 0.5f;
    load();
    EXPECT_EQ(form.text("Text_error_floor"), "0.5");
    EXPECT_FLOAT_EQ(definition.error_percent, 0.0f);
}

TEST_F(LoadForm, DataBoxesShowTheNameAlone) {
    record.data_file_names[0] = "/survey/data/mag line.xyz";
    record.data_file_names[3] = "C:\\grids\\second.grd";
    record.data_file_names[1] = "/survey/topo.dat";
    load();
    EXPECT_EQ(form.text("Text_data_locations", 0), "mag line.xyz");
    EXPECT_EQ(form.text("Text_data_locations", 3), "second.grd");
    EXPECT_EQ(form.text("Text_data_locations", 1), "topo.dat");
    EXPECT_EQ(definition.data_file_names[0], "/survey/data/mag line.xyz");
    EXPECT_EQ(definition.data_file_names[3], "C:\\grids\\second.grd");
}

TEST_F(LoadForm, ObservedAndTopoGroupsShowTheirValues) {
    record.sensor_height_type = 1;
    record.elevation_offsets = {2.25f, -3.0f, 40.0f};
    record.regional_base = 50000;
    record.data_first_lines[0] = 3;
    record.data_value_columns = {5, 6, 0};
    record.integration_interval = 0.05f;
    record.topo_type = 1;
    record.data_x_columns[1] = 7;
    load();
    EXPECT_EQ(form.list_index("Combo_UBC_elevation_offset"), 1);
    EXPECT_EQ(form.control("Label_sensor").caption, "Sensor elevation");
    EXPECT_EQ(form.text("Text_UBC_elevation_offset", 0), "2.3");
    EXPECT_EQ(form.text("Text_UBC_elevation_offset", 1), "-3.0");
    EXPECT_EQ(form.text("Text_UBC_elevation_offset", 2), "40.0");
    EXPECT_EQ(form.text("Text_UBC_regional_field"), "50000.0");
    EXPECT_EQ(form.text("Text_UBC_locations_nhead", 0), "3");
    EXPECT_EQ(form.text("Text_UBC_locations_magpos", 1), "6");
    EXPECT_EQ(form.text("Text_UBC_integration_interval"), "0.0500");
    EXPECT_TRUE(form.checked("Check_topo_type", 1));
    EXPECT_FALSE(form.checked("Check_topo_type", 0));
    EXPECT_EQ(definition.topo_type, 1);
    EXPECT_EQ(form.text("Text_UBC_locations_xpos", 1), "7");
}

TEST_F(LoadForm, ZRangeWithoutHeightBecomesOneThousand) {
    record.mesh_min = {0, 0, 500, 0};
    record.mesh_max = {1000, 2000, 500, 0};
    record.mesh_cell_size = {50, 100, 25, 0};
    load(4);
    EXPECT_DOUBLE_EQ(definition.mesh_min[2], -500.0);
    EXPECT_EQ(form.text("Text_max_val", 5), "1000");
    EXPECT_EQ(form.text("Text_num_cells", 2), "40");
    EXPECT_EQ(form.text("Text_num_cells", 0), "20");
    EXPECT_EQ(form.text("Text_max_val", 4), "2000");
}

TEST_F(LoadForm, MissingCellSizeAndCountTakeTheUsualSizes) {
    record.mesh_min = {0, 0, -1000, 0};
    record.mesh_max = {1000, 0, 0, 0};
    record.mesh_cell_size = {0, 0, 0, 0};
    record.mesh_cell_count = {0, 0, 0, 0};
    load(4);
    EXPECT_EQ(form.text("Text_cell_size", 0), "100");
    EXPECT_EQ(form.text("Text_cell_size", 1), "100");
    EXPECT_EQ(form.text("Text_cell_size", 2), "50");
    EXPECT_EQ(form.text("Text_num_cells", 0), "10");
    EXPECT_EQ(form.text("Text_num_cells", 2), "20");
    EXPECT_EQ(definition.mesh_cell_count[1], 0);

    // A count without a size gives the size.
    record.mesh_cell_count = {4, 0, 0, 0};
    load(4);
    EXPECT_EQ(form.text("Text_cell_size", 0), "250");
}

TEST_F(LoadForm, MaxIsRecomputedFromWholeCells) {
    record.mesh_min = {10, 0, -100, 0};
    record.mesh_max = {1015, 100, 0, 0};
    record.mesh_cell_size = {100, 10, 10, 0};
    load(4);
    EXPECT_EQ(form.text("Text_num_cells", 0), "10");
    EXPECT_EQ(form.text("Text_max_val", 0), "1010");
    EXPECT_DOUBLE_EQ(definition.mesh_max[0], 1010.0);
}

TEST_F(LoadForm, GrowingZCellsSetTheMeshBottom) {
    record.mesh_min = {0, 0, -100, 0};
    record.mesh_max = {100, 100, 0, 0};
    record.mesh_cell_size = {10, 10, 10, 2};
    record.mesh_cell_count = {0, 0, 0, 3};
    load(4);
    EXPECT_DOUBLE_EQ(definition.mesh_min[3], -100.0 - 10.0 * 7.0);  // 10 + 20 + 40 below the core
    EXPECT_EQ(form.text("Text_min_val", 3), "-170.0");
    EXPECT_EQ(form.text("Text_num_cells", 4), "13");

    record.mesh_cell_size[3] = 1;
    load(4);
    EXPECT_DOUBLE_EQ(definition.mesh_min[3], -130.0);

    record.mesh_cell_count[3] = 0;
    record.mesh_cell_size[3] = 3;
    load(4);
    EXPECT_EQ(form.text("Text_cell_size", 3), "1");
    EXPECT_EQ(form.text("Text_num_cells", 3), "0");

    // With padding the totals show the padded mesh as read, before any edit.
    record.add_mesh_padding = 1;
    record.padding_multipliers = {"1,2", "1,2,4"};
    load(4);
    EXPECT_EQ(form.text("Text_num_x_cells"), "14");
    EXPECT_EQ(form.text("Text_num_z_cells"), "13");
    EXPECT_EQ(form.text("Text_min_east"), "-30");
    EXPECT_EQ(form.text("Text_range_north"), "160");
    EXPECT_EQ(form.text("Text_max_elev"), "0");
    EXPECT_EQ(form.text("Text_min_elev"), "-170");
}

TEST_F(LoadForm, MeshGroupLeavesParameterControlsAlone) {
    form.set_text("Text_inversion_par", "5");
    form.select_item_data("Combo_inversion_method", no_index, 2);
    record.trade_off_parameter = 9;
    record.inversion_method = 0;
    record.mesh_min = {0, 0, -50, 0};
    record.mesh_max = {100, 100, 0, 0};
    record.mesh_cell_size = {10, 10, 5, 0};
    record.comments = "not for a mesh read";
    load(4);
    EXPECT_EQ(form.text("Text_inversion_par"), "5");
    EXPECT_EQ(form.list_index("Combo_inversion_method"), 4);
    EXPECT_EQ(form.text("Text_num_cells", 2), "10");
    EXPECT_EQ(form.text("Text_description"), "");
}

TEST_F(LoadForm, TileValuesLoadOnlyForARefinedReadInRefinementMode) {
    record.refinement_mode = 1;
    record.x_tile_size = 64;
    record.tile_coarse_model = 7;
    record.tile_order = {1, 0, 3};
    load(4);
    EXPECT_EQ(form.text("Text_x_tile_size"), "128");
    definition.refinement_mode = 1;
    load(4);
    EXPECT_EQ(form.text("Text_x_tile_size"), "64");
    EXPECT_EQ(form.list_index("Combo_forward_model"), 2);
    EXPECT_EQ(form.list_index("Combo_tile_order", 0), 1);
    EXPECT_EQ(form.list_index("Combo_tile_order", 2), 0);
    EXPECT_TRUE(form.control("Frame_refinement").visible);
    EXPECT_FALSE(form.control("Frame_mesh_sizes").visible);
}

TEST_F(LoadForm, AFaultStopsTheLoadQuietlyAndFreesTheForm) {
    record.alpha_method = 5;  // no such row
    record.comments = "never shown";
    load();
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_FALSE(form.updating_form);
    EXPECT_EQ(form.text("Text_description"), "");
}

TEST_F(LoadForm, AllGroupsLeaveTheDefinitionAsTheFormShowsIt) {
    record.inversion_method = 6;
    record.inversion_mode = 2;
    record.alpha_mode = 0;
    record.mag_intensity = 55000;
    record.use_cluster_controller = 5;
    record.background_topo = -1e32f;
    record.chi_factor = 1.5f;
    record.comments = "line one";
    record.mesh_min = {0, 0, -100, 0};
    record.mesh_max = {100, 100, 0, 0};
    record.mesh_cell_size = {10, 10, 10, 0};
    load();
    EXPECT_EQ(definition.inversion_mode, 2);
    EXPECT_EQ(form.list_index("Combo_inversion_mode"), 2);
    EXPECT_EQ(definition.alpha_mode, 0);
    EXPECT_TRUE(form.checked("Option_alphas", 0));
    EXPECT_EQ(form.text("Text_mag_intensity"), "55000.0");
    EXPECT_EQ(definition.use_cluster_controller, 0);
    EXPECT_FALSE(form.checked("Check_use_cluster_controller"));
    EXPECT_EQ(form.text("Text_inversion_background_topo"), "");
    EXPECT_EQ(form.text("Text_chi_factor"), "1.500");
    EXPECT_FLOAT_EQ(definition.chi_factor, 1.5f);
    EXPECT_EQ(form.text("Text_description"), "line one");
    EXPECT_EQ(definition.mesh_cell_count[0], 10);
}

// Closing the form must not leave temporary grids behind, nor delete the user's own grid file.
TEST_F(LoadForm, UnloadDeletesOnlyTheTemporaryGrid) {
    testing::TempDir dir;
    const auto own = dir.path() / "survey.grd";
    const auto temporary = dir.path() / "~WD1.grd";
    testing::write_file_bytes(own, "grid");
    testing::write_file_bytes(temporary, "part");
    session.grids.current_grid_file = own.string();
    session.grids.temporary_grid_name = temporary.string();
    session.working_directory = dir.path();
    EXPECT_EQ(unload_mag3d_form(session), dir.path());
    EXPECT_TRUE(std::filesystem::exists(own));
    EXPECT_FALSE(std::filesystem::exists(temporary));
    EXPECT_TRUE(session.grids.current_grid_file.empty());
    EXPECT_TRUE(session.grids.temporary_grid_name.empty());
}

}  // namespace
}  // namespace invsetup
