// tests/definition/parameter_file_test.cpp - the Version 3.0 parameter file: lines by hand, round
// trips, and the reader's deliberate quirks.
#include "definition/parameter_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/numbers.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::file_text;
using testing::TempDir;
using testing::lines_of;
using testing::read_file_bytes;
using testing::test_data;

ParameterRecord read_text(const std::string& text, int group = 0, ParameterRecord record = {}) {
    std::istringstream file(text);
    int version = 0;
    EXPECT_TRUE(read_parameter_file_version(file, version));
    int line_count = 0, status = -1;
    read_inversion_parameters(record, version, file, group, line_count, status);
    EXPECT_EQ(status, 0);
    return record;
}

// The expected file is worked out from the layout of the file, not from the writer.
TEST(ParameterFileLines, DefaultDefinitionLineByLine) {
    EXPECT_EQ(parameter_file_lines(InversionFields{}, ""), lines_of(test_data("definition/default_v3.inp")));
}

TEST(ParameterFileLines, MeshRowsCalculationTypesAndTransformSection) {
    InversionFields d;
    d.mesh_min = {500000, 7000000, 200, 0};
    d.mesh_max = {504000, 7004000, 1200, 0};
    d.mesh_cell_size = {50, 50, 25, 1.5};
    d.mesh_cell_count = {80, 80, 40, 6};
    d.calculation_data_types = {0, 3, -1, 5, -1, -1, -1};  // the run stops at the first negative
    d.coordinate_transform.angle = -12.5;
    d.coordinate_transform.x_scale = 0.5;
    d.coordinate_transform.map_x0 = 500000;
    d.coordinate_transform.map_y0 = 7000000;
    const std::vector<std::string> lines = parameter_file_lines(d, "first\r\n\r\nthird");
    EXPECT_EQ(lines[4], "X Range: 500000.000000 504000.0000000 50.0000000 80.0000000");
    EXPECT_EQ(lines[5], "Y Range: 7000000.000000 7004000.0000000 50.0000000 80.0000000");
    EXPECT_EQ(lines[6], "Z Range: 200.000000 1200.0000000 25.0000000 40.0000000 1.5000000 6.0000000");
    EXPECT_EQ(lines[18], "Calculation data types  : 0 3");
    EXPECT_EQ(lines[19], "Data file type: 0 ! 0=point, 1=grid");
    const std::vector<std::string> tail(lines.end() - 8, lines.end());
    EXPECT_EQ(tail, (std::vector<std::string>{"[Coordinate transform]", "-12.5  0  1 ", " 0  .5  500000  0  0 ",
                                              " 0  1  7000000  0  0 ", "[Comments]", "first", "", "third"}));
}

TEST(ParameterFileLines, BlankBackgroundTopoWritesDigitsAndLetterE) {
    InversionFields d;
    d.background_topo = null_value_single;
    const std::string row = parameter_file_lines(d, "")[16];
    EXPECT_TRUE(row.starts_with("Background removal  : 0 0.0000 -1000000")) << row;
    EXPECT_TRUE(row.ends_with("0.0000E")) << row;
    EXPECT_EQ(read_text(file_text(parameter_file_lines(d, ""))).background_topo, null_value_single);
}

TEST(CommentLines, CleanedTrimmedAndLeadingEmptyLinesDropped) {
    EXPECT_EQ(comment_lines("\r\n  \n\tfirst\tline  \rsecond\xE9\x7F\r\n\r\n"),
              (std::vector<std::string>{"first line", "second", "", ""}));
    EXPECT_TRUE(comment_lines("").empty());
}

// The reader makes first lines and read steps below 1 into 1, so a definition that survives a
// round trip has them set, as every definition from the form has.
InversionFields readable_definition() {
    InversionFields d;
    d.data_first_lines = {2, 1};
    d.data_read_steps = {1, 1};
    return d;
}

InversionFields varied_definition() {
    InversionFields d = readable_definition();
    d.data_x_columns = {1, 1};
    d.data_y_columns = {2, 2};
    d.data_z_columns = {3, 3};
    d.data_value_columns = {4, 5, 6};
    d.inversion_method = 6;
    d.data_type_count = 3;
    d.data_types = {1, 3, 4, -1, -1, -1, -1};
    d.calculation_data_types = {0, 1, 2, -1, -1, -1, -1};
    d.trade_off_parameter = 0.333333f;
    d.misfit_tolerance = 1e-5f;
    d.background_topo = null_value_single;
    d.background_value = -0.0125f;
    d.data_file_names[0] = "C:\\survey data\\mag.csv";
    d.data_file_names[1] = "topo.xyz";
    d.elevation_offsets = {35.25f, -2.5f, 10};
    d.error_percent = 2.5f;
    d.error_floor = 0.75f;
    d.mag_intensity = 55123.45f;
    d.mag_inclination = -65.5f;
    d.weighting_znot = 12.125f;
    d.wavelet_eps = 0.00025f;
    d.mesh_min = {500000, 7000000, 200, 0};
    d.mesh_max = {504000, 7004000, 1200, 0};
    d.mesh_cell_size = {50, 50, 25, 1.3};
    d.mesh_cell_count = {80, 80, 40, 8};
    d.weight_multipliers = "";
    return d;
}

TEST(ParameterFileRoundTrip, SaveReadSaveKeepsTheBytes) {
    TempDir dir;
    InversionFields plain = varied_definition();
    InversionFields turned = varied_definition();
    turned.coordinate_transform.angle = 33.3;
    turned.coordinate_transform.map_x0 = 512345.678;
    turned.coordinate_transform.map_y0 = -7000000.25;
    turned.coordinate_transform.y_scale = 2;
    turned.coordinate_transform.z_offset = 1e-7;
    const std::string odd_comments = "\tTabbed\tline\r\nBytes \xC3\xA9\xFF kept out\nTile overlap: 20\r\n   \r\nend";
    struct Case {
        InversionFields definition;
        std::string comments;
    };
    for (const Case& c : {Case{readable_definition(), ""}, Case{plain, odd_comments}, Case{turned, "one line"}}) {
        save_inversion_parameters(c.definition, c.comments, dir.path() / "first.inp");
        const std::string first = read_file_bytes(dir.path() / "first.inp");
        ParameterRecord record = read_text(first);
        save_inversion_parameters(record, record.comments, dir.path() / "second.inp");
        EXPECT_EQ(read_file_bytes(dir.path() / "second.inp"), first);
    }
}

TEST(ParameterFileRoundTrip, ReadsBackFieldsAndTransform) {
    InversionFields d = varied_definition();
    d.coordinate_transform.angle = 33.3;
    d.coordinate_transform.map_x0 = 512345.678;
    ParameterRecord record = read_text(file_text(parameter_file_lines(d, "note")));
    EXPECT_EQ(record.data_file_names[0], "C:\\survey data\\mag.csv");
    EXPECT_EQ(record.calculation_data_type_count, 3);
    EXPECT_EQ(record.data_type_count, 3);
    EXPECT_EQ(record.trade_off_parameter, 0.333333f);
    EXPECT_EQ(record.mesh_cell_count[3], 8);
    EXPECT_DOUBLE_EQ(record.mesh_cell_size[3], 1.3);
    EXPECT_EQ(record.weight_multipliers, "");
    EXPECT_TRUE(record.coordinate_transform.active);
    EXPECT_DOUBLE_EQ(record.coordinate_transform.map_x0, 512345.678);
    EXPECT_EQ(record.comments, "note");
}

TEST(ReadParameterVersion, IntegerPartAndMissingLine) {
    int version = -1;
    std::istringstream v25("\r\n  \r\nVersion 2.5\r\nInversion method: 1\r\n");
    EXPECT_TRUE(read_parameter_file_version(v25, version));
    EXPECT_EQ(version, 2);
    std::istringstream none("2 0\r\n1 0 0\r\n");
    EXPECT_TRUE(read_parameter_file_version(none, version));
    EXPECT_EQ(version, 0);
    std::string first;
    std::getline(none, first);
    EXPECT_EQ(first, "2 0\r");  // left for the positional reader
    std::istringstream empty("\r\n   \n");
    EXPECT_FALSE(read_parameter_file_version(empty, version));
}

TEST(ReadObsDataTypes, VersionThreeCountsMinusOneEntriesOlderStopsThere) {
    ParameterRecord v3 = read_text("Version 3.0\r\nObs data types  : 1 -1 -1\r\n");
    EXPECT_EQ(v3.data_type_count, 3);
    EXPECT_EQ(v3.data_types[1], -1);
    ParameterRecord v2 = read_text("Version 2.0\r\nObs data types  : 1 -1 -1\r\n");
    EXPECT_EQ(v2.data_type_count, 1);
    ParameterRecord words = read_text("Version 3.0\r\nObs data types  : 2 3x 4\r\nCalculation data types  : 5 -1 6\r\n");
    EXPECT_EQ(words.data_type_count, 1);  // a word that isn't wholly numeric ends the list
    EXPECT_EQ(words.calculation_data_type_count, 1);
    EXPECT_EQ(words.calculation_data_types[0], 5);
}

TEST(ReadKeyLines, SpecialRulesOfSingleKeys) {
    ParameterRecord before;
    before.data_value_columns[2] = 9;
    before.smoothness_method = 1;
    ParameterRecord r = read_text(
        "Version 3.0\r\n"
        "Obs data definitions: 0 1 0 2 3 4 5 6 7 8\r\n"  // ten values: the third value column stays
        "Topo data definitions: -1 0 0 1 2 3\r\n"
        "Depth weighting: 1 1 2.5 10\r\n"
        "Number of Threads: -4\r\n"
        "Output Debug Information: 2\r\n"
        "Z Range: 100 400 10 30 1.25 5\r\n"
        "Mag field: 65.5\r\n"  // short list: missing words read as 0
        "inversion method: 1\r\n"  // keys are exact, case included
        "Unknown key: 12\r\n",
        0, before);
    EXPECT_EQ(r.data_first_lines[0], 1);
    EXPECT_EQ(r.data_read_steps[0], 1);
    EXPECT_EQ(r.extra_value_column, 8);
    EXPECT_EQ(r.data_value_columns[2], 9);
    EXPECT_EQ(r.data_first_lines[1], 1);
    EXPECT_EQ(r.data_read_steps[1], 1);
    EXPECT_EQ(r.smoothness_method, 1);
    EXPECT_EQ(r.weighting_znot, 10.0f);
    EXPECT_EQ(r.number_of_threads, 0);
    EXPECT_EQ(r.output_debug_information, 0);
    EXPECT_DOUBLE_EQ(r.mesh_cell_size[3], 1.25);
    EXPECT_EQ(r.mesh_cell_count[3], 5);
    EXPECT_EQ(r.mag_inclination, 65.5f);
    EXPECT_EQ(r.mag_intensity, 0.0f);
    EXPECT_EQ(r.inversion_method, 4);
}

TEST(ReadKeyLines, NumbersTheirFieldCantHoldAreRefusedNamingTheLineAndTheNumber) {
    const struct {
        const char* line;
        const char* reason;
    } cases[] = {
        {"X Range: 0 1e309 10 10", "the line \"X Range\" holds 1e309, too large for a number"},
        {"Mag field: 1e39 0 50000", "the line \"Mag field\" holds 1e39, too large for a single real"},
        {"Inversion method: 4294967296", "the line \"Inversion method\" holds 4294967296, too large for a whole number"},
        {"Obs data types  : 1 1e20 -1", "the line \"Obs data types\" holds 1e20, too large for a whole number"},
        {"Obs data definitions: 2 1 1 5 1 2 3 4 0 0 1e20",
         "the line \"Obs data definitions\" holds 1e20, too large for a whole number"},
    };
    for (const auto& c : cases) {
        std::istringstream file(std::string("Version 3.0\r\n") + c.line + "\r\n");
        int version = 0, line_count = 0, status = -1;
        ASSERT_TRUE(read_parameter_file_version(file, version));
        ParameterRecord record;
        try {
            read_inversion_parameters(record, version, file, 0, line_count, status);
            ADD_FAILURE() << c.line << " was read";
        } catch (const std::runtime_error& fault) {
            EXPECT_EQ(std::string(fault.what()), c.reason);
        }
    }
}

TEST(ReadSections, CommentLineThatLooksLikeAKeyIsReadAsOne) {
    ParameterRecord r = read_text("Version 3.0\r\nTile overlap: 20\r\n[Comments]\r\n\r\n  Tile overlap: 5  \r\n\tsecond\r\n");
    EXPECT_EQ(r.tile_overlap, 5);
    EXPECT_EQ(r.comments, "Tile overlap: 5\r\nsecond");
}

TEST(ReadSections, TransformOnlyForAllOrParameterGroups) {
    const std::string text =
        "Version 3.0\r\n[Coordinate transform]\r\n 30  0  1 \r\n 0  1  500000 \r\n 0 \r\n[Comments]\r\n";
    ParameterRecord all = read_text(text, 1);
    EXPECT_EQ(all.coordinate_transform.angle, 30);
    EXPECT_EQ(all.coordinate_transform.map_x0, 500000);
    EXPECT_EQ(all.coordinate_transform.y_scale, 1);  // absent: kept
    EXPECT_TRUE(all.coordinate_transform.active);
    ParameterRecord mesh_only = read_text(text, 4);
    EXPECT_EQ(mesh_only.coordinate_transform, PointTransform{});
}

}  // namespace
}  // namespace invsetup
