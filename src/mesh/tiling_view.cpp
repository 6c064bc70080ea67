// src/mesh/tiling_view.cpp - the plan view of the mesh and its tiles as a list of lines.
#include "mesh/tiling_view.h"

#include <cstddef>

#include "grids/grid_access.h"
#include "grids/interval_search.h"
#include "mesh/inversion_mesh.h"
#include "mesh/mesh_definition.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "support/numbers.h"
#include "support/point_transform.h"

namespace invsetup {

namespace {

bool refined(const Session& session) { return session.definition.refinement_mode == 1; }

void add_line(TilingView& view, double x1, double x2, double y1, double y2, std::uint32_t colour, int width,
              LineStyle style) {
    view.lines.push_back(ViewLine{x1, y1, x2, y2, colour, width, style});
}

/// One line in mesh coordinates; on the map its ends go there first.
void draw_mesh_line(TilingView& view, double x1, double x2, double y1, double y2, std::uint32_t colour, int width,
                    LineStyle style) {
    if (view.map_frame) {
        double z = 0;
        apply_point_transform(view.to_map, map_to_local, x1, y1, z);
        apply_point_transform(view.to_map, map_to_local, x2, y2, z);
    }
    double px1 = 0, py1 = 0, px2 = 0, py2 = 0;
    mesh_to_view(view, x1, y1, px1, py1);
    mesh_to_view(view, x2, y2, px2, py2);
    add_line(view, px1, px2, py1, py2, colour, width, style);
}

void draw_mesh_rectangle(TilingView& view, double x_min, double x_max, double y_min, double y_max,
                         std::uint32_t colour, LineStyle style) {
    draw_mesh_line(view, x_min, x_max, y_min, y_min, colour, 1, style);
    draw_mesh_line(view, x_max, x_max, y_min, y_max, colour, 1, style);
    draw_mesh_line(view, x_max, x_min, y_max, y_max, colour, 1, style);
    draw_mesh_line(view, x_min, x_min, y_max, y_min, colour, 1, style);
}

/// The core region: the core nodes of the mesh; in refinement mode the refined area, whose limits
/// the mesh has snapped to the loaded nodes (the core node indices then count the loaded mesh).
std::array<double, 4> core_region(const Session& session) {
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    if (refined(session)) return {d.mesh_min[0], d.mesh_max[0], d.mesh_min[1], d.mesh_max[1]};
    return {mesh.x_nodes[mesh.core_x_first], mesh.x_nodes[mesh.core_x_last], mesh.y_nodes[mesh.core_y_first],
            mesh.y_nodes[mesh.core_y_last]};
}

std::string total_cells_text(const Session& session) {
    return format_picture(session.mesh.nx, "0") + "," + format_picture(session.mesh.ny, "0");
}

}  // namespace

bool tile_in_layout(const Session& session, int i, int j) {
    return i >= 1 && j >= 1 && i <= session.definition.number_of_x_tiles && j <= session.definition.number_of_y_tiles;
}

void mesh_to_view(const TilingView& view, double x, double y, double& px, double& py) {
    px = (x - view.view_x_min) * view.view_scale + view.view_left;
    py = (view.view_y_max - y) * view.view_scale + view.view_top;
}

void view_to_mesh(const TilingView& view, double px, double py, double& x, double& y) {
    x = (px - view.view_left) / view.view_scale + view.view_x_min;
    y = view.view_y_max - (py - view.view_top) / view.view_scale;
}

void mesh_points_to_view(const TilingView& view, std::vector<double>& x, std::vector<double>& y) {
    if (!view.map_frame) return;
    for (std::size_t k = 0; k < x.size() && k < y.size(); ++k) {
        double z = 0;
        apply_point_transform(view.to_map, map_to_local, x[k], y[k], z);
    }
}

bool place_tiling_view(Session& session, int region) {
    TilingView& view = session.tiling_view;
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    view.lines.clear();

    if (region < 0) region = 0;
    if (!refined(session) && region == 2) region = 1;
    if (mesh.nx < 1 || mesh.ny < 1) return false;

    if (region == 0) {
        view.view_x_min = mesh.x_nodes[1];
        view.view_x_max = mesh.x_nodes[mesh.nx + 1];
        view.view_y_min = mesh.y_nodes[1];
        view.view_y_max = mesh.y_nodes[mesh.ny + 1];
    } else if (region == 1) {
        const std::array<double, 4> core = core_region(session);
        view.view_x_min = core[0];
        view.view_x_max = core[1];
        view.view_y_min = core[2];
        view.view_y_max = core[3];
    } else {
        view.view_x_min = d.mesh_min[0];
        view.view_x_max = d.mesh_max[0];
        view.view_y_min = d.mesh_min[1];
        view.view_y_max = d.mesh_max[1];
    }

    // With the point transform on, the image is asked for the map area round the region: the
    // inverted transform takes the region's corners there, and draws the mesh lines after them.
    PointTransform working = d.coordinate_transform;
    update_point_transform(working);
    view.map_frame = working.active;
    if (view.map_frame) {
        view.to_map = working;
        invert_point_transform(view.to_map);
        update_point_transform(view.to_map);
        transform_grid_extents(view.to_map, map_to_local, view.view_x_min, view.view_x_max, view.view_y_min,
                               view.view_y_max);
    }

    const double span_x = view.view_x_max - view.view_x_min;
    const double span_y = view.view_y_max - view.view_y_min;
    if (!(span_x > 0) || !(span_y > 0)) return false;
    const double aspect = span_x / span_y;
    if (aspect >= view.width / view.height) {
        view.view_left = 10;
        view.view_top = (view.height - (view.width - 20) / aspect) / 2;
    } else {
        view.view_top = 10;
        view.view_left = (view.width - (view.height - 20) * aspect) / 2;
    }
    view.view_scale = (view.width - 2 * view.view_left) / span_x;
    return true;
}

void draw_tiling_lines(Session& session) {
    TilingView& view = session.tiling_view;
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    const TileTable& tiles = session.tiles;
    view.panels[5] = total_cells_text(session);

    // The frame round the region.
    const double span_x = view.view_x_max - view.view_x_min;
    const double span_y = view.view_y_max - view.view_y_min;
    const double left = view.view_left, top = view.view_top;
    const double right = left + span_x * view.view_scale, bottom = top + span_y * view.view_scale;
    add_line(view, left, right, top, top, view_colour_default, 1, LineStyle::solid);
    add_line(view, right, right, top, bottom, view_colour_default, 1, LineStyle::solid);
    add_line(view, right, left, bottom, bottom, view_colour_default, 1, LineStyle::solid);
    add_line(view, left, left, bottom, top, view_colour_default, 1, LineStyle::solid);

    const std::array<double, 4> core = core_region(session);
    draw_mesh_rectangle(view, core[0], core[1], core[2], core[3], view_colour_red, LineStyle::dotted);
    const int x_tiles = d.number_of_x_tiles, y_tiles = d.number_of_y_tiles;
    if (!refined(session) || x_tiles < 1 || y_tiles < 1) {
        draw_mesh_rectangle(view, d.mesh_min[0], d.mesh_max[0], d.mesh_min[1], d.mesh_max[1], view_colour_red,
                            LineStyle::dashed);
        return;
    }
    const double tiled_x_min = mesh.x_nodes[tiles.tile_x_limits(1, tile_outer_start)];
    const double tiled_x_max = mesh.x_nodes[tiles.tile_x_limits(x_tiles, tile_outer_end)];
    const double tiled_y_min = mesh.y_nodes[tiles.tile_y_limits(1, tile_outer_start)];
    const double tiled_y_max = mesh.y_nodes[tiles.tile_y_limits(y_tiles, tile_outer_end)];
    draw_mesh_rectangle(view, tiled_x_min, tiled_x_max, tiled_y_min, tiled_y_max, view_colour_red, LineStyle::dashed);

    for (int i = 1; i <= x_tiles; ++i) {
        for (int k : {tile_core_start, tile_core_end}) {
            const double x = mesh.x_nodes[tiles.tile_x_limits(i, k)];
            draw_mesh_line(view, x, x, tiled_y_min, tiled_y_max, view_colour_red, 1, LineStyle::solid);
        }
        for (int k : {tile_outer_start, tile_outer_end}) {
            const double x = mesh.x_nodes[tiles.tile_x_limits(i, k)];
            draw_mesh_line(view, x, x, tiled_y_min, tiled_y_max, view_colour_blue, 2, LineStyle::solid);
        }
    }
    for (int j = 1; j <= y_tiles; ++j) {
        for (int k : {tile_core_start, tile_core_end}) {
            const double y = mesh.y_nodes[tiles.tile_y_limits(j, k)];
            draw_mesh_line(view, tiled_x_min, tiled_x_max, y, y, view_colour_red, 1, LineStyle::solid);
        }
        for (int k : {tile_outer_start, tile_outer_end}) {
            const double y = mesh.y_nodes[tiles.tile_y_limits(j, k)];
            draw_mesh_line(view, tiled_x_min, tiled_x_max, y, y, view_colour_blue, 2, LineStyle::solid);
        }
    }
    TileTable& marks = session.tiles;
    for (int i = 1; i <= x_tiles; ++i)
        for (int j = 1; j <= y_tiles; ++j) {
            if (marks.tile_skip(i, j) != 1) continue;
            const double x1 = mesh.x_nodes[tiles.tile_x_limits(i, tile_core_start)];
            const double x2 = mesh.x_nodes[tiles.tile_x_limits(i, tile_core_end)];
            const double y1 = mesh.y_nodes[tiles.tile_y_limits(j, tile_core_start)];
            const double y2 = mesh.y_nodes[tiles.tile_y_limits(j, tile_core_end)];
            draw_mesh_line(view, x1, x2, y1, y2, view_colour_red, 1, LineStyle::solid);
            draw_mesh_line(view, x1, x2, y2, y1, view_colour_red, 1, LineStyle::solid);
        }
}

void tiling_pointer_move(Session& session, double px, double py) {
    TilingView& view = session.tiling_view;
    if (!(view.view_scale > 0)) return;
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    const TileTable& tiles = session.tiles;
    double x = 0, y = 0;
    view_to_mesh(view, px, py, x, y);
    if (view.map_frame) {
        // The pointer is on the map; the mesh point under it comes back through the transform.
        view.panels[2] = format_picture(x, "0.0");
        view.panels[3] = format_picture(y, "0.0");
        double z = 0;
        apply_point_transform(view.to_map, local_to_map, x, y, z);
    }
    view.panels[0] = format_picture(x, "0.0");
    view.panels[1] = format_picture(y, "0.0");
    const int cell_x = interval_search(mesh.x_nodes, mesh.nx + 1, x);
    const int cell_y = interval_search(mesh.y_nodes, mesh.ny + 1, y);
    const std::string cells = format_picture(cell_x, "0") + "," + format_picture(cell_y, "0");

    if (refined(session)) {
        view.hover_tile_x = view.hover_tile_y = 0;
        const int x_tiles = d.number_of_x_tiles, y_tiles = d.number_of_y_tiles;
        if (x_tiles >= 1 && y_tiles >= 1 && x >= mesh.x_nodes[tiles.tile_x_limits(1, tile_outer_start)] &&
            x <= mesh.x_nodes[tiles.tile_x_limits(x_tiles, tile_outer_end)] &&
            y >= mesh.y_nodes[tiles.tile_y_limits(1, tile_outer_start)] &&
            y <= mesh.y_nodes[tiles.tile_y_limits(y_tiles, tile_outer_end)]) {
            view.hover_tile_x = view.hover_tile_y = 1;
            while (view.hover_tile_x < x_tiles && x > mesh.x_nodes[tiles.tile_x_limits(view.hover_tile_x, tile_core_end)])
                ++view.hover_tile_x;
            while (view.hover_tile_y < y_tiles && y > mesh.y_nodes[tiles.tile_y_limits(view.hover_tile_y, tile_core_end)])
                ++view.hover_tile_y;
        }
    }
    if (view.hover_tile_x > 0 && view.hover_tile_y > 0) {
        const int i = view.hover_tile_x, j = view.hover_tile_y;
        view.panels[4] = cells + " T" + format_picture(i, "00") + format_picture(j, "00");
        view.panels[5] = format_picture(tiles.tile_x_limits(i, tile_outer_end) - tiles.tile_x_limits(i, tile_outer_start), "0") +
                         " x " +
                         format_picture(tiles.tile_y_limits(j, tile_outer_end) - tiles.tile_y_limits(j, tile_outer_start), "0");
    } else {
        view.panels[4] = cells;
        view.panels[5] = total_cells_text(session);
    }
}

bool choose_hover_tile(Session& session) {
    TilingView& view = session.tiling_view;
    if (!view.tile_choice || !tile_in_layout(session, view.hover_tile_x, view.hover_tile_y)) return false;
    view.chosen_tile_x = view.hover_tile_x;
    view.chosen_tile_y = view.hover_tile_y;
    return true;
}

int spin_step(const Session& session, int axis) {
    const double cell_size = session.definition.mesh_cell_size[static_cast<std::size_t>(axis)];
    if (!refined(session) || !session.loaded_mesh.loaded || !(cell_size > 0)) return 1;
    const LoadedMesh& loaded = session.loaded_mesh;
    const double loaded_size = axis == 0 ? loaded.core_dx : axis == 1 ? loaded.core_dy : loaded.core_dz;
    return to_integer(loaded_size / cell_size);
}

bool move_mesh_limit(const MeshLimits& limits, int axis, bool minimum, bool up, int step) {
    const std::size_t n = static_cast<std::size_t>(axis);
    // Down lowers a limit: the minimum by more cells, the maximum by fewer; up the mirror.
    const bool grows = minimum != up;
    if (!grows && limits.num_cells[n] <= 1) return false;
    limits.num_cells[n] += grows ? step : -step;
    if (minimum)
        limits.min_val[n] = limits.max_val[n] - limits.num_cells[n] * limits.cell_size[n];
    else
        limits.max_val[n] = limits.num_cells[n] * limits.cell_size[n] + limits.min_val[n];
    return true;
}

}  // namespace invsetup
