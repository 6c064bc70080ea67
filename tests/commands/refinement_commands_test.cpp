// tests/commands/refinement_commands_test.cpp - reading the mesh and model of an existing inversion
// from the file menu: the order they need, their messages, the mesh into the form.
#include "commands/refinement_commands.h"

#include <gtest/gtest.h>

#include "form/form_load.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::write_file_bytes;

class RefinementCommands : public ::testing::Test {
protected:
    void SetUp() override {
        session.working_directory = dir.path();
        initialise_inversion_form(session);
        write_file_bytes(dir.path() / "coarse.msh", "2 3 2\r\n1000 2000 200\r\n2*100\r\n3*50\r\n2*25\r\n");
        write_file_bytes(dir.path() / "coarse.den", "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n12\r\n");
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
};

TEST_F(RefinementCommands, ModelNeedsAMeshThatStillExists) {
    EXPECT_EQ(read_inversion_model_command(session), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"No mesh file has been specified"});
    EXPECT_TRUE(dialogue.file_requests.empty());

    dialogue.file_answers.push_back((dir.path() / "coarse.msh").string());
    ASSERT_EQ(read_inversion_mesh_command(session), 0);
    std::filesystem::remove(dir.path() / "coarse.msh");
    EXPECT_EQ(read_inversion_model_command(session), -1);
    EXPECT_EQ(dialogue.messages.back(), "The specified mesh file does not exist");
}

TEST_F(RefinementCommands, MeshTurnsRefinementOnAndTheModelLoadsOntoIt) {
    dialogue.file_answers.push_back((dir.path() / "coarse.msh").string());
    ASSERT_EQ(read_inversion_mesh_command(session), 0);
    EXPECT_EQ(dialogue.file_requests.at(0).title, "Select the mesh definition file");
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The mesh file has been loaded and refinement mode is enabled"});
    EXPECT_EQ(session.definition.refinement_mode, 1);
    EXPECT_EQ(session.form.text("Text_min_val", 0), "1000");
    EXPECT_EQ(session.form.text("Text_max_val", 1), "2150");
    EXPECT_EQ(session.form.text("Text_min_val", 2), "150");
    EXPECT_EQ(session.form.text("Text_num_cells", 1), "3");
    EXPECT_TRUE(session.form.control("menu_read_inversion_model").visible);

    dialogue.file_answers.push_back((dir.path() / "coarse.den").string());
    ASSERT_EQ(read_inversion_model_command(session), 0);
    const FileChoice& chooser = dialogue.file_requests.at(1);
    EXPECT_EQ(chooser.title, "Select the UBC model file");
    EXPECT_EQ(chooser.filter,
              "UBC model Files|*.sus;*.mod;*.kap;*.den;*.rho;*.con;*.res;*.chg;*.eta;*.sns|All files (*.*)|*.*");
    EXPECT_EQ(chooser.start_name, dir.path().string());
    EXPECT_TRUE(session.loaded_model.loaded);
    EXPECT_EQ(session.loaded_model.values.values.size(), 12u);
    EXPECT_EQ(session.original_model_name, (dir.path() / "coarse.den").string());

    // A cancelled chooser keeps the model name; a new mesh clears the model.
    EXPECT_EQ(read_inversion_model_command(session), 1);
    dialogue.file_answers.push_back((dir.path() / "coarse.msh").string());
    ASSERT_EQ(read_inversion_mesh_command(session), 0);
    EXPECT_FALSE(session.loaded_model.loaded);
}

}  // namespace
}  // namespace invsetup
