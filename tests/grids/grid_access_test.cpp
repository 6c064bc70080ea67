// tests/grids/grid_access_test.cpp - opening grids and pictures for an area, with their messages.
#include "grids/grid_access.h"

#include <gtest/gtest.h>

#include "grid_fixtures.h"
#include "grids/image_record.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using testing::TempDir;
using testing::write_file_bytes;
using testing::write_gdal_grid;
using testing::ramp_values;

class ReadGridHeader : public ::testing::Test {
protected:
    int read(const std::filesystem::path& path, double& x_min, double& x_max, double& y_min, double& y_max) {
        int status = -9;
        read_grid_header(session, path.string(), window, text, ints, reals, x_min, x_max, y_min, y_max, status);
        return status;
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    GridWindow window;
    std::string text;
    Array1<int> ints;
    Array1<double> reals;
};

TEST_F(ReadGridHeader, ReversedLimitsMeanTheWholeGridAndComeBack) {
    const auto path = dir.path() / "ramp.ers";
    write_gdal_grid(path, "ERS", 10, 8, 1000, 2000, 10, 10, ramp_values(10, 8));
    double x_min = 1090, x_max = 1010, y_min = 1930, y_max = 1990;  // x reversed
    ASSERT_EQ(read(path, x_min, x_max, y_min, y_max), 0);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_DOUBLE_EQ(x_min, 1005);
    EXPECT_DOUBLE_EQ(x_max, 1095);
    EXPECT_DOUBLE_EQ(y_min, 1925);
    EXPECT_DOUBLE_EQ(y_max, 1995);
    EXPECT_EQ(ints[grid_int::columns], 10);
    EXPECT_EQ(window.header.rows(), 8);
    EXPECT_EQ(session.grids.current_grid_file, path.string());
    EXPECT_TRUE(std::filesystem::path(window.name).filename().string().starts_with("~WD"));
}

TEST_F(ReadGridHeader, GivenLimitsStayAndTheHeaderIsTheWindows) {
    const auto path = dir.path() / "ramp.grd";
    write_gdal_grid(path, "GS7BG", 10, 8, 1000, 2000, 10, 10, ramp_values(10, 8));
    double x_min = 1012, x_max = 1031, y_min = 1940, y_max = 1950;
    ASSERT_EQ(read(path, x_min, x_max, y_min, y_max), 0);
    EXPECT_DOUBLE_EQ(x_min, 1012);
    EXPECT_DOUBLE_EQ(y_max, 1950);
    EXPECT_EQ(ints[grid_int::columns], 4);
    EXPECT_DOUBLE_EQ(reals[grid_real::x_min], 1005);
    EXPECT_DOUBLE_EQ(reals[grid_real::y_max], 1955);
    EXPECT_EQ(window.value(1, 1), 10.0f);
    // A second read replaces the first part and its name.
    const std::string first_name = window.name;
    ASSERT_EQ(read(path, x_min, x_max, y_min, y_max), 0);
    EXPECT_NE(window.name, first_name);
    EXPECT_EQ(session.grids.temporary_grid_name, window.name);
}

TEST_F(ReadGridHeader, DamagedGridsSayWhyTheyAreInvalid) {
    // "%F" stands for the file's path; a message ending in "..." gives the start of the one shown. A
    // header can claim more values than its file holds (and nothing is taken for them); GDAL's own
    // words are shown when they explain the failure. A file without text is not there at all.
    const char* const head = "ncols 3\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 10\nNODATA_value -9999\n";
    const struct {
        std::string name;
        std::string text;
        std::string message;
    } cases[] = {
        {"notes.grd", "nothing of a grid here\n", "Failed to determine grid format"},
        // One column: x maximum equals x minimum.
        {"line.asc", "ncols 1\nnrows 3\nxllcorner 0\nyllcorner 0\ncellsize 10\n1\n2\n3\n", "The specified grid is invalid"},
        {"absent.grd", "", "The specified grid is invalid"},
        {"huge.asc", "ncols 100000\nnrows 100000\nxllcorner 0\nyllcorner 0\ncellsize 10\n1 2 3\n",
         "The specified grid is invalid: the grid file %F claims 100,000 x 100,000 values, but its 68 bytes can hold "
         "at most 34: its header is wrong, or the file is damaged"},
        {"huge.grd", "DSAA\n100000 100000\n0 10\n0 10\n0 1\n1 2 3\n",
         "The specified grid is invalid: the grid file %F claims 100,000 x 100,000 values, but its 39 bytes can hold "
         "at most 20: its header is wrong, or the file is damaged"},
        {"short.asc", std::string(head) + "1 2 3\n4 5\n", "The specified grid is invalid: %F, band 1: File short..."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        dialogue.messages.clear();
        if (!c.text.empty()) write_file_bytes(dir.path() / c.name, c.text);
        std::string message = c.message;
        if (const auto at = message.find("%F"); at != std::string::npos) message.replace(at, 2, (dir.path() / c.name).string());
        const bool start_only = message.ends_with("...");
        if (start_only) message.resize(message.size() - 3);
        double x_min = 0, x_max = 0, y_min = 0, y_max = 0;
        EXPECT_EQ(read(dir.path() / c.name, x_min, x_max, y_min, y_max), -1);
        ASSERT_EQ(dialogue.messages.size(), 1u);
        EXPECT_EQ(start_only ? dialogue.messages[0].substr(0, message.size()) : dialogue.messages[0], message);
        EXPECT_TRUE(window.empty());
    }
}

TEST_F(ReadGridHeader, LimitsOffTheGridAreInvalid) {
    const auto path = dir.path() / "ramp.tif";
    write_gdal_grid(path, "GTiff", 10, 8, 1000, 2000, 10, 10, ramp_values(10, 8));
    double x_min = 5000, x_max = 6000, y_min = 1930, y_max = 1990;
    EXPECT_EQ(read(path, x_min, x_max, y_min, y_max), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The specified grid is invalid"});
}

// A GeoTIFF picture is placed by its own tags and read as a grid from them.
TEST_F(ReadGridHeader, PlacedTiffIsReadByItsTags) {
    const auto path = dir.path() / "placed.tif";
    write_gdal_grid(path, "GTiff", 10, 8, 1000, 2000, 10, 10, ramp_values(10, 8), -1.0);
    double x_min = 1, x_max = 0, y_min = 1, y_max = 0;
    ASSERT_EQ(read(path, x_min, x_max, y_min, y_max), 0);
    EXPECT_EQ(ints[grid_int::kind], grid_kind_gdal);  // the part read is a grid like any other
    EXPECT_DOUBLE_EQ(x_min, 1005);
    EXPECT_DOUBLE_EQ(y_max, 1995);
    EXPECT_EQ(window.value(10, 8), 79.0f);
}

TEST(RemoveTemporaryGrid, DeletesOnlyTildeNamesAndClearsBoth) {
    TempDir dir;
    const auto temporary = dir.path() / "~WD7.grd";
    const auto kept = dir.path() / "survey.grd";
    write_file_bytes(temporary, "x");
    write_file_bytes(kept, "x");
    std::string name_1 = temporary.string(), name_2 = kept.string();
    remove_temporary_grid(name_1, name_2);
    EXPECT_FALSE(std::filesystem::exists(temporary));
    EXPECT_TRUE(std::filesystem::exists(kept));
    EXPECT_TRUE(name_1.empty());
    EXPECT_TRUE(name_2.empty());
}

class ReadImageRecord : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    ImageRecord record;
};

TEST_F(ReadImageRecord, MissingFileAndLateRasterAreTold) {
    const std::string absent = (dir.path() / "absent.png").string();
    EXPECT_EQ(read_image_record(session, record, absent, 1, false), -1);
    const auto picture = dir.path() / "picture.png";
    write_gdal_grid(picture, "PNG", 2, 2, 0, 2, 1, 1, {1, 2, 3, 4}, std::nullopt, GDT_Byte);
    EXPECT_EQ(read_image_record(session, record, picture.string(), 2, false), -1);
    EXPECT_EQ(dialogue.messages, (std::vector<std::string>{"The specified image file : " + absent + " does not exist",
                                                           "Raster files only valid as first image file"}));
}

// A damaged picture is told of, with what the picture library said when there was something.
TEST_F(ReadImageRecord, ADamagedPictureIsToldOf) {
    for (const char* name : {"cut.png", "cut.tif", "cut.jpg"}) {
        const std::string picture = (dir.path() / name).string();
        const std::string head = name[4] == 'p' ? std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16)
                                 : name[4] == 't' ? std::string("II*\0\x08\0\0\0\x40\0", 10)
                                                  : std::string("\xff\xd8\xff\xe0\0\x10JFIF", 10);
        write_file_bytes(picture, head + "damaged");
        dialogue.messages.clear();
        EXPECT_EQ(read_image_record(session, record, picture, 1, false), -1) << name;
        ASSERT_EQ(dialogue.messages.size(), 1u) << name;
        EXPECT_EQ(dialogue.messages[0].rfind("The picture " + picture + " can't be read: ", 0), 0u) << dialogue.messages[0];
    }
}

TEST_F(ReadImageRecord, PictureIsPlacedByItsTabAndKeepsItsPixels) {
    const auto picture = dir.path() / "picture.png";
    // Three bands of the same values: grey levels 10, 20 / 30, 40 from the top.
    write_gdal_grid(picture, "PNG", 2, 2, 0, 2, 1, 1, {10, 20, 30, 40}, std::nullopt, GDT_Byte, 3);
    write_file_bytes(dir.path() / "picture.tab", "Definition Table\n  (100,220) (0,0) Label \"a\",\n"
                                                 "  (120,220) (2,0) Label \"b\",\n  (100,200) (0,2) Label \"c\"\n"
                                                 "  CoordSys NonEarth Units \"m\"\n");
    ASSERT_EQ(read_image_record(session, record, picture.string(), 1, true), 0);
    EXPECT_EQ(record.grid_ints[grid_int::kind], grid_kind_raster);
    EXPECT_EQ(record.grid_ints[grid_int::sub_kind], raster_sidecar);
    EXPECT_EQ(record.grid_ints[grid_int::raster_width], 2);
    EXPECT_EQ(record.grid_ints[grid_int::rows], 2);
    EXPECT_DOUBLE_EQ(record.grid_reals[grid_real::x_min], 105);
    EXPECT_DOUBLE_EQ(record.grid_reals[grid_real::y_max], 215);
    ASSERT_EQ(record.pixels.size(), 4u);
    EXPECT_EQ(record.pixels[0], 0xFF0A0A0Au);  // top-left first
    EXPECT_EQ(record.pixels[3], 0xFF282828u);
}

TEST_F(ReadImageRecord, AGeoTiffKeepsItsOwnPlacementOverAnyPicturesSidecarButNotOverItsWorldFile) {
    const auto picture = dir.path() / "picture.tif";
    write_gdal_grid(picture, "GTiff", 2, 2, 1000, 2020, 10, 10, {10, 20, 30, 40}, std::nullopt, GDT_Byte);
    const std::string tab = "Definition Table\n  (100,220) (0,0) Label \"a\",\n  (120,220) (2,0) Label \"b\",\n"
                            "  (100,200) (0,2) Label \"c\"\n  CoordSys NonEarth Units \"m\"\n";
    const struct {
        const char* sidecar;
        std::string text;
        int sub_kind;
        double x_min;
    } cases[] = {
        {"", "", raster_geotiff, 1005},
        {"picture.tab", tab, raster_geotiff, 1005},
        {"picture.tfw", "1\n0\n0\n-1\n500.5\n700.5\n", raster_sidecar, 500.5},
    };
    for (const auto& c : cases) {
        for (const char* name : {"picture.tab", "picture.tfw"}) std::filesystem::remove(dir.path() / name);
        if (*c.sidecar) write_file_bytes(dir.path() / c.sidecar, c.text);
        ImageRecord placed;
        ASSERT_EQ(read_image_record(session, placed, picture.string(), 1, false), 0) << c.sidecar;
        EXPECT_EQ(placed.grid_ints[grid_int::sub_kind], c.sub_kind) << c.sidecar;
        EXPECT_DOUBLE_EQ(placed.grid_reals[grid_real::x_min], c.x_min) << c.sidecar;
    }
}

TEST_F(ReadImageRecord, AWorldFileWithAPixelSizeThatIsntFiniteIsRefused) {
    // Its own tags are not asked either: the world file of the TIFF's kind stands above them.
    const auto picture = dir.path() / "picture.tif";
    write_gdal_grid(picture, "GTiff", 2, 2, 1000, 2020, 10, 10, {10, 20, 30, 40}, std::nullopt, GDT_Byte);
    write_file_bytes(dir.path() / "picture.tfw", "inf\n0\n0\n-1\n500.5\n700.5\n");
    ImageRecord placed;
    EXPECT_EQ(read_image_record(session, placed, picture.string(), 1, false), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The picture " + picture.string() +
                                                          " can't be placed on the map: its sidecar " +
                                                          (dir.path() / "picture.tfw").string() +
                                                          " is refused (it gives the x pixel size as inf or beyond a "
                                                          "double real, not a finite number)."});
}

TEST_F(ReadImageRecord, KindsByExtension) {
    EXPECT_EQ(image_kind_of("a.HGT"), grid_kind_height);
    EXPECT_EQ(image_kind_of("a.Tif"), grid_kind_raster);
    EXPECT_EQ(image_kind_of("a.obs"), grid_kind_points);
    EXPECT_EQ(image_kind_of("a.ers"), grid_kind_gdal);
    write_file_bytes(dir.path() / "points.xyz", "1 2 3\n");
    EXPECT_EQ(read_image_record(session, record, (dir.path() / "points.xyz").string(), 3, false), 0);
    EXPECT_EQ(record.grid_ints[grid_int::kind], grid_kind_points);
}

}  // namespace
}  // namespace invsetup
