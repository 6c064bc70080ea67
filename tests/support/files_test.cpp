// tests/support/files_test.cpp - path texts, directories and finding files that moved.
#include "support/files.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <exception>
#include <ios>
#include <new>
#include <stdexcept>

#include "support/dialogue.h"
#include "test_support.h"

using namespace invsetup;
using invsetup::testing::TempDir;
using invsetup::testing::write_file_bytes;

TEST(PathTexts, EitherSeparatorCuts) {
    EXPECT_EQ(file_name_only("C:\\runs\\a/mesh.msh"), "mesh.msh");
    EXPECT_EQ(file_name_only("mesh.msh"), "mesh.msh");
    EXPECT_EQ(file_extension("C:\\v1.2\\model"), "");
    EXPECT_EQ(file_extension("/data/obs.grav.dat"), "dat");
    EXPECT_EQ(directory_of("C:\\runs\\a/mesh.msh"), "C:\\runs\\a");
    EXPECT_EQ(directory_of("mesh.msh"), "");
    EXPECT_EQ(windows_path("run/tile_1/mesh.msh"), "run\\tile_1\\mesh.msh");
}

TEST(RelativePath, StepsOutWithDotDotAndBackSlashes) {
    EXPECT_EQ(relative_path("C:\\runs\\job1", "C:\\runs\\job1\\tiles\\t1.msh"), "tiles\\t1.msh");
    EXPECT_EQ(relative_path("C:\\runs\\job1\\", "C:\\runs\\mesh\\big.msh"), "..\\mesh\\big.msh");
    EXPECT_EQ(relative_path("C:\\runs\\job1\\tile_1_1", "c:\\RUNS\\model.den"), "..\\..\\model.den");
    EXPECT_EQ(relative_path("/home/geo/run", "/home/geo/data/mag.obs"), "..\\data\\mag.obs");
}

TEST(RelativePath, DifferentStartKeepsTheTarget) {
    EXPECT_EQ(relative_path("C:\\runs", "D:\\data\\mag.obs"), "D:\\data\\mag.obs");
    EXPECT_EQ(relative_path("C:\\runs", "mag.obs"), "mag.obs");
    // From the root, the first folders are compared whole.
    EXPECT_EQ(relative_path("/data1/run/tile0101/", "/data2/coarse.msh"), "/data2/coarse.msh");
    EXPECT_EQ(relative_path("/Data/run/tile0101/", "/data/coarse.msh"), "..\\..\\coarse.msh");
}

TEST(Directories, MakeWithParentsFromEitherSeparator) {
    TempDir dir;
    const std::string deep = dir.path().string() + "\\run 1/tiles\\t_1_1";
    EXPECT_FALSE(directory_exists(deep));
    make_directory_path(deep);
    EXPECT_TRUE(directory_exists(deep));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "run 1" / "tiles" / "t_1_1"));
    make_directory_path(deep);  // existing is fine
    EXPECT_EQ(find_file(deep), deep);
    EXPECT_EQ(find_file(deep + "\\nothing.txt"), "");
}

TEST(Directories, FailureNamesThePath) {
    TempDir dir;
    const std::string blocked = (dir.path() / "file.txt").string();
    write_file_bytes(blocked, "x");
    try {
        make_directory_path(blocked + "/sub");
        FAIL() << "made a directory below a file";
    } catch (const std::runtime_error& fault) {
        EXPECT_NE(std::string(fault.what()).find(blocked + "/sub"), std::string::npos) << fault.what();
    }
}

class LocateFile : public ::testing::Test {
protected:
    HeadlessDialogue dialogue;
    FileSearchMemory memory;
    TempDir dir;
    std::string root() const { return dir.path().string(); }
    void make_file(const std::string& relative) {
        const auto path = native_path(root() + "/" + relative);
        std::filesystem::create_directories(path.parent_path());
        write_file_bytes(path, "1\n");
    }
};

TEST_F(LocateFile, FindsTheNameInTheWorkingDirectory) {
    make_file("mag.obs");
    std::string name = "D:\\old\\mag.obs";
    EXPECT_EQ(locate_file(dialogue, memory, root(), "Observed data file", name, ""), 0);
    EXPECT_EQ(name, root() + "/mag.obs");
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(LocateFile, AddsTheOriginalsLastFoldersToTheGivenDirectory) {
    make_file("moved/proj/data/mag.obs");
    std::string name = "D:\\old\\proj\\data\\mag.obs";
    EXPECT_EQ(locate_file(dialogue, memory, root() + "/elsewhere", "", name, root() + "/moved"), 0);
    EXPECT_EQ(name, root() + "/moved/proj\\data\\mag.obs");
    EXPECT_TRUE(find_file(name) == name);
}

TEST_F(LocateFile, AsksThenAppliesTheSameMoveToTheNextFile) {
    make_file("new/proj/data/mag.obs");
    make_file("new/proj/topo/topo.dat");
    std::string name = "D:\\old\\proj\\data\\mag.obs";
    const std::string chosen = root() + "/new/proj/data/mag.obs";
    dialogue.file_answers.push_back(chosen);
    EXPECT_EQ(locate_file(dialogue, memory, root(), "Observed data file", name, ""), 0);
    EXPECT_EQ(name, chosen);
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0], "Could not find Observed data file please specify its location");
    ASSERT_EQ(dialogue.file_requests.size(), 1u);
    EXPECT_EQ(dialogue.file_requests[0].filter, "Data files (*.obs)|*.obs|All files (*.*)|*.*");

    std::string topo = "D:\\old\\proj\\topo\\topo.dat";
    EXPECT_EQ(locate_file(dialogue, memory, root(), "Topo file", topo, ""), 0);
    EXPECT_EQ(topo, root() + "/new\\proj\\topo\\topo.dat");
    EXPECT_EQ(dialogue.file_requests.size(), 1u);  // not asked again
}

TEST_F(LocateFile, CancelThenYesGivesUpAndNoGoesOn) {
    std::string name = "D:\\old\\model";
    EXPECT_LT(locate_file(dialogue, memory, root(), "", name, ""), 0);
    EXPECT_EQ(dialogue.messages.at(0), "Could not find model please specify its location");
    EXPECT_EQ(dialogue.file_requests.at(0).filter, "All files (*.*)|*.*");
    EXPECT_EQ(dialogue.questions.at(0), "Cancel reading rest of specification file?");
    dialogue.answer_yes = false;
    EXPECT_EQ(locate_file(dialogue, memory, root(), "", name, ""), 1);
    EXPECT_EQ(name, "D:\\old\\model");
}

TEST(ReadFaults, LibraryTextsAreWrappedInASentenceNamingTheFileAndThePart) {
    const std::string head = "The mesh file a.msh could not be read at its trailer: ";
    const struct {
        std::exception_ptr fault;
        std::string text;
    } cases[] = {
        {std::make_exception_ptr(std::overflow_error("Overflow")),
         head + "a number there is too large for a whole number (Overflow)."},
        {std::make_exception_ptr(std::out_of_range("index (12, 1) outside (1..11, 1..11)")),
         head + "a count or a position there does not match the table it fills (index (12, 1) outside (1..11, 1..11))."},
        {std::make_exception_ptr(std::ios_base::failure("basic_filebuf::underflow error reading the file: Is a directory")),
         head + "the system could not read it (basic_filebuf::underflow error reading the file: Is a directory: "},
        {std::make_exception_ptr(std::bad_alloc()), head + "there is not enough memory for what it describes ("},
        {std::make_exception_ptr(std::runtime_error("")), head + "an unforeseen fault stopped the reading."},
        // A sentence of ours is kept as it is.
        {std::make_exception_ptr(std::runtime_error("The mesh file a.msh is a folder, not a file that can be read.")),
         "The mesh file a.msh is a folder, not a file that can be read."},
    };
    for (const auto& c : cases) {
        try {
            std::rethrow_exception(c.fault);
        } catch (const std::exception& fault) {
            EXPECT_EQ(read_fault_text("mesh file", "a.msh", "trailer", fault).substr(0, c.text.size()), c.text);
        }
    }
}

TEST(RegularFiles, OnlyARegularFileOrANameNotThereIsReadable) {
    TempDir dir;
    write_file_bytes(dir.path() / "a.inp", "x");
    const std::filesystem::path pipe = dir.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const struct {
        std::filesystem::path path;
        const char* reason;
    } cases[] = {{dir.path() / "a.inp", ""}, {dir.path() / "none.inp", ""}, {dir.path(), "is a folder"},
                 {pipe, "is a pipe"}, {"/dev/zero", "is a device"}};
    for (const auto& c : cases) EXPECT_EQ(not_a_regular_file(c.path), c.reason) << c.path;
    EXPECT_NO_THROW(require_regular_file(dir.path() / "a.inp", "mesh file"));
    try {
        require_regular_file(pipe, "mesh file");
        ADD_FAILURE() << "a pipe was accepted";
    } catch (const std::runtime_error& fault) {
        EXPECT_EQ(std::string(fault.what()), "The mesh file " + pipe.string() + " is a pipe, not a file that can be read.");
    }
}
