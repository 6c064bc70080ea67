// src/grids/sidecar.h - where a raster picture lies on the map: the small file beside it (world
// file, MapInfo .tab, ENVI .hdr, .egb, .grf) or a TIFF's own tags.
#pragma once
#include <string>

namespace invsetup {

/// Kinds of georeference a sidecar gave; they differ in where the origin is and in the sign of
/// the y pixel size.
enum class SidecarKind {
    none,
    world_file,     // origin at the centre of the top-left pixel, y size negative for north-up
    tiff_tags,      // as a world file (read from the TIFF's own tags)
    grf,            // as a world file; the fifth number is stored with its sign changed
    envi_header,    // origin at the reference pixel (1-based, 1.0 is the top-left corner), y size positive
    egb,            // as a world file
    control_points  // limits and the pixel positions that go with them (MapInfo .tab)
};

/// The georeference read from a sidecar. Limits start at -1e32, the rest at 0.
struct SidecarGeoreference {
    SidecarKind kind = SidecarKind::none;
    double x_origin = 0, y_origin = 0;          // map position of the first pixel
    double x_pixel_size = 0, y_pixel_size = 0;  // as read, with sign
    double x_min = -1e32, x_max = -1e32, y_min = -1e32, y_max = -1e32;
    /// Control points: pixel column at x_min and x_max, pixel row (from the top) at y_min and y_max.
    double x_min_pixel = 0, x_max_pixel = 0, y_min_pixel = 0, y_max_pixel = 0;
    /// ENVI: the reference pixel, 1-based; (1, 1) is the top-left corner of the picture.
    double x_reference_pixel = 1, y_reference_pixel = 1;
    int status = -1;  // 0 once a georeference was read
    /// Why a sidecar that was read can't be used, when it says where the picture lies with a number
    /// that isn't finite ("it gives the x pixel size as inf, not a finite number"); status is then -1.
    std::string refusal;
};

/// The sidecar of an image: the first that exists of the image name with "w" added, the same name
/// rebuilt from folder and base name, then the base name with each extension of the image's kind in
/// its fixed order (TIFF tries ".grf" before ".egb"). "" when there is none.
std::string find_sidecar_file(const std::string& image_name);

/// Reads the sidecar `sidecar_name`; a ".tif" or ".tiff" name reads the TIFF's own tags. A file
/// that doesn't exist or can't be understood leaves status -1, silently; one that gives a position
/// or a size as infinite or not a number ("inf", "nan", "1e309") leaves status -1 and its refusal.
SidecarGeoreference read_sidecar_file(const std::string& sidecar_name);

/// The placement of a picture of width by height pixels by its georeference: the coordinates of the
/// centres of the outer pixels and the spacing of pixel centres (both positive). False when the
/// georeference has no use (status -1, zero pixel size, or control points that don't span).
bool georeference_limits(const SidecarGeoreference& georeference, int width, int height, double& x_min,
                         double& x_max, double& y_min, double& y_max, double& x_spacing, double& y_spacing);

}  // namespace invsetup
