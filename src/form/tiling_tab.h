// src/form/tiling_tab.h - the controls of the tiling layout overlay: which region it shows and its
// frames, the "Skip Tile" box and the spin controls that move the mesh limits in the Mesh tab.
#pragma once
#include "mesh/tiling_view.h"

namespace invsetup {
struct Session;

/// Draws the view of session.mesh for the region chosen in Combo_view_limits (place_tiling_view,
/// draw_tiling_lines), shows Frame_cells or, for the tile choice, Frame_do_tile, and shows the overlay
/// when there is something to see.
void draw_tiling_layout(Session& session);

/// The mouse button came up: with the tile choice open and a tile under the pointer, that tile is
/// chosen and Check_do_tile shows its mark ("Skip Tile X01 Y02").
void tiling_mouse_up(Session& session);
/// Check_do_tile was clicked: the chosen tile takes the box's value as its mark, and the view is
/// drawn again.
void tiling_check_do_tile(Session& session);
/// A tile switched off as the person does it: the pointer over tile (i, j) (x and y tile numbers from
/// 1), the button up, then the "Skip Tile" box ticked. False when the tile is outside the layout.
bool switch_tile_off(Session& session, int i, int j);

/// UpDown_clip(index) down (`up` false) or up: moves a mesh limit by a step of cells (the loaded
/// mesh's cell in refinement mode), or in refinement mode changes the tile overlap (10 and 11).
/// Returns true when the overlay's view is to be drawn again (indices 0 to 3, 10 and 11).
bool tiling_spin(Session& session, int index, bool up);

}  // namespace invsetup
