// src/data/observed_data.cpp - conditioning and binning of the observed data.
#include "data/observed_data.h"

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

struct ObservedReadAhead {
    KeptMessages dialogue;
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
    ObservedReadAhead* target = ahead.get();
    ahead->status = std::async(std::launch::async, [target, settings = observed_settings(d, transform)] {
        return load_locations_file(target->dialogue, settings, target->data, target->summary);
    });
    session.readings.read_ahead = std::move(ahead);
}

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
class CellPlacement {
public:
    CellPlacement(const InversionMesh& mesh, const AcceptedRange& range, float x_tolerance, float y_tolerance)
        : mesh_(mesh), x_low_(mesh.x_nodes[range.x_first]), x_high_(mesh.x_nodes[range.x_end]),
          y_low_(mesh.y_nodes[range.y_first]), y_high_(mesh.y_nodes[range.y_end]), x_tolerance_(x_tolerance),
          y_tolerance_(y_tolerance) {}

    /// False when (x, y) lies outside the columns that take readings; otherwise the cell (i, j).
    bool place(double& x, double& y, int& i, int& j) const {
        if (!(x >= x_low_ && x < x_high_ && y >= y_low_ && y < y_high_)) return false;
        i = interval_search(mesh_.x_nodes, x);
        j = interval_search(mesh_.y_nodes, y);
        // The forward calculation can't take a reading on a cell's edge.
        if (std::fabs(x - mesh_.x_nodes[i]) < x_tolerance_) x += x_tolerance_;
        if (std::fabs(x - mesh_.x_nodes[i + 1]) < x_tolerance_) x -= x_tolerance_;
        if (std::fabs(y - mesh_.y_nodes[j]) < y_tolerance_) y += y_tolerance_;
        if (std::fabs(y - mesh_.y_nodes[j + 1]) < y_tolerance_) y -= y_tolerance_;
        return true;
    }

private:
    const InversionMesh& mesh_;
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
    const std::string* label = nullptr;
};

int process_point_file(Session& session, const PointTransform& working_transform, const AcceptedRange& range,
                       float x_tolerance, float y_tolerance) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    ObservationBins& bins = session.bins;
    ObservationList& list = session.readings;

    LocationData data;
    LocationSummary summary;
    if (const std::shared_ptr<ObservedReadAhead> ahead = std::move(list.read_ahead)) {
        const int status = ahead->status.get();
        for (const std::string& message : ahead->dialogue.messages) session.dialogue.message_box(message);
        if (status < 0) return -1;
        data = std::move(ahead->data);
    } else if (load_locations_file(session, observed_settings(d, working_transform), data, summary) < 0) {
        return -1;
    }
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

    const bool nulls_kept = d.integration_interval > 0;
    const bool has_z = d.data_z_columns[0] > 0;
    const bool use_topography = d.topo_type == 0;
    const CellPlacement placement(mesh, range, x_tolerance, y_tolerance);
    const std::vector<double> surfaces =
        use_topography ? surfaces_under_readings(session.topography, placement, data) : std::vector<double>();
    const double mesh_top = mesh.z_nodes[1];
    const float minimum_height = d.elevation_offsets[2];
    static const std::string no_label;
    ProgressMeter progress(session.dialogue, count);

    for (int n = 1; n <= count; ++n) {
        // A percent spans ten thousand readings of a million: looking every 1024th is enough.
        if (count < 102400 || (n & 1023) == 1) progress.advance(n - 1);
        Reading r;
        r.x = data.locations(n, 1);
        r.y = data.locations(n, 2);
        r.z = 0;
        if (!std::isfinite(r.x) || !std::isfinite(r.y)) {
            ++list.left_out_null;
            continue;
        }
        if (has_z) {
            r.z = data.locations(n, 3);
            if (is_input_null(r.z)) {
                ++list.left_out_null;
                continue;
            }
        }
        r.z += d.elevation_offsets[0];

        const double v1 = data.values(n, 1);
        if (is_input_null(v1)) {
            if (!nulls_kept) {
                ++list.left_out_null;
                continue;
            }
            r.value1 = null_value;
        } else {
            r.value1 = regional_value(v1, d);
        }
        if (d.data_type_count >= 2) {
            const double v2 = data.values(n, 2);
            if (is_input_null(v2)) {
                if (!nulls_kept) {
                    ++list.left_out_null;
                    continue;
                }
                r.value2 = null_value;
            } else {
                r.value2 = v2;
            }
        }
        // The third value is read only to be tested: its slot carries the distance to the centre.
        if (d.data_type_count >= 3 && !nulls_kept && is_input_null(data.values(n, 3))) {
            ++list.left_out_null;
            continue;
        }
        const int line = d.line_column > 0 ? data.line_index[n] : 0;  // 0 before the first line name
        r.label = line > 0 ? &data.line_names[line] : &no_label;
        if (d.extra_value_column > 0) r.extra = data.extra_values[n];

        int i = 0, j = 0;
        if (!placement.place(r.x, r.y, i, j)) {
            ++list.left_out_outside;
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

        const double east = r.x - mesh.x_centres[i], north = r.y - mesh.y_centres[j];
        const double distance = std::sqrt(east * east + north * north);
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
            list.obs_labels.data()[k] = line;
        }

        // Each bin keeps the reading nearest to its centre; of equal distances the first.
        if (bins.bin_used(i, j) == 0) {
            ++bins.bin_total;
            bins.bin_used(i, j) = 1;
        } else if (!(distance < bins.bin_value3(i, j))) {
            continue;
        }
        bins.bin_x(i, j) = r.x;
        bins.bin_y(i, j) = r.y;
        bins.bin_z(i, j) = r.z;
        bins.bin_value1(i, j) = r.value1;
        bins.bin_value2(i, j) = r.value2;
        bins.bin_value3(i, j) = distance;
        bins.bin_extra(i, j) = r.extra;
        if (d.line_column > 0) bins.bin_label(i, j) = *r.label;
    }
    return 0;
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
            std::string progress = session.form.text("Text_progress");
            progress += "Number of data points shifted: " + format_picture(list.shift_count, "0") +
                        " average shift: " + format_picture(list.shift_sum / list.shift_count, "0.0") + "\r\n";
            session.form.set_text("Text_progress", std::move(progress));
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
