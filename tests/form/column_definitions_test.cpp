// tests/form/column_definitions_test.cpp - data file kinds and column names over the column boxes.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "form/column_definitions.h"
#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace {

using namespace invsetup;
using invsetup::testing::TempDir;
using invsetup::testing::write_file_bytes;

TEST(DetectLineMode, CarriageReturnsMeanPlainLines) {
    std::istringstream windows("x,y\r\n1,2\r\n");
    EXPECT_EQ(detect_line_mode(windows), 0);
    EXPECT_EQ(windows.get(), 'x');  // put back at the start

    std::istringstream unix_lines("x,y\n1,2\n");
    EXPECT_EQ(detect_line_mode(unix_lines), 1);
    std::istringstream marked("\xEF\xBB\xBFx,y\r\n");
    EXPECT_EQ(detect_line_mode(marked), 1);
    std::istringstream late(std::string(512, 'a') + "\r\n");  // the CR is beyond the bytes looked at
    EXPECT_EQ(detect_line_mode(late), 1);
}

class ColumnDefinitions : public ::testing::Test {
protected:
    void SetUp() override { session.working_directory = dir.path(); }
    void use_file(int slot, const std::string& name, const std::string& bytes) {
        write_file_bytes(dir.path() / name, bytes);
        session.definition.data_file_names[static_cast<std::size_t>(slot)] = (dir.path() / name).string();
    }
    const std::string& box(const char* name, int index) { return session.form.text(name, index); }

    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
};

TEST_F(ColumnDefinitions, KindIsFoundWhenTheFileIsShown) {
    use_file(1, "topo.csv", "x,y,z\r\n1,2,3\r\n");
    session.definition.data_file_kinds[1] = 1;
    display_data_file(session, 1);
    EXPECT_EQ(session.definition.data_file_kinds[1], 0);
    EXPECT_EQ(box("Text_data_file", 1), "x,y,z\r\n1,2,3");
    EXPECT_EQ(box("Text_data_locations", 1), "topo.csv");
    EXPECT_EQ(session.definition.topo_type, 0);
    EXPECT_TRUE(session.form.checked("Check_topo_type", 0));
    EXPECT_TRUE(session.form.control("Picture_topo_points").visible);

    // A topography grid shows in its own picture, in place of the format; the points picture goes.
    use_file(1, "topo.asc", "ncols 2\nnrows 2\nxllcorner 0\nyllcorner 0\ncellsize 10\n1 2\n3 4\n");
    display_data_file(session, 1);
    EXPECT_EQ(session.definition.data_file_kinds[1], 1);
    EXPECT_TRUE(session.form.control("Frame_data_file_image", 1).visible);
    EXPECT_FALSE(session.form.control("Frame_data_file_definitions", 1).visible);
    EXPECT_FALSE(session.form.control("Picture_topo_points").visible);
    use_file(1, "topo.csv", "x,y,z\r\n1,2,3\r\n");
    display_data_file(session, 1);
    EXPECT_TRUE(session.form.control("Picture_topo_points").visible);
    EXPECT_TRUE(session.form.control("Frame_data_file_definitions", 1).visible);

    use_file(0, "survey.gdb", "binary");
    display_data_file(session, 0);
    EXPECT_EQ(session.definition.data_file_kinds[0], 2);

    // A named topography file that has gone missing keeps the surface from the data file (the
    // checks then ask for it); only an empty name turns to the top of the mesh.
    session.definition.data_file_names[1] = (dir.path() / "absent.xyz").string();
    display_data_file(session, 1);
    EXPECT_EQ(session.definition.data_file_kinds[1], 0);
    EXPECT_EQ(session.definition.topo_type, 0);
    session.definition.data_file_names[1].clear();
    display_data_file(session, 1);
    EXPECT_EQ(session.definition.topo_type, 1);
    EXPECT_TRUE(session.form.checked("Check_topo_type", 1));
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(ColumnDefinitions, NamesComeFromTheNameLineAndShowInTheBoxes) {
    use_file(1, "topo.csv", "skip me\r\n# east, north ,elev\r\n1,2,3\r\n");
    InversionDefinition& definition = session.definition;
    definition.data_name_lines[1] = 2;
    definition.data_x_columns[1] = 1;
    definition.data_y_columns[1] = 2;
    definition.data_z_columns[1] = 5;  // beyond the names: shown empty, kept
    display_data_file(session, 1);
    display_location_column_definitions(session, 1);
    EXPECT_EQ(definition.column_name_count[1], 3);
    ASSERT_EQ(session.form.row_count("Combo_names", 1), 4);
    EXPECT_EQ(session.form.control("Combo_names", 1).rows[0].text, "N/A");
    EXPECT_EQ(session.form.control("Combo_names", 1).rows[1].text, "east");
    EXPECT_EQ(box("Text_UBC_locations_xpos", 1), "east");
    EXPECT_EQ(box("Text_UBC_locations_ypos", 1), "north");
    EXPECT_EQ(box("Text_UBC_locations_zpos", 1), "");
    EXPECT_EQ(definition.data_z_columns[1], 5);
    EXPECT_FALSE(session.form.control("Combo_names", 1).visible);

    // A name line past the end of the file loads nothing.
    definition.data_name_lines[1] = 9;
    load_location_column_names(session, 1);
    EXPECT_EQ(definition.column_name_count[1], 0);
}

TEST_F(ColumnDefinitions, WithoutNamesTheBoxesShowAndTakeNumbers) {
    use_file(0, "mag.xyz", "1 2 3 4\n");
    InversionDefinition& definition = session.definition;
    definition.data_name_lines[0] = 0;
    definition.data_x_columns[0] = 0;
    definition.data_y_columns[0] = 2;
    definition.data_z_columns[0] = 0;
    definition.data_value_columns = {4, 0, 0};
    definition.line_column = -1;
    display_data_file(session, 0);
    display_location_column_definitions(session, 0);
    EXPECT_EQ(box("Text_UBC_locations_xpos", 0), "0");  // x and y always show a number
    EXPECT_EQ(box("Text_UBC_locations_zpos", 0), "");
    EXPECT_EQ(box("Text_UBC_locations_magpos", 0), "4");
    EXPECT_EQ(box("Text_UBC_locations_lpos", no_index), "");

    session.form.set_text("Text_UBC_locations_zpos", 0, "3");
    session.form.set_text("Text_UBC_locations_magpos", 1, "6.5");  // half to even
    session.form.set_text("Text_UBC_locations_xpos", 0, "col");     // left alone
    session.form.set_text("Text_UBC_locations_valpos", no_index, " ");
    EXPECT_EQ(definition.data_z_columns[0], 3);
    EXPECT_EQ(definition.data_value_columns[1], 6);
    EXPECT_EQ(definition.data_x_columns[0], 0);
    EXPECT_EQ(definition.extra_value_column, 0);
}

TEST_F(ColumnDefinitions, TheNameListPicksAColumnForTheBoxItOpensOver) {
    use_file(0, "mag.csv", "x,y,z,tmi\r\n1,2,3,4\r\n");
    InversionDefinition& definition = session.definition;
    definition.data_name_lines[0] = 1;
    definition.data_value_columns = {4, 0, 0};
    display_data_file(session, 0);
    display_location_column_definitions(session, 0);

    click_column_box(session, "Text_UBC_locations_magpos", 0);
    EXPECT_TRUE(session.form.control("Combo_names", 0).visible);
    EXPECT_EQ(session.form.list_index("Combo_names", 0), 4);
    EXPECT_EQ(definition.picked_column, 4);
    EXPECT_EQ(definition.data_value_columns[0], 4);  // opening it changed nothing

    session.form.set_list_index("Combo_names", 0, 3);
    EXPECT_FALSE(session.form.control("Combo_names", 0).visible);
    EXPECT_EQ(definition.data_value_columns[0], 3);
    EXPECT_EQ(box("Text_UBC_locations_magpos", 0), "z");

    click_column_box(session, "Text_UBC_locations_magpos", 0);
    session.form.set_list_index("Combo_names", 0, 0);  // "N/A" clears the column
    EXPECT_EQ(definition.data_value_columns[0], 0);
    EXPECT_EQ(box("Text_UBC_locations_magpos", 0), "N/A");
}

TEST_F(ColumnDefinitions, NameLineBoxReloadsAndABadEntryGoesBack) {
    use_file(1, "topo.csv", "e,n,h\r\n1,2,3\r\n");
    display_data_file(session, 1);
    session.definition.data_name_lines[1] = 0;
    session.definition.data_x_columns[1] = 1;
    session.form.set_text("Text_UBC_locations_name_line", 1, "1");
    leave_column_definition_box(session, "Text_UBC_locations_name_line", 1);
    EXPECT_EQ(session.definition.data_name_lines[1], 1);
    EXPECT_EQ(box("Text_UBC_locations_xpos", 1), "e");

    session.form.set_text("Text_UBC_locations_nhead", 1, "two");
    leave_column_definition_box(session, "Text_UBC_locations_nhead", 1);
    EXPECT_EQ(box("Text_UBC_locations_nhead", 1), std::to_string(session.definition.data_first_lines[1]));
    EXPECT_EQ(dialogue.beeps, 1);
}

}  // namespace
