// src/modelfiles/vtk_export.h - a run package as VTK XML files that ParaView opens as they are: the
// mesh with its models and air cells (.vtr), the surface at the mesh nodes (.vts), the readings with
// their values and errors (.vtp), the tiles' outlines (.vtp), and a collection (.pvd) of them all.
// Binary data is appended raw (UInt64 block sizes, little-endian), so a model of ten million cells
// costs one pass over its floats.
#pragma once
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {
struct Session;

struct VtkExportSummary {
    std::vector<std::filesystem::path> written;
    /// Files of the package that were passed over, with the reason ("model.den: 12 values for 24 cells").
    std::vector<std::string> skipped;
};

/// Exports the package in `run_directory` into `output_directory` (made when missing):
///   mesh.vtr       the "mesh" file's cells, with a cell array per model file of the package (every
///                  .sus or .den file holding one value per cell, named by its file name) and "air",
///                  1 for a cell whose top lies above the surface of topo.dat at its column (the mean
///                  of the column's four corner nodes), else 0; without topo.dat no cell is air
///   topography.vts topo.dat's nodes as a surface, with "elevation"
///   mag_obs.vtp, grav_obs.vtp  the readings of mag.obs / grav.obs as points, with "value", "error"
///   tiles.vtp      a tiled run's tile cores as closed outlines at the top of the mesh, with "tile_i",
///                  "tile_j" and "kept" (0 for a tile the merge script leaves out)
///   run.pvd        a collection of the files written
/// Returns 0, or -1 after a message naming the file that is missing or wrong (the mesh file is
/// required; the rest is written when present).
int export_run_to_vtk(Session& session, const std::filesystem::path& run_directory,
                      const std::filesystem::path& output_directory, VtkExportSummary& summary);

/// One value per line (blank lines skipped), as the package's model files are written. Throws
/// std::runtime_error naming the file and the line of a value that is not a number.
std::vector<float> read_plain_model(const std::filesystem::path& file);

}  // namespace invsetup
