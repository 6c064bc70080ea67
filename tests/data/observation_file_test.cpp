// tests/data/observation_file_test.cpp - observation files checked byte for byte against lines
// written by hand, from bins and lists filled by hand on a 3 by 2 mesh.
#include "data/observation_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "session.h"
#include "support/numbers.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::read_file_bytes;
using testing::TempDir;

struct WriteObservations : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    int written = -7;

    void SetUp() override {
        session.mesh.nx = 3;
        session.mesh.ny = 2;
        session.bins.size_bins(3, 2);
        InversionDefinition& d = session.definition;
        d.inversion_method = method_ubc_grav_v2;
        d.data_type_count = 1;
        d.error_percent = 5;
        d.error_floor = 1;
        d.values_per_cell = 1;
    }
    void fill_bin(int i, int j, double x, double y, double z, double v1, double v2 = 0, double v3 = 0) {
        ObservationBins& b = session.bins;
        b.bin_used(i, j) = 1;
        b.bin_x(i, j) = x;
        b.bin_y(i, j) = y;
        b.bin_z(i, j) = z;
        b.bin_value1(i, j) = v1;
        b.bin_value2(i, j) = v2;
        b.bin_value3(i, j) = v3;
    }
    void add_reading(int i, int j, double v1, const std::string& label) {
        ObservationList& list = session.readings;
        const int k = ++list.obs_count;
        list.obs_values(1, k) = 10 * i;
        list.obs_values(2, k) = 10 * j;
        list.obs_values(4, k) = v1;
        list.obs_values(6, k) = 0.5;
        list.obs_cells(k, 1) = i;
        list.obs_cells(k, 2) = j;
        list.label_names.resize(list.label_names.size() + 1, label);
        list.obs_labels[k] = list.label_names.size();
    }
    std::string write(int with_extras = 0, int x_first = 1, int x_end = 4, int y_first = 1, int y_end = 3) {
        const auto path = dir.path() / "grav.obs";
        EXPECT_EQ(write_inversion_data(session, with_extras, path, x_first, x_end, y_first, y_end, 0, written), 0);
        return std::filesystem::exists(path) ? read_file_bytes(path) : std::string("(no file)");
    }
};

TEST_F(WriteObservations, GravityFileStartsWithTheCountAndHasFiveFieldsInBinOrder) {
    fill_bin(2, 2, 125.5, 37.25, 50, -100);
    fill_bin(3, 1, 1.23456, 2, 3, 4);
    EXPECT_EQ(write(),
              " 2 \r\n"
              "        1.2346        2.0000        3.0000        4.0000        1.2000\r\n"
              "      125.5000       37.2500       50.0000     -100.0000        6.0000\r\n");
    EXPECT_EQ(written, 2);
}

TEST_F(WriteObservations, MagneticFileHasTheFieldLines) {
    InversionDefinition& d = session.definition;
    d.inversion_method = method_ubc_mag_v5;
    d.mag_inclination = 70;
    d.mag_declination = -10.5f;
    d.mag_intensity = 50000;
    fill_bin(1, 1, 1, 2, 3, 4);
    EXPECT_EQ(write().substr(0, 42), "70.00 -10.50 50000.00\r\n70.00 -10.50 1\r\n 1 ");

    d.coordinate_transform.active = true;  // the grid north of the mesh turns the declination
    d.coordinate_transform.angle = 30;
    EXPECT_EQ(write().substr(0, 40), "70.00 19.50 50000.00\r\n70.00 19.50 1\r\n 1 ");
}

TEST_F(WriteObservations, TheInHouseMethodHasFieldLinesForMagneticDataOnly) {
    InversionDefinition& d = session.definition;
    d.inversion_method = method_zarninv3d;
    fill_bin(1, 1, 1, 2, 3, 4);
    d.data_types[0] = 1;
    EXPECT_EQ(write().substr(0, 5), "0.00 ");
    d.data_types[0] = 0;
    EXPECT_EQ(write().substr(0, 5), " 1 \r\n");
    d.data_types[0] = 20;
    EXPECT_EQ(write().substr(0, 5), "0.00 ");
}

TEST_F(WriteObservations, NullValuesShowAStarAndNoError) {
    session.definition.data_type_count = 3;
    fill_bin(1, 1, 1, 2, 3, null_value, -2, null_value);
    EXPECT_EQ(write(),
              " 1 \r\n"
              "        1.0000        2.0000        3.0000             *        0.0000       -2.0000        1.1000"
              "             *        0.0000\r\n");
}

TEST_F(WriteObservations, ExtrasAreWrittenOnlyWhenAskedAndDefined) {
    InversionDefinition& d = session.definition;
    d.line_column = 5;
    d.extra_value_column = 6;
    fill_bin(1, 1, 1, 2, 3, 4);
    session.bins.bin_label(1, 1) = "L100";
    session.bins.bin_extra(1, 1) = 12345678901.1234;  // too wide: the field keeps its first 14
    const std::string plain = write(0);
    EXPECT_EQ(plain.size(), 5u + 70 + 2);
    EXPECT_EQ(write(1).substr(5 + 70), "          L10012345678901.12\r\n");
    d.extra_value_column = 0;
    EXPECT_EQ(write(1).substr(5 + 70), "          L100\r\n");
}

TEST_F(WriteObservations, AListGivesAtMostValuesPerCellInFileOrder) {
    session.definition.values_per_cell = 3;
    session.readings.obs_values.assign(7, 8, 0.0);
    session.readings.obs_cells.assign(8, 2, 0);
    session.readings.obs_labels.assign(8, 0);
    for (int n = 1; n <= 5; ++n) add_reading(2, 1, n, "A");
    add_reading(1, 1, 6, "B");
    add_reading(3, 2, 7, "C");
    fill_bin(2, 1, 0, 0, 0, 0);  // the bins count only to decide that there is something
    const std::string text = write(0, 1, 3, 1, 3);  // columns 1 and 2 only
    EXPECT_EQ(written, 4);
    EXPECT_EQ(text.substr(0, 5), " 4 \r\n");
    // The third field of a list line is the elevation, the sixth slot (0.5) is not printed for one type.
    EXPECT_EQ(text.substr(5, 72), "       20.0000       10.0000        0.0000        1.0000        1.0500\r\n");
    EXPECT_NE(text.find("        3.0000        1.1500\r\n       10.0000"), std::string::npos);
    EXPECT_EQ(text.find("        4.0000        1.2000"), std::string::npos);

    // Another selection counts its cells anew.
    session.definition.values_per_cell = 0;
    write(0, 2, 3, 1, 2);
    EXPECT_EQ(written, 5);
}

TEST_F(WriteObservations, NothingSelectedLeavesNoFileAndWrittenAlone) {
    fill_bin(3, 2, 1, 2, 3, 4);
    EXPECT_EQ(write(0, 1, 3, 1, 3), "(no file)");
    EXPECT_EQ(written, -7);
}

TEST_F(WriteObservations, AFileThatCantBeMadeIsReportedOnce) {
    fill_bin(1, 1, 1, 2, 3, 4);
    EXPECT_EQ(write_inversion_data(session, 0, dir.path() / "no" / "such.obs", 1, 4, 1, 3, 0, written), -1);
    EXPECT_EQ(dialogue.messages.size(), 1u);
}

TEST(FormatFixed4, GivesTheBytesOfThePicture) {
    const double samples[] = {0,       -0.0,     0.00004,  -0.00004, 0.00005,         -0.00005,     2.675,
                              1.00005, 0.03125,  -1.5e-9,  99999.99995, 123456.78905, 6543210.12345,
                              1e11,    -3.5e14,  1e32,     -1e32,   12345678901.1234, 0.1 + 0.2};
    char text[400];
    for (double value : samples)
        EXPECT_EQ(std::string(text, format_fixed4(value, text)), format_picture(value, "0.0000")) << value;
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> exponent(-9, 12);
    std::uniform_int_distribution<int> ten_thousandths(-99999999, 99999999);
    for (int n = 0; n < 200000; ++n) {
        const double value = (n % 2 == 0) ? std::pow(10.0, exponent(random)) * (n % 4 == 0 ? -1 : 1)
                                          : ten_thousandths(random) / 10000.0 + 0.00005 * (n % 3);
        ASSERT_EQ(std::string(text, format_fixed4(value, text)), format_picture(value, "0.0000")) << value;
    }
}

}  // namespace
}  // namespace invsetup
