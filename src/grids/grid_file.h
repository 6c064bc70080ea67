// src/grids/grid_file.h - grid files: headers, windows read into memory, statistics, and the value
// of a grid at mesh cell centres. These are the grid operations the rest of the system calls by
// their old library names; every format GDAL opens is read, and ".hgt" height files directly.
#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "support/array1.h"

namespace invsetup {

inline constexpr int grid_int_count = 17;
inline constexpr int grid_real_count = 22;
inline constexpr int grid_text_length = 512;

/// Grid kinds, slot 1 of grid_ints. Below 1 means no grid.
inline constexpr int grid_kind_gdal = 1;     // any raster format GDAL opens
inline constexpr int grid_kind_height = 12;  // ".hgt" height file, read directly
inline constexpr int grid_kind_raster = 15;  // picture read by FreeImage, placed by a sidecar or its own tags
inline constexpr int grid_kind_points = 20;  // a point file: posted on an image, never gridded

/// Raster sub-kinds, slot 2 of grid_ints when the kind is grid_kind_raster.
inline constexpr int raster_unplaced = 0;  // no georeference: limits are pixel numbers
inline constexpr int raster_sidecar = 1;   // placed by a world file, .tab, .hdr, .egb or .grf
inline constexpr int raster_geotiff = 2;   // a TIFF placed by its own tags

/// Slots of grid_ints (1-based).
namespace grid_int {
inline constexpr int kind = 1;
inline constexpr int sub_kind = 2;        // raster sub-kind (raster_...); 1 for any other grid
inline constexpr int bands = 3;           // bands in the file
inline constexpr int has_null = 4;        // 1 when the file declares a null (no-data) value
inline constexpr int raster_width = 7;    // size of the raster form: width in pixels
inline constexpr int columns = 8;
inline constexpr int rows = 9;            // also the raster form's height
}  // namespace grid_int

/// Slots of grid_reals (1-based). Limits are the outermost node (pixel centre) coordinates, so a grid
/// of n columns spans (n - 1) spacings.
namespace grid_real {
inline constexpr int x_min = 1;
inline constexpr int x_max = 2;
inline constexpr int y_min = 3;
inline constexpr int y_max = 4;
inline constexpr int x_spacing = 5;
inline constexpr int y_spacing = 6;
inline constexpr int file_null = 7;       // the file's own null value, when grid_ints(has_null) is 1
}  // namespace grid_real

/// A grid header as the library gives it: kind, sizes, limits, spacings and description.
struct GridHeader {
    Array1<int> grid_ints = Array1<int>(grid_int_count);
    Array1<double> grid_reals = Array1<double>(grid_real_count);
    std::string grid_text;  // at most grid_text_length characters

    int kind() const { return grid_ints[grid_int::kind]; }
    int columns() const { return grid_ints[grid_int::columns]; }
    int rows() const { return grid_ints[grid_int::rows]; }
    double x_min() const { return grid_reals[grid_real::x_min]; }
    double x_max() const { return grid_reals[grid_real::x_max]; }
    double y_min() const { return grid_reals[grid_real::y_min]; }
    double y_max() const { return grid_reals[grid_real::y_max]; }
    double x_spacing() const { return grid_reals[grid_real::x_spacing]; }
    double y_spacing() const { return grid_reals[grid_real::y_spacing]; }
};

/// Kind at least 1, columns and rows above 0, each minimum below its maximum, both spacings above 0.
bool is_valid_grid_header(const Array1<int>& grid_ints, const Array1<double>& grid_reals);

/// A part of a grid held in memory: the temporary grid of a read. Values are single reals, row by
/// row from the south (row 1 at y_min), west to east within a row; nulls are -1e32.
struct GridWindow {
    std::string name;  // "~WD..." while it stands for a temporary grid, "" when empty
    GridHeader header;
    std::vector<float> values;
    /// Why the last read gave no values, when something can say: the grid's size against its file
    /// and the memory, or GDAL's own words. "" otherwise.
    std::string failure;

    bool empty() const { return values.empty(); }
    /// Node (column, row), both 1-based, row 1 south.
    float value(int column, int row) const;
};

/// Statistics of the values present (not null) in a grid.
struct GridStatistics {
    double mean = 0;
    double minimum = 0;
    double maximum = 0;
    double standard_deviation = 0;  // of the population
    std::int64_t present_count = 0;
    std::int64_t null_count = 0;
};

/// Reads the header of the grid `name` into grid_ints, grid_reals and grid_text. `status` 0, or -1
/// when the file can't be opened as a grid, is rotated, or has no rows; nothing is shown.
void GRDRDH(const std::string& name, Array1<int>& grid_ints, Array1<double>& grid_reals,
            std::string& grid_text, int& status);

/// Reads the part of the grid `input_name` that covers x_min..x_max, y_min..y_max into `output`,
/// whose header then describes the part. The part takes the nodes inside the limits and, where a
/// limit falls between nodes, the node beyond it, so that every point within the limits has its four
/// neighbouring nodes; it is cut at the grid's edge. Limits that miss the grid give status -1.
/// x_step and y_step are the caller's and are not used: the part keeps the grid's own spacing.
/// `open_options` are GDAL open options ("GEOREF_SOURCES=INTERNAL" reads a TIFF by its own tags).
/// "" when a part of `columns` by `rows` values of a grid of `file_columns` by `file_rows` can be
/// read; otherwise why not, as a clause ("the grid file a.asc claims 100,000 x 100,000 values, but
/// its 78 bytes can hold at most 39: ..."): a text grid can't hold more values than half its bytes,
/// and the part must fit in half the memory available.
std::string grid_size_refusal(const std::string& name, const std::string& driver_name, int file_columns, int file_rows,
                              int columns, int rows);
void GRDRDGD(const std::string& input_name, GridWindow& output, double x_min, double x_max, double x_step,
             double y_min, double y_max, double y_step, int& status,
             const std::vector<std::string>& open_options = {});

/// Statistics of the whole grid `name`, read a block of rows at a time. `status` 0, or -1 when the
/// grid can't be read or holds no value.
void GRDSTAT(const std::string& name, GridStatistics& statistics, int& status);
/// Statistics of a grid part in memory; `status` -1 when it holds no value.
void GRDSTAT(const GridWindow& grid, GridStatistics& statistics, int& status);

/// A histogram of the present values of a grid part: `counts` gets `bin_count` bins spanning the
/// value range evenly (the maximum falls in the last bin). `status` -1 when there is no value.
void GRDHST(const GridWindow& grid, int bin_count, std::vector<std::int64_t>& counts, double& minimum,
            double& maximum, int& status);

/// The grid's value at each point (x[k], y[k]), in `values`; all spans of one length. The value is
/// bilinear from the four nodes round the point; null (-1e32) when the point lies outside the grid
/// or any of those four nodes is null (on a grid line or node, only the nodes of that segment or the
/// node itself count). See the rule in the .cpp.
void GEO_CELL_INTERPOLATION(const GridWindow& grid, std::span<const double> x, std::span<const double> y,
                            std::span<double> values);
/// The same on 1-based rows of centres: elements 1..count.
void GEO_CELL_INTERPOLATION(const GridWindow& grid, const Array1<double>& x, const Array1<double>& y, int count,
                            Array1<double>& values);

/// Whether a file is a grid: a file in a grid format or with a grid header (ESRI ASCII, Surfer,
/// ER Mapper, GeoTIFF, height files and the rest), read whole as nodes. A text file that the grid
/// layer recognises only as a list of points (x, y, z rows, or a table of columns) is a point file,
/// even when its points lie on a regular grid: its columns are read by their definitions. This is
/// the one test of grid or points for every data file slot.
bool is_grid_file(const std::string& name);

/// The GDAL driver's short name for a file ("GTiff", "ERS", "GSAG", ...), or "" when no driver
/// recognises it. Height files answer "HGT".
std::string grid_format_name(const std::string& name);

}  // namespace invsetup
