// src/data/observed_data.cpp - conditioning and binning of the observed data.
#include "data/observed_data.h"

#include <atomic>
#include <cmath>
#include <future>
#include <limits>
#include <optional>
#include <stdexcept>

#include "data/location_file.h"
#include "data/topography.h"
#include "grids/grid_access.h"
#include "grids/grid_file.h"
#include "grids/interval_search.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/threads.h"

namespace invsetup {

void ObservationBins::size_bins(int nx, int ny) {
    bin_used.assign(nx + 1, ny + 1, 0);
    bin_x.assign(nx + 1, ny + 1, 0.0);
    bin_y.assign(nx + 1, ny + 1, 0.0);
    bin_z.assign(nx + 1, ny + 1, 0.0);
    bin_value1.assign(nx + 1, ny + 1, 0.0);
    bin_value2.assign(nx + 1, ny + 1, 0.0);
    bin_value3.assign(nx + 1, ny + 1, 0.0);
    bin_extra.assign(nx + 1, ny + 1, 0.0);
    bin_label.assign(nx + 1, ny + 1, std::string());
    bin_total = 0;
}

const std::string& ObservationList::obs_label(int n) const {
    static const std::string no_label;
    const int index = obs_labels[n];
    return index > 0 ? label_names[index] : no_label;
}

bool is_input_null(double value) {
    // A value a single real can't hold (or not a number) is no reading: the files store single reals.
    if (!(std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max()))) return true;
    return value < -1e30 || std::fabs(value + 99999) < 1 || std::fabs(value + 9999) < 0.1 ||
           std::fabs(value + 999) < 0.01;
}

namespace {

std::string count_of(long count, const char* one, const char* many) {
    return format_picture(static_cast<double>(count), "0") + " " + (count == 1 ? one : many);
}

}  // namespace

std::string left_out_summary(const ObservationList& list, const std::string& data_file, bool grids) {
    const std::string file = file_name_only(data_file);
    if (grids)
        return "Of the " + count_of(list.cells_sampled, "mesh cell", "mesh cells") + " inside the mesh core, " +
               count_of(list.left_out_null, "has", "have") + " no value in the observed data grid " + file + ".";
    return "Of the " + count_of(list.read_count, "reading", "readings") + " in " + file + ", " +
           format_picture(list.left_out_null, "0") + " had a null value or elevation, " +
           format_picture(list.left_out_outside, "0") + " lay outside the mesh core and " +
           format_picture(list.left_out_no_topography, "0") + " had no topography under them.";
}

namespace {

/// Keeps a reader's messages for the thread that shows them.
class KeptMessages : public Dialogue {
public:
    std::vector<std::string> messages;
    void message_box(const std::string& text) override { messages.push_back(text); }
    bool ask_yes_no(const std::string&) override { return false; }
    std::string ask_text(const std::string&, const std::string& initial) override { return initial; }
    std::optional<std::string> choose_file(const FileChoice&) override { return std::nullopt; }
};

LocationFileSettings observed_settings(const InversionDefinition& d, const PointTransform& transform) {
    LocationFileSettings settings = location_settings(d, 0);
    settings.transform = transform;
    settings.keep_ranges = false;
    return settings;
}

}  // namespace

namespace {

/// The columns of the mesh that take readings: x_first..x_end - 1 and y_first..y_end - 1 as cells,
/// x_nodes[x_first] up to (not including) x_nodes[x_end] as coordinates.
struct AcceptedRange {
    int x_first = 1, x_end = 1, y_first = 1, y_end = 1;
    bool empty() const { return x_end <= x_first || y_end <= y_first; }
};

AcceptedRange accepted_range(const Session& session) {
    const InversionMesh& mesh = session.mesh;
    AcceptedRange range;
    // Padding cells are left out by a fixed four on each side, whatever the padding list holds:
    // readings there would only pull the outer model.
    const int margin = session.definition.add_mesh_padding != 0 ? 4 : 0;
    range.x_first = 1 + margin;
    range.x_end = mesh.nx + 1 - margin;
    range.y_first = 1 + margin;
    range.y_end = mesh.ny + 1 - margin;
    return range;
}

/// A hundredth of a cell; a full unit for map coordinates in the millions, whose last digits can't
/// hold a hundredth of a cell.
float node_tolerance(double cell_size, const Array1<double>& nodes, int n) {
    float tolerance = static_cast<float>(cell_size / 100);
    if ((std::fabs(nodes[1]) > 1000000 || std::fabs(nodes[n]) > 1000000) && tolerance < 1) tolerance = 1;
    return tolerance;
}

/// Where a reading lands on the mesh: the cell under it, and its place moved off the cell's edges.
/// It keeps its own copy of the node and centre tables (a few hundred numbers), so that a reader on
/// another thread places readings while this one writes the mesh.
class CellPlacement {
public:
    CellPlacement(const InversionMesh& mesh, const AcceptedRange& range, float x_tolerance, float y_tolerance)
        : x_nodes_(mesh.x_nodes), y_nodes_(mesh.y_nodes), x_centres_(mesh.x_centres), y_centres_(mesh.y_centres),
          x_low_(mesh.x_nodes[range.x_first]), x_high_(mesh.x_nodes[range.x_end]),
          y_low_(mesh.y_nodes[range.y_first]), y_high_(mesh.y_nodes[range.y_end]), x_tolerance_(x_tolerance),
          y_tolerance_(y_tolerance) {}

    /// False when (x, y) lies outside the columns that take readings; otherwise the cell (i, j).
    bool place(double& x, double& y, int& i, int& j) const {
        if (!(x >= x_low_ && x < x_high_ && y >= y_low_ && y < y_high_)) return false;
        i = interval_search(x_nodes_, x);
        j = interval_search(y_nodes_, y);
        // The forward calculation can't take a reading on a cell's edge.
        if (std::fabs(x - x_nodes_[i]) < x_tolerance_) x += x_tolerance_;
        if (std::fabs(x - x_nodes_[i + 1]) < x_tolerance_) x -= x_tolerance_;
        if (std::fabs(y - y_nodes_[j]) < y_tolerance_) y += y_tolerance_;
        if (std::fabs(y - y_nodes_[j + 1]) < y_tolerance_) y -= y_tolerance_;
        return true;
    }

    /// The plan distance of (x, y) from the centre of cell (i, j): the bin's sort key.
    double distance_from_centre(double x, double y, int i, int j) const {
        const double east = x - x_centres_[i], north = y - y_centres_[j];
        return std::sqrt(east * east + north * north);
    }

    /// The area that takes readings: a reading placed anywhere lies within it.
    double x_low() const { return x_low_; }
    double x_high() const { return x_high_; }
    double y_low() const { return y_low_; }
    double y_high() const { return y_high_; }

private:
    Array1<double> x_nodes_, y_nodes_, x_centres_, y_centres_;
    double x_low_, x_high_, y_low_, y_high_;
    float x_tolerance_, y_tolerance_;
};

/// The surface under each reading that lands on the mesh, at its place moved off the cell edges (null
/// for the others). Looked up before the readings are taken in file order, in blocks over the threads,
/// each walking the surface from its own start: a surveyed line keeps each search to a step or two.
std::vector<double> surfaces_under_readings(const Topography& topography, const CellPlacement& placement,
                                            const LocationData& data) {
    std::vector<double> surfaces(static_cast<std::size_t>(data.count), null_value);
    for_blocks(surfaces.size(), [&](std::size_t first, std::size_t last) {
        SurfaceLookup lookup(topography);
        for (std::size_t k = first; k < last; ++k) {
            const int n = static_cast<int>(k) + 1;
            double x = data.locations(n, 1), y = data.locations(n, 2);
            int i = 0, j = 0;
            if (placement.place(x, y, i, j)) surfaces[k] = lookup.at(x, y);
        }
    });
    return surfaces;
}

/// The regional terms apply to the first value only; the arithmetic is that of single reals.
double regional_value(double value, const InversionDefinition& d) {
    return static_cast<double>((static_cast<float>(value) - d.regional_base) * d.regional_scale);
}

/// The reading being conditioned.
struct Reading {
    double x = 0, y = 0, z = 0;
    double value1 = null_value, value2 = null_value;
    double extra = 0;
    int line = 0;  // its survey line; 0 without a line column or before the first line name
};

/// Why a reading was left out before its surface was looked at.
enum class Verdict { kept, null, outside };

/// The tests every reading of a point file passes before the surface matters, in their order: a null
/// place, elevation or value, then a place outside the columns that take readings. A kept reading
/// comes back conditioned, moved off the cell edges, with its cell (i, j); z does not hold the
/// surface yet. Both ways of binning call this, so they keep and leave out the same readings.
Verdict condition_reading(const InversionDefinition& d, const CellPlacement& placement, const LocationRecord& record,
                          Reading& r, int& i, int& j) {
    const bool nulls_kept = d.integration_interval > 0;
    r = Reading{};
    r.x = record.x;
    r.y = record.y;
    r.z = 0;
    if (!std::isfinite(r.x) || !std::isfinite(r.y)) return Verdict::null;
    if (d.data_z_columns[0] > 0) {
        r.z = record.z;
        if (is_input_null(r.z)) return Verdict::null;
    }
    r.z += d.elevation_offsets[0];

    const double v1 = record.values[0];
    if (is_input_null(v1)) {
        if (!nulls_kept) return Verdict::null;
        r.value1 = null_value;
    } else {
        r.value1 = regional_value(v1, d);
    }
    if (d.data_type_count >= 2) {
        const double v2 = record.values[1];
        if (is_input_null(v2)) {
            if (!nulls_kept) return Verdict::null;
            r.value2 = null_value;
        } else {
            r.value2 = v2;
        }
    }
    // The third value is read only to be tested: its slot carries the distance to the centre.
    if (d.data_type_count >= 3 && !nulls_kept && is_input_null(record.values[2])) return Verdict::null;
    r.line = d.line_column > 0 ? record.line : 0;
    if (d.extra_value_column > 0) r.extra = record.extra;
    return placement.place(r.x, r.y, i, j) ? Verdict::kept : Verdict::outside;
}

/// Counts a reading that was left out by its verdict.
void count_left_out(ObservationList& list, Verdict verdict) {
    if (verdict == Verdict::null) ++list.left_out_null;
    if (verdict == Verdict::outside) ++list.left_out_outside;
}

/// Whether the reading at `distance` from the centre of column (i, j) takes the bin: each bin keeps the
/// reading nearest to its centre, and of equal distances the first. A new bin is counted here.
bool takes_bin(ObservationBins& bins, int i, int j, double distance) {
    if (bins.bin_used(i, j) == 0) {
        ++bins.bin_total;
        bins.bin_used(i, j) = 1;
        return true;
    }
    return distance < bins.bin_value3(i, j);
}

void store_in_bin(ObservationBins& bins, int i, int j, const Reading& r, double distance) {
    bins.bin_x(i, j) = r.x;
    bins.bin_y(i, j) = r.y;
    bins.bin_z(i, j) = r.z;
    bins.bin_value1(i, j) = r.value1;
    bins.bin_value2(i, j) = r.value2;
    bins.bin_value3(i, j) = distance;
    bins.bin_extra(i, j) = r.extra;
}

/// Readings may be binned as they are read when no list of them is kept, none is lifted to a minimum
/// height (each lift is counted, so every reading would need its surface) and the surface has a value
/// wherever a reading can land: the mesh's top, or points closed round the mesh. Which reading wins a
/// bin then never depends on the surface, and only the winners need it.
bool bins_while_reading(const InversionDefinition& d) {
    return d.obs_data_file_type == 0 && d.values_per_cell == 1 && !(d.elevation_offsets[2] > 0) &&
           (d.topo_type != 0 || d.data_file_kinds[1] == 0);
}

/// The bins of a point file filled while it is read, in one pass, without holding its readings: the
/// survey stage then keeps forty thousand bins, not a million readings, and looks up the surface
/// under the winners alone. The tests, their order and the arithmetic are those of the listed path,
/// so the bins come out the same to the last bit.
class ReadingBinner : public LocationSink {
public:
    ReadingBinner(const Session& session, const AcceptedRange& range, float x_tolerance, float y_tolerance)
        : definition_(session.definition), range_empty_(range.empty()),
          placement_(session.mesh, range, x_tolerance, y_tolerance), x_tolerance_(x_tolerance),
          y_tolerance_(y_tolerance), nx_(session.mesh.nx), ny_(session.mesh.ny) {
        bins_.size_bins(nx_, ny_);
        bin_line_.assign(nx_ + 1, ny_ + 1, 0);
        line_names_.emplace_back();  // line 0: no label
    }

    void begin_line(int, std::string_view name) override { line_names_.emplace_back(name); }

    void take(const LocationRecord& record) override {
        if (range_empty_) {
            ++counts_.left_out_outside;
            return;
        }
        Reading r;
        int i = 0, j = 0;
        const Verdict verdict = condition_reading(definition_, placement_, record, r, i, j);
        if (verdict != Verdict::kept) return count_left_out(counts_, verdict);
        const double distance = placement_.distance_from_centre(r.x, r.y, i, j);
        ++counts_.obs_count;
        if (!takes_bin(bins_, i, j, distance)) return;
        store_in_bin(bins_, i, j, r, distance);
        bin_line_(i, j) = r.line;
    }

    /// Adds the surface under each bin's reading as the listed path adds it under every reading, and
    /// hands the bins and the counts to the session. False, with the session untouched, when the
    /// surface is not known to have a value under every place that takes readings: then the caller
    /// reads the file the listed way.
    bool finish(Session& session, int read_count) {
        const InversionDefinition& d = session.definition;
        const InversionMesh& mesh = session.mesh;
        if (mesh.nx != nx_ || mesh.ny != ny_) return false;
        const bool use_topography = d.topo_type == 0;
        if (use_topography &&
            !session.topography.covered.holds(placement_.x_low() - x_tolerance_, placement_.x_high() + x_tolerance_,
                                              placement_.y_low() - y_tolerance_, placement_.y_high() + y_tolerance_))
            return false;
        Array2<double> surfaces(nx_ + 1, ny_ + 1, mesh.z_nodes[1]);
        if (use_topography && !surfaces_under_bins(session.topography, surfaces)) return false;
        for (int j = 1; j <= ny_; ++j)
            for (int i = 1; i <= nx_; ++i) {
                if (bins_.bin_used(i, j) == 0) continue;
                if (d.sensor_height_type == 0) bins_.bin_z(i, j) += surfaces(i, j);
                if (d.line_column > 0) bins_.bin_label(i, j) = line_names_[static_cast<std::size_t>(bin_line_(i, j))];
            }

        ObservationBins& bins = session.bins;
        bins.bin_used = std::move(bins_.bin_used);
        bins.bin_x = std::move(bins_.bin_x);
        bins.bin_y = std::move(bins_.bin_y);
        bins.bin_z = std::move(bins_.bin_z);
        bins.bin_value1 = std::move(bins_.bin_value1);
        bins.bin_value2 = std::move(bins_.bin_value2);
        bins.bin_value3 = std::move(bins_.bin_value3);
        bins.bin_extra = std::move(bins_.bin_extra);
        bins.bin_label = std::move(bins_.bin_label);
        bins.bin_total = bins_.bin_total;
        ObservationList& list = session.readings;
        list.read_count = read_count;
        list.obs_count = counts_.obs_count;
        list.left_out_null = counts_.left_out_null;
        list.left_out_outside = counts_.left_out_outside;
        list.left_out_no_topography = 0;
        return true;
    }

private:
    /// The surface under each filled bin's reading, looked up row by row in blocks over the threads
    /// (a cursor's value never depends on where its walk began); false when one has none.
    bool surfaces_under_bins(const Topography& topography, Array2<double>& surfaces) const {
        std::atomic<bool> all_found{true};
        for_blocks(
            static_cast<std::size_t>(ny_),
            [&](std::size_t first, std::size_t last) {
                SurfaceLookup lookup(topography);
                for (int j = static_cast<int>(first) + 1; j <= static_cast<int>(last); ++j)
                    for (int step = 0; step < nx_; ++step) {
                        const int i = j % 2 == 1 ? step + 1 : nx_ - step;  // back and forth: short walks
                        if (bins_.bin_used(i, j) == 0) continue;
                        surfaces(i, j) = lookup.at(bins_.bin_x(i, j), bins_.bin_y(i, j));
                        if (is_null(surfaces(i, j))) all_found = false;
                    }
            },
            16);
        return all_found;
    }

    const InversionDefinition definition_;  // a copy: the reader may run on another thread
    const bool range_empty_;
    const CellPlacement placement_;
    const float x_tolerance_, y_tolerance_;
    const int nx_, ny_;
    ObservationBins bins_;
    Array2<int> bin_line_;
    std::vector<std::string> line_names_;
    ObservationList counts_;
};

/// A binner for the session's mesh and definition, placing readings as process_inversion_data does.
std::unique_ptr<ReadingBinner> binner_for(const Session& session) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    return std::make_unique<ReadingBinner>(session, accepted_range(session),
                                           node_tolerance(d.mesh_cell_size[0], mesh.x_nodes, mesh.nx),
                                           node_tolerance(d.mesh_cell_size[1], mesh.y_nodes, mesh.ny));
}

}  // namespace

struct ObservedReadAhead {
    KeptMessages dialogue;
    /// Binning while reading when the run allows it; otherwise the readings are read into `data`.
    std::unique_ptr<ReadingBinner> binner;
    int count = 0;
    LocationData data;
    LocationSummary summary;
    std::future<int> status;  // last: the reader ends before what it fills goes
    ~ObservedReadAhead() {
        if (status.valid()) status.wait();
    }
};

void read_observed_data_ahead(Session& session) {
    const InversionDefinition& d = session.definition;
    session.readings.read_ahead.reset();
    if (d.obs_data_file_type != 0 || worker_thread_count() < 2) return;
    PointTransform transform = d.coordinate_transform;
    update_point_transform(transform);
    auto ahead = std::make_shared<ObservedReadAhead>();
    if (bins_while_reading(d)) ahead->binner = binner_for(session);
    ObservedReadAhead* target = ahead.get();
    ahead->status = std::async(std::launch::async, [target, settings = observed_settings(d, transform)] {
        if (target->binner)
            return stream_locations_file(target->dialogue, settings, *target->binner, target->count, target->summary);
        return load_locations_file(target->dialogue, settings, target->data, target->summary);
    });
    session.readings.read_ahead = std::move(ahead);
}

namespace {

/// Conditions and bins every reading of `data`, looking up the surface under each, and keeps the list
/// when values_per_cell is not 1.
int bin_listed_readings(Session& session, const LocationData& data, const CellPlacement& placement,
                        const AcceptedRange& range) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    ObservationBins& bins = session.bins;
    ObservationList& list = session.readings;
    const int count = data.count;
    list.read_count = count;

    const bool keep_list = d.values_per_cell != 1;
    if (keep_list) {
        list.obs_values.assign(7, count, 0.0);
        list.obs_cells.assign(count, 2, 0);
        list.obs_labels.assign(count, 0);
        list.label_names = data.line_names;
    }
    list.obs_count = 0;
    if (count == 0) return 0;
    if (range.empty()) {
        list.left_out_outside = count;
        return 0;
    }

    const bool use_topography = d.topo_type == 0;
    const std::vector<double> surfaces =
        use_topography ? surfaces_under_readings(session.topography, placement, data) : std::vector<double>();
    const double mesh_top = mesh.z_nodes[1];
    const float minimum_height = d.elevation_offsets[2];
    static const std::string no_label;
    ProgressMeter progress(session.dialogue, count);

    for (int n = 1; n <= count; ++n) {
        // A percent spans ten thousand readings of a million: looking every 1024th is enough.
        if (count < 102400 || (n & 1023) == 1) progress.advance(n - 1);
        LocationRecord record;
        record.x = data.locations(n, 1);
        record.y = data.locations(n, 2);
        record.z = data.locations(n, 3);
        record.values = {data.values(n, 1), data.values(n, 2), data.values(n, 3)};
        if (d.line_column > 0) record.line = data.line_index[n];
        if (d.extra_value_column > 0) record.extra = data.extra_values[n];
        Reading r;
        int i = 0, j = 0;
        const Verdict verdict = condition_reading(d, placement, record, r, i, j);
        if (verdict != Verdict::kept) {
            count_left_out(list, verdict);
            continue;
        }

        double topography = mesh_top;
        if (use_topography) {
            topography = surfaces[static_cast<std::size_t>(n - 1)];
            if (is_null(topography)) {
                ++list.left_out_no_topography;
                continue;
            }
        }
        if (d.sensor_height_type == 0) r.z += topography;
        if (minimum_height > 0 && r.z - topography < minimum_height) {
            ++list.shift_count;
            list.shift_sum += topography + minimum_height - r.z;
            r.z = topography + minimum_height;
        }

        const double distance = placement.distance_from_centre(r.x, r.y, i, j);
        ++list.obs_count;
        if (keep_list) {  // the list was sized for every reading: k never passes count
            const std::size_t k = static_cast<std::size_t>(list.obs_count - 1);
            const std::size_t slot = static_cast<std::size_t>(count);
            double* values = list.obs_values.data() + k;
            values[0] = r.x;
            values[slot] = r.y;
            values[2 * slot] = r.z;
            values[3 * slot] = r.value1;
            values[4 * slot] = r.value2;
            values[5 * slot] = distance;
            values[6 * slot] = r.extra;
            list.obs_cells.data()[2 * k] = i;
            list.obs_cells.data()[2 * k + 1] = j;
            list.obs_labels.data()[k] = r.line;
        }
        if (!takes_bin(bins, i, j, distance)) continue;
        store_in_bin(bins, i, j, r, distance);
        if (d.line_column > 0) bins.bin_label(i, j) = r.line > 0 ? data.line_names[r.line] : no_label;
    }
    return 0;
}

int process_point_file(Session& session, const PointTransform& working_transform, const AcceptedRange& range,
                       float x_tolerance, float y_tolerance) {
    const InversionDefinition& d = session.definition;
    LocationData data;
    LocationSummary summary;
    bool read = false;
    if (const std::shared_ptr<ObservedReadAhead> ahead = std::move(session.readings.read_ahead)) {
        const int status = ahead->status.get();
        for (const std::string& message : ahead->dialogue.messages) session.dialogue.message_box(message);
        if (status < 0) return -1;
        if (ahead->binner) {
            if (ahead->binner->finish(session, ahead->count)) return 0;
        } else {
            data = std::move(ahead->data);
            read = true;
        }
    } else if (bins_while_reading(d)) {
        ReadingBinner binner(session, range, x_tolerance, y_tolerance);
        int count = 0;
        if (stream_locations_file(session.dialogue, observed_settings(d, working_transform), binner, count, summary) < 0)
            return -1;
        if (binner.finish(session, count)) return 0;
    }
    // The listed way: every reading read into memory, then each conditioned and binned.
    if (!read && load_locations_file(session, observed_settings(d, working_transform), data, summary) < 0) return -1;
    const CellPlacement placement(session.mesh, range, x_tolerance, y_tolerance);
    return bin_listed_readings(session, data, placement, range);
}

/// Reads the grid `name` for the area; -1 after the grid layer's message.
int read_area_grid(Session& session, const std::string& name, double x_min, double x_max, double y_min,
                   double y_max, GridWindow& window) {
    std::string grid_text;
    Array1<int> grid_ints(grid_int_count);
    Array1<double> grid_reals(grid_real_count);
    int status = 0;
    read_grid_header(session, name, window, grid_text, grid_ints, grid_reals, x_min, x_max, y_min, y_max, status);
    return status < 0 ? -1 : 0;
}

/// The centres of one mesh row, x_first..x_end - 1, in the grids' coordinates.
void row_centres(const InversionMesh& mesh, const PointTransform& transform, const AcceptedRange& range, int j,
                 std::vector<double>& x, std::vector<double>& y) {
    x.clear();
    y.clear();
    for (int i = range.x_first; i < range.x_end; ++i) {
        double cx = mesh.x_centres[i], cy = mesh.y_centres[j], cz = 0;
        if (transform.active) apply_point_transform(transform, local_to_map, cx, cy, cz);
        x.push_back(cx);
        y.push_back(cy);
    }
}

int process_grids(Session& session, const PointTransform& transform, const AcceptedRange& range) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    ObservationBins& bins = session.bins;
    ObservationList& list = session.readings;

    // The area of the mesh with one cell's margin, asked in the grids' own coordinates.
    double x_min = mesh.x_nodes[1] - mesh.dx[1], x_max = mesh.x_nodes[mesh.nx + 1] + mesh.dx[mesh.nx];
    double y_min = mesh.y_nodes[1] - mesh.dy[1], y_max = mesh.y_nodes[mesh.ny + 1] + mesh.dy[mesh.ny];
    if (transform.active) transform_grid_extents(transform, local_to_map, x_min, x_max, y_min, y_max);

    const int grid_count = std::min(std::max(d.data_type_count, 1), 3);
    std::vector<GridWindow> grids(static_cast<std::size_t>(grid_count));
    for (int g = 0; g < grid_count; ++g)
        if (read_area_grid(session, d.data_file_names[static_cast<std::size_t>(2 + g)], x_min, x_max, y_min, y_max,
                           grids[static_cast<std::size_t>(g)]) < 0)
            return -1;

    std::vector<double> x, y;
    std::vector<double> values[3];
    ProgressMeter progress(session.dialogue, mesh.ny);
    const bool use_topography = d.topo_type == 0;
    if (!range.empty()) {
        for (int j = range.y_first; j < range.y_end; ++j) {
            row_centres(mesh, transform, range, j, x, y);
            for (int g = 0; g < 3; ++g) values[g].assign(x.size(), null_value);
            for (int g = 0; g < grid_count; ++g)
                GEO_CELL_INTERPOLATION(grids[static_cast<std::size_t>(g)], x, y, values[g]);
            for (int i = range.x_first; i < range.x_end; ++i) {
                const std::size_t c = static_cast<std::size_t>(i - range.x_first);
                ++list.cells_sampled;
                if (is_null(values[0][c])) {
                    ++list.left_out_null;
                    continue;
                }
                double elevation = d.elevation_offsets[0];
                if (d.sensor_height_type != 1)
                    elevation += use_topography ? static_cast<double>(session.topography.topo_grid(i, j))
                                                : mesh.z_nodes[1];
                ++bins.bin_total;
                bins.bin_used(i, j) = 1;
                bins.bin_x(i, j) = mesh.x_centres[i];
                bins.bin_y(i, j) = mesh.y_centres[j];
                bins.bin_z(i, j) = elevation;
                bins.bin_value1(i, j) = regional_value(values[0][c], d);
                bins.bin_value2(i, j) = values[1][c];
                bins.bin_value3(i, j) = values[2][c];
            }
            progress.advance(j - 1);
        }
    }
    grids.clear();  // the parts read live in memory: nothing is left on disc

    const std::string& sensor_name = d.data_file_names[5];
    if (sensor_name.empty() || range.empty()) return 0;
    GridWindow sensor;
    if (read_area_grid(session, sensor_name, x_min, x_max, y_min, y_max, sensor) < 0) return -1;
    const float minimum_height = d.elevation_offsets[2];
    for (int j = range.y_first; j < range.y_end; ++j) {
        row_centres(mesh, transform, range, j, x, y);
        values[0].assign(x.size(), null_value);
        GEO_CELL_INTERPOLATION(sensor, x, y, values[0]);
        for (int i = range.x_first; i < range.x_end; ++i) {
            if (bins.bin_used(i, j) <= 0) continue;
            const double height = values[0][static_cast<std::size_t>(i - range.x_first)];
            if (is_null(height)) {  // no elevation, no reading; bin_total keeps counting it
                bins.bin_used(i, j) = 0;
                ++list.left_out_null;
                continue;
            }
            double& z = bins.bin_z(i, j);
            z += height;
            if (minimum_height > 0) {
                const double topography =
                    use_topography ? static_cast<double>(session.topography.topo_grid(i, j)) : mesh.z_nodes[1];
                if (z - topography < minimum_height) {
                    ++list.shift_count;
                    list.shift_sum += topography + minimum_height - z;
                    z = topography + minimum_height;
                }
            }
        }
    }
    return 0;
}

}  // namespace

int process_inversion_data(Session& session, const PointTransform& working_transform) {
    try {
        session.dialogue.progress(0);
        const InversionDefinition& d = session.definition;
        const InversionMesh& mesh = session.mesh;
        ObservationBins& bins = session.bins;
        ObservationList& list = session.readings;

        if (bins.bin_used.rows() != mesh.nx + 1 || bins.bin_used.columns() != mesh.ny + 1)
            bins.size_bins(mesh.nx, mesh.ny);
        bins.bin_total = 0;
        list.obs_count = 0;
        list.read_count = 0;
        list.shift_count = 0;
        list.shift_sum = 0;
        list.left_out_null = list.left_out_outside = list.left_out_no_topography = list.cells_sampled = 0;

        const float x_tolerance = node_tolerance(d.mesh_cell_size[0], mesh.x_nodes, mesh.nx);
        const float y_tolerance = node_tolerance(d.mesh_cell_size[1], mesh.y_nodes, mesh.ny);
        const AcceptedRange range = accepted_range(session);

        const int status = d.obs_data_file_type == 1
                               ? process_grids(session, working_transform, range)
                               : process_point_file(session, working_transform, range, x_tolerance, y_tolerance);
        if (status < 0) return -1;

        if (list.shift_count > 0) {
            session.progress_report.report_line(
                "Number of data points shifted: " + format_picture(list.shift_count, "0") +
                " average shift: " + format_picture(list.shift_sum / list.shift_count, "0.0") + "\r\n");
        }
        if (bins.bin_total < 10) {
            session.dialogue.message_box("Warning: The number of inversion data defined is only " +
                                         format_picture(bins.bin_total, "0"));
            const bool grids = d.obs_data_file_type == 1;
            session.dialogue.message_box(left_out_summary(list, d.data_file_names[grids ? 2 : 0], grids));
        }
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while processing the inversion data: " +
                                     std::string(fault.what()));
        return -1;
    }
}

int process_inversion_data(Session& session) {
    PointTransform transform = session.definition.coordinate_transform;
    update_point_transform(transform);
    return process_inversion_data(session, transform);
}

}  // namespace invsetup
