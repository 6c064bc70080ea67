// src/data/topography.cpp - gridding the topography onto the mesh, from points or from a grid, and
// marking the air cells.
#include "data/topography.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <string_view>

#include "data/location_file.h"
#include "grids/grid_access.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

constexpr const char* too_few_points = "The topo data file did not contain enough data points to be meaningful";
constexpr const char* colinear_points = "All Points in the topography file are colinear";

/// The dummy elevations of point files: -99999, -9999 and -999, each within 1.
bool is_dummy_elevation(double z) {
    return is_null(z) || std::abs(z + 99999.0) < 1.0 || std::abs(z + 9999.0) < 1.0 || std::abs(z + 999.0) < 1.0;
}

void show_label(Session& session, const char* text) {
    session.progress_report.report_stage(text);
    session.dialogue.do_events();
}

/// Fills topo_grid, topo_cell and topo_nodes from raw elevations at the centres (row by row, i
/// fastest) and at the nodes (the same), adding the offset and making the shift.
void store_surface(Session& session, const std::vector<double>& centre_values, const std::vector<double>& node_values) {
    const InversionMesh& mesh = session.mesh;
    Topography& topography = session.topography;
    const double offset = session.definition.elevation_offsets[1];
    const bool shift = session.definition.topo_shift_option != 0;
    const double tolerance = level_tolerance(mesh);
    topography.surface_offset = static_cast<float>(offset);
    topography.size_surface(mesh.nx, mesh.ny);
    std::size_t k = 0;
    for (int j = 1; j <= mesh.ny; ++j)
        for (int i = 1; i <= mesh.nx; ++i, ++k) {
            double elevation = centre_values[k];
            int air_cells = 0;
            if (is_null(elevation)) {
                topography.topo_grid(i, j) = null_value_single;
            } else {
                elevation += offset;
                place_on_mesh_column(mesh.z_nodes, mesh.nz, shift, tolerance, elevation, air_cells);
                topography.topo_grid(i, j) = static_cast<float>(elevation);
            }
            topography.topo_cell(i, j) = air_cells;
        }
    k = 0;
    for (int j = 1; j <= mesh.ny + 1; ++j)
        for (int i = 1; i <= mesh.nx + 1; ++i, ++k) {
            double elevation = node_values[k];
            if (is_null(elevation)) {
                topography.topo_nodes(i, j) = null_value_single;
                continue;
            }
            elevation += offset;
            int air_cells = 0;
            place_on_mesh_column(mesh.z_nodes, mesh.nz, shift, tolerance, elevation, air_cells);
            topography.topo_nodes(i, j) = static_cast<float>(elevation);
        }
}

/// The centres (row by row, i fastest) and then the nodes, as two lists of x and y. Rows run
/// back and forth so that each point lies next to the one before: the triangulation's search
/// then walks one or two triangles per point.
void centre_and_node_points(const InversionMesh& mesh, std::vector<double>& x, std::vector<double>& y,
                            std::vector<std::size_t>& order, std::size_t& centre_count) {
    centre_count = static_cast<std::size_t>(mesh.nx) * static_cast<std::size_t>(mesh.ny);
    const std::size_t node_count = static_cast<std::size_t>(mesh.nx + 1) * static_cast<std::size_t>(mesh.ny + 1);
    x.clear();
    y.clear();
    order.clear();
    x.reserve(centre_count + node_count);
    y.reserve(centre_count + node_count);
    order.reserve(centre_count + node_count);
    auto add_rows = [&](const Array1<double>& xs, const Array1<double>& ys, int columns, int rows, std::size_t base) {
        for (int j = 1; j <= rows; ++j)
            for (int step = 0; step < columns; ++step) {
                const int i = j % 2 == 1 ? step + 1 : columns - step;
                x.push_back(xs[i]);
                y.push_back(ys[j]);
                order.push_back(base + static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(columns) +
                                static_cast<std::size_t>(i - 1));
            }
    };
    add_rows(mesh.x_centres, mesh.y_centres, mesh.nx, mesh.ny, 0);
    add_rows(mesh.x_nodes, mesh.y_nodes, mesh.nx + 1, mesh.ny + 1, centre_count);
}

}  // namespace

void Topography::size_surface(int nx, int ny) {
    topo_grid.assign(nx, ny, 0.0f);
    topo_nodes.assign(nx + 1, ny + 1, 0.0f);
    topo_cell.assign(nx, ny, 0);
}

void Topography::clear() {
    topo_grid.assign(1, 1);
    topo_nodes.assign(1, 1);
    topo_cell.assign(1, 1);
    topo_point_count = 0;
    topo_z.assign(1, 0.0);
    points_extent = PlanExtent{};
    covered = PlanExtent{};
    triangulation.clear();
    surface_grid = GridWindow{};
    surface_transform = PointTransform{};
    surface_offset = 0;
}

SurfaceLookup::SurfaceLookup(const Topography& topography) : topography_(topography) {
    if (!topography.triangulation.empty()) cursor_.emplace(topography.triangulation);
}

double SurfaceLookup::at(double x, double y) {
    double surface = null_value;
    if (cursor_) {
        surface = cursor_->interpolate(x, y, topography_.topo_z);
    } else if (!topography_.surface_grid.values.empty()) {
        // The same lookup as the cells': in the grid's coordinates, the value brought back to the mesh's.
        const PointTransform& transform = topography_.surface_transform;
        double map_x = x, map_y = y, unused = 0;
        if (transform.active) apply_point_transform(transform, local_to_map, map_x, map_y, unused);
        GEO_CELL_INTERPOLATION(topography_.surface_grid, std::span<const double>(&map_x, 1),
                               std::span<const double>(&map_y, 1), std::span<double>(&surface, 1));
        if (!is_null(surface) && transform.active)
            apply_point_transform(transform, map_to_local, map_x, map_y, surface);
    }
    return is_null(surface) ? null_value : surface + topography_.surface_offset;
}

double topo_elevation_at(const Topography& topography, double x, double y) {
    return SurfaceLookup(topography).at(x, y);
}

void place_on_mesh_column(const Array1<double>& z_nodes, int nz, bool shift, double tolerance, double& elevation,
                          int& air_cells) {
    // z_nodes fall: the nodes above the surface come first.
    const double* first = z_nodes.data();
    const double* last = first + nz + 1;
    const double level = elevation + tolerance;
    const double* at_or_below = std::partition_point(first, last, [level](double z) { return z > level; });
    if (shift && at_or_below != last) elevation = *at_or_below;
    // Cells 1..n have their top node above the surface; node n + 1 is the first at or below it.
    air_cells = std::min(static_cast<int>(at_or_below - first), nz);
}

namespace {

/// The topography points that make the surface, gathered one at a time in file order: those within one
/// cell of the mesh and without a dummy elevation. Only these are kept, as numbered points and their
/// elevations, so that a file read straight into it never holds its readings a second time.
class SurfacePoints {
public:
    explicit SurfacePoints(const InversionMesh& mesh)
        : x_low_(mesh.x_nodes[1] - mesh.dx[1]), x_high_(mesh.x_nodes[mesh.nx + 1] + mesh.dx[mesh.nx]),
          y_low_(mesh.y_nodes[1] - mesh.dy[1]), y_high_(mesh.y_nodes[mesh.ny + 1] + mesh.dy[mesh.ny]) {}

    void take(double x, double y, double z) {
        if (!(x >= x_low_ && x <= x_high_ && y >= y_low_ && y <= y_high_) || is_dummy_elevation(z)) return;
        points_.push_back({x, y, static_cast<int>(points_.size())});
        elevations_.push_back(z);
        sum_ += z;
        extent_.include(x, y);
    }

    /// The surface from the points gathered; see grid_topo_from_points.
    int grid(Session& session);

private:
    double x_low_, x_high_, y_low_, y_high_;
    std::vector<NumberedPoint> points_;
    std::vector<double> elevations_;
    double sum_ = 0;
    PlanExtent extent_;
};

int SurfacePoints::grid(Session& session) {
    Topography& topography = session.topography;
    const int kept = static_cast<int>(points_.size());
    if (kept <= 4) {
        session.dialogue.message_box(too_few_points);
        topography.clear();
        return -1;
    }
    // The closing points would hide readings that all lie on one line: test those alone.
    if (points_are_colinear(points_)) {
        session.dialogue.message_box(colinear_points);
        topography.clear();
        return -1;
    }
    const double mean = sum_ / kept;
    // Four closing points beyond the corners of the area the readings may cover: every centre and
    // node then lies well inside the hull, and the readings keep their own triangles.
    const double x_margin = x_high_ - x_low_, y_margin = y_high_ - y_low_;
    for (double x : {x_low_ - x_margin, x_high_ + x_margin})
        for (double y : {y_low_ - y_margin, y_high_ + y_margin}) {
            points_.push_back({x, y, static_cast<int>(points_.size())});
            elevations_.push_back(mean);
        }
    topography.points_extent = extent_;
    topography.covered = PlanExtent{};
    topography.covered.include(x_low_ - x_margin, y_low_ - y_margin);
    topography.covered.include(x_high_ + x_margin, y_high_ + y_margin);
    topography.topo_point_count = static_cast<int>(points_.size());
    topography.topo_z = std::move(elevations_);
    if (topography.triangulation.build(std::move(points_)) == triangulation_colinear) {
        session.dialogue.message_box(colinear_points);
        topography.clear();
        return -1;
    }

    show_label(session, "Interpolate topo values");
    const InversionMesh& mesh = session.mesh;
    std::vector<double> x, y;
    std::vector<std::size_t> order;
    std::size_t centre_count = 0;
    centre_and_node_points(mesh, x, y, order, centre_count);
    std::vector<double> walked(x.size());
    topography.triangulation.interpolate_many(x, y, topography.topo_z, walked);
    std::vector<double> centre_values(centre_count), node_values(x.size() - centre_count);
    for (std::size_t k = 0; k < order.size(); ++k) {
        if (order[k] < centre_count) centre_values[order[k]] = walked[k];
        else node_values[order[k] - centre_count] = walked[k];
    }
    store_surface(session, centre_values, node_values);
    return 0;
}

/// Hands each reading of the topography file to the surface's points as it is read.
class SurfacePointSink : public LocationSink {
public:
    explicit SurfacePointSink(SurfacePoints& points) : points_(points) {}
    void begin_line(int, std::string_view) override {}
    void take(const LocationRecord& record) override { points_.take(record.x, record.y, record.z); }

private:
    SurfacePoints& points_;
};

}  // namespace

void PlanExtent::include(double x, double y) {
    if (empty()) {
        x_low = x_high = x;
        y_low = y_high = y;
        return;
    }
    x_low = std::min(x_low, x);
    x_high = std::max(x_high, x);
    y_low = std::min(y_low, y);
    y_high = std::max(y_high, y);
}

bool PlanExtent::holds(double x0, double x1, double y0, double y1) const {
    return !empty() && x_low <= x0 && x1 <= x_high && y_low <= y0 && y1 <= y_high;
}

int grid_topo_from_points(Session& session, int count, const Array2<double>& locations) {
    try {
        session.dialogue.progress(0);
        SurfacePoints points(session.mesh);
        for (int n = 1; n <= count; ++n) points.take(locations(n, 1), locations(n, 2), locations(n, 3));
        return points.grid(session);
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault_reason_text(fault));
        session.topography.clear();
        return -1;
    }
}

int grid_topo_from_file(Session& session, const std::string& file_name) {
    Topography& topography = session.topography;
    try {
        show_label(session, "Loading grid data");
        const InversionMesh& mesh = session.mesh;
        const PointTransform& transform = session.definition.coordinate_transform;
        double x_min = mesh.x_nodes[1] - mesh.dx[1];
        double x_max = mesh.x_nodes[mesh.nx + 1] + mesh.dx[mesh.nx];
        double y_min = mesh.y_nodes[1] - mesh.dy[1];
        double y_max = mesh.y_nodes[mesh.ny + 1] + mesh.dy[mesh.ny];
        if (transform.active) transform_grid_extents(transform, local_to_map, x_min, x_max, y_min, y_max);

        GridWindow window;
        std::string grid_text;
        Array1<int> grid_ints;
        Array1<double> grid_reals;
        int status = 0;
        read_grid_header(session, file_name, window, grid_text, grid_ints, grid_reals, x_min, x_max, y_min, y_max,
                         status);
        if (status < 0) return -1;

        std::vector<double> x, y;
        std::vector<std::size_t> order;
        std::size_t centre_count = 0;
        centre_and_node_points(mesh, x, y, order, centre_count);
        std::vector<double> map_x = x, map_y = y;
        if (transform.active)
            for (std::size_t k = 0; k < x.size(); ++k) {
                double z = 0;
                apply_point_transform(transform, local_to_map, map_x[k], map_y[k], z);
            }
        std::vector<double> values(x.size());
        GEO_CELL_INTERPOLATION(window, map_x, map_y, values);
        std::string ignored;
        remove_temporary_grid(session.grids.temporary_grid_name, ignored);

        // Elevations in the mesh's own system, and their mean to stand in where the grid has none.
        double sum = 0;
        long present = 0;
        for (std::size_t k = 0; k < values.size(); ++k) {
            if (is_null(values[k])) continue;
            if (transform.active) apply_point_transform(transform, map_to_local, map_x[k], map_y[k], values[k]);
            sum += values[k];
            ++present;
        }
        if (present == 0) {
            session.dialogue.message_box("The topo grid file has no values over the mesh");
            return -1;
        }
        const double mean = sum / static_cast<double>(present);
        std::vector<double> centre_values(centre_count), node_values(x.size() - centre_count);
        for (std::size_t k = 0; k < order.size(); ++k) {
            const double value = is_null(values[k]) ? mean : values[k];
            if (order[k] < centre_count) centre_values[order[k]] = value;
            else node_values[order[k] - centre_count] = value;
        }
        topography.topo_point_count = 0;
        topography.topo_z.clear();
        topography.points_extent = PlanExtent{};
        topography.covered = PlanExtent{};
        topography.triangulation.clear();
        store_surface(session, centre_values, node_values);
        // The readings take their surface from the same grid, by the same rule, later in the run.
        topography.surface_grid = std::move(window);
        topography.surface_transform = transform;
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("The topography grid " + file_name + " could not be read: " + fault_reason_text(fault));
        return -1;
    }
}

int grid_topography(Session& session) {
    const InversionDefinition& definition = session.definition;
    if (definition.data_file_kinds[1] != 0) {
        session.progress_report.report_bar();
        return grid_topo_from_file(session, definition.data_file_names[1]);
    }
    // One pass over the file straight into the surface's points: a counting pass and the whole file's
    // readings in arrays would cost a second read and the readings twice in memory.
    session.dialogue.progress(0);
    int count = 0;
    LocationSummary summary;
    std::optional<SurfacePoints> points;
    try {
        points.emplace(session.mesh);
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault_reason_text(fault));
        return -1;
    }
    SurfacePointSink sink(*points);
    if (stream_locations_file(session.dialogue, location_settings(definition, 1), sink, count, summary) < 0)
        return -1;
    if (count <= 0) {
        session.dialogue.message_box(too_few_points);
        return -1;
    }
    show_label(session, "Grid topo data");
    session.progress_report.report_bar();
    try {
        return points->grid(session);
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault_reason_text(fault));
        session.topography.clear();
        return -1;
    }
}

int process_inversion_topo(Session& session) {
    try {
        InversionMesh& mesh = session.mesh;
        const Topography& topography = session.topography;
        ObservationBins& bins = session.bins;
        const bool lift = session.definition.inversion_method != method_zarninv3d && bins.bin_used.rows() > 0;
        const double tolerance = level_tolerance(mesh);
        session.dialogue.progress(0);
        ProgressMeter progress(session.dialogue, static_cast<double>(mesh.nx) * mesh.ny);
        long done = 0;
        for (int j = 1; j <= mesh.ny; ++j)
            for (int i = 1; i <= mesh.nx; ++i) {
                const int air_cells = topography.topo_cell(i, j);
                const int top = air_cells > mesh.nz ? mesh.nz + 1 : air_cells + 1;
                for (int k = 1; k < top; ++k) mesh.cell_state_at(i, j, k) = -1.0f;
                if (lift && bins.bin_used(i, j) != 0) {
                    // The forward programs need each reading above the ground cells of its column.
                    const double lowest = mesh.z_nodes[top] + 0.1;
                    if (lowest > bins.bin_z(i, j) + tolerance) bins.bin_z(i, j) = lowest;
                }
                progress.advance(++done);
            }
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault_reason_text(fault));
        return -1;
    }
}

}  // namespace invsetup
