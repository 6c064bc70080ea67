// src/form/inversion_definition.h - the definition of one inversion, as the form keeps it beside its
// controls, and the image of one parameter file.
#pragma once
#include <array>
#include <string>
#include <vector>

#include "support/point_transform.h"

namespace invsetup {

/// Method codes (item data of Combo_inversion_method, not row numbers).
enum InversionMethod : int {
    method_ubc_mag_v3 = 0,
    method_ubc_grav_v2 = 1,
    method_ubc_grav_v3 = 2,
    method_ubc_mag_v4 = 3,
    method_zarninv3d = 4,
    method_ubc_grav_v5 = 5,
    method_ubc_mag_v5 = 6,
};

inline bool is_magnetic_method(int method) { return method == 0 || method == 3 || method == 6; }
inline bool is_gravity_method(int method) { return method == 1 || method == 2 || method == 5; }

/// The fields a parameter file holds. Defaults are those of a fresh form. Arrays count from 0.
/// Mesh arrays: 0 x, 1 y, 2 z uniform part, 3 z multiplicative part.
struct InversionFields {
    int inversion_method = 4;
    int refinement_mode = 0;  // 0 simple, 1 refined
    int inversion_mode = 0;
    float trade_off_parameter = 1.0f;
    float misfit_tolerance = 0.02f;
    int maximum_iterations = 0;
    int data_type_count = 1;
    std::array<int, 7> data_types{1, -1, -1, -1, -1, -1, -1};
    int calculation_data_type_count = 0;
    std::array<int, 7> calculation_data_types{-1, -1, -1, -1, -1, -1, -1};
    float line_azimuth = 0;
    int background_method = 0;  // 0 none, 1 terrain correlation, 2 specified value
    float background_value = 0;
    float background_topo = 0;  // -1e32 when the box is blank
    int positivity_flag = 0;
    int obs_data_file_type = 0;  // 0 point, 1 grid
    /// 0 observed point data, 1 topo data, 2..4 observed data grids 1 to 3, 5 sensor grid.
    std::array<std::string, 6> data_file_names{};
    std::array<int, 2> data_first_lines{};
    std::array<int, 2> data_name_lines{};
    std::array<int, 2> data_read_steps{};
    std::array<int, 2> data_x_columns{};
    std::array<int, 2> data_y_columns{};
    std::array<int, 2> data_z_columns{};
    int line_column = 0;
    int extra_value_column = 0;
    std::array<int, 3> data_value_columns{};
    int values_per_cell = 1;
    float integration_interval = 0;
    float regional_base = 0;
    float regional_scale = 0;  // read as 1
    int sensor_height_type = -1;  // 0 height above topo, 1 actual sensor elevation
    std::array<float, 3> elevation_offsets{};  // 0 sensor offset, 1 topo offset, 2 minimum sensor height
    float error_percent = 0;
    float error_floor = 0;
    int topo_type = 0;  // 0 use the data file, 1 use the top of the mesh
    int topo_shift_option = 1;
    std::string initial_model_file = "null";
    std::string reference_model_file = "null";
    std::string weighting_model_file = "null";
    std::array<std::string, 2> model_bounds_files{"null", "null"};
    std::string rock_property_file;
    int rock_application = 0;
    int alpha_method = 0;
    int alpha_mode = 1;
    float alpha_s = 0.0001f;
    float alpha_e = 1;
    float alpha_n = 1;
    float alpha_v = 1;
    int depth_weighting_mode = 0;
    int depth_weighting_type = 0;
    float weighting_beta = 3;
    float weighting_znot = 0;
    int smoothness_method = 0;
    int wavelet_mode = 1;
    int wavelet_type = 3;
    float wavelet_itol = 1;
    float wavelet_eps = 0.001f;
    float mag_inclination = 0;
    float mag_declination = 0;
    float mag_intensity = 0;
    int grav_iterations = 30;
    float chi_factor = 1;
    int subspace_size = 50;
    int number_of_threads = 0;
    int output_debug_information = 0;
    int x_tile_size = 128;
    int y_tile_size = 128;
    int tile_overlap = 20;
    int tile_xy_blend = 10;
    int tile_z_blend = 5;
    int tile_min_points = 0;
    std::array<int, 3> tile_order{};
    int tile_use_reference = 1;
    int tile_coarse_model = 2;
    int include_regional_mesh = 0;
    int use_expanded_mesh = 1;
    int use_cluster_controller = 1;
    int add_mesh_padding = 1;
    std::array<std::string, 3> padding_multipliers{"1,2,4,8", "1,2,4,8,16", ""};
    int smoothness_weighting = 0;
    std::string weight_multipliers = "16,8,4,2,1";
    std::array<double, 4> mesh_min{};
    std::array<double, 4> mesh_max{};
    std::array<double, 4> mesh_cell_size{};
    std::array<int, 4> mesh_cell_count{};
    PointTransform coordinate_transform{};

    bool operator==(const InversionFields&) const = default;
};

/// The record the form logic keeps beside the controls: the fields above and what the checks derive.
struct InversionDefinition : InversionFields {
    std::array<int, 6> data_file_kinds{};  // 0 text file, 1 grid file, 2 Geosoft database
    std::array<int, 2> data_last_columns{};
    std::array<std::string, 7> data_component_names{};
    std::array<std::string, 7> sensitivity_matrix_names{};
    int number_of_x_tiles = 0;
    int number_of_y_tiles = 0;
    bool reference_model_given = false;
    bool model_bounds_given = false;
    bool rock_properties_used = false;
    // The column names of the point files (0 observed data, 1 topography), see form/column_definitions.h.
    std::array<int, 2> column_name_count{};  // names found in the slot's name line, 0 for none
    std::vector<std::string> column_names;   // the names of the last load, the first at [0]
    int picked_slot = 0;                     // which Combo_names is open over a column box
    int picked_column = 0;                   // which box: 1 x, 2 y, 3 z, 4..6 values, 7 line, 8 extra
    bool updating_clip = false;              // set while program code moves Combo_names' selection
};

/// The settings of location slot 0 (observed points) or 1 (topography points) from the definition:
/// file, kind, first line, step, columns, the definition's coordinate transform (brought up to date),
/// and for slot 0 the value, line and extra columns and the integration interval. The elevation
/// offset is left at 0 (the callers add theirs once, after the read) and no limits are set.
struct LocationFileSettings;
LocationFileSettings location_settings(const InversionDefinition& definition, int slot);

/// The image of one parameter file: what the readers fill and load_mag3d_form pushes into the form.
struct ParameterRecord : InversionFields {
    std::string comments;
};

}  // namespace invsetup
