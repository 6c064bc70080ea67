// apps/cli/mesh_command.cpp - mesh: the mesh a definition gives, plain or refined inside an existing
// mesh, printed as a summary and optionally written as a UBC mesh file.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands/commands.h"
#include "form/form_load.h"
#include "form/mesh_tab.h"
#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/mesh_file_write.h"
#include "session.h"
#include "support/dialogue.h"
#include "support/numbers.h"

namespace invsetup::cli {

namespace {

void print_axis(std::ostream& out, const char* axis, double low, double high, int first, int last) {
    out << axis << ": " << general_number_text(low) << " to " << general_number_text(high) << ", core nodes " << first
        << " to " << last << '\n';
}

void print_summary(const Session& session, std::ostream& out) {
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    out << "Cells: " << mesh.nx << " x " << mesh.ny << " x " << mesh.nz << " = "
        << static_cast<long long>(mesh.nx) * mesh.ny * mesh.nz << '\n';
    out << "Cells without padding: " << d.mesh_cell_count[0] << " x " << d.mesh_cell_count[1] << " x "
        << d.mesh_cell_count[2] + d.mesh_cell_count[3] << '\n';
    print_axis(out, "X", mesh.x_nodes[1], mesh.x_nodes[mesh.nx + 1], mesh.core_x_first, mesh.core_x_last);
    print_axis(out, "Y", mesh.y_nodes[1], mesh.y_nodes[mesh.ny + 1], mesh.core_y_first, mesh.core_y_last);
    print_axis(out, "Z", mesh.z_nodes[mesh.nz + 1], mesh.z_nodes[1], mesh.core_z_first, mesh.core_z_last);
    if (d.refinement_mode == 0) return;
    out << "Fine cells: X " << mesh.fine_x_first << " to " << mesh.fine_x_last << ", Y " << mesh.fine_y_first << " to "
        << mesh.fine_y_last << '\n';
    out << "Tiles: " << d.number_of_x_tiles << " x " << d.number_of_y_tiles << '\n';
    const TileTable& tiles = session.tiles;
    for (int i = 1; i <= d.number_of_x_tiles; ++i)
        out << "X tile " << i << ": " << tiles.tile_x_limits(i, 1) << ' ' << tiles.tile_x_limits(i, 2) << ' '
            << tiles.tile_x_limits(i, 3) << ' ' << tiles.tile_x_limits(i, 4) << '\n';
    for (int j = 1; j <= d.number_of_y_tiles; ++j)
        out << "Y tile " << j << ": " << tiles.tile_y_limits(j, 1) << ' ' << tiles.tile_y_limits(j, 2) << ' '
            << tiles.tile_y_limits(j, 3) << ' ' << tiles.tile_y_limits(j, 4) << '\n';
}

int compute_mesh(const std::string& definition, const std::string& existing, const std::string& output) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    if (!read_definition(session, dialogue, definition)) return 1;

    session.definition.refinement_mode = 0;
    if (!existing.empty()) {
        if (read_mesh_file(session, std::filesystem::absolute(existing).string()) != 0) {
            if (dialogue.messages.empty()) std::cerr << "invsetup: " << existing << " is not a mesh this program reads\n";
            return 1;
        }
        session.definition.refinement_mode = 1;
        // The tile counts are computed; an empty box would stop the unload without a word.
        for (const char* name : {"Text_number_x_tiles", "Text_number_y_tiles"})
            if (session.form.text(name).empty()) session.form.set_text(name, "1");
    }
    const std::size_t messages_before = dialogue.messages.size();
    // As the mesh tab's last Update button: every row, then the mesh. In refinement mode the unload
    // has computed the mesh and its tiles already.
    if (unload_mesh_from_form(session, -1, 0) != 0 ||
        (session.definition.refinement_mode == 0 && determine_inversion_mesh(session) != 0)) {
        if (dialogue.messages.size() == messages_before) std::cerr << "invsetup: the mesh definition has no cells\n";
        return 1;
    }
    print_summary(session, std::cout);
    if (!output.empty()) {
        try {
            write_mesh_file(std::filesystem::absolute(output), session.mesh, whole_mesh_request(session.mesh));
        } catch (const std::exception& fault) {
            std::cerr << "invsetup: " << fault.what() << '\n';
            return 1;
        }
    }
    return 0;
}

}  // namespace

void register_mesh_command(CLI::App& app, int& exit_code) {
    auto definition = std::make_shared<std::string>();
    auto existing = std::make_shared<std::string>();
    auto output = std::make_shared<std::string>();
    CLI::App* mesh = app.add_subcommand("mesh", "Compute the mesh of a definition, optionally refined inside an existing mesh");
    mesh->add_option("DEFINITION", *definition, "The definition file (.inp), any version")->required();
    mesh->add_option("--mesh", *existing, "An existing mesh file: refine inside it and lay out the tiles");
    mesh->add_option("-o,--output", *output, "Write the mesh as a UBC mesh file");
    mesh->callback([&exit_code, definition, existing, output] { exit_code = compute_mesh(*definition, *existing, *output); });
}

}  // namespace invsetup::cli
