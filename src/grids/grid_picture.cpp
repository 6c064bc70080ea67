// src/grids/grid_picture.cpp - grids and points as pictures: equalised colour ramp, hillshade, PNG.
#include "grids/grid_picture.h"
#include "grids/lazy_library.h"

#include <FreeImage.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace invsetup {

namespace {

constexpr double null_below = -1e30;
constexpr int histogram_bins = 1024;

/// Maps a value to its rank among the values (0..1) through a histogram: histogram equalisation.
class Equaliser {
public:
    template <class Values>
    explicit Equaliser(const Values& values) {
        minimum_ = 1e300;
        maximum_ = -1e300;
        for (double v : values) {
            if (v < null_below || !std::isfinite(v)) continue;
            minimum_ = std::min(minimum_, v);
            maximum_ = std::max(maximum_, v);
        }
        if (minimum_ > maximum_) return;
        cumulative_.assign(histogram_bins, 0.0);
        double count = 0;
        for (double v : values) {
            if (v < null_below || !std::isfinite(v)) continue;
            cumulative_[static_cast<std::size_t>(bin(v))] += 1;
            count += 1;
        }
        double running = 0;
        for (double& c : cumulative_) {
            // The middle of the bin's share, so that a single value lands in the middle of the ramp.
            const double share = c;
            c = (running + share / 2) / count;
            running += share;
        }
    }

    double fraction(double v) const {
        if (cumulative_.empty()) return 0.5;
        return cumulative_[static_cast<std::size_t>(bin(v))];
    }

private:
    int bin(double v) const {
        if (maximum_ <= minimum_) return 0;
        const int b = static_cast<int>((v - minimum_) / (maximum_ - minimum_) * histogram_bins);
        return std::clamp(b, 0, histogram_bins - 1);
    }

    double minimum_ = 0, maximum_ = 0;
    std::vector<double> cumulative_;
};

std::uint8_t channel(double v) { return static_cast<std::uint8_t>(std::clamp(std::lround(v), 0L, 255L)); }

Rgba shaded(Rgba colour, double shade) {
    return {channel(colour.r * shade), channel(colour.g * shade), channel(colour.b * shade), colour.a};
}

/// Light on each node from a sun in the north-west, 45 degrees up, as a factor round 1. Slopes are
/// scaled so that the typical gradient of the grid stands at 45 degrees, whatever the units.
std::vector<float> hillshade(const GridWindow& grid) {
    const int columns = grid.header.columns();
    const int rows = grid.header.rows();
    const double dx = grid.header.x_spacing();
    const double dy = grid.header.y_spacing();
    std::vector<float> gx(grid.values.size(), 0.0f), gy(grid.values.size(), 0.0f);
    auto at = [&](int c, int r) { return grid.values[static_cast<std::size_t>(r) * columns + c]; };
    double sum_squares = 0;
    long count = 0;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            const float centre = at(c, r);
            if (centre < null_below) continue;
            const int c0 = std::max(c - 1, 0), c1 = std::min(c + 1, columns - 1);
            const int r0 = std::max(r - 1, 0), r1 = std::min(r + 1, rows - 1);
            float west = at(c0, r), east = at(c1, r), south = at(c, r0), north = at(c, r1);
            if (west < null_below) west = centre;
            if (east < null_below) east = centre;
            if (south < null_below) south = centre;
            if (north < null_below) north = centre;
            const std::size_t k = static_cast<std::size_t>(r) * columns + c;
            gx[k] = c1 > c0 ? static_cast<float>((east - west) / ((c1 - c0) * dx)) : 0.0f;
            gy[k] = r1 > r0 ? static_cast<float>((north - south) / ((r1 - r0) * dy)) : 0.0f;
            sum_squares += static_cast<double>(gx[k]) * gx[k] + static_cast<double>(gy[k]) * gy[k];
            ++count;
        }
    }
    const double typical = count > 0 ? std::sqrt(sum_squares / count) : 0.0;
    const double z_factor = typical > 0 ? 1.0 / typical : 0.0;
    // Sun from the north-west (azimuth 315), 45 degrees above the horizon.
    const double sun_x = -std::sqrt(0.5) * std::sqrt(0.5), sun_y = std::sqrt(0.5) * std::sqrt(0.5);
    const double sun_z = std::sqrt(0.5);
    std::vector<float> shade(grid.values.size(), 1.0f);
    for (std::size_t k = 0; k < shade.size(); ++k) {
        const double nx = -gx[k] * z_factor, ny = -gy[k] * z_factor;
        const double length = std::sqrt(nx * nx + ny * ny + 1.0);
        const double light = (nx * sun_x + ny * sun_y + sun_z) / length;  // 0.707 on the flat
        shade[k] = static_cast<float>(0.55 + 0.65 * std::clamp(light, 0.0, 1.0));
    }
    return shade;
}

void paint_dot(RgbaImage& image, double px, double py, int size, Rgba colour) {
    const int x0 = static_cast<int>(std::floor(px - (size - 1) / 2.0 + 0.5));
    const int y0 = static_cast<int>(std::floor(py - (size - 1) / 2.0 + 0.5));
    for (int y = std::max(y0, 0); y < std::min(y0 + size, image.height); ++y)
        for (int x = std::max(x0, 0); x < std::min(x0 + size, image.width); ++x) image.at(x, y) = colour;
}

}  // namespace

RgbaImage::RgbaImage(int w, int h, Rgba fill)
    : width(std::max(w, 0)), height(std::max(h, 0)),
      pixels(static_cast<std::size_t>(std::max(w, 0)) * static_cast<std::size_t>(std::max(h, 0)), fill) {}

Rgba ColourTable::colour(double fraction) const {
    if (entries.empty()) return picture_background;
    if (entries.size() == 1 || !(fraction > 0)) return entries.front();
    if (fraction >= 1) return entries.back();
    const double position = fraction * static_cast<double>(entries.size() - 1);
    const std::size_t low = static_cast<std::size_t>(position);
    const double t = position - static_cast<double>(low);
    const Rgba& a = entries[low];
    const Rgba& b = entries[std::min(low + 1, entries.size() - 1)];
    auto mix = [t](std::uint8_t p, std::uint8_t q) { return channel(p + (q - p) * t); };
    return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b), mix(a.a, b.a)};
}

ColourTable ColourTable::spectrum() {
    return {{{0, 0, 160, 255},
             {0, 80, 255, 255},
             {0, 200, 255, 255},
             {0, 210, 120, 255},
             {120, 230, 0, 255},
             {255, 240, 0, 255},
             {255, 150, 0, 255},
             {240, 30, 0, 255},
             {230, 0, 160, 255}}};
}

PictureFrame fit_picture_frame(double x_min, double x_max, double y_min, double y_max, int width, int height,
                               double margin) {
    if (!(x_max > x_min)) {
        x_min -= 1;
        x_max += 1;
    }
    if (!(y_max > y_min)) {
        y_min -= 1;
        y_max += 1;
    }
    PictureFrame frame{x_min, x_max, y_min, y_max, 0, 0, 0};
    const double aspect = (x_max - x_min) / (y_max - y_min);
    const double w = width, h = height;
    if (h <= 0 || aspect >= w / h) {
        frame.left = margin;
        frame.top = (h - (w - 2 * margin) / aspect) / 2;
    } else {
        frame.top = margin;
        frame.left = (w - (h - 2 * margin) * aspect) / 2;
    }
    frame.scale = (w - 2 * frame.left) / (x_max - x_min);
    return frame;
}

void paint_grid(const GridWindow& grid, const PictureFrame& frame, const ColourTable& table, RgbaImage& image) {
    const int columns = grid.header.columns();
    const int rows = grid.header.rows();
    if (grid.empty() || columns < 1 || rows < 1 || frame.scale <= 0) return;
    const Equaliser equaliser(grid.values);
    const std::vector<float> shade = hillshade(grid);
    const double x0 = grid.header.x_min(), y0 = grid.header.y_min();
    const double dx = grid.header.x_spacing(), dy = grid.header.y_spacing();
    // Each node covers half a spacing round itself.
    const int px_first = std::max(0, static_cast<int>(std::floor(frame.pixel_x(x0 - dx / 2))));
    const int px_last = std::min(image.width - 1, static_cast<int>(std::ceil(frame.pixel_x(x0 + (columns - 0.5) * dx))));
    const int py_first = std::max(0, static_cast<int>(std::floor(frame.pixel_y(y0 + (rows - 0.5) * dy))));
    const int py_last = std::min(image.height - 1, static_cast<int>(std::ceil(frame.pixel_y(y0 - dy / 2))));
    for (int py = py_first; py <= py_last; ++py) {
        const double y = frame.map_y(py + 0.5);
        const long r = std::lround((y - y0) / dy);
        if (r < 0 || r >= rows) continue;
        for (int px = px_first; px <= px_last; ++px) {
            const double x = frame.map_x(px + 0.5);
            const long c = std::lround((x - x0) / dx);
            if (c < 0 || c >= columns) continue;
            const std::size_t k = static_cast<std::size_t>(r) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(c);
            const float v = grid.values[k];
            if (v < null_below) continue;
            image.at(px, py) = shaded(table.colour(equaliser.fraction(v)), shade[k]);
        }
    }
}

void paint_points(std::span<const double> x, std::span<const double> y, std::span<const double> values,
                  const PictureFrame& frame, const ColourTable& table, RgbaImage& image, int dot_size) {
    const Equaliser equaliser(values);
    const std::size_t count = std::min({x.size(), y.size(), values.size()});
    for (std::size_t k = 0; k < count; ++k) {
        const Rgba colour = values[k] < null_below ? Rgba{150, 150, 150, 255} : table.colour(equaliser.fraction(values[k]));
        paint_dot(image, frame.pixel_x(x[k]), frame.pixel_y(y[k]), dot_size, colour);
    }
}

int render_grid_picture(const std::string& name, double x_min, double x_max, double y_min, double y_max, int width,
                        int height, double margin, RgbaImage& image, PictureFrame& frame) {
    image = RgbaImage(width, height);
    GridWindow grid;
    int status = 0;
    if (!(x_min < x_max) || !(y_min < y_max))
        status = read_whole_grid(name, grid);
    else
        GRDRDGD(name, grid, x_min, x_max, 0, y_min, y_max, 0, status);
    if (status < 0 || grid.empty()) {
        frame = fit_picture_frame(x_min, x_max, y_min, y_max, width, height, margin);
        return -1;
    }
    if (!(x_min < x_max) || !(y_min < y_max)) {
        x_min = grid.header.x_min();
        x_max = grid.header.x_max();
        y_min = grid.header.y_min();
        y_max = grid.header.y_max();
    }
    frame = fit_picture_frame(x_min, x_max, y_min, y_max, width, height, margin);
    paint_grid(grid, frame, ColourTable::spectrum(), image);
    return 0;
}

int read_whole_grid(const std::string& name, GridWindow& grid) {
    GridHeader header;
    int status = 0;
    GRDRDH(name, header.grid_ints, header.grid_reals, header.grid_text, status);
    if (status < 0 || !is_valid_grid_header(header.grid_ints, header.grid_reals)) return -1;
    GRDRDGD(name, grid, header.x_min(), header.x_max(), 0, header.y_min(), header.y_max(), 0, status);
    return status < 0 || grid.empty() ? -1 : 0;
}

int write_png(const RgbaImage& image, const std::filesystem::path& path) {
    if (image.empty()) return -1;
    struct Unload {
        void operator()(FIBITMAP* bitmap) const { FREEIMAGE_CALL(FreeImage_Unload)(bitmap); }
    };
    std::unique_ptr<FIBITMAP, Unload> bitmap(FREEIMAGE_CALL(FreeImage_Allocate)(image.width, image.height, 32, 0, 0, 0));
    if (!bitmap) return -1;
    for (int y = 0; y < image.height; ++y) {
        BYTE* line = FREEIMAGE_CALL(FreeImage_GetScanLine)(bitmap.get(), image.height - 1 - y);  // FreeImage keeps rows bottom up
        for (int x = 0; x < image.width; ++x) {
            const Rgba& p = image.at(x, y);
            line[FI_RGBA_RED] = p.r;
            line[FI_RGBA_GREEN] = p.g;
            line[FI_RGBA_BLUE] = p.b;
            line[FI_RGBA_ALPHA] = p.a;
            line += 4;
        }
    }
    return FREEIMAGE_CALL(FreeImage_Save)(FIF_PNG, bitmap.get(), path.string().c_str(), PNG_DEFAULT) ? 0 : -1;
}

}  // namespace invsetup
