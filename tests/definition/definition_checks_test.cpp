// tests/definition/definition_checks_test.cpp - the ordered checks of a whole definition: what a
// good definition leaves behind, and the first failing check's own message.
#include "definition/definition_checks.h"

#include <gtest/gtest.h>

#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using Messages = std::vector<std::string>;

/// A definition that passes: an in-house magnetic run on a point file, no topography file,
/// a 10 x 10 x 10 mesh.
class DefinitionChecks : public ::testing::Test {
protected:
    void SetUp() override {
        session.working_directory = dir.path();
        initialise_inversion_form(session);
        testing::write_file_bytes(dir.path() / "obs.csv", "1,2,3,4\r\n");
        testing::write_file_bytes(dir.path() / "start.sus", "0\r\n");
        InversionDefinition& d = session.definition;
        d.data_file_names = {(dir.path() / "obs.csv").string(), "", "", "", "", ""};
        d.obs_data_file_type = 0;
        d.data_x_columns = {1, 1};
        d.data_y_columns = {2, 2};
        d.data_z_columns = {3, 3};
        d.data_value_columns = {4, 0, 0};
        d.line_column = 0;
        d.extra_value_column = 0;
        d.topo_type = 0;
        d.refinement_mode = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            d.mesh_min[axis] = axis == 2 ? -100 : 0;
            d.mesh_max[axis] = axis == 2 ? 0 : 100;
            d.mesh_cell_size[axis] = 10;
            d.mesh_cell_count[axis] = 10;
        }
        d.mesh_cell_count[3] = 0;
        session.form.set_checked("Check_add_padding_cells", false);
        set("Text_UBC_locations_nhead", "1", 0);
        set("Text_UBC_locations_nhead", "1", 1);
        set("Text_mag_inclination", "60");
        set("Text_mag_declination", "5");
        set("Text_mag_intensity", "55000");
    }
    void set(std::string_view name, std::string text, int index = no_index) {
        session.form.set_text(name, index, std::move(text));
    }
    /// Runs the checks expecting a failure; gives the messages this run showed.
    Messages failure() {
        dialogue.messages.clear();
        EXPECT_EQ(check_inversion_definitions(session), -1);
        return dialogue.messages;
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
};

TEST_F(DefinitionChecks, GoodDefinitionPassesAndLeavesTheDerivedFields) {
    InversionDefinition& d = session.definition;
    d.data_types = {2, 10, 13, -1, -1, -1, -1};
    set("Text_initial_file", " start.sus ");
    set("Text_reference_file", "0.01");
    set("Text_weight_file", "NULL");
    ASSERT_EQ(check_inversion_definitions(session), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_EQ(d.topo_type, 1);  // no topography file: the top of the mesh
    EXPECT_EQ(d.data_file_kinds[0], 0);
    EXPECT_EQ(d.data_last_columns[0], 4);
    EXPECT_EQ(d.data_type_count, 3);
    EXPECT_EQ(d.data_component_names[1], "Gxx");
    EXPECT_EQ(d.sensitivity_matrix_names[2], "Zarninv3D_Gxy.mtx");
    EXPECT_EQ(d.initial_model_file, "start.sus");
    EXPECT_EQ(d.reference_model_file, "0.01");
    EXPECT_TRUE(d.reference_model_given);
    EXPECT_EQ(d.weighting_model_file, "null");
    EXPECT_EQ(session.mesh.nx, 10);
}

TEST_F(DefinitionChecks, DataTypeNamesFollowTheCodes) {
    InversionDefinition& d = session.definition;
    d.data_types = {100, 20, 21, 22, 0, 7, -1};
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_EQ(d.data_type_count, 6);
    EXPECT_EQ(d.data_component_names[0], "VMI");
    EXPECT_EQ(d.sensitivity_matrix_names[0], "Zarninv3D_Tx.mtx|Zarninv3D_Ty.mtx|Zarninv3D_Tz.mtx");
    EXPECT_EQ(d.data_component_names[3], "Tz");
    EXPECT_EQ(d.data_component_names[4], "Gz");  // vertical gravity, and any code not listed
    EXPECT_EQ(d.sensitivity_matrix_names[5], "Zarninv3D.mtx");

    // The UBC methods have one data type whatever the lists hold.
    d.inversion_method = method_ubc_mag_v3;
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_EQ(d.data_type_count, 1);
}

TEST_F(DefinitionChecks, DamagedMeshFieldsAreRefusedNamingTheAxisOrList) {
    // Each row damages one field of the good definition and names the one message it must give.
    const struct {
        void (*damage)(InversionDefinition&);
        const char* padding[2];
        const char* message;
    } cases[] = {
        {[](InversionDefinition& d) { d.mesh_cell_count[0] = 0; }, {}, "Mesh x must have more than one cell"},
        {[](InversionDefinition& d) { d.mesh_cell_count[1] = -5; }, {}, "Mesh y must have more than one cell"},
        {[](InversionDefinition& d) { d.mesh_min[1] = 100; }, {}, "Min y mesh must be less than max"},
        {[](InversionDefinition& d) { d.mesh_cell_size[2] = 0; }, {}, "Mesh z cell size must be positive"},
        {[](InversionDefinition& d) { d.mesh_cell_size[0] = -10; }, {}, "Mesh x cell size must be positive"},
        {[](InversionDefinition& d) { d.mesh_max[0] = 1e309; }, {}, "The x mesh limits are too large: 0 to Inf"},
        {[](InversionDefinition& d) { d.mesh_cell_size[1] = 1e309; }, {}, "The y mesh cell size is too large: Inf"},
        {nullptr, {"1,x", "1"}, "The X/Y padding item 2 is not a number above 0: \"x\""},
        {nullptr, {"1,2", "1,-3"}, "The Z padding item 2 is not a number above 0: \"-3\""},
        {nullptr, {"1,1e309", "1"}, "The X/Y padding item 2 is too large: \"1e309\""},
        {nullptr, {"1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1,1", "1"}, "The X/Y padding has 17 items; it can have at most 16"},
    };
    const InversionDefinition good = session.definition;
    for (const auto& c : cases) {
        session.definition = good;
        if (c.damage) c.damage(session.definition);
        session.definition.add_mesh_padding = c.padding[0] ? 1 : 0;
        set("Text_padding_multipliers", c.padding[0] ? c.padding[0] : "", 0);
        set("Text_padding_multipliers", c.padding[1] ? c.padding[1] : "", 1);
        EXPECT_EQ(failure(), Messages{c.message});
    }
}

TEST_F(DefinitionChecks, ANumberTooLargeForItsFieldIsNoNumber) {
    for (const char* text : {"1e39", "-1e309"}) {
        set("Text_UBC_regional_field", text);
        EXPECT_EQ(failure(), Messages{"The regional field base level is not numeric"}) << text;
    }
}

TEST_F(DefinitionChecks, RegionalAndErrorsComeBeforeTheDataFiles) {
    session.definition.data_file_names[0].clear();
    set("Text_UBC_regional_scale", "0");
    EXPECT_EQ(failure(), Messages{"The field scale value cannot be 0"});
    set("Text_UBC_regional_scale", "1");
    set("Text_percent_error", "0");
    set("Text_error_floor", "0");
    EXPECT_EQ(failure(), Messages{"The percent error and error floor fields cannot both be zero"});
    set("Text_error_floor", "-1");
    EXPECT_EQ(failure(), Messages{"The error floor field must be non-negative"});
    set("Text_error_floor", "1");
    EXPECT_EQ(failure(), Messages{"The observed data file must be specified"});
}

TEST_F(DefinitionChecks, MissingDataFileIsLookedForThenReported) {
    session.definition.data_file_names[0] = (dir.path() / "gone.csv").string();
    EXPECT_EQ(failure(), (Messages{"Could not find Observed Data file please specify its location",
                                   "The specified observed data file does not exist"}));
}

// A person who neither picks the file nor stops the reading still has no file: the check must fail
// with its message, not go on with a missing topography and invert without the surface.
TEST_F(DefinitionChecks, MissingTopographyFileFailsEvenWhenTheSearchIsNotCancelled) {
    dialogue.answer_yes = false;
    session.definition.data_file_names[1] = (dir.path() / "gone.xyz").string();
    const Messages messages = failure();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), "The topo file does not exist");
    EXPECT_EQ(session.definition.topo_type, 0);
}

TEST_F(DefinitionChecks, ColumnDefinitionsOfThePointFile) {
    InversionDefinition& d = session.definition;
    set("Text_UBC_locations_nhead", "0", 0);
    EXPECT_EQ(failure(), Messages{"The number of the first data line must be positive"});
    set("Text_UBC_locations_nhead", "1", 0);
    d.data_value_columns[0] = 0;
    EXPECT_EQ(failure(), Messages{"The mag column location must be defined"});
    // x, y and a value in column 2: the last column must be at least 3.
    d.data_value_columns[0] = 2;
    d.data_z_columns[0] = 0;
    EXPECT_EQ(failure(), Messages{"There are not enough distinct fields for the observed data file"});
    d.data_value_columns[0] = 3;
    set("Text_UBC_locations_valcount", "x");
    EXPECT_EQ(failure(), Messages{"The nuber of values per cell is not numeric"});
    set("Text_UBC_locations_valcount", "1");
    // A column no line can reach would only size a table of billions of fields.
    d.line_column = 1000000000;
    EXPECT_EQ(failure(), Messages{"The column 1000000000 of the observed data file is beyond the 5121 fields a line can have"});
    d.line_column = 0;
    set("Text_UBC_elevation_offset", "high", 0);
    EXPECT_EQ(failure(), Messages{"The elevation offset value is not numeric"});
}

TEST_F(DefinitionChecks, TopographyFileNeedsAnElevationColumn) {
    InversionDefinition& d = session.definition;
    testing::write_file_bytes(dir.path() / "topo.xyz", "1 2 3\r\n");
    d.data_file_names[1] = (dir.path() / "topo.xyz").string();
    d.data_z_columns[1] = 0;
    EXPECT_EQ(failure(), Messages{"The Z column location must be defined"});
    d.data_z_columns[1] = 3;
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_EQ(d.topo_type, 0);
    EXPECT_EQ(d.data_last_columns[1], 3);
}

TEST_F(DefinitionChecks, ObservedGridThatIsNoGridIsNamed) {
    InversionDefinition& d = session.definition;
    d.obs_data_file_type = 1;
    EXPECT_EQ(failure(), Messages{"The observed data grid file must be specified"});
    testing::write_file_bytes(dir.path() / "field.txt", "not a grid\r\n");
    d.data_file_names[2] = (dir.path() / "field.txt").string();
    EXPECT_EQ(failure(), Messages{"The grid file format could not be dertermined for the file: field.txt"});
}

TEST_F(DefinitionChecks, FieldAndMethodParameters) {
    set("Text_mag_intensity", "0");
    EXPECT_EQ(failure(), Messages{"The mag intensity must be positive"});
    // A gravity type of the in-house method needs no field.
    session.definition.data_types[0] = 3;
    set("Text_line_azimuth", "north");
    EXPECT_EQ(failure(), Messages{"The line azimuth is not numeric"});
    set("Text_line_azimuth", "0");
    session.form.set_checked("Option_wavelet_parameters", 1, true);
    set("Text_wavelet_itol", "1.0");
    EXPECT_EQ(failure(), Messages{"The itol parameter must be either 1 or 2"});
    set("Text_wavelet_itol", "2");
    set("Text_inversion_par", "0");
    EXPECT_EQ(failure(), Messages{"The misfit/smoothness trade-off parameter must be positive"});
}

TEST_F(DefinitionChecks, ZnotIsNeverRefusedForItsSign) {
    session.form.set_checked("Option_depth_weighting_parameters", 1, true);
    set("Text_weighting_beta", "2");
    set("Text_weighting_znot", "-5");
    EXPECT_EQ(check_inversion_definitions(session), 0);
    set("Text_weighting_znot", "");
    EXPECT_EQ(failure(), Messages{"The znot value is not numeric"});
}

TEST_F(DefinitionChecks, GravityV2ChecksItsOwnParameters) {
    session.definition.inversion_method = method_ubc_grav_v2;
    set("Text_chi_factor", "0");
    EXPECT_EQ(failure(), Messages{"The Chi factor must be positive"});
    set("Text_chi_factor", "1");
    set("Text_subspace", "-1");
    EXPECT_EQ(failure(), Messages{"The Subspace size cannot be negative"});
}

TEST_F(DefinitionChecks, AlphasMayNotAllBeZeroAndGravityV3SkipsAlphaS) {
    session.form.set_checked("Option_alphas", 1, true);
    set("Text_alpha_s", "0");
    set("Text_alpha_e", "0");
    set("Text_alpha_n", "-1");
    EXPECT_EQ(failure(), Messages{"The alpha N value must be positive"});
    set("Text_alpha_n", "0");
    set("Text_alpha_v", "0");
    EXPECT_EQ(failure(), Messages{"The alpha values cannot all be zero"});
    session.definition.inversion_method = method_ubc_grav_v3;
    set("Text_alpha_s", "x");  // not tested, and reads as 0
    set("Text_alpha_v", "1");
    EXPECT_EQ(check_inversion_definitions(session), 0);
}

TEST_F(DefinitionChecks, ModelFilesMustExistUnlessTheyAreNumbers) {
    set("Text_initial_file", "absent.sus");
    EXPECT_EQ(failure(), Messages{"The specified initial model file does not exist in the folder: " +
                                  dir.path().string()});
    set("Text_initial_file", "null");
    set("Text_reference_file", "absent.sus");
    EXPECT_EQ(failure(), Messages{"The specified reference model file does not exist"});
}

TEST_F(DefinitionChecks, BoundsOfVersionFiveMayBeNumbersOrFiles) {
    InversionDefinition& d = session.definition;
    d.inversion_method = method_ubc_mag_v5;
    set("Text_depth_weighting_file", "2.5 more", 0);
    set("Text_depth_weighting_file", "start.sus", 1);
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_EQ(d.model_bounds_files[0], "2.5");
    EXPECT_EQ(d.model_bounds_files[1], dir.path().string() + "\\start.sus");
    EXPECT_TRUE(d.model_bounds_given);

    // Other methods keep a number with its words, and read one box only.
    d.inversion_method = method_ubc_mag_v4;
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_EQ(d.model_bounds_files[0], "2.5 more");

    set("Text_depth_weighting_file", "absent.bnd", 0);
    EXPECT_EQ(failure().back(), "The specified bounds file does not exist");
}

TEST_F(DefinitionChecks, RockPropertiesNeedAReferenceOrBounds) {
    InversionDefinition& d = session.definition;
    d.inversion_method = method_ubc_mag_v4;
    testing::write_file_bytes(dir.path() / "rocks.lkp", "1\r\n");
    set("Text_rock_propery_file", "rocks.lkp");
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_FALSE(d.rock_properties_used);
    set("Text_reference_file", "start.sus");
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_TRUE(d.rock_properties_used);
    EXPECT_EQ(d.rock_property_file, "rocks.lkp");
    // Method 0 doesn't look at bounds or rock properties at all.
    d.inversion_method = method_ubc_mag_v3;
    set("Text_rock_propery_file", "absent.lkp");
    ASSERT_EQ(check_inversion_definitions(session), 0);
    EXPECT_FALSE(d.rock_properties_used);
}

TEST_F(DefinitionChecks, RefinementSettingsAreStoredAsIntegers) {
    InversionDefinition& d = session.definition;
    d.refinement_mode = 1;
    set("Text_tile_overlap", "8");
    set("Text_blend_overlap", "9");
    EXPECT_EQ(failure(), Messages{"The number of blend cells must be less than the number of overlap cells"});
    EXPECT_EQ(d.tile_overlap, 8);
    set("Text_blend_overlap", "8");  // as wide as the overlap passes
    set("Text_z_blend", "-1");
    EXPECT_EQ(failure(), Messages{"The number of z blend cells must be positive"});
    EXPECT_EQ(d.tile_xy_blend, 8);
    set("Text_z_blend", "2");
    d.mesh_cell_count[3] = 4;
    EXPECT_EQ(failure(),
              Messages{"The use of multiplicative Z mesh cells is not supported for refinement inversions"});
}

TEST_F(DefinitionChecks, NegativeIterationLimitOfTheInHouseMethod) {
    set("Text_max_iter", "abc");
    EXPECT_EQ(check_inversion_definitions(session), 0);
    set("Text_max_iter", "-3");
    EXPECT_EQ(failure(), Messages{"The number of iterations is not valid"});
}

TEST(CheckFileDefinitions, EmptySlotIsReported) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    EXPECT_EQ(check_file_definitions(session, 3), -1);
    EXPECT_EQ(dialogue.messages, Messages{"No data location file has been specified"});
}

}  // namespace
}  // namespace invsetup
