// src/data/observed_data.h - the readings of one creation placed on the mesh: the bins of one reading
// per mesh column and, for point files with values_per_cell not 1, the list of readings.
#pragma once
#include <string>
#include <vector>

#include "support/array1.h"

namespace invsetup {
struct Session;

/// Bins are sized 1..nx+1 by 1..ny+1 by the driver; (i, j) is the X and Y cell of the column.
struct ObservationBins {
    Array2<int> bin_used;
    Array2<double> bin_x, bin_y, bin_z;
    Array2<double> bin_value1, bin_value2;
    /// Point file: the distance from the cell's centre (the bin's sort key); grids: the third grid.
    Array2<double> bin_value3;
    Array2<double> bin_extra;
    Array2<std::string> bin_label;

    /// Sizes every table (nx + 1) by (ny + 1), cleared.
    void size_bins(int nx, int ny);
};

/// The list of readings, indexed from 1. obs_values(k, n): 1 x, 2 y, 3 elevation, 4 first value,
/// 5 second value, 6 distance from the cell's centre in plan, 7 extra value.
struct ObservationList {
    int obs_count = 0;  // readings accepted, counted also when the list is not kept
    Array2<double> obs_values;    // (7, n)
    Array2<int> obs_cells;        // (n, 2): X and Y cell
    Array1<std::string> obs_labels;
};

}  // namespace invsetup
