// tests/commands/form_commands_test.cpp - the form's buttons and menus as a window presses them:
// starting a run, one long command at a time, the utility forms, directories and the mode menu.
#include "commands/form_commands.h"

#include <gtest/gtest.h>

#include "commands/commands.h"
#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;
using testing::write_file_bytes;

/// Records what the commands ask of the window and answers as told.
class FakeHost : public CommandHost {
public:
    bool start_process(const fs::path& program, const fs::path& directory) override {
        started.emplace_back(program, directory);
        return start_succeeds;
    }
    std::optional<std::string> choose_directory(const std::string&, const std::string&) override { return directory; }
    bool calculate_igrf(GeomagneticField& result) override {
        if (!igrf) return false;
        result = *igrf;
        return true;
    }
    bool define_point_transform(PointTransform& transform) override {
        if (!transform_answer) return false;
        transform = *transform_answer;
        return true;
    }
    void refresh_directories() override { ++refreshes; }
    void close_form() override { closed = true; }

    std::vector<std::pair<fs::path, fs::path>> started;
    bool start_succeeds = true;
    std::optional<std::string> directory;
    std::optional<GeomagneticField> igrf;
    std::optional<PointTransform> transform_answer;
    int refreshes = 0;
    bool closed = false;
};

class FormCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        session.working_directory = dir.path();
        initialise_inversion_form(session);
        register_form_commands(session, host, state);
        session.form.set_text("Drive1", "/");
        session.form.set_text("Dir1", dir.path().string());
        session.form.set_text("Text_directory_name", "run1");
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    FakeHost host;
    FormCommands state;
    TempDir dir;
};

TEST_F(FormCommandsTest, StartRunsTheShellTwinOfTheBatchFileInTheRunDirectory) {
    const fs::path run = dir.path() / "run1";
    fs::create_directories(run);
    write_file_bytes(run / "run_inversion.bat", "rem\r\n");
    session.form.raise_change("Command_start_inversion");
#ifndef _WIN32
    // Without a twin this system can't run the package: the message says so and nothing starts.
    EXPECT_TRUE(host.started.empty());
    EXPECT_EQ(dialogue.messages.back().rfind("The shell script ", 0), 0u);

    write_file_bytes(run / "run_inversion.sh", "#!/bin/sh\n");
    session.form.raise_change("Command_start_inversion");
    ASSERT_EQ(host.started.size(), 1u);
    EXPECT_EQ(host.started[0].first, run / "run_inversion.sh");
#else
    ASSERT_EQ(host.started.size(), 1u);
    EXPECT_EQ(host.started[0].first, run / "run_inversion.bat");
#endif
    EXPECT_EQ(host.started[0].second, run);
    EXPECT_EQ(dialogue.messages.back(), "The 3D inversion process has been started");

    host.start_succeeds = false;
    session.form.raise_change("Command_start_inversion");
    EXPECT_NE(dialogue.messages.back().find("could not be started"), std::string::npos);
}

TEST_F(FormCommandsTest, OneLongCommandAtATimeAndTheButtonsComeBackAsTheyWere) {
    FormModel& form = session.form;
    form.set_checked("Check_generate_inversion_variation", true);
    form.set_checked("Check_generate_inversion_variation", false);
    ASSERT_FALSE(form.control("Command_create_inversion", 2).enabled);  // variation off
    state.busy = true;
    session.form.raise_change("Command_create_inversion", 0);
    EXPECT_EQ(dialogue.beeps, 1);
    EXPECT_TRUE(dialogue.messages.empty());
    state.busy = false;

    // A create that fails at its first test: the buttons are off while it runs, back afterwards.
    form.set_text("Text_directory_name", "");
    form.set_text("Text_progress", "earlier run");
    std::vector<bool> enabled_during;
    form.subscribe([&](const Control& control, ControlProperty property) {
        if (property == ControlProperty::value && control.declared->name == "Text_progress")
            enabled_during.push_back(form.control("Command_create_inversion", 0).enabled);
    });
    form.raise_change("Command_create_inversion", 0);
    EXPECT_EQ(dialogue.messages.back(), "No output directory name has been specified");
    EXPECT_EQ(enabled_during, std::vector<bool>{false});
    EXPECT_TRUE(form.control("Command_create_inversion", 0).enabled);
    EXPECT_FALSE(form.control("Command_create_inversion", 2).enabled);
    EXPECT_TRUE(form.control("Command_start_inversion").enabled);
    EXPECT_FALSE(state.busy);
}

TEST_F(FormCommandsTest, SizeEstimateShowsTheCheckReportOfTheExample) {
    const fs::path example = testing::example_folder("magnetic");
    session.working_directory = example;
    dialogue.file_answers.push_back((example / "inversion.inp").string());
    ASSERT_EQ(read_command(session, 0), 0);
    session.form.raise_change("Command_size_estimate");
    ASSERT_FALSE(dialogue.messages.empty());
    const std::string& report = dialogue.messages.back();
    EXPECT_EQ(report.rfind("Size estimate\nCells in the mesh:        371,712\n", 0), 0u) << report;
    EXPECT_NE(report.find("Sensitivity matrix:"), std::string::npos) << report;
    EXPECT_FALSE(state.busy);
}

TEST_F(FormCommandsTest, IgrfValuesAreCopiedOnlyWhenThePersonSaysYes) {
    GeomagneticField field;
    field.intensity = 57123.456;
    field.inclination = -65.43219;
    field.declination = 11.0004;

    session.form.raise_change("Command_calculate_IGRF");  // the form closed without values
    EXPECT_TRUE(dialogue.questions.empty());

    host.igrf = field;
    dialogue.answer_yes = false;
    const std::string before = session.form.text("Text_mag_intensity");
    session.form.raise_change("Command_calculate_IGRF");
    EXPECT_EQ(dialogue.questions, std::vector<std::string>{"Copy the IGRF values?"});
    EXPECT_EQ(session.form.text("Text_mag_intensity"), before);

    dialogue.answer_yes = true;
    session.form.raise_change("Command_calculate_IGRF");
    EXPECT_EQ(session.form.text("Text_mag_intensity"), "57123.46");
    EXPECT_EQ(session.form.text("Text_mag_inclination"), "-65.432");
    EXPECT_EQ(session.form.text("Text_mag_declination"), "11.000");
    EXPECT_FLOAT_EQ(session.definition.mag_intensity, 57123.46f);  // the boxes' validators stored them
}

TEST_F(FormCommandsTest, TheTransformButtonIsRedWhileTheTransformIsOn) {
    PointTransform rotated;
    rotated.angle = 30;
    rotated.map_x0 = 500000;
    host.transform_answer = rotated;
    session.form.raise_change("Command_define_coordinate_transform");
    EXPECT_TRUE(session.definition.coordinate_transform.active);
    EXPECT_DOUBLE_EQ(session.definition.coordinate_transform.map_x0, 500000);
    EXPECT_EQ(session.form.control("Command_define_coordinate_transform").back_colour, colour_red);

    host.transform_answer.reset();  // cancelled: the transform stays
    session.form.raise_change("Command_define_coordinate_transform");
    EXPECT_TRUE(session.definition.coordinate_transform.active);

    host.transform_answer = PointTransform{};
    session.form.raise_change("Command_define_coordinate_transform");
    EXPECT_FALSE(session.definition.coordinate_transform.active);
    EXPECT_EQ(session.form.control("Command_define_coordinate_transform").back_colour, colour_window);
}

TEST_F(FormCommandsTest, DirectoryButtonsAndTheWorkingDirectory) {
    FormModel& form = session.form;
    form.raise_change("Command_make_folder");
    EXPECT_TRUE(fs::is_directory(dir.path() / "run1"));
    EXPECT_EQ(host.refreshes, 1);
    form.set_text("Text_directory_name", " ");
    form.raise_change("Command_make_folder");
    EXPECT_EQ(dialogue.messages.back(), "No output directory name has been specified");

    form.set_text("Dir1", (dir.path() / "run1").string() + "/");
    form.raise_change("Command_copy_dir_name");
    EXPECT_EQ(form.text("Text_directory_name"), "run1");

    form.raise_change("Command_set_cur_dir");
    EXPECT_EQ(session.working_directory, dir.path() / "run1");
    EXPECT_TRUE(session.working_directory_changed);

    host.directory = (dir.path()).string();
    form.raise_change("menu_working_directory");
    EXPECT_EQ(session.working_directory, dir.path());
    EXPECT_EQ(form.text("Dir1"), dir.path().string());
}

TEST_F(FormCommandsTest, TheTilingOverlayOpensOnDemandAndItsShiftArrowsSayWhatTheyDo) {
    EXPECT_FALSE(session.form.control("Frame_tiling_layout").visible);
    EXPECT_EQ(spin_tip(session, 10), "Shift the min and max x location");
    EXPECT_EQ(spin_tip(session, 11), "Shift the min and max y location");
    EXPECT_EQ(spin_tip(session, 0), "");
    session.definition.refinement_mode = 1;
    EXPECT_EQ(spin_tip(session, 10), "Increase/decrease the tile overlap");
}

TEST_F(FormCommandsTest, MenusSwitchTheModeCloseTheFormAndOpenChoosers) {
    FormModel& form = session.form;
    form.raise_change("menu_define_inversion_mode", 1);
    EXPECT_EQ(session.definition.refinement_mode, 1);
    EXPECT_TRUE(form.control("menu_define_inversion_mode", 0).visible);
    EXPECT_FALSE(form.control("menu_define_inversion_mode", 1).visible);
    form.raise_change("menu_define_inversion_mode", 0);
    EXPECT_EQ(session.definition.refinement_mode, 0);

    form.raise_change("menu_read_inversion_model");
    EXPECT_EQ(dialogue.messages.back(), "No mesh file has been specified");
    form.raise_change("menu_read_inversion_mesh");  // cancelled chooser
    EXPECT_EQ(dialogue.file_requests.back().title, "Select the mesh definition file");

    double_click_control(session, "Text_initial_file", no_index);
    EXPECT_EQ(dialogue.file_requests.back().title, "Select the initial model file");
    double_click_control(session, "Text_data_locations", 1);
    EXPECT_EQ(dialogue.file_requests.back().title.rfind("Select the topo", 0), 0u);
    const std::size_t asked = dialogue.file_requests.size();
    double_click_control(session, "Text_alpha_s", no_index);  // not a file box
    EXPECT_EQ(dialogue.file_requests.size(), asked);

    form.raise_change("menu_exit");
    EXPECT_TRUE(host.closed);
}

}  // namespace
}  // namespace invsetup
