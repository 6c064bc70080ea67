// tests/create/create_inversion_test.cpp - whole run packages from small definitions: which files each
// method family and create mode writes, the bytes of the mesh, model, observation and topo.dat files
// of a 2 x 2 x 2 mesh worked out by hand, the two saved definitions, and the failure paths.
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "commands/commands.h"
#include "commands/create_commands.h"
#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using namespace testing;

/// A survey over a 2 x 2 x 2 mesh of 50 m cells: X 1000 to 1100, Y 2000 to 2100, Z 0 to 100, no
/// padding. Flat topography at 50 m; four readings at the column centres (and one farther from the
/// centre of column (1, 1), which its bin drops).
InversionFields tiny_definition() { return small_survey({1000, 2000, 0}, {1100, 2100, 100}, {50, 50, 50}); }

class CreateInversion : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    fs::path work = dir.path() / "work";
    fs::path runs = dir.path() / "runs";

    void SetUp() override {
        fs::create_directories(work);
        write_small_survey_files(work);
    }

    /// Saves the definition as work/survey.inp, reads it as the file menu does and names the run
    /// directory runs/<name>.
    void load(const InversionFields& definition, const std::string& run_name) {
        ASSERT_EQ(load_definition(session, dialogue, definition, work / "survey.inp"), 0) << last_message();
        set_run_directory(session, runs / run_name);
    }

    std::string last_message() const { return last_words(session, dialogue); }
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
    // The observations: the field header, the count, then the bins X fastest; errors are 2 % of the
    // value plus 1. The surface: the mesh's nodes at the flat 50 m.
    const fs::path expected = test_data("create/small_mag");
    for (const char* name : {"mesh", "model.sus", "mag.obs", "topo.dat"})
        EXPECT_EQ(read_file_bytes(run / name), read_file_bytes(expected / name)) << name;
    EXPECT_EQ(session.form.text("Text_progress"), read_file_bytes(expected / "progress.txt"));

    // The definition is saved twice: in the working directory and beside the run directory.
    const std::string saved = read_file_bytes(work / "inversion.inp");
    EXPECT_EQ(saved.rfind("Version 3.0\r\nInversion method: 6\r\n", 0), 0u);
    EXPECT_EQ(read_file_bytes(runs / "run1.inp"), saved);
    // Nothing else is written anywhere.
    EXPECT_EQ(listing(work), (std::set<std::string>{"obs.csv", "topo.csv", "survey.inp", "inversion.inp"}));
    EXPECT_EQ(listing(runs), (std::set<std::string>{"run1", "run1.inp"}));
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

/// What one method family writes: files that must be there, files that must not, and texts a file
/// must start with (`at_start`) or hold.
struct MethodRun {
    const char* run;
    int method;
    int data_type;          // 0 gravity, 1 magnetic
    bool topography;        // false: the top of the mesh
    int smoothness_weighting;
    std::vector<const char*> present, absent;
    struct Text {
        const char* file;
        const char* text;
        bool at_start;
    };
    std::vector<Text> texts;
};

TEST_F(CreateInversion, EachMethodFamilyWritesItsOwnFiles) {
    const MethodRun cases[] = {
        // No field header for gravity: the count comes first; no topography, no topo.dat.
        {"grav", method_ubc_grav_v3, 0, false, 0,
         {"gzsen3d.inp", "gzinv3d.inp", "run_inversion.bat", "mesh", "model.den", "grav.obs"},
         {"model.sus", "mag.obs", "topo.dat"},
         {{"grav.obs", " 4 \r\n", true}, {"gzinv3d.inp", "null", false}}},
        // The in-house method's Z limits hang from a top of 0, so the flat surface at 50 m lies above
        // the shifted mesh (the surface's lowest point is the drape top, that less the 100 m thickness
        // its bottom).
        {"zarn", method_zarninv3d, 1, true, 0,
         {"zarnsen3d.inp", "zarninv3d.inp", "mesh", "model.sus", "mag.obs", "topo.dat"},
         {},
         {{"mesh", "Mesh format: 5\r\nMesh topo drape: ", false},
          {"mesh", "Topography (from lower-left by row)\r\n", false},
          {"mag.obs", "70.00 -10.50 50000.00\r\n", true}}},
        // Its gravity type, with a weighting model.
        {"zgrav", method_zarninv3d, 0, true, 1, {"model.den", "grav.obs", "w.dat"}, {"model.sus"}, {}},
    };
    for (const MethodRun& c : cases) {
        SCOPED_TRACE(c.run);
        InversionFields definition = tiny_definition();
        definition.inversion_method = c.method;
        definition.data_types = {c.data_type, -1, -1, -1, -1, -1, -1};
        if (!c.topography) {
            definition.topo_type = 1;
            definition.data_file_names[1] = "";
        }
        definition.smoothness_weighting = c.smoothness_weighting;
        load(definition, c.run);
        ASSERT_EQ(create_command(session, 0), 0) << last_message();
        const fs::path run = runs / c.run;
        const std::set<std::string> files = listing(run);
        for (const char* name : c.present) EXPECT_TRUE(files.count(name)) << name;
        for (const char* name : c.absent) EXPECT_FALSE(files.count(name)) << name;
        for (const MethodRun::Text& t : c.texts) {
            const std::string bytes = read_file_bytes(run / t.file);
            if (t.at_start) EXPECT_EQ(bytes.rfind(t.text, 0), 0u) << t.file << ":\n" << bytes;
            else EXPECT_NE(bytes.find(t.text), std::string::npos) << t.file << ":\n" << bytes;
        }
    }
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
