// bench/bench_refine_run.cpp - a whole refinement run of 100 tiles: a 40 x 50 x 60 mesh of 100 m cells
// refined to 10 m (5 m deep) over 2 x 2.5 km, about 9,000,000 cells, with 100,000 readings (UBC MAG3D
// V4, no topography). The coarse mesh, its binary model and the readings are generated first (not
// timed); then the mesh and model are read, the definition checked and the package written, as
// `invsetup create --mesh --model` does it. Each stage line is printed with the seconds since the start.
//   bench_refine_run [READINGS] [DIRECTORY]
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "commands/commands.h"
#include "commands/create_commands.h"
#include "commands/refinement_commands.h"
#include "definition/parameter_file.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"
#include "stage_clock.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;

struct Sequence {
    std::uint64_t state = 88172645463325252ULL;
    double next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<double>(state >> 11) / 9007199254740992.0;
    }
};

void write_inputs(const fs::path& folder, int readings) {
    {
        std::FILE* out = std::fopen((folder / "coarse.msh").c_str(), "wb");
        std::fprintf(out, "40 50 60\r\n0 0 0\r\n40*100\r\n50*100\r\n60*50\r\n");
        std::fclose(out);
    }
    {
        std::FILE* out = std::fopen((folder / "coarse.sus").c_str(), "wb");
        std::fwrite("UBC\x01", 1, 4, out);
        for (int n = 0; n < 40 * 50 * 60; ++n) {
            const float value = 0.001f * static_cast<float>(n % 97);
            std::fwrite(&value, sizeof value, 1, out);
        }
        std::fclose(out);
    }
    {
        Sequence random;
        std::FILE* out = std::fopen((folder / "obs.csv").c_str(), "wb");
        std::fprintf(out, "x,y,z,tmi\r\n");
        for (int n = 0; n < readings; ++n)
            std::fprintf(out, "%.1f,%.1f,10,%.2f\r\n", 1000 + random.next() * 2000, 1000 + random.next() * 2500,
                         random.next() * 100);
        std::fclose(out);
    }
    // A 200 x 250 x 100 mesh of 10 m by 5 m cells, no topography, refined in tiles of 40 x 45 cells.
    invsetup::InversionFields d = invsetup::testing::small_survey({1000, 1000, -500}, {3000, 3500, 0}, {10, 10, 5});
    d.inversion_method = invsetup::method_ubc_mag_v4;
    d.refinement_mode = 1;
    d.use_expanded_mesh = 0;
    d.x_tile_size = 40;
    d.y_tile_size = 45;
    d.tile_overlap = 10;
    d.tile_xy_blend = 5;
    d.tile_z_blend = 5;
    d.data_file_names[1] = "";
    d.topo_type = 1;
    d.topo_shift_option = 1;
    d.mag_inclination = -62.5f;
    d.mag_declination = 8.25f;
    d.mag_intensity = 57650;
    invsetup::save_inversion_parameters(d, "bench_refine_run survey", folder / "refine.inp");
}

}  // namespace

int main(int argc, char** argv) {
    const int readings = argc > 1 ? std::stoi(argv[1]) : 100000;
    const fs::path folder = (argc > 2 ? fs::path(argv[2]) : fs::temp_directory_path()) / "invsetup_bench_refine_run";
    fs::remove_all(folder);
    fs::create_directories(folder);
    write_inputs(folder, readings);

    invsetup::HeadlessDialogue dialogue;
    invsetup::Session session(dialogue);
    const StageClock stage_clock(session.form);
    session.working_directory = folder;
    invsetup::initialise_inversion_form(session);
    dialogue.file_answers.push_back((folder / "coarse.msh").string());
    int status = invsetup::read_inversion_mesh_command(session);
    dialogue.file_answers.push_back((folder / "coarse.sus").string());
    if (status == 0) status = invsetup::read_inversion_model_command(session);
    dialogue.file_answers.push_back((folder / "refine.inp").string());
    if (status == 0) status = invsetup::read_command(session, 0);
    session.form.set_text("Drive1", "/");
    session.form.set_text("Dir1", folder.string());
    session.form.set_text("Text_directory_name", "run");
    const auto read_done = std::chrono::steady_clock::now();
    if (status == 0) status = invsetup::create_command(session, 0);
    if (status == 2) status = invsetup::continue_tile_command(session);
    const double wall = stage_clock.seconds();

    std::cout << stage_clock.stages();
    for (const std::string& message : dialogue.messages) std::cout << "message: " << message << '\n';
    std::cout << "mesh and model read: " << std::chrono::duration<double>(read_done - stage_clock.start).count() << " s\n";
    std::cout << "tiles: " << session.definition.number_of_x_tiles << " x " << session.definition.number_of_y_tiles
              << ", status " << status << ", whole run " << wall << " s\n";
    std::uintmax_t bytes = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "run"))
        if (entry.is_regular_file()) bytes += entry.file_size();
    std::cout << "package: " << bytes / 1000000 << " MB\n";
    fs::remove_all(folder);
    return status < 0 ? 1 : 0;
}
