// tests/modelfiles/vtk_export_test.cpp - the ParaView files of a small package (3 x 2 x 2 cells, a
// surface that puts some cells in the air, three readings, two tiles of which one is skipped), read
// back with VTK's own readers (python3-vtk9) and compared with the values worked out by hand; the
// files of a package that are wrong.
#include "modelfiles/vtk_export.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "session.h"
#include "support/dialogue.h"
#include "test_support.h"

namespace invsetup {
namespace {

namespace fs = std::filesystem;
using testing::output_of;
using testing::read_file_bytes;
using testing::TempDir;
using testing::test_data;
using testing::write_file_bytes;

/// A Python that has VTK, or "" (the Debian python3 comes first: another on PATH may lack it).
std::string python_with_vtk() {
    for (const char* python : {"/usr/bin/python3", "python3"})
        if (std::system((std::string(python) + " -c 'import vtk' >/dev/null 2>&1").c_str()) == 0) return python;
    return "";
}

class VtkExport : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    Session session{dialogue};
    TempDir dir;
    fs::path run = dir.path() / "run";

    void SetUp() override { fs::copy(test_data("vtk/run"), run, fs::copy_options::recursive); }
};

// model.sus runs z fastest from the top; the grid's cells run x fastest from the bottom. Top cells
// are air where the column's mean surface lies below 100 m, the lower ones where it lies below 60 m.
TEST_F(VtkExport, VtkReadsBackTheValuesOfThePackage) {
    fs::create_directory(run / "old.sus");  // named like a model, but a folder
    VtkExportSummary summary;
    ASSERT_EQ(export_run_to_vtk(session, run, dir.path() / "out", summary), 0) << dialogue.messages.back();
    EXPECT_EQ(summary.skipped,
              (std::vector<std::string>{"old.sus: not a regular file", "ref.den: 2 values for 12 cells"}));
    EXPECT_EQ(summary.written.size(), 5u);
    const std::string python = python_with_vtk();
    if (python.empty()) GTEST_SKIP() << "python3-vtk9 is not installed: the files were written but not read back";
    EXPECT_EQ(output_of(python + " " + testing::quoted(test_data("vtk/dump_vtk.py")) + " " +
                        testing::quoted(dir.path() / "out")),
              read_file_bytes(test_data("vtk/run_dump.txt")));
}

TEST_F(VtkExport, WrongFilesAreNamedInTheMessage) {
    const struct {
        const char* file;
        const char* text;
        const char* message;
    } cases[] = {
        {"model.sus", " 1.0\r\n 2.O\r\n", "model.sus line 2 is not a number: 2.O"},
        {"mag.obs", "70 -10 50000\r\n70 -10 1\r\n 2\r\n 1 2 3 4 5\r\n", "mag.obs says 2 readings and holds 1"},
        {"mag.obs", "70 -10 50000\r\n 1\r\n 1 2 x 4 5\r\n", "mag.obs line 3 is not a reading (x y z value error)"},
        {"topo.dat", "12\r\n1000 2000 eighty\r\n", "topo.dat line 2 is not numbers"},
        {"tile0101.bat", "cd tile0101\r\n", "tile0101.bat does not start with its coordinate boundaries"},
        // Values that aren't finite would reach ParaView as Inf and NaN.
        {"model.sus", " 1.0\r\n nan\r\n", "model.sus line 2: the value is not a finite number a single real holds"},
        {"model.sus", " 1.0\r\n 1e39\r\n", "model.sus line 2: the value is not a finite number a single real holds"},
        {"mag.obs", "70 -10 50000\r\n 1\r\n 1 2 inf 4 5\r\n", "mag.obs line 3 is not a reading (x y z value error)"},
        // A folder where a file belongs is named, not read.
        {"topo.dat", nullptr, "The run file " },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        fs::remove_all(run);
        fs::copy(test_data("vtk/run"), run, fs::copy_options::recursive);
        if (c.text) {
            write_file_bytes(run / c.file, c.text);
        } else {
            fs::remove(run / c.file);
            fs::create_directory(run / c.file);
        }
        VtkExportSummary summary;
        EXPECT_EQ(export_run_to_vtk(session, run, dir.path() / "out", summary), -1);
        EXPECT_NE(dialogue.messages.back().find(c.message), std::string::npos) << dialogue.messages.back();
    }
    fs::remove(run / "mesh");
    VtkExportSummary summary;
    EXPECT_EQ(export_run_to_vtk(session, run, dir.path() / "out", summary), -1);
    EXPECT_EQ(dialogue.messages.back(), "The run directory " + run.string() + " holds no mesh file (mesh)");
}

}  // namespace
}  // namespace invsetup
