// src/data/location_file.h - reading point data files (observed data, topography, limits) by their
// column definitions: text with blanks or commas. The same reader counts, then fills.
#pragma once
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/array1.h"
#include "support/numbers.h"
#include "support/point_transform.h"

namespace invsetup {
struct Session;
class Dialogue;

/// The file kind that stands for a Geosoft database; every other kind is read as text.
inline constexpr int location_kind_database = 2;

/// What to read and how. Columns count from 1; 0 or less means absent.
struct LocationFileSettings {
    std::filesystem::path file;
    int file_kind = 0;
    int first_line = 1;   // the first data line; the lines before it are skipped
    int read_step = 1;    // of the data lines, the first and each read_step-th after it (below 1 reads as 1)
    int x_column = 0;
    int y_column = 0;
    int z_column = 0;     // absent: every elevation is elevation_offset
    std::array<int, 3> value_columns{};
    int line_column = 0;         // text: a change of it starts a new line of the survey
    int label_column = 0;        // text per reading, "NA" when empty; indexed into a table of unique labels
    int extra_value_column = 0;  // text per reading, kept as its number (0 when it has none)
    int z_sign_flag = 0;         // 1 turns a depth into an elevation by changing its sign
    float elevation_offset = 0;  // added to each z read from the file (before the transform)
    /// Applied map to local when `active`, to x, y and z.
    PointTransform transform{};
    /// When has_limits, a reading (after the transform) outside x_min..x_max or y_min..y_max is dropped.
    bool has_limits = false;
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;
    /// Above 0: readings of one line further apart than this get evenly spaced points in between.
    float integration_interval = 0;
    /// False when the caller needs no minima, maxima or means from the counting pass: without limits
    /// and densifying that pass then only checks the form of the numbers, which is quicker.
    bool keep_ranges = true;
};

/// Running results of a pass. Minima and maxima stay -1e32 when nothing counted; null values
/// (below -1e30) never count. Minima and maxima are kept in the counting pass only.
struct LocationSummary {
    double x_min = null_value, x_max = null_value;
    double y_min = null_value, y_max = null_value;
    float z_min = null_value_single, z_max = null_value_single;
    std::array<float, 3> value_min{null_value_single, null_value_single, null_value_single};
    std::array<float, 3> value_max{null_value_single, null_value_single, null_value_single};
    /// Sums, counts and (after the pass) means of the values that are not null, per value column.
    std::array<double, 3> value_sum{};
    std::array<int, 3> value_count{};
    std::array<double, 3> value_mean{};
};

/// The readings of a file. Sized by the counting pass (mode 0) and filled by the filling pass (mode 1);
/// arrays count from 1. The object may be reused for another file.
struct LocationData {
    int count = 0;                // readings, densified points included
    Array2<double> locations;     // (count, 3): x, y, z; z null (-1e32) where its field was missing
    Array2<float> values;         // (count, 3): the three value columns, null where absent or not numeric
    Array1<double> extra_values;  // (count) when extra_value_column > 0
    /// The survey lines, in file order: line_names(1..lines), "NA" for an empty field;
    /// line_starts(1..lines + 1): first reading of each line, the last element count + 1;
    /// line_index(1..count): each reading's line (0 when no line column is given).
    int line_count = 0;
    Array1<std::string> line_names;
    Array1<int> line_starts;
    Array1<int> line_index;
    /// The labels when label_column > 0: label_index(1..count) into label_names(1..), unique and sorted.
    Array1<int> label_index;
    Array1<std::string> label_names;
};

/// Mode of read_locations_file.
inline constexpr int location_count_pass = 0;  // count, keep minima and maxima, size `data`
inline constexpr int location_fill_pass = 1;   // fill `data` (sized by a counting pass of the same file)

/// One reading as the filling pass would store it: x, y and z after the transform (z null where its
/// field was missing), the three values, the extra value, and its survey line (0 before the first
/// line name or without a line column). The label is valid only during the call.
struct LocationRecord {
    double x = 0, y = 0, z = 0;
    std::array<float, 3> values{};
    double extra = 0;
    int line = 0;
    std::string_view label;
};

/// Takes the readings of one pass as they are read, for a caller that keeps less than every reading
/// (a surface's points, the bins of a survey): one pass over the file instead of a counting pass and a
/// filling pass into arrays. Densified points come as readings of their own.
class LocationSink {
public:
    virtual ~LocationSink() = default;
    /// Survey line `line` (from 1) begins, named `name` ("NA" for an empty field).
    virtual void begin_line(int line, std::string_view name) = 0;
    virtual void take(const LocationRecord& record) = 0;
};

/// Reads the point file of `settings` once, handing each reading to `sink` in file order; `count` is
/// the readings handed, densified points included. The summary keeps the sums and means. Returns 0,
/// or -1 after the messages of read_locations_file.
int stream_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, LocationSink& sink, int& count,
                          LocationSummary& summary);

/// Reads the point file of `settings`. In mode 0 it counts the readings into data.count, keeps the
/// minima and maxima in `summary`, and sizes `data` for that count; in mode 1 it fills `data` and
/// its line and label tables. Both modes keep the sums and means. Lines that don't decode to x and y
/// (a header, a repeated header) are skipped silently. Returns 0, or -1 after its message: a file
/// that can't be opened, a Geosoft database (only the vendor's libraries read those), a fault.
int read_locations_file(Session& session, const LocationFileSettings& settings, int mode, LocationData& data,
                        LocationSummary& summary);

/// The same with only a dialogue to tell: the reader needs nothing else of a session, so it can run
/// on another thread with a dialogue that keeps the messages for later.
int read_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, int mode, LocationData& data,
                        LocationSummary& summary);

/// Both passes: counts, then fills when the count is positive. Returns 0 or -1 as above.
int load_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, LocationData& data,
                        LocationSummary& summary);
int load_locations_file(Session& session, const LocationFileSettings& settings, LocationData& data,
                        LocationSummary& summary);

}  // namespace invsetup
