// src/data/topography.cpp - gridding the topography onto the mesh, from points or from a grid, and
// marking the air cells.
#include "data/topography.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "data/location_file.h"
#include "grids/grid_access.h"
#include "session.h"
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
    session.form.set_caption("Label_progress", no_index, text);
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
    topo_x.assign(1, 0.0);
    topo_y.assign(1, 0.0);
    topo_z.assign(1, 0.0);
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

int grid_topo_from_points(Session& session, int count, const Array2<double>& locations) {
    Topography& topography = session.topography;
    try {
        const InversionMesh& mesh = session.mesh;
        const double x_low = mesh.x_nodes[1] - mesh.dx[1];
        const double x_high = mesh.x_nodes[mesh.nx + 1] + mesh.dx[mesh.nx];
        const double y_low = mesh.y_nodes[1] - mesh.dy[1];
        const double y_high = mesh.y_nodes[mesh.ny + 1] + mesh.dy[mesh.ny];
        auto counts = [&](int n) {
            const double x = locations(n, 1), y = locations(n, 2);
            return x >= x_low && x <= x_high && y >= y_low && y <= y_high && !is_dummy_elevation(locations(n, 3));
        };

        session.dialogue.progress(0);
        ProgressMeter progress(session.dialogue, count);
        int kept = 0;
        double sum = 0;
        for (int n = 1; n <= count; ++n) {
            if (counts(n)) {
                ++kept;
                sum += locations(n, 3);
            }
            progress.advance(n);
        }
        if (kept <= 4) {
            session.dialogue.message_box(too_few_points);
            topography.clear();
            return -1;
        }
        const double mean = sum / kept;

        // Four closing points beyond the corners of the area the readings may cover: every
        // centre and node then lies well inside the hull, and the readings keep their own triangles.
        constexpr int closing_count = 4;
        topography.topo_x.clear();
        topography.topo_y.clear();
        topography.topo_z.clear();
        topography.topo_x.reserve(static_cast<std::size_t>(kept + closing_count));
        topography.topo_y.reserve(static_cast<std::size_t>(kept + closing_count));
        topography.topo_z.reserve(static_cast<std::size_t>(kept + closing_count));
        for (int n = 1; n <= count; ++n)
            if (counts(n)) {
                topography.topo_x.push_back(locations(n, 1));
                topography.topo_y.push_back(locations(n, 2));
                topography.topo_z.push_back(locations(n, 3));
            }
        // The closing points would hide readings that all lie on one line: test those alone.
        if (points_are_colinear(topography.topo_x, topography.topo_y)) {
            session.dialogue.message_box(colinear_points);
            topography.clear();
            return -1;
        }
        const double x_margin = x_high - x_low, y_margin = y_high - y_low;
        for (double x : {x_low - x_margin, x_high + x_margin})
            for (double y : {y_low - y_margin, y_high + y_margin}) {
                topography.topo_x.push_back(x);
                topography.topo_y.push_back(y);
                topography.topo_z.push_back(mean);
            }
        topography.topo_point_count = static_cast<int>(topography.topo_x.size());

        int status = 0;
        DELTRI(topography.topo_point_count, topography.topo_x.data(), topography.topo_y.data(), topography.triangulation,
               status);
        if (status == triangulation_colinear) {
            session.dialogue.message_box(colinear_points);
            topography.clear();
            return -1;
        }

        show_label(session, "Interpolate topo values");
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
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault.what());
        topography.clear();
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
        topography.topo_x.clear();
        topography.topo_y.clear();
        topography.topo_z.clear();
        topography.triangulation.clear();
        store_surface(session, centre_values, node_values);
        // The readings take their surface from the same grid, by the same rule, later in the run.
        topography.surface_grid = std::move(window);
        topography.surface_transform = transform;
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box(fault.what());
        return -1;
    }
}

int grid_topography(Session& session) {
    const InversionDefinition& definition = session.definition;
    if (definition.data_file_kinds[1] != 0) {
        session.form.set_visible("ProgressBar_load_ubc_model", true);
        return grid_topo_from_file(session, definition.data_file_names[1]);
    }
    const LocationFileSettings settings = location_settings(definition, 1);
    LocationData data;
    LocationSummary summary;
    if (read_locations_file(session, settings, location_count_pass, data, summary) < 0) return -1;
    if (data.count <= 0) {
        session.dialogue.message_box(too_few_points);
        return -1;
    }
    if (read_locations_file(session, settings, location_fill_pass, data, summary) < 0) return -1;
    show_label(session, "Grid topo data");
    session.form.set_visible("ProgressBar_load_ubc_model", true);
    return grid_topo_from_points(session, data.count, data.locations);
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
        session.dialogue.message_box(fault.what());
        return -1;
    }
}

}  // namespace invsetup
