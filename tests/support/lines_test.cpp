// tests/support/lines_test.cpp - reading any line end, writing CR LF.
#include "support/lines.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "test_support.h"

using namespace invsetup;
using invsetup::testing::read_file_bytes;
using invsetup::testing::TempDir;

namespace {

std::vector<std::string> clean_lines(const std::string& bytes) {
    std::istringstream in(bytes);
    std::vector<std::string> lines;
    std::string line;
    while (read_clean_line(in, line)) lines.push_back(line);
    return lines;
}

}  // namespace

TEST(ReadCleanLine, EveryLineEndEndsALine) {
    const std::vector<std::string> expected{"a", "b", "c", "d"};
    EXPECT_EQ(clean_lines("a\nb\nc\nd\n"), expected);
    EXPECT_EQ(clean_lines("a\r\nb\r\nc\r\nd\r\n"), expected);
    EXPECT_EQ(clean_lines("a\rb\rc\rd\r"), expected);
    EXPECT_EQ(clean_lines("a\r\nb\rc\nd"), expected);  // mixed, last line without an end
}

TEST(ReadCleanLine, BlankLinesStayAndEndOfInputStops) {
    EXPECT_EQ(clean_lines("a\r\n\r\n\rb"), (std::vector<std::string>{"a", "", "", "b"}));
    EXPECT_EQ(clean_lines("\n"), std::vector<std::string>{""});
    EXPECT_TRUE(clean_lines("").empty());
}

TEST(ReadCleanLine, TabsBecomeBlanksAndOtherBytesVanish) {
    EXPECT_EQ(clean_lines("a\tb\x01" "c\x7f\xe9" "d! \xb0" "comment\n"), std::vector<std::string>{"a bcd! comment"});
}

TEST(ReadCleanLine, StopsAtTenThousandTwoHundredFortyCharacters) {
    const std::string longest(10240, 'x');
    EXPECT_EQ(clean_lines(longest + "\n"), (std::vector<std::string>{longest, ""}));
    EXPECT_EQ(clean_lines(longest + "yz"), (std::vector<std::string>{longest, "yz"}));
    // The cap counts kept characters: the tab's blank is the last, the dropped byte starts the next line.
    EXPECT_EQ(clean_lines(std::string(10239, 'x') + "\t\x01\n"), (std::vector<std::string>{std::string(10239, 'x') + " ", ""}));
}

TEST(ReadNonblankLine, SkipsBlankLinesAndReturnsTheLineAsRead) {
    std::istringstream in("\r\n   \r\n  12 3 \r\n\t\n");
    std::string line;
    ASSERT_TRUE(read_nonblank_line(in, line));
    EXPECT_EQ(line, "  12 3 ");
    EXPECT_FALSE(read_nonblank_line(in, line));
}

TEST(ReadUncommentedLine, SkipsCommentsAndBlankLinesAndTrims) {
    std::istringstream in("! header\r\n# note\r\n\r\n  4 5  \r\n ! late comment\r");
    std::string line;
    ASSERT_TRUE(read_uncommented_line(in, line));
    EXPECT_EQ(line, "4 5");
    EXPECT_FALSE(read_uncommented_line(in, line));
}

TEST(ReadLine, KeepsBytesAndDropsTheLineEnd) {
    std::istringstream in("a\tb\r\nc\xe9\nlast");
    std::string line;
    ASSERT_TRUE(read_line(in, line));
    EXPECT_EQ(line, "a\tb");
    ASSERT_TRUE(read_line(in, line));
    EXPECT_EQ(line, "c\xe9");
    ASSERT_TRUE(read_line(in, line));
    EXPECT_EQ(line, "last");
    EXPECT_FALSE(read_line(in, line));
}

TEST(LineWriter, EndsEveryLineWithCrLfAndReplacesTheFile) {
    TempDir dir;
    const auto path = dir.path() / "out.txt";
    write_text_lines(path, {"old", "old", "old"});
    {
        LineWriter writer(path);
        writer.write_line("1 2 3");
        writer.write(" 500000");
        writer.write(" 7");
        writer.end_line();
        writer.write_line("");
        writer.close();
    }
    EXPECT_EQ(read_file_bytes(path), "1 2 3\r\n 500000 7\r\n\r\n");
}

TEST(LineWriter, LargeOutputPassesThroughTheBufferIntact) {
    TempDir dir;
    const auto path = dir.path() / "big.txt";
    const std::string line(1000, 'z');
    {
        LineWriter writer(path);
        for (int i = 0; i < 3000; ++i) writer.write_line(line);
    }  // the destructor flushes
    EXPECT_EQ(read_file_bytes(path).size(), 3000u * 1002u);
}

TEST(LineWriter, FailuresNameTheFile) {
    TempDir dir;
    const auto missing = dir.path() / "no such dir" / "a.txt";
    try {
        LineWriter writer(missing);
        FAIL() << "created a file in a missing directory";
    } catch (const std::runtime_error& fault) {
        EXPECT_EQ(std::string(fault.what()), "cannot create " + missing.string());
    }
    if (std::filesystem::exists("/dev/full")) {
        LineWriter writer("/dev/full");
        writer.write_line("no room");
        try {
            writer.close();
            FAIL() << "a full device took the line";
        } catch (const std::runtime_error& fault) {
            EXPECT_EQ(std::string(fault.what()), "cannot write /dev/full");
        }
    }
}
