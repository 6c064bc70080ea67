// src/mesh/tile_layout.h - tile counts, tile limits and the expanded mesh of refinement mode.
#pragma once
#include <array>
#include <vector>

#include "support/array1.h"

namespace invsetup {
struct Session;
struct InversionDefinition;
struct InversionMesh;

/// Column k of a tile's limits (node indices of the InversionMesh).
enum TileLimit : int { tile_outer_start = 1, tile_core_start = 2, tile_core_end = 3, tile_outer_end = 4 };

/// The tile layout: tile_x_limits(i, k) for i 1..number_of_x_tiles, tile_y_limits(j, k) for j
/// 1..number_of_y_tiles, k a TileLimit.
struct TileTable {
    Array2<int> tile_x_limits;
    Array2<int> tile_y_limits;
    /// A tile's state from Check_do_tile, indices from 0; 0 after each layout.
    std::vector<int> skip;
    int skip_columns = 0;  // number_of_y_tiles + 1
    int& tile_skip(int i, int j) { return skip.at(static_cast<std::size_t>(i * skip_columns + j)); }
};

/// The expanded mesh of one tile: up to five cells of growing width on each side. Sides count
/// 0 west, 1 east, 2 south, 3 north.
struct ExpandedMesh {
    Array1<float> expansion_weights = Array1<float>(5, 0.0f);  // widths in base cells, 1..5
    std::array<int, 4> expansion_count{};
    std::array<double, 4> expansion_limits{};
    /// expansion_source_cells[side](k): the mesh cell under the middle of expansion cell k (1..5).
    std::array<Array1<int>, 4> expansion_source_cells{Array1<int>(5), Array1<int>(5), Array1<int>(5), Array1<int>(5)};
    /// 1 first X node, 2 end X node, 3 first Y node, 4 end Y node inside the expanded limits.
    Array1<int> expansion_range = Array1<int>(4);
};

/// Sets the definition's number_of_x_tiles and number_of_y_tiles from the refined cell counts and
/// the tile settings, and gives the even cell counts per tile. A tile size of at most twice the
/// overlap is a fault (std::domain_error) for the caller's trap.
void determine_number_of_tiles(Session& session, int& x_cells_per_tile, int& y_cells_per_tile);
/// The count arithmetic for one axis: sets `tiles` and returns the cells per tile. `tiles` is left
/// alone when the size or the cell count is not positive (and the result is 0).
int tile_count_for_axis(int cells, int tile_size, int overlap, int& tiles);

/// The nodes of the mesh a refinement starts from (the loaded mesh): 1 to nx + 1 and 1 to ny + 1.
struct LoadedNodes {
    const Array1<double>& x_nodes;
    int nx;
    const Array1<double>& y_nodes;
    int ny;
};

/// Sizes and fills the tile tables from the tile counts, the fine cells of the mesh and the nodes of
/// the loaded mesh; resets tile_skip and the definition's tile_order.
void lay_out_tiles(const InversionMesh& mesh, const LoadedNodes& loaded, InversionDefinition& definition,
                   TileTable& tiles);

/// Fills session.expanded_mesh for tile (i, j).
void set_expanded_mesh_limits(Session& session, int i, int j);

}  // namespace invsetup
