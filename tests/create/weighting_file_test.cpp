// tests/create/weighting_file_test.cpp - the weighting model "w.dat".
#include "create/weighting_file.h"

#include <gtest/gtest.h>

#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using Lines = std::vector<std::string>;

TEST(WeightingModelLines, SmoothnessBlocksTakeTheListForTheTopLayersOnly) {
    // 2 x 2 x 3 cells: 4 lines of smallest model, 1 x 2 of x smoothness, 2 x 1 of y smoothness,
    // 4 of z smoothness with one token fewer.
    const Lines expected{
        " 1 1 1", " 1 1 1", " 1 1 1", " 1 1 1",
        " 16 8 4", " 16 8 4",
        " 16 8 4", " 16 8 4",
        " 1 1", " 1 1", " 1 1", " 1 1",
    };
    EXPECT_EQ(weighting_model_lines({"16", "8", "4", "2", "1"}, 2, 2, 3), expected);
}

TEST(WeightingModelLines, ShortListIsFilledWithOnesAndTextsStayAsTyped) {
    EXPECT_EQ(weighting_model_lines({"16.0", " 8"}, 2, 1, 3),
              (Lines{" 1 1 1", " 1 1 1", " 16.0  8 1", " 1 1", " 1 1"}));
}

TEST(WeightingModelLines, SingleLayerLeavesEmptyZLines) {
    // No x smoothness at all with one cell in x.
    EXPECT_EQ(weighting_model_lines({"4"}, 1, 2, 1), (Lines{" 1", " 1", " 4", "", ""}));
}

class WriteWeightingModel : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
};

TEST_F(WriteWeightingModel, WritesTheBlocksWithCrLf) {
    EXPECT_EQ(write_weighting_model(session, 2, "16,8", dir.path() / "w.dat", 2, 1, 2), 0);
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "w.dat"),
              " 1 1\r\n 1 1\r\n 16 8\r\n 1\r\n 1\r\n");
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(WriteWeightingModel, BadWeightIsNamedByItsNumberAndNothingIsWritten) {
    EXPECT_EQ(write_weighting_model(session, 2, "16,8,0,2", dir.path() / "w.dat", 2, 2, 2), -1);
    EXPECT_EQ(dialogue.messages, Lines{"The weighting definitions are not valid for weight 3"});
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "w.dat"));
}

TEST_F(WriteWeightingModel, FileThatCannotBeCreatedIsReportedOnce) {
    EXPECT_EQ(write_weighting_model(session, 2, "16", dir.path() / "absent" / "w.dat", 2, 2, 2), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_TRUE(dialogue.messages[0].starts_with("An error occurred while setting up the weighting matrix: "));
}

/// Answers the weighting prompts in turn.
class WeightingDialogue : public HeadlessDialogue {
public:
    std::vector<std::string> answers;
    std::vector<std::string> prompts;
    std::string ask_text(const std::string& prompt, const std::string& initial) override {
        prompts.push_back(prompt);
        if (answers.empty()) return initial;
        std::string answer = answers.front();
        answers.erase(answers.begin());
        return answer;
    }
};

/// Modes 1 and 3 over a loaded mesh of 2 x 1 x 4 cells.
class MeshWeighting : public ::testing::Test {
protected:
    void SetUp() override {
        testing::write_file_bytes(dir.path() / "coarse.msh", "2 1 4\r\n0 0 0\r\n2*10\r\n10\r\n4*5\r\n");
        session.original_mesh_name = (dir.path() / "coarse.msh").string();
        ASSERT_EQ(read_mesh_file(session, session.original_mesh_name), 0);
    }
    std::string file(const char* name) const { return testing::read_file_bytes(dir.path() / name); }
    WeightingDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
};

TEST_F(MeshWeighting, ModeThreeListsBothBlocksAndRollsOff) {
    dialogue.answers = {"16", "4,2", "2"};
    ASSERT_EQ(write_weighting_model(session, 3, "", {}, 0, 0, 0), 0);
    EXPECT_EQ(dialogue.prompts.at(2), "Enter layer number to start depth weighting attenuation (0 means no roll-off applied)");
    // No y smoothness with one cell in y.
    EXPECT_EQ(file("w.dat"), " 4 2 0.6 0.4\r\n 4 2 0.6 0.4\r\n 16 0.8 0.6 0.4\r\n 1 1 1\r\n 1 1 1\r\n");
    EXPECT_EQ(file("wx.msh"), "1 1 4\r\n 0  0  0\r\n10.0000\r\n10.0000\r\n4*5.0000\r\n");
    EXPECT_EQ(file("wz.msh").substr(0, 7), "2 1 3\r\n");
    EXPECT_EQ(file("wx.mod"), " 1.60000E+01\r\n 8.00000E-01\r\n 6.00000E-01\r\n 4.00000E-01\r\n");
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "wy.mod"));
}

TEST_F(MeshWeighting, ModeOneMarksThePresentCellsOfTheModel) {
    session.loaded_model.values.size(2, 1, 4, -1e32f);
    session.loaded_model.values.at(1, 1, 1) = 0.5f;
    session.loaded_model.values.at(2, 1, 3) = 0.5f;
    session.loaded_model.loaded = true;
    ASSERT_EQ(write_weighting_model(session, 1, "", {}, 0, 0, 0), 0);
    EXPECT_EQ(file("w.dat"), " 10 1 1 1\r\n 1 1 10 1\r\n 5 8 5 2\r\n 5 1 1\r\n 1 5 5\r\n");
    dialogue.answers = {"16", "deep"};
    EXPECT_EQ(write_weighting_model(session, 1, "", {}, 0, 0, 0), -1);
    EXPECT_EQ(dialogue.messages.back(), "The weighting roll-off is not valid");
}

}  // namespace
}  // namespace invsetup
