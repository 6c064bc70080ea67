// src/mesh/tile_layout.cpp - tile arithmetic.
#include "mesh/tile_layout.h"

#include <stdexcept>
#include <string>

#include "grids/interval_search.h"
#include "mesh/inversion_mesh.h"
#include "mesh/mesh_definition.h"
#include "session.h"
#include "support/numbers.h"

namespace invsetup {

namespace {
constexpr int most_tiles_grown = 512;
}

int tile_count_for_axis(int cells, int tile_size, int overlap, int& tiles) {
    if (tile_size <= 0 || cells <= 0) return 0;
    // A tile no larger than its two overlaps has no room for a core: the count would divide by zero
    // or turn negative and the searches below would not end.
    if (tile_size <= 2 * overlap)
        throw std::domain_error("the tile size " + std::to_string(tile_size) + " is not above twice the overlap " +
                                std::to_string(overlap));
    const int core = tile_size - 2 * overlap;
    tiles = to_integer(static_cast<double>(cells) / core);
    auto coverage = [&] { return static_cast<long long>(tiles) * tile_size - static_cast<long long>(tiles - 1) * 2 * overlap; };
    // 512 stops the growth without complaint.
    while ((coverage() < cells && tiles < most_tiles_grown) || tiles == 0) ++tiles;
    for (;;) {
        int per = to_integer(static_cast<double>(cells) / tiles);
        while (static_cast<long long>(per) * tiles < cells) ++per;
        if (per + 2 * overlap <= tile_size) return per;
        ++tiles;
    }
}

void determine_number_of_tiles(Session& session, int& x_cells_per_tile, int& y_cells_per_tile) {
    InversionDefinition& definition = session.definition;
    const MeshLimits limits = mesh_limits(definition);
    if (definition.x_tile_size <= 0 || definition.y_tile_size <= 0 || limits.num_cells[0] <= 0 || limits.num_cells[1] <= 0)
        return;
    x_cells_per_tile = tile_count_for_axis(limits.num_cells[0], definition.x_tile_size, definition.tile_overlap,
                                           definition.number_of_x_tiles);
    y_cells_per_tile = tile_count_for_axis(limits.num_cells[1], definition.y_tile_size, definition.tile_overlap,
                                           definition.number_of_y_tiles);
}

namespace {

/// The limits of the tiles along one axis. `extra_span` is 0 for X and 1 for Y: the Y tiles share out
/// one cell more than the X tiles.
void lay_out_axis(Array2<int>& limits, int tiles, int first, int last, int extra_span, const Array1<double>& nodes,
                  int node_count, const Array1<double>& loaded_nodes, int loaded_node_count, int overlap, int tile_size) {
    limits.assign(tiles, 4, 0);
    if (tiles < 1) return;
    limits(1, tile_core_start) = first;
    for (int i = 1; i <= tiles; ++i) {
        int end = to_integer(static_cast<double>(i) * (last + extra_span - first) / tiles + first);
        if (end > last || i == tiles) {
            end = last;
        } else {
            // A tile's edge lies on an edge of a loaded cell.
            const double edge = loaded_nodes[interval_search(loaded_nodes, loaded_node_count, nodes[end])];
            end = interval_search(nodes, node_count, edge);
        }
        limits(i, tile_core_end) = end;
        if (i < tiles) limits(i + 1, tile_core_start) = end;  // the cores touch
        int outer_start = i == 1 ? limits(i, tile_core_start) : limits(i, tile_core_start) - overlap;
        limits(i, tile_outer_start) = outer_start < 1 ? 1 : outer_start;
        limits(i, tile_outer_end) = i == tiles ? limits(i, tile_core_end) : limits(i, tile_core_end) + overlap;
        const int excess = limits(i, tile_outer_end) - limits(i, tile_outer_start) - 1 - tile_size;
        if (excess > 0) {
            limits(i, tile_core_end) -= excess;
            limits(i, tile_outer_end) -= excess;
        }
        if (limits(i, tile_outer_end) > node_count) limits(i, tile_outer_end) = node_count;
    }
}

}  // namespace

void lay_out_tiles(const InversionMesh& mesh, const LoadedNodes& loaded, InversionDefinition& definition, TileTable& tiles) {
    const int x_tiles = definition.number_of_x_tiles;
    const int y_tiles = definition.number_of_y_tiles;
    tiles.skip_columns = y_tiles + 1;
    tiles.skip.assign(static_cast<std::size_t>(x_tiles + 1) * static_cast<std::size_t>(y_tiles + 1), 0);
    definition.tile_order = {0, 0, 0};
    lay_out_axis(tiles.tile_x_limits, x_tiles, mesh.fine_x_first, mesh.fine_x_last, 0, mesh.x_nodes, mesh.nx + 1,
                 loaded.x_nodes, loaded.nx + 1, definition.tile_overlap, definition.x_tile_size);
    lay_out_axis(tiles.tile_y_limits, y_tiles, mesh.fine_y_first, mesh.fine_y_last, 1, mesh.y_nodes, mesh.ny + 1,
                 loaded.y_nodes, loaded.ny + 1, definition.tile_overlap, definition.y_tile_size);
}

namespace {

/// One side of the expanded mesh. `direction` -1 moves towards lower coordinates, +1 higher.
void expand_side(const Array1<double>& nodes, int node_count, double edge, double width, int direction,
                 const Array1<float>& weights, int& count, double& limit, Array1<int>& source_cells) {
    double total = 0;
    for (int k = 1; k <= weights.size(); ++k) total += weights[k];
    const double bound = direction < 0 ? nodes[1] : nodes[node_count];
    count = weights.size();
    limit = edge + direction * total * width;
    // Outermost cells that leave the mesh are dropped.
    while ((direction < 0 ? limit < bound : limit > bound) && count > 0) {
        limit -= direction * weights[count] * width;
        --count;
    }
    double position = edge;
    for (int k = 1; k <= count; ++k) {
        position += direction * weights[k] * width / 2;
        source_cells[k] = interval_search(nodes, node_count, position);
        position += direction * weights[k] * width / 2;
    }
}

}  // namespace

void set_expanded_mesh_limits(Session& session, int i, int j) {
    const InversionMesh& mesh = session.mesh;
    const TileTable& tiles = session.tiles;
    ExpandedMesh& expanded = session.expanded_mesh;
    const int west = tiles.tile_x_limits(i, tile_outer_start);
    const int east = tiles.tile_x_limits(i, tile_outer_end);
    const int south = tiles.tile_y_limits(j, tile_outer_start);
    const int north = tiles.tile_y_limits(j, tile_outer_end);
    // Both sides of an axis grow in units of the tile's first cell.
    const double wx = mesh.x_nodes[west + 1] - mesh.x_nodes[west];
    const double wy = mesh.y_nodes[south + 1] - mesh.y_nodes[south];
    const int x_count = mesh.nx + 1;
    const int y_count = mesh.ny + 1;
    expand_side(mesh.x_nodes, x_count, mesh.x_nodes[west], wx, -1, expanded.expansion_weights, expanded.expansion_count[0],
                expanded.expansion_limits[0], expanded.expansion_source_cells[0]);
    expand_side(mesh.x_nodes, x_count, mesh.x_nodes[east], wx, 1, expanded.expansion_weights, expanded.expansion_count[1],
                expanded.expansion_limits[1], expanded.expansion_source_cells[1]);
    expand_side(mesh.y_nodes, y_count, mesh.y_nodes[south], wy, -1, expanded.expansion_weights, expanded.expansion_count[2],
                expanded.expansion_limits[2], expanded.expansion_source_cells[2]);
    expand_side(mesh.y_nodes, y_count, mesh.y_nodes[north], wy, 1, expanded.expansion_weights, expanded.expansion_count[3],
                expanded.expansion_limits[3], expanded.expansion_source_cells[3]);

    int first_x = 1;
    while (first_x < x_count && mesh.x_nodes[first_x] < expanded.expansion_limits[0]) ++first_x;
    int end_x = x_count;
    if (mesh.x_nodes[x_count] > expanded.expansion_limits[1]) --end_x;
    int first_y = 1;
    while (first_y < y_count && mesh.y_nodes[first_y] < expanded.expansion_limits[2]) ++first_y;
    int end_y = y_count;
    if (mesh.y_nodes[y_count] > expanded.expansion_limits[3]) --end_y;
    expanded.expansion_range[1] = first_x;
    expanded.expansion_range[2] = end_x;
    expanded.expansion_range[3] = first_y;
    expanded.expansion_range[4] = end_y;
}

}  // namespace invsetup
