// src/grids/grid_access.cpp - the header checks and the read of a grid's part for an area.
#include "grids/grid_access.h"

#include <filesystem>

#include "grids/image_record.h"
#include "session.h"

namespace invsetup {

namespace {

namespace fs = std::filesystem;

// The part is held in memory, but it keeps the temporary grid's name so that every name the
// session hands out for a grid part is recognisably temporary.
std::string next_temporary_name(GridState& state) {
    ++state.temporary_count;
    return (fs::temp_directory_path() / ("~WD" + std::to_string(state.temporary_count) + ".grd")).string();
}

}  // namespace

void remove_temporary_grid(std::string& name_1, std::string& name_2) {
    for (std::string* name : {&name_1, &name_2}) {
        if (name->empty()) continue;
        const fs::path path(*name);
        std::error_code error;
        if (path.filename().string().starts_with("~") && fs::is_regular_file(path, error)) fs::remove(path, error);
        name->clear();
    }
}

void read_grid_header(Session& session, const std::string& name, GridWindow& window, std::string& grid_text,
                      Array1<int>& grid_ints, Array1<double>& grid_reals, double& x_min, double& x_max, double& y_min,
                      double& y_max, int& status) {
    status = 0;
    GridState& state = session.grids;
    std::string no_second_name;
    remove_temporary_grid(state.temporary_grid_name, no_second_name);
    window = GridWindow{};
    grid_ints.assign(grid_int_count, 0);
    grid_reals.assign(grid_real_count, 0.0);
    grid_text.clear();

    ImageRecord record;
    std::error_code error;
    if (fs::is_regular_file(name, error)) {
        state.current_grid_file = name;
        status = read_image_record(session, record, name, 1, false);
        if (status < 0) {
            session.dialogue.message_box("Failed to determine grid format");
            status = -1;
            return;
        }
    }
    const bool placed_tiff = record.grid_ints[grid_int::kind] == grid_kind_raster &&
                             record.grid_ints[grid_int::sub_kind] == raster_geotiff;
    if (placed_tiff) {
        grid_ints = record.grid_ints;
        grid_reals = record.grid_reals;
        grid_text = "TIFF";
    } else {
        GRDRDH(name, grid_ints, grid_reals, grid_text, status);
    }
    if (grid_ints[grid_int::kind] < 1 || status < 0 || !is_valid_grid_header(grid_ints, grid_reals)) {
        session.dialogue.message_box("The specified grid is invalid");
        status = -1;
        return;
    }

    const bool limits_given = x_min < x_max && y_min < y_max;
    double read_x_min = limits_given ? x_min : grid_reals[grid_real::x_min];
    double read_x_max = limits_given ? x_max : grid_reals[grid_real::x_max];
    double read_y_min = limits_given ? y_min : grid_reals[grid_real::y_min];
    double read_y_max = limits_given ? y_max : grid_reals[grid_real::y_max];

    // The TIFF's own tags placed it; a world file beside it must not move it now.
    std::vector<std::string> open_options;
    if (placed_tiff) open_options.push_back("GEOREF_SOURCES=INTERNAL");
    GRDRDGD(name, window, read_x_min, read_x_max, 0.0, read_y_min, read_y_max, 0.0, status, open_options);
    if (status < 0 || !is_valid_grid_header(window.header.grid_ints, window.header.grid_reals)) {
        const std::string failure = window.failure;
        window = GridWindow{};
        session.dialogue.message_box("The specified grid is invalid" + (failure.empty() ? "" : ": " + failure));
        status = -1;
        return;
    }
    window.name = next_temporary_name(state);
    state.temporary_grid_name = window.name;
    grid_ints = window.header.grid_ints;
    grid_reals = window.header.grid_reals;
    grid_text = window.header.grid_text;
    if (!limits_given) {
        x_min = read_x_min;
        x_max = read_x_max;
        y_min = read_y_min;
        y_max = read_y_max;
    }
    status = 0;
}

}  // namespace invsetup
