// src/data/observed_data.h - the readings of one creation placed on the mesh: the bins of one reading
// per mesh column and, for point files with values_per_cell not 1, the list of readings.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "support/array1.h"
#include "support/point_transform.h"

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
    /// Bins filled by process_inversion_data.
    int bin_total = 0;
    /// Readings per cell of the observation file being written, (nx, ny); the writer's own.
    Array2<int> bin_count;

    /// Sizes every table (nx + 1) by (ny + 1), cleared; bin_total 0.
    void size_bins(int nx, int ny);
};

/// The observed point file read ahead of its turn on another thread, while the topography is gridded.
struct ObservedReadAhead;

/// The list of readings, indexed from 1. obs_values(k, n): 1 x, 2 y, 3 elevation, 4 first value,
/// 5 second value, 6 distance from the cell's centre in plan, 7 extra value.
struct ObservationList {
    int obs_count = 0;  // readings accepted, counted also when the list is not kept
    Array2<double> obs_values;    // (7, n)
    Array2<int> obs_cells;        // (n, 2): X and Y cell
    /// The line label of reading n is label_names[obs_labels(n)]; obs_labels(n) is 0 (no label) when
    /// no line column is given. The names are the survey lines of the point file.
    Array1<int> obs_labels;
    Array1<std::string> label_names;
    const std::string& obs_label(int n) const;
    /// Readings the point file gave (its reader's count, densified points included); 0 for grids.
    int read_count = 0;
    /// Readings moved up to the minimum height above the topography, and the sum of the moves.
    int shift_count = 0;
    double shift_sum = 0;
    /// Readings left out, each by the first test that stopped it: a null value or elevation, a place
    /// outside the mesh core, no surface under it. With grids, the core cells without a value count
    /// as null, and cells_sampled counts the core cells looked at.
    int left_out_null = 0;
    int left_out_outside = 0;
    int left_out_no_topography = 0;
    int cells_sampled = 0;
    /// The observed point file being read ahead, taken by the next process_inversion_data.
    std::shared_ptr<ObservedReadAhead> read_ahead;
};

/// Starts reading the definition's observed point file on another thread, with the settings that
/// process_inversion_data(session) reads it by; the next process_inversion_data takes what was read
/// and shows the reader's messages there, where it would have shown them itself. Nothing starts for
/// grids or when only one thread may be used (INVSETUP_THREADS=1).
void read_observed_data_ahead(Session& session);

/// Why readings were left out, as one sentence naming the data file: the counts of each test, for
/// the person who has just been told how few readings remain.
std::string left_out_summary(const ObservationList& list, const std::string& data_file, bool grids);

/// The null tests of input values: below -1e30, or within 1 of -99999, 0.1 of -9999 or 0.01 of -999;
/// a value a single real can't hold (beyond 3.4e38, infinite, not a number) counts as null too.
bool is_input_null(double value);

/// Reads the observed data of session.definition (point file, or up to three grids and the optional
/// sensor elevation grid), conditions each reading and bins it on session.mesh: session.bins keeps
/// the reading nearest to each column's centre, session.readings the list when values_per_cell is not 1.
/// Needs session.mesh, and session.topography when topo_type is 0 (the triangulation for point files,
/// topo_grid for grids). session.bins is sized (nx + 1) by (ny + 1) by the driver beforehand; bins of
/// another size are sized here. `working_transform` takes map coordinates to the mesh's (applied
/// when active): the definition's transform, or the loaded mesh's in refinement mode.
/// Returns 0, or -1 after the point reader's, the grid reader's or the trap's message. Fewer than 10
/// filled bins warn and still succeed.
int process_inversion_data(Session& session, const PointTransform& working_transform);
/// The same with the definition's coordinate transform.
int process_inversion_data(Session& session);

}  // namespace invsetup
