// src/mesh/tile_layout.h - tile counts, tile limits and the expanded mesh of refinement mode.
#pragma once

namespace invsetup {
struct Session;

/// Sets the definition's number_of_x_tiles and number_of_y_tiles from the refined cell counts and
/// the tile settings, and gives the even cell counts per tile.
void determine_number_of_tiles(Session& session, int& x_cells_per_tile, int& y_cells_per_tile);

}  // namespace invsetup
