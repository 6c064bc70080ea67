// src/data/topography.h - the surface of one creation on the mesh: elevations at cell centres and
// nodes, and the first cell below ground in each column.
#pragma once

#include "support/array1.h"

namespace invsetup {
struct Session;

struct Topography {
    Array2<float> topo_grid;   // (nx, ny) elevation at cell centres
    Array2<float> topo_nodes;  // (nx + 1, ny + 1) elevation at mesh nodes
    Array2<int> topo_cell;     // (nx, ny) first cell of the column at or below the surface
};

}  // namespace invsetup
