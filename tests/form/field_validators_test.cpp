// tests/form/field_validators_test.cpp - boxes that store, refuse, restore, and the file boxes.
#include <gtest/gtest.h>

#include "form/field_validators.h"
#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

class FieldValidators : public ::testing::Test {
protected:
    void SetUp() override { initialise_inversion_form(session); }

    HeadlessDialogue dialogue;
    Session session{dialogue};
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
};

TEST_F(FieldValidators, NumericTextIsStoredAndLettersKeepTheField) {
    form.set_text("Text_mag_inclination", "-65.5");
    EXPECT_FLOAT_EQ(definition.mag_inclination, -65.5f);
    form.set_text("Text_mag_inclination", "-65.5x");
    EXPECT_FLOAT_EQ(definition.mag_inclination, -65.5f);
    form.set_text("Text_UBC_elevation_offset", 2, "12.5");
    EXPECT_FLOAT_EQ(definition.elevation_offsets[2], 12.5f);
    form.set_text("Text_NumThreads", "8");
    EXPECT_EQ(definition.number_of_threads, 8);
    form.set_text("Text_NumThreads", "1e20");  // beyond an integer: refused like letters
    EXPECT_EQ(definition.number_of_threads, 8);
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(FieldValidators, ConditionsRefuseOutOfRangeValues) {
    form.set_text("Text_inversion_tolc", "0.05");
    form.set_text("Text_inversion_tolc", "0");
    EXPECT_FLOAT_EQ(definition.misfit_tolerance, 0.05f);
    form.set_text("Text_error_floor", "0");
    EXPECT_FLOAT_EQ(definition.error_floor, 0.0f);
    form.set_text("Text_error_floor", "-1");
    EXPECT_FLOAT_EQ(definition.error_floor, 0.0f);
    form.set_text("Text_UBC_regional_scale", "0");
    EXPECT_FLOAT_EQ(definition.regional_scale, 1.0f);
    form.set_text("Text_UBC_regional_scale", "-2");
    EXPECT_FLOAT_EQ(definition.regional_scale, -2.0f);
}

TEST_F(FieldValidators, SpecialFormsOfMaxIterBackgroundAndWeights) {
    form.set_text("Text_max_iter", "40");
    EXPECT_EQ(definition.maximum_iterations, 40);
    form.set_text("Text_max_iter", "forty");  // letters mean the program's own default
    EXPECT_EQ(definition.maximum_iterations, 0);
    form.set_text("Text_inversion_background_topo", "250");
    EXPECT_FLOAT_EQ(definition.background_topo, 250.0f);
    form.set_text("Text_inversion_background_topo", "  ");
    EXPECT_FLOAT_EQ(definition.background_topo, -1e32f);
    form.set_text("Text_weight_multipliers", "8,x");
    EXPECT_EQ(definition.weight_multipliers, "8,x");
}

TEST_F(FieldValidators, LeavingABadBoxRestoresTheStoredValueWithABeep) {
    form.set_text("Text_chi_factor", "abc");
    EXPECT_FLOAT_EQ(definition.chi_factor, 1.0f);  // nothing stored while typing
    leave_text_box(session, "Text_chi_factor", no_index);
    EXPECT_EQ(form.text("Text_chi_factor"), "1.000");
    EXPECT_EQ(dialogue.beeps, 1);

    form.set_text("Text_subspace", "75");
    leave_text_box(session, "Text_subspace", no_index);
    EXPECT_EQ(definition.subspace_size, 75);
    form.set_text("Text_iterations", "");
    leave_text_box(session, "Text_iterations", no_index);
    EXPECT_EQ(form.text("Text_iterations"), "30");
    EXPECT_EQ(dialogue.beeps, 2);
}

TEST_F(FieldValidators, FileBoxStartsBlankForNullAndTakesThePath) {
    session.working_directory = "/work/run";
    dialogue.file_answers.push_back("/models/start.sus");
    ASSERT_TRUE(choose_file_for_box(session, "Text_initial_file", no_index));
    ASSERT_EQ(dialogue.file_requests.size(), 1u);
    EXPECT_EQ(dialogue.file_requests[0].title, "Select the initial model file");
    EXPECT_EQ(dialogue.file_requests[0].filter,
              "Data Files (*.sus;*.den;*.mod)|*.sus;*.den;*.mod|All files (*.*)|*.*");
    EXPECT_EQ(dialogue.file_requests[0].start_name, "");
    EXPECT_EQ(form.text("Text_initial_file"), "/models/start.sus");
    EXPECT_EQ(session.working_directory, "/work/run");

    // A cancel changes nothing; the box's own text was the start this time.
    EXPECT_FALSE(choose_file_for_box(session, "Text_initial_file", no_index));
    EXPECT_EQ(dialogue.file_requests[1].start_name, "/models/start.sus");
    EXPECT_EQ(form.text("Text_initial_file"), "/models/start.sus");
}

TEST_F(FieldValidators, BoundsBoxStartsFromTheStoredFile) {
    definition.model_bounds_files[1] = "/bounds/upper.bnd";
    form.raise_change("Command_depth_weighting_file", 1);
    ASSERT_EQ(dialogue.file_requests.size(), 1u);
    EXPECT_EQ(dialogue.file_requests[0].start_name, "/bounds/upper.bnd");
    EXPECT_EQ(dialogue.file_requests[0].title, "Select the model weighting file");
}

TEST_F(FieldValidators, DataFileBoxShowsTheNameAndKeepsThePath) {
    testing::TempDir dir;
    const std::string dem = (dir.path() / "dem.xyz").string();
    testing::write_file_bytes(dem, "x y z\r\n1 2 3\r\n");
    form.set_checked("Check_topo_type", 1, true);
    dialogue.file_answers.push_back(dem);
    ASSERT_TRUE(choose_file_for_box(session, "Text_data_locations", 1));
    EXPECT_EQ(dialogue.file_requests[0].title, "Select the topo data file");
    EXPECT_EQ(form.text("Text_data_locations", 1), "dem.xyz");
    EXPECT_EQ(definition.data_file_names[1], dem);
    EXPECT_TRUE(form.checked("Check_topo_type", 0));
    EXPECT_FALSE(form.checked("Check_topo_type", 1));
    EXPECT_EQ(definition.topo_type, 0);
}

}  // namespace
}  // namespace invsetup
