// src/commands/data_pictures.cpp - pictures of the data files for the data tabs.
#include "commands/data_pictures.h"

#include <algorithm>
#include <exception>

#include "data/location_file.h"
#include "session.h"
#include "support/files.h"
#include "support/text.h"

namespace invsetup {

namespace {

constexpr double picture_margin = 10.0;

/// The readings of a point slot (0 observed data, 1 topography) with their first value, or for the
/// topography their elevation.
void load_points(const Session& session, int slot, DataPicture& picture) {
    // Read through a session of its own, so that no message reaches the person from a picture.
    HeadlessDialogue silent;
    Session quiet(silent);
    quiet.working_directory = session.working_directory;
    LocationFileSettings settings = location_settings(session.definition, slot);
    settings.file = resolve_path(session.working_directory, session.definition.data_file_names[static_cast<std::size_t>(slot)]);
    settings.keep_ranges = true;
    LocationData data;
    LocationSummary summary;
    if (load_locations_file(quiet, settings, data, summary) < 0 || data.count <= 0) return;
    picture.x.reserve(static_cast<std::size_t>(data.count));
    picture.y.reserve(static_cast<std::size_t>(data.count));
    picture.values.reserve(static_cast<std::size_t>(data.count));
    for (int k = 1; k <= data.count; ++k) {
        picture.x.push_back(data.locations(k, 1));
        picture.y.push_back(data.locations(k, 2));
        picture.values.push_back(slot == 0 ? static_cast<double>(data.values(k, 1)) : data.locations(k, 3));
    }
    const auto [x_low, x_high] = std::minmax_element(picture.x.begin(), picture.x.end());
    const auto [y_low, y_high] = std::minmax_element(picture.y.begin(), picture.y.end());
    picture.x_min = *x_low;
    picture.x_max = *x_high;
    picture.y_min = *y_low;
    picture.y_max = *y_high;
}

void load_grid(const Session& session, int slot, DataPicture& picture) {
    const std::string name =
        resolve_path(session.working_directory, session.definition.data_file_names[static_cast<std::size_t>(slot)]).string();
    if (read_whole_grid(name, picture.grid) < 0) {
        picture.grid = GridWindow{};
        return;
    }
    picture.x_min = picture.grid.header.x_min();
    picture.x_max = picture.grid.header.x_max();
    picture.y_min = picture.grid.header.y_min();
    picture.y_max = picture.grid.header.y_max();
}

}  // namespace

DataPicture load_data_picture(const Session& session, int slot) {
    DataPicture picture;
    if (slot < 0 || slot > 5) return picture;
    const std::size_t s = static_cast<std::size_t>(slot);
    if (trim(session.definition.data_file_names[s]).empty()) return picture;
    try {
        if (slot <= 1 && session.definition.data_file_kinds[s] == 0)
            load_points(session, slot, picture);
        else if (slot >= 1 && session.definition.data_file_kinds[s] == 1)
            load_grid(session, slot, picture);
    } catch (const std::exception&) {
        return DataPicture{};
    }
    return picture;
}

RgbaImage render_data_picture(const DataPicture& picture, int width, int height) {
    RgbaImage image(width, height);
    if (picture.empty() || width <= 0 || height <= 0) return image;
    const PictureFrame frame =
        fit_picture_frame(picture.x_min, picture.x_max, picture.y_min, picture.y_max, width, height, picture_margin);
    const ColourTable table = ColourTable::spectrum();
    if (!picture.grid.empty())
        paint_grid(picture.grid, frame, table, image);
    else
        paint_points(picture.x, picture.y, picture.values, frame, table, image, 3);
    return image;
}

}  // namespace invsetup
