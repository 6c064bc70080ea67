// src/grids/image_record.h - one displayed or read file (grid, height file, raster picture or point
// file): what kind it is, where it lies, and for pictures the pixels.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "grids/grid_file.h"
#include "grids/sidecar.h"

namespace invsetup {
struct Session;

struct ImageRecord {
    ImageRecord();

    std::string file_name;
    /// Slots as GridHeader's. Limits start at 1,000,000 (minimum) and -1,000,000 (maximum) so that
    /// the first data set them.
    Array1<int> grid_ints;
    Array1<double> grid_reals;
    int status = -1;

    /// Rasters: the sidecar used ("" when none, the picture itself for a TIFF placed by its tags).
    std::string sidecar_name;
    /// The file the georeference was read from, kept when it could not place the picture.
    std::string georeference_file;
    SidecarGeoreference georeference;
    int width = 0, height = 0;
    /// Rasters read with their pixels: 0xAARRGGBB, top row first, width * height.
    std::vector<std::uint32_t> pixels;
};

/// The kind of a file: by its extension, "HGT" a height file and "BMP", "JPG", "GIF", "TIF", "PNG",
/// "TGA" a raster; otherwise a grid when is_grid_file says so; a point file when the file is a list
/// of points ("XYZ", "CSV", "OBS", "TXT", "DAT", or x, y, z rows); anything else is taken for a grid,
/// whose reader then says that its format is unknown.
int image_kind_of(const std::string& file_name);

/// Reads the kind and header of `file_name` into `record`, the list_position-th file (1-based) of a
/// list of images. A raster is read by FreeImage (pixels only when `load_pixels`) and placed by its
/// sidecar; a grid's header is read. Returns and sets record.status: 0, or -1. A missing file and a
/// raster anywhere but first are told to the person; a file of no known format fails silently, for
/// the caller to word.
int read_image_record(Session& session, ImageRecord& record, const std::string& file_name, int list_position,
                      bool load_pixels);

}  // namespace invsetup
