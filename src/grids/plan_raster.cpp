// src/grids/plan_raster.cpp - lines into an RGBA picture; PNG files read back.
#include "grids/plan_raster.h"
#include "grids/lazy_library.h"

#include <FreeImage.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace invsetup {

namespace {

void stamp(RgbaImage& image, int cx, int cy, int width, Rgba colour) {
    const int low = -(width - 1) / 2;
    for (int dy = low; dy < low + width; ++dy)
        for (int dx = low; dx < low + width; ++dx) {
            const int x = cx + dx, y = cy + dy;
            if (x >= 0 && y >= 0 && x < image.width && y < image.height) image.at(x, y) = colour;
        }
}

}  // namespace

void draw_picture_lines(RgbaImage& image, const std::vector<PictureLine>& lines) {
    for (const PictureLine& line : lines) {
        const double dx = line.x2 - line.x1, dy = line.y2 - line.y1;
        const int steps = std::max(1, static_cast<int>(std::ceil(std::max(std::fabs(dx), std::fabs(dy)))));
        // A line far outside the picture is not walked pixel by pixel.
        if (steps > 8 * (image.width + image.height) + 64) continue;
        const int period = line.dash > 0 ? line.dash + std::max(line.gap, 0) : 0;
        for (int n = 0; n <= steps; ++n) {
            if (period > 0 && n % period >= line.dash) continue;
            const double t = static_cast<double>(n) / steps;
            stamp(image, static_cast<int>(std::lround(line.x1 + t * dx)), static_cast<int>(std::lround(line.y1 + t * dy)),
                  std::max(line.width, 1), line.colour);
        }
    }
}

int read_png(const std::filesystem::path& path, RgbaImage& image) {
    struct Unload {
        void operator()(FIBITMAP* bitmap) const { FREEIMAGE_CALL(FreeImage_Unload)(bitmap); }
    };
    std::unique_ptr<FIBITMAP, Unload> loaded(FREEIMAGE_CALL(FreeImage_Load)(FIF_PNG, path.string().c_str(), PNG_DEFAULT));
    if (!loaded) return -1;
    std::unique_ptr<FIBITMAP, Unload> bitmap(FREEIMAGE_CALL(FreeImage_ConvertTo32Bits)(loaded.get()));
    if (!bitmap) return -1;
    const int width = static_cast<int>(FREEIMAGE_CALL(FreeImage_GetWidth)(bitmap.get()));
    const int height = static_cast<int>(FREEIMAGE_CALL(FreeImage_GetHeight)(bitmap.get()));
    image = RgbaImage(width, height);
    for (int y = 0; y < height; ++y) {
        const BYTE* line = FREEIMAGE_CALL(FreeImage_GetScanLine)(bitmap.get(), height - 1 - y);  // rows bottom up
        for (int x = 0; x < width; ++x) {
            Rgba& p = image.at(x, y);
            p.r = line[FI_RGBA_RED];
            p.g = line[FI_RGBA_GREEN];
            p.b = line[FI_RGBA_BLUE];
            p.a = line[FI_RGBA_ALPHA];
            line += 4;
        }
    }
    return 0;
}

}  // namespace invsetup
