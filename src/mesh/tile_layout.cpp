// src/mesh/tile_layout.cpp - tile arithmetic.
#include "mesh/tile_layout.h"

#include "session.h"

namespace invsetup {

void determine_number_of_tiles(Session& /*session*/, int& x_cells_per_tile, int& y_cells_per_tile) {
    x_cells_per_tile = 0;
    y_cells_per_tile = 0;
}

}  // namespace invsetup
