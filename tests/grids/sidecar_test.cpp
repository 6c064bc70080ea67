// tests/grids/sidecar_test.cpp - finding and reading the georeference beside a raster picture.
#include "grids/sidecar.h"

#include <gtest/gtest.h>

#include "grid_fixtures.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::write_file_bytes;

// Each row lays out files beside a picture; the first georeference found among them, or none.
TEST(FindSidecar, EachKindTriesItsOwnNamesInOrder) {
    const struct {
        std::vector<const char*> files;
        const char* image;
        const char* found;
    } cases[] = {
        {{"map.tif", "map.tfw", "map.tifw"}, "map.tif", "map.tifw"},  // an added w comes first
        {{"map.tfw", "map.tab"}, "map.tif", "map.tfw"},
        // The one place where the kinds differ in order: TIFF tries ".grf" before ".egb", the rest after.
        {{"map.egb", "map.grf"}, "map.tif", "map.grf"},
        {{"map.egb", "map.grf"}, "map.jpg", "map.egb"},
        {{"map.egb", "map.grf"}, "map.tga", "map.egb"},
        // PNG has no world file names nor ".grf".
        {{"map.pgw", "map.pngw.bak", "map.grf"}, "map.png", ""},
        {{"map.pgw", "map.grf", "map.hdr"}, "map.png", "map.hdr"},
        {{"a.bmw", "a.bpw"}, "a.bmp", "a.bpw"},
        {{"b.jgw", "b.tab"}, "b.jpg", "b.jgw"},
        {{"b.jgw", "b.tab", "b.jpw"}, "b.jpg", "b.jpw"},
        {{"c.giw"}, "c.gif", "c.giw"},
        {{"c.giw"}, "d.gif", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.image);
        TempDir dir;
        for (const char* name : c.files) write_file_bytes(dir.path() / name, "");
        EXPECT_EQ(find_sidecar_file((dir.path() / c.image).string()), *c.found ? (dir.path() / c.found).string() : "");
    }
}

class ReadSidecar : public ::testing::Test {
protected:
    SidecarGeoreference read(const std::string& name, const std::string& bytes) {
        write_file_bytes(dir.path() / name, bytes);
        return read_sidecar_file((dir.path() / name).string());
    }
    struct Limits {
        double x_min = 0, x_max = 0, y_min = 0, y_max = 0, dx = 0, dy = 0;
    };
    /// Where a picture of `columns` by `rows` pixels lies by the georeference.
    static Limits limits(const SidecarGeoreference& georeference, int columns, int rows) {
        Limits l;
        EXPECT_TRUE(georeference_limits(georeference, columns, rows, l.x_min, l.x_max, l.y_min, l.y_max, l.dx, l.dy));
        return l;
    }
    TempDir dir;
};

TEST_F(ReadSidecar, WorldFileCommentsReadTheSameAsWithout) {
    const SidecarGeoreference plain = read("plain.tfw", "2.5\n0\n0\n-2.5\n500001.25\n7000098.75\n");
    const SidecarGeoreference noted =
        read("noted.tfw", "2.5 ! x size\r\n\r\n0 ! rotation\r\n0\r\n-2.5!y size\r\n500001.25\r\n7000098.75 ! top left\r\n");
    for (const SidecarGeoreference& result : {plain, noted}) {
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.kind, SidecarKind::world_file);
        EXPECT_DOUBLE_EQ(result.x_pixel_size, 2.5);
        EXPECT_DOUBLE_EQ(result.y_pixel_size, -2.5);
        EXPECT_DOUBLE_EQ(result.x_origin, 500001.25);
        EXPECT_DOUBLE_EQ(result.y_origin, 7000098.75);
        EXPECT_EQ(result.x_min, -1e32);
    }
    // The placement of a 4 x 2 picture: pixel centres from the origin.
    const Limits placed = limits(plain, 4, 2);
    EXPECT_DOUBLE_EQ(placed.x_min, 500001.25);
    EXPECT_DOUBLE_EQ(placed.x_max, 500008.75);
    EXPECT_DOUBLE_EQ(placed.y_min, 7000096.25);
    EXPECT_DOUBLE_EQ(placed.y_max, 7000098.75);
    EXPECT_DOUBLE_EQ(placed.dy, 2.5);
}

TEST_F(ReadSidecar, ShortWorldFileOrMissingFileGivesNothing) {
    EXPECT_EQ(read("short.jgw", "2.5\n0\n0\n-2.5\n500001.25\n").status, -1);
    EXPECT_EQ(read_sidecar_file((dir.path() / "absent.jgw").string()).status, -1);
}

TEST_F(ReadSidecar, NumbersThatArentFiniteAreRefusedNamingTheField) {
    const struct {
        const char* name;
        const char* bytes;
        const char* refusal;
    } cases[] = {
        {"a.tfw", "inf\n0\n0\n-2.5\n500001.25\n7000098.75\n",
         "it gives the x pixel size as inf or beyond a double real, not a finite number"},
        {"b.jgw", "2.5\n0\n0\nnan\n500001.25\n7000098.75\n", "it gives the y pixel size as nan, not a finite number"},
        {"c.pgw", "2.5\n0\n0\n-2.5\n-1e309\n7000098.75\n",
         "it gives the x origin as -inf or beyond a double real, not a finite number"},
        {"d.grf", "500000\n7000000\n10\n0\n1e400\n", "it gives the y pixel size as -inf or beyond a double real, not a finite number"},
        {"e.hdr", "ENVI\nmap info = {UTM, 1, 1, 5, nan, 30, 30}\n", "it gives the y origin as nan, not a finite number"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const SidecarGeoreference result = read(c.name, c.bytes);
        EXPECT_EQ(result.status, -1);
        EXPECT_EQ(result.refusal, c.refusal);
    }
    // A number too small for a double real is 0, as the digits say.
    EXPECT_EQ(read("tiny.tfw", "2.5\n1e-400\n0\n-2.5\n500001.25\n7000098.75\n").status, 0);
}

constexpr const char* tab_head = "!table\n!version 300\n!charset WindowsLatin1\n\nDefinition Table\n"
                                 "  File \"map.jpg\"\n  Type \"RASTER\"\n";

TEST_F(ReadSidecar, TabControlPointsGiveLimitsWithTheirPixels) {
    const SidecarGeoreference result =
        read("map.tab", std::string(tab_head) +
                            "  (500000,7001000) (0,0) Label \"Pt 1\",\n"
                            "  (502000,7001000) (200,0) Label \"Pt 2\",\n"
                            "  (500000,7000000) (0,100) Label \"Pt 3\"\n"
                            "  CoordSys Earth Projection 8, 104, \"m\", 147, 0, 0.9996, 500000, 10000000\n"
                            "  Units \"m\"\n");
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(result.kind, SidecarKind::control_points);
    EXPECT_DOUBLE_EQ(result.x_min, 500000);
    EXPECT_DOUBLE_EQ(result.x_max, 502000);
    EXPECT_DOUBLE_EQ(result.y_min, 7000000);
    EXPECT_DOUBLE_EQ(result.y_max, 7001000);
    EXPECT_DOUBLE_EQ(result.x_max_pixel, 200);
    EXPECT_DOUBLE_EQ(result.y_min_pixel, 100);
    EXPECT_DOUBLE_EQ(result.y_max_pixel, 0);
    // 10 m pixels measured from the picture's corner: the first centre lies half a pixel in.
    const Limits placed = limits(result, 200, 100);
    EXPECT_DOUBLE_EQ(placed.x_min, 500005);
    EXPECT_DOUBLE_EQ(placed.x_max, 501995);
    EXPECT_DOUBLE_EQ(placed.y_min, 7000005);
    EXPECT_DOUBLE_EQ(placed.y_max, 7000995);
    EXPECT_DOUBLE_EQ(placed.dx, 10);
}

TEST_F(ReadSidecar, TabWithTwoPointsOrABadPairGivesNothing) {
    EXPECT_EQ(read("two.tab", std::string(tab_head) +
                                  "  (500000,7001000) (0,0) Label \"Pt 1\",\n"
                                  "  (502000,7000000) (200,100) Label \"Pt 2\"\n"
                                  "  CoordSys Earth Projection 8, 104\n")
                  .status,
              -1);
    EXPECT_EQ(read("bad.tab", std::string(tab_head) +
                                  "  (500000,7001000) (0,0) Label \"Pt 1\",\n"
                                  "  (502000,north) (200,0) Label \"Pt 2\",\n"
                                  "  (500000,7000000) (0,100) Label \"Pt 3\"\n"
                                  "  CoordSys Earth Projection 8, 104\n")
                  .status,
              -1);
}

TEST_F(ReadSidecar, EnviMapInfoOnOneLineGivesPixelSizesFromTokensFiveAndSix) {
    const SidecarGeoreference result =
        read("scene.hdr", "ENVI\r\ndescription = {scene}\r\nsamples = 400\r\nlines   = 300\r\n! a comment\r\n"
                          "map info = {UTM, 1.000, 1.000, 500000.000, 7000000.000, 3.0000000000e+001, 2.0e+001, 55, "
                          "South, WGS-84, units=Meters}\r\n");
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(result.kind, SidecarKind::envi_header);
    EXPECT_DOUBLE_EQ(result.x_origin, 500000);
    EXPECT_DOUBLE_EQ(result.y_origin, 7000000);
    EXPECT_DOUBLE_EQ(result.x_pixel_size, 30);
    EXPECT_DOUBLE_EQ(result.y_pixel_size, 20);
    const Limits placed = limits(result, 400, 300);
    EXPECT_DOUBLE_EQ(placed.x_min, 500015);
    EXPECT_DOUBLE_EQ(placed.y_max, 6999990);
    EXPECT_DOUBLE_EQ(placed.y_min, 6999990 - 299 * 20);
}

TEST_F(ReadSidecar, EnviMapInfoOverSeveralLinesAndBadSizes) {
    const SidecarGeoreference split = read("split.hdr", "ENVI\nsamples = 4\nlines = 3\nmap info = {UTM, 1.5, 1.5,\n"
                                                        "  500000, 7000000, 30, 30, 55, South}\n");
    EXPECT_EQ(split.status, 0);
    EXPECT_DOUBLE_EQ(split.x_reference_pixel, 1.5);
    EXPECT_DOUBLE_EQ(split.y_pixel_size, 30);
    EXPECT_EQ(read("bad.hdr", "ENVI\nsamples = many\nmap info = {UTM, 1, 1, 5, 7, 30, 30}\n").status, -1);
}

TEST_F(ReadSidecar, GrfFifthNumberChangesSign) {
    const SidecarGeoreference result = read("map.grf", "500005\n\n7000995\n10\n0\n10\n");
    ASSERT_EQ(result.status, 0);
    EXPECT_DOUBLE_EQ(result.x_origin, 500005);
    EXPECT_DOUBLE_EQ(result.y_origin, 7000995);
    EXPECT_DOUBLE_EQ(result.x_pixel_size, 10);
    EXPECT_DOUBLE_EQ(result.y_pixel_size, -10);
    EXPECT_EQ(result.x_min, 0);
}

TEST_F(ReadSidecar, EgbRegistrationBlockAndVertices) {
    const SidecarGeoreference result =
        read("map.egb", "GEOREFERENCEIMAGE\nREGISTRATION\nX Origin = 500005\nY Origin = 7000995\n"
                        "X Pixel Size = 10\nY Pixel Size = -10\nVertex = 500000, 7001000\nVertex = 502000, 7000000\n");
    ASSERT_EQ(result.status, 0);
    EXPECT_DOUBLE_EQ(result.y_pixel_size, -10);
    EXPECT_DOUBLE_EQ(result.x_max, 502000);
    EXPECT_DOUBLE_EQ(result.y_min, 7000000);
    EXPECT_EQ(read("other.egb", "REGISTRATION\nX Origin = 1\n").status, -1);
}

// The TIFF's tags place its corner; the result must match a world file's pixel-centre origin, and a
// world file beside the TIFF must not leak into the tags.
TEST_F(ReadSidecar, TiffTagsGiveTheFirstPixelCentre) {
    const auto tiff = dir.path() / "placed.tif";
    testing::write_gdal_grid(tiff, "GTiff", 4, 2, 500000, 7000100, 2.5, 2.5, std::vector<float>(8, 1.0f));
    write_file_bytes(dir.path() / "placed.tfw", "1\n0\n0\n-1\n0\n0\n");
    const SidecarGeoreference result = read_sidecar_file(tiff.string());
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(result.kind, SidecarKind::tiff_tags);
    EXPECT_DOUBLE_EQ(result.x_origin, 500001.25);
    EXPECT_DOUBLE_EQ(result.y_origin, 7000098.75);
    EXPECT_DOUBLE_EQ(result.y_pixel_size, -2.5);

    const auto plain = dir.path() / "plain.tif";
    GDALAllRegister();
    GDALClose(GDALCreate(GDALGetDriverByName("GTiff"), plain.string().c_str(), 2, 2, 1, GDT_Byte, nullptr));
    EXPECT_EQ(read_sidecar_file(plain.string()).status, -1);
}

}  // namespace
}  // namespace invsetup
