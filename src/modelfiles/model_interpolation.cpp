// src/modelfiles/model_interpolation.cpp - sampling a model at the centres of another mesh's cells.
#include "modelfiles/model_interpolation.h"

#include <algorithm>
#include <cmath>
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

/// The surface of the source at (x, y): the bilinear blend of its four corner nodes, or -1e32.
float source_surface(const LoadedMesh& source, int i, int j, double x, double y) {
    if (source.topo_grid.rows() < source.nx + 1 || source.topo_grid.columns() < source.ny + 1) return null_cell;
    const double fx = (x - source.x_nodes[i]) / source.dx[i];
    const double fy = (y - source.y_nodes[j]) / source.dy[j];
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
    return format == 3 || format == 4 || format == 5 || source.surface_varies != 0;
}

bool model_fits(const LoadedMesh& source, const ModelValues& values) {
    return source.nx >= 1 && source.ny >= 1 && source.nz >= 1 && values.nx == source.nx && values.ny == source.ny &&
           values.nz == source.nz && values.values.size() == static_cast<std::size_t>(values.nx) * values.ny * values.nz;
}

}  // namespace

float sample_model(int mode, const LoadedMesh& source, const LoadedModel& model, double x, double y, double z) {
    const ModelValues& values = model.values;
    if (!model_fits(source, values)) return null_cell;
    int flag_x = 0, flag_y = 0;
    const int i = interval_search(source.x_nodes, source.nx + 1, x, flag_x);
    const int j = interval_search(source.y_nodes, source.ny + 1, y, flag_y);
    if (flag_x != interval_inside || flag_y != interval_inside) return null_cell;

    // The depth in the source's own z: meshes hung from their surface count it from there.
    double d = z;
    if (depth_from_surface(source)) {
        const float surface = source_surface(source, i, j, x, y);
        if (is_null(surface)) return null_cell;
        if (source.mesh_format == 4 || source.mesh_format == 5) {
            d = z - surface;
            if (d < 0 && source.drape_range > 0) d = source.drape_range * d / (surface - source.drape_bottom);
            d += source.z_nodes[1];
        } else {
            d = z - surface + source.z_nodes[1];
        }
    }
    const Sampler sampler(source, values);
    const int u = sampler.layer(i, j, d);
    return sampler.blend(mode, place_on_axis(source.x_centres, source.nx, i, x),
                         place_on_axis(source.y_centres, source.ny, j, y), sampler.place_z(d, u));
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
    if (source_ready && model_fits(source, values) && !draped && !depth_from_surface(source)) {
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
    } else if (source_ready) {
        for (int j = 1; j <= mesh.ny; ++j) {
            const double y = mesh.y_centres[j];
            for (int i = 1; i <= mesh.nx; ++i) {
                const double x = mesh.x_centres[i];
                float surface = 0;
                if (draped) {
                    // The surface at the centre: the mean of the four corners, when all are present.
                    const Array2<float>& nodes = *target.surface_nodes;
                    const float a = nodes(i, j), b = nodes(i + 1, j), c = nodes(i, j + 1), d = nodes(i + 1, j + 1);
                    if (is_null(a) || is_null(b) || is_null(c) || is_null(d)) {
                        done += mesh.nz;
                        progress.advance(done);
                        continue;
                    }
                    surface = static_cast<float>(0.5 * (0.5 * a + 0.5 * b) + 0.5 * (0.5 * c + 0.5 * d));
                }
                for (int k = 1; k <= mesh.nz; ++k) {
                    double z = mesh.z_centres[k];
                    if (draped) {
                        double offset = z;
                        if (z < 0 && target.drape_range > 0) offset = (surface - target.drape_bottom) * z / target.drape_range;
                        z = surface + offset;
                    }
                    target_values.at(i, j, k) = sample_model(mode, source, model, x, y, z);
                }
                done += mesh.nz;
                progress.advance(done);
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
