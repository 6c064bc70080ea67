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

using Lines = std::vector<std::string>;

/// Every line `read` takes from the bytes, until it says the input ended.
Lines lines_by(bool (*read)(std::istream&, std::string&), const std::string& bytes) {
    std::istringstream in(bytes);
    Lines lines;
    for (std::string line; read(in, line);) lines.push_back(line);
    return lines;
}

Lines clean_lines(const std::string& bytes) { return lines_by(read_clean_line, bytes); }

}  // namespace

// Every line end ends a line, blank lines stay, tabs become blanks and other control bytes vanish.
TEST(ReadCleanLine, EveryLineEndEndsALine) {
    const Lines expected{"a", "b", "c", "d"};
    EXPECT_EQ(clean_lines("a\nb\nc\nd\n"), expected);
    EXPECT_EQ(clean_lines("a\r\nb\r\nc\r\nd\r\n"), expected);
    EXPECT_EQ(clean_lines("a\rb\rc\rd\r"), expected);
    EXPECT_EQ(clean_lines("a\r\nb\rc\nd"), expected);  // mixed, last line without an end
    EXPECT_EQ(clean_lines("a\r\n\r\n\rb"), (Lines{"a", "", "", "b"}));
    EXPECT_EQ(clean_lines("\n"), Lines{""});
    EXPECT_TRUE(clean_lines("").empty());
    EXPECT_EQ(clean_lines("a\tb\x01" "c\x7f\xe9" "d! \xb0" "comment\n"), Lines{"a bcd! comment"});
}

TEST(ReadCleanLine, StopsAtTenThousandTwoHundredFortyCharacters) {
    const std::string longest(10240, 'x');
    EXPECT_EQ(clean_lines(longest + "\n"), (Lines{longest, ""}));
    EXPECT_EQ(clean_lines(longest + "yz"), (Lines{longest, "yz"}));
    // The cap counts kept characters: the tab's blank is the last, the dropped byte starts the next line.
    EXPECT_EQ(clean_lines(std::string(10239, 'x') + "\t\x01\n"), (Lines{std::string(10239, 'x') + " ", ""}));
}

// The other readers: blank lines skipped (as read), comments and blank lines skipped (trimmed), and
// every line with its bytes as they are.
TEST(ReadLine, EachReaderKeepsItsOwnLines) {
    EXPECT_EQ(lines_by(read_nonblank_line, "\r\n   \r\n  12 3 \r\n\t\n"), Lines{"  12 3 "});
    EXPECT_EQ(lines_by(read_uncommented_line, "! header\r\n# note\r\n\r\n  4 5  \r\n ! late comment\r"), Lines{"4 5"});
    EXPECT_EQ(lines_by(read_line, "a\tb\r\nc\xe9\nlast"), (Lines{"a\tb", "c\xe9", "last"}));
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
