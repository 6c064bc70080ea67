// src/mesh/tiling_view.h - the plan view of the mesh and its tiles, without any toolkit: the view's
// state, the list of lines a window (or the plan picture) paints, the pointer, the tile choice and
// the limits the spin controls move. The overlay's controls are handled in src/form/tiling_tab.h.
#pragma once
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/point_transform.h"

namespace invsetup {
struct Session;
struct MeshLimits;

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

/// Places the view of session.mesh in the picture: clears the line list and sets the region and the
/// scale. `region` is the row of Combo_view_limits: 0 (or none, negative) the whole mesh, 1 the core,
/// 2 the refined area (the core in standard mode). The definition must have been checked (the mesh
/// built). With the definition's point transform on, the region is the map area round the mesh's
/// region. False when there is nothing to show (no mesh, or an empty region).
bool place_tiling_view(Session& session, int region);
/// Draws the placed view's lines: the frame, the core, the mesh limits or, in refinement mode, the
/// tiles and the marks of skipped tiles; on the map the mesh's lines are carried there. Panel 6 shows
/// the mesh's cell counts.
void draw_tiling_lines(Session& session);

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
/// Tile (i, j), x and y tile numbers from 1, lies within the layout's tile counts.
bool tile_in_layout(const Session& session, int i, int j);
/// The mouse button came up: with the tile choice open and a tile under the pointer, that tile
/// becomes the chosen one. False when nothing was chosen.
bool choose_hover_tile(Session& session);

/// The cells a spin control moves a limit of `axis` (0 x, 1 y, 2 z) by: 1, or in refinement mode
/// the loaded mesh's core cell over the refined cell.
int spin_step(const Session& session, int axis);
/// Moves the minimum (or maximum) limit of `axis` down (`up` false) or up by `step` cells: the count
/// of cells follows, and the other limit stays. A move that would leave one cell or none is refused
/// (false).
bool move_mesh_limit(const MeshLimits& limits, int axis, bool minimum, bool up, int step);

}  // namespace invsetup
