// src/mesh/tiling_view.cpp - the plan view of the mesh and its tiles as a list of lines.
#include "mesh/tiling_view.h"

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

bool tile_inside_counts(const Session& session, int i, int j) {
    return i >= 1 && j >= 1 && i <= session.definition.number_of_x_tiles && j <= session.definition.number_of_y_tiles;
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

void draw_tiling_layout(Session& session) {
    TilingView& view = session.tiling_view;
    const InversionMesh& mesh = session.mesh;
    const InversionDefinition& d = session.definition;
    const TileTable& tiles = session.tiles;
    FormModel& form = session.form;
    view.lines.clear();

    int region = form.list_index("Combo_view_limits");
    if (region < 0) region = 0;
    if (!refined(session) && region == 2) region = 1;
    form.set_visible("Frame_cells", !view.tile_choice);
    form.set_visible("Frame_do_tile", view.tile_choice);
    if (mesh.nx < 1 || mesh.ny < 1) return;

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
    if (!(span_x > 0) || !(span_y > 0)) return;
    const double aspect = span_x / span_y;
    if (aspect >= view.width / view.height) {
        view.view_left = 10;
        view.view_top = (view.height - (view.width - 20) / aspect) / 2;
    } else {
        view.view_top = 10;
        view.view_left = (view.width - (view.height - 20) * aspect) / 2;
    }
    view.view_scale = (view.width - 2 * view.view_left) / span_x;

    form.set_visible("Frame_tiling_layout", true);
    view.panels[5] = total_cells_text(session);

    // The frame round the region.
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

void tiling_mouse_up(Session& session) {
    TilingView& view = session.tiling_view;
    if (!view.tile_choice || !tile_inside_counts(session, view.hover_tile_x, view.hover_tile_y)) return;
    view.chosen_tile_x = view.hover_tile_x;
    view.chosen_tile_y = view.hover_tile_y;
    FormModel& form = session.form;
    form.set_caption("Check_do_tile", "Skip Tile X" + format_picture(view.chosen_tile_x, "00") + " Y" +
                                          format_picture(view.chosen_tile_y, "00"));
    const bool updating = form.updating_form;
    form.updating_form = true;
    form.set_checked("Check_do_tile", session.tiles.tile_skip(view.chosen_tile_x, view.chosen_tile_y) == 1);
    form.updating_form = updating;
    form.set_visible("Check_do_tile", true);
}

void tiling_check_do_tile(Session& session) {
    TilingView& view = session.tiling_view;
    if (!tile_inside_counts(session, view.chosen_tile_x, view.chosen_tile_y)) return;
    int& mark = session.tiles.tile_skip(view.chosen_tile_x, view.chosen_tile_y);
    const int value = session.form.checked("Check_do_tile") ? 1 : 0;
    if (mark != value) mark = value;
    draw_tiling_layout(session);
}

bool switch_tile_off(Session& session, int i, int j) {
    if (!tile_inside_counts(session, i, j)) return false;
    TilingView& view = session.tiling_view;
    const bool choice = view.tile_choice;
    view.tile_choice = true;
    view.hover_tile_x = i;
    view.hover_tile_y = j;
    tiling_mouse_up(session);
    const bool updating = session.form.updating_form;
    session.form.updating_form = true;
    session.form.set_checked("Check_do_tile", true);
    session.form.updating_form = updating;
    tiling_check_do_tile(session);
    view.tile_choice = choice;
    return true;
}

bool tiling_spin(Session& session, int index, bool up) {
    TilingView& view = session.tiling_view;
    if (view.updating_clip) return false;
    InversionDefinition& d = session.definition;
    FormModel& form = session.form;
    const bool overlay = (index >= 0 && index <= 3) || index == 10 || index == 11;
    if (refined(session) && (index == 10 || index == 11)) {
        d.tile_overlap += up ? 1 : -1;
        form.set_text("Text_tile_overlap", format_picture(d.tile_overlap, "0"));
        return true;
    }
    // Which limits move: per axis 0 x, 1 y, 2 z; the minimum, the maximum, or both.
    struct Move {
        int axis;
        bool minimum;
    };
    std::vector<Move> moves;
    switch (index) {
        case 0: case 4: moves = {{0, true}}; break;
        case 1: case 5: moves = {{0, false}}; break;
        case 2: case 6: moves = {{1, true}}; break;
        case 3: case 7: moves = {{1, false}}; break;
        case 8: moves = {{2, true}}; break;
        case 9: moves = {{2, false}}; break;
        case 10: moves = {{0, true}, {0, false}}; break;
        case 11: moves = {{1, true}, {1, false}}; break;
        default: return false;
    }
    MeshLimits limits = mesh_limits(d);
    for (const Move& move : moves) {
        const std::size_t n = static_cast<std::size_t>(move.axis);
        int step = 1;
        if (refined(session) && session.loaded_mesh.loaded && limits.cell_size[n] > 0) {
            const double loaded_size = move.axis == 0   ? session.loaded_mesh.core_dx
                                       : move.axis == 1 ? session.loaded_mesh.core_dy
                                                        : session.loaded_mesh.core_dz;
            step = to_integer(loaded_size / limits.cell_size[n]);
        }
        // Down lowers a limit: the minimum by more cells, the maximum by fewer; up the mirror.
        const bool grows = move.minimum != up;
        if (!grows && limits.num_cells[n] <= 1) continue;
        limits.num_cells[n] += grows ? step : -step;
        if (move.minimum)
            limits.min_val[n] = limits.max_val[n] - limits.num_cells[n] * limits.cell_size[n];
        else
            limits.max_val[n] = limits.num_cells[n] * limits.cell_size[n] + limits.min_val[n];
        const int box = move.axis;
        if (move.minimum)
            form.set_text("Text_min_val", box, general_number_text(limits.min_val[n]));
        else
            form.set_text("Text_max_val", box, general_number_text(limits.max_val[n]));
        form.set_text("Text_num_cells", box, format_picture(limits.num_cells[n], "0"));
        form.set_text("Text_max_val", box + 3, general_number_text(limits.max_val[n] - limits.min_val[n]));
    }
    calculate_cell_counts(session, d.mesh_cell_count[0], d.mesh_cell_count[1], d.mesh_cell_count[2],
                          d.mesh_cell_count[3]);
    view.panels[5] = format_picture(session.padding.total_x_cells, "0") + "," +
                     format_picture(session.padding.total_y_cells, "0");
    view.updating_clip = true;
    view.updating_clip = false;
    return overlay;
}

}  // namespace invsetup
