// tests/cli/create_test.cpp - `invsetup create` and `invsetup check` as a script runs them: exit
// status, what goes to stderr, and where files land.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <sys/wait.h>

#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using namespace invsetup::testing;

/// A copy of the bundled magnetic example, so that the definition saved in its folder stays there.
class CreateCommandLine : public ::testing::Test {
protected:
    TempDir dir;
    fs::path survey = dir.path() / "survey";

    void SetUp() override { copy_example("magnetic", survey); }
};

TEST_F(CreateCommandLine, WritesThePackageAndReportsEachStage) {
    const CliRun run = run_cli("create " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / "runs" / "mag"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.err.find("Checking inversion definitions\n"), std::string::npos);
    EXPECT_NE(run.err.find("Gridding topo data \n"), std::string::npos);
    EXPECT_NE(run.err.find("Inversion processing complete\nOutput complete\n"), std::string::npos) << run.err;
    const std::set<std::string> files = listing(dir.path() / "runs" / "mag");
    for (const char* name : {"mesh", "model.sus", "mag.obs", "mag.ref", "topo.dat", "maginv3d.inp", "run_inversion.bat"})
        EXPECT_TRUE(files.count(name)) << name;
    // Only the run directory, the copy beside it and inversion.inp in the working directory are new.
    EXPECT_EQ(listing(dir.path() / "runs"), (std::set<std::string>{"mag", "mag.inp"}));
    EXPECT_EQ(listing(survey), (std::set<std::string>{"inversion.inp", "mag_data.csv", "topo.xyz"}));
    EXPECT_EQ(read_file_bytes(dir.path() / "runs" / "mag.inp"), read_file_bytes(survey / "inversion.inp"));
}

TEST_F(CreateCommandLine, QuietKeepsOnlyTheMessages) {
    const CliRun run = run_cli("create --quiet " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / "run"));
    ASSERT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, "Output complete\n");
}

// GDAL and its hundred-odd libraries are loaded only when a grid is touched: the magnetic example's
// point files never load it, the gravity example's topography grid does.
TEST_F(CreateCommandLine, OnlyGridsLoadTheGridLibrary) {
    copy_example("gravity", dir.path() / "gravity");
    const auto loads_gdal = [&](const fs::path& definition, const fs::path& run_dir) {
        setenv("LD_DEBUG", "files", 1);
        const CliRun run = run_cli("create --quiet " + quoted(definition) + " " + quoted(run_dir));
        unsetenv("LD_DEBUG");
        EXPECT_EQ(run.exit_code, 0) << definition;
        return run.err.find("libgdal") != std::string::npos;
    };
    EXPECT_FALSE(loads_gdal(survey / "inversion.inp", dir.path() / "mag"));
    EXPECT_TRUE(loads_gdal(dir.path() / "gravity" / "inversion.inp", dir.path() / "grav"));
}

TEST_F(CreateCommandLine, WorkdirHoldsTheDataAndTheSavedDefinition) {
    const fs::path elsewhere = dir.path() / "definitions";
    fs::create_directories(elsewhere);
    fs::rename(survey / "inversion.inp", elsewhere / "mag.inp");
    const CliRun run = run_cli("create --quiet --workdir " + quoted(survey) + " " + quoted(elsewhere / "mag.inp") + " " +
                                   quoted(dir.path() / "run"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_TRUE(fs::exists(survey / "inversion.inp"));
    EXPECT_EQ(listing(elsewhere), (std::set<std::string>{"mag.inp"}));
}

TEST_F(CreateCommandLine, FailuresExitOneWithTheirMessage) {
    CliRun run = run_cli("create --quiet " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / "MAGSEN3D"));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err, "The output directory name conflicts with the output file names\n");
    EXPECT_FALSE(fs::exists(dir.path() / "MAGSEN3D"));

    // A topography file without one point fails in the driver, after the input files.
    write_file_bytes(survey / "topo.xyz", "x,y,z\r\nnot,a,point\r\n");
    run = run_cli("create --quiet " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / "run"));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_EQ(run.err, "The topo data file did not contain enough data points to be meaningful\n"
                       "An error occurred while generating the inversion files: the creation stopped at the stage "
                       "\"Generate topo data\"\n");
    EXPECT_TRUE(fs::exists(dir.path() / "run" / "maginv3d.inp"));
    EXPECT_FALSE(fs::exists(dir.path() / "run" / "mesh"));
}

TEST_F(CreateCommandLine, NoReadingKeptIsAFailureThatCheckForesees) {
    // A survey flown beside the mesh: every reading lies outside its core.
    write_file_bytes(survey / "mag_data.csv", "x,y,z,tmi,line\r\n100,200,900,12,1000\r\n150,200,900,14,1000\r\n");
    const CliRun check = run_cli("check " + quoted(survey / "inversion.inp"));
    EXPECT_EQ(check.exit_code, 0);
    EXPECT_NE(check.out.find("Readings:    2 in mag_data.csv\n"
                             "  valid:     2 (0 with a null value or elevation)\n"
                             "  in core:   0 (2 outside the mesh core)\n"),
              std::string::npos)
        << check.out;
    EXPECT_NE(check.out.find("no reading would be kept"), std::string::npos);

    const CliRun run = run_cli("create --quiet " + quoted(survey / "inversion.inp") + " " + quoted(dir.path() / "run"));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.err.find("Warning: The number of inversion data defined is only 0\n"
                           "Of the 2 readings in mag_data.csv, 0 had a null value or elevation, 2 lay outside the "
                           "mesh core and 0 had no topography under them.\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("No reading was kept"), std::string::npos);
}

TEST_F(CreateCommandLine, UsageErrorsExitTwo) {
    EXPECT_EQ(run_cli("create " + quoted(survey / "inversion.inp")).exit_code, 2);
    EXPECT_EQ(run_cli("create --update-data " + quoted(survey / "inversion.inp") + " x").exit_code, 2);
    EXPECT_EQ(run_cli("create --update --variation " + quoted(survey / "inversion.inp") + " x").exit_code, 2);
    EXPECT_FALSE(fs::exists(survey / "x"));
}

TEST_F(CreateCommandLine, CheckPrintsTheMeshWithoutWriting) {
    const CliRun run = run_cli("check " + quoted(survey / "inversion.inp"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("Mesh cells:  88 x 88 x 48 = 371712\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Readings:    4020 in mag_data.csv\n"), std::string::npos);
    EXPECT_NE(run.out.find("  on topo:   4000 (0 with no topography under them)\n  kept:      1751"),
              std::string::npos);
    EXPECT_NE(run.out.find("The definition is valid.\nSize estimate:\n  Cells in the mesh:        371,712\n"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("  Sensitivity matrix:       "), std::string::npos);
    EXPECT_EQ(listing(survey), (std::set<std::string>{"inversion.inp", "mag_data.csv", "topo.xyz"}));

    const CliRun tiles = run_cli("check --suggest-tiles --tile-memory 1G " + quoted(survey / "inversion.inp"));
    EXPECT_NE(tiles.out.find("  Suggested tile size:      "), std::string::npos) << tiles.out;
    EXPECT_EQ(run_cli("check --tile-memory lots " + quoted(survey / "inversion.inp")).exit_code, 1);

    fs::remove(survey / "mag_data.csv");
    EXPECT_EQ(run_cli("check " + quoted(survey / "inversion.inp")).exit_code, 1);
}

}  // namespace
