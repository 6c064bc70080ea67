// bench/bench_refine.cpp - the refinement road on large meshes: a 10,000,000-cell model read in the
// binary and the layered text form, a 2,000,000-cell model moved onto a 10,000,000-cell mesh, and the
// models and meshes of 100 tiles cut from a 10,000,000-cell refined model.
//   bench_refine [DIRECTORY]
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/mesh_file_write.h"
#include "modelfiles/model_file_read.h"
#include "modelfiles/model_file_write.h"
#include "modelfiles/model_interpolation.h"
#include "session.h"
#include "support/dialogue.h"

namespace {

namespace fs = std::filesystem;

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A loaded mesh of nx by ny by nz cells of `size` metres (half as deep), west-south corner 0, 0, top 0.
void make_loaded_mesh(invsetup::Session& session, int nx, int ny, int nz, double size) {
    invsetup::LoadedMesh& mesh = session.loaded_mesh;
    invsetup::clear_mesh(mesh);
    mesh.nx = nx;
    mesh.ny = ny;
    mesh.nz = nz;
    mesh.x0 = mesh.y0 = mesh.z0 = 0;
    mesh.dx = invsetup::Array1<double>(nx, size);
    mesh.dy = invsetup::Array1<double>(ny, size);
    mesh.dz = invsetup::Array1<double>(nz, size / 2);
    invsetup::derive_mesh_geometry(session, mesh);
    mesh.loaded = true;
}

float field(int i, int j, int k) { return 0.001f * static_cast<float>((i * 7 + j * 13 + k * 3) % 1000); }

}  // namespace

int main(int argc, char** argv) {
    const fs::path folder = argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path() / "bench_refine";
    fs::create_directories(folder);
    invsetup::HeadlessDialogue dialogue;
    invsetup::Session session(dialogue);

    // 10,000,000 cells: 200 x 250 x 200.
    make_loaded_mesh(session, 200, 250, 200, 20);
    invsetup::ModelValues model;
    model.size(200, 250, 200);
    for (int k = 1; k <= 200; ++k)
        for (int j = 1; j <= 250; ++j)
            for (int i = 1; i <= 200; ++i) model.at(i, j, k) = field(i, j, k);
    invsetup::ModelWriteRequest binary = invsetup::whole_model_request(model);
    binary.export_mode = invsetup::model_export_binary;
    binary.model_kind = 1;
    invsetup::write_model_file(dialogue, folder / "model.bin", model, binary);
    {
        // The layered form: the sea and air values, then the layers x fastest, ten values a line.
        std::FILE* out = std::fopen((folder / "model.lay").c_str(), "wb");
        std::fprintf(out, "1.03 -1\r\n");
        std::size_t n = 0;
        for (float value : model.values) std::fprintf(out, ++n % 10 == 0 ? "%.4f\r\n" : "%.4f ", value);
        std::fclose(out);
    }

    auto start = std::chrono::steady_clock::now();
    invsetup::LoadedModel loaded;
    if (invsetup::read_model_file(dialogue, (folder / "model.bin").string(), session.loaded_mesh, loaded) != 0) return 1;
    std::cout << "Binary model read, 10,000,000 cells:       " << seconds_since(start) << " s\n";
    session.loaded_mesh.mesh_format = 1;
    start = std::chrono::steady_clock::now();
    if (invsetup::read_model_file(dialogue, (folder / "model.lay").string(), session.loaded_mesh, loaded) != 0) return 1;
    std::cout << "Layered text model read, 10,000,000 cells: " << seconds_since(start) << " s\n";

    // 2,000,000 cells of 40 m (100 x 125 x 160) onto the 10,000,000 cells of 20 m.
    make_loaded_mesh(session, 100, 125, 160, 40);
    invsetup::LoadedModel& coarse = session.loaded_model;
    coarse.values.size(100, 125, 160);
    for (int k = 1; k <= 160; ++k)
        for (int j = 1; j <= 125; ++j)
            for (int i = 1; i <= 100; ++i) coarse.values.at(i, j, k) = field(i, j, k);
    coarse.loaded = true;
    invsetup::InversionMesh target;
    target.nx = 200;
    target.ny = 250;
    target.nz = 200;
    target.size_arrays();
    for (int i = 1; i <= 200; ++i) target.dx[i] = 20;
    for (int j = 1; j <= 250; ++j) target.dy[j] = 20;
    for (int k = 1; k <= 200; ++k) target.dz[k] = 10;
    target.x_nodes[1] = target.y_nodes[1] = 0;
    target.z_nodes[1] = 0;
    invsetup::lay_nodes(target);
    invsetup::InterpolationTarget where;
    where.mesh = &target;
    invsetup::ModelValues refined;
    start = std::chrono::steady_clock::now();
    invsetup::interpolate_model_to_mesh(dialogue, 1, 1, session.loaded_mesh, coarse, where, refined);
    std::cout << "Interpolation 2,000,000 -> 10,000,000:     " << seconds_since(start) << " s\n";

    // 100 tiles (10 x 10) of 20 x 25 cells with an overlap of 4, the top 100 cells each.
    start = std::chrono::steady_clock::now();
    invsetup::ModelWriteRequest tile = invsetup::whole_model_request(refined);
    invsetup::MeshFileRequest tile_mesh = invsetup::whole_mesh_request(target);
    std::size_t tile_cells = 0;
    for (int a = 0; a < 10; ++a)
        for (int b = 0; b < 10; ++b) {
            tile.first_x = std::max(1, a * 20 + 1 - 4);
            tile.end_x = std::min(201, (a + 1) * 20 + 1 + 4);
            tile.first_y = std::max(1, b * 25 + 1 - 4);
            tile.end_y = std::min(251, (b + 1) * 25 + 1 + 4);
            tile.first_z = 1;
            tile.end_z = 101;
            const fs::path tile_folder = folder / ("tile" + std::to_string(a) + "_" + std::to_string(b));
            fs::create_directories(tile_folder);
            invsetup::write_model_file(dialogue, tile_folder / "model.sus", refined, tile);
            tile_mesh.first_x = tile.first_x;
            tile_mesh.last_x = tile.end_x;
            tile_mesh.first_y = tile.first_y;
            tile_mesh.last_y = tile.end_y;
            tile_mesh.first_z = 1;
            tile_mesh.last_z = 101;
            invsetup::write_mesh_file(tile_folder / "mesh", target, tile_mesh);
            tile_cells += static_cast<std::size_t>(tile.end_x - tile.first_x) * (tile.end_y - tile.first_y) * 100;
        }
    std::cout << "100 tile models and meshes (" << tile_cells << " cells): " << seconds_since(start) << " s\n";
    fs::remove_all(folder);
    return 0;
}
