// tests/create/model_file_test.cpp - the model file writer: text lines worked out by hand, the cell
// order, the null line, an expanded tile's empty file, the two orders of the binary form, and the
// coded exports' range behind each line.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

#include "modelfiles/model_file_write.h"
#include "support/dialogue.h"
#include "support/numbers.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::read_file_bytes;
using testing::TempDir;

std::string value_line(float value) {
    char text[32];
    return std::string(text, model_value_text(text, value));
}

TEST(ModelValueText, FollowsThePictureWithABlankInFront) {
    EXPECT_EQ(value_line(0.0f), " 0.00000E+00");
    EXPECT_EQ(value_line(-0.0f), " 0.00000E+00");
    EXPECT_EQ(value_line(12.5f), " 1.25000E+01");
    EXPECT_EQ(value_line(-12.5f), " -1.25000E+01");
    EXPECT_EQ(value_line(0.001f), " 1.00000E-03");
    // Seven digits first (9.999995), then half away from zero to six: the carry moves the exponent.
    EXPECT_EQ(value_line(9.999995f), " 1.00000E+01");
    EXPECT_EQ(value_line(-3e-9f), " -3.00000E-09");
}

TEST(ModelValueText, AgreesWithThePictureFormatterEverywhere) {
    std::mt19937 random(7);
    std::uniform_int_distribution<std::uint32_t> bits;
    for (int n = 0; n < 200000; ++n) {
        std::uint32_t raw = bits(random);
        float value;
        std::memcpy(&value, &raw, sizeof value);
        if (std::isnan(value) || std::isinf(value)) continue;
        // Half the time a value of the range the files meet, 1e-8 to 1e8, with short decimals too.
        if (n % 2 == 0) {
            const int exponent = static_cast<int>(raw % 17) - 8;
            const float mantissa = n % 4 == 0 ? static_cast<float>(raw % 100000) / 10000.0f
                                              : 1.0f + static_cast<float>(raw % 9000000) / 1e6f;
            value = mantissa * std::pow(10.0f, static_cast<float>(exponent)) * (raw & 1 ? -1.0f : 1.0f);
        }
        std::string expected(1, ' ');
        expected.append(format_picture(value, "0.00000E+00"));
        ASSERT_EQ(value_line(value), expected) << value;
    }
}

class WriteModelFile : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    TempDir dir;
    ModelValues model;

    /// 2 x 2 x 3 cells, value = 100 i + 10 j + k, so each line names its cell.
    void SetUp() override {
        model.size(2, 2, 3);
        for (int k = 1; k <= 3; ++k)
            for (int j = 1; j <= 2; ++j)
                for (int i = 1; i <= 2; ++i) model.at(i, j, k) = static_cast<float>(100 * i + 10 * j + k);
    }
};

TEST_F(WriteModelFile, WritesYOuterThenXThenZFromTheTop) {
    write_model_file(dialogue, dir.path() / "model.sus", model, whole_model_request(model));
    EXPECT_EQ(read_file_bytes(dir.path() / "model.sus"),
              " 1.11000E+02\r\n 1.12000E+02\r\n 1.13000E+02\r\n"
              " 2.11000E+02\r\n 2.12000E+02\r\n 2.13000E+02\r\n"
              " 1.21000E+02\r\n 1.22000E+02\r\n 1.23000E+02\r\n"
              " 2.21000E+02\r\n 2.22000E+02\r\n 2.23000E+02\r\n");
    EXPECT_EQ(dialogue.last_progress, 100);
}

TEST_F(WriteModelFile, RangeScaleAndNullLine) {
    model.at(2, 2, 2) = -1e32f;
    ModelWriteRequest request = whole_model_request(model);
    request.first_x = 2;
    request.first_y = 2;
    request.end_z = 3;  // cells 1 and 2 of z
    request.scale = 10;
    request.null_value = -1;
    write_model_file(dialogue, dir.path() / "part.sus", model, request);
    EXPECT_EQ(read_file_bytes(dir.path() / "part.sus"), " 2.21000E+01\r\n -1.00000E+00\r\n");
}

TEST_F(WriteModelFile, ExpandedTileLeavesAnEmptyFile) {
    testing::write_file_bytes(dir.path() / "tile.sus", "old\r\n");
    ModelWriteRequest request = whole_model_request(model);
    request.expanded = 1;
    write_model_file(dialogue, dir.path() / "tile.sus", model, request);
    ASSERT_TRUE(std::filesystem::exists(dir.path() / "tile.sus"));
    EXPECT_EQ(std::filesystem::file_size(dir.path() / "tile.sus"), 0u);
}

TEST(CodedModelExport, ModesTwoAndThreePutTheRangeBehindEveryLine) {
    HeadlessDialogue dialogue;
    TempDir dir;
    ModelValues model;
    model.size(1, 1, 3);
    model.at(1, 1, 1) = 12.5f;
    model.at(1, 1, 2) = -1e32f;
    model.at(1, 1, 3) = -3;
    struct Case {
        int mode;
        float low, mid, high;
        const char* range;  // what follows each value
    };
    const Case cases[] = {
        {0, 1, 3, 5, ""},                             // the plain text form has none
        {2, 1, 3, 5, " 2.00000E+00 4.00000E+00"},     // mid - low, high - low
        {2, 0.5f, 0.75f, 0.625f, " 2.50000E-01 1.25000E-01"},  // widths as they come, mid above high
        {2, 5, 3, 5, " -1.0 1.0"},                    // no range: low not below high
        {2, 6, 3, 5, " -1.0 1.0"},
        {3, 1, 3, 5, " -1.0 1.0"},                    // mode 3 always the unit range
    };
    for (const Case& c : cases) {
        ModelWriteRequest request = whole_model_request(model);
        request.export_mode = c.mode;
        request.export_type = 4;
        request.range_low = c.low;
        request.range_mid = c.mid;
        request.range_high = c.high;
        request.null_value = -1;
        const auto file = dir.path() / "coded.sus";
        write_model_file(dialogue, file, model, request);
        const std::string r = c.range;
        EXPECT_EQ(read_file_bytes(file), " 1.25000E+01" + r + "\r\n -1.00000E+00" + r + "\r\n -3.00000E+00" + r + "\r\n")
            << c.mode << " " << c.low << " " << c.high;
    }
    // Mode 1 would need code tables: refused before a file is made.
    ModelWriteRequest request = whole_model_request(model);
    request.export_mode = 1;
    request.export_type = 5;
    EXPECT_THROW(write_model_file(dialogue, dir.path() / "codes.sus", model, request), std::invalid_argument);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "codes.sus"));
}

std::string floats_bytes(std::initializer_list<float> values) {
    std::string bytes;
    for (float value : values) bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    return bytes;
}

TEST_F(WriteModelFile, BinaryWholeArrayIsRawStorageOrder) {
    ModelWriteRequest request = whole_model_request(model);
    request.export_mode = model_export_binary;
    request.model_kind = 2;
    request.scale = 10;  // the raw form is never scaled
    write_model_file(dialogue, dir.path() / "model.bin", model, request);
    ASSERT_EQ(dialogue.questions.size(), 1u);
    EXPECT_EQ(dialogue.questions[0], "Export model in binary format?");
    EXPECT_EQ(read_file_bytes(dir.path() / "model.bin"),
              std::string("UBC\x02", 4) + floats_bytes({111, 211, 121, 221, 112, 212, 122, 222, 113, 213, 123, 223}));
}

TEST_F(WriteModelFile, BinaryPartCellByCellAndNoMeansText) {
    ModelWriteRequest request = whole_model_request(model);
    request.export_mode = model_export_binary;
    request.end_y = 2;
    write_model_file(dialogue, dir.path() / "part.bin", model, request);
    EXPECT_EQ(read_file_bytes(dir.path() / "part.bin"),
              std::string("UBC\x00", 4) + floats_bytes({111, 112, 113, 211, 212, 213}));

    dialogue.answer_yes = false;
    write_model_file(dialogue, dir.path() / "part.txt", model, request);
    EXPECT_EQ(read_file_bytes(dir.path() / "part.txt").substr(0, 14), " 1.11000E+02\r\n");
}

TEST_F(WriteModelFile, RangeOutsideTheModelThrowsAndWritesNothing) {
    ModelWriteRequest request = whole_model_request(model);
    request.end_x = 4;
    EXPECT_THROW(write_model_file(dialogue, dir.path() / "bad.sus", model, request), std::out_of_range);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "bad.sus"));
}

TEST_F(WriteModelFile, UnwritablePathNamesTheFile) {
    try {
        write_model_file(dialogue, dir.path() / "missing" / "model.sus", model, whole_model_request(model));
        FAIL() << "no fault";
    } catch (const std::runtime_error& fault) {
        EXPECT_NE(std::string(fault.what()).find("model.sus"), std::string::npos);
    }
}

}  // namespace
}  // namespace invsetup
