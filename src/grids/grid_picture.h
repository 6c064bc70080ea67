// src/grids/grid_picture.h - pictures behind the views, without any toolkit: a grid as a colour ramp
// with hillshade, points as dots coloured by value. A picture is an RGBA image; a PictureFrame maps
// map coordinates to its pixels, so that plans can be drawn over it in the same place.
#pragma once
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "grids/grid_file.h"

namespace invsetup {

struct Rgba {
    std::uint8_t r = 255, g = 255, b = 255, a = 255;
    bool operator==(const Rgba&) const = default;
};

inline constexpr Rgba picture_background{255, 255, 255, 255};

/// Pixels row by row from the top, left to right within a row.
struct RgbaImage {
    int width = 0;
    int height = 0;
    std::vector<Rgba> pixels;

    RgbaImage() = default;
    RgbaImage(int width, int height, Rgba fill = picture_background);
    bool empty() const { return pixels.empty(); }
    Rgba& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]; }
    const Rgba& at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

/// A colour ramp: the entries spread evenly from the lowest value (first) to the highest (last).
struct ColourTable {
    std::vector<Rgba> entries;
    /// The colour at `fraction` 0..1 (clamped), between the two nearest entries.
    Rgba colour(double fraction) const;
    /// Blue through cyan, green and yellow to red and magenta: the usual ramp of potential-field maps.
    static ColourTable spectrum();
};

/// Where a map region lies in a picture: the region keeps its aspect, centred, with `margin` pixels
/// on the tighter side. Pixel x = (x - x_min) * scale + left; pixel y = (y_max - y) * scale + top.
struct PictureFrame {
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;
    double scale = 0;   // pixels per map unit, one value for both axes
    double left = 0, top = 0;

    double pixel_x(double x) const { return (x - x_min) * scale + left; }
    double pixel_y(double y) const { return (y_max - y) * scale + top; }
    double map_x(double pixel_x) const { return (pixel_x - left) / scale + x_min; }
    double map_y(double pixel_y) const { return y_max - (pixel_y - top) / scale; }
};

/// Fits the region x_min..x_max, y_min..y_max into a picture of width by height pixels with `margin`.
/// A region without extent on an axis is widened by one unit on each side of that axis.
PictureFrame fit_picture_frame(double x_min, double x_max, double y_min, double y_max, int width, int height,
                               double margin);

/// Paints a grid part into `image` where `frame` puts it: each pixel takes the nearest node's colour
/// from the ramp (values equalised over their histogram, so that a few extremes don't flatten the
/// rest), shaded by a sun in the north-west at 45 degrees. Null nodes and pixels off the grid stay as
/// they are.
void paint_grid(const GridWindow& grid, const PictureFrame& frame, const ColourTable& table, RgbaImage& image);

/// Paints points as dots of `dot_size` pixels coloured by value over the same equalised ramp; null
/// values (below -1e30) are drawn grey. The spans have one length.
void paint_points(std::span<const double> x, std::span<const double> y, std::span<const double> values,
                  const PictureFrame& frame, const ColourTable& table, RgbaImage& image, int dot_size = 3);

/// The grid file `name` over the region (the whole grid when x_min is not below x_max), rendered in
/// a picture of width by height pixels with `margin`; `frame` tells where the region went. Returns
/// 0, or -1 when the file can't be read as a grid (the image is then white).
int render_grid_picture(const std::string& name, double x_min, double x_max, double y_min, double y_max, int width,
                        int height, double margin, RgbaImage& image, PictureFrame& frame);

/// Reads the whole grid `name` into `grid`. Returns 0, or -1 when it isn't a grid that can be read.
int read_whole_grid(const std::string& name, GridWindow& grid);

/// Writes the image as a PNG file. Returns 0, or -1 when it can't be written.
int write_png(const RgbaImage& image, const std::filesystem::path& path);

}  // namespace invsetup
