// tests/cli/refine_test.cpp - `invsetup create --mesh --model --skip-tile`: a 2 x 2 tiled refinement of
// a 6 x 6 x 6 mesh of 100 m cells (50 m deep) with 50 m cells (25 m deep) over its middle, one tile
// switched off; every file of every tile folder against the files worked out for it; and the plan of
// that layout as a picture; the bundled refinement example run and drawn.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "grids/plan_raster.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using invsetup::testing::CliRun;
using invsetup::testing::quoted;
using invsetup::testing::read_file_bytes;
using invsetup::testing::run_cli;
using invsetup::testing::TempDir;
using invsetup::testing::test_data;

/// Every file below `folder`, as paths relative to it, without the shell twins of the batch files.
std::set<std::string> files_below(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file() && entry.path().extension() != ".sh")
            names.insert(fs::relative(entry.path(), folder).generic_string());
    return names;
}

std::string zero_lines(int count) {
    std::string text;
    for (int n = 0; n < count; ++n) text += " 0.00000E+00\r\n";
    return text;
}

/// The ubc fixture in `folder` with one line of its definition replaced.
void copy_fixture(const fs::path& folder, const std::string& line, const std::string& replacement) {
    const fs::path fixture = test_data("refine") / "ubc";
    for (const char* name : {"coarse.msh", "coarse.sus", "obs.csv"}) fs::copy_file(fixture / name, folder / name);
    std::string definition = read_file_bytes(fixture / "refine.inp");
    const std::size_t at = definition.find(line);
    ASSERT_NE(at, std::string::npos);
    definition.replace(at, line.size(), replacement);
    invsetup::testing::write_file_bytes(folder / "refine.inp", definition);
}

/// `invsetup create --quiet` of the definition in `folder` into `folder`/run, refined inside its
/// coarse.msh, with the further `options`.
CliRun create_refined(const fs::path& folder, const std::string& options = "") {
    return run_cli("create " + quoted(folder / "refine.inp") + " " + quoted(folder / "run") + " --mesh " +
                   quoted(folder / "coarse.msh") + options + " --quiet");
}

struct TiledRun {
    const char* fixture;
    /// The run-level files besides the expected ones: the refined model, its copy for the merge, the
    /// observation file of the whole run, and the copied initial model.
    std::set<std::string> run_models;
    const char* tile_model;
    const char* warning;  // a message every tile gives, or ""
};

void PrintTo(const TiledRun& run, std::ostream* out) { *out << run.fixture; }

class RefinementRun : public ::testing::TestWithParam<TiledRun> {};

TEST_P(RefinementRun, WritesEveryTileFolderAsWorkedOut) {
    const TiledRun& param = GetParam();
    TempDir dir;
    const fs::path fixture = test_data("refine") / param.fixture;
    for (const char* name : {"coarse.msh", "coarse.sus", "obs.csv", "refine.inp"})
        fs::copy_file(fixture / name, dir.path() / name);
    const CliRun run = create_refined(dir.path(), " --model " + quoted(dir.path() / "coarse.sus") + " --skip-tile 2,1");
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_EQ(run.err.find("The mesh file has been loaded and refinement mode is enabled\n"), 0u) << run.err;
    std::size_t warnings = 0;
    for (std::size_t at = 0; *param.warning && (at = run.err.find(param.warning, at)) != std::string::npos; ++at)
        ++warnings;
    EXPECT_EQ(warnings, *param.warning ? 4u : 0u) << run.err;

    const fs::path expected = fixture / "expected";
    std::set<std::string> names = files_below(expected);
    names.insert(param.run_models.begin(), param.run_models.end());
    EXPECT_EQ(files_below(dir.path() / "run"), names);
    for (const std::string& name : files_below(expected))
        EXPECT_EQ(read_file_bytes(dir.path() / "run" / name), read_file_bytes(expected / name)) << name;

    // The coarse model is a text model: nothing says its order, so it gives no values, every cell is
    // null and the refined model starts from 0 everywhere. Tiles take their outer cells and the top
    // 4 cells with the z blend of 1.
    const std::string whole = zero_lines(10 * 10 * 8);
    for (const std::string& name : param.run_models) {
        if (name.find(".sus") != std::string::npos && name != "coarse.sus") {
            EXPECT_EQ(read_file_bytes(dir.path() / "run" / name), whole) << name;
        }
    }
    const int cells[2][2] = {{5 * 5, 5 * 4}, {4 * 5, 4 * 4}};
    for (int i = 1; i <= 2; ++i)
        for (int j = 1; j <= 2; ++j)
            EXPECT_EQ(read_file_bytes(dir.path() / "run" / ("tile0" + std::to_string(i) + "0" + std::to_string(j)) /
                                      param.tile_model),
                      zero_lines(cells[i - 1][j - 1] * 5));
    if (param.run_models.count("coarse.sus")) {
        EXPECT_EQ(read_file_bytes(dir.path() / "run" / "coarse.sus"), read_file_bytes(fixture / "coarse.sus"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Methods, RefinementRun,
    ::testing::Values(
        // UBC magnetic V4 with the initial model and the coarse forward model.
        TiledRun{"ubc", {"refined.sus", "maginv3d.sus", "mag.obs", "coarse.sus"}, "maginv3d.sus", ""},
        // The in-house method: its coarse forward model asks for the matrix of the coarse run, a cancel
        // warns once per tile and leaves the default folder.
        TiledRun{"house",
                 {"refined.sus", "zarninv3d.sus", "mag.obs"},
                 "mag_tile.sus",
                 "Warning: The tiling may not work correctly if the MTX file does not exist when the inversion is run"}),
    [](const ::testing::TestParamInfo<TiledRun>& info) { return std::string(info.param.fixture); });

TEST(RefinementRunOptions, RefusesATileOutsideTheLayoutAndSkipsWithoutAMesh) {
    TempDir dir;
    const fs::path fixture = test_data("refine") / "ubc";
    for (const char* name : {"coarse.msh", "coarse.sus", "obs.csv", "refine.inp"})
        fs::copy_file(fixture / name, dir.path() / name);
    const std::string base = "create " + quoted(dir.path() / "refine.inp") + " " + quoted(dir.path() / "run");
    const CliRun outside = run_cli(base + " --mesh " + quoted(dir.path() / "coarse.msh") + " --skip-tile 3,1");
    EXPECT_EQ(outside.exit_code, 1);
    EXPECT_NE(outside.err.find("--skip-tile 3,1: the layout has 2 x 2 tiles"), std::string::npos) << outside.err;
    EXPECT_FALSE(fs::exists(dir.path() / "run" / "iter_all.bat"));
    EXPECT_EQ(run_cli(base + " --skip-tile 1,1").exit_code, 2);  // the option needs --mesh
    const CliRun no_model = run_cli(base + " --mesh " + quoted(dir.path() / "missing.msh"));
    EXPECT_EQ(no_model.exit_code, 1);

    // check takes the existing mesh and model as create does and sizes each tile of the layout.
    const std::string check = "check " + quoted(dir.path() / "refine.inp");
    const CliRun tiled = run_cli(check + " --mesh " + quoted(dir.path() / "coarse.msh") + " --model " +
                                 quoted(dir.path() / "coarse.sus"));
    EXPECT_EQ(tiled.exit_code, 0) << tiled.err << tiled.out;
    EXPECT_NE(tiled.out.find("Size estimate:"), std::string::npos) << tiled.out;
    EXPECT_NE(tiled.out.find("tile"), std::string::npos) << tiled.out;
    EXPECT_NE(tiled.out.find("    tile0202:"), std::string::npos) << tiled.out;
    EXPECT_EQ(run_cli(check + " --model " + quoted(dir.path() / "coarse.sus")).exit_code, 2);  // needs --mesh
}

TEST(RefinementRunOrder, ByRowFromTopRightReadsTheMarksTheOtherWayRound) {
    TempDir dir;
    copy_fixture(dir.path(), "Tile order: 0 0 0", "Tile order: 1 1 1");
    const CliRun run = create_refined(dir.path(), " --skip-tile 2,1");
    ASSERT_EQ(run.exit_code, 0) << run.err;
    // Rows from the top, right to left; the mark of tile (2, 1) is read for tile (1, 2).
    EXPECT_EQ(read_file_bytes(dir.path() / "run" / "iter_all.bat"),
              "rem Num data 6\r\ncall tile0202.bat\r\nrem Num data 6\r\nrem call tile0102.bat\r\n\r\n"
              "rem Num data 6\r\ncall tile0201.bat\r\nrem Num data 6\r\ncall tile0101.bat\r\n\r\n");
}

TEST(PlanCommand, WritesTheTilingLayoutAsAPicture) {
    TempDir dir;
    const fs::path fixture = test_data("refine") / "ubc";
    const CliRun run = run_cli("plan " + quoted(fixture / "refine.inp") + " --mesh " + quoted(fixture / "coarse.msh") +
                               " --skip-tile 2,1 --width 600 --height 500 -o " + quoted(dir.path() / "plan.png"));
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("Lines: 30\nTiles: 2 x 2\n"), std::string::npos) << run.out;
    invsetup::RgbaImage image;
    ASSERT_EQ(invsetup::read_png(dir.path() / "plan.png", image), 0);
    ASSERT_EQ(image.width, 600);
    ASSERT_EQ(image.height, 500);
    // The frame, tile 1's outer end in blue, the cross of the switched-off tile in red, white outside.
    EXPECT_EQ(image.at(60, 250), (invsetup::Rgba{0, 0, 0, 255}));
    EXPECT_EQ(image.at(340, 300), (invsetup::Rgba{0, 0, 255, 255}));
    EXPECT_EQ(image.at(360, 330), (invsetup::Rgba{255, 0, 0, 255}));
    EXPECT_EQ(image.at(20, 20), (invsetup::Rgba{255, 255, 255, 255}));
    EXPECT_EQ(run_cli("plan " + quoted(fixture / "refine.inp") + " --skip-tile 1,1 -o x.png").exit_code, 2);
}

TEST(RefinementRunExpanded, ExtractionsExpandTheInsertDoesNotAndTileModelsStayEmpty) {
    TempDir dir;
    copy_fixture(dir.path(), "Add mesh padding: 0 0", "Add mesh padding: 0 1");
    const CliRun run = create_refined(dir.path());
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const std::string batch = read_file_bytes(dir.path() / "run" / "tile0101.bat");
    EXPECT_NE(batch.find("Vorlextract ..\\mesh ..\\coarse.sus coarse.sus 2 6 2 6 1 5 -Expand\r\n"), std::string::npos);
    EXPECT_NE(batch.find("maginv3d.mod  2 6 2 6 1 5 -Expand ..\\mag.obs\r\n"), std::string::npos);
    EXPECT_NE(batch.find("..\\maginv3d.sus 2 5 2 5 1 5 1 1\r\n"), std::string::npos);
    EXPECT_EQ(read_file_bytes(dir.path() / "run" / "tile0101" / "maginv3d.sus"), "");
    EXPECT_NE(read_file_bytes(dir.path() / "run" / "refined.sus"), "");
}

TEST(RefinementRunInHouse, TileMeshesKeepTheDrapeOfTheLoadedMesh) {
    // The in-house example made coarse (its own run), then refined with topography: every mesh of the
    // refinement carries the loaded mesh's drape levels and the surface.
    TempDir dir;
    const fs::path example = invsetup::testing::example_folder("zarninv");
    for (const char* name : {"inversion.inp", "mag_data.csv", "topo.xyz"}) fs::copy_file(example / name, dir.path() / name);
    ASSERT_EQ(run_cli("create " + quoted(dir.path() / "inversion.inp") + " " + quoted(dir.path() / "coarse") + " --quiet")
                  .exit_code,
              0);
    std::string definition = read_file_bytes(dir.path() / "inversion.inp");
    const auto replace = [&definition](const std::string& from, const std::string& to) {
        const std::size_t at = definition.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        definition.replace(at, definition.find("\r\n", at) - at, to);
    };
    replace("Refinement Mode:", "Refinement Mode: 1");
    replace("X Range:", "X Range: 613000 615000 25 80");
    replace("Y Range:", "Y Range: 6452000 6454000 25 80");
    replace("Z Range:", "Z Range: -1000 0 25 40 1.3 0");
    replace("X tile size:", "X tile size: 60");
    replace("Y tile size:", "Y tile size: 60");
    replace("Tile overlap:", "Tile overlap: 8");
    replace("Tile X/Y blend:", "Tile X/Y blend: 4");
    replace("Tile Z blend:", "Tile Z blend: 2");
    invsetup::testing::write_file_bytes(dir.path() / "refine.inp", definition);
    const CliRun run = run_cli("create " + quoted(dir.path() / "refine.inp") + " " + quoted(dir.path() / "run") +
                               " --mesh " + quoted(dir.path() / "coarse" / "mesh") + " --model " +
                               quoted(dir.path() / "coarse" / "model.sus") + " --quiet");
    ASSERT_EQ(run.exit_code, 0) << run.err;
    const std::string coarse = read_file_bytes(dir.path() / "coarse" / "mesh");
    const std::size_t drape = coarse.find("Mesh topo drape: ");
    ASSERT_NE(drape, std::string::npos);
    const std::string drape_line = coarse.substr(drape, coarse.find("\r\n", drape) + 2 - drape);
    for (const char* mesh : {"mesh", "tile0101/mesh", "tile0202/mesh"}) {
        const std::string text = read_file_bytes(dir.path() / "run" / mesh);
        EXPECT_NE(text.find("Mesh format: 5\r\n" + drape_line + "Topography"), std::string::npos) << mesh;
    }
}

TEST(RefinementRunWeighting, EachTileHasItsWeightingModelAndTheRunNone) {
    TempDir dir;
    copy_fixture(dir.path(), "Smoothness weighting: 0 16,8,4,2,1", "Smoothness weighting: 1 16,8");
    const CliRun run = create_refined(dir.path());
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_FALSE(fs::exists(dir.path() / "run" / "w.dat"));
    // Tile (2, 2): 4 x 4 outer cells, the top 4 cells and the z blend of 1.
    std::string expected;
    for (int n = 0; n < 16; ++n) expected += " 1 1 1 1 1\r\n";
    for (int n = 0; n < 2 * 12; ++n) expected += " 16 8 1 1 1\r\n";
    for (int n = 0; n < 16; ++n) expected += " 1 1 1 1\r\n";
    EXPECT_EQ(read_file_bytes(dir.path() / "run" / "tile0202" / "w.dat"), expected);
    const std::string input = read_file_bytes(dir.path() / "run" / "tile0202" / "maginv3d.inp");
    EXPECT_NE(input.find("0.0001 1 1 1\r\nw.dat\r\n0\r\n"), std::string::npos) << input;
}

TEST(RefinementRunGravity, TileDataGoToAGrowingNameInTheRunDirectory) {
    TempDir dir;
    copy_fixture(dir.path(), "Inversion method: 3", "Inversion method: 2");
    const CliRun run = create_refined(dir.path());
    ASSERT_EQ(run.exit_code, 0) << run.err;
    std::string name = "iter_all.bat";
    for (int tile = 0; tile < 4; ++tile) {
        name += ".dat";
        EXPECT_TRUE(fs::exists(dir.path() / "run" / name)) << name;
    }
    EXPECT_FALSE(fs::exists(dir.path() / "run" / "tile0101" / "grav.dat"));
    EXPECT_NE(read_file_bytes(dir.path() / "run" / "tile0101.bat").find("Vorlinsert mesh gzinv3d.den ..\\mesh ..\\gzinv3d.den "),
              std::string::npos);
}

TEST(RefinementRunSurface, TheModelsSurfaceBoundsTheRefinedBottom) {
    // A binary model whose top two layers are null (not above 0): its surface lies at 100, two 50 m
    // layers below the top, and a refinement ending at 150 stops above it.
    TempDir dir;
    copy_fixture(dir.path(), "Z Range: 100 200 25 4 1.3 0", "Z Range: 150 200 25 2 1.3 0");
    std::string model = "UBC";
    model.push_back('\x01');
    for (int k = 1; k <= 6; ++k)
        for (int n = 0; n < 36; ++n) {
            const float value = k <= 2 ? -1.0f : 1.0f;
            model.append(reinterpret_cast<const char*>(&value), sizeof value);
        }
    invsetup::testing::write_file_bytes(dir.path() / "coarse.bin", model);
    const CliRun run = create_refined(dir.path(), " --model " + quoted(dir.path() / "coarse.bin"));
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_NE(run.err.find("The bottom of the mesh refinement must be below the bottom of the topo: 100.0"),
              std::string::npos)
        << run.err;
}

TEST(RefinementExample, RunsAndDrawsWithATileSwitchedOff) {
    // The bundled refinement example as its README line runs it, beside the magnetic survey it reads.
    TempDir dir;
    invsetup::testing::copy_example("magnetic", dir.path() / "magnetic");
    invsetup::testing::copy_example("refine", dir.path() / "refine");
    const fs::path refine = dir.path() / "refine";
    const std::string layout = " --mesh " + quoted(refine / "coarse.msh") + " --skip-tile 2,1";
    const CliRun run = run_cli("create " + quoted(refine / "inversion.inp") + " " + quoted(dir.path() / "run") + layout +
                               " --model " + quoted(refine / "coarse.sus") + " --quiet");
    ASSERT_EQ(run.exit_code, 0) << run.err;
    // 2 x 2 tiles with their eight files each, the switched-off one too; only its call is a remark.
    for (const char* tile : {"tile0101", "tile0102", "tile0201", "tile0202"})
        EXPECT_EQ(files_below(dir.path() / "run" / tile).size(), 8u) << tile;
    const std::string iterate = read_file_bytes(dir.path() / "run" / "iter_all.bat");
    EXPECT_NE(iterate.find("\r\nrem call tile0201.bat\r\n"), std::string::npos) << iterate;
    EXPECT_NE(iterate.find("\r\ncall tile0202.bat\r\n"), std::string::npos) << iterate;
    const CliRun plan = run_cli("plan " + quoted(refine / "inversion.inp") + layout + " -o " + quoted(dir.path() / "plan.png"));
    ASSERT_EQ(plan.exit_code, 0) << plan.err;
    EXPECT_NE(plan.out.find("Tiles: 2 x 2"), std::string::npos) << plan.out;
    EXPECT_TRUE(fs::exists(dir.path() / "plan.png"));
}

}  // namespace
