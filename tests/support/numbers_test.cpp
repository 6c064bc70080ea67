// tests/support/numbers_test.cpp - pictures, significant-digit texts and half-even integers.
#include "support/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "support/text.h"

using namespace invsetup;

TEST(FormatPicture, RoundsHalfAwayFromZeroAtEachDecimalCount) {
    EXPECT_EQ(format_picture(0.5, "0"), "1");
    EXPECT_EQ(format_picture(-0.5, "0"), "-1");
    EXPECT_EQ(format_picture(2.5, "0"), "3");
    EXPECT_EQ(format_picture(0.25, "0.0"), "0.3");
    EXPECT_EQ(format_picture(0.125, "0.00"), "0.13");
    EXPECT_EQ(format_picture(0.00005, "0.0000"), "0.0001");
    EXPECT_EQ(format_picture(0.00004999, "0.0000"), "0.0000");
}

// The binary values sit just below the half; the first rounding to significant digits restores it.
TEST(FormatPicture, TakesSignificantDigitsBeforeRounding) {
    EXPECT_EQ(format_picture(2.675, "0.00"), "2.68");
    EXPECT_EQ(format_picture(1.005, "0.00"), "1.01");
    EXPECT_EQ(format_picture(0.005f, "0.00"), "0.01");
    EXPECT_EQ(format_picture(0.02f, "0.0000000000"), "0.0200000000");
    EXPECT_EQ(format_picture(1.0f / 3.0f, "0.0000000000"), "0.3333333000");
    EXPECT_EQ(format_picture(1.0 / 3.0, "0.0000000000000000"), "0.3333333333333330");
    // A single real's seventh digit is settled first (a tie goes to even), then the picture rounds.
    EXPECT_EQ(format_picture(1234568.5f, "0"), "1234568");
    EXPECT_EQ(format_picture(1234567.5f, "0"), "1234568");
    EXPECT_EQ(format_picture(1234568.5, "0"), "1234569");
}

TEST(FormatPicture, CarriesIntoANewDigit) {
    EXPECT_EQ(format_picture(9.9999995, "0.0000"), "10.0000");
    EXPECT_EQ(format_picture(9.9999995f, "0.0000"), "10.0000");
    EXPECT_EQ(format_picture(99.96, "0.0"), "100.0");
    EXPECT_EQ(format_picture(0.0096, "0.00"), "0.01");
    EXPECT_EQ(format_picture(9.99996e-5, "0.0000E+00"), "1.0000E-04");
}

TEST(FormatPicture, KeepsTheWholeIntegerPartAndPadsToTheDigits) {
    EXPECT_EQ(format_picture(1234567.0, "0"), "1234567");
    EXPECT_EQ(format_picture(5, "00"), "05");
    EXPECT_EQ(format_picture(0.5, ".00"), ".50");
    EXPECT_EQ(format_picture(64, "0.0000000"), "64.0000000");
    EXPECT_EQ(format_picture(1e32, "0"), "100000000000000000000000000000000");
    EXPECT_EQ(format_picture(3.4e38f, "0"), "340000000000000000000000000000000000000");
    EXPECT_EQ(format_picture(1e-30, "0.0000"), "0.0000");
    // Longer than the stack buffer of the renderer.
    EXPECT_EQ(format_picture(1e300, "0." + std::string(101, '0')), "1" + std::string(300, '0') + "." + std::string(101, '0'));
}

TEST(FormatPicture, OneSectionPutsTheSignAheadOfLiteralBlanks) {
    EXPECT_EQ(format_picture(-1, " 0"), "- 1");
    EXPECT_EQ(format_picture(0, " 0"), " 0");
    EXPECT_EQ(format_picture(1, " 0"), " 1");
    EXPECT_EQ(format_picture(-2.5, "  0.00"), "-  2.50");
}

TEST(FormatPicture, SecondSectionServesNegativesWithoutAnAutomaticSign) {
    const char* picture = "0.0000E+00;-0.0000E+00";
    EXPECT_EQ(format_picture(1.5e-5, picture), "1.5000E-05");
    EXPECT_EQ(format_picture(-2.25e-7, picture), "-2.2500E-07");
    EXPECT_EQ(format_picture(0.0, picture), "0.0000E+00");
    EXPECT_EQ(format_picture(-12345.0, "0;(0)"), "(12345)");
    EXPECT_EQ(format_picture(0.0, "0;(0);zero"), "zero");
}

TEST(FormatPicture, ZeroShowsNoSignWhateverItsOrigin) {
    EXPECT_EQ(format_picture(-0.0, "0.00"), "0.00");
    EXPECT_EQ(format_picture(-0.001, "0.00"), "0.00");
    EXPECT_EQ(format_picture(-0.001, "0.00;-0.00"), "0.00");
    EXPECT_EQ(format_picture(-0.4, " 0"), " 0");
    EXPECT_EQ(format_picture(-0.0f, "0.0000E+00"), "0.0000E+00");
}

TEST(FormatPicture, ExponentSignAndDigits) {
    EXPECT_EQ(format_picture(12345.0, "0.00E+00"), "1.23E+04");
    EXPECT_EQ(format_picture(12345.0, "0.00E-00"), "1.23E04");
    EXPECT_EQ(format_picture(0.012345, "0.00E-00"), "1.23E-02");
    EXPECT_EQ(format_picture(1e-300, "0.0E+00"), "1.0E-300");
    EXPECT_EQ(format_picture(3.4e38f, "0.000000E+00"), "3.400000E+38");
    EXPECT_EQ(format_picture(12345.0, "00.00E+00"), "12.35E+03");
}

TEST(FormatPicture, EWithoutSignIsALiteral) {
    EXPECT_EQ(format_picture(2.5, "0.0000E"), "2.5000E");
    // The blank background topography: 15 digits of the single real, zeros, four decimals, E.
    const std::string text = format_picture(static_cast<double>(-1e32f), "0.0000E");
    EXPECT_EQ(text, "-100000003318135000000000000000000.0000E");
    EXPECT_EQ(static_cast<float>(parse_number_prefix(text)), -1e32f);
    EXPECT_EQ(format_picture(-1e32f, "0.0000E"), "-100000000000000000000000000000000.0000E");
    EXPECT_EQ(format_picture(-1e32, "0.0000E"), "-100000000000000000000000000000000.0000E");
}

TEST(FormatPicture, BufferAndAppendVariantsMatch) {
    std::string line = "x=";
    append_picture(line, 0.125, "0.00");
    append_picture(line, 0.005f, " 0.00");
    EXPECT_EQ(line, "x=0.13 0.01");
    char buffer[8];
    const std::size_t length = format_picture_to(buffer, sizeof buffer, -2.25e-7, "0.0E+00;-0.0E+00");
    EXPECT_EQ(std::string(buffer, length), "-2.3E-07");
    EXPECT_EQ(format_picture_to(buffer, sizeof buffer, 123456789.0, "0"), 0u);  // does not fit
}

TEST(ToInteger, RoundsHalfToEven) {
    EXPECT_EQ(to_integer(0.5), 0);
    EXPECT_EQ(to_integer(1.5), 2);
    EXPECT_EQ(to_integer(2.5), 2);
    EXPECT_EQ(to_integer(-0.5), 0);
    EXPECT_EQ(to_integer(-1.5), -2);
    EXPECT_EQ(to_integer(-2.5), -2);
    EXPECT_EQ(to_integer(2.4999999), 2);
    EXPECT_EQ(to_integer(-2.5000001), -3);
    EXPECT_EQ(to_integer(2147483647.4), 2147483647);
    EXPECT_EQ(to_integer(-2147483648.5), -2147483648);
}

TEST(ToInteger, OutOfRangeOrNotANumberIsAnOverflow) {
    EXPECT_THROW(to_integer(2147483647.5), std::overflow_error);  // rounds to 2^31
    EXPECT_THROW(to_integer(-2147483649.0), std::overflow_error);
    EXPECT_THROW(to_integer(1e32), std::overflow_error);
    EXPECT_THROW(to_integer(std::nan("")), std::overflow_error);
    try {
        to_integer(-1e32);
    } catch (const std::overflow_error& fault) {
        EXPECT_STREQ(fault.what(), "Overflow");
    }
}

TEST(SingleToText, KeepsTheFloatDigitsOnly) {
    EXPECT_EQ(single_to_text(0.02f), "0.02");
    EXPECT_EQ(single_to_text(1.0f / 3.0f), "0.3333333");
    EXPECT_EQ(single_to_text(1.0f), "1");
    EXPECT_EQ(single_to_text(-2.5f), "-2.5");
    EXPECT_EQ(single_to_text(-0.0f), "0");
    EXPECT_EQ(single_to_text(9.9999999f), "10");
    EXPECT_EQ(single_to_text(std::nextafter(0.1f, 0.0f)), "0.09999999");
    EXPECT_EQ(single_to_text(std::nextafter(1e-6f, 1.0f)), "1E-06");
}

TEST(SingleToText, SwitchesToExponentOutsideOneTenThousandthToSevenDigits) {
    EXPECT_EQ(single_to_text(9999999.0f), "9999999");
    EXPECT_EQ(single_to_text(1e7f), "1E+07");
    EXPECT_EQ(single_to_text(12345678.0f), "1.234568E+07");
    EXPECT_EQ(single_to_text(0.0001f), "0.0001");
    EXPECT_EQ(single_to_text(0.00012345f), "0.00012345");
    EXPECT_EQ(single_to_text(0.00001f), "1E-05");
    EXPECT_EQ(single_to_text(-9.5e-5f), "-9.5E-05");
    EXPECT_EQ(single_to_text(-1e32f), "-1E+32");
    EXPECT_EQ(single_to_text(1e-30f), "1E-30");
}

TEST(NumberToText, BlankForNonNegativeAndNoZeroBeforeThePoint) {
    EXPECT_EQ(number_to_text(1.0f), " 1");
    EXPECT_EQ(number_to_text(0.01f), " .01");
    EXPECT_EQ(number_to_text(-0.5f), "-.5");
    EXPECT_EQ(number_to_text(0.0f), " 0");
    EXPECT_EQ(number_to_text(-0.0f), " 0");
    EXPECT_EQ(number_to_text(-0.0), " 0");
    EXPECT_EQ(number_to_text(0.0001f), " .0001");
    EXPECT_EQ(number_to_text(0.00001f), " 1E-05");
    EXPECT_EQ(number_to_text(9999999.0f), " 9999999");
    EXPECT_EQ(number_to_text(-1e7f), "-1E+07");
}

TEST(NumberToText, DoubleKeepsFifteenDigitsSoCoordinatesStayWhole) {
    EXPECT_EQ(number_to_text(500000.123456789), " 500000.123456789");
    EXPECT_EQ(number_to_text(6123456.5), " 6123456.5");
    EXPECT_EQ(number_to_text(-250.0), "-250");
    EXPECT_EQ(number_to_text(999999999999999.0), " 999999999999999");
    EXPECT_EQ(number_to_text(1e15), " 1E+15");
    EXPECT_EQ(number_to_text(0.0001), " .0001");
    EXPECT_EQ(number_to_text(0.00001), " 1E-05");
    EXPECT_EQ(number_to_text(1e100), " 1E+100");
}

TEST(GeneralNumberText, FifteenDigitsForDoublesSevenForSingles) {
    EXPECT_EQ(general_number_text(0.1), "0.1");
    EXPECT_EQ(general_number_text(1.0 / 3.0), "0.333333333333333");
    EXPECT_EQ(general_number_text(static_cast<double>(0.02f)), "0.0199999995529652");
    EXPECT_EQ(general_number_text(0.02f), "0.02");
    EXPECT_EQ(general_number_text(999999999999999.0), "999999999999999");
    EXPECT_EQ(general_number_text(1e15), "1E+15");
    EXPECT_EQ(general_number_text(0.0001), "0.0001");
    EXPECT_EQ(general_number_text(0.000099), "9.9E-05");
}

TEST(NumberPicture, ChoosesDecimalsByMagnitude) {
    EXPECT_EQ(number_picture(0.0f), "0.00");
    EXPECT_EQ(number_picture(1.0f), "0.00");
    EXPECT_EQ(number_picture(0.99f), "0.000");
    EXPECT_EQ(number_picture(-0.05f), "0.0000");
    EXPECT_EQ(number_picture(0.005f), "0.00000");
    EXPECT_EQ(number_picture(0.0005f), "0.000000");
    EXPECT_EQ(number_picture(0.00005f), "0.0000E+00;-0.0000E+00");
}

TEST(FitPicture, FillsSevenDigitsOrFallsBackToTheExponent) {
    EXPECT_EQ(fit_picture(0, "", 5), "  0.00; -0.00");
    EXPECT_EQ(fit_picture(123.4, "", 5), "  000.0000; -000.0000");
    EXPECT_EQ(fit_picture(0.5, "", 5), "  0.000000; -0.000000");
    EXPECT_EQ(fit_picture(99999.0, "", 5), "  00000.00; -00000.00");
    EXPECT_EQ(fit_picture(100000.0, "", 5), "  0.000000E+00; -0.000000E+00");
}
