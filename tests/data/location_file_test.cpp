// tests/data/location_file_test.cpp - the point file reader: lines taken, fields decoded, readings
// transformed, limited and densified, line and label tables, the two passes.
#include "data/location_file.h"

#include <gtest/gtest.h>

#include <vector>

#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::elements;
using testing::TempDir;
using testing::write_file_bytes;

struct ReadLocations : ::testing::Test {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    LocationFileSettings settings;
    LocationData data;
    LocationSummary summary;

    void SetUp() override {
        settings.x_column = 1;
        settings.y_column = 2;
        settings.z_column = 3;
        settings.value_columns = {4, 0, 0};
    }
    /// Writes the text as the file and reads it with both passes.
    int load(const std::string& text) {
        settings.file = dir.path() / "points.csv";
        write_file_bytes(settings.file, text);
        return load_locations_file(session, settings, data, summary);
    }
    double x(int n) const { return data.locations(n, 1); }
    double y(int n) const { return data.locations(n, 2); }
    double z(int n) const { return data.locations(n, 3); }
};

// How lines are taken and cut into fields, and how each field's number is read: each case gives
// the readings' x, z and first value in file order (N: null).
TEST_F(ReadLocations, LinesAndFieldsBecomeReadings) {
    constexpr double N = null_value;
    const struct {
        const char* name;
        void (*set)(LocationFileSettings&);
        const char* text;
        std::vector<double> x, z, value;
    } cases[] = {
        {"a repeated header and blank lines are skipped silently", [](auto& s) { s.first_line = 2; },
         "X,Y,Z,MAG\r\n1,2,3,4\r\n\r\nX,Y,Z,MAG\r\n5,6,7,8\r\n", {1, 5}, {3, 7}, {4, 8}},
        {"the lines before the first data line are not looked at", [](auto& s) { s.first_line = 3; },
         "1 1 1 1\n2 2 2 2\n3 3 3 3\n", {3}, {3}, {3}},
        {"a read step of 3 takes the first line and every third after it",
         [](auto& s) {
             s.first_line = 2;
             s.read_step = 3;
         },
         "x y z v\n1 0 0 0\n2 0 0 0\n3 0 0 0\n4 0 0 0\n5 0 0 0\n6 0 0 0\n7 0 0 0\n", {1, 4, 7}, {0, 0, 0},
         {0, 0, 0}},
        {"every line end is one", [](auto&) {}, "1 1 1 1\r2 2 2 2\n3 3 3 3\r\n4 4 4 4", {1, 2, 3, 4},
         {1, 2, 3, 4}, {1, 2, 3, 4}},
        // "4 5" is not a number: the record ends with x, y, z known.
        {"a line with blanks and commas is split at the commas", [](auto&) {}, "1 ,2 , 3,  4 5\n", {1}, {3}, {N}},
        {"quoted fields are read, a quoted comma inside one", [](auto&) {}, "\"7\",8,9,\"1,5\"\n", {7}, {9}, {N}},
        // The value comes first: "*" ends the record before x is read, so the line is no reading.
        {"a field that is no number ends the record in column order",
         [](auto& s) {
             s.x_column = 3;
             s.y_column = 4;
             s.z_column = 0;
             s.value_columns = {1, 0, 0};
         },
         "*,0,10,20\n5,0,11,21\n", {11}, {0}, {5}},
        {"without a z column every elevation is the offset",
         [](auto& s) {
             s.z_column = 0;
             s.elevation_offset = 12.5f;
         },
         "1 2 99 4\n", {1}, {12.5}, {4}},
        // A missing elevation stays null: the offset is not added to it.
        {"depths turn into elevations and the offset is added",
         [](auto& s) {
             s.z_sign_flag = 1;
             s.elevation_offset = 100;
         },
         "1 2 30 4\n1 2 x 4\n", {1, 1}, {70, N}, {4, N}},
        {"numbers follow the numeric rules",
         [](auto& s) {
             s.z_column = 0;
             s.value_columns = {3, 0, 0};
         },
         "+1.5 -2e2 1D2\n.5 3. 4x\n1e 2 3\n", {1.5, 0.5}, {0, 0}, {100, N}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        settings = LocationFileSettings{};
        SetUp();
        c.set(settings);
        dialogue.messages.clear();
        ASSERT_EQ(load(c.text), 0);
        EXPECT_TRUE(dialogue.messages.empty());
        ASSERT_EQ(data.count, static_cast<int>(c.x.size()));
        for (int n = 1; n <= data.count; ++n) {
            const std::size_t k = static_cast<std::size_t>(n - 1);
            EXPECT_EQ(x(n), c.x[k]) << "reading " << n;
            if (is_null(c.z[k])) EXPECT_TRUE(is_null(z(n))) << "reading " << n;
            else EXPECT_EQ(z(n), c.z[k]) << "reading " << n;
            if (is_null(c.value[k])) EXPECT_TRUE(is_null(data.values(n, 1))) << "reading " << n;
            else EXPECT_EQ(data.values(n, 1), static_cast<float>(c.value[k])) << "reading " << n;
        }
    }
}

TEST_F(ReadLocations, TransformAndLimitsApplyToEachReading) {
    settings.transform.active = true;
    settings.transform.map_x0 = 1000;
    settings.transform.map_y0 = 2000;
    update_point_transform(settings.transform);
    settings.transform.active = true;
    settings.has_limits = true;
    settings.x_min = 0;
    settings.x_max = 10;
    settings.y_min = 0;
    settings.y_max = 10;
    ASSERT_EQ(load("1005 2005 0 1\n1020 2005 0 1\n1010 2000 0 1\n"), 0);
    ASSERT_EQ(data.count, 2);  // limits are inclusive and tested in mesh coordinates
    EXPECT_EQ(x(1), 5);
    EXPECT_EQ(y(1), 5);
    EXPECT_EQ(x(2), 10);
}

TEST_F(ReadLocations, LinesLabelsAndExtraValuesAreTabled) {
    settings.line_column = 5;
    settings.label_column = 6;
    settings.extra_value_column = 7;
    ASSERT_EQ(load("1 0 0 1 L2 b 7.5\n2 0 0 1 L2 a 1\n3 0 0 1 L1\n4 0 0 1 L2 a 2\n"), 0);
    ASSERT_EQ(data.count, 4);
    ASSERT_EQ(data.line_count, 3);
    EXPECT_EQ(elements(data.line_names), (std::vector<std::string>{"L2", "L1", "L2"}));
    EXPECT_EQ(elements(data.line_starts), (std::vector<int>{1, 3, 4, 5}));
    EXPECT_EQ(elements(data.line_index), (std::vector<int>{1, 1, 2, 3}));
    // The short line has no label: "NA" sorts before "a" and "b".
    EXPECT_EQ(elements(data.label_names), (std::vector<std::string>{"NA", "a", "b"}));
    EXPECT_EQ(elements(data.label_index), (std::vector<int>{3, 2, 1, 2}));
    EXPECT_EQ(elements(data.extra_values), (std::vector<double>{7.5, 1, 0, 2}));
}

TEST_F(ReadLocations, AnEmptyLineNameIsNA) {
    settings.line_column = 5;
    ASSERT_EQ(load("1,0,0,1,\n"), 0);
    EXPECT_EQ(data.line_names[1], "NA");
}

TEST_F(ReadLocations, DensifyingFillsGapsAlongALine) {
    settings.line_column = 5;
    settings.integration_interval = 3;
    // 10 apart: 10 / 3 gives 3, and 10 - 0.3 lies beyond 9, so 4 steps of 2.5 and 3 points between.
    ASSERT_EQ(load("0 0 0 1 A\n10 0 20 2 A\n11 0 0 3 A\n50 0 0 4 B\n"), 0);
    ASSERT_EQ(data.count, 7);
    EXPECT_EQ(x(2), 2.5);
    EXPECT_EQ(z(2), 5);
    EXPECT_EQ(x(4), 7.5);
    EXPECT_EQ(data.values(3, 1), 2.0f);  // the points in between carry the reading's values
    EXPECT_EQ(x(5), 10);
    EXPECT_EQ(x(6), 11);                 // closer than the interval: nothing added
    EXPECT_EQ(x(7), 50);                 // another line: nothing added
    EXPECT_EQ(data.line_starts[2], 7);

    // A gap of millions of intervals is a fault in the file, refused before memory is asked for it.
    EXPECT_EQ(load("0 0 0 1 A\n10 0 20 2 A\n25 5500550013.0 0 3 A\n"), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_NE(dialogue.messages[0].find("points.csv: The reading on line 3 lies 5500550013.0 from the one before it"),
              std::string::npos)
        << dialogue.messages[0];
}

TEST_F(ReadLocations, CountingPassKeepsRangesAndMeansWithoutNulls) {
    settings.file = dir.path() / "points.csv";
    // A value beyond a single real (1e39) is no value: it would make the mean, and the base value
    // set from it, infinite.
    write_file_bytes(settings.file, "1 5 10 2\n3 -1 -20 *\n2 0 x 4\n2 0 0 4\n2 0 0 1e39\n");
    ASSERT_EQ(read_locations_file(session, settings, location_count_pass, data, summary), 0);
    EXPECT_EQ(data.count, 5);
    EXPECT_EQ(data.locations.rows(), 5);
    EXPECT_EQ(summary.x_min, 1);
    EXPECT_EQ(summary.x_max, 3);
    EXPECT_EQ(summary.y_min, -1);
    EXPECT_EQ(summary.z_min, -20.0f);
    EXPECT_EQ(summary.z_max, 10.0f);
    EXPECT_EQ(summary.value_min[0], 2.0f);
    EXPECT_EQ(summary.value_max[0], 4.0f);
    EXPECT_EQ(summary.value_count[0], 2);
    EXPECT_EQ(summary.value_mean[0], 3.0);
    EXPECT_TRUE(is_null(summary.value_min[1]));
}

TEST_F(ReadLocations, CountingByFormAloneCountsWhatTheFillingPassFinds) {
    settings.keep_ranges = false;  // the quick counting pass: the filling pass checks the count
    ASSERT_EQ(load("X Y Z V\n1 2 3 *\n-1e32 2 3 4\n5 6 x 8\n7,8\n"), 0);
    EXPECT_EQ(data.count, 3);
    EXPECT_TRUE(is_null(z(2)));
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(ReadLocations, AGeosoftDatabaseFailsWithAdvice) {
    settings.file_kind = location_kind_database;
    EXPECT_EQ(load("anything"), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0].rfind("The database could not be opened", 0), 0u);
    EXPECT_NE(dialogue.messages[0].find("CSV"), std::string::npos);
}

TEST_F(ReadLocations, AMissingFileIsReportedByName) {
    settings.file = dir.path() / "none.csv";
    EXPECT_EQ(read_locations_file(session, settings, location_count_pass, data, summary), -1);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_NE(dialogue.messages[0].find("none.csv"), std::string::npos);
}

TEST(LocationSettings, SlotOneTakesTheTopographyColumnsOnly) {
    InversionDefinition definition;
    definition.data_file_names[1] = "topo.xyz";
    definition.data_x_columns = {1, 4};
    definition.data_z_columns = {3, 6};
    definition.data_value_columns = {4, 5, 0};
    definition.integration_interval = 10;
    const LocationFileSettings settings = location_settings(definition, 1);
    EXPECT_EQ(settings.file, "topo.xyz");
    EXPECT_EQ(settings.x_column, 4);
    EXPECT_EQ(settings.z_column, 6);
    EXPECT_EQ(settings.value_columns[0], 0);
    EXPECT_EQ(settings.integration_interval, 0);
    EXPECT_EQ(settings.elevation_offset, 0);
}

}  // namespace
}  // namespace invsetup
