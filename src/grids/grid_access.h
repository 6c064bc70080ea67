// src/grids/grid_access.h - opening a grid for an area: the header, its checks, and the part of the
// grid that the area needs, held in memory in place of a temporary grid file.
#pragma once
#include <string>

#include "grids/grid_file.h"

namespace invsetup {
struct Session;
struct PointTransform;

/// What the grid layer remembers between reads (one per session).
struct GridState {
    std::string current_grid_file;    // the grid last named to read_grid_header
    std::string temporary_grid_name;  // name of the last temporary grid, "" when none
    int temporary_count = 0;          // numbers the temporary names
};

/// Opens the grid `name` (any grid format, a height file or a placed TIFF) for the area x_min..x_max,
/// y_min..y_max and reads the part covering it into `window` (its name begins "~WD"). Limits that
/// aren't in order (x_min not below x_max or y_min not below y_max) mean the whole grid, and the
/// grid's limits are given back in them. grid_ints, grid_reals and grid_text describe the part read.
/// `status` 0, or -1 after "Failed to determine grid format" or "The specified grid is invalid".
void read_grid_header(Session& session, const std::string& name, GridWindow& window, std::string& grid_text,
                      Array1<int>& grid_ints, Array1<double>& grid_reals, double& x_min, double& x_max, double& y_min,
                      double& y_max, int& status);

/// For each name that isn't empty: the file is deleted when it exists and its base name begins with
/// "~"; the name is cleared either way.
void remove_temporary_grid(std::string& name_1, std::string& name_2);

/// The bounds of the four corners of x_min..x_max, y_min..y_max after `transform` in `direction`
/// (map_to_local or local_to_map): an area in one system asked in the other.
void transform_grid_extents(const PointTransform& transform, int direction, double& x_min, double& x_max,
                            double& y_min, double& y_max);

}  // namespace invsetup
