// src/commands/data_pictures.h - the pictures of the data tabs: the readings of the point file as
// dots coloured by value, or the grid of a grid slot with its colour ramp and hillshade. Loading and
// drawing are apart, so that a window draws again at a new size without reading the file again.
#pragma once
#include <vector>

#include "grids/grid_picture.h"

namespace invsetup {
struct Session;

struct DataPicture {
    GridWindow grid;                       // a grid slot
    std::vector<double> x, y, values;      // a point slot: the readings and their value or elevation
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;

    bool empty() const { return grid.empty() && x.empty(); }
};

/// What slot `slot` of the definition shows: slots 0 and 1 the readings of a point file (by the
/// column definitions, the transform applied; the topography coloured by elevation), slots 1 to 5
/// the grid when the slot holds a grid file.
/// Silent: a file that can't be read gives an empty picture (the boxes tell the person why).
DataPicture load_data_picture(const Session& session, int slot);

/// The picture at a size, with a margin of 10 pixels; white when empty.
RgbaImage render_data_picture(const DataPicture& picture, int width, int height);

}  // namespace invsetup
