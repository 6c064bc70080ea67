// tests/support/text_test.cpp - numbers in text, words, fields and comma lists.
#include "support/text.h"

#include <gtest/gtest.h>

#include "support/dialogue.h"

using namespace invsetup;

TEST(ParseNumberPrefix, ReadsTheLongestNumericPrefix) {
    EXPECT_EQ(parse_number_prefix("12abc"), 12);
    EXPECT_EQ(parse_number_prefix("  -1.5e3x"), -1500);
    EXPECT_EQ(parse_number_prefix(".5"), 0.5);
    EXPECT_EQ(parse_number_prefix("+3"), 3);
    EXPECT_EQ(parse_number_prefix("2.5D2"), 250);
    EXPECT_EQ(parse_number_prefix("1e+"), 1);
    EXPECT_EQ(parse_number_prefix("1.2.3"), 1.2);
    EXPECT_EQ(parse_number_prefix("-100000003318135000000000000000000.0000E"), -1.00000003318135e32);
}

TEST(ParseNumberPrefix, IsZeroWithoutDigits) {
    EXPECT_EQ(parse_number_prefix(""), 0);
    EXPECT_EQ(parse_number_prefix("."), 0);
    EXPECT_EQ(parse_number_prefix("inf"), 0);
    EXPECT_EQ(parse_number_prefix("0x1A"), 0);
}

TEST(IsNumeric, AcceptsOneNumberWithBlanksAround) {
    for (const char* text : {"1e5", "-.5", "+3", " 7 ", "1.", "2.5D-3", "\t-1E+02"}) EXPECT_TRUE(is_numeric(text)) << text;
    for (const char* text : {"", " ", ".", "1,5", "1 2", "1e", "12abc", "--1", "e5"}) EXPECT_FALSE(is_numeric(text)) << text;
}

TEST(Trim, RemovesBlanksAndTabsOnly) {
    EXPECT_EQ(trim(" \t a b \t"), "a b");
    EXPECT_EQ(trim("\t\t"), "");
    EXPECT_EQ(to_upper("Mesh3d.msh"), "MESH3D.MSH");
    EXPECT_TRUE(iequals("NULL", "null"));
    EXPECT_FALSE(iequals("null", "nul"));
}

TEST(SplitAt, CutsAtTheFirstSeparatorAndTrimsBothParts) {
    std::string line = " Mesh type : UBC : 3 ";
    EXPECT_EQ(split_at(line, ":"), "Mesh type");
    EXPECT_EQ(line, "UBC : 3");
    line = " no separator ";
    EXPECT_EQ(split_at(line, ":"), "no separator");
    EXPECT_EQ(line, "");
}

TEST(NextWord, TakesBlankSeparatedWordsOffTheLine) {
    std::string line = "  10  20.5 abc";
    EXPECT_EQ(next_word(line), "10");
    EXPECT_EQ(next_word(line), "20.5");
    EXPECT_EQ(next_word(line), "abc");
    EXPECT_EQ(next_word(line), "");
    EXPECT_EQ(line, "");
    std::string_view view = "a b";
    EXPECT_EQ(next_word(view), "a");
    EXPECT_EQ(view, "b");
}

TEST(SplitFields, HonoursQuotesAndTrims) {
    EXPECT_EQ(split_fields(R"( 1, "a, b" ,c)"), (std::vector<std::string>{"1", "a, b", "c"}));
    EXPECT_EQ(split_fields("a,,b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(split_fields("a,"), (std::vector<std::string>{"a", ""}));
    EXPECT_EQ(split_fields("  "), std::vector<std::string>{});
    EXPECT_EQ(split_fields("x;y", 0, ';'), (std::vector<std::string>{"x", "y"}));
}

TEST(SplitFields, CountStopsAtThatFieldWithoutTheRest) {
    EXPECT_EQ(split_fields("1,2,3,4", 2), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(split_fields("1,2", 5), (std::vector<std::string>{"1", "2"}));
}

TEST(RightJustify, PadsOrCutsToTheWidth) {
    EXPECT_EQ(right_justify("2*10.0000", 11), "  2*10.0000");
    EXPECT_EQ(right_justify("100*100.0000", 11), "100*100.000");
}

class ParseNumberList : public ::testing::Test {
protected:
    int parse(bool quiet, const char* text) { return parse_number_list(dialogue, quiet, text, count, items); }
    HeadlessDialogue dialogue;
    int count = -1;
    std::vector<std::string> items{"old"};
};

TEST_F(ParseNumberList, StoresItemsAndCountsThemAndEmptyIsValid) {
    EXPECT_EQ(parse(false, ""), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(items, std::vector<std::string>{"old"});  // an empty list leaves the items
    EXPECT_EQ(parse(false, "1,2,4,8"), 0);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(items, (std::vector<std::string>{"1", "2", "4", "8"}));
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(ParseNumberList, EmptyItemFailsAtItsNumberFromZero) {
    EXPECT_EQ(parse(false, "1,2,,8"), -1);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The weighting definitions are not valid for weight 2"});
}

TEST_F(ParseNumberList, ZeroNegativeOrTextFailQuietlyWhenAsked) {
    EXPECT_EQ(parse(true, "0,1"), -1);
    EXPECT_EQ(parse(true, "1,-2"), -1);
    EXPECT_EQ(parse(true, "1,2x"), -1);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST(ParseWeightList, KeepsTextsAsTheyStandAndNumbersPartsFromOne) {
    HeadlessDialogue dialogue;
    int count = -1;
    std::vector<std::string> values;
    EXPECT_EQ(parse_weight_list(&dialogue, "16, 8,4", values, count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(values, (std::vector<std::string>{"16", " 8", "4"}));
    EXPECT_EQ(parse_weight_list(&dialogue, "16,0", values, count), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0], "The weighting definitions are not valid for weight 2");
    EXPECT_EQ(parse_weight_list(nullptr, "x", values, count), -1);  // no dialogue, no message
    EXPECT_EQ(parse_weight_list(nullptr, "", values, count), 0);
    EXPECT_EQ(count, 0);
}
