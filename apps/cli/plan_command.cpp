// apps/cli/plan_command.cpp - plan: the tiling layout view as a PNG picture, drawn from the same line
// list a window paints, over the picture of the observed data.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands/create_commands.h"
#include "commands/refinement_commands.h"
#include "commands/tiling_plan.h"
#include "session.h"
#include "support/dialogue.h"

namespace invsetup::cli {

namespace {

struct PlanOptions {
    std::string definition;
    std::string mesh;
    std::vector<std::string> skip_tiles;
    std::string output;
    int width = 1000;
    int height = 800;
};

int draw_plan(const PlanOptions& options) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    if (!options.mesh.empty()) {
        session.working_directory = std::filesystem::absolute(options.definition).parent_path();
        dialogue.file_answers.push_back(std::filesystem::absolute(options.mesh).string());
        const std::size_t before = dialogue.messages.size();
        if (read_inversion_mesh_command(session) != 0) {
            if (dialogue.messages.size() == before)
                std::cerr << "invsetup: " << options.mesh << " is not a mesh this program reads\n";
            return 1;
        }
    }
    if (!read_definition(session, dialogue, options.definition)) return 1;
    if (!options.skip_tiles.empty() && session.definition.refinement_mode != 1) {
        std::cerr << "invsetup: --skip-tile needs a refinement layout (--mesh)\n";
        return 1;
    }
    if (display_tiling_layout(session, 0) < 0) return 1;
    session.tiling_view.tile_choice = session.definition.refinement_mode == 1;
    if (!skip_tiles(session, options.skip_tiles)) return 1;

    const RgbaImage image = tiling_layout_picture(session, options.width, options.height);
    if (write_png(image, std::filesystem::absolute(options.output)) != 0) {
        std::cerr << "invsetup: the picture could not be written to " << options.output << '\n';
        return 1;
    }
    const InversionDefinition& d = session.definition;
    std::cout << "Lines: " << session.tiling_view.lines.size() << '\n';
    if (d.refinement_mode == 1) std::cout << "Tiles: " << d.number_of_x_tiles << " x " << d.number_of_y_tiles << '\n';
    std::cout << "Picture: " << options.output << " (" << options.width << " x " << options.height << ")\n";
    return 0;
}

}  // namespace

void register_plan_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<PlanOptions>();
    CLI::App* plan = app.add_subcommand(
        "plan", "Draw the tiling layout: mesh outline, core, tile limits and switched-off tiles over the data");
    plan->add_option("DEFINITION", options->definition, "The definition file (.inp), any version")->required();
    plan->add_option("--mesh", options->mesh, "An existing inversion mesh: the layout of a refinement run inside it");
    plan->add_option("--skip-tile", options->skip_tiles, "Switch tile I,J off (x and y tile numbers from 1); repeatable")
        ->needs(plan->get_option("--mesh"));
    plan->add_option("-o,--output", options->output, "The PNG file to write")->required();
    plan->add_option("--width", options->width, "Picture width in pixels")->check(CLI::Range(100, 10000));
    plan->add_option("--height", options->height, "Picture height in pixels")->check(CLI::Range(100, 10000));
    plan->callback([&exit_code, options] { exit_code = draw_plan(*options); });
}

}  // namespace invsetup::cli
