// src/commands/limits_commands.cpp - "Set Limits from Data" and "Set Limits from Data File": the mesh
// limits from the extent of a data file.
#include "commands/limits_commands.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>

#include "data/location_file.h"
#include "definition/definition_checks.h"
#include "form/form_load.h"
#include "grids/grid_access.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

constexpr int kind_grid = 1;

/// A data file name as a path: relative names count from the working directory.
std::filesystem::path data_file_path(const Session& session, const std::string& name) {
    return resolve_path(session.working_directory, name);
}

/// Moves a limit pair outward onto multiples of the cell size.
void snap_outward(double cell_size, double& low, double& high) {
    if (!(cell_size > 0)) return;
    const double high_snap = to_integer(high / cell_size) * cell_size;
    high = high > high_snap ? high_snap + cell_size : high_snap;
    const double low_snap = to_integer(low / cell_size) * cell_size;
    low = low < low_snap ? low_snap - cell_size : low_snap;
}

/// The mesh group of the form is shown from the record: bring the record's mesh fields up to date
/// with the definition first, so that only the new limits change.
void copy_mesh_fields(const InversionDefinition& definition, ParameterRecord& record) {
    record.mesh_min = definition.mesh_min;
    record.mesh_max = definition.mesh_max;
    record.mesh_cell_size = definition.mesh_cell_size;
    record.mesh_cell_count = definition.mesh_cell_count;
    record.add_mesh_padding = definition.add_mesh_padding;
    record.padding_multipliers = definition.padding_multipliers;
    record.smoothness_weighting = definition.smoothness_weighting;
    record.weight_multipliers = definition.weight_multipliers;
    record.use_expanded_mesh = definition.use_expanded_mesh;
    record.x_tile_size = definition.x_tile_size;
    record.y_tile_size = definition.y_tile_size;
    record.tile_overlap = definition.tile_overlap;
    record.tile_xy_blend = definition.tile_xy_blend;
    record.tile_z_blend = definition.tile_z_blend;
    record.tile_min_points = definition.tile_min_points;
    record.include_regional_mesh = definition.include_regional_mesh;
    record.tile_coarse_model = definition.tile_coarse_model;
    record.tile_use_reference = definition.tile_use_reference;
    record.tile_order = definition.tile_order;
}

/// What a data file gives for its limits.
struct DataExtent {
    double x_min = 1e32, x_max = -1e32, y_min = 1e32, y_max = -1e32;
    double z_min = 1e32, z_max = -1e32;
    double mean = 0;
    double grid_cell_size = 0;  // 0 for a point file
};

int grid_extent(Session& session, int index, DataExtent& extent) {
    const std::string name = data_file_path(session, session.definition.data_file_names.at(static_cast<std::size_t>(index))).string();
    GridWindow window;
    std::string grid_text;
    Array1<int> grid_ints;
    Array1<double> grid_reals;
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;  // not in order: the whole grid
    int status = 0;
    read_grid_header(session, name, window, grid_text, grid_ints, grid_reals, x_min, x_max, y_min, y_max, status);
    if (status < 0) {
        session.dialogue.message_box("There was an error reading the grid file");
        return -1;
    }
    GridStatistics statistics;
    GRDSTAT(window, statistics, status);
    std::string ignored;
    remove_temporary_grid(session.grids.temporary_grid_name, ignored);
    if (status < 0) {
        session.dialogue.message_box("There was an error calculating the grid file statistics");
        return -1;
    }
    const PointTransform& transform = session.definition.coordinate_transform;
    if (transform.active) transform_grid_extents(transform, map_to_local, x_min, x_max, y_min, y_max);
    extent.x_min = x_min;
    extent.x_max = x_max;
    extent.y_min = y_min;
    extent.y_max = y_max;
    extent.z_min = statistics.minimum;
    extent.z_max = statistics.maximum;
    extent.mean = statistics.mean;
    extent.grid_cell_size = window.header.x_spacing();
    return 0;
}

int point_extent(Session& session, int index, DataExtent& extent) {
    LocationFileSettings settings = location_settings(session.definition, index);
    settings.file = data_file_path(session, session.definition.data_file_names.at(static_cast<std::size_t>(index)));
    // The limits come in the file's own coordinates, as read.
    clear_point_transform(settings.transform);
    LocationData data;
    LocationSummary summary;
    if (read_locations_file(session, settings, location_count_pass, data, summary) < 0) return -1;
    if (data.count <= 0) {
        session.dialogue.message_box("The data file " + settings.file.string() +
                                     " holds no reading with numbers in the columns given: the limits were not changed.");
        return -1;
    }
    extent.x_min = summary.x_min;
    extent.x_max = summary.x_max;
    extent.y_min = summary.y_min;
    extent.y_max = summary.y_max;
    extent.z_min = summary.z_min;
    extent.z_max = summary.z_max;
    extent.mean = summary.value_mean[0];
    return 0;
}

}  // namespace

int Command_set_limits_from_file(Session& session, int index) {
    try {
        if (index < 0 || index > 1) throw std::out_of_range("no data file of index " + std::to_string(index));
        InversionDefinition& definition = session.definition;
        FormModel& form = session.form;
        if (index == 0 && check_file_definitions(session, 0) < 0) return -1;

        DataExtent extent;
        const bool grid = definition.data_file_kinds[static_cast<std::size_t>(index)] == kind_grid;
        if ((grid ? grid_extent(session, index, extent) : point_extent(session, index, extent)) < 0) return -1;
        if (index == 0) {
            if (!grid) definition.regional_base = static_cast<float>(extent.mean);
            form.set_text("Text_UBC_regional_field", format_picture(extent.mean, "0.0"));
        }

        if (index == 0) {
            const double lows[2] = {extent.x_min, extent.y_min};
            const double highs[2] = {extent.x_max, extent.y_max};
            for (std::size_t axis = 0; axis < 2; ++axis) {
                double& cell_size = definition.mesh_cell_size[axis];
                if (extent.grid_cell_size > cell_size) cell_size = extent.grid_cell_size;
                double low = lows[axis], high = highs[axis];
                snap_outward(cell_size, low, high);
                definition.mesh_min[axis] = low;
                definition.mesh_max[axis] = high;
            }
        } else {
            double lowest = extent.z_min, highest = extent.z_max;
            const double z_cell = definition.mesh_cell_size[2];
            snap_outward(z_cell, lowest, highest);
            if (definition.inversion_method == method_zarninv3d) {
                definition.mesh_min[2] = highest - lowest;
                definition.mesh_max[2] = 0;
            } else {
                definition.mesh_min[2] = lowest + definition.elevation_offsets[1];
                definition.mesh_max[2] = highest + definition.elevation_offsets[1];
            }
            // A first mesh reaches down a quarter of its narrower width, 3000 at most.
            double depth = std::min({(definition.mesh_max[0] - definition.mesh_min[0]) / 4,
                                     (definition.mesh_max[1] - definition.mesh_min[1]) / 4, 3000.0});
            if (z_cell > 0) depth = to_integer(depth / z_cell) * z_cell;
            if (-depth < definition.mesh_min[2]) definition.mesh_min[2] = -depth;
        }

        copy_mesh_fields(definition, session.record);
        load_mag3d_form(session, 4);
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box(std::string("An error occured while setting the limits: ") + fault.what());
        return -1;
    }
}

void register_limits_commands(Session& session) {
    Session* s = &session;
    session.form.on_change("Command_set_limits_from_file", [s](int index) { Command_set_limits_from_file(*s, index); });
}

}  // namespace invsetup
