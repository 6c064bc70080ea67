// tests/create/create_inversion_test.cpp - whole run packages from small definitions: which files each
// method family and create mode writes, the bytes of the mesh, model, observation and topo.dat files
// of a 2 x 2 x 2 mesh worked out by hand, the two saved definitions, and the failure paths.
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "create/create_inversion.h"
#include "definition/parameter_file.h"
#include "commands/commands.h"
#include "commands/create_commands.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"
#include "support/lines.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::read_file_bytes;
using testing::TempDir;
using testing::write_file_bytes;

/// The files and folders directly inside `folder`.
std::set<std::string> listing(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

/// A survey over a 2 x 2 x 2 mesh of 50 m cells: X 1000 to 1100, Y 2000 to 2100, Z 0 to 100, no
/// padding. Flat topography at 50 m; four readings at the column centres (and one farther from the
/// centre of column (1, 1), which its bin drops).
InversionFields tiny_definition() {
    InversionFields d;
    d.inversion_method = method_ubc_mag_v5;
    d.mesh_min = {1000, 2000, 0, 0};
    d.mesh_max = {1100, 2100, 100, 0};
    d.mesh_cell_size = {50, 50, 50, 1};
    d.mesh_cell_count = {2, 2, 2, 0};
    d.add_mesh_padding = 0;
    d.data_file_names[0] = "obs.csv";
    d.data_file_names[1] = "topo.csv";
    d.data_first_lines = {2, 2};
    d.data_name_lines = {1, 1};
    d.data_read_steps = {1, 1};
    d.data_x_columns = {1, 1};
    d.data_y_columns = {2, 2};
    d.data_z_columns = {3, 3};
    d.data_value_columns = {4, 0, 0};
    d.regional_scale = 1;
    d.sensor_height_type = 1;
    d.topo_type = 0;
    d.topo_shift_option = 0;
    d.error_percent = 2;
    d.error_floor = 1;
    d.mag_inclination = 70;
    d.mag_declination = -10.5f;
    d.mag_intensity = 50000;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    d.background_topo = -1e32f;
    return d;
}

const char* const tiny_readings =
    "x,y,z,value,line\r\n"
    "1025,2025,80,12.5,L10\r\n"
    "1040,2040,85,99,L10\r\n"
    "1075,2025,80,-3.25,L10\r\n"
    "1025,2075,90,7,L20\r\n"
    "1075,2075,95,100,L20\r\n";

std::string flat_topography() {
    std::string text = "x,y,z\r\n";
    for (int y : {990, 1030, 1050, 1070, 1110})
        for (int x : {990, 1030, 1050, 1070, 1110})
            text += std::to_string(x) + "," + std::to_string(y + 1000) + ",50\r\n";
    return text;
}

class CreateInversion : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    fs::path work = dir.path() / "work";
    fs::path runs = dir.path() / "runs";

    void SetUp() override {
        fs::create_directories(work);
        write_file_bytes(work / "obs.csv", tiny_readings);
        write_file_bytes(work / "topo.csv", flat_topography());
    }

    /// Saves the definition as work/survey.inp, reads it as the file menu does and names the run
    /// directory runs/<name>.
    void load(const InversionFields& definition, const std::string& run_name) {
        save_inversion_parameters(definition, "tiny survey", work / "survey.inp");
        session.working_directory = work;
        initialise_inversion_form(session);
        dialogue.file_answers.push_back((work / "survey.inp").string());
        ASSERT_EQ(read_command(session, 0), 0) << (dialogue.messages.empty() ? "" : dialogue.messages.back());
        session.form.set_text("Drive1", "/");
        session.form.set_text("Dir1", runs.string());
        session.form.set_text("Text_directory_name", run_name);
    }

    /// The last message and the progress so far, for a failure's report.
    std::string last_message() const {
        return (dialogue.messages.empty() ? "" : dialogue.messages.back()) + "\n" + session.form.text("Text_progress");
    }
};

TEST_F(CreateInversion, PlainMagneticRunWritesThePackageByHand) {
    load(tiny_definition(), "run1");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    EXPECT_EQ(dialogue.messages.back(), "Output complete");

    const fs::path run = runs / "run1";
    EXPECT_EQ(listing(run), (std::set<std::string>{"mag_weights.inp", "magsen3d.inp", "maginv3d.inp",
                                                   "run_inversion.bat", "run_maginv3d.bat", "run_magerror.bat",
                                                   "run_magsen3d.bat", "run_inversion.sh", "run_maginv3d.sh",
                                                   "run_magerror.sh", "run_magsen3d.sh", "mesh", "model.sus",
                                                   "mag.obs", "topo.dat"}));
    EXPECT_EQ(read_file_bytes(run / "mesh"), "2 2 2\r\n 1000  2000  100\r\n2*50.0000\r\n2*50.0000\r\n2*50.0000\r\n");
    std::string zeros;
    for (int n = 0; n < 8; ++n) zeros += " 0.00000E+00\r\n";
    EXPECT_EQ(read_file_bytes(run / "model.sus"), zeros);
    // Header of the field, the count, then the bins X fastest; errors are 2 % of the value plus 1.
    EXPECT_EQ(read_file_bytes(run / "mag.obs"),
              "70.00 -10.50 50000.00\r\n"
              "70.00 -10.50 1\r\n"
              " 4 \r\n"
              "     1025.0000     2025.0000       80.0000       12.5000        1.2500\r\n"
              "     1075.0000     2025.0000       80.0000       -3.2500        1.0650\r\n"
              "     1025.0000     2075.0000       90.0000        7.0000        1.1400\r\n"
              "     1075.0000     2075.0000       95.0000      100.0000        3.0000\r\n");
    EXPECT_EQ(read_file_bytes(run / "topo.dat"),
              "9\r\n"
              "1000 2000 50\r\n1050 2000 50\r\n1100 2000 50\r\n"
              "1000 2050 50\r\n1050 2050 50\r\n1100 2050 50\r\n"
              "1000 2100 50\r\n1050 2100 50\r\n1100 2100 50\r\n");

    // The definition is saved twice: in the working directory and beside the run directory.
    const std::string saved = read_file_bytes(work / "inversion.inp");
    EXPECT_EQ(saved.rfind("Version 3.0\r\nInversion method: 6\r\n", 0), 0u);
    EXPECT_EQ(read_file_bytes(runs / "run1.inp"), saved);
    // Nothing else is written anywhere.
    EXPECT_EQ(listing(work), (std::set<std::string>{"obs.csv", "topo.csv", "survey.inp", "inversion.inp"}));
    EXPECT_EQ(listing(runs), (std::set<std::string>{"run1", "run1.inp"}));

    const std::string progress = session.form.text("Text_progress");
    const char* const stages[] = {"Checking inversion definitions",
                                  "Creating inversion directory",
                                  "Saving the inversion definitions",
                                  "Creating inversion parameter files",
                                  "Creating inversion batch file",
                                  "Gridding topo data ",
                                  "Creating inversion mesh files",
                                  "Writing inversion model file",
                                  "Reading inversion data file",
                                  "Number of data read from file: 4",
                                  "Ensuring reading elevations are consistent with topo",
                                  "Writing observed data for use in the inversion",
                                  "Writing topo data for use in the inversion",
                                  "Inversion processing complete"};
    std::string expected;
    for (const char* stage : stages) expected += std::string(stage) + "\r\n";
    EXPECT_EQ(progress, expected);
}

TEST_F(CreateInversion, LineColumnAddsTheReferenceSetWithLabels) {
    InversionFields definition = tiny_definition();
    definition.line_column = 5;
    load(definition, "run1");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const std::string reference = read_file_bytes(runs / "run1" / "mag.ref");
    EXPECT_NE(reference.find("     1025.0000     2025.0000       80.0000       12.5000        1.2500           L10\r\n"),
              std::string::npos)
        << reference;
    EXPECT_EQ(read_file_bytes(runs / "run1" / "mag.obs").find("L10"), std::string::npos);
}

TEST_F(CreateInversion, UpdateModeRewritesInputFilesOnly) {
    load(tiny_definition(), "run1");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const fs::path run = runs / "run1";
    for (const char* name : {"mesh", "model.sus", "mag.obs", "topo.dat", "maginv3d.inp"})
        write_file_bytes(run / name, "older\r\n");
    ASSERT_EQ(create_command(session, 1), 0) << last_message();
    for (const char* name : {"mesh", "model.sus", "mag.obs", "topo.dat"}) EXPECT_EQ(read_file_bytes(run / name), "older\r\n");
    EXPECT_NE(read_file_bytes(run / "maginv3d.inp"), "older\r\n");
}

TEST_F(CreateInversion, ANewRunWarnsOfAnEarlierRunsFilesItLeftButAnUpdateDoesNot) {
    load(tiny_definition(), "run1");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const fs::path run = runs / "run1";
    write_file_bytes(run / "mag.ref", "older\r\n");
    fs::create_directories(run / "sens");
    write_file_bytes(run / "sens" / "old.mtx", "older");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    EXPECT_EQ(dialogue.messages.back(),
              "The run folder " + run.string() + " also holds 2 files that this run did not write: mag.ref, "
              "sens/old.mtx. They were left as they were; the inversion may read them as if they were part of this run.");
    EXPECT_EQ(read_file_bytes(run / "mag.ref"), "older\r\n");
    dialogue.messages.clear();
    ASSERT_EQ(create_command(session, 1), 0) << last_message();
    EXPECT_EQ(dialogue.messages.back(), "Output complete");
}

TEST_F(CreateInversion, VariationRunsWriteIntoASubdirectory) {
    load(tiny_definition(), "run1");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();

    session.form.set_text("Dir1", (runs / "run1").string());
    session.form.set_text("Text_directory_name", "var1");
    ASSERT_EQ(create_command(session, 2), 0) << last_message();
    EXPECT_EQ(listing(runs / "run1" / "var1"),
              (std::set<std::string>{"maginv3d.inp", "run_maginv3d.bat", "run_magerror.bat", "run_maginv3d.sh",
                                     "run_magerror.sh"}));
    EXPECT_NE(read_file_bytes(runs / "run1" / "var1" / "maginv3d.inp").find("..\\"), std::string::npos);

    // With new data files: the main observation file too, and still no mesh, model or topo.dat.
    session.form.set_text("Text_directory_name", "var2");
    session.form.set_checked("Check_update_data_files", true);
    ASSERT_EQ(create_command(session, 2), 0) << last_message();
    EXPECT_EQ(listing(runs / "run1" / "var2"),
              (std::set<std::string>{"maginv3d.inp", "run_maginv3d.bat", "run_magerror.bat", "run_maginv3d.sh",
                                     "run_magerror.sh", "mag.obs"}));
    EXPECT_EQ(read_file_bytes(runs / "run1" / "var2" / "mag.obs"), read_file_bytes(runs / "run1" / "mag.obs"));
}

TEST_F(CreateInversion, GravityRunWithoutTopographyUsesDensityNames) {
    InversionFields definition = tiny_definition();
    definition.inversion_method = method_ubc_grav_v3;
    definition.data_types = {0, -1, -1, -1, -1, -1, -1};
    definition.topo_type = 1;
    definition.data_file_names[1] = "";
    load(definition, "grav");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const fs::path run = runs / "grav";
    const std::set<std::string> files = listing(run);
    for (const char* name : {"gzsen3d.inp", "gzinv3d.inp", "run_inversion.bat", "mesh", "model.den", "grav.obs"})
        EXPECT_TRUE(files.count(name)) << name;
    for (const char* name : {"model.sus", "mag.obs", "topo.dat"}) EXPECT_FALSE(files.count(name)) << name;
    // No field header for gravity: the count comes first.
    EXPECT_EQ(read_file_bytes(run / "grav.obs").substr(0, 5), " 4 \r\n");
    EXPECT_NE(read_file_bytes(run / "gzinv3d.inp").find("null"), std::string::npos);
}

TEST_F(CreateInversion, InHouseMagneticRunDrapesTheMesh) {
    InversionFields definition = tiny_definition();
    definition.inversion_method = method_zarninv3d;
    load(definition, "zarn");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const fs::path run = runs / "zarn";
    const std::set<std::string> files = listing(run);
    for (const char* name : {"zarnsen3d.inp", "zarninv3d.inp", "mesh", "model.sus", "mag.obs", "topo.dat"})
        EXPECT_TRUE(files.count(name)) << name;
    // The Z limits hang from a top of 0, so the flat surface at 50 m lies above the shifted mesh (the
    // surface's lowest point is the drape top, that less the 100 m thickness its bottom).
    const std::string mesh = read_file_bytes(run / "mesh");
    EXPECT_NE(mesh.find("Mesh format: 5\r\nMesh topo drape: "), std::string::npos) << mesh;
    EXPECT_NE(mesh.find("Topography (from lower-left by row)\r\n"), std::string::npos);
    EXPECT_EQ(read_file_bytes(run / "mag.obs").substr(0, 22), "70.00 -10.50 50000.00\r");
}

TEST_F(CreateInversion, InHouseGravityTypeAndWeightingModel) {
    InversionFields definition = tiny_definition();
    definition.inversion_method = method_zarninv3d;
    definition.data_types = {0, -1, -1, -1, -1, -1, -1};
    definition.smoothness_weighting = 1;
    load(definition, "zgrav");
    ASSERT_EQ(create_command(session, 0), 0) << last_message();
    const std::set<std::string> files = listing(runs / "zgrav");
    for (const char* name : {"model.den", "grav.obs", "w.dat"}) EXPECT_TRUE(files.count(name)) << name;
    EXPECT_FALSE(files.count("model.sus"));
}

TEST_F(CreateInversion, DirectoryNameOfAnOutputFileIsRefused) {
    load(tiny_definition(), "MagInv3D");
    EXPECT_EQ(create_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The output directory name conflicts with the output file names"});
    EXPECT_FALSE(fs::exists(runs));
    EXPECT_FALSE(fs::exists(work / "inversion.inp"));
}

TEST_F(CreateInversion, MissingDirectoryNamesAreReportedInOrder) {
    load(tiny_definition(), "");
    EXPECT_EQ(create_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages.back(), "No output directory name has been specified");
    session.form.set_text("Dir1", "");
    EXPECT_EQ(create_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages.back(), "No file location has been selected");
    session.form.set_text("Drive1", "");
    EXPECT_EQ(create_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages.back(), "No drive has been selected");
}

TEST_F(CreateInversion, TopographyWithoutPointsFailsAfterTheInputFiles) {
    write_file_bytes(work / "topo.csv", "x,y,z\r\nnot,a,point\r\n");
    load(tiny_definition(), "run1");
    EXPECT_EQ(create_command(session, 0), -1);
    EXPECT_EQ(dialogue.messages.back(), "An error occurred while generating the inversion files: the creation stopped "
                                        "at the stage \"Generate topo data\"");
    const std::set<std::string> files = listing(runs / "run1");
    EXPECT_TRUE(files.count("maginv3d.inp"));
    EXPECT_TRUE(files.count("run_inversion.bat"));
    EXPECT_FALSE(files.count("mesh"));
    EXPECT_EQ(session.form.text("Text_progress").find("Inversion processing complete"), std::string::npos);
}

TEST(StartCommand, FindsTheBatchFileOfTheRun) {
    HeadlessDialogue dialogue;
    Session session(dialogue);
    TempDir dir;
    session.form.set_text("Drive1", "/");
    session.form.set_text("Dir1", dir.path().string());
    session.form.set_text("Text_directory_name", "run1");
    fs::path batch;
    EXPECT_EQ(start_command(session, batch), -1);
    EXPECT_EQ(dialogue.messages.back(), "The inversion batch file does not exist");
    fs::create_directories(dir.path() / "run1");
    write_file_bytes(dir.path() / "run1" / "run_inversion.bat", "rem\r\n");
#ifndef _WIN32
    // A package written before the sh twins: the script is missing, and the message names it.
    EXPECT_EQ(start_command(session, batch), -1);
    EXPECT_EQ(dialogue.messages.back(), "The shell script " + (dir.path() / "run1" / "run_inversion.sh").string() +
                                            " does not exist: update the inversion files to write it");
    write_file_bytes(dir.path() / "run1" / "run_inversion.sh", "#!/bin/sh\n");
    ASSERT_EQ(start_command(session, batch), 0);
    EXPECT_EQ(batch, dir.path() / "run1" / "run_inversion.sh");
#else
    ASSERT_EQ(start_command(session, batch), 0);
    EXPECT_EQ(batch, dir.path() / "run1" / "run_inversion.bat");
#endif
    session.definition.inversion_method = method_ubc_grav_v5;
    session.form.set_checked("Check_generate_inversion_variation", true);
    EXPECT_EQ(start_batch_file_name(session), "run_gzinv3d.bat");
}

}  // namespace
}  // namespace invsetup
