// tests/cli/igrf_test.cpp - `invsetup igrf`: the reference field as the form's button gives it.
#include <gtest/gtest.h>

#include <string>

#include "test_support.h"

namespace {

TEST(IgrfCommand, PrintsTheFieldWithTheFormsPicturesAndRefusesBadInput) {
    // A reference-program value: 2022.1, 829.1 km up, 43.53 N 114.85 E: F 37565.427 nT.
    const auto run = invsetup::testing::run_cli("igrf 2022.1 114.85 43.53 829100");
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("Intensity:   37565."), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Inclination: 61.9"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Declination: -5.62"), std::string::npos) << run.out;

    struct Case {
        const char* arguments;
        int exit_code;
        const char* says;
    };
    const Case cases[] = {
        {"igrf 2031-01-01 0 0 0", 1, "The date 2031.00 lies outside the IGRF (1900 to 2030)"},
        {"igrf 2020-02-30 0 0 0", 1, "neither YYYY-MM-DD nor a decimal year"},
        {"igrf 2020 0 95 0", 2, "LAT"},
    };
    for (const Case& c : cases) {
        const auto bad = invsetup::testing::run_cli(c.arguments);
        EXPECT_EQ(bad.exit_code, c.exit_code) << c.arguments;
        EXPECT_NE((bad.err + bad.out).find(c.says), std::string::npos) << bad.err << bad.out;
    }
}

}  // namespace
