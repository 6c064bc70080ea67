// tests/create/inversion_input_test.cpp - the inversion input files of every method, against lines
// worked out by hand from the format.
#include "create/inversion_input.h"

#include <gtest/gtest.h>

#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using Lines = std::vector<std::string>;

/// A definition after the checks: model boxes resolved, alphas specified.
InversionDefinition definition_for(int method) {
    InversionDefinition d;
    d.inversion_method = method;
    d.topo_type = 0;
    d.inversion_mode = 0;
    d.trade_off_parameter = 1;
    d.misfit_tolerance = 0.02f;
    d.initial_model_file = "C:\\models\\start.sus";
    d.reference_model_file = "null";
    d.weighting_model_file = "null";
    d.model_bounds_files = {"null", "null"};
    d.alpha_mode = 1;
    d.alpha_method = 0;
    d.alpha_s = 0.0001f;
    d.alpha_e = 1;
    d.alpha_n = 1;
    d.alpha_v = 2.5f;
    d.smoothness_weighting = 0;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    d.data_type_count = 1;
    return d;
}

RunContext in_mode(int create_mode) {
    RunContext context;
    context.create_mode = create_mode;
    return context;
}

TEST(InversionInputLines, UbcMagneticV4WithFilesGivenByName) {
    InversionDefinition d = definition_for(method_ubc_mag_v4);
    d.reference_model_given = true;
    d.reference_model_file = "ref.sus";
    d.model_bounds_given = true;
    d.model_bounds_files[0] = "C:\\work\\bounds.sus";
    EXPECT_EQ(inversion_input_lines(d, in_mode(0), 0),
              (Lines{"0", "1", " 1  .02", "mag.obs", "maginv3d.mtx", "start.sus", "ref.sus", "C:\\work\\bounds.sus",
                     "0.0001 1 1 2.5", "null", "0"}));
    EXPECT_EQ(inversion_input_file_name(method_ubc_mag_v4, 0), "maginv3d.inp");
    EXPECT_EQ(inversion_input_file_name(method_ubc_mag_v4, 1), "maginv3d.restart");
}

TEST(InversionInputLines, VariationRunNamesTheParentsFilesThroughDotDot) {
    InversionDefinition d = definition_for(method_ubc_mag_v4);
    d.inversion_mode = 2;
    d.reference_model_given = true;
    d.reference_model_file = "ref.sus";
    d.weighting_model_file = "weights.sus";
    for (int mode : {2, 3})
        EXPECT_EQ(inversion_input_lines(d, in_mode(mode), 1),
                  (Lines{"1", "3", " 1  .02", "..\\mag.obs", "..\\maginv3d.mtx", "..\\start.sus", "..\\ref.sus",
                         "null", "0.0001 1 1 2.5", "..\\weights.sus", "0"}));
}

TEST(InversionInputLines, UbcMagneticV3HasNoBoundsLine) {
    InversionDefinition d = definition_for(method_ubc_mag_v3);
    d.model_bounds_given = true;
    d.model_bounds_files[0] = "bounds.sus";
    d.initial_model_file = "0.001";
    d.alpha_mode = 0;
    EXPECT_EQ(inversion_input_lines(d, in_mode(0), 0),
              (Lines{"0", "1", " 1  .02", "mag.obs", "maginv3d.mtx", "0.001", "null", "null", "null", "0"}));
}

TEST(InversionInputLines, VersionFiveWritesValuesForNumbersAndNull) {
    InversionDefinition d = definition_for(method_ubc_mag_v5);
    d.initial_model_file = "1.5";
    d.model_bounds_given = true;
    d.model_bounds_files = {"NULL", "0.5"};
    d.alpha_method = 1;
    d.smoothness_method = 1;
    d.smoothness_weighting = 1;
    d.weight_multipliers = "16,8,4";
    d.weighting_model_file = "ignored.sus";
    d.trade_off_parameter = 12.5f;
    d.misfit_tolerance = 0.5f;
    EXPECT_EQ(inversion_input_lines(d, in_mode(0), 0),
              (Lines{"1", " 12.5  .5", "mag.obs", "maginv3d.mtx", "VALUE 1.5", "VALUE 0.0", "null", "VALUE -2.0",
                     "VALUE 0.5", "1 1 2.5", "SMOOTH_MOD_DIF", "w.dat"}));

    d.inversion_method = method_ubc_grav_v5;
    d.initial_model_file = "null";
    d.reference_model_given = true;
    d.reference_model_file = "-0.2";
    d.model_bounds_files = {"lower.den", "null"};
    d.smoothness_method = 0;
    d.smoothness_weighting = 0;
    EXPECT_EQ(inversion_input_lines(d, in_mode(2), 0),
              (Lines{"1", " 12.5  .5", "..\\grav.obs", "..\\gzinv3d.mtx", "VALUE 0.0", "VALUE -0.2", "null",
                     "..\\lower.den", "VALUE 2.0", "1 1 2.5", "SMOOTH_MOD", "..\\ignored.sus"}));
    EXPECT_EQ(inversion_input_file_name(method_ubc_grav_v5, 0), "gzinv3d.inp");
}

TEST(InversionInputLines, RockPropertiesNameTheExtractedModels) {
    InversionDefinition d = definition_for(method_ubc_grav_v3);
    d.reference_model_given = true;
    d.reference_model_file = "ref.den";
    d.model_bounds_given = true;
    d.model_bounds_files[0] = "bounds.den";
    d.rock_properties_used = true;
    d.alpha_mode = 0;
    auto reference_and_bounds = [&d](int application) {
        d.rock_application = application;
        const Lines lines = inversion_input_lines(d, in_mode(0), 0);
        return Lines{lines.at(6), lines.at(7)};
    };
    EXPECT_EQ(reference_and_bounds(0), (Lines{"grav3d_ref.den", "grav3d_bounds.den"}));
    EXPECT_EQ(reference_and_bounds(1), (Lines{"grav3d_ref.den", "bounds.den"}));  // reference only
    EXPECT_EQ(reference_and_bounds(2), (Lines{"ref.den", "grav3d_bounds.den"}));  // bounds only
}

TEST(InversionInputLines, InHouseGravityTypesJoinTheirMatricesAndKeepTheDataLocal) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.data_types = {2, 10, -1, -1, -1, -1, -1};
    d.data_type_count = 2;
    d.sensitivity_matrix_names = {"Zarninv3D_Gzz.mtx", "Zarninv3D_Gxx.mtx", "", "", "", "", ""};
    d.background_method = 2;
    d.background_value = 0.5f;
    d.positivity_flag = 1;  // all negative
    d.integration_interval = 5;
    d.maximum_iterations = 0;
    d.trade_off_parameter = 0.1f;
    d.misfit_tolerance = 0.02f;
    d.rock_properties_used = true;
    d.reference_model_given = true;
    d.reference_model_file = "ref.den";
    d.model_bounds_given = true;
    d.model_bounds_files[0] = "b.den";
    // The reference takes the magnetic name whatever the data; the bounds follow the data. Each
    // number_to_text brings its own blank, so a separating blank makes two.
    EXPECT_EQ(inversion_input_lines(d, in_mode(3), 0),
              (Lines{"0 2", "2 2 0.5000", " .1  .02- 1  5", "grav.obs",
                     "..\\Zarninv3D_Gzz.mtx|..\\Zarninv3D_Gxx.mtx", "..\\start.sus", "..\\mag3d_ref.sus",
                     "..\\grav3d_bounds.den", "0.0001 1 1 2.5", "null", "0"}));
    EXPECT_EQ(inversion_input_file_name(method_zarninv3d, 1), "zarninv3d.restart");
}

TEST(InversionInputLines, InHouseSignFieldFollowsPositivityOrTheDataType) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.misfit_tolerance = 0.02f;
    d.integration_interval = 0;
    auto tolerance = [&d](int positivity, int type) {
        d.positivity_flag = positivity;
        d.data_types[0] = type;
        return zarninv3d_tolerance_line(d);
    };
    EXPECT_EQ(tolerance(2, 1), " 1  .02 0");   // unconstrained
    EXPECT_EQ(tolerance(3, 0), " 1  .02 1");   // all positive: " 0" picture of 1
    EXPECT_EQ(tolerance(0, 1), " 1  .02 1");   // default, magnetic
    EXPECT_EQ(tolerance(0, 2), " 1  .02 0");   // default, gravity gradient
}

TEST(InversionInputLines, InHouseSingleTypeUsesTheDefaultMatrixAndItsIterationLimit) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.sensitivity_matrix_names[0] = "Zarninv3D.mtx";
    d.maximum_iterations = 25;
    d.alpha_mode = 0;
    d.initial_model_file = "null";
    d.topo_type = 1;
    EXPECT_EQ(inversion_input_lines(d, in_mode(0), 0),
              (Lines{"0 1", "2 0 0.0000", " 1  .02 1", "mag.obs", "zarninv3d.mtx", "null", "null", "null", "null",
                     "null", "0", "25"}));
}

TEST(InversionInputLines, VectorRunAddsIterationsAndFieldDirection) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.data_types = {100, 20, 21, -1, -1, -1, -1};
    d.sensitivity_matrix_names[0] = "Zarninv3D_Tx.mtx|Zarninv3D_Ty.mtx|Zarninv3D_Tz.mtx";
    d.maximum_iterations = 0;
    d.mag_inclination = 60;
    d.mag_declination = 30;
    // cos 60 sin 30 = .25, cos 60 cos 30 = .4330, sin 60 = .8660; the matrices keep no prefix.
    EXPECT_EQ(inversion_input_lines(d, in_mode(2), 1),
              (Lines{"1 3 1 1", "2 0 0.0000", " 1  .02 1", "..\\mag.obs",
                     "Zarninv3D_Tx.mtx|Zarninv3D_Ty.mtx|Zarninv3D_Tz.mtx", "..\\start.sus", "null", "null",
                     "0.0001 1 1 2.5", "null", "0", "300", "3 1,1,0.2500 2,1,0.4330 3,1,0.8660 RMS"}));
    d.mag_inclination = -90;
    d.mag_declination = 0;
    EXPECT_EQ(vector_direction_line(d), "3 1,1,0.0000 2,1,0.0000 3,1,-1.0000 RMS");
}

TEST(InversionInputLines, GravityV2HasItsOwnListWithoutPrefix) {
    InversionDefinition d = definition_for(method_ubc_grav_v2);
    d.maximum_iterations = 40;
    d.chi_factor = 1.25f;
    d.positivity_flag = 3;
    d.subspace_size = 50;
    d.reference_model_file = "D:\\refs\\ref.den";
    d.weighting_model_file = "weights.den";
    d.model_bounds_files[0] = "C:\\work\\depth.den";
    d.alpha_method = 1;  // length: keeps alpha_s, drops alpha_v
    d.topo_type = 1;
    EXPECT_EQ(inversion_input_lines(d, in_mode(2), 1),
              (Lines{"1 40", "1.250", "3", "50", "mesh", "null", "gzinv3d.mtx", "grav.obs", "start.sus", "ref.den",
                     "0.0001 1 1", "weights.den", "C:\\work\\depth.den", "0"}));
    EXPECT_EQ(inversion_input_file_name(method_ubc_grav_v2, 0), "gzinv3d.inp");
}

TEST(WriteInversionInput, WritesTheRestartTwinBesideTheInputFile) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
    session.definition = definition_for(method_ubc_grav_v3);
    session.definition.alpha_mode = 0;
    RunContext context;
    context.run_directory = dir.path();
    write_inversion_input(session, context, 0);
    write_inversion_input(session, context, 1);
    const std::string tail = "1\r\n 1  .02\r\ngrav.obs\r\ngzinv3d.mtx\r\nstart.sus\r\nnull\r\nnull\r\nnull\r\nnull\r\n0\r\n";
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "gzinv3d.inp"), "0\r\n" + tail);
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "gzinv3d.restart"), "1\r\n" + tail);
}

}  // namespace
}  // namespace invsetup
