// tests/cli/definition_commands_test.cpp - `invsetup show` and `invsetup upgrade` as a user runs them.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>

#include "test_support.h"

namespace {

using namespace invsetup::testing;

std::filesystem::path example_definition() {
    return example_folder("magnetic") / "inversion.inp";
}

TEST(ShowCommand, PrintsEveryTabWithTheFormValues) {
    CliRun run = run_cli("show " + quoted(example_definition()));
    EXPECT_EQ(run.exit_code, 0);
    for (const char* heading : {"== Parameters ==", "== Observed Data ==", "== Topo Data ==", "== Mesh ==",
                                "== Create Inversion =="})
        EXPECT_NE(run.out.find(heading), std::string::npos) << heading;
    EXPECT_NE(run.out.find("Combo_inversion_method = 3: UBC Magnetic V5\n"), std::string::npos);
    EXPECT_NE(run.out.find("Text_data_locations(0) = mag_data.csv"), std::string::npos);
    EXPECT_EQ(run.out.find("Command_"), std::string::npos);  // buttons hold no value
}

TEST(ShowCommand, UnreadableFileFailsWithStatusOne) {
    TempDir dir;
    EXPECT_EQ(run_cli("show " + quoted(dir.path() / "absent.inp")).exit_code, 1);
    write_file_bytes(dir.path() / "empty.inp", "\r\n");
    EXPECT_EQ(run_cli("show " + quoted(dir.path() / "empty.inp")).exit_code, 1);
}

TEST(ShowCommand, UsageErrorsGiveStatusTwo) {
    EXPECT_EQ(run_cli("show").exit_code, 2);
    EXPECT_EQ(run_cli("show " + quoted(example_definition()) + " --group 7").exit_code, 2);
}

TEST(UpgradeCommand, OlderFileBecomesItsVersionThreeTwin) {
    TempDir dir;
    std::filesystem::path upgraded = dir.path() / "upgraded.inp";
    ASSERT_EQ(run_cli("upgrade " + quoted(test_data("definition/legacy_v1.inp")) + " " + quoted(upgraded)).exit_code, 0);
    // Every field the old file says, in the current layout: the hand-written twin to the byte.
    EXPECT_EQ(read_file_bytes(upgraded), read_file_bytes(test_data("definition/twin_v3.inp")));
}

TEST(UpgradeCommand, CurrentFileKeepsItsBytes) {
    TempDir dir;
    std::filesystem::path copy = dir.path() / "copy.inp";
    ASSERT_EQ(run_cli("upgrade " + quoted(example_definition()) + " " + quoted(copy)).exit_code, 0);
    EXPECT_EQ(read_file_bytes(copy), read_file_bytes(example_definition()));
}

TEST(UpgradeCommand, MissingInputFailsAndWritesNothing) {
    TempDir dir;
    EXPECT_EQ(run_cli("upgrade " + quoted(dir.path() / "absent.inp") + " " + quoted(dir.path() / "new.inp")).exit_code, 1);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "new.inp"));
}

}  // namespace
