// tests/support/igrf_test.cpp - the IGRF field against values of the IAGA reference program for
// IGRF-14 (igrf14syn, geodetic input), dates, decimal years and the coefficient table's faults.
#include "support/igrf.h"

#include <gtest/gtest.h>

#include <cmath>

#include "test_support.h"

namespace invsetup {
namespace {

const IgrfModel& model() {
    static const IgrfModel igrf = IgrfModel::read(testing::test_data("../../data/igrf14coeffs.txt"));
    return igrf;
}

double degrees_of(double y, double x) { return std::atan2(y, x) * 180 / 3.14159265358979323846; }

TEST(Igrf, MatchesTheReferenceProgramAcrossDatesPlacesAndHeights) {
    // Decimal year, height (km), geodetic colatitude, east longitude; north, east, down, total (nT),
    // as the reference program prints them. Definitive, predictive and secular-variation years,
    // near the pole and at satellite heights.
    struct Case {
        double year, height_km, colatitude, longitude, north, east, down, total;
    };
    const Case cases[] = {
        {1990.6, 34.18, 34.51, 24.06, 16779.17251, 1244.60056, 46474.73203, 49426.61609},
        {2012.2, 77.18, 4.81, 190.69, 750.03774, 394.68103, 55395.16588, 55401.64919},
        {2022.1, 829.10, 46.47, 114.85, 17590.40262, -1731.07191, 33147.28408, 37565.42714},
        {2027.9, 139.86, 45.06, 138.29, 23759.41728, -4335.97718, 42511.80742, 48893.39810},
        {1900.0, 232.32, 68.00, 165.11, 27505.75351, 3089.91355, 16985.87684, 32475.12977},
        {1985.1, 1008.02, 0.05, 0.32, 678.99083, -1271.85929, 37824.89930, 37852.36666},
        {1988.0, 138.16, 56.85, 318.49, 23164.89042, -7333.27843, 32808.52011, 40826.31642},
    };
    for (const Case& c : cases) {
        const double longitude = c.longitude > 180 ? c.longitude - 360 : c.longitude;
        const GeomagneticField f = model().field(c.year, longitude, 90 - c.colatitude, c.height_km * 1000);
        SCOPED_TRACE(c.year);
        EXPECT_NEAR(f.north, c.north, 1.0);
        EXPECT_NEAR(f.east, c.east, 1.0);
        EXPECT_NEAR(f.down, c.down, 1.0);
        EXPECT_NEAR(f.intensity, c.total, 1.0);
        EXPECT_NEAR(f.inclination, degrees_of(c.down, std::hypot(c.north, c.east)), 0.01);
        EXPECT_NEAR(f.declination, degrees_of(c.east, c.north), 0.01);
    }
}

TEST(Igrf, DatesOutsideTheModelAreRefused) {
    EXPECT_DOUBLE_EQ(model().first_year(), 1900.0);
    EXPECT_DOUBLE_EQ(model().last_year(), 2030.0);
    EXPECT_THROW(model().field(1899.9, 0, 0, 0), std::out_of_range);
    EXPECT_THROW(model().field(2030.1, 0, 0, 0), std::out_of_range);
    EXPECT_THROW(model().field(2020, 0, 91, 0), std::out_of_range);
}

TEST(Igrf, DecimalYearFromEitherForm) {
    struct Case {
        const char* text;
        std::optional<double> year;
    };
    const Case cases[] = {
        {"2025.5", 2025.5},
        {" 1990 ", 1990.0},
        {"2024-01-01", 2024 + 0.5 / 366},  // leap year
        {"2023-12-31", 2023 + 364.5 / 365},
        {"2023-02-29", std::nullopt},
        {"2023-13-01", std::nullopt},
        {"next year", std::nullopt},
        {"2020x", std::nullopt},
    };
    for (const Case& c : cases) {
        const std::optional<double> year = decimal_year(c.text);
        ASSERT_EQ(year.has_value(), c.year.has_value()) << c.text;
        if (year) {
            EXPECT_NEAR(*year, *c.year, 1e-12) << c.text;
        }
    }
}

TEST(Igrf, CoefficientFileFaultsNameTheFileAndLine) {
    const testing::TempDir dir;
    struct Case {
        const char* content;
        const char* says;
    };
    const Case cases[] = {
        {"g/h n m 2020.0 2020-25\r\ng 1 0 -29404.8\r\n", "line 2: expected 4 numbers, found 3"},
        {"g/h n m 2020.0 2020-25\r\nq 1 0 1 2\r\n", "line 2: a row must begin with g or h"},
        {"g/h n m 2020.0 2020-25\r\ng 1 0 abc 2\r\n", "\"abc\" is not a number"},
        {"# nothing\r\n", "holds no coefficients"},
        {"g/h n m 2020.0 2020-25\r\ng 1 0 inf 2\r\n", "\"inf\" is not a number"},
        {"g/h n m 2020.0 2020-25\r\ng 1e20 0 1 2\r\n", "line 2: degree or order out of range"},
    };
    for (const Case& c : cases) {
        const auto path = dir.path() / "coeffs.txt";
        testing::write_file_bytes(path, c.content);
        try {
            IgrfModel::read(path);
            ADD_FAILURE() << "accepted: " << c.content;
        } catch (const std::runtime_error& fault) {
            const std::string text = fault.what();
            EXPECT_NE(text.find(path.string()), std::string::npos) << text;
            EXPECT_NE(text.find(c.says), std::string::npos) << text;
        }
    }
    EXPECT_THROW(IgrfModel::read(dir.path() / "missing.txt"), std::runtime_error);
    // A folder or a device is named, not read (a device would be read forever).
    for (const std::filesystem::path& path : {dir.path(), std::filesystem::path("/dev/zero")}) {
        try {
            IgrfModel::read(path);
            ADD_FAILURE() << "accepted: " << path;
        } catch (const std::runtime_error& fault) {
            EXPECT_NE(std::string(fault.what()).find("not a file that can be read"), std::string::npos) << fault.what();
        }
    }
}

}  // namespace
}  // namespace invsetup
