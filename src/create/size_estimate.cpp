// src/create/size_estimate.cpp - the size of a run before it is written.
#include "create/size_estimate.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <system_error>

#include "create/create_inversion.h"
#include "create/survey_check.h"
#include "data/location_file.h"
#include "data/observed_data.h"
#include "data/topography.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "support/files.h"
#include "support/text.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace invsetup {

namespace {

constexpr double bytes_per_value = 4;  // the programs keep the matrix in single reals
// Working vectors beside the matrix: about six per cell (model, reference, bounds, weights) and four
// per reading (data, errors, predicted, residual), in double reals.
constexpr double vector_bytes_per_cell = 6 * 8;
constexpr double vector_bytes_per_reading = 4 * 8;
// The text files of a run: three models of one value per cell, each line about 13 characters; an
// observation line about 60.
constexpr double file_bytes_per_cell = 3 * 13;
constexpr double file_bytes_per_reading = 60;
constexpr std::uintmax_t sample_bytes = std::uintmax_t(4) << 20;

std::size_t column(const SizeEstimate& estimate, int i, int j) {
    return static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(estimate.nx) + static_cast<std::size_t>(i - 1);
}

/// The surface on the mesh, as the driver grids it; a flat top without topography.
int grid_surface(Session& session) {
    return session.definition.topo_type != 0 ? 0 : grid_topography(session);
}

/// Data lines of a long point file, from the lines in its first part scaled by its size.
double estimated_line_count(const std::filesystem::path& file, std::uintmax_t size, int first_line, int step) {
    std::ifstream in(file, std::ios::binary);
    std::string sample(static_cast<std::size_t>(std::min(size, sample_bytes)), '\0');
    in.read(sample.data(), static_cast<std::streamsize>(sample.size()));
    sample.resize(static_cast<std::size_t>(in.gcount()));
    const double lines = static_cast<double>(std::count(sample.begin(), sample.end(), '\n'));
    const double all = sample.empty() ? 0 : lines * static_cast<double>(size) / static_cast<double>(sample.size());
    return std::max(0.0, all - std::max(0, first_line - 1)) / std::max(1, step);
}

/// Readings per column from a full read, as the creation keeps them.
int read_readings(Session& session, SizeEstimate& estimate) {
    session.bins.size_bins(estimate.nx, estimate.ny);
    if (process_inversion_data(session) < 0) return -1;
    const InversionDefinition& definition = session.definition;
    if (definition.obs_data_file_type == 0 && definition.values_per_cell != 1) {
        const ObservationList& list = session.readings;
        for (int n = 1; n <= list.obs_count; ++n) {
            const int i = list.obs_cells(n, 1), j = list.obs_cells(n, 2);
            if (i >= 1 && i <= estimate.nx && j >= 1 && j <= estimate.ny) estimate.column_readings[column(estimate, i, j)] += 1;
        }
        estimate.readings = list.obs_count;
        return 0;
    }
    for (int j = 1; j <= estimate.ny; ++j)
        for (int i = 1; i <= estimate.nx; ++i)
            if (session.bins.bin_used(i, j) > 0) estimate.column_readings[column(estimate, i, j)] = 1;
    estimate.readings = session.bins.bin_total;
    return 0;
}

/// Readings of a long point file: the estimated lines, at most one per core column when the run
/// keeps one reading per column, shared out evenly over the core.
void estimate_readings(const Session& session, std::uintmax_t size, SizeEstimate& estimate) {
    const InversionDefinition& definition = session.definition;
    const InversionMesh& mesh = session.mesh;
    double lines = estimated_line_count(definition.data_file_names[0], size, definition.data_first_lines[0],
                                        definition.data_read_steps[0]);
    const int x0 = std::max(1, mesh.core_x_first), x1 = std::min(mesh.nx, mesh.core_x_last - 1);
    const int y0 = std::max(1, mesh.core_y_first), y1 = std::min(mesh.ny, mesh.core_y_last - 1);
    const double core_columns = std::max(0, x1 - x0 + 1) * static_cast<double>(std::max(0, y1 - y0 + 1));
    if (definition.values_per_cell == 1) lines = std::min(lines, core_columns);
    estimate.readings = static_cast<long long>(std::llround(lines));
    estimate.readings_estimated = true;
    if (core_columns <= 0) return;
    const double share = lines / core_columns;
    for (int j = y0; j <= y1; ++j)
        for (int i = x0; i <= x1; ++i) estimate.column_readings[column(estimate, i, j)] = share;
}

/// Sums over a rectangle of columns in O(1).
class ColumnSums {
public:
    ColumnSums(const SizeEstimate& estimate, int depth) : nx_(estimate.nx), readings_((estimate.nx + 1) * (estimate.ny + 1) + 0), cells_(readings_.size()) {
        for (int j = 1; j <= estimate.ny; ++j)
            for (int i = 1; i <= estimate.nx; ++i) {
                const std::size_t at = column(estimate, i, j);
                const double active = std::max(0, std::min(depth, estimate.nz) - estimate.column_air[at]);
                readings_[index(i, j)] = estimate.column_readings[at] + readings_[index(i - 1, j)] +
                                         readings_[index(i, j - 1)] - readings_[index(i - 1, j - 1)];
                cells_[index(i, j)] = active + cells_[index(i - 1, j)] + cells_[index(i, j - 1)] - cells_[index(i - 1, j - 1)];
            }
    }
    /// Readings and active cells of columns x0..x1, y0..y1 (from 1, inclusive).
    void sum(int x0, int x1, int y0, int y1, double& readings, double& cells) const {
        readings = box(readings_, x0, x1, y0, y1);
        cells = box(cells_, x0, x1, y0, y1);
    }

private:
    std::size_t index(int i, int j) const { return static_cast<std::size_t>(j) * static_cast<std::size_t>(nx_ + 1) + static_cast<std::size_t>(i); }
    double box(const std::vector<double>& table, int x0, int x1, int y0, int y1) const {
        if (x1 < x0 || y1 < y0) return 0;
        return table[index(x1, y1)] - table[index(x0 - 1, y1)] - table[index(x1, y0 - 1)] + table[index(x0 - 1, y0 - 1)];
    }
    int nx_;
    std::vector<double> readings_;
    std::vector<double> cells_;
};

void fill_tiles(const Session& session, SizeEstimate& estimate) {
    const InversionDefinition& definition = session.definition;
    const TileTable& table = session.tiles;
    estimate.x_tiles = definition.number_of_x_tiles;
    estimate.y_tiles = definition.number_of_y_tiles;
    if (estimate.x_tiles <= 0 || estimate.y_tiles <= 0 || table.tile_x_limits.rows() < estimate.x_tiles ||
        table.tile_y_limits.rows() < estimate.y_tiles)
        return;
    const ColumnSums sums(estimate, estimate.tile_depth);
    for (int i = 1; i <= estimate.x_tiles; ++i)
        for (int j = 1; j <= estimate.y_tiles; ++j) {
            TileSize tile;
            tile.i = i;
            tile.j = j;
            double readings = 0, cells = 0;
            sums.sum(table.tile_x_limits(i, tile_outer_start), table.tile_x_limits(i, tile_outer_end) - 1,
                     table.tile_y_limits(j, tile_outer_start), table.tile_y_limits(j, tile_outer_end) - 1, readings,
                     cells);
            tile.readings = std::llround(readings);
            tile.active_cells = std::llround(cells);
            tile.matrix_bytes = readings * estimate.components * cells * bytes_per_value;
            estimate.largest_tile_bytes = std::max(estimate.largest_tile_bytes, tile.matrix_bytes);
            estimate.tiles.push_back(tile);
        }
}

double free_space(const std::filesystem::path& folder, std::filesystem::path& found) {
    std::error_code error;
    std::filesystem::path probe = folder.empty() ? std::filesystem::current_path(error) : std::filesystem::absolute(folder, error);
    while (!probe.empty() && !std::filesystem::exists(probe, error)) {
        if (probe == probe.parent_path()) break;
        probe = probe.parent_path();
    }
    const std::filesystem::space_info space = std::filesystem::space(probe, error);
    if (error) return 0;
    found = probe;
    return static_cast<double>(space.available);
}

int run_estimate(Session& session, const SizeEstimateOptions& options, SizeEstimate& estimate, SurveyCoverage* coverage) {
    const InversionDefinition& definition = session.definition;
    const InversionMesh& mesh = session.mesh;
    estimate = SizeEstimate{};
    estimate.nx = mesh.nx;
    estimate.ny = mesh.ny;
    estimate.nz = mesh.nz;
    estimate.mesh_cells = static_cast<long long>(mesh.nx) * mesh.ny * mesh.nz;
    const std::size_t columns = static_cast<std::size_t>(mesh.nx) * static_cast<std::size_t>(mesh.ny);
    estimate.column_readings.assign(columns, 0.0);
    estimate.column_air.assign(columns, 0);

    if (definition.topo_type == 0) {
        if (grid_surface(session) < 0) return -1;
        if (coverage) take_surface_coverage(session, *coverage);
        for (int j = 1; j <= mesh.ny; ++j)
            for (int i = 1; i <= mesh.nx; ++i)
                estimate.column_air[column(estimate, i, j)] = std::clamp(session.topography.topo_cell(i, j), 0, mesh.nz);
    }
    if (coverage && definition.topo_type != 0) take_surface_coverage(session, *coverage);
    for (int air : estimate.column_air) estimate.active_cells += mesh.nz - air;

    std::error_code error;
    const std::uintmax_t size = definition.obs_data_file_type == 0
                                    ? std::filesystem::file_size(definition.data_file_names[0], error)
                                    : 0;
    if (!coverage && definition.obs_data_file_type == 0 && !error && size > options.full_read_limit)
        estimate_readings(session, size, estimate);
    else if (read_readings(session, estimate) < 0)
        return -1;
    else if (coverage)
        take_reading_coverage(session, *coverage);
    if (definition.inversion_method == method_zarninv3d) estimate.components = std::max(1, definition.data_type_count);
    estimate.matrix_bytes = static_cast<double>(estimate.readings) * estimate.components *
                            static_cast<double>(estimate.active_cells) * bytes_per_value;

    const bool tiled = definition.refinement_mode != 0;
    const bool regional = definition.include_regional_mesh != 0 && definition.inversion_method == method_zarninv3d;
    // A tile inverts the top cells and the blend below them; a plain run's tiles would do the same.
    const int top_cells = definition.mesh_cell_count[2];
    estimate.tile_depth = !regional && top_cells > 0 ? std::min(mesh.nz, top_cells + definition.tile_z_blend) : mesh.nz;
    if (tiled) {
        estimate.first_x = mesh.fine_x_first;
        estimate.last_x = mesh.fine_x_last;
        estimate.first_y = mesh.fine_y_first;
        estimate.last_y = mesh.fine_y_last;
        fill_tiles(session, estimate);
    } else {
        estimate.first_x = std::max(1, mesh.core_x_first);
        estimate.last_x = std::min(mesh.nx, mesh.core_x_last - 1);
        estimate.first_y = std::max(1, mesh.core_y_first);
        estimate.last_y = std::min(mesh.ny, mesh.core_y_last - 1);
    }

    if (!estimate.tiles.empty()) {
        const TileSize& largest = *std::max_element(estimate.tiles.begin(), estimate.tiles.end(),
                                                    [](const TileSize& a, const TileSize& b) { return a.matrix_bytes < b.matrix_bytes; });
        estimate.memory_bytes = largest.matrix_bytes + largest.active_cells * vector_bytes_per_cell +
                                largest.readings * vector_bytes_per_reading;
        for (const TileSize& tile : estimate.tiles)
            estimate.disk_bytes += tile.matrix_bytes + tile.active_cells * file_bytes_per_cell + tile.readings * file_bytes_per_reading;
    } else {
        estimate.memory_bytes = estimate.matrix_bytes + estimate.active_cells * vector_bytes_per_cell +
                                estimate.readings * vector_bytes_per_reading;
        estimate.disk_bytes = estimate.matrix_bytes;
    }
    estimate.disk_bytes += estimate.mesh_cells * file_bytes_per_cell + estimate.readings * file_bytes_per_reading;
    estimate.machine_memory = machine_memory_bytes();
    estimate.free_disk = free_space(options.run_folder, estimate.disk_folder);
    return 0;
}

std::string tile_name(int i, int j) {
    char name[32];
    std::snprintf(name, sizeof name, "tile%02d%02d", i, j);
    return name;
}

/// 1234567 -> "1,234,567"
std::string count_text(long long count) {
    const std::string digits = std::to_string(count < 0 ? -count : count);
    std::string text = count < 0 ? "-" : "";
    for (std::size_t at = 0; at < digits.size(); ++at) {
        if (at > 0 && (digits.size() - at) % 3 == 0) text += ',';
        text += digits[at];
    }
    return text;
}

}  // namespace

int estimate_run_size(Session& session, const SizeEstimateOptions& options, SizeEstimate& estimate,
                      SurveyCoverage* coverage) {
    int status = -1;
    try {
        // The readers take the data file names whole, as the creation gives them.
        WholeDataFileNames whole_names(session);
        status = run_estimate(session, options, estimate, coverage);
    } catch (const std::exception& fault) {
        session.dialogue.message_box(std::string(coverage ? "An error occurred while trying the observed data on the mesh: "
                                                          : "An error occurred while estimating the run's size: ") +
                                     fault.what());
        status = -1;
    }
    // What a creation would hold is given back: only the figures stay.
    session.bins.size_bins(1, 1);
    session.readings = ObservationList{};
    session.topography.clear();
    return status;
}

std::string byte_text(double bytes) {
    static const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB"};
    int unit = 0;
    while (bytes >= 1024 && unit < 5) {
        bytes /= 1024;
        ++unit;
    }
    char text[48];
    if (unit == 0) std::snprintf(text, sizeof text, "%.0f bytes", bytes);
    else std::snprintf(text, sizeof text, "%.1f %s", bytes, units[unit]);
    return text;
}

std::vector<std::string> size_report(const SizeEstimate& e) {
    std::vector<std::string> lines;
    lines.push_back("Cells in the mesh:        " + count_text(e.mesh_cells));
    lines.push_back("Cells below topography:   " + count_text(e.active_cells));
    lines.push_back("Readings kept:            " + count_text(e.readings) +
                    (e.readings_estimated ? " (estimated from the data file's size)" : ""));
    const std::string rows =
        e.components > 1 ? count_text(e.readings) + " x " + std::to_string(e.components) + " data types" : count_text(e.readings);
    lines.push_back("Sensitivity matrix:       " + rows + " x " + count_text(e.active_cells) + " x 4 bytes = " +
                    byte_text(e.matrix_bytes));
    if (!e.tiles.empty()) {
        const TileSize& largest = *std::max_element(e.tiles.begin(), e.tiles.end(), [](const TileSize& a, const TileSize& b) {
            return a.matrix_bytes < b.matrix_bytes;
        });
        lines.push_back("Tiles:                    " + std::to_string(e.x_tiles) + " x " + std::to_string(e.y_tiles) +
                        ", " + std::to_string(e.tile_depth) + " cells deep");
        for (const TileSize& tile : e.tiles)
            lines.push_back("  " + tile_name(tile.i, tile.j) + ":  " + count_text(tile.readings) +
                            (e.components > 1 ? " x " + std::to_string(e.components) : std::string()) + " x " +
                            count_text(tile.active_cells) + " x 4 bytes = " + byte_text(tile.matrix_bytes));
        lines.push_back("Largest tile matrix:      " + byte_text(largest.matrix_bytes) + " (" + tile_name(largest.i, largest.j) + ")");
    }
    lines.push_back("Memory needed:            about " + byte_text(e.memory_bytes) +
                    (e.machine_memory > 0 ? " (this machine has " + byte_text(e.machine_memory) + ")" : ""));
    lines.push_back("Disk needed:              about " + byte_text(e.disk_bytes) +
                    (e.free_disk > 0 ? " (" + byte_text(e.free_disk) + " free in " + e.disk_folder.string() + ")" : ""));
    if (e.machine_memory > 0 && e.memory_bytes > e.machine_memory)
        lines.push_back("Warning: the inversion needs more memory (" + byte_text(e.memory_bytes) + ") than this machine has (" +
                        byte_text(e.machine_memory) + ")");
    if (e.free_disk > 0 && e.disk_bytes > e.free_disk)
        lines.push_back("Warning: the run needs more disk (" + byte_text(e.disk_bytes) + ") than is free in " +
                        e.disk_folder.string() + " (" + byte_text(e.free_disk) + ")");
    return lines;
}

TileSuggestion suggest_tile_size(const SizeEstimate& estimate, int overlap, double limit_bytes) {
    TileSuggestion best;
    const int cells_x = estimate.last_x - estimate.first_x + 1;
    const int cells_y = estimate.last_y - estimate.first_y + 1;
    if (cells_x <= 0 || cells_y <= 0 || overlap < 0) return best;
    const ColumnSums sums(estimate, estimate.tile_depth);
    const int widest = std::max(cells_x, cells_y) + 2 * overlap;
    for (int size = widest; size > 2 * overlap; --size) {
        int x_tiles = 0, y_tiles = 0;
        const int per_x = tile_count_for_axis(cells_x, size, overlap, x_tiles);
        const int per_y = tile_count_for_axis(cells_y, size, overlap, y_tiles);
        double largest = 0;
        for (int a = 0; a < x_tiles; ++a) {
            const int x0 = estimate.first_x + a * per_x;
            const int x1 = std::min(estimate.last_x, x0 + per_x - 1);
            for (int b = 0; b < y_tiles; ++b) {
                const int y0 = estimate.first_y + b * per_y;
                const int y1 = std::min(estimate.last_y, y0 + per_y - 1);
                double readings = 0, cells = 0;
                sums.sum(std::max(1, x0 - overlap), std::min(estimate.nx, x1 + overlap), std::max(1, y0 - overlap),
                         std::min(estimate.ny, y1 + overlap), readings, cells);
                largest = std::max(largest, readings * estimate.components * cells * bytes_per_value);
            }
        }
        if (largest <= limit_bytes) {
            best.found = true;
            best.tile_size = size;
            best.x_tiles = x_tiles;
            best.y_tiles = y_tiles;
            best.largest_matrix_bytes = largest;
            return best;
        }
    }
    return best;
}

std::string tile_suggestion_text(const TileSuggestion& suggestion, int overlap, double limit_bytes) {
    if (!suggestion.found)
        return "No tile size above twice the overlap (" + std::to_string(overlap) + " cells) keeps a tile matrix under " +
               byte_text(limit_bytes) + ": lower the overlap or the readings per cell";
    return "Suggested tile size:      " + std::to_string(suggestion.tile_size) + " cells (overlap " +
           std::to_string(overlap) + "), " + std::to_string(suggestion.x_tiles) + " x " +
           std::to_string(suggestion.y_tiles) + " tiles, largest tile matrix " +
           byte_text(suggestion.largest_matrix_bytes) + " (limit " + byte_text(limit_bytes) + ")";
}

bool parse_byte_size(const std::string& text, double& bytes) {
    std::size_t used = 0;
    double value = 0;
    try {
        value = std::stod(text, &used);
    } catch (const std::exception&) {
        return false;
    }
    std::string unit = text.substr(used);
    for (char& c : unit) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (unit.size() > 1 && unit.back() == 'B') unit.pop_back();
    if (unit.size() > 1 && unit.back() == 'I') unit.pop_back();
    static const std::string letters = "KMGTP";
    double scale = 1;
    if (!unit.empty()) {
        const std::size_t at = letters.find(unit);
        if (unit.size() != 1 || at == std::string::npos) return false;
        scale = std::pow(1024.0, static_cast<double>(at + 1));
    }
    if (!(value > 0) || !std::isfinite(value)) return false;
    bytes = value * scale;
    return true;
}

double machine_memory_bytes() {
#ifndef _WIN32
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long page = ::sysconf(_SC_PAGE_SIZE);
    if (pages > 0 && page > 0) return static_cast<double>(pages) * static_cast<double>(page);
#endif
    return 0;
}

}  // namespace invsetup
