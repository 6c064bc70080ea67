// tests/commands/limits_commands_test.cpp - the mesh limits from the extent of a data file.
#include "commands/limits_commands.h"

#include <gtest/gtest.h>

#include <string>

#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace {

using namespace invsetup;
using invsetup::testing::TempDir;
using invsetup::testing::write_file_bytes;

class SetLimits : public ::testing::Test {
protected:
    void SetUp() override {
        session.working_directory = dir.path();
        InversionDefinition& definition = session.definition;
        definition.mesh_min = {0, 0, 0, 0};
        definition.mesh_max = {2000, 4000, 100, 0};
        definition.mesh_cell_size = {100, 100, 25, 1};
        definition.mesh_cell_count = {20, 40, 4, 0};
        session.record.mesh_cell_size = definition.mesh_cell_size;
    }
    /// A point file in `slot` with a header line and x, y, z in columns 1 to 3.
    void use_points(int slot, const std::string& name, const std::string& bytes) {
        write_file_bytes(dir.path() / name, bytes);
        InversionDefinition& definition = session.definition;
        const auto s = static_cast<std::size_t>(slot);
        definition.data_file_names[s] = (dir.path() / name).string();
        definition.data_file_kinds[s] = 0;
        definition.data_first_lines[s] = 2;
        definition.data_read_steps[s] = 1;
        definition.data_x_columns[s] = 1;
        definition.data_y_columns[s] = 2;
        definition.data_z_columns[s] = 3;
    }

    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
};

TEST_F(SetLimits, TopographySetsTheZLimitsAndADepthOfAQuarterOfTheWidth) {
    use_points(1, "topo.xyz", "x y z\r\n10 10 512\r\n1990 10 788\r\n1000 3990 600\r\n");
    InversionDefinition& definition = session.definition;
    definition.inversion_method = method_ubc_mag_v5;
    ASSERT_EQ(Command_set_limits_from_file(session, 1), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    EXPECT_DOUBLE_EQ(definition.mesh_max[2], 800);  // 788 up to a multiple of 25
    EXPECT_DOUBLE_EQ(definition.mesh_min[2], -500);  // 2000 / 4 below zero, deeper than 500
    EXPECT_EQ(session.form.text("Text_min_val", 2), "-500");
    EXPECT_EQ(session.form.text("Text_max_val", 2), "800");

    // The button of the Topo Data tab does the same.
    definition.inversion_method = method_zarninv3d;
    definition.mesh_max = {2000, 4000, 100, 0};
    session.form.raise_change("Command_set_limits_from_file", 1);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_DOUBLE_EQ(definition.mesh_max[2], 0);
    EXPECT_DOUBLE_EQ(definition.mesh_min[2], -500);
}

TEST_F(SetLimits, ObservedDataSetsTheXAndYLimitsOnCellMultiples) {
    use_points(0, "mag.csv", "x,y,z,tmi\r\n1030,2010,100,50\r\n1970,2990,100,70\r\n");
    InversionDefinition& definition = session.definition;
    definition.data_value_columns = {4, 0, 0};
    definition.values_per_cell = 1;
    session.form.set_text("Text_UBC_locations_valcount", "1");
    ASSERT_EQ(Command_set_limits_from_file(session, 0), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    EXPECT_DOUBLE_EQ(definition.mesh_min[0], 1000);
    EXPECT_DOUBLE_EQ(definition.mesh_max[0], 2000);
    EXPECT_DOUBLE_EQ(definition.mesh_min[1], 2000);
    EXPECT_DOUBLE_EQ(definition.mesh_max[1], 3000);
    EXPECT_FLOAT_EQ(definition.regional_base, 60.0f);
    EXPECT_EQ(session.form.text("Text_UBC_regional_field"), "60.0");
}

TEST_F(SetLimits, AnUnreadableFileChangesNothing) {
    session.definition.data_file_names[1] = (dir.path() / "absent.xyz").string();
    EXPECT_EQ(Command_set_limits_from_file(session, 1), -1);
    EXPECT_DOUBLE_EQ(session.definition.mesh_max[0], 2000);
    EXPECT_EQ(dialogue.messages.size(), 1u);
}

}  // namespace
