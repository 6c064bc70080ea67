// tests/cli/run_commands_test.cpp - `invsetup start`: the package's sh script runs in the background
// with stand-in programs, its output in run.log.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace invsetup::testing;

/// Waits up to 20 s for a file to appear.
bool appears(const fs::path& path) {
    for (int tries = 0; tries < 200; ++tries) {
        if (fs::exists(path)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

TEST(StartCommandLine, RunsTheTwinInTheBackgroundWithItsLog) {
    TempDir dir;
    copy_example("magnetic", dir.path() / "survey");
    const fs::path run = dir.path() / "mag";
    ASSERT_EQ(run_cli("create --quiet " + quoted(dir.path() / "survey" / "inversion.inp") + " " + quoted(run)).exit_code,
              0);

    // Stand-ins that record their calls; the inversion's stand-in marks the end.
    const fs::path bin = dir.path() / "bin";
    fs::create_directories(bin);
    for (const char* program : {"pfweight", "magsen3d", "maginv3d"}) {
        write_file_bytes(bin / program, "#!/bin/sh\necho \"$(basename \"$0\") $*\" >> ../calls.log\necho ran "
                                        "\"$(basename \"$0\")\"\n[ \"$(basename \"$0\")\" != maginv3d ] || touch ../done\n");
        fs::permissions(bin / program, fs::perms::owner_all);
    }
    const std::string saved_path = std::getenv("PATH");
    setenv("PATH", (bin.string() + ":" + saved_path).c_str(), 1);
    const CliRun started = run_cli("start " + quoted(run));
    setenv("PATH", saved_path.c_str(), 1);
    ASSERT_EQ(started.exit_code, 0) << started.err;
    EXPECT_NE(started.out.find("Started " + (run / "run_inversion.sh").string() + " (process "), std::string::npos);
    EXPECT_NE(started.out.find("Its output goes to " + (run / "run.log").string() + "\n"), std::string::npos);

    ASSERT_TRUE(appears(dir.path() / "done"));
    // The same programs with the same arguments as the batch file's lines.
    std::string batch = read_file_bytes(run / "run_inversion.bat");
    for (std::size_t at; (at = batch.find('\r')) != std::string::npos;) batch.erase(at, 1);
    EXPECT_EQ(read_file_bytes(dir.path() / "calls.log"), batch);
    EXPECT_EQ(read_file_bytes(run / "run.log").substr(0, 13), "ran pfweight\n");
}

TEST(StartCommandLine, AFolderWithoutAPackageFails) {
    TempDir dir;
    CliRun run = run_cli("start " + quoted(dir.path()));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err.rfind("The inversion batch file does not exist", 0), 0u) << run.err;
    write_file_bytes(dir.path() / "iter_all.bat", "call tile0101.bat\r\n");
    run = run_cli("start " + quoted(dir.path()));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err, "The shell script " + (dir.path() / "iter_all.sh").string() +
                           " does not exist: update the inversion files to write it\n");
    EXPECT_EQ(run_cli("start " + quoted(dir.path() / "nowhere")).exit_code, 1);
}

TEST(ClusterCommandLine, CreateAddsTheSlurmJobWithTheOptionsGiven) {
    TempDir dir;
    copy_example("gravity", dir.path() / "survey");
    const std::string definition = quoted(dir.path() / "survey" / "inversion.inp");
    const fs::path run = dir.path() / "grav";
    // Options that need --cluster, or aren't of their form, are usage errors before anything is written.
    EXPECT_EQ(run_cli("create --quiet --cpus 2 " + definition + " " + quoted(run)).exit_code, 2);
    EXPECT_EQ(run_cli("create --quiet --cluster slurm --time 90:00 " + definition + " " + quoted(run)).exit_code, 2);
    EXPECT_EQ(run_cli("create --quiet --cluster pbs " + definition + " " + quoted(run)).exit_code, 2);
    EXPECT_FALSE(fs::exists(run));

    const CliRun created = run_cli("create --cluster slurm --cpus 8 --mem 3G --partition short " + definition + " " +
                                   quoted(run));
    ASSERT_EQ(created.exit_code, 0) << created.err;
    const std::string job = read_file_bytes(run / "submit.slurm");
    for (const char* line : {"#SBATCH --job-name=grav\n", "#SBATCH --cpus-per-task=8\n", "#SBATCH --mem=3072M\n",
                             "#SBATCH --partition=short\n", "sh ./run_inversion.sh\n"})
        EXPECT_NE(job.find(line), std::string::npos) << line;
    // The time limit from the size estimate: whole hours.
    EXPECT_NE(job.find(":00:00\n#SBATCH --partition"), std::string::npos) << job;
    EXPECT_NE(created.err.find("Slurm jobs (8 CPUs, 3072M, "), std::string::npos) << created.err;
}

TEST(ExportCommandLine, ListsTheFilesWrittenAndTellsWhatWasPassedOver) {
    TempDir dir;
    fs::copy(test_data("vtk/run"), dir.path() / "run", fs::copy_options::recursive);
    CliRun run = run_cli("export " + quoted(dir.path() / "run"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const fs::path out = dir.path() / "run" / "paraview";
    EXPECT_EQ(run.out, (out / "topography.vts").string() + "\n" + (out / "mesh.vtr").string() + "\n" +
                           (out / "mag_obs.vtp").string() + "\n" + (out / "tiles.vtp").string() + "\n" +
                           (out / "run.pvd").string() + "\n");
    EXPECT_EQ(run.err, "Passed over ref.den: 2 values for 12 cells\n");
    run = run_cli("export " + quoted(dir.path() / "run") + " -o " + quoted(dir.path() / "elsewhere"));
    EXPECT_TRUE(fs::exists(dir.path() / "elsewhere" / "mesh.vtr"));
    EXPECT_EQ(run_cli("export " + quoted(dir.path())).exit_code, 1);
}

}  // namespace
