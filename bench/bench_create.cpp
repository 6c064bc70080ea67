// bench/bench_create.cpp - `invsetup create` end to end on a large survey: 1,000,000 magnetic
// readings on flight lines, 1,000,000 scattered topography points and a 200 x 200 x 50 mesh of 25 m
// cells (UBC MAG3D V5). The data are generated first (not timed); then the definition is read, checked
// and the whole run package written, as the command line does it.
//   bench_create [READINGS] [TOPO_POINTS] [DIRECTORY]
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <string>

#include "definition/parameter_file.h"
#include "commands/commands.h"
#include "commands/create_commands.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"
#include "stage_clock.h"
#include "test_support.h"

namespace {

namespace fs = std::filesystem;

double hills(double x, double y) {
    return 400 + 40 * std::sin(x / 900.0) * std::cos(y / 700.0) + 15 * std::sin((x + y) / 310.0);
}

/// A fixed sequence in 0..1, the same on every machine.
struct Sequence {
    std::uint64_t state = 88172645463325252ULL;
    double next() {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        return static_cast<double>(state >> 11) / 9007199254740992.0;
    }
};

void write_survey(const fs::path& folder, int readings, int topo_points) {
    const double x0 = 500000, y0 = 6200000, side = 5000;
    Sequence random;
    {
        std::FILE* out = std::fopen((folder / "obs.csv").c_str(), "wb");
        std::fprintf(out, "x,y,z,tmi\r\n");
        const int lines = 250;  // 20 m apart
        const int per_line = (readings + lines - 1) / lines;
        int written = 0;
        for (int line = 0; line < lines && written < readings; ++line)
            for (int n = 0; n < per_line && written < readings; ++n, ++written) {
                const double x = x0 + (n + 0.5) * side / per_line;
                const double y = y0 + (line + 0.5) * side / lines + (random.next() - 0.5) * 4;
                const double z = hills(x, y) + 60;
                const double r2 = (x - x0 - 2500) * (x - x0 - 2500) + (y - y0 - 2400) * (y - y0 - 2400) + 300.0 * 300.0;
                std::fprintf(out, "%.1f,%.1f,%.1f,%.2f\r\n", x, y, z, 2e9 / (r2 * std::sqrt(r2)) + random.next());
            }
        std::fclose(out);
    }
    {
        std::FILE* out = std::fopen((folder / "topo.csv").c_str(), "wb");
        std::fprintf(out, "x,y,z\r\n");
        for (int n = 0; n < topo_points; ++n) {
            const double x = x0 - 25 + random.next() * (side + 50), y = y0 - 25 + random.next() * (side + 50);
            std::fprintf(out, "%.2f,%.2f,%.2f\r\n", x, y, hills(x, y));
        }
        std::fclose(out);
    }
    // A 200 x 200 x 50 mesh of 25 m by 10 m cells; the surface shifted down to the nearest node.
    invsetup::InversionFields d = invsetup::testing::small_survey({x0, y0, 0}, {x0 + side, y0 + side, 500}, {25, 25, 10});
    d.topo_shift_option = 1;
    d.mag_inclination = -62.5f;
    d.mag_declination = 8.25f;
    d.mag_intensity = 57650;
    invsetup::save_inversion_parameters(d, "bench_create survey", folder / "survey.inp");
}

}  // namespace

int main(int argc, char** argv) {
    const int readings = argc > 1 ? std::stoi(argv[1]) : 1000000;
    const int topo_points = argc > 2 ? std::stoi(argv[2]) : 1000000;
    const fs::path folder = (argc > 3 ? fs::path(argv[3]) : fs::temp_directory_path()) / "invsetup_bench_create";
    fs::remove_all(folder);
    fs::create_directories(folder);
    write_survey(folder, readings, topo_points);
    std::printf("survey: %d readings (%.1f MB), %d topography points (%.1f MB)\n", readings,
                static_cast<double>(fs::file_size(folder / "obs.csv")) / 1e6, topo_points,
                static_cast<double>(fs::file_size(folder / "topo.csv")) / 1e6);

    const std::clock_t cpu_start = std::clock();
    invsetup::HeadlessDialogue dialogue;
    invsetup::Session session(dialogue);
    const StageClock stage_clock(session.form);
    session.working_directory = folder;
    invsetup::initialise_inversion_form(session);
    dialogue.file_answers.push_back((folder / "survey.inp").string());
    int status = invsetup::read_command(session, 0);
    session.form.set_text("Drive1", "/");
    session.form.set_text("Dir1", folder.string());
    session.form.set_text("Text_directory_name", "run");
    if (status == 0) status = invsetup::create_command(session, 0);
    const double wall = stage_clock.seconds();
    const double cpu = static_cast<double>(std::clock() - cpu_start) / CLOCKS_PER_SEC;

    std::cout << stage_clock.stages();
    for (const std::string& message : dialogue.messages) std::cout << "message: " << message << '\n';
    std::printf("create: %.2f s wall, %.2f s processor, status %d\n", wall, cpu, status);
    for (const char* name : {"mesh", "model.sus", "mag.obs", "topo.dat"})
        if (fs::exists(folder / "run" / name))
            std::printf("  %-10s %10.1f MB\n", name, static_cast<double>(fs::file_size(folder / "run" / name)) / 1e6);
    fs::remove_all(folder);
    return status == 0 ? 0 : 1;
}
