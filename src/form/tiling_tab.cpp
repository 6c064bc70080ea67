// src/form/tiling_tab.cpp - the controls of the tiling layout overlay.
#include "form/tiling_tab.h"

#include <vector>

#include "form/form_update.h"
#include "form/mesh_tab.h"
#include "session.h"
#include "support/numbers.h"

namespace invsetup {

void draw_tiling_layout(Session& session) {
    FormModel& form = session.form;
    const bool tile_choice = session.tiling_view.tile_choice;
    const int region = form.list_index("Combo_view_limits");
    form.set_visible("Frame_cells", !tile_choice);
    form.set_visible("Frame_do_tile", tile_choice);
    if (!place_tiling_view(session, region)) return;
    form.set_visible("Frame_tiling_layout", true);
    draw_tiling_lines(session);
}

void tiling_mouse_up(Session& session) {
    if (!choose_hover_tile(session)) return;
    const TilingView& view = session.tiling_view;
    FormModel& form = session.form;
    form.set_caption("Check_do_tile", "Skip Tile X" + format_picture(view.chosen_tile_x, "00") + " Y" +
                                          format_picture(view.chosen_tile_y, "00"));
    {
        FormUpdate guard(form);
        form.set_checked("Check_do_tile", session.tiles.tile_skip(view.chosen_tile_x, view.chosen_tile_y) == 1);
    }
    form.set_visible("Check_do_tile", true);
}

void tiling_check_do_tile(Session& session) {
    TilingView& view = session.tiling_view;
    if (!tile_in_layout(session, view.chosen_tile_x, view.chosen_tile_y)) return;
    int& mark = session.tiles.tile_skip(view.chosen_tile_x, view.chosen_tile_y);
    const int value = session.form.checked("Check_do_tile") ? 1 : 0;
    if (mark != value) mark = value;
    draw_tiling_layout(session);
}

bool switch_tile_off(Session& session, int i, int j) {
    if (!tile_in_layout(session, i, j)) return false;
    TilingView& view = session.tiling_view;
    const bool choice = view.tile_choice;
    view.tile_choice = true;
    view.hover_tile_x = i;
    view.hover_tile_y = j;
    tiling_mouse_up(session);
    {
        FormUpdate guard(session.form);
        session.form.set_checked("Check_do_tile", true);
    }
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
    if (d.refinement_mode == 1 && (index == 10 || index == 11)) {
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
        if (!move_mesh_limit(limits, move.axis, move.minimum, up, spin_step(session, move.axis))) continue;
        const int box = move.axis;
        const std::size_t n = static_cast<std::size_t>(move.axis);
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
