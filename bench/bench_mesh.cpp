// bench/bench_mesh.cpp - writes a 500 x 500 x 200 mesh with its topography block, reads it back
// and writes it again; prints the time of each step. Usage: bench_mesh [directory]
#include <chrono>
#include <cmath>
#include <filesystem>
#include <iostream>

#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/mesh_file_write.h"
#include "session.h"

using namespace invsetup;

namespace {

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

InversionMesh large_mesh() {
    InversionMesh mesh;
    mesh.nx = 500;
    mesh.ny = 500;
    mesh.nz = 200;
    mesh.size_arrays();
    for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = i <= 5 || i > 495 ? 25.0 * (1 << (i <= 5 ? 6 - i : i - 495)) : 25.0;
    for (int j = 1; j <= mesh.ny; ++j) mesh.dy[j] = 25.0;
    for (int k = 1; k <= mesh.nz; ++k) mesh.dz[k] = k <= 150 ? 10.0 : 10.0 * std::pow(1.05, k - 150);
    mesh.x_nodes[1] = 512000.25;
    mesh.y_nodes[1] = 7012000.5;
    mesh.z_nodes[1] = 1250;
    lay_nodes(mesh);
    return mesh;
}

}  // namespace

int main(int argc, char** argv) {
    const std::filesystem::path directory = argc > 1 ? std::filesystem::path(argv[1]) : std::filesystem::temp_directory_path();
    const std::filesystem::path first = directory / "bench_mesh_1.msh";
    const std::filesystem::path second = directory / "bench_mesh_2.msh";

    const InversionMesh mesh = large_mesh();
    Array2<float> topo(mesh.nx + 1, mesh.ny + 1);
    for (int j = 1; j <= mesh.ny + 1; ++j)
        for (int i = 1; i <= mesh.nx + 1; ++i) topo(i, j) = 1000.0f + 0.25f * static_cast<float>((i * 7 + j * 3) % 997);
    MeshFileRequest request = whole_mesh_request(mesh);
    request.write_extended = true;
    request.mesh_format = 2;
    request.has_topo = true;
    request.topo_grid = &topo;

    auto start = std::chrono::steady_clock::now();
    write_mesh_file(first, mesh, request);
    const double write_seconds = seconds_since(start);

    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    start = std::chrono::steady_clock::now();
    if (read_mesh_file(session, first.string()) != 0) return 1;
    const double read_seconds = seconds_since(start);

    const LoadedMesh& loaded = session.loaded_mesh;
    InversionMesh back;
    back.nx = loaded.nx;
    back.ny = loaded.ny;
    back.nz = loaded.nz;
    start = std::chrono::steady_clock::now();
    back.dx = loaded.dx;
    back.dy = loaded.dy;
    back.dz = loaded.dz;
    back.x_nodes = loaded.x_nodes;
    back.y_nodes = loaded.y_nodes;
    back.z_nodes = loaded.z_nodes;
    MeshFileRequest again = whole_mesh_request(back);
    again.write_extended = true;
    again.mesh_format = loaded.mesh_format;
    again.has_topo = loaded.has_topo;
    again.topo_grid = &loaded.topo_grid;
    write_mesh_file(second, back, again);
    const double rewrite_seconds = seconds_since(start);

    const bool same = std::filesystem::file_size(first) == std::filesystem::file_size(second);
    std::cout << "500 x 500 x 200 mesh with a 501 x 501 topography block (" << std::filesystem::file_size(first)
              << " bytes)\n"
              << "write " << write_seconds << " s, read " << read_seconds << " s, write back " << rewrite_seconds
              << " s, read and write back " << read_seconds + rewrite_seconds << " s, same size: " << (same ? "yes" : "no")
              << '\n';
    std::filesystem::remove(first);
    std::filesystem::remove(second);
    return same ? 0 : 1;
}
