// tests/create/slurm_test.cpp - the Slurm job scripts of a run package against golden files, the
// tiles that take part, the defaults from the size estimate and the time limit form.
#include "create/slurm.h"

#include <gtest/gtest.h>

#include "create/size_estimate.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::read_file_bytes;
using testing::TempDir;
using testing::test_data;
using testing::write_file_bytes;

SlurmResources small_jobs() {
    SlurmResources resources;
    resources.cpus = 4;
    resources.memory = "2048M";
    resources.time = "06:00:00";
    resources.partition = "long";
    return resources;
}

TEST(SlurmFiles, PlainRunIsOneJobRunningItsScript) {
    TempDir dir;
    const fs::path run = dir.path() / "survey 1";
    fs::create_directories(run);
    EXPECT_THROW(write_slurm_files(run, small_jobs()), std::invalid_argument);
    write_file_bytes(run / "run_inversion.bat", "magsen3d magsen3d.inp\r\n");
    EXPECT_EQ(write_slurm_files(run, small_jobs()), (std::vector<fs::path>{run / "submit.slurm"}));
    EXPECT_EQ(read_file_bytes(run / "submit.slurm"), read_file_bytes(test_data("slurm/submit.slurm")));
    EXPECT_EQ(fs::status(run / "submit.slurm").permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
}

TEST(SlurmFiles, TiledRunIsAnArrayOfTheKeptTilesAndAMergeAfterIt) {
    TempDir dir;
    const fs::path run = dir.path() / "tiled";
    fs::create_directories(run);
    write_file_bytes(run / "iter_all.bat",
                     "rem Num data 25\r\ncall tile0101.bat\r\nrem Num data 3\r\nrem call tile0102.bat\r\n\r\n"
                     "rem Num data 40\r\ncall tile0201.bat\r\nrem Num data 12\r\ncall tile0202.bat\r\n\r\n");
    EXPECT_EQ(kept_tiles(run / "iter_all.bat"), (std::vector<std::string>{"tile0101", "tile0201", "tile0202"}));
    const std::vector<fs::path> written = write_slurm_files(run, small_jobs());
    EXPECT_EQ(written.size(), 5u);
    for (const char* name : {"tiles.slurm", "merge.slurm", "submit.sh", "slurm_bin/Vorlinsert"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(read_file_bytes(run / name), read_file_bytes(test_data(std::string("slurm/") + name)));
    }
    EXPECT_THROW(write_slurm_tile_jobs(run, {}, "tiled", small_jobs()), std::invalid_argument);
}

TEST(SlurmResources, DefaultsFollowTheSizeOfTheRun) {
    constexpr double gib = 1024.0 * 1024 * 1024;
    const struct {
        double matrix, memory;
        int threads;
        int cpus;
        const char* memory_text;
        const char* time;
    } cases[] = {
        {0, 0, 0, 1, "1024M", "01:00:00"},                 // at least 1 GiB and an hour
        {10 * gib, 10 * gib, 0, 3, "12800M", "02:00:00"},  // 2.7e9 entries x 2100 x 2 / 3e9 s: 63 minutes
        {10 * gib, 10 * gib, 8, 8, "12800M", "01:00:00"},  // the definition's thread count
        {200 * gib, 4 * gib, 1, 1, "5120M", "2-15:00:00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.matrix);
        SizeEstimate estimate;
        estimate.matrix_bytes = c.matrix;
        estimate.memory_bytes = c.memory;
        const SlurmResources resources = slurm_resources_for(estimate, c.threads);
        EXPECT_EQ(resources.cpus, c.cpus);
        EXPECT_EQ(resources.memory, c.memory_text);
        EXPECT_EQ(resources.time, c.time);
    }
    for (const char* good : {"01:00:00", "2:30:00", "100:00:59"}) EXPECT_TRUE(is_slurm_time(good)) << good;
    for (const char* bad : {"", "1:00", "01:60:00", "01:00:0a", ":00:00", "01:00:00:00", "1-00:00:00"})
        EXPECT_FALSE(is_slurm_time(bad)) << bad;
}

}  // namespace
}  // namespace invsetup
