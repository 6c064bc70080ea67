// tests/commands/read_save_commands_test.cpp - the file menu's read and save of a definition.
#include "commands/commands.h"

#include <gtest/gtest.h>

#include "definition/parameter_file.h"
#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::read_file_bytes;
using testing::write_file_bytes;

class FileCommands : public ::testing::Test {
protected:
    void SetUp() override {
        session.working_directory = dir.path();
        initialise_inversion_form(session);
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
};

TEST_F(FileCommands, ReadOfAMissingFileSaysSo) {
    dialogue.file_answers.push_back((dir.path() / "absent.inp").string());
    EXPECT_EQ(read_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"That file does not exist"});
    EXPECT_EQ(dialogue.file_requests.at(0).title, "Select the inversion definition file");
    EXPECT_EQ(dialogue.file_requests.at(0).filter, "Inversion definition Files|*.inp;*.inp|All files (*.*)|*.*");
}

TEST_F(FileCommands, ReadOfABlankFileSaysItIsEmptyAndKeepsTheDirectory) {
    write_file_bytes(dir.path() / "blank.inp", "\r\n   \r\n");
    session.working_directory = dir.path() / "elsewhere";
    dialogue.file_answers.push_back((dir.path() / "blank.inp").string());
    EXPECT_EQ(read_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The specified file was empty"});
    EXPECT_EQ(session.working_directory, dir.path() / "elsewhere");
}

TEST_F(FileCommands, CancelledReadDoesNothing) {
    EXPECT_EQ(read_command(session, 0), 1);
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(FileCommands, FaultWhileReadingNamesTheFile) {
    // Eight data types overflow the seven slots: a fault inside the reader, caught by the command.
    write_file_bytes(dir.path() / "many.inp", "Version 3.0\r\nObs data types  : 1 2 3 4 5 6 20 21\r\n");
    dialogue.file_answers.push_back((dir.path() / "many.inp").string());
    EXPECT_EQ(read_command(session, 0), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_TRUE(dialogue.messages[0].starts_with("An error occurred while reading the parameter file many.inp: "))
        << dialogue.messages[0];
}

TEST_F(FileCommands, ReadSetsTheCaptionToTheFileName) {
    save_inversion_parameters(session.definition, "", dir.path() / "run one.inp");
    dialogue.file_answers.push_back((dir.path() / "run one.inp").string());
    EXPECT_EQ(read_command(session, 0), 0);
    EXPECT_EQ(session.form.control("Form_mag3d").caption, "3D inversion setup: run one.inp");
}

TEST_F(FileCommands, SaveStopsWhenTheChecksRefuseTheDefinition) {
    session.form.set_text("Text_cell_size", 0, "");  // no mesh: the checks refuse it
    EXPECT_EQ(save_command(session), -1);
    EXPECT_TRUE(dialogue.file_requests.empty());
}

TEST_F(FileCommands, SaveAddsTheExtensionWhenTheNameHasNone) {
    dialogue.file_answers.push_back((dir.path() / "model").string());
    dialogue.file_answers.push_back((dir.path() / "model.txt").string());
    EXPECT_EQ(choose_and_save_parameter_file(session), 0);
    EXPECT_EQ(choose_and_save_parameter_file(session), 0);
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "model.inp"));
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "model.txt"));
    EXPECT_EQ(dialogue.file_requests.at(0).title, "Select the inversion definition file to create");
    EXPECT_EQ(dialogue.file_requests.at(0).default_extension, "inp");
    EXPECT_TRUE(dialogue.questions.empty());
}

TEST_F(FileCommands, SaveAsksBeforeReplacingAndNoKeepsTheFile) {
    write_file_bytes(dir.path() / "keep.inp", "old");
    dialogue.answer_yes = false;
    dialogue.file_answers.push_back((dir.path() / "keep.inp").string());
    EXPECT_EQ(choose_and_save_parameter_file(session), 1);
    EXPECT_EQ(dialogue.questions, std::vector<std::string>{"That file already, exists, overwrite?"});
    EXPECT_EQ(read_file_bytes(dir.path() / "keep.inp"), "old");

    dialogue.answer_yes = true;
    session.form.set_text("Text_description", "line one\r\nline two");
    dialogue.file_answers.push_back((dir.path() / "keep.inp").string());
    EXPECT_EQ(choose_and_save_parameter_file(session), 0);
    EXPECT_TRUE(read_file_bytes(dir.path() / "keep.inp").ends_with("[Comments]\r\nline one\r\nline two\r\n"));
}

}  // namespace
}  // namespace invsetup
