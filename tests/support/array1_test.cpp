// tests/support/array1_test.cpp - the 1-based arrays.
#include "support/array1.h"

#include <gtest/gtest.h>

using invsetup::Array1;
using invsetup::Array2;

TEST(Array1, CountsFromOneAndRefusesZeroAndPastTheEnd) {
    Array1<double> widths(3, 10.0);
    widths[1] = 1;
    widths[3] = 3;
    EXPECT_EQ(widths.data()[0], 1);
    EXPECT_EQ(widths.data()[2], 3);
    EXPECT_THROW(widths[0], std::out_of_range);
    EXPECT_THROW(widths[4], std::out_of_range);
}

TEST(Array2, StoresRowByRowAndChecksBothIndices) {
    Array2<int> limits(2, 4);
    limits(2, 1) = 7;
    EXPECT_EQ(limits.data()[4], 7);
    EXPECT_THROW(limits(3, 1), std::out_of_range);
    EXPECT_THROW(limits(1, 5), std::out_of_range);
    EXPECT_THROW(limits(1, 0), std::out_of_range);
}
