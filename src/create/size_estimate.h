// src/create/size_estimate.h - how large a run will be before it is written: the cells below the
// topography, the readings kept, the dense sensitivity matrix (for each tile of a tiled run), the
// memory and disk the outside programs need by that measure, and a tile size that fits a memory.
#pragma once
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {
struct Session;
struct InversionDefinition;
struct SurveyCoverage;

/// One tile of a tiled run: its indices and what its inversion holds.
struct TileSize {
    int i = 0, j = 0;
    long long readings = 0;
    long long active_cells = 0;
    double matrix_bytes = 0;
};

struct SizeEstimate {
    int nx = 0, ny = 0, nz = 0;
    long long mesh_cells = 0;
    /// Cells below the topography (every cell when the run has no topography).
    long long active_cells = 0;
    long long readings = 0;
    /// The readings were estimated from the data file's size rather than read (a long file).
    bool readings_estimated = false;
    /// Matrix rows per reading: the in-house method's data types (one matrix each), else 1.
    int components = 1;
    /// The whole run's dense sensitivity matrix: readings x components x active cells x 4 bytes.
    double matrix_bytes = 0;
    /// A tiled run: every tile, and the largest tile matrix, which decides the memory (the tiles run
    /// one after another) while the disk holds every tile's matrix.
    std::vector<TileSize> tiles;
    int x_tiles = 0, y_tiles = 0;
    double largest_tile_bytes = 0;
    /// What the outside programs need: the matrix in memory with the working vectors of the model
    /// and the data; on disk the matrix file (each tile's) and the model, mesh and data files.
    double memory_bytes = 0;
    double disk_bytes = 0;
    /// This machine: physical memory, and the free space where the run will be written (0 unknown).
    double machine_memory = 0;
    double free_disk = 0;
    std::filesystem::path disk_folder;
    /// Per mesh column (i fastest, from 0): readings kept (a share of the estimate when it is one)
    /// and cells above the topography. The tile figures and the tile suggestion are sums over them.
    std::vector<double> column_readings;
    std::vector<int> column_air;
    /// The column range the tiles share out (cell indices from 1) and the depth a tile inverts.
    int first_x = 1, last_x = 0, first_y = 1, last_y = 0;
    int tile_depth = 0;
};

struct SizeEstimateOptions {
    /// A point data file longer than this is not read: its readings are estimated from the lines in
    /// its first part and its size.
    std::uintmax_t full_read_limit = std::uintmax_t(256) << 20;
    /// Where the run package will be written, for the free disk space.
    std::filesystem::path run_folder;
};

/// The estimate for session.definition on session.mesh (built by the checks). Grids the topography
/// and reads the observed data as a creation would, and gives them back afterwards. With `coverage`
/// the same pass fills it too, and the data file is then read whatever its length. Returns 0, or -1
/// after the message of the reader that failed.
int estimate_run_size(Session& session, const SizeEstimateOptions& options, SizeEstimate& estimate,
                      SurveyCoverage* coverage = nullptr);

/// The report, one line each, the warnings last ("Warning: ...").
std::vector<std::string> size_report(const SizeEstimate& estimate);

struct TileSuggestion {
    bool found = false;
    int tile_size = 0;  // cells, the overlap on both sides included (x_tile_size and y_tile_size)
    int x_tiles = 0, y_tiles = 0;
    double largest_matrix_bytes = 0;
};

/// The largest square tile size (above twice the overlap) whose every tile matrix stays at or under
/// `limit_bytes`, the tiles laid out over the estimate's column range as a tiled run lays them.
TileSuggestion suggest_tile_size(const SizeEstimate& estimate, int overlap, double limit_bytes);
std::string tile_suggestion_text(const TileSuggestion& suggestion, int overlap, double limit_bytes);

/// This machine's physical memory in bytes (0 when unknown).
double machine_memory_bytes();
/// "1.5 GiB", "640 KiB", "12 bytes".
std::string byte_text(double bytes);
/// A memory size as people write it: "8G", "512M", "16GiB", "2T", "4096" (bytes); K, M, G, T count
/// by 1024. False when the text is not one.
bool parse_byte_size(const std::string& text, double& bytes);

}  // namespace invsetup
