// src/grids/plan_raster.h - lines drawn into a picture: the plan views paint their line lists over
// the picture of the data with these, and a picture can be read back from a PNG file.
#pragma once
#include <filesystem>
#include <vector>

#include "grids/grid_picture.h"

namespace invsetup {

/// One line in pixels of the picture (y down). `dash` 0 solid; otherwise the line is drawn for
/// `dash` pixels and left out for `gap` pixels along its length.
struct PictureLine {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    Rgba colour{0, 0, 0, 255};
    int width = 1;
    int dash = 0, gap = 0;
};

/// Draws the lines in order; each pixel along a line is a square of `width` pixels centred on it.
/// Parts outside the picture are left out.
void draw_picture_lines(RgbaImage& image, const std::vector<PictureLine>& lines);

/// Reads a PNG file into `image`. Returns 0, or -1 when it can't be read.
int read_png(const std::filesystem::path& path, RgbaImage& image);

}  // namespace invsetup
