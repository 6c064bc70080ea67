// tests/create/weighting_file_test.cpp - the weighting model "w.dat".
#include "create/weighting_file.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace invsetup
