// tests/create/size_estimate_test.cpp - the size of a run before it is written: a 2 x 2 x 2 survey
// worked out by hand (read and estimated readings, tiles), the tile suggestion on a uniform survey,
// the warnings and the size texts.
#include "create/size_estimate.h"

#include <gtest/gtest.h>

#include "create/survey_check.h"
#include "definition/definition_checks.h"
#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using namespace testing;

/// 2 x 2 x 2 cells of 50 m, Z 0 to 100, flat topography at 50 m: the top layer is air, so 4 cells lie
/// below the surface. Five readings, two in column (1, 1): one reading is kept per column.
InversionFields tiny_definition() { return small_survey({1000, 2000, 0}, {1100, 2100, 100}, {50, 50, 50}); }

class SizeEstimateRun : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;

    void SetUp() override {
        write_small_survey_files(dir.path());
        ASSERT_EQ(load_definition(session, dialogue, tiny_definition(), dir.path() / "survey.inp"), 0);
        ASSERT_EQ(check_inversion_definitions(session), 0) << dialogue.messages.back();
    }
};

TEST_F(SizeEstimateRun, ReadOrEstimatedReadingsGiveTheMatrix) {
    SizeEstimateOptions options;
    options.run_folder = dir.path() / "runs" / "run1";  // not made yet: its nearest existing folder counts
    SizeEstimate estimate;
    ASSERT_EQ(estimate_run_size(session, options, estimate), 0) << dialogue.messages.back();
    EXPECT_EQ(estimate.mesh_cells, 8);
    EXPECT_EQ(estimate.active_cells, 4);
    EXPECT_EQ(estimate.readings, 4);
    EXPECT_FALSE(estimate.readings_estimated);
    EXPECT_EQ(estimate.matrix_bytes, 4 * 4 * 4);
    EXPECT_EQ(estimate.disk_folder, dir.path());
    EXPECT_GT(estimate.free_disk, 0);
    EXPECT_TRUE(estimate.tiles.empty());
    // Given back: the names as the definition says them, no surface or bins left over.
    EXPECT_EQ(session.definition.data_file_names[0], "obs.csv");
    EXPECT_EQ(session.bins.bin_total, 0);

    // A file "too long to read": five data lines, at most one kept per core column.
    options.full_read_limit = 0;
    ASSERT_EQ(estimate_run_size(session, options, estimate), 0);
    EXPECT_EQ(estimate.readings, 4);
    EXPECT_TRUE(estimate.readings_estimated);
    EXPECT_EQ(size_report(estimate)[2], "Readings kept:            4 (estimated from the data file's size)");

    // The check's readings report comes from the same pass, which then reads even a long file.
    SurveyCoverage coverage;
    ASSERT_EQ(estimate_run_size(session, options, estimate, &coverage), 0);
    EXPECT_FALSE(estimate.readings_estimated);
    EXPECT_EQ(coverage.readings, 5);
    EXPECT_EQ(coverage.on_topography, 5);
    EXPECT_EQ(coverage.kept, estimate.readings);
    EXPECT_EQ(fs::path(coverage.topography_file).filename(), "topo.csv");
    EXPECT_TRUE(coverage.points_hold_core);
    EXPECT_EQ(session.bins.bin_total, 0);

    // The in-house method builds one matrix per data type.
    session.definition.inversion_method = method_zarninv3d;
    session.definition.data_type_count = 3;
    ASSERT_EQ(estimate_run_size(session, options, estimate), 0);
    EXPECT_EQ(size_report(estimate)[3], "Sensitivity matrix:       4 x 3 data types x 4 x 4 bytes = 192 bytes");
}

TEST_F(SizeEstimateRun, EachTileHasItsOwnMatrix) {
    // Two tiles side by side, one column of cells each; a tile inverts the 2 top cells (1 below ground).
    session.definition.refinement_mode = 1;
    session.definition.number_of_x_tiles = 2;
    session.definition.number_of_y_tiles = 1;
    session.tiles.tile_x_limits.assign(2, 4, 0);
    session.tiles.tile_y_limits.assign(1, 4, 0);
    for (int k = 1; k <= 4; ++k) {
        session.tiles.tile_x_limits(1, k) = k <= 2 ? 1 : 2;
        session.tiles.tile_x_limits(2, k) = k <= 2 ? 2 : 3;
        session.tiles.tile_y_limits(1, k) = k <= 2 ? 1 : 3;
    }
    SizeEstimate estimate;
    ASSERT_EQ(estimate_run_size(session, {}, estimate), 0);
    ASSERT_EQ(estimate.tiles.size(), 2u);
    for (const TileSize& tile : estimate.tiles) {
        EXPECT_EQ(tile.readings, 2);
        EXPECT_EQ(tile.active_cells, 2);
        EXPECT_EQ(tile.matrix_bytes, 2 * 2 * 4);
    }
    EXPECT_EQ(estimate.largest_tile_bytes, 16);
    const std::vector<std::string> report = size_report(estimate);
    EXPECT_NE(std::find(report.begin(), report.end(), "  tile0201:  2 x 2 x 4 bytes = 16 bytes"), report.end());
}

/// A 10 x 10 x 5 survey with one reading in every column and no air.
SizeEstimate uniform_survey() {
    SizeEstimate estimate;
    estimate.nx = estimate.ny = 10;
    estimate.nz = estimate.tile_depth = 5;
    estimate.first_x = estimate.first_y = 1;
    estimate.last_x = estimate.last_y = 10;
    estimate.column_readings.assign(100, 1.0);
    estimate.column_air.assign(100, 0);
    return estimate;
}

TEST(SuggestTileSize, LargestSizeWhoseEveryTileFits) {
    const SizeEstimate survey = uniform_survey();
    struct Case {
        double limit;
        bool found;
        int size, tiles;
        double largest;
    };
    // One tile of all 100 columns: 100 x 500 x 4. Size 11 gives two tiles a side of 5 core cells, each
    // reaching 6 columns with its overlap inside the mesh: 36 readings x 180 cells.
    for (const Case& c : {Case{200000, true, 12, 1, 200000}, Case{199999, true, 11, 2, 36 * 180 * 4},
                          Case{0, false, 0, 0, 0}}) {
        SCOPED_TRACE(c.limit);
        const TileSuggestion suggestion = suggest_tile_size(survey, 1, c.limit);
        EXPECT_EQ(suggestion.found, c.found);
        EXPECT_EQ(suggestion.tile_size, c.size);
        EXPECT_EQ(suggestion.x_tiles, c.tiles);
        EXPECT_EQ(suggestion.y_tiles, c.tiles);
        EXPECT_EQ(suggestion.largest_matrix_bytes, c.largest);
    }
}

TEST(SizeReport, WarnsWhenMemoryOrDiskRunsShort) {
    SizeEstimate estimate = uniform_survey();
    estimate.memory_bytes = 2048;
    estimate.machine_memory = 1000;
    estimate.disk_bytes = 3 * 1024 * 1024;
    estimate.free_disk = 1024 * 1024;
    estimate.disk_folder = "/scratch";
    const std::vector<std::string> report = size_report(estimate);
    ASSERT_GE(report.size(), 2u);
    EXPECT_EQ(report[report.size() - 2],
              "Warning: the inversion needs more memory (2.0 KiB) than this machine has (1000 bytes)");
    EXPECT_EQ(report.back(), "Warning: the run needs more disk (3.0 MiB) than is free in /scratch (1.0 MiB)");
    estimate.machine_memory = 4096;
    estimate.free_disk = 0;  // unknown: no warning
    EXPECT_EQ(size_report(estimate).back().rfind("Warning", 0), std::string::npos);
}

TEST(ByteSize, ParsesWhatPeopleWrite) {
    const struct {
        const char* text;
        bool ok;
        double bytes;
    } cases[] = {{"8G", true, 8.0 * (1 << 30)}, {"512M", true, 512.0 * (1 << 20)}, {"16GiB", true, 16.0 * (1 << 30)},
                 {"1.5k", true, 1536},           {"4096", true, 4096},               {"2TB", true, 2.0 * (1LL << 40)},
                 {"", false, 0},                 {"abc", false, 0},                  {"8X", false, 0},
                 {"-1G", false, 0},              {"0", false, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        double bytes = 0;
        EXPECT_EQ(parse_byte_size(c.text, bytes), c.ok);
        if (c.ok) {
            EXPECT_EQ(bytes, c.bytes);
        }
    }
    EXPECT_EQ(byte_text(1536), "1.5 KiB");
    EXPECT_EQ(byte_text(1023), "1023 bytes");
}

}  // namespace
}  // namespace invsetup
