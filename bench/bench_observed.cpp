// bench/bench_observed.cpp - observed data from file to observation file: a generated survey of a
// million readings in a CSV file, read (counting and filling), conditioned and binned on a
// 200 x 200 x 50 mesh, then written as a million-line observation file.
// Usage: bench_observed [reading_count] [cells_per_side] [work_directory] [repeats]
#include <sys/resource.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <ctime>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "data/location_file.h"
#include "data/observation_file.h"
#include "data/observed_data.h"
#include "session.h"
#include "support/dialogue.h"
#include "support/lines.h"

namespace {

// The machine is shared: processor time of this process is the figure that means something; the
// wall time is shown beside it.
struct Timer {
    std::chrono::steady_clock::time_point wall = std::chrono::steady_clock::now();
    double cpu = cpu_seconds();

    static double cpu_seconds() {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + now.tv_nsec * 1e-9;
    }
};

std::ostream& operator<<(std::ostream& out, const Timer& start) {
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start.wall).count();
    return out << Timer::cpu_seconds() - start.cpu << " s processor, " << wall << " s wall";
}

double peak_megabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

// A fixed pseudo-random sequence, so that every run measures the same survey.
struct Generator {
    std::uint64_t state = 0x9E3779B97F4A7C15ull;
    double uniform() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) * (1.0 / 9007199254740992.0);
    }
};

void append_number(std::string& out, double value, int decimals) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
    out.append(text, end);
}

/// A survey flown in east-west lines over the mesh: "X,Y,Z,MAG,LINE", a header first.
/// Returns the file size in bytes.
std::uintmax_t write_survey(const std::filesystem::path& path, int readings, double x0, double y0, double span) {
    const int line_count = static_cast<int>(std::sqrt(static_cast<double>(readings)));
    const int per_line = (readings + line_count - 1) / line_count;
    Generator random;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) throw std::runtime_error("cannot create " + path.string());
    std::string block = "X,Y,Z,MAG,LINE\r\n";
    int written = 0;
    for (int line = 0; line < line_count && written < readings; ++line) {
        const double y = y0 + span * (line + 0.5) / line_count;
        for (int k = 0; k < per_line && written < readings; ++k, ++written) {
            const double x = x0 + span * (k + random.uniform()) / per_line;
            append_number(block, x, 2);
            block += ',';
            append_number(block, y + random.uniform() - 0.5, 2);
            block += ',';
            append_number(block, 1100 + 30 * random.uniform(), 2);
            block += ',';
            append_number(block, 200 * std::sin(x / 700) * std::cos(y / 900) + random.uniform(), 3);
            block += ",L";
            block += std::to_string(1000 + line * 10);
            block += "\r\n";
            if (block.size() > (1 << 20)) {
                std::fwrite(block.data(), 1, block.size(), file);
                block.clear();
            }
        }
    }
    std::fwrite(block.data(), 1, block.size(), file);
    std::fclose(file);
    return std::filesystem::file_size(path);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace invsetup;
    const int reading_count = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const int cells = argc > 2 ? std::atoi(argv[2]) : 200;
    const std::filesystem::path work =
        argc > 3 ? std::filesystem::path(argv[3]) : std::filesystem::temp_directory_path() / "bench_observed";
    std::filesystem::create_directories(work);
    const int repeats = argc > 4 ? std::atoi(argv[4]) : 5;
    const int layers = 50;
    const double cell = 25.0, x0 = 500000.0, y0 = 6200000.0;  // map coordinates, as surveys have them

    const auto survey = work / "survey.csv";
    const Timer generate_start;
    const std::uintmax_t bytes = write_survey(survey, reading_count, x0, y0, cell * cells);
    std::cout << "survey: " << reading_count << " readings, " << bytes / 1e6 << " MB, generated in "
              << generate_start << "\n";

    HeadlessDialogue dialogue;
    Session session(dialogue);
    InversionMesh& mesh = session.mesh;
    mesh.nx = mesh.ny = cells;
    mesh.nz = layers;
    mesh.size_arrays();
    for (int i = 1; i <= cells; ++i) mesh.dx[i] = mesh.dy[i] = cell;
    for (int k = 1; k <= layers; ++k) mesh.dz[k] = cell;
    mesh.x_nodes[1] = x0;
    mesh.y_nodes[1] = y0;
    mesh.z_nodes[1] = 1500;
    lay_nodes(mesh);

    InversionDefinition& d = session.definition;
    d.inversion_method = method_ubc_mag_v5;
    d.obs_data_file_type = 0;
    d.data_file_names[0] = survey.string();
    d.data_first_lines = {2, 1};
    d.data_read_steps = {1, 1};
    d.data_x_columns = {1, 0};
    d.data_y_columns = {2, 0};
    d.data_z_columns = {3, 0};
    d.data_value_columns = {4, 0, 0};
    d.line_column = 5;
    d.data_type_count = 1;
    d.topo_type = 1;
    d.sensor_height_type = 1;
    d.elevation_offsets = {0, 0, 0};
    d.regional_base = 0;
    d.regional_scale = 1;
    d.error_percent = 5;
    d.error_floor = 1;
    d.add_mesh_padding = 0;  // every reading lies over the mesh: a million lines to write
    d.mesh_cell_size = {cell, cell, cell, 0};
    d.mag_inclination = 70;
    d.mag_declination = -10.5f;
    d.mag_intensity = 50000;

    // Each stage runs `repeats` times; the best and the median processor times are shown.
    auto measure = [&](const char* stage, auto&& run) {
        std::vector<double> cpu;
        for (int r = 0; r < repeats; ++r) {
            const double start = Timer::cpu_seconds();
            run();
            cpu.push_back(Timer::cpu_seconds() - start);
        }
        std::sort(cpu.begin(), cpu.end());
        std::cout << stage << ": best " << cpu.front() << " s, median " << cpu[cpu.size() / 2] << " s processor\n";
    };

    LocationData data;
    LocationSummary summary;
    measure("read_locations_file, counting and filling passes",
            [&] { load_locations_file(session, location_settings(d, 0), data, summary); });
    std::cout << "  " << data.count << " readings\n";
    data = LocationData{};

    for (int values_per_cell : {1, 0}) {
        d.values_per_cell = values_per_cell;
        const std::string stage =
            "process_inversion_data (both passes, conditioning, binning), values_per_cell " +
            std::to_string(values_per_cell);
        measure(stage.c_str(), [&] {
            session.bins.size_bins(mesh.nx, mesh.ny);
            process_inversion_data(session);
        });
        std::cout << "  " << session.readings.obs_count << " accepted, " << session.bins.bin_total << " bins\n";
    }

    int written = 0;
    measure("write_inversion_data from the list",
            [&] { write_inversion_data(session, 0, work / "mag.obs", 1, mesh.nx + 1, 1, mesh.ny + 1, 0, written); });
    std::cout << "  " << written << " lines, " << std::filesystem::file_size(work / "mag.obs") / 1e6 << " MB\n";

    d.values_per_cell = 1;
    measure("write_inversion_data from the bins, with extras",
            [&] { write_inversion_data(session, 1, work / "mag.ref", 1, mesh.nx + 1, 1, mesh.ny + 1, 0, written); });
    std::cout << "  " << written << " lines\n";

    std::cout << "peak memory: " << peak_megabytes() << " MB\n";
    if (!dialogue.messages.empty()) std::cout << "messages: " << dialogue.messages.front() << "\n";
    std::filesystem::remove_all(work);
    return 0;
}
