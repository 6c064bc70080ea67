// tests/data/observed_data_test.cpp - conditioning and binning of point files and grids on a small
// mesh built by hand: ten cells of 25 m each way, top at 50.
#include "data/observed_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "data/topography.h"
#include "session.h"
#include "support/numbers.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::write_file_bytes;

struct ProcessData : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;

    void SetUp() override {
        session.mesh = testing::uniform_mesh({10, 10, 2}, {25, 25, 10}, {0, 0, 50});
        InversionDefinition& d = session.definition;
        d.obs_data_file_type = 0;
        d.data_x_columns = {1, 0};
        d.data_y_columns = {2, 0};
        d.data_z_columns = {3, 0};
        d.data_value_columns = {4, 5, 6};
        d.data_first_lines = {1, 1};
        d.data_read_steps = {1, 1};
        d.data_type_count = 1;
        d.topo_type = 1;
        d.sensor_height_type = 1;
        d.regional_base = 0;
        d.regional_scale = 1;
        d.add_mesh_padding = 0;
        d.mesh_cell_size = {25, 25, 10, 0};
        d.values_per_cell = 1;
        d.integration_interval = 0;
        session.bins.size_bins(10, 10);
    }
    /// Writes the text as the point file and processes it into empty bins.
    int process(const std::string& text) {
        session.bins.size_bins(10, 10);
        session.definition.data_file_names[0] = (dir.path() / "obs.csv").string();
        write_file_bytes(dir.path() / "obs.csv", text);
        return process_inversion_data(session);
    }
    const ObservationBins& bins() const { return session.bins; }
};

TEST_F(ProcessData, NullBandsOfTheFirstValueDropTheReading) {
    // One reading per cell along the first row: -99999.5 and -9999.05 are null, -999.05 is not
    // (its band is 0.01 wide), -999.005 is.
    ASSERT_EQ(process("10,10,0,-99999.5\n35,10,0,-9999.05\n60,10,0,-999.05\n85,10,0,-999.005\n110,10,0,7\n"), 0);
    EXPECT_EQ(bins().bin_total, 2);
    EXPECT_EQ(bins().bin_used(3, 1), 1);
    EXPECT_NEAR(bins().bin_value1(3, 1), -999.05, 1e-4);
    EXPECT_EQ(bins().bin_used(1, 1) + bins().bin_used(2, 1) + bins().bin_used(4, 1), 0);
}

TEST_F(ProcessData, WithAnIntegrationIntervalANullValueStaysButANullElevationDoesNot) {
    InversionDefinition& d = session.definition;
    d.integration_interval = 1000;  // no two readings that far apart: nothing is densified
    d.line_column = 7;
    ASSERT_EQ(process("10,10,0,-99999.5,0,0,A\n35,10,-9999,5,0,0,B\n60,10,0,-999.001,0,0,C\n"), 0);
    EXPECT_EQ(bins().bin_total, 2);
    EXPECT_TRUE(is_null(bins().bin_value1(1, 1)));
    EXPECT_TRUE(is_null(bins().bin_value1(3, 1)));
    EXPECT_EQ(bins().bin_used(2, 1), 0);
    EXPECT_EQ(bins().bin_label(3, 1), "C");
}

TEST_F(ProcessData, RegionalTermsApplyToTheFirstValueOnly) {
    InversionDefinition& d = session.definition;
    d.data_type_count = 2;
    d.regional_base = 100;
    d.regional_scale = 2;
    ASSERT_EQ(process("10,10,0,150.5,150.5\n"), 0);
    EXPECT_EQ(bins().bin_value1(1, 1), 101);
    EXPECT_EQ(bins().bin_value2(1, 1), 150.5);
}

TEST_F(ProcessData, ValuesASingleRealCantHoldAreNullsAndCounted) {
    // 1e39 is beyond a single real and 1e309 beyond a double (read as infinite); a coordinate of
    // 1e309 is no place either. None may reach a file as Inf.
    session.definition.data_type_count = 2;
    ASSERT_EQ(process("10,10,0,1e39,1\n35,10,0,1,-1e309\n60,10,1e309,1,1\n1e309,10,0,1,1\n85,10,0,3.4e38,1\n"), 0);
    EXPECT_EQ(bins().bin_total, 1);
    EXPECT_EQ(session.readings.left_out_null, 4);
    EXPECT_EQ(bins().bin_used(4, 1), 1);
}

TEST_F(ProcessData, ASecondOrThirdNullValueDropsTheReadingToo) {
    session.definition.data_type_count = 3;
    ASSERT_EQ(process("10,10,0,1,2,-999\n35,10,0,1,-9999,3\n60,10,0,1,2,3\n"), 0);
    EXPECT_EQ(bins().bin_total, 1);
    EXPECT_EQ(bins().bin_used(3, 1), 1);
}

TEST_F(ProcessData, PaddingLeavesOutFourCellsOnEachSideAndNodesMoveOffEdges) {
    session.definition.add_mesh_padding = 1;  // accepted: x from node 5 (100) up to node 7 (150)
    // x = 100 is the first accepted node and moves in by the tolerance (0.25); x = 150 is out;
    // 149.9 lies within the tolerance of node 7 and moves back; 125.25 is exactly the tolerance from
    // node 6 and stays. y = 112.5 is a centre.
    ASSERT_EQ(process("100,112.5,0,1\n150,112.5,0,2\n149.9,137.5,0,3\n125.25,120,0,4\n99.99,112.5,0,5\n"), 0);
    EXPECT_EQ(bins().bin_total, 3);
    EXPECT_EQ(bins().bin_x(5, 5), 100.25);
    EXPECT_NEAR(bins().bin_x(6, 6), 149.65, 1e-9);
    EXPECT_EQ(bins().bin_x(6, 5), 125.25);
    EXPECT_EQ(bins().bin_used(7, 5), 0);
}

TEST_F(ProcessData, WithoutPaddingTheLastNodeIsOutAndTheFirstIsIn) {
    ASSERT_EQ(process("0,0,0,1\n250,10,0,2\n10,250,0,3\n"), 0);
    EXPECT_EQ(bins().bin_total, 1);
    EXPECT_EQ(bins().bin_x(1, 1), 0.25);
    EXPECT_EQ(bins().bin_y(1, 1), 0.25);
}

TEST_F(ProcessData, LargeMapCoordinatesGetAToleranceOfAFullUnit) {
    session.mesh = testing::uniform_mesh({10, 10, 2}, {25, 25, 10}, {2000000, 0, 50});
    ASSERT_EQ(process("2000025.5,10,0,1\n"), 0);
    EXPECT_EQ(bins().bin_x(2, 1), 2000026.5);  // 0.5 from the node: moved by 1, not left alone
    EXPECT_EQ(bins().bin_y(2, 1), 10);
}

TEST_F(ProcessData, TwoReadingsInOneCellKeepTheNearerInTheBin) {
    // Cell (1, 1) has its centre at (12.5, 12.5).
    const std::string text = "5,5,0,1\n12,12,0,2\n13,13,0,3\n";
    ASSERT_EQ(process(text), 0);
    EXPECT_EQ(session.readings.obs_count, 3);
    EXPECT_EQ(session.readings.obs_values.columns(), 0);  // no list with one value per cell
    EXPECT_EQ(bins().bin_total, 1);
    EXPECT_EQ(bins().bin_value1(1, 1), 2);  // of equal distances the first
    EXPECT_NEAR(bins().bin_value3(1, 1), std::sqrt(0.5), 1e-12);

    session.definition.values_per_cell = 0;
    ASSERT_EQ(process(text), 0);
    const ObservationList& list = session.readings;
    ASSERT_EQ(list.obs_count, 3);
    EXPECT_EQ(list.obs_values(4, 1), 1);
    EXPECT_EQ(list.obs_values(4, 3), 3);
    EXPECT_NEAR(list.obs_values(6, 1), std::sqrt(2 * 7.5 * 7.5), 1e-12);
    EXPECT_EQ(list.obs_cells(3, 1), 1);
    EXPECT_EQ(list.obs_cells(3, 2), 1);
    EXPECT_EQ(bins().bin_value1(1, 1), 2);
}

/// A survey of 3,000 readings on 30 lines over the mesh and beyond it, with readings on nodes, null
/// values and elevations, a line label and an extra value per reading.
std::string mixed_survey() {
    std::string text = "x,y,z,v1,v2,v3,line,extra\n";
    for (int line = 0; line < 30; ++line)
        for (int n = 0; n < 100; ++n) {
            const double x = n % 17 == 0 ? 25.0 * (n % 11) : -20 + 2.9 * n + 0.37 * line;
            const double y = line % 7 == 0 ? 25.0 * (line / 7) : -15 + 9.1 * line + 1.3 * std::sin(n);
            const double z = n % 23 == 0 ? -99999 : 40 + std::cos(x / 30) * 5;
            const double v1 = n % 19 == 0 ? -9999 : std::sin(x / 20) * 100 + line;
            const double v2 = n % 29 == 0 ? -99999 : n * 0.5;
            text += std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(z) + "," + std::to_string(v1) +
                    "," + std::to_string(v2) + ",1," + (line % 5 == 0 ? std::string() : "L" + std::to_string(line)) +
                    "," + std::to_string(n * 0.25) + "\n";
        }
    return text;
}

TEST_F(ProcessData, BinningWhileReadingFillsTheBinsOfTheListedWay) {
    struct Case {
        const char* name;
        int padding, data_types, sensor_height_type, topo_type;
        float integration_interval;
    };
    const Case cases[] = {
        {"plain", 0, 1, 1, 1, 0},
        {"padding and two values", 1, 2, 1, 1, 0},
        {"three values, densified", 0, 3, 1, 1, 30},
        {"height above triangulated points", 0, 2, 0, 0, 0},
        {"densified above triangulated points", 1, 1, 0, 0, 20},
    };
    // Rolling ground over the mesh and its one-cell margin, triangulated with its closing points.
    Array2<double> ground(400, 3);
    for (int n = 1; n <= 400; ++n) {
        const double x = -25 + 300.0 * ((n * 37) % 400) / 400, y = -25 + 300.0 * ((n * 91) % 397) / 397;
        ground(n, 1) = x;
        ground(n, 2) = y;
        ground(n, 3) = 30 + 4 * std::sin(x / 40) * std::cos(y / 50);
    }
    InversionDefinition& d = session.definition;
    d.line_column = 7;
    d.extra_value_column = 8;
    const std::string survey = mixed_survey();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        d.add_mesh_padding = c.padding;
        d.data_type_count = c.data_types;
        d.sensor_height_type = c.sensor_height_type;
        d.topo_type = c.topo_type;
        d.integration_interval = c.integration_interval;
        d.elevation_offsets = {2, 0, 0};
        if (c.topo_type == 0) {
            ASSERT_EQ(grid_topo_from_points(session, 400, ground), 0);
        }

        d.values_per_cell = 0;  // the listed way
        ASSERT_EQ(process(survey), 0);
        const ObservationBins listed = session.bins;
        const ObservationList listed_counts = session.readings;
        d.values_per_cell = 1;  // binned while read, here and on the reading thread
        for (const char* threads : {"1", "2"}) {
            setenv("INVSETUP_THREADS", threads, 1);
            session.bins.size_bins(10, 10);
            write_file_bytes(dir.path() / "obs.csv", survey);
            read_observed_data_ahead(session);
            const int status = process_inversion_data(session);
            unsetenv("INVSETUP_THREADS");
            ASSERT_EQ(status, 0);
            const ObservationList& list = session.readings;
            EXPECT_EQ(list.read_count, listed_counts.read_count);
            EXPECT_EQ(list.obs_count, listed_counts.obs_count);
            EXPECT_EQ(list.left_out_null, listed_counts.left_out_null);
            EXPECT_EQ(list.left_out_outside, listed_counts.left_out_outside);
            EXPECT_EQ(list.left_out_no_topography, 0);
            EXPECT_EQ(bins().bin_total, listed.bin_total);
            EXPECT_GE(listed.bin_total, 4);  // 2 by 2 columns inside a padding of four
            for (int j = 1; j <= 11; ++j)
                for (int i = 1; i <= 11; ++i) {
                    SCOPED_TRACE("bin " + std::to_string(i) + ", " + std::to_string(j));
                    EXPECT_EQ(bins().bin_used(i, j), listed.bin_used(i, j));
                    EXPECT_EQ(bins().bin_x(i, j), listed.bin_x(i, j));
                    EXPECT_EQ(bins().bin_y(i, j), listed.bin_y(i, j));
                    EXPECT_EQ(bins().bin_z(i, j), listed.bin_z(i, j));
                    EXPECT_EQ(bins().bin_value1(i, j), listed.bin_value1(i, j));
                    EXPECT_EQ(bins().bin_value2(i, j), listed.bin_value2(i, j));
                    EXPECT_EQ(bins().bin_value3(i, j), listed.bin_value3(i, j));
                    EXPECT_EQ(bins().bin_extra(i, j), listed.bin_extra(i, j));
                    EXPECT_EQ(bins().bin_label(i, j), listed.bin_label(i, j));
                }
        }
    }
}

TEST_F(ProcessData, HeightAboveTopoAddsTheSurfaceAndTheOffsetIsAddedOnce) {
    InversionDefinition& d = session.definition;
    d.elevation_offsets = {3, 0, 0};
    ASSERT_EQ(process("10,10,20,1\n"), 0);
    EXPECT_EQ(bins().bin_z(1, 1), 23);  // actual elevation: as read plus the offset

    d.sensor_height_type = 0;  // height above the surface, here the top of the mesh (50)
    ASSERT_EQ(process("10,10,20,1\n"), 0);
    EXPECT_EQ(bins().bin_z(1, 1), 73);

    d.data_z_columns = {0, 0};  // no elevation column: height 0 plus the offset above the surface
    ASSERT_EQ(process("10,10,20,1\n"), 0);
    EXPECT_EQ(bins().bin_z(1, 1), 53);
}

TEST_F(ProcessData, ReadingsBelowTheMinimumClearanceAreLiftedAndCounted) {
    // A sloping surface z = x / 10 over the mesh, triangulated by hand.
    Topography& topo = session.topography;
    const std::vector<double> x = {-50, 300, 300, -50}, y = {-50, -50, 300, 300};
    topo.topo_z = {-5, 30, 30, -5};
    topo.topo_point_count = 4;
    ASSERT_EQ(topo.triangulation.build(x, y), 0);
    InversionDefinition& d = session.definition;
    d.topo_type = 0;
    d.elevation_offsets = {0, 0, 5};
    // Surface at x = 10 is 1 and at x = 110 is 11: the first two lie 1 and 4 above it, the third 6.
    ASSERT_EQ(process("10,10,2,1\n110,10,15,2\n210,10,27,3\n"), 0);
    EXPECT_NEAR(bins().bin_z(1, 1), 6, 1e-9);
    EXPECT_NEAR(bins().bin_z(5, 1), 16, 1e-9);
    EXPECT_EQ(bins().bin_z(9, 1), 27);
    EXPECT_EQ(session.readings.shift_count, 2);
    EXPECT_EQ(session.form.text("Text_progress"), "Number of data points shifted: 2 average shift: 2.5\r\n");

    d.elevation_offsets = {0, 0, 0};  // no minimum: readings under the surface stay there
    session.form.set_text("Text_progress", "");
    ASSERT_EQ(process("10,10,-20,1\n"), 0);
    EXPECT_EQ(bins().bin_z(1, 1), -20);
    EXPECT_EQ(session.form.text("Text_progress"), "");
}

TEST_F(ProcessData, OutsideTheTriangulatedSurfaceAReadingIsDropped) {
    Topography& topo = session.topography;
    const std::vector<double> x = {0, 100, 0}, y = {0, 0, 100};
    topo.topo_z = {0, 0, 0};
    ASSERT_EQ(topo.triangulation.build(x, y), 0);
    session.definition.topo_type = 0;
    ASSERT_EQ(process("10,10,0,1\n200,200,0,1\n"), 0);
    EXPECT_EQ(bins().bin_total, 1);
}

TEST_F(ProcessData, FewerThanTenBinsWarnButSucceedAndSayWhyTheOthersWent) {
    // Kept, kept but beaten in its bin, a null value, a null elevation, outside the mesh.
    ASSERT_EQ(process("10,10,0,1\n12,12,0,1\n40,10,0,-9999\n40,40,-99999,1\n300,10,0,1\n"), 0);
    EXPECT_EQ(dialogue.messages,
              (std::vector<std::string>{"Warning: The number of inversion data defined is only 1",
                                        "Of the 5 readings in obs.csv, 2 had a null value or elevation, 1 lay outside "
                                        "the mesh core and 0 had no topography under them."}));
}

TEST_F(ProcessData, AMissingFileFailsWithTheReadersMessage) {
    session.definition.data_file_names[0] = (dir.path() / "none.csv").string();
    EXPECT_EQ(process_inversion_data(session), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
}

/// An ESRI ASCII grid of n by n nodes, spacing 25, the node (c, r) at (x0 + 25 c, y0 + 25 r) from 0,
/// with the value x + 2y, or the null where `hole` says so.
std::string plane_grid(int n, double x0, double y0, bool (*hole)(double, double) = nullptr) {
    std::string text = "ncols " + std::to_string(n) + "\nnrows " + std::to_string(n) + "\nxllcenter " +
                       std::to_string(x0) + "\nyllcenter " + std::to_string(y0) +
                       "\ncellsize 25\nNODATA_value -9999\n";
    for (int r = n - 1; r >= 0; --r) {
        for (int c = 0; c < n; ++c) {
            const double x = x0 + 25 * c, y = y0 + 25 * r;
            text += (hole && hole(x, y)) ? "-9999 " : std::to_string(x + 2 * y) + " ";
        }
        text += "\n";
    }
    return text;
}

TEST_F(ProcessData, GridsFillEveryAcceptedColumnAtItsCentre) {
    InversionDefinition& d = session.definition;
    d.obs_data_file_type = 1;
    d.data_type_count = 2;
    d.regional_base = 10;
    d.regional_scale = 1;
    d.elevation_offsets = {30, 0, 0};
    d.sensor_height_type = 0;
    d.add_mesh_padding = 1;
    write_file_bytes(dir.path() / "one.asc", plane_grid(14, -50, -50));
    write_file_bytes(dir.path() / "two.asc", plane_grid(14, -50, -50));
    d.data_file_names[2] = (dir.path() / "one.asc").string();
    d.data_file_names[3] = (dir.path() / "two.asc").string();
    ASSERT_EQ(process_inversion_data(session), 0) << (dialogue.messages.empty() ? "" : dialogue.messages[0]);
    EXPECT_EQ(bins().bin_total, 4);  // cells 5 and 6 each way
    EXPECT_EQ(bins().bin_used(4, 5), 0);
    EXPECT_EQ(bins().bin_x(5, 6), 112.5);
    EXPECT_EQ(bins().bin_y(5, 6), 137.5);
    EXPECT_NEAR(bins().bin_value1(5, 6), 112.5 + 275 - 10, 1e-3);
    EXPECT_NEAR(bins().bin_value2(5, 6), 112.5 + 275, 1e-3);
    EXPECT_EQ(bins().bin_z(5, 6), 80);  // the top of the mesh plus the offset

    // A sensor elevation grid adds itself; where it has no value the reading is gone.
    session.bins.size_bins(10, 10);
    write_file_bytes(dir.path() / "sensor.asc",
                     plane_grid(14, -50, -50, [](double x, double y) { return x > 130 && y > 130; }));
    d.data_file_names[5] = (dir.path() / "sensor.asc").string();
    ASSERT_EQ(process_inversion_data(session), 0);
    EXPECT_EQ(bins().bin_total, 4);
    EXPECT_EQ(bins().bin_used(6, 6), 0);
    EXPECT_NEAR(bins().bin_z(5, 5), 80 + 112.5 + 225, 1e-3);
}

}  // namespace
}  // namespace invsetup
