// tests/slurm/slurm_run_test.cpp - the Slurm jobs of a package on the single-node cluster that
// scripts/slurm-local.sh starts for the test (INVSETUP_SLURM_DIR), with stand-in programs: a plain
// run as one job, a tiled run as a job array of its kept tiles and a merge that waits for them.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "create/batch_files.h"
#include "create/slurm.h"
#include "support/lines.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::lines_of;
using testing::output_of;
using testing::read_file_bytes;
using testing::TempDir;
using testing::test_data;
using testing::write_file_bytes;

class SlurmCluster : public ::testing::Test {
protected:
    void SetUp() override {
        const char* folder = std::getenv("INVSETUP_SLURM_DIR");
        if (folder == nullptr) GTEST_SKIP() << "no test cluster (run through ctest)";
        const fs::path cluster = folder;
        if (fs::exists(cluster / "skip")) GTEST_SKIP() << "Slurm did not start: " << read_file_bytes(cluster / "skip");
        const fs::path bin = dir.path() / "bin";
        fs::create_directories(bin);
        for (const char* program : {"Vorlextract", "Vorlnullvol", "magfor3d", "Vorldelreg", "pfweight", "magsen3d",
                                    "maginv3d", "vorlerror", "Vorlinsert"}) {
            fs::copy_file(test_data("twins/stand_in.sh"), bin / program);
            fs::permissions(bin / program, fs::perms::owner_all);
        }
        environment_ = "SLURM_CONF=" + testing::quoted(cluster / "slurm.conf") + " PATH=" +
                       testing::quoted(bin.string() + ":" + std::getenv("PATH") + ":/usr/sbin") +
                       " TWIN_LOG=" + testing::quoted(log()) + " ";
    }
    void TearDown() override {
        if (!environment_.empty()) std::system((environment_ + "scancel --user=$(id -un) 2>/dev/null").c_str());
    }

    fs::path log() const { return dir.path() / "calls.log"; }
    /// Runs a command with the cluster's configuration and the stand-ins; its output.
    std::string shell(const std::string& command) { return output_of(environment_ + command + " 2>&1"); }
    /// Waits up to 4 minutes for the cluster's queue to empty.
    bool queue_empties() {
        for (int tries = 0; tries < 480; ++tries) {
            if (shell("squeue -h -o %i").empty()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
        }
        return false;
    }

    TempDir dir;
    std::string environment_;
    SlurmResources resources{1, "100M", "00:10:00", ""};
};

TEST_F(SlurmCluster, TiledRunRunsEveryKeptTileThenTheMerge) {
    // A tiled run of three tiles taking part and one skipped, the tile files of one magnetic tile.
    const fs::path run = dir.path() / "run";
    const std::vector<std::string> tiles{"tile0101", "tile0201", "tile0202"};
    fs::create_directories(dir.path() / "coarse");
    write_file_bytes(dir.path() / "coarse" / "coarse.msh", "");
    write_file_bytes(dir.path() / "coarse" / "coarse.sus", "");
    fs::create_directories(run);
    for (const char* input : {"mesh", "model.sus", "ref.sus", "rocks.txt", "refined.sus", "mag.obs", "topo.dat"})
        write_file_bytes(run / input, "");
    write_file_bytes(run / "maginv3d.sus", "");
    const std::vector<std::string> tile_lines = lines_of(test_data("twins/tile_mag.bat"));
    std::vector<std::string> iter_all, insert_all{"", "rem Clean up any previously merged data files", ""};
    for (const std::string& tile : {tiles[0], std::string("tile0102"), tiles[1], tiles[2]}) {
        const bool kept = tile != "tile0102";
        fs::create_directories(run / tile);
        for (const char* input : {"mag_weights.inp", "magsen3d.inp", "maginv3d.inp", "maginv3d.restart", "mesh"})
            write_file_bytes(run / tile / input, "");
        std::vector<std::string> lines = tile_lines;
        for (std::string& line : lines)
            if (line == "cd tile0101") line = "cd " + tile;
        write_batch_file(run / (tile + ".bat"), lines);
        const std::string prefix = kept ? "" : "rem ";
        iter_all.push_back("rem Num data 10");
        iter_all.push_back(prefix + "call " + tile + ".bat");
        for (const std::string& line :
             {"cd " + tile, std::string("Vorlinsert mesh maginv3d.sus ..\\mesh ..\\maginv3d.sus 3 6 3 6 1 8"),
              std::string("cd ..")})
            insert_all.push_back(prefix + line);
    }
    write_batch_file(run / "iter_all.bat", iter_all);
    write_batch_file(run / "insert_all.bat", insert_all);
    write_slurm_files(run, resources);

    const std::string submitted = shell("sh " + testing::quoted(run / "submit.sh"));
    ASSERT_NE(submitted.find("Submitted job array "), std::string::npos) << submitted;
    ASSERT_TRUE(queue_empties()) << shell("squeue");

    // Every tile ran its whole script; the merge's inserts (top cells alone) came after the last tile.
    const std::vector<std::string> calls = lines_of(log());
    ASSERT_EQ(calls.size(), 3 * 11 + 3) << read_file_bytes(log());
    for (const std::string& tile : tiles) {
        int count = 0;
        for (std::size_t n = 0; n + 3 < calls.size(); ++n) count += calls[n].rfind(tile + ": ", 0) == 0;
        EXPECT_EQ(count, 11) << tile;
    }
    for (std::size_t n = 0; n < 3; ++n)
        EXPECT_EQ(calls[calls.size() - 3 + n],
                  tiles[n] + ": Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 3 6 3 6 1 8");
    // The merged model: each tile's own insert, then the merge's in its order.
    const std::string merged = read_file_bytes(run / "maginv3d.sus");
    EXPECT_EQ(merged.size(), 6 * 9u);
    EXPECT_EQ(merged.substr(3 * 9), "tile0101\ntile0201\ntile0202\n");
    EXPECT_FALSE(fs::exists(run / "tile0102" / "maginv3d.sus"));
}

// A tiled package as `create` writes it (a 2 x 2 refinement with tile 2,1 switched off) and its jobs
// as `create --cluster slurm` writes them: the three kept tiles each run their whole script, the
// merge inserts them again once the last has ended.
TEST_F(SlurmCluster, CreatedTiledRunThroughItsSubmitScript) {
    const fs::path fixture = test_data("refine/ubc");
    for (const char* name : {"coarse.msh", "coarse.sus", "obs.csv", "refine.inp"})
        fs::copy_file(fixture / name, dir.path() / name);
    const fs::path run = dir.path() / "run";
    const testing::CliRun created = testing::run_cli(
        "create --quiet " + testing::quoted(dir.path() / "refine.inp") + " " + testing::quoted(run) + " --mesh " +
        testing::quoted(dir.path() / "coarse.msh") + " --model " + testing::quoted(dir.path() / "coarse.sus") +
        " --skip-tile 2,1 --cluster slurm --cpus 1 --mem 100M --time 00:10:00");
    ASSERT_EQ(created.exit_code, 0) << created.err;

    const std::string submitted = shell("sh " + testing::quoted(run / "submit.sh"));
    ASSERT_NE(submitted.find("(3 tiles)"), std::string::npos) << submitted;
    ASSERT_TRUE(queue_empties()) << shell("squeue");

    const std::vector<std::string> calls = lines_of(log());
    ASSERT_EQ(calls.size(), 3 * 9 + 3u) << read_file_bytes(log());
    for (const char* tile : {"tile0101", "tile0102", "tile0202"}) {
        int count = 0;
        for (std::size_t n = 0; n + 3 < calls.size(); ++n) count += calls[n].rfind(std::string(tile) + ": ", 0) == 0;
        EXPECT_EQ(count, 9) << tile;
        EXPECT_TRUE(fs::exists(run / tile / "error.dat")) << tile;
    }
    EXPECT_FALSE(fs::exists(run / "tile0201" / "error.dat"));
    EXPECT_EQ(calls[calls.size() - 3], "tile0101: Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 2 5 2 5 1 4 1 1");
    EXPECT_EQ(calls[calls.size() - 2], "tile0102: Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 2 5 6 8 1 4 1 1");
    EXPECT_EQ(calls[calls.size() - 1], "tile0202: Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 6 8 6 8 1 4 1 1");
    const std::string merged = read_file_bytes(run / "maginv3d.sus");
    EXPECT_EQ(merged.substr(merged.size() - 27), "tile0101\ntile0102\ntile0202\n");
}

TEST_F(SlurmCluster, PlainRunIsOneJob) {
    InversionDefinition definition;
    definition.inversion_method = method_ubc_mag_v3;
    definition.data_types = {1, -1, -1, -1, -1, -1, -1};
    const fs::path run = dir.path() / "plain";
    fs::create_directories(run);
    for (const BatchFile& file : run_batch_files(definition, RunContext{}, 10, 20, 30))
        write_batch_file(run / file.name, file.lines);
    for (const char* input : {"magsen3d.inp", "maginv3d.inp"}) write_file_bytes(run / input, "");
    write_slurm_files(run, resources);

    // Submitted from the run folder, as its comment says.
    const std::string submitted = shell("sh -c 'cd \"$0\" && sbatch submit.slurm' " + testing::quoted(run));
    ASSERT_NE(submitted.find("Submitted batch job "), std::string::npos) << submitted;
    ASSERT_TRUE(queue_empties()) << shell("squeue");
    EXPECT_EQ(read_file_bytes(log()), "plain: magsen3d magsen3d.inp\nplain: maginv3d maginv3d.inp\n");
}

}  // namespace
}  // namespace invsetup
