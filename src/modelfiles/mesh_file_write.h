// src/modelfiles/mesh_file_write.h - the UBC 3D mesh file with this system's trailer (format line,
// air and sea counts, topography and trapezoidal node blocks), for the whole mesh or a tile.
#pragma once
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "support/array1.h"

namespace invsetup {
struct InversionMesh;

/// What to write besides the mesh itself. Node ranges are inclusive node indices of the mesh.
struct MeshFileRequest {
    int first_x = 1, last_x = 1, first_y = 1, last_y = 1, first_z = 1, last_z = 1;
    bool write_extended = false;  // the trailer at all
    bool has_topo = false;
    const Array2<float>* topo_grid = nullptr;  // (x node, y node)
    bool has_trapezoid = false;
    const Array2<std::array<double, 2>>* trapezoid_nodes = nullptr;  // (x node, y node) -> {k 1, k 2}
    int headerless = 0;  // above 0: no counts or origin, and the x and y lines cover no cells
    int mesh_format = 0;
    int air_cells = 0, sea_cells = 0;
    float drape_top = 0, drape_bottom = 0;
};

/// A request covering the whole mesh, plain format.
MeshFileRequest whole_mesh_request(const InversionMesh& mesh);

/// One run-length packed width line set for cells first..last (may be empty): tokens of 11
/// characters and a blank, broken once a line holds 132 characters, the last run unpadded.
std::vector<std::string> width_lines(const Array1<double>& widths, int first, int last);

/// The lines of the file, without line ends.
std::vector<std::string> mesh_file_lines(const InversionMesh& mesh, const MeshFileRequest& request);

/// Writes the file with CR LF line ends, replacing it. Throws std::runtime_error naming the file on
/// an I/O fault; raises no message.
void write_mesh_file(const std::filesystem::path& path, const InversionMesh& mesh, const MeshFileRequest& request);

}  // namespace invsetup
