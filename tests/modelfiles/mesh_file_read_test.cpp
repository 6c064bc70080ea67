// tests/modelfiles/mesh_file_read_test.cpp - mesh files of every accepted form, and a round trip.
#include "modelfiles/mesh_file_read.h"

#include <gtest/gtest.h>

#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_write.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

/// A dialogue whose option dialogue ticks the first row, or is cancelled.
class OptionDialogue : public HeadlessDialogue {
public:
    bool cancel = false;
    std::vector<std::string> titles;
    bool ask_options(const std::string& title, std::vector<OptionRow>& rows) override {
        titles.push_back(title);
        rows.at(0).checked = true;
        return !cancel;
    }
};

struct MeshRead : ::testing::Test {
    OptionDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
    const LoadedMesh& mesh = session.loaded_mesh;

    int read_text(const std::string& text) {
        const auto path = dir.path() / "test.msh";
        testing::write_file_bytes(path, text);
        return read_mesh_file(session, path.string());
    }
};

TEST_F(MeshRead, UbcLayoutWithRepeatsAndComment) {
    ASSERT_EQ(read_mesh_file(session, testing::test_data("mesh/ubc_layout.msh").string()), 0);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_TRUE(mesh.loaded);
    EXPECT_EQ(mesh.nx, 10);
    EXPECT_EQ(mesh.ny, 8);
    EXPECT_EQ(mesh.nz, 5);
    EXPECT_EQ(mesh.x_nodes[1], -350);
    EXPECT_EQ(mesh.dx[7], 50);  // "2* 50.00" reads as "2*50.00"
    EXPECT_EQ(mesh.dx[8], 50);
    EXPECT_EQ(mesh.x_nodes[11], 200);
    EXPECT_EQ(mesh.y_nodes[9], 150);
    EXPECT_EQ(mesh.z_nodes[1], 120);
    EXPECT_EQ(mesh.z_nodes[6], 20);
    EXPECT_EQ(mesh.z_nodes_up[1], 20);
    // 100 and 50 grow by more than 1.2 outward on the west; nothing east.
    EXPECT_EQ(mesh.pad_x_low, 2);
    EXPECT_EQ(mesh.pad_x_high, 0);
    EXPECT_EQ(mesh.core_dx, 25);
}

TEST_F(MeshRead, WrittenMeshReadsBackWithTheSameNodes) {
    InversionDefinition& d = session.definition;
    d.inversion_method = method_ubc_mag_v5;
    d.add_mesh_padding = 1;
    d.padding_multipliers = {"1,2,4", "", ""};
    d.mesh_min = {512345.5, 7012345.25, 200, 130};
    d.mesh_max = {513345.5, 7013345.25, 400, 0};
    d.mesh_cell_size = {25, 25, 12.5, 1.3};
    d.mesh_cell_count = {40, 40, 16, 4};
    ASSERT_EQ(build_inversion_mesh(session), 0);
    const InversionMesh& written = session.mesh;
    MeshFileRequest request = whole_mesh_request(written);
    request.write_extended = true;
    request.mesh_format = 3;
    request.has_topo = true;
    Array2<float> topo(written.nx + 1, written.ny + 1, 250.0f);
    topo(3, 4) = 251.25f;
    request.topo_grid = &topo;
    const auto path = dir.path() / "mesh";
    write_mesh_file(path, written, request);

    ASSERT_EQ(read_mesh_file(session, path.string()), 0);
    ASSERT_EQ(mesh.nx, written.nx);
    ASSERT_EQ(mesh.nz, written.nz);
    for (int i = 1; i <= written.nx + 1; ++i) EXPECT_NEAR(mesh.x_nodes[i], written.x_nodes[i], 1e-6) << i;
    for (int j = 1; j <= written.ny + 1; ++j) EXPECT_NEAR(mesh.y_nodes[j], written.y_nodes[j], 1e-6) << j;
    // Format 3 keeps its z origin at 0; the widths (to four decimals) come back.
    EXPECT_EQ(mesh.mesh_format, 3);
    EXPECT_EQ(mesh.z0, 0);
    for (int k = 1; k <= written.nz; ++k) EXPECT_NEAR(mesh.dz[k], written.dz[k], 5e-5) << k;
    EXPECT_TRUE(mesh.has_topo);
    EXPECT_EQ(mesh.topo_grid(3, 4), 251.25f);
    EXPECT_EQ(mesh.topo_max, 251.25f);
    EXPECT_EQ(mesh.surface_varies, 1);
    EXPECT_EQ(mesh.pad_x_low, 2);  // 100 and 50 grow by more than 1.2; the 25 next to the core does not
}

TEST_F(MeshRead, TrailerNumbersWithDecimalsAndFlatTopographyBecomesFormatZero) {
    ASSERT_EQ(read_text("2 1 2\n0 0 100\n2*10\n10\n2*5\nMesh format: 2.0\nNumber of air cells: 1.0\n"
                        "Topography (from lower-left by row)\n 80.00  80.00  80.00\n80.00  80.00  80.00\n"),
              0);
    EXPECT_EQ(mesh.air_cells, 1);
    EXPECT_EQ(mesh.earth_cells, 1);
    EXPECT_EQ(mesh.mesh_format, 0);
    EXPECT_FALSE(mesh.has_topo);
    EXPECT_EQ(mesh.z0, 80);
    EXPECT_EQ(mesh.z_nodes[3], 70);
}

TEST_F(MeshRead, RepeatRunningPastTheAxisIsCutBackSilently) {
    ASSERT_EQ(read_text("3 1 1\n0 0 0\n5*10\n10\n10\n"), 0);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_EQ(mesh.x_nodes[4], 30);
    EXPECT_EQ(mesh.dy[1], 10);
}

TEST_F(MeshRead, DamagedFilesAreRefusedWithTheirReasonBeforeAnythingIsTaken) {
    // "%F" stands for the file's path.
    const std::string layered = "Layered\nNumber of north\n1 1 1 0 0\nEarth\n10\nSea\nAir\nNodes\n";
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {"3 1 1\n0 0 0\na*10 10\n10\n10\n", "The x mesh cell multiple is invalid : a"},
        {"3 1 1\n0 0 0\n10 10 10\n2*0\n10\n", "The y mesh cell multiple is not positive : 2"},
        {"3 1 1\n0 0 0\n10 10 10\n10\n-4\n", "The z mesh value is not positive : -4"},
        {"1\n100 0 10\n1\n0 50 5\n", "The mesh line is invalid : 100 0 10"},
        {"title\nnot a mesh\n", "The format of the mesh file is invalid"},
        {layered + "0 0 1\n", "An error occurred while reading the mesh file"},
        {layered + "0 0 1\n10 0 1\n20 5 1\n30 5 1\n",
         "The node table of the mesh file holds 4 different x positions where the mesh has 2 x nodes"},
        {layered + "0 0 1\n10 0 1\n0 5 1\n10 7 1\n",
         "The node table of the mesh file holds 3 different y positions where the mesh has 2 y nodes"},
        {"1 1 2\n0 0 0\n10\n10\n5\n",
         "Bad z cell 2 0.00 in the mesh file %F: every z cell needs a width above 0 (is it a mesh file, or did it "
         "end early?)"},
        {"0 1 1\n0 0 0\n", "The number of cells in the mesh file is invalid"},
        {"1e10 1 1\n0 0 0\n", "The number of cells in the mesh file is invalid"},
        {"-5 1 1\n0 0 0\n", "The number of cells in the mesh file is invalid"},
        // Five lines can't describe a billion widths each way, and no machine holds the model.
        {"1000000000 1000 1000\n0 0 0\n1e9*10\n1000*10\n1000*10\n",
         "The mesh file %F has 1,000,000,000,000,000 cells, 4.0 PB for one model; the files can count at most "
         "2,147,483,647 cells."},
        // Without repeats every width is a word of its own: five short lines hold a few.
        {"1000000000 1 1\n0 0 0\n10\n10\n10\n",
         "The mesh file %F claims 1,000,000,000 x 1 x 1 cells, which take 1,000,000,002 values, but its 15 bytes can "
         "hold at most 8: the counts are wrong, or it is not a mesh file."},
        {"Layered\nNumber of north\n4000 4000 1 0 0\nEarth\n10\n",
         "The mesh file %F claims 4,000 x 4,000 x 1 cells, which take 48,024,004 values, but its 9 bytes can hold "
         "at most 5: the counts are wrong, or it is not a mesh file."},
        {"2000 2000 1\n0 0 0\n2000*10\n2000*10\n10\nTopography\n1 2 3\n",
         "The mesh file %F claims a topography of 2,001 x 2,001 nodes, but the 6 bytes after its heading can hold at "
         "most 3 values: the counts are wrong, or the file is damaged."},
        {"1 1 1\n0 0 0\n10\n10\n10\nMesh format: 1e20\n",
         "An error occurred while reading the mesh file : \nThe mesh file %F could not be read at its trailer: a "
         "number there is too large for a whole number (Overflow)."},
        {"2 1 1\n0 0 0\n10 1e309\n10\n10\n", "The x mesh value is too large : 1e309"},
        {"2 1 1\n0 0 0\n10 10\n2*1e309\n10\n", "The y mesh value is too large : 1e309"},
        {"2 1 1\n1e309 0 0\n10 10\n10\n10\n", "The mesh origin is too large : 1e309"},
        {"3 1 1\n0 0 0\n1e12*10\n10\n10\n", ""},  // a repeat past the axis is cut back
    };
    const std::string path = (dir.path() / "test.msh").string();
    for (const auto& c : cases) {
        dialogue.messages.clear();
        const int status = read_text(c.text);
        SCOPED_TRACE(c.text);
        std::string message = c.message;
        if (const auto at = message.find("%F"); at != std::string::npos) message.replace(at, 2, path);
        if (*c.message == 0) {
            EXPECT_EQ(status, 0);
            EXPECT_TRUE(dialogue.messages.empty());
            continue;
        }
        EXPECT_EQ(status, -1);
        ASSERT_EQ(dialogue.messages.size(), 1u);
        EXPECT_EQ(dialogue.messages[0], message);
        EXPECT_FALSE(mesh.loaded);
    }
}

TEST_F(MeshRead, NodeCoordinateForm) {
    ASSERT_EQ(read_text("number of grid nodes in x y z\n3, 2, 3\nx coordinates\n100.0, 110.0, 130.0\n"
                        "y coordinates\n50.0, 60.0\nz coordinates\n0.0, 10.0, 30.0\n"),
              0);
    EXPECT_EQ(mesh.nx, 2);
    EXPECT_EQ(mesh.ny, 1);
    EXPECT_EQ(mesh.nz, 2);
    EXPECT_EQ(mesh.x0, 100);
    EXPECT_EQ(mesh.dx[2], 20);
    EXPECT_EQ(mesh.dy[1], 10);
    // z adds each coordinate to the previous one as read: 10, then 10 + 30.
    EXPECT_EQ(mesh.dz[1], 10);
    EXPECT_EQ(mesh.dz[2], 40);
}

TEST_F(MeshRead, TwoAxisMesh) {
    ASSERT_EQ(read_text("2 ! x segments\n0 100 10\n300 4\n# z\n1\n0 50 5\n"), 0);
    EXPECT_EQ(mesh.nx, 14);
    EXPECT_EQ(mesh.ny, 3);
    EXPECT_EQ(mesh.nz, 5);
    EXPECT_EQ(mesh.x_nodes[15], 300);
    EXPECT_EQ(mesh.y0, -150);
    EXPECT_EQ(mesh.dy[2], 100);
    EXPECT_EQ(mesh.z_nodes[6], -50);
    EXPECT_EQ(mesh.mesh_format, 0);
}

TEST_F(MeshRead, LayeredMeshWithNodeTable) {
    std::string text = "Layered model\nNumber of north, east, earth, sea, air\n2 2 2 1 1\nEarth\n10 20\nSea\n5\nAir\n7\n"
                       "Nodes\n";
    for (double y : {15.0, 0.0, 5.0})
        for (double x : {30.0, 0.0, 10.0}) text += std::to_string(x) + " " + std::to_string(y) + " 2\n";
    ASSERT_EQ(read_text(text), 0);
    EXPECT_EQ(mesh.mesh_format, 1);
    EXPECT_EQ(mesh.nx, 2);
    EXPECT_EQ(mesh.nz, 4);
    EXPECT_EQ(mesh.x0, 0);
    EXPECT_EQ(mesh.dx[2], 20);
    EXPECT_EQ(mesh.dy[2], 10);
    EXPECT_EQ(mesh.dz[1], 7);
    EXPECT_EQ(mesh.dz[2], 5);
    EXPECT_EQ(mesh.dz[4], 20);
    // Nine depths of 2 summed and divided by nx * ny = 4: the ground is at -4.5.
    EXPECT_EQ(mesh.surface_level, -4.5f);
    EXPECT_EQ(mesh.z0, 7.5);
    EXPECT_EQ(mesh.topo_grid(3, 3), -2.0f);
    EXPECT_EQ(mesh.pad_z_low, 1);
}

TEST_F(MeshRead, TrapezoidTableCutShortIsRefused) {
    std::string text = testing::read_file_bytes(testing::test_data("mesh/trapezoid.msh"));
    text.resize(text.find("1004.00"));  // the last two of the twelve nodes are gone
    EXPECT_EQ(read_text(text), -1);
    EXPECT_EQ(dialogue.messages,
              std::vector<std::string>{"The trapezoid node table of the mesh file ends after 10 of its 12 nodes"});
}

TEST_F(MeshRead, InversionFileShowsTheOptionsThenHasNoCells) {
    EXPECT_EQ(read_text("12 34\n11, 9\n1.0, 1.0\n"), -1);
    EXPECT_EQ(dialogue.titles, std::vector<std::string>{"ResInv3D coordinate Option"});
    ASSERT_EQ(dialogue.messages.size(), 1u);
    EXPECT_EQ(dialogue.messages[0].substr(0, 35), "Bad x cell 1 0.00 in the mesh file ");
    EXPECT_EQ(mesh.ny, 10);  // swapped by the option: 11 - 1
    EXPECT_FALSE(mesh.loaded);
}

TEST_F(MeshRead, CancelledInversionOptionsFailTheRead) {
    dialogue.cancel = true;
    EXPECT_EQ(read_text("title\n11 9\nNonuniform grid\n"), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{"The inversion input has been cancelled"});
}

TEST_F(MeshRead, VoxetAndVtkAreTurnedAwaySilently) {
    EXPECT_EQ(read_text("GOCAD Voxet 1\nHEADER {\n"), -2);
    EXPECT_EQ(read_text("# vtk DataFile Version 3.0\n"), -2);
    EXPECT_TRUE(dialogue.messages.empty());
    EXPECT_FALSE(mesh.loaded);
}

TEST_F(MeshRead, FilesThatCantBeReadAreReportedByTheTrap) {
    // A folder or a device is refused before it is opened: /dev/zero would be read forever.
    const struct {
        std::string path;
        std::string reason;
    } cases[] = {{(dir.path() / "none.msh").string(), "could not be opened."},
                 {dir.path().string(), "is a folder, not a file that can be read."},
                 {"/dev/zero", "is a device, not a file that can be read."}};
    for (const auto& c : cases) {
        dialogue.messages.clear();
        EXPECT_EQ(read_mesh_file(session, c.path), -1);
        ASSERT_EQ(dialogue.messages.size(), 1u);
        EXPECT_EQ(dialogue.messages[0].rfind("An error occurred while reading the mesh file : \n", 0), 0u);
        EXPECT_NE(dialogue.messages[0].find(c.reason), std::string::npos) << dialogue.messages[0];
    }
}

}  // namespace
}  // namespace invsetup
