// src/commands/tiling_plan.h - the tiling layout as a picture: the view's lines over the picture of
// the data, the same lines a window paints.
#pragma once
#include "grids/grid_picture.h"

namespace invsetup {
struct Session;

/// Draws the tiling layout (session.mesh and its tiles must be built) at width by height pixels and
/// paints it: the grid named in Text_image_file, else the observed data (its grid, or its readings as
/// dots coloured by value), else white; then the view's lines in their colours and styles.
RgbaImage tiling_layout_picture(Session& session, int width, int height);

}  // namespace invsetup
