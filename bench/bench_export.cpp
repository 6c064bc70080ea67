// bench/bench_export.cpp - invsetup export of a 10,000,000-cell package (200 x 200 x 250 cells, a
// model of varied values, the surface at the 40,401 nodes, 40,000 readings) into ParaView files.
// Usage: bench_export [DIRECTORY] (default: the system's temporary directory). Prints seconds (wall
// and processor) and megabytes, best of 3.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>

#include "modelfiles/vtk_export.h"
#include "session.h"
#include "support/dialogue.h"

namespace {

namespace fs = std::filesystem;

void write_package(const fs::path& run, int nx, int ny, int nz) {
    fs::create_directories(run);
    {
        std::ofstream mesh(run / "mesh", std::ios::binary);
        mesh << nx << ' ' << ny << ' ' << nz << "\r\n500000 7000000 1000\r\n" << nx << "*25\r\n" << ny << "*25\r\n"
             << nz << "*10\r\n";
    }
    std::mt19937 random(12345);
    std::lognormal_distribution<float> susceptibility(-6.0f, 1.5f);
    {
        std::FILE* model = std::fopen((run / "model.sus").string().c_str(), "wb");
        const long long cells = static_cast<long long>(nx) * ny * nz;
        for (long long n = 0; n < cells; ++n) std::fprintf(model, " %.5E\r\n", susceptibility(random));
        std::fclose(model);
    }
    {
        std::ofstream topo(run / "topo.dat", std::ios::binary);
        topo << (nx + 1) * (ny + 1) << "\r\n";
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i)
                topo << 500000 + 25 * i << ' ' << 7000000 + 25 * j << ' ' << 900 + 50 * std::sin(i / 20.0) * std::cos(j / 30.0)
                     << "\r\n";
    }
    {
        std::ofstream obs(run / "mag.obs", std::ios::binary);
        obs << "70 -10 50000\r\n70 -10 1\r\n 40000\r\n";
        for (int n = 0; n < 40000; ++n)
            obs << 500000 + (n % 200) * 25 + 12.5 << ' ' << 7000000 + (n / 200) * 25 + 12.5 << " 1000 " << n % 97
                << " 1.5\r\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    const fs::path directory = argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path();
    const fs::path run = directory / "bench_export_run";
    write_package(run, 200, 200, 250);
    invsetup::HeadlessDialogue dialogue;
    invsetup::Session session(dialogue);
    double best = 1e9, best_cpu = 1e9;
    invsetup::VtkExportSummary summary;
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::clock_t cpu_start = std::clock();
        const auto start = std::chrono::steady_clock::now();
        if (invsetup::export_run_to_vtk(session, run, run / "paraview", summary) < 0) {
            std::printf("export failed: %s\n", dialogue.messages.back().c_str());
            return 1;
        }
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        best_cpu = std::min(best_cpu, static_cast<double>(std::clock() - cpu_start) / CLOCKS_PER_SEC);
    }
    double megabytes = 0;
    for (const fs::path& file : summary.written) megabytes += static_cast<double>(fs::file_size(file)) / 1e6;
    std::printf("export of 10,000,000 cells (model text %.0f MB), best of 3: %.3f s wall %.3f s cpu, %.1f MB written\n",
                static_cast<double>(fs::file_size(run / "model.sus")) / 1e6, best, best_cpu, megabytes);
    fs::remove_all(run);
    return 0;
}
