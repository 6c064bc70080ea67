// tests/form/method_behaviour_test.cpp - the form follows the method, the data types and the switches.
#include <gtest/gtest.h>

#include "form/form_load.h"
#include "session.h"

namespace invsetup {
namespace {

class FormBehaviour : public ::testing::Test {
protected:
    void SetUp() override { initialise_inversion_form(session); }
    void choose_method(int code) { form.select_item_data("Combo_inversion_method", no_index, code); }
    /// A person's choice goes straight to the row, without the load's pass through no selection.
    void choose_first_type(int code) {
        for (int row = 0; row < form.row_count("Combo_data_type", 0); ++row)
            if (form.item_data("Combo_data_type", 0, row) == code) form.set_list_index("Combo_data_type", 0, row);
    }
    bool visible(const char* name, int index = no_index) { return form.control(name, index).visible; }
    bool enabled(const char* name, int index = no_index) { return form.control(name, index).enabled; }

    HeadlessDialogue dialogue;
    Session session{dialogue};
    FormModel& form = session.form;
};

struct MethodCase {
    int method;
    bool field, gravity, bounds, inversion_mode, tolc_enabled;
    int alpha_row;
    bool alpha_enabled, first_data_type, variation, num_threads_enabled;
    const char* weight_caption;
};

// From a freshly loaded in-house form, choosing each method; a first pass through method 0 makes the
// in-house row a change too.
TEST_F(FormBehaviour, EachMethodSetsItsControls) {
    const MethodCase cases[] = {
        {1, false, true, false, false, false, 0, false, false, false, false, "Depth Weighting"},
        {2, false, false, true, true, true, 1, true, false, true, false, "Density Bounds File"},
        {5, false, false, true, true, true, 1, true, false, true, true, "Density Bounds File"},
        {0, true, false, false, true, true, 0, false, false, true, false, "Model Bounds File"},
        {3, true, false, true, true, true, 0, true, false, true, false, "Susc Bounds File"},
        {6, true, false, true, true, true, 1, true, false, true, true, "Model Bounds File"},
        {4, true, false, true, true, false, 0, false, true, true, false, "Model Bounds File"},
    };
    for (const MethodCase& c : cases) {
        HeadlessDialogue fresh_dialogue;
        Session fresh{fresh_dialogue};
        initialise_inversion_form(fresh);
        FormModel& f = fresh.form;
        f.select_item_data("Combo_inversion_method", no_index, 0);
        f.select_item_data("Combo_inversion_method", no_index, c.method);
        SCOPED_TRACE("method " + std::to_string(c.method));
        EXPECT_EQ(fresh.definition.inversion_method, c.method);
        EXPECT_EQ(f.control("Frame_field").visible, c.field);
        EXPECT_EQ(f.control("Frame_gravity_parameters").visible, c.gravity);
        EXPECT_EQ(f.control("Frame_parameter_bounds").visible, c.bounds);
        EXPECT_EQ(f.control("Combo_inversion_mode").visible, c.inversion_mode);
        EXPECT_EQ(f.control("Text_inversion_tolc").enabled, c.tolc_enabled);
        EXPECT_EQ(f.list_index("Combo_alpha_method"), c.alpha_row);
        EXPECT_EQ(f.control("Combo_alpha_method").enabled, c.alpha_enabled);
        EXPECT_EQ(f.control("Combo_data_type", 0).visible, c.first_data_type);
        EXPECT_EQ(f.control("Combo_optional_data_type", 0).visible, c.first_data_type);
        EXPECT_EQ(f.control("Check_generate_inversion_variation").visible, c.variation);
        EXPECT_EQ(f.control("Text_NumThreads").enabled, c.num_threads_enabled);
        EXPECT_EQ(f.control("Label_weight").caption, c.weight_caption);
    }
}

TEST_F(FormBehaviour, DashesLetAnEarlierMethodShowThrough) {
    choose_method(1);
    choose_method(3);
    EXPECT_FALSE(visible("Combo_inversion_mode"));
    EXPECT_FALSE(visible("Label_inversion_mode", 0));
    choose_method(6);
    EXPECT_TRUE(visible("Combo_inversion_mode"));
}

TEST_F(FormBehaviour, InversionModeRowsFollowTheFamily) {
    choose_method(2);
    ASSERT_EQ(form.row_count("Combo_inversion_mode"), 3);
    EXPECT_EQ(form.item_data("Combo_inversion_mode", no_index, 1), 0);  // two rows share 0
    EXPECT_EQ(form.list_index("Combo_inversion_mode"), 0);
    EXPECT_EQ(form.control("Combo_depth_weighting_type").rows[1].text, "Distance");
    EXPECT_TRUE(visible("Check_topo_shift"));
    EXPECT_FALSE(visible("Frame_background_removal_method"));

    form.set_list_index("Combo_inversion_mode", 2);
    EXPECT_EQ(session.definition.inversion_mode, 2);
    choose_method(4);
    ASSERT_EQ(form.row_count("Combo_inversion_mode"), 5);
    EXPECT_EQ(form.list_index("Combo_inversion_mode"), 2);
    EXPECT_EQ(form.control("Combo_inversion_mode").rows[2].text, "Apparent den/susc");
    EXPECT_EQ(form.control("Combo_depth_weighting_type").rows[0].text, "Simple");
    EXPECT_FALSE(visible("Check_topo_shift"));
}

TEST_F(FormBehaviour, FirstDataTypeSwapsFieldAndTensorFrames) {
    EXPECT_TRUE(visible("Frame_field"));  // loaded as in-house magnetic
    choose_first_type(3);
    EXPECT_FALSE(visible("Frame_field"));
    EXPECT_TRUE(visible("Frame_tensor"));
    choose_first_type(5);
    EXPECT_FALSE(visible("Frame_tensor"));
    EXPECT_TRUE(visible("Combo_data_type", 1));
    EXPECT_FALSE(visible("Combo_data_type", 2));
    choose_first_type(20);
    EXPECT_TRUE(visible("Frame_field"));
    EXPECT_TRUE(visible("Combo_data_type", 2));
}

TEST_F(FormBehaviour, UntouchedDefaultsFollowTheFirstDataType) {
    ASSERT_EQ(form.text("Text_percent_error"), "0");
    form.set_text("Text_percent_error", "5");
    choose_first_type(3);  // magnetic to VKa
    EXPECT_EQ(form.text("Text_percent_error"), "0");
    EXPECT_EQ(form.text("Text_inversion_par"), "0.1");
    EXPECT_EQ(form.text("Text_error_floor"), "1");
    choose_first_type(0);  // to gravity
    EXPECT_EQ(form.text("Text_inversion_par"), "0.01");
    EXPECT_EQ(form.text("Text_error_floor"), "0.01");
    EXPECT_FLOAT_EQ(session.definition.error_floor, 0.01f);
    EXPECT_EQ(form.text("Text_wavelet_eps"), "0.001");
}

TEST_F(FormBehaviour, UserValueSurvivesADataTypeChange) {
    form.set_text("Text_error_floor", "0.1");
    choose_first_type(0);
    EXPECT_EQ(form.text("Text_error_floor"), "0.1");
    EXPECT_EQ(form.text("Text_inversion_par"), "0.01");
}

TEST_F(FormBehaviour, NoDefaultsMoveWhileTheFormIsBeingUpdated) {
    form.set_text("Text_percent_error", "5");
    form.updating_form = true;
    choose_first_type(0);
    form.updating_form = false;
    EXPECT_EQ(form.text("Text_percent_error"), "5");
    EXPECT_EQ(form.text("Text_inversion_par"), "1");
    EXPECT_FALSE(visible("Frame_field"));  // the frames follow even so
}

TEST_F(FormBehaviour, ExtraDataTypesReadTheOutOfStepCodes) {
    EXPECT_EQ(form.item_data("Combo_data_type", 1, 0), 0);   // "NA"
    EXPECT_EQ(form.item_data("Combo_data_type", 1, 1), 1);   // "0: Gravity"
    EXPECT_EQ(form.item_data("Combo_data_type", 2, 9), 22);  // "21: Ty"
    EXPECT_EQ(form.item_data("Combo_data_type", 2, 10), 0);  // "22: Tz" keeps its own
    form.set_list_index("Combo_data_type", 1, 2);
    EXPECT_EQ(session.definition.data_types[1], 2);
    EXPECT_TRUE(enabled("Text_UBC_locations_magpos", 1));
    EXPECT_TRUE(visible("Label_obs_data", 2));
    form.set_list_index("Combo_data_type", 1, 0);
    EXPECT_EQ(session.definition.data_types[1], 0);
    EXPECT_FALSE(enabled("Text_UBC_locations_magpos", 2));
    EXPECT_FALSE(visible("Label_obs_data", 1));
}

TEST_F(FormBehaviour, OptionButtonsActAsPairs) {
    form.set_checked("Option_depth_weighting_parameters", 1, true);
    EXPECT_FALSE(form.checked("Option_depth_weighting_parameters", 0));
    EXPECT_EQ(session.definition.depth_weighting_mode, 1);
    EXPECT_TRUE(visible("Frame_specify_weighting"));
    form.set_checked("Option_depth_weighting_parameters", 0, true);
    EXPECT_FALSE(form.checked("Option_depth_weighting_parameters", 1));
    EXPECT_FALSE(visible("Frame_specify_weighting"));
    form.set_checked("Option_alphas", 0, true);
    EXPECT_EQ(session.definition.alpha_mode, 0);
    form.set_checked("Option_wavelet_parameters", 0, true);
    EXPECT_EQ(session.definition.wavelet_mode, 0);
    EXPECT_FALSE(visible("Frame_specify_wavelet"));
}

TEST_F(FormBehaviour, TopoTypeBoxesAreExclusive) {
    form.set_checked("Check_topo_type", 1, true);
    EXPECT_FALSE(form.checked("Check_topo_type", 0));
    EXPECT_EQ(session.definition.topo_type, 1);
    form.set_checked("Check_topo_type", 1, false);
    EXPECT_TRUE(form.checked("Check_topo_type", 0));
    EXPECT_EQ(session.definition.topo_type, 0);
    EXPECT_FALSE(form.updating_form);
}

TEST_F(FormBehaviour, VariationRunMarksWhatMayChange) {
    form.set_checked("Check_generate_inversion_variation", true);
    EXPECT_TRUE(enabled("Command_create_inversion", 2));
    EXPECT_TRUE(visible("Check_update_data_files"));
    EXPECT_EQ(form.control("Label_model", 3).back_colour, 0x00FF00u);
    EXPECT_EQ(form.control("Option_alphas", 1).back_colour, 0x00FF00u);
    form.set_checked("Check_generate_inversion_variation", false);
    EXPECT_FALSE(enabled("Command_create_inversion", 2));
    EXPECT_FALSE(visible("Check_update_data_files"));
    EXPECT_EQ(form.control("Label_weights").back_colour, colour_button_face);
}

TEST_F(FormBehaviour, GravityV2TurnsTheVariationOff) {
    form.set_checked("Check_generate_inversion_variation", true);
    choose_method(1);
    EXPECT_FALSE(form.checked("Check_generate_inversion_variation"));
    EXPECT_FALSE(visible("Check_generate_inversion_variation"));
    EXPECT_EQ(form.control("Label_alpha", 0).back_colour, colour_button_face);
}

TEST_F(FormBehaviour, ListsThatMoveOrRecaption) {
    form.control("Frame_point_data").left = 120;
    form.control("Frame_point_data").top = 340;
    form.set_list_index("Combo_observed_data_file_type", 1);
    EXPECT_TRUE(visible("Tab_images"));
    EXPECT_EQ(form.control("Tab_images").left, 120);
    EXPECT_EQ(form.control("Tab_images").top, 340);
    form.set_list_index("Combo_observed_data_file_type", 0);
    EXPECT_FALSE(visible("Tab_images"));

    form.set_list_index("Combo_UBC_elevation_offset", 1);
    EXPECT_EQ(form.control("Label_sensor").caption, "Sensor elevation");
    EXPECT_EQ(session.definition.sensor_height_type, 1);

    form.set_list_index("Combo_alpha_method", 1);
    EXPECT_FALSE(visible("Label_alpha", 0));
    EXPECT_FALSE(enabled("Text_alpha_s"));
}

TEST_F(FormBehaviour, TabClickCaptionsTheValueColumns) {
    session.definition.data_type_count = 2;
    session.definition.data_types[1] = 21;
    form.set_list_index("Tab_inversion", 1);
    EXPECT_EQ(form.control("Label_obs_data", 0).caption, "Mag data");
    EXPECT_EQ(form.control("Label_obs_data", 1).caption, "Ty data");
    choose_method(5);
    form.set_list_index("Tab_inversion", 2);
    EXPECT_EQ(form.control("Label_obs_data", 0).caption, "Grav data");
}

}  // namespace
}  // namespace invsetup
