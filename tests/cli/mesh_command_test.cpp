// tests/cli/mesh_command_test.cpp - `invsetup mesh`: the mesh a definition gives, plain or refined.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "test_support.h"

namespace {

using namespace invsetup::testing;

// The bundled example: an 80 x 80 core of 50 m cells from 500000 / 7000000, padding 1,2,4,8 on
// each side, 40 uniform and 8 growing Z cells (no Z padding under a growing part).
std::string example() {
    return quoted(example_folder("magnetic") / "inversion.inp");
}

TEST(MeshCommand, SummarisesThePaddedMeshAndWritesItsFile) {
    TempDir dir;
    const CliRun run = run_cli("mesh " + example() + " -o " + quoted(dir.path() / "run.msh"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("Cells: 88 x 88 x 48 = 371712\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Cells without padding: 80 x 80 x 48\n"), std::string::npos) << run.out;
    // 15 padding widths (50 + 100 + 200 + 400) of 50 m outside 500000.
    EXPECT_NE(run.out.find("X: 499250 to 504750, core nodes 5 to 85\n"), std::string::npos) << run.out;
    const std::string file = read_file_bytes(dir.path() / "run.msh");
    EXPECT_EQ(file.substr(0, file.find("\r\n", file.find("\r\n") + 2) + 2), "88 88 48\r\n 499250  6999250  1200\r\n");
}

TEST(MeshCommand, RefinesInsideAnExistingMeshAndListsTheTiles) {
    TempDir dir;
    ASSERT_EQ(run_cli("mesh " + example() + " -o " + quoted(dir.path() / "coarse.msh")).exit_code, 0);
    const CliRun run = run_cli("mesh " + example() + " --mesh " + quoted(dir.path() / "coarse.msh"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("Tiles: 1 x 1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("X tile 1: 5 5 84 84\n"), std::string::npos) << run.out;
}

TEST(MeshCommand, ALimitOutsideTheExistingCoreFailsWithItsMessage) {
    TempDir dir;
    write_file_bytes(dir.path() / "tiny.msh", "2 2 2\r\n0 0 0\r\n2*10\r\n2*10\r\n2*10\r\n");
    const CliRun run = run_cli("mesh " + example() + " --mesh " + quoted(dir.path() / "tiny.msh"));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.err.find("The minimum x limit of the refined area is outside the core mesh region of the original "
                           "model"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run_cli("mesh").exit_code, 2);
}

}  // namespace
