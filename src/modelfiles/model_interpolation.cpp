// src/modelfiles/model_interpolation.cpp - sampling a model at the centres of another mesh's cells.
#include "modelfiles/model_interpolation.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "grids/interval_search.h"
#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/model_file_read.h"
#include "support/dialogue.h"
#include "support/numbers.h"

namespace invsetup {

float sinh_value(float v) { return (std::exp(v) - std::exp(-v)) / 2.0f; }

float asinh_value(float v) {
    const float magnitude = std::fabs(v);
    const float result = std::log(magnitude + std::sqrt(v * v + 1.0f));
    return v < 0 ? -result : result;
}

namespace {

/// Rising offsets: the largest index (from 1) whose offset is at or below v, kept to 1..count - 1, so
/// that it names a cell between two nodes.
int cell_before(const std::vector<double>& offsets, double v) {
    const int count = static_cast<int>(offsets.size());
    if (count < 2) return 1;
    const int after = static_cast<int>(std::upper_bound(offsets.begin(), offsets.end(), v) - offsets.begin());
    return std::clamp(after, 1, std::max(1, count - 1));
}

/// The fractions (fx, fy) at which the bilinear blend of the corners a, b (along the row), c, d (the
/// next row) meets the point p; Newton's method from the cell's middle, exact in one step for a
/// parallelogram. False when the cell is degenerate there.
bool blend_fractions(const std::array<double, 2>& a, const std::array<double, 2>& b, const std::array<double, 2>& c,
                     const std::array<double, 2>& d, double x, double y, double& fx, double& fy) {
    const double ex = b[0] - a[0], ey = b[1] - a[1];
    const double gx = c[0] - a[0], gy = c[1] - a[1];
    const double hx = a[0] - b[0] - c[0] + d[0], hy = a[1] - b[1] - c[1] + d[1];
    fx = fy = 0.5;
    for (int step = 0; step < 30; ++step) {
        const double rx = a[0] + fx * ex + fy * gx + fx * fy * hx - x;
        const double ry = a[1] + fx * ey + fy * gy + fx * fy * hy - y;
        const double j11 = ex + fy * hx, j12 = gx + fx * hx;
        const double j21 = ey + fy * hy, j22 = gy + fx * hy;
        const double det = j11 * j22 - j12 * j21;
        if (det == 0 || !std::isfinite(det)) return false;
        const double du = (j22 * rx - j12 * ry) / det;
        const double dv = (j11 * ry - j21 * rx) / det;
        fx -= du;
        fy -= dv;
        if (std::fabs(du) + std::fabs(dv) < 1e-13) break;
    }
    return std::isfinite(fx) && std::isfinite(fy);
}

}  // namespace

TrapezoidLookup::TrapezoidLookup(const LoadedMesh& mesh) : mesh_(mesh) {
    const MeshTrapezoid& t = mesh.trapezoid;
    along_.resize(static_cast<std::size_t>(mesh.nx) + 1);
    across_.resize(static_cast<std::size_t>(mesh.ny) + 1);
    for (int i = 1; i <= mesh.nx + 1; ++i) along_[static_cast<std::size_t>(i - 1)] = t.x_table(i, 3);
    for (int j = 1; j <= mesh.ny + 1; ++j) across_[static_cast<std::size_t>(j - 1)] = t.y_table(j, 4);
    // A mesh whose columns run the other way round has falling offsets: no guess there, the walk
    // starts from the first cell.
    if (!std::is_sorted(along_.begin(), along_.end())) along_.clear();
    if (!std::is_sorted(across_.begin(), across_.end())) across_.clear();
}

bool TrapezoidLookup::find(double x, double y, TrapezoidCell& cell) const {
    const MeshTrapezoid& t = mesh_.trapezoid;
    const int nx = mesh_.nx, ny = mesh_.ny;
    if (nx < 1 || ny < 1) return false;
    const double ex = x - t.nodes(1, 1)[0], ey = y - t.nodes(1, 1)[1];
    int i = cell_before(along_, ex * t.cos_rotation + ey * t.sin_rotation);
    int j = cell_before(across_, -ex * t.sin_rotation + ey * t.cos_rotation);
    constexpr double tolerance = 1e-9;
    for (int step = 0; step < nx + ny + 4; ++step) {
        double fx = 0, fy = 0;
        if (!blend_fractions(t.nodes(i, j), t.nodes(i + 1, j), t.nodes(i, j + 1), t.nodes(i + 1, j + 1), x, y, fx, fy))
            return false;
        const int di = fx < -tolerance ? -1 : fx > 1 + tolerance ? 1 : 0;
        const int dj = fy < -tolerance ? -1 : fy > 1 + tolerance ? 1 : 0;
        if (di == 0 && dj == 0) {
            cell = TrapezoidCell{i, j, std::clamp(fx, 0.0, 1.0), std::clamp(fy, 0.0, 1.0)};
            return true;
        }
        const int next_i = std::clamp(i + di, 1, nx), next_j = std::clamp(j + dj, 1, ny);
        if (next_i == i && next_j == j) return false;  // beyond the mesh's outer nodes
        i = next_i;
        j = next_j;
    }
    return false;
}

void TrapezoidLookup::map_point(int i, int j, double fx, double fy, double& x, double& y) const {
    const MeshTrapezoid& t = mesh_.trapezoid;
    const std::array<double, 2>&a = t.nodes(i, j), &b = t.nodes(i + 1, j), &c = t.nodes(i, j + 1), &d = t.nodes(i + 1, j + 1);
    x = (1 - fy) * ((1 - fx) * a[0] + fx * b[0]) + fy * ((1 - fx) * c[0] + fx * d[0]);
    y = (1 - fy) * ((1 - fx) * a[1] + fx * b[1]) + fy * ((1 - fx) * c[1] + fx * d[1]);
}

namespace {

constexpr float null_cell = -1e32f;

/// Where a position lies between two cell centres of one axis: the lower centre's index, the next
/// one, and the weights of each.
struct AxisPlace {
    int low = 1, high = 1;
    double w0 = 1, w1 = 0, width = 1;
};

/// The place of `p` among the centres 1..n of an axis whose cell `cell` holds it: the centre before
/// the point, kept between 1 and n - 1. One cell: that cell alone.
AxisPlace place_on_axis(const Array1<double>& centres, int n, int cell, double p) {
    AxisPlace place;
    if (n < 2) return place;
    int low = p < centres[cell] ? cell - 1 : cell;
    if (low < 1) low = 1;
    if (low > n - 1) low = n - 1;
    place.low = low;
    place.high = low + 1;
    place.width = centres[low + 1] - centres[low];
    place.w1 = (p - centres[low]) / place.width;
    place.w0 = (centres[low + 1] - p) / place.width;
    return place;
}

/// The surface of the source in its cell (i, j) at the fractions fx, fy: the bilinear blend of the
/// cell's four corner nodes, or -1e32 when one is missing.
float source_surface(const LoadedMesh& source, int i, int j, double fx, double fy) {
    if (source.topo_grid.rows() < source.nx + 1 || source.topo_grid.columns() < source.ny + 1) return null_cell;
    const float a = source.topo_grid(i, j), b = source.topo_grid(i + 1, j);
    const float c = source.topo_grid(i, j + 1), d = source.topo_grid(i + 1, j + 1);
    if (is_null(a) || is_null(b) || is_null(c) || is_null(d)) return null_cell;
    return static_cast<float>((1 - fy) * ((1 - fx) * a + fx * b) + fy * ((1 - fx) * c + fx * d));
}

/// The source model by rising layer u (1 the bottom), and the blend of the eight centres round a point.
struct Sampler {
    const LoadedMesh& source;
    const ModelValues& values;
    int nx, ny, nz;

    Sampler(const LoadedMesh& mesh, const ModelValues& model)
        : source(mesh), values(model), nx(model.nx), ny(model.ny), nz(model.nz) {}

    float at(int i, int j, int u) const {
        return values.values[static_cast<std::size_t>(i - 1) +
                             static_cast<std::size_t>(nx) *
                                 (static_cast<std::size_t>(j - 1) + static_cast<std::size_t>(ny) * static_cast<std::size_t>(nz - u))];
    }
    double centre_up(int u) const { return source.z_centres[nz + 1 - u]; }

    /// The layer of depth d; a null layer takes the nearest present layer of column (i, j), and the
    /// depth moves to its centre.
    int layer(int i, int j, double& d) const {
        int flag = 0;
        int u = interval_search(source.z_nodes_up, nz + 1, d, flag);
        if (u > nz) u = nz;
        if (!is_null(at(i, j, u))) return u;
        for (int step = 1; step < nz; ++step) {
            if (u + step <= nz && !is_null(at(i, j, u + step))) {
                d = centre_up(u + step);
                return u + step;
            }
            if (u - step >= 1 && !is_null(at(i, j, u - step))) {
                d = centre_up(u - step);
                return u - step;
            }
        }
        return u;
    }

    /// The z place of depth d in layer u: between centres while inside them, else one layer alone.
    AxisPlace place_z(double d, int u) const {
        AxisPlace pz;
        if (nz < 2) return pz;
        const bool use_z = d >= centre_up(1) && d <= centre_up(nz);
        int low = d < centre_up(u) ? u - 1 : u;
        if (low < 1) low = 1;
        if (low > nz - 1) low = nz - 1;
        pz.low = low;
        pz.high = low + 1;
        pz.width = centre_up(low + 1) - centre_up(low);
        pz.w1 = (d - centre_up(low)) / pz.width;
        pz.w0 = (centre_up(low + 1) - d) / pz.width;
        if (!use_z) {
            // Beyond the first or last centre the result comes from one layer, the nearer one.
            const bool above = d > centre_up(nz);
            pz.w1 = above ? 1 : 0;
            pz.w0 = above ? 0 : 1;
        }
        return pz;
    }

    float blend(int mode, const AxisPlace& px, const AxisPlace& py, const AxisPlace& pz) const {
        const int xi[2] = {px.low, px.high}, yj[2] = {py.low, py.high}, zu[2] = {pz.low, pz.high};
        float corner[8];
        int mask = 0;
        for (int n = 0; n < 8; ++n) {
            float v = at(xi[n & 1], yj[(n >> 1) & 1], zu[(n >> 2) & 1]);
            if (!is_null(v)) {
                mask |= 1 << n;
                if (mode > 1) v = asinh_value(v);
            }
            corner[n] = v;
        }
        double result = null_cell;
        if (mask == 255) {
            const double c00 = px.w0 * corner[0] + px.w1 * corner[1];
            const double c10 = px.w0 * corner[2] + px.w1 * corner[3];
            const double c01 = px.w0 * corner[4] + px.w1 * corner[5];
            const double c11 = px.w0 * corner[6] + px.w1 * corner[7];
            const double low = py.w0 * c00 + py.w1 * c10;
            const double high = py.w0 * c01 + py.w1 * c11;
            result = nz >= 2 ? pz.w0 * low + pz.w1 * high : low;
        } else if (mask == 1) {
            result = corner[0];
        } else if (mask != 0) {
            // Mean slopes over the edges with both ends present, taken on from the first corner.
            static constexpr int x_edges[4][2] = {{0, 1}, {2, 3}, {4, 5}, {6, 7}};
            static constexpr int y_edges[4][2] = {{0, 2}, {1, 3}, {4, 6}, {5, 7}};
            static constexpr int z_edges[4][2] = {{0, 4}, {1, 5}, {2, 6}, {3, 7}};
            const auto slope = [&](const int (*edges)[2], double width) {
                double sum = 0;
                int count = 0;
                for (int e = 0; e < 4; ++e) {
                    const int a = edges[e][0], b = edges[e][1];
                    if ((mask >> a & 1) && (mask >> b & 1)) {
                        sum += (corner[b] - corner[a]) / width;
                        ++count;
                    }
                }
                return count > 0 ? sum / count : 0.0;
            };
            result = corner[0] + px.w1 * slope(x_edges, px.width) * px.width +
                     py.w1 * slope(y_edges, py.width) * py.width + pz.w1 * slope(z_edges, pz.width) * pz.width;
        }
        float value = static_cast<float>(result);
        if (mode > 1 && value > -1e30f) value = sinh_value(value);
        return value;
    }
};

bool depth_from_surface(const LoadedMesh& source) {
    const int format = source.mesh_format;
    if (format == 4) return source.has_topo;
    return format == 3 || format == 5 || source.surface_varies != 0;
}

bool is_trapezoidal(const LoadedMesh& source) {
    const MeshTrapezoid& t = source.trapezoid;
    return source.has_trapezoid == 1 && t.nodes.rows() == source.nx + 1 && t.nodes.columns() == source.ny + 1 &&
           t.x_table.rows() == source.nx + 1 && t.y_table.rows() == source.ny + 1;
}

/// Where a point lies on the source: its cell column, its place between the cell centres, and the
/// surface there (for a mesh that counts depth from it).
struct SourceColumn {
    int i = 0, j = 0;
    AxisPlace px, py;
    float surface = 0;
};

/// The column of the source holding (x, y): mesh coordinates on a rectangular source, map
/// coordinates on a trapezoidal one. False outside the source or under a missing surface.
bool source_column(const LoadedMesh& source, const TrapezoidLookup* trapezoid, double x, double y,
                   SourceColumn& column) {
    double fx = 0, fy = 0;
    if (trapezoid) {
        TrapezoidCell cell;
        if (!trapezoid->find(x, y, cell)) return false;
        column.i = cell.i;
        column.j = cell.j;
        fx = cell.fx;
        fy = cell.fy;
        // The point's place in the mesh's own frame.
        x = source.x_nodes[cell.i] + fx * source.dx[cell.i];
        y = source.y_nodes[cell.j] + fy * source.dy[cell.j];
    } else {
        int flag_x = 0, flag_y = 0;
        column.i = interval_search(source.x_nodes, source.nx + 1, x, flag_x);
        column.j = interval_search(source.y_nodes, source.ny + 1, y, flag_y);
        if (flag_x != interval_inside || flag_y != interval_inside) return false;
        fx = (x - source.x_nodes[column.i]) / source.dx[column.i];
        fy = (y - source.y_nodes[column.j]) / source.dy[column.j];
    }
    if (depth_from_surface(source)) {
        column.surface = source_surface(source, column.i, column.j, fx, fy);
        if (is_null(column.surface)) return false;
    }
    column.px = place_on_axis(source.x_centres, source.nx, column.i, x);
    column.py = place_on_axis(source.y_centres, source.ny, column.j, y);
    return true;
}

/// The depth in the source's own z of the elevation z in `column`: meshes hung from their surface
/// count it from there.
double source_depth(const LoadedMesh& source, const SourceColumn& column, double z) {
    if (!depth_from_surface(source)) return z;
    const float surface = column.surface;
    if (source.mesh_format == 4 || source.mesh_format == 5) {
        double d = z - surface;
        if (d < 0 && source.drape_range > 0) d = source.drape_range * d / (surface - source.drape_bottom);
        return d + source.z_nodes[1];
    }
    return z - surface + source.z_nodes[1];
}

float sample_column(int mode, const Sampler& sampler, const SourceColumn& column, double d) {
    const int u = sampler.layer(column.i, column.j, d);
    return sampler.blend(mode, column.px, column.py, sampler.place_z(d, u));
}

bool model_fits(const LoadedMesh& source, const ModelValues& values) {
    return source.nx >= 1 && source.ny >= 1 && source.nz >= 1 && values.nx == source.nx && values.ny == source.ny &&
           values.nz == source.nz && values.values.size() == static_cast<std::size_t>(values.nx) * values.ny * values.nz;
}

}  // namespace

float sample_model(int mode, const LoadedMesh& source, const LoadedModel& model, double x, double y, double z) {
    const ModelValues& values = model.values;
    if (!model_fits(source, values)) return null_cell;
    std::optional<TrapezoidLookup> trapezoid;
    if (is_trapezoidal(source)) trapezoid.emplace(source);
    SourceColumn column;
    if (!source_column(source, trapezoid ? &*trapezoid : nullptr, x, y, column)) return null_cell;
    return sample_column(mode, Sampler(source, values), column, source_depth(source, column, z));
}

void interpolate_model_to_mesh(Dialogue& dialogue, int mode, int fill_columns, const LoadedMesh& source,
                               LoadedModel& model, const InterpolationTarget& target, ModelValues& target_values) {
    const InversionMesh& mesh = *target.mesh;
    target_values.size(mesh.nx, mesh.ny, mesh.nz, null_cell);
    ModelValues& values = model.values;
    const bool source_ready = values.nx == source.nx && values.ny == source.ny && values.nz == source.nz &&
                              !values.values.empty();

    // Each column filled upwards from its first present layer; an empty column reads 0 meanwhile.
    std::vector<int> column_top;
    bool restore = false;
    if (fill_columns == 1 && source_ready) {
        column_top.assign(static_cast<std::size_t>(source.nx) * source.ny, -1);
        for (int j = 1; j <= source.ny; ++j)
            for (int i = 1; i <= source.nx; ++i) {
                int top = -1;
                for (int k = 1; k <= source.nz; ++k)
                    if (!is_null(values.at(i, j, k))) {
                        top = k;
                        break;
                    }
                column_top[static_cast<std::size_t>(j - 1) * source.nx + (i - 1)] = top;
                if (top == -1) {
                    for (int k = 1; k <= source.nz; ++k) values.at(i, j, k) = 0;
                    restore = true;
                } else if (top > 1) {
                    const float first = values.at(i, j, top);
                    for (int k = 1; k < top; ++k) values.at(i, j, k) = first;
                    restore = true;
                }
            }
    }

    const bool draped = target.surface_nodes != nullptr && target.mesh_format == 5;
    ProgressMeter progress(dialogue, static_cast<double>(mesh.nx) * mesh.ny * mesh.nz);
    double done = 0;
    if (source_ready && model_fits(source, values) && !draped && !depth_from_surface(source) && !is_trapezoidal(source)) {
        // Plain elevations on both sides: each target column's x and y places and each layer's z place
        // are found once; a cell whose own source cell is null takes the full rule.
        struct Place {
            bool inside = false;
            int cell = 0;
            AxisPlace place;
        };
        const auto axis_places = [](const Array1<double>& nodes, const Array1<double>& centres, int n,
                                    const Array1<double>& points, int count) {
            std::vector<Place> places(static_cast<std::size_t>(count) + 1);
            for (int t = 1; t <= count; ++t) {
                int flag = 0;
                Place& p = places[static_cast<std::size_t>(t)];
                p.cell = interval_search(nodes, n + 1, points[t], flag);
                p.inside = flag == interval_inside;
                if (p.inside) p.place = place_on_axis(centres, n, p.cell, points[t]);
            }
            return places;
        };
        const std::vector<Place> xs = axis_places(source.x_nodes, source.x_centres, source.nx, mesh.x_centres, mesh.nx);
        const std::vector<Place> ys = axis_places(source.y_nodes, source.y_centres, source.ny, mesh.y_centres, mesh.ny);
        const Sampler sampler(source, values);
        std::vector<Place> zs(static_cast<std::size_t>(mesh.nz) + 1);
        for (int k = 1; k <= mesh.nz; ++k) {
            int flag = 0;
            Place& p = zs[static_cast<std::size_t>(k)];
            p.cell = std::min(interval_search(source.z_nodes_up, source.nz + 1, mesh.z_centres[k], flag), source.nz);
            p.place = sampler.place_z(mesh.z_centres[k], p.cell);
        }
        for (int j = 1; j <= mesh.ny; ++j) {
            const Place& py = ys[static_cast<std::size_t>(j)];
            for (int i = 1; i <= mesh.nx; ++i) {
                const Place& px = xs[static_cast<std::size_t>(i)];
                if (px.inside && py.inside) {
                    for (int k = 1; k <= mesh.nz; ++k) {
                        const Place& pz = zs[static_cast<std::size_t>(k)];
                        target_values.at(i, j, k) =
                            is_null(sampler.at(px.cell, py.cell, pz.cell))
                                ? sample_model(mode, source, model, mesh.x_centres[i], mesh.y_centres[j], mesh.z_centres[k])
                                : sampler.blend(mode, px.place, py.place, pz.place);
                    }
                }
                done += mesh.nz;
                progress.advance(done);
            }
        }
    } else if (source_ready && model_fits(source, values)) {
        // Each target column is found on the source once; its layers differ only in depth.
        std::optional<TrapezoidLookup> trapezoid;
        if (is_trapezoidal(source)) trapezoid.emplace(source);
        const Sampler sampler(source, values);
        for (int j = 1; j <= mesh.ny; ++j) {
            for (int i = 1; i <= mesh.nx; ++i) {
                const auto skip = [&] {
                    done += mesh.nz;
                    progress.advance(done);
                };
                double x = mesh.x_centres[i], y = mesh.y_centres[j];
                if (trapezoid) {
                    // The centre's place on the map: the blend of the nodes of the source cell it stands in.
                    int flag_x = 0, flag_y = 0;
                    const int a = interval_search(source.x_nodes, source.nx + 1, x, flag_x);
                    const int b = interval_search(source.y_nodes, source.ny + 1, y, flag_y);
                    if (flag_x != interval_inside || flag_y != interval_inside) {
                        skip();
                        continue;
                    }
                    trapezoid->map_point(a, b, (x - source.x_nodes[a]) / source.dx[a],
                                         (y - source.y_nodes[b]) / source.dy[b], x, y);
                }
                float surface = 0;
                if (draped) {
                    // The surface at the centre: the mean of the four corners, when all are present.
                    const Array2<float>& nodes = *target.surface_nodes;
                    const float a = nodes(i, j), b = nodes(i + 1, j), c = nodes(i, j + 1), d = nodes(i + 1, j + 1);
                    if (is_null(a) || is_null(b) || is_null(c) || is_null(d)) {
                        skip();
                        continue;
                    }
                    surface = static_cast<float>(0.5 * (0.5 * a + 0.5 * b) + 0.5 * (0.5 * c + 0.5 * d));
                }
                SourceColumn column;
                if (!source_column(source, trapezoid ? &*trapezoid : nullptr, x, y, column)) {
                    skip();
                    continue;
                }
                for (int k = 1; k <= mesh.nz; ++k) {
                    double z = mesh.z_centres[k];
                    if (draped) {
                        double offset = z;
                        if (z < 0 && target.drape_range > 0) offset = (surface - target.drape_bottom) * z / target.drape_range;
                        z = surface + offset;
                    }
                    target_values.at(i, j, k) = sample_column(mode, sampler, column, source_depth(source, column, z));
                }
                skip();
            }
        }
    }

    if (restore) {
        for (int j = 1; j <= source.ny; ++j)
            for (int i = 1; i <= source.nx; ++i) {
                const int top = column_top[static_cast<std::size_t>(j - 1) * source.nx + (i - 1)];
                const int end = top == -1 ? source.nz : top - 1;
                for (int k = 1; k <= end; ++k) values.at(i, j, k) = null_cell;
            }
    }

    if (fill_columns == 1 && target.surface_cells != nullptr) {
        const Array2<float>& surface = *target.surface_cells;
        for (int j = 1; j <= mesh.ny; ++j)
            for (int i = 1; i <= mesh.nx; ++i)
                for (int k = 1; k <= mesh.nz; ++k) {
                    if (!(static_cast<float>(mesh.z_nodes[k]) > surface(i, j))) break;
                    target_values.at(i, j, k) = null_cell;
                }
    }
}

}  // namespace invsetup
