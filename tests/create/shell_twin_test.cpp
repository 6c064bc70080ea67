// tests/create/shell_twin_test.cpp - the sh twins of the batch files: the text of each kind of batch
// file against golden scripts, and the twins of a package run end to end with stand-in programs that
// record their calls and write the files the next step reads.
#include "create/shell_twin.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "create/batch_files.h"
#include "support/lines.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::lines_of;
using testing::read_file_bytes;
using testing::TempDir;
using testing::test_data;
using testing::write_file_bytes;

// Batch files of every kind a package holds: tile files with their jumps (forward model, sensitivity,
// restart; the in-house one with several matrices and the cluster controller), the merge scripts
// with skipped tiles, and the odd lines (server start, %~dp0, a Windows path, echo, pause).
TEST(ShellTwin, EveryKindOfBatchFileMatchesItsGoldenScript) {
    for (const char* name : {"tile_mag", "tile_zarn", "iter_all", "insert_all", "run_cluster"}) {
        SCOPED_TRACE(name);
        const std::string batch = std::string(name) + ".bat";
        EXPECT_EQ(shell_twin_text(batch, lines_of(test_data("twins/" + batch))),
                  read_file_bytes(test_data("twins/" + std::string(name) + ".sh")));
    }
}

TEST(ShellTwin, WriteBatchFileLeavesTheBatchBytesAndAddsAnExecutableTwin) {
    TempDir dir;
    write_batch_file(dir.path() / "run_magerror.bat", {"vorlerror ..\\mag.obs maginv3d.pre error.dat ..\\mesh", " "});
    EXPECT_EQ(read_file_bytes(dir.path() / "run_magerror.bat"),
              "vorlerror ..\\mag.obs maginv3d.pre error.dat ..\\mesh\r\n \r\n");
    const fs::path twin = dir.path() / "run_magerror.sh";
    EXPECT_EQ(read_file_bytes(twin),
              "#!/bin/sh\n# run_magerror.sh: run_magerror.bat for sh, the same programs in the same order.\n"
              "set -e\ncd \"$(dirname \"$0\")\"\nvorlerror ../mag.obs maginv3d.pre error.dat ../mesh\n\n");
    EXPECT_EQ(fs::status(twin).permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
    EXPECT_EQ(shell_twin_path("a/ITER_ALL.BAT"), fs::path("a/ITER_ALL.sh"));
}

class TwinRun : public ::testing::Test {
protected:
    void SetUp() override {
        const fs::path bin = dir.path() / "bin";
        fs::create_directories(bin);
        for (const char* program : {"Vorlextract", "Vorlnullvol", "magfor3d", "Vorldelreg", "pfweight", "magsen3d",
                                    "maginv3d", "vorlerror", "Vorlinsert", "Zarnsen3D_RPCServer"}) {
            fs::copy_file(test_data("twins/stand_in.sh"), bin / program);
            fs::permissions(bin / program, fs::perms::owner_all);
        }
        path_ = bin.string() + ":" + std::getenv("PATH");
    }

    /// Runs a twin with the stand-ins first on PATH; returns its exit status.
    int run(const fs::path& script) {
        const std::string command = "PATH=" + testing::quoted(path_) + " TWIN_LOG=" + testing::quoted(log()) +
                                    " sh " + testing::quoted(script) + " 2>" + testing::quoted(dir.path() / "err");
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    fs::path log() const { return dir.path() / "calls.log"; }
    std::string take_log() {
        std::string text = fs::exists(log()) ? read_file_bytes(log()) : "";
        fs::remove(log());
        return text;
    }

    TempDir dir;
    std::string path_;
};

TEST_F(TwinRun, PlainPackageRunsItsProgramsInOrder) {
    InversionDefinition definition;
    definition.inversion_method = method_ubc_mag_v5;
    definition.data_types = {1, -1, -1, -1, -1, -1, -1};
    RunContext context;
    context.thread_suffix = " 4";
    const fs::path run_dir = dir.path() / "run";
    fs::create_directories(run_dir);
    for (const BatchFile& file : run_batch_files(definition, context, 10, 20, 30))
        write_batch_file(run_dir / file.name, file.lines);
    for (const char* input : {"mag_weights.inp", "magsen3d.inp", "maginv3d.inp", "mag.obs"})
        write_file_bytes(run_dir / input, "");

    ASSERT_EQ(run(run_dir / "run_inversion.sh"), 0) << read_file_bytes(dir.path() / "err");
    EXPECT_EQ(take_log(),
              "run: pfweight mag_weights.inp 4\nrun: magsen3d magsen3d.inp 4\nrun: maginv3d maginv3d.inp 4\n");
    ASSERT_EQ(run(run_dir / "run_magerror.sh"), 0);
    EXPECT_EQ(take_log(), "run: vorlerror mag.obs maginv3d.pre error.dat mesh\n");
    EXPECT_TRUE(fs::exists(run_dir / "error.dat"));
}

// The merge script calls the tile that takes part and passes over the skipped one; a second run of
// the same tile takes the other side of every jump (data already reduced, matrix there, restart).
TEST_F(TwinRun, TiledPackageFollowsTheJumpsOfTheTileFile) {
    const fs::path run_dir = dir.path() / "run";
    fs::create_directories(run_dir / "tile0101");
    fs::create_directories(dir.path() / "coarse");
    write_file_bytes(dir.path() / "coarse" / "coarse.msh", "");
    write_file_bytes(dir.path() / "coarse" / "coarse.sus", "");
    for (const char* input : {"mesh", "model.sus", "ref.sus", "rocks.txt", "refined.sus", "mag.obs", "topo.dat"})
        write_file_bytes(run_dir / input, "");
    for (const char* input : {"mag_weights.inp", "magsen3d.inp", "maginv3d.inp", "maginv3d.restart", "mesh"})
        write_file_bytes(run_dir / "tile0101" / input, "");
    write_file_bytes(run_dir / "maginv3d.sus", "");
    write_batch_file(run_dir / "tile0101.bat", lines_of(test_data("twins/tile_mag.bat")));
    write_batch_file(run_dir / "iter_all.bat", lines_of(test_data("twins/iter_all.bat")));

    ASSERT_EQ(run(run_dir / "iter_all.sh"), 0) << read_file_bytes(dir.path() / "err");
    // The first run reduces the data, builds the matrix and inverts; the stand-ins log each call.
    EXPECT_EQ(take_log(), read_file_bytes(test_data("twins/iter_all_calls.log")));
    EXPECT_EQ(read_file_bytes(run_dir / "maginv3d.sus"), "tile0101\n");

    ASSERT_EQ(run(run_dir / "tile0101.sh"), 0) << read_file_bytes(dir.path() / "err");
    EXPECT_EQ(take_log(), read_file_bytes(test_data("twins/tile_mag_rerun_calls.log")));

    // A failing program stops the twin: nothing after it runs.
    fs::remove(run_dir / "tile0101" / "maginv3d.restart");
    EXPECT_NE(run(run_dir / "tile0101.sh"), 0);
    EXPECT_EQ(take_log().find("vorlerror"), std::string::npos);
}

}  // namespace
}  // namespace invsetup
