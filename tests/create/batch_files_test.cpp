// tests/create/batch_files_test.cpp - the batch files of a run, by method and create mode, against
// lines worked out by hand from the format.
#include "create/batch_files.h"

#include <gtest/gtest.h>

#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

using Lines = std::vector<std::string>;

InversionDefinition definition_for(int method) {
    InversionDefinition d;
    d.inversion_method = method;
    d.topo_type = 0;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    return d;
}

RunContext in_mode(int create_mode, std::string thread_suffix = "") {
    RunContext context;
    context.create_mode = create_mode;
    context.thread_suffix = std::move(thread_suffix);
    return context;
}

/// The files as name and lines, for a compact comparison.
std::vector<std::pair<std::string, Lines>> files_of(const InversionDefinition& d, const RunContext& context) {
    std::vector<std::pair<std::string, Lines>> result;
    for (const BatchFile& file : run_batch_files(d, context, 10, 20, 30)) result.emplace_back(file.name, file.lines);
    return result;
}

using Files = std::vector<std::pair<std::string, Lines>>;

TEST(RunBatchFiles, MagneticV5PutsTheThreadCountBehindEachProgram) {
    const Files expected{
        {"run_inversion.bat", {"pfweight mag_weights.inp 4", "magsen3d magsen3d.inp 4", "maginv3d maginv3d.inp 4"}},
        {"run_maginv3d.bat",
         {"pfweight mag_weights.inp 4", "maginv3d maginv3d.inp 4", "vorlerror mag.obs maginv3d.pre error.dat mesh"}},
        {"run_magerror.bat", {"vorlerror mag.obs maginv3d.pre error.dat mesh"}},
        {"run_magsen3d.bat", {"pfweight mag_weights.inp 4", "magsen3d magsen3d.inp 4"}},
    };
    EXPECT_EQ(files_of(definition_for(method_ubc_mag_v5), in_mode(0, " 4")), expected);
    EXPECT_EQ(files_of(definition_for(method_ubc_mag_v5), in_mode(1, " 4")), expected);
}

TEST(RunBatchFiles, VariationRunWritesOnlyTheInversionAndErrorFiles) {
    EXPECT_EQ(files_of(definition_for(method_ubc_grav_v5), in_mode(2, " 2")),
              (Files{{"run_gzinv3d.bat",
                      {"pfweight gz_weights.inp 2", "gzinv3d gzinv3d.inp 2",
                       "vorlerror ..\\grav.obs gzinv3d.pre error.dat ..\\mesh"}},
                     {"run_magerror.bat", {"vorlerror ..\\grav.obs gzinv3d.pre error.dat ..\\mesh"}}}));
    EXPECT_EQ(files_of(definition_for(method_ubc_mag_v3), in_mode(3)),
              (Files{{"run_maginv3d.bat",
                      {"maginv3d maginv3d.inp", "vorlerror mag.obs maginv3d.pre error.dat ..\\mesh"}},
                     {"run_magerror.bat", {"vorlerror mag.obs maginv3d.pre error.dat ..\\mesh"}}}));
}

TEST(RunBatchFiles, GravityV2TakesItsFilesOnTheCommandLine) {
    InversionDefinition d = definition_for(method_ubc_grav_v2);
    EXPECT_EQ(files_of(d, in_mode(0)),
              (Files{{"run_inversion.bat", {"gzsen3d mesh grav.obs topo.dat", "gzinv3d gzinv3d.inp"}},
                     {"run_gzinv3d.bat", {"gzinv3d gzinv3d.inp", "vorlerror grav.obs gzinv3d.pre error.dat mesh"}},
                     {"run_magerror.bat", {"vorlerror grav.obs gzinv3d.pre error.dat mesh"}},
                     {"run_gzsen3d.bat", {"gzsen3d mesh grav.obs topo.dat"}}}));
    d.topo_type = 1;
    EXPECT_EQ(sensitivity_line(d, in_mode(0)), "gzsen3d mesh grav.obs");
}

TEST(ErrorLine, GravityV2SwapsTheVariationColumns) {
    const InversionDefinition v2 = definition_for(method_ubc_grav_v2);
    const InversionDefinition v3 = definition_for(method_ubc_grav_v3);
    EXPECT_EQ(error_line(v2, 2), "vorlerror grav.obs gzinv3d.pre error.dat ..\\mesh");
    EXPECT_EQ(error_line(v2, 3), "vorlerror ..\\grav.obs gzinv3d.pre error.dat ..\\mesh");
    EXPECT_EQ(error_line(v3, 2), "vorlerror ..\\grav.obs gzinv3d.pre error.dat ..\\mesh");
    EXPECT_EQ(error_line(v3, 3), "vorlerror grav.obs gzinv3d.pre error.dat ..\\mesh");
    EXPECT_EQ(error_line(v3, 1), "vorlerror grav.obs gzinv3d.pre error.dat mesh");
}

TEST(ErrorLine, InHouseNeverTakesTheParentsData) {
    InversionDefinition d = definition_for(method_zarninv3d);
    EXPECT_EQ(error_line(d, 0), "Zarnerror mag.obs zarninv3d.pre error.dat mesh");
    EXPECT_EQ(error_line(d, 2), "Zarnerror mag.obs zarninv3d.pre error.dat ..\\mesh");
    d.data_types[0] = 12;
    EXPECT_EQ(error_line(d, 3), "Zarnerror grav.obs zarninv3d.pre error.dat ..\\mesh");
}

TEST(RunBatchFiles, InHouseRunAddsTheErrorReportAndTheClusterPair) {
    EXPECT_EQ(
        files_of(definition_for(method_zarninv3d), in_mode(0)),
        (Files{{"run_inversion.bat",
                {"zarnsen3d zarnsen3d.inp", "zarninv3d zarninv3d.inp", "Zarnerror mag.obs zarninv3d.pre error.dat mesh"}},
               {"run_zarninv3d.bat", {"zarninv3d zarninv3d.inp", "Zarnerror mag.obs zarninv3d.pre error.dat mesh"}},
               {"run_magerror.bat", {"Zarnerror mag.obs zarninv3d.pre error.dat mesh"}},
               {"run_zarnsen3d.bat", {"zarnsen3d zarnsen3d.inp"}},
               {"run_zarnsen3d_cluster.bat",
                {"tasklist | findstr \" Zarnsen3D_RPCServer.exe\" || START \"\" \"Zarnsen3D_RPCServer.exe\"",
                 "zarnsen3d_cluster_controller \"%~dp0\""}},
               {"run_cluster_inversion.bat", {"call run_zarnsen3d_cluster.bat", "call run_zarninv3d.bat"}}}));
    EXPECT_EQ(files_of(definition_for(method_zarninv3d), in_mode(2)).size(), 2u);
}

TEST(RunBatchFiles, RockPropertiesAreExtractedUnlessReferenceOnly) {
    InversionDefinition d = definition_for(method_ubc_mag_v4);
    d.rock_properties_used = true;
    d.model_bounds_given = true;
    d.model_bounds_files[0] = "C:\\wd\\b.sus";
    d.reference_model_given = true;
    d.reference_model_file = "ref.sus";
    d.rock_property_file = "rocks.lkp";
    d.rock_application = 2;  // bounds only, yet the reference is extracted too
    EXPECT_EQ(files_of(d, in_mode(0)).at(0).second,
              (Lines{"Vorlextract mesh C:\\wd\\b.sus mag3d_bounds.sus 1 10 1 20 1 30 -Bounds rocks.lkp",
                     "Vorlextract mesh ref.sus mag3d_ref.sus 1 10 1 20 1 30 -Ref rocks.lkp", "magsen3d magsen3d.inp",
                     "maginv3d maginv3d.inp"}));
    d.rock_application = 1;
    EXPECT_EQ(files_of(d, in_mode(0)).at(0).second, (Lines{"magsen3d magsen3d.inp", "maginv3d maginv3d.inp"}));

    InversionDefinition in_house = d;
    in_house.inversion_method = method_zarninv3d;
    in_house.data_types[0] = 2;
    in_house.rock_application = 0;
    in_house.reference_model_given = false;
    EXPECT_EQ(files_of(in_house, in_mode(0)).at(0).second.at(0),
              "Zarnextract mesh C:\\wd\\b.sus grav3d_bounds.den 1 10 1 20 1 30 -Bounds rocks.lkp");
}

TEST(WriteRunFiles, WritesEachFileWithCrLfForTheMeshCounts) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
    session.definition = definition_for(method_ubc_grav_v3);
    session.definition.rock_properties_used = true;
    session.definition.reference_model_given = true;
    session.definition.reference_model_file = "r.den";
    session.definition.rock_property_file = "p.csv";
    session.mesh.nx = 3;
    session.mesh.ny = 4;
    session.mesh.nz = 5;
    RunContext context;
    context.run_directory = dir.path();
    write_run_files(session, context);
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "run_inversion.bat"),
              "Vorlextract mesh r.den grav3d_ref.den 1 3 1 4 1 5 -Ref p.csv\r\ngzsen3d gzsen3d.inp\r\n"
              "gzinv3d gzinv3d.inp\r\n");
    EXPECT_EQ(testing::read_file_bytes(dir.path() / "run_gzsen3d.bat"), "gzsen3d gzsen3d.inp\r\n");
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "run_gzinv3d.bat"));
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "run_magerror.bat"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "w.dat"));
}

TEST(WriteRunFiles, MissingDirectoryThrowsNamingTheFile) {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
    RunContext context;
    context.run_directory = dir.path() / "absent";
    EXPECT_THROW(write_run_files(session, context), std::runtime_error);
}

}  // namespace
}  // namespace invsetup
