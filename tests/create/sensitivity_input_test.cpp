// tests/create/sensitivity_input_test.cpp - the sensitivity and weighting-program input files,
// against lines worked out by hand from the format.
#include "create/sensitivity_input.h"

#include <gtest/gtest.h>

#include "form/form_load.h"
#include "session.h"
#include "support/numbers.h"
#include "test_support.h"

namespace invsetup {
namespace {

using Lines = std::vector<std::string>;
using testing::TempDir;
using testing::read_file_bytes;

/// A definition with every value the files read set on purpose.
InversionDefinition definition_for(int method) {
    InversionDefinition d;
    d.inversion_method = method;
    d.topo_type = 0;
    d.depth_weighting_type = 0;
    d.depth_weighting_mode = 1;
    d.weighting_beta = 3;
    d.weighting_znot = 0.5f;
    d.wavelet_mode = 1;
    d.wavelet_itol = 1;
    d.wavelet_eps = 0.001f;
    d.background_topo = null_value_single;
    d.inversion_mode = 0;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    d.data_type_count = 1;
    d.calculation_data_type_count = 0;
    d.number_of_threads = 4;
    d.output_debug_information = 1;
    return d;
}

TEST(SensitivityInputLines, UbcMagneticV3AndV4ListWeightingAndWavelet) {
    InversionDefinition d = definition_for(method_ubc_mag_v3);
    RunContext context;
    const Lines expected{"mesh", "mag.obs", "topo.dat", "1", "3 0.5", "daub4", "1 0.001"};
    EXPECT_EQ(sensitivity_input_lines(d, context, "daub4"), expected);
    d.inversion_method = method_ubc_mag_v4;
    EXPECT_EQ(sensitivity_input_lines(d, context, "daub4"), expected);
    EXPECT_EQ(sensitivity_input_file_name(method_ubc_mag_v4), "magsen3d.inp");
}

TEST(SensitivityInputLines, UnspecifiedWeightingAndWaveletSayNull) {
    InversionDefinition d = definition_for(method_ubc_grav_v3);
    d.topo_type = 1;
    d.depth_weighting_type = 1;
    d.depth_weighting_mode = 0;
    d.wavelet_mode = 0;
    EXPECT_EQ(sensitivity_input_lines(d, RunContext{}, "ignored"),
              (Lines{"mesh", "grav.obs", "null", "2", "null", "daub2", "null"}));
    EXPECT_EQ(sensitivity_input_file_name(method_ubc_grav_v3), "gzsen3d.inp");
}

TEST(SensitivityInputLines, VersionFiveNamesTheWeightFileAndHasNoParameterLine) {
    InversionDefinition d = definition_for(method_ubc_mag_v5);
    EXPECT_EQ(sensitivity_input_lines(d, RunContext{}, "null"),
              (Lines{"mesh", "mag.obs", "topo.dat", "depth_weight.txt", "null", "1 0.001", "1"}));
    d.inversion_method = method_ubc_grav_v5;
    d.depth_weighting_type = 1;
    d.output_debug_information = 0;
    EXPECT_EQ(sensitivity_input_lines(d, RunContext{}, "symm6"),
              (Lines{"mesh", "grav.obs", "topo.dat", "distance_weight.txt", "symm6", "1 0.001", "0"}));
}

TEST(WeightingInputLines, VersionFiveProgramsGetTheirOwnFile) {
    InversionDefinition d = definition_for(method_ubc_mag_v5);
    EXPECT_EQ(weighting_input_lines(d), (Lines{"MAG", "mesh", "mag.obs", "topo.dat", "1", "3 0.5"}));
    EXPECT_EQ(weighting_input_file_name(method_ubc_mag_v5), "mag_weights.inp");
    d.inversion_method = method_ubc_grav_v5;
    d.topo_type = 1;
    d.depth_weighting_type = 1;
    d.depth_weighting_mode = 0;
    EXPECT_EQ(weighting_input_lines(d), (Lines{"GRAV", "mesh", "grav.obs", "null", "2", "null"}));
    EXPECT_EQ(weighting_input_file_name(method_ubc_grav_v5), "gz_weights.inp");
    EXPECT_EQ(weighting_input_file_name(method_ubc_mag_v4), "");
}

TEST(ThreadSuffix, OnlyVersionFiveMethodsPassTheThreadCount) {
    InversionDefinition d = definition_for(method_ubc_mag_v5);
    EXPECT_EQ(thread_suffix_for(d), " 4");
    d.inversion_method = method_ubc_grav_v5;
    d.number_of_threads = 0;
    EXPECT_EQ(thread_suffix_for(d), " 0");
    for (int method : {method_ubc_mag_v4, method_zarninv3d}) {
        d.inversion_method = method;
        EXPECT_EQ(thread_suffix_for(d), "") << method;
    }
}

TEST(ZarnsenInputLines, GravityTypesCountTheOptionalTypesAndPassTheRotation) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.data_types = {5, 2, -1, -1, -1, -1, -1};
    d.data_type_count = 2;
    d.calculation_data_types = {12, -1, -1, -1, -1, -1, -1};
    d.calculation_data_type_count = 1;
    d.inversion_mode = 2;
    d.wavelet_mode = 0;
    d.background_topo = 125.5f;
    RunContext context;
    context.transform_in_use = true;
    context.transform_rotation = 30;
    EXPECT_EQ(sensitivity_input_lines(d, context, "unused"),
              (Lines{"mesh", "grav.obs", "topo.dat", "1 3 2", "3 0.5", "daub2", "1 0.001 125.5", "5 2 12 0 30.0"}));
    // Without a transform in use the rotation is not written.
    context.transform_in_use = false;
    EXPECT_EQ(sensitivity_input_lines(d, context, "unused").back(), "5 2 12");
    EXPECT_EQ(sensitivity_input_file_name(method_zarninv3d), "zarnsen3d.inp");
}

TEST(ZarnsenInputLines, VectorRunCountsThreeComponents) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.data_types = {100, 20, 21, -1, -1, -1, -1};
    d.data_type_count = 1;
    d.inversion_mode = 1;
    d.depth_weighting_mode = 0;
    d.wavelet_mode = 0;
    EXPECT_EQ(sensitivity_input_lines(d, RunContext{}, "unused"),
              (Lines{"mesh", "mag.obs", "topo.dat", "1 3 1", "null", "daub2", "null", "20 21 22"}));
}

TEST(ZarnsenInputLines, SpecifiedWaveletCarriesTheBackgroundAndTensorTypesTheAzimuth) {
    InversionDefinition d = definition_for(method_zarninv3d);
    d.data_types = {3, -1, -1, -1, -1, -1, -1};
    d.line_azimuth = 0;
    d.background_topo = -250;
    d.topo_type = 1;
    EXPECT_EQ(sensitivity_input_lines(d, RunContext{}, "daub4"),
              (Lines{"mesh", "grav.obs", "null", "1 1 0", "3 0.5", "daub4", "1 0.001 -250", "3 0 0.0"}));
}

class WriteSensitivityInput : public ::testing::Test {
protected:
    void SetUp() override {
        initialise_inversion_form(session);
        context.run_directory = dir.path();
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    RunContext context;
};

TEST_F(WriteSensitivityInput, WritesBothFilesWithCrLfAndSetsTheSuffix) {
    session.definition = definition_for(method_ubc_mag_v5);
    session.definition.wavelet_type = 1;  // the row "daub2" of the list
    write_weighting_input(session, context);
    write_sensitivity_input(session, context);
    EXPECT_EQ(context.thread_suffix, " 4");
    EXPECT_EQ(read_file_bytes(dir.path() / "mag_weights.inp"), "MAG\r\nmesh\r\nmag.obs\r\ntopo.dat\r\n1\r\n3 0.5\r\n");
    EXPECT_EQ(read_file_bytes(dir.path() / "magsen3d.inp"),
              "mesh\r\nmag.obs\r\ntopo.dat\r\ndepth_weight.txt\r\ndaub2\r\n1 0.001\r\n1\r\n");
}

TEST_F(WriteSensitivityInput, GravityV2WritesNeitherFile) {
    session.definition = definition_for(method_ubc_grav_v2);
    context.thread_suffix = "stale";
    write_weighting_input(session, context);
    write_sensitivity_input(session, context);
    EXPECT_EQ(context.thread_suffix, "");
    EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

}  // namespace
}  // namespace invsetup
