// bench/bench_topography.cpp - gridding scattered topography onto a mesh: a million generated points
// triangulated, then every cell centre and node of a 200 x 200 x 50 mesh evaluated.
// Usage: bench_topography [point_count] [cells_per_side]
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <cstdlib>
#include <iostream>
#include <vector>

#include "data/topography.h"
#include "session.h"
#include "support/dialogue.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A fixed pseudo-random sequence, so that every run measures the same points.
struct Generator {
    std::uint64_t state = 0x9E3779B97F4A7C15ull;
    double uniform() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) * (1.0 / 9007199254740992.0);
    }
};

}  // namespace

int main(int argc, char** argv) {
    const int point_count = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const int cells = argc > 2 ? std::atoi(argv[2]) : 200;
    const int layers = 50;
    const double cell = 25.0, x0 = 500000.0, y0 = 6200000.0;  // map coordinates, as surveys have them

    invsetup::HeadlessDialogue dialogue;
    invsetup::Session session(dialogue);
    invsetup::InversionMesh& mesh = session.mesh;
    mesh.nx = mesh.ny = cells;
    mesh.nz = layers;
    mesh.size_arrays();
    for (int i = 1; i <= cells; ++i) mesh.dx[i] = mesh.dy[i] = cell;
    for (int k = 1; k <= layers; ++k) mesh.dz[k] = cell;
    mesh.x_nodes[1] = x0;
    mesh.y_nodes[1] = y0;
    mesh.z_nodes[1] = 1000;
    invsetup::lay_nodes(mesh);
    session.definition.topo_shift_option = 1;

    // Rolling hills over the mesh and its one-cell margin.
    Generator random;
    const double span = cell * (cells + 2);
    invsetup::Array2<double> locations(point_count, 3);
    for (int n = 1; n <= point_count; ++n) {
        const double x = x0 - cell + span * random.uniform(), y = y0 - cell + span * random.uniform();
        locations(n, 1) = x;
        locations(n, 2) = y;
        locations(n, 3) = 700 + 80 * std::sin((x - x0) / 700) * std::cos((y - y0) / 900);
    }

    // Wall time counts other programs on a busy machine too; the processor time of this one is shown beside it.
    const std::clock_t cpu_start = std::clock();
    const Clock::time_point start = Clock::now();
    const int status = invsetup::grid_topo_from_points(session, point_count, locations);
    const double elapsed = seconds_since(start);
    const double cpu = static_cast<double>(std::clock() - cpu_start) / CLOCKS_PER_SEC;
    if (status != 0) {
        std::cerr << "bench_topography: gridding failed";
        for (const std::string& message : dialogue.messages) std::cerr << ": " << message;
        std::cerr << "\n";
        return 1;
    }
    // The two phases alone: building the triangulation, and the walk over centres and nodes.
    const invsetup::Topography& topography = session.topography;
    // (the generated points all lie within the mesh's margin, so the file's points are the surface's
    // points without the four closing ones)
    std::vector<double> px(static_cast<std::size_t>(point_count)), py(px.size());
    for (int n = 1; n <= point_count; ++n) {
        px[static_cast<std::size_t>(n - 1)] = locations(n, 1);
        py[static_cast<std::size_t>(n - 1)] = locations(n, 2);
    }
    invsetup::Triangulation again;
    const Clock::time_point build_start = Clock::now();
    again.build(px, py);
    const double build_time = seconds_since(build_start);
    std::vector<double> qx, qy;
    for (int j = 1; j <= cells + 1; ++j)
        for (int i = 1; i <= cells + 1; ++i) {
            qx.push_back(mesh.x_nodes[j % 2 ? i : cells + 2 - i]);
            qy.push_back(mesh.y_nodes[j]);
        }
    std::vector<double> values(qx.size());
    const Clock::time_point walk_start = Clock::now();
    again.interpolate_many(qx, qy, topography.topo_z, values);
    const double walk_time = seconds_since(walk_start);
    std::cout << "triangulation " << build_time << " s, " << qx.size() << " nodes evaluated in " << walk_time << " s\n";
    std::cout << point_count << " points, " << cells << " x " << cells << " x " << layers << " mesh: "
              << session.topography.triangulation.triangle_count() << " triangles, gridded in " << elapsed << " s (processor " << cpu
              << " s)\n";
    return 0;
}
