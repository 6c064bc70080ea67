// tests/create/topography_drape_test.cpp - readings draped on the topography in whatever form a
// surface arrives: a regular-grid point file (with a header, or blank-separated) or a real grid file
// (ESRI ASCII, GeoTIFF). Every form of one plane must give the readings the same elevations.
#include <gtest/gtest.h>

#include <cstdlib>

#include "commands/create_commands.h"
#include "grids/grid_file.h"
#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using namespace testing;

/// The surface of every case: a plane rising east and north.
double plane(double x, double y) { return 40 + 0.1 * (x - 1000) + 0.05 * (y - 2000); }

/// A 2 x 2 x 4 mesh of 50 m columns and 25 m layers, X 1000 to 1100, Y 2000 to 2100, Z 0 to 100.
/// The readings stand 5 m above the topography, which takes an offset of 2 m.
InversionFields draped_definition(const std::string& topography) {
    InversionFields d = small_survey({1000, 2000, 0}, {1100, 2100, 100}, {50, 50, 25});
    d.data_file_names[1] = topography;
    d.data_first_lines = {2, 1};
    d.data_name_lines = {1, 0};
    d.sensor_height_type = 0;  // the elevation column holds the height above the topography
    d.elevation_offsets = {0, 2, 0};
    return d;
}

/// The nodes of a 10 m lattice over the mesh and 40 m round it, south row first, as `row(x, y, z)`.
template <class Row>
std::string lattice(std::string text, Row row) {
    for (int y = 1960; y <= 2140; y += 10)
        for (int x = 960; x <= 1140; x += 10) text += row(x, y, plane(x, y));
    return text;
}

/// The same lattice as an ESRI ASCII grid, north row first; `hole` (x, y) is left without a value.
std::string esri_grid(int hole_x = 0, int hole_y = 0) {
    std::string text = "ncols 19\r\nnrows 19\r\nxllcenter 960\r\nyllcenter 1960\r\ncellsize 10\r\nNODATA_value -9999\r\n";
    for (int y = 2140; y >= 1960; y -= 10) {
        for (int x = 960; x <= 1140; x += 10)
            text += (x == hole_x && y == hole_y ? std::string("-9999") : std::to_string(plane(x, y))) + " ";
        text += "\r\n";
    }
    return text;
}

class DrapedReadings : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    fs::path work = dir.path() / "work";
    fs::path run = dir.path() / "runs" / "run";

    void SetUp() override {
        fs::create_directories(work);
        // A station grid: the grid layer would read these four rows as a 2 x 2 raster.
        write_file_bytes(work / "obs.csv", "x,y,z,value\r\n1025,2025,5,12.5\r\n1075,2025,5,-3.25\r\n"
                                           "1025,2075,5,7\r\n1075,2075,5,100\r\n");
        ASSERT_EQ(grid_format_name((work / "obs.csv").string()), "XYZ");
    }

    /// Creates the run package of the definition; the last message and the progress on failure.
    ::testing::AssertionResult create(const InversionFields& definition) {
        if (load_definition(session, dialogue, definition, work / "survey.inp") != 0)
            return ::testing::AssertionFailure() << "the definition wasn't read";
        set_run_directory(session, run);
        if (create_command(session, 0) == 0) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << last_words(session, dialogue);
    }
};

struct TopographyForm {
    const char* name;
    const char* file;
    std::string (*text)();
    bool is_grid;
};

const TopographyForm topography_forms[] = {
    {"CsvWithHeader", "topo.csv",
     [] { return lattice("x,y,z\r\n", [](int x, int y, double z) {
              return std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(z) + "\r\n"; }); },
     false},
    {"BlankSeparated", "topo.xyz",
     [] { return lattice("", [](int x, int y, double z) {
              return std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z) + "\n"; }); },
     false},
    {"EsriAscii", "topo.asc", [] { return esri_grid(); }, true},
    // A GeoTIFF is made from the ESRI grid by GDAL's own tool below.
    {"GeoTiff", "topo.tif", nullptr, true},
};

class EveryTopographyForm : public DrapedReadings, public ::testing::WithParamInterface<TopographyForm> {};

TEST_P(EveryTopographyForm, GivesTheReadingsTheSurfacePlusTheirHeight) {
    const TopographyForm& form = GetParam();
    if (form.text) {
        write_file_bytes(work / form.file, form.text());
    } else {
        write_file_bytes(work / "plane.asc", esri_grid());
        const std::string convert = "gdal_translate -q -of GTiff -ot Float32 \"" + (work / "plane.asc").string() +
                                    "\" \"" + (work / form.file).string() + "\"";
        ASSERT_EQ(std::system(convert.c_str()), 0) << convert;
    }
    EXPECT_EQ(is_grid_file((work / form.file).string()), form.is_grid);

    ASSERT_TRUE(create(draped_definition(form.file)));
    EXPECT_EQ(session.definition.data_file_kinds[0], 0);
    EXPECT_EQ(session.definition.data_file_kinds[1], form.is_grid ? 1 : 0);
    EXPECT_EQ(read_file_bytes(run / "mag.obs"), read_file_bytes(test_data("create/draped_mag.obs")));
}

INSTANTIATE_TEST_SUITE_P(Topography, EveryTopographyForm, ::testing::ValuesIn(topography_forms),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DrapedReadings, AReadingOverAGridHoleIsLeftOutAndCounted) {
    write_file_bytes(work / "topo.asc", esri_grid(1080, 2080));  // a corner of the last reading's square
    InversionFields definition = draped_definition("topo.asc");
    ASSERT_TRUE(create(definition));
    std::string expected = read_file_bytes(test_data("create/draped_mag.obs"));
    expected.replace(expected.find(" 4 "), 3, " 3 ");
    expected.erase(expected.rfind("     1075.0000     2075.0000"));
    EXPECT_EQ(read_file_bytes(run / "mag.obs"), expected);
    EXPECT_EQ(session.readings_kept, 3);
    // Few readings: the warning, then why the others went.
    ASSERT_GE(dialogue.messages.size(), 3u);
    EXPECT_EQ(dialogue.messages[dialogue.messages.size() - 3], "Warning: The number of inversion data defined is only 3");
    EXPECT_EQ(dialogue.messages[dialogue.messages.size() - 2],
              "Of the 4 readings in obs.csv, 0 had a null value or elevation, 0 lay outside the mesh core and 1 had "
              "no topography under them.");
}

TEST_F(DrapedReadings, FlatGroundOnANodeStaysOnIt) {
    // A DEM flat at 350 whose nodes don't line up with the mesh; 25 m layers from a top of 375. The
    // bilinear weights of a centre don't add up to exactly 1, so the surface comes out a hair below
    // 350 in places, which must not count as below the node.
    std::string grid = "ncols 7\r\nnrows 7\r\nxllcenter 454990.1\r\nyllcenter 6219988.5\r\ncellsize 25\r\n";
    for (int row = 0; row < 7; ++row) {
        for (int column = 0; column < 7; ++column) grid += "350 ";
        grid += "\r\n";
    }
    write_file_bytes(work / "topo.asc", grid);
    InversionFields d = draped_definition("topo.asc");
    d.mesh_min = {455000, 6220000, 275, 0};
    d.mesh_max = {455100, 6220100, 375, 0};
    d.elevation_offsets = {0, 0, 0};
    d.topo_shift_option = 1;
    write_file_bytes(work / "obs.csv", "x,y,z,value\r\n455025,6220025,5,12.5\r\n455075,6220075,5,7\r\n");
    ASSERT_TRUE(create(d));
    std::string expected = "9\r\n";
    for (int y : {6220000, 6220050, 6220100})
        for (int x : {455000, 455050, 455100}) expected += std::to_string(x) + " " + std::to_string(y) + " 350\r\n";
    EXPECT_EQ(read_file_bytes(run / "topo.dat"), expected);
}

}  // namespace
}  // namespace invsetup
