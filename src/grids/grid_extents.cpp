// src/grids/grid_extents.cpp - an area carried between map and mesh coordinates by its corners.
#include "grids/grid_access.h"

#include <algorithm>

#include "support/point_transform.h"

namespace invsetup {

// A rotated rectangle's bounds come from its corners; the edges between them stay inside.
void transform_grid_extents(const PointTransform& transform, int direction, double& x_min, double& x_max,
                            double& y_min, double& y_max) {
    const double corners[4][2] = {{x_min, y_min}, {x_max, y_min}, {x_max, y_max}, {x_min, y_max}};
    double low_x = 0, high_x = 0, low_y = 0, high_y = 0;
    for (int k = 0; k < 4; ++k) {
        double x = corners[k][0], y = corners[k][1], z = 0;
        apply_point_transform(transform, direction, x, y, z);
        if (k == 0) {
            low_x = high_x = x;
            low_y = high_y = y;
        }
        low_x = std::min(low_x, x);
        high_x = std::max(high_x, x);
        low_y = std::min(low_y, y);
        high_y = std::max(high_y, y);
    }
    x_min = low_x;
    x_max = high_x;
    y_min = low_y;
    y_max = high_y;
}

}  // namespace invsetup
