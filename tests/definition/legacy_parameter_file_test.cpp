// tests/definition/legacy_parameter_file_test.cpp - the older positional file: a hand-made file
// against its Version 3.0 twin, both layouts written and read back, refused kinds.
#include "definition/legacy_parameter_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "commands/commands.h"
#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::file_text;
using testing::test_data;

struct ReadSession {
    HeadlessDialogue dialogue;
    Session session{dialogue};
};

// Reads the text as read_command would after the version line; returns the status.
int read_legacy(ReadSession& s, const std::string& text) {
    std::istringstream file(text);
    std::string version_line;
    std::getline(file, version_line);
    int line_count = 0, status = 0;
    read_inversion_parameters_V1(s.session, file, 0, line_count, status);
    return status;
}

TEST(LegacyParameterFile, HandMadeFileFillsTheFormLikeItsVersionThreeTwin) {
    ReadSession legacy, twin;
    for (ReadSession* s : {&legacy, &twin}) initialise_inversion_form(s->session);
    legacy.dialogue.file_answers.push_back(test_data("definition/legacy_v1.inp").string());
    twin.dialogue.file_answers.push_back(test_data("definition/twin_v3.inp").string());
    ASSERT_EQ(read_command(legacy.session, 0), 0) << (legacy.dialogue.messages.empty() ? "" : legacy.dialogue.messages[0]);
    ASSERT_EQ(read_command(twin.session, 0), 0);

    // The one difference on purpose: a version 3 file counts its -1 data types.
    EXPECT_EQ(legacy.session.record.data_type_count, 1);
    EXPECT_EQ(twin.session.record.data_type_count, 3);
    twin.session.record.data_type_count = 1;
    EXPECT_TRUE(static_cast<const InversionFields&>(legacy.session.record) ==
                static_cast<const InversionFields&>(twin.session.record));
    EXPECT_EQ(legacy.session.record.comments, "Converted test definition");

    std::vector<const Control*> legacy_controls = legacy.session.form.controls();
    std::vector<const Control*> twin_controls = twin.session.form.controls();
    ASSERT_EQ(legacy_controls.size(), twin_controls.size());
    for (std::size_t i = 0; i < legacy_controls.size(); ++i) {
        const Control& a = *legacy_controls[i];
        const Control& b = *twin_controls[i];
        if (a.declared->name == "Form_mag3d") continue;  // the caption names the file
        EXPECT_EQ(a.text, b.text) << a.declared->name << "(" << a.declared->index << ")";
        EXPECT_EQ(a.list_index, b.list_index) << a.declared->name << "(" << a.declared->index << ")";
        EXPECT_EQ(a.checked, b.checked) << a.declared->name << "(" << a.declared->index << ")";
        EXPECT_EQ(a.visible, b.visible) << a.declared->name << "(" << a.declared->index << ")";
    }
}

InversionFields held_definition() {
    InversionFields d;
    d.inversion_method = 2;
    d.mesh_min = {1000, 5000, 100, 0};
    d.mesh_max = {2000, 6000, 400, 0};
    d.mesh_cell_size = {25, 20, 10, 1.2};
    d.mesh_cell_count = {40, 50, 30, 5};
    d.data_first_lines = {3, 2};
    d.data_read_steps = {1, 2};
    d.data_value_columns[0] = 5;
    d.model_bounds_files[0] = "bounds.bnd";
    d.rock_property_file = "rocks.lkp";
    d.topo_type = 1;
    d.background_topo = -1e32f;
    d.trade_off_parameter = 0.25f;
    d.alpha_method = 1;
    d.weighting_znot = 7.5f;
    d.positivity_flag = 3;
    d.padding_multipliers[1] = "1,2";
    d.coordinate_transform.angle = 15;
    return d;
}

TEST(LegacyParameterFile, PlainLayoutReadsBackWhatItHolds) {
    InversionFields d = held_definition();
    std::vector<std::string> lines = legacy_parameter_file_lines(d, "old\tnote", "");
    EXPECT_EQ(lines[0], "Version 1.0");
    EXPECT_EQ(lines[1], "4 1");  // method 2
    EXPECT_EQ(lines[9], ".|.|.");
    ReadSession s;
    ASSERT_EQ(read_legacy(s, file_text(lines)), 0);
    InversionFields expected = d;
    update_point_transform(expected.coordinate_transform);
    EXPECT_TRUE(static_cast<const InversionFields&>(s.session.record) == expected);
    EXPECT_EQ(s.session.record.comments, "old note");
}

TEST(LegacyParameterFile, RefinedLayoutKeepsMeshNameAndTileValues) {
    InversionFields d = held_definition();
    d.refinement_mode = 1;
    d.topo_type = 0;
    d.x_tile_size = 64;
    d.y_tile_size = 96;
    d.tile_overlap = 12;
    d.tile_xy_blend = 6;
    d.tile_z_blend = 3;
    d.tile_min_points = 50;
    d.tile_order = {1, 0, 1};
    std::vector<std::string> lines = legacy_parameter_file_lines(d, "", "C:\\runs\\coarse\\mesh.msh");
    EXPECT_EQ(lines[1], "C:\\runs\\coarse\\mesh.msh");
    ReadSession s;
    ASSERT_EQ(read_legacy(s, file_text(lines)), 0);
    EXPECT_EQ(s.session.original_mesh_name, "C:\\runs\\coarse\\mesh.msh");
    InversionFields expected = d;
    update_point_transform(expected.coordinate_transform);
    EXPECT_TRUE(static_cast<const InversionFields&>(s.session.record) == expected);
}

TEST(LegacyParameterFile, KindTheFormatCantHoldIsRefusedOnce) {
    ReadSession s;
    std::vector<std::string> lines = legacy_parameter_file_lines(held_definition(), "", "");
    lines[1] = "5 1";
    EXPECT_EQ(read_legacy(s, file_text(lines)), -1);
    EXPECT_EQ(s.dialogue.messages, std::vector<std::string>{"Palvue cannot handle this file format"});
    EXPECT_EQ(s.session.record.inversion_method, 4);  // nothing taken
}

TEST(LegacyParameterFile, NumbersTheirFieldCantHoldAreRefusedNamingTheLineAndTheNumber) {
    const struct {
        std::size_t line;
        const char* text;
        const char* reason;
    } cases[] = {
        {3, "1000.000000 1e309", "value line 3 (the version line not counted) holds 1e309, too large for a number"},
        {5, "25.0 1e10", "value line 5 (the version line not counted) holds 1e10, too large for a whole number"},
        {13, "0.0000 1e39 0.00 0 0.0000 1.0000",
         "value line 13 (the version line not counted) holds 1e39, too large for a single real"},
        {20, "65.00 -12.00 -1e39", "value line 20 (the version line not counted) holds -1e39, too large for a single real"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        std::vector<std::string> lines = testing::lines_of(test_data("definition/legacy_v1.inp"));
        lines.at(c.line) = c.text;
        ReadSession s;
        s.session.working_directory = test_data("definition");
        try {
            read_legacy(s, file_text(lines));
            ADD_FAILURE() << "was read";
        } catch (const std::runtime_error& fault) {
            EXPECT_EQ(std::string(fault.what()), c.reason);
        }
    }
}

TEST(LegacyParameterFile, DataFileGivenUpOnEndsTheRead) {
    ReadSession s;
    InversionFields d = held_definition();
    d.data_file_names[0] = "nowhere/missing.csv";
    EXPECT_EQ(read_legacy(s, file_text(legacy_parameter_file_lines(d, "", ""))), -1);
    EXPECT_FALSE(s.dialogue.questions.empty());  // the person was asked and gave up
}

}  // namespace
}  // namespace invsetup
