// src/mesh/tiling_view.h - the plan view of the mesh and its tiles, without any toolkit: the view's
// state, the list of lines a window (or the plan picture) paints, the pointer, the tile choice and
// the spin controls that move the mesh limits.
#pragma once
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/point_transform.h"

namespace invsetup {
struct Session;

/// How a line is drawn.
enum class LineStyle { solid, dotted, dashed };

/// Colours as the form's colour values: 0x00BBGGRR (255 red, 16711680 blue, 0 the default black).
inline constexpr std::uint32_t view_colour_default = 0;
inline constexpr std::uint32_t view_colour_red = 255;
inline constexpr std::uint32_t view_colour_blue = 16711680;

/// One line of the view in drawing units (pixels of the picture, y down).
struct ViewLine {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    std::uint32_t colour = view_colour_default;
    int width = 1;
    LineStyle style = LineStyle::solid;
    bool operator==(const ViewLine&) const = default;
};

/// The view's state; every drawing sets it anew.
struct TilingView {
    double view_x_min = 0, view_x_max = 0, view_y_min = 0, view_y_max = 0;
    double view_scale = 0;  // drawing units per metre
    double view_left = 0, view_top = 0;
    /// With the point transform on, the region is shown in map coordinates, and `to_map` (the
    /// inverted working transform, applied from map to local) carries mesh points onto the map.
    bool map_frame = false;
    PointTransform to_map;
    int hover_tile_x = 0, hover_tile_y = 0;
    int chosen_tile_x = 0, chosen_tile_y = 0;
    bool updating_clip = false;
    bool tiling_cancelled = false;
    /// The overlay was opened by the create command for the tile choice (Frame_do_tile shown).
    bool tile_choice = false;
    /// The picture's inner size in drawing units.
    double width = 800, height = 600;
    /// What the window paints, in order, over the image of the region (white without one).
    std::vector<ViewLine> lines;
    /// StatusBar_coords: "Local X", "Local Y", "Map X", "Map Y", the cell and tile, the cell counts.
    std::array<std::string, 6> panels{"Local X", "Local Y", "Map X", "Map Y", "", ""};
    /// The creation the create command left for Command_continue_tile.
    std::filesystem::path run_directory;
    int create_mode = 0;
};

/// Draws the view of session.mesh (and, in refinement mode, its tiles) into session.tiling_view:
/// region, scale and the line list. The definition must have been checked (the mesh built). With
/// the definition's point transform on, the region is the map area round the mesh's region, and
/// the mesh's lines are carried onto the map.
void draw_tiling_layout(Session& session);

/// The coordinates of the view's region (map coordinates when the view is on the map) of a point of
/// the picture.
void view_to_mesh(const TilingView& view, double px, double py, double& x, double& y);
/// The picture point of coordinates of the view's region.
void mesh_to_view(const TilingView& view, double x, double y, double& px, double& py);

/// Points in mesh coordinates (the readings under the view) taken to the view's region: onto the map
/// when the view is there, else left as they are.
void mesh_points_to_view(const TilingView& view, std::vector<double>& x, std::vector<double>& y);

/// The pointer moved to (px, py) of the picture: the mesh coordinates (panels 1 and 2), on the map
/// the map coordinates too (panels 3 and 4), the cell and the hover tile.
void tiling_pointer_move(Session& session, double px, double py);
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
