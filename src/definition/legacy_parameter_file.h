// src/definition/legacy_parameter_file.h - the older parameter file ("Version 1.0" or no version
// line): no keys, every line known by its position.
//
// Layout after the version line, refinement mode 0 (the "common tail"); names that are empty stand
// as "."; integers by the picture "0", mesh starts "0.000000", other mesh reals "0.0000000", the
// other reals by the pictures of the current file:
//   1  method line: "3 1" (method 0), "4 1" (method 2), else "2 0"
//   2  "1 0 0"
//   3  mesh_min(0) mesh_max(0)
//   4  mesh_min(1) mesh_max(1)
//   5  mesh_cell_size(0) mesh_cell_count(0)
//   6  mesh_cell_size(1) mesh_cell_count(1)
//   7  mesh_cell_size(2) mesh_cell_size(3)            (z cell size, multiplier)
//   8  mesh_cell_count(2) mesh_cell_count(3)
//   9  data_file_names(0)|data_file_names(5)|data_file_names(2)   (point data, sensor grid, data grid)
//  10  values_per_cell data_name_lines(0) line_column extra_value_column
//  11  weighting_model_file
//  12  data_first_lines(0) x y z columns(0) data_value_columns(0) smoothness_weighting weight_multipliers
//  13  regional_base elevation_offsets(0) elevation_offsets(2) sensor_height_type integration_interval
//      regional_scale
//  14  error_percent error_floor
//  15  initial_model_file | reference_model_file | model_bounds_files(0) | rock_property_file
//  16  data_file_names(1)                                (topo file)
//  17  data_first_lines(1) data_read_steps(1) x y z columns(1) topo_shift_option data_name_lines(1)
//  18  mesh_max(2) elevation_offsets(1)
//  19  "refine" or "simple", topo_type, obs_data_file_type
//  20  mag_inclination mag_declination mag_intensity
//  21  inversion_method inversion_mode trade_off_parameter misfit_tolerance add_mesh_padding
//      tile_coarse_model tile_use_reference use_expanded_mesh rock_application data_types(0)
//      maximum_iterations line_azimuth background_method background_value background_topo
//  22  alpha_mode alpha_s alpha_e alpha_n alpha_v alpha_method
//  23  depth_weighting_mode depth_weighting_type weighting_beta weighting_znot smoothness_method
//  24  wavelet_mode wavelet_type wavelet_itol wavelet_eps
//  25  grav_iterations chi_factor subspace_size positivity_flag
//  26  padding_multipliers(0)
//  27  padding_multipliers(1)
// then "[Coordinate transform]" and its three lines when the transform is on, "[Comments]" and the
// description, as in the current file.
//
// Refinement mode 1 puts a head in front of that tail: the original mesh name; when topo_type is 0
// lines 16 to 18; lines 9, 10 and 12; line 14; regional_base regional_scale; line 15; line 22;
// "null"; x mesh terms (mesh_min(0) mesh_max(0) mesh_cell_size(0) mesh_cell_count(0)); x_tile_size
// mesh_min(0) mesh_max(0) " 0 "; the same two lines for y; "1 1"; tile_overlap tile_xy_blend
// tile_min_points tile_z_blend tile_order(0..2); "1". The tail repeats what the head says, so the
// reader takes from the head only what the tail lacks: the original mesh name and the tile values.
//
// The format can't hold more than one data type, calculation types, a read step for the data, the
// second and third value columns, the second and third data grids, the upper bounds file, threads,
// debug output, the cluster controller flag or the regional mesh flag: reading leaves them as the
// record holds them; mesh_min(2) is derived as mesh_max(2) less count times cell size.
#pragma once
#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "form/inversion_definition.h"

namespace invsetup {
struct Session;

/// The lines of an older file for `definition`, beginning with "Version 1.0"; the layout follows
/// refinement_mode. `original_mesh_name` heads the refined layout.
std::vector<std::string> legacy_parameter_file_lines(const InversionFields& definition, std::string_view comments,
                                                     std::string_view original_mesh_name);
/// Writes legacy_parameter_file_lines with CR LF. Throws std::runtime_error on an I/O fault.
void save_inversion_parameters_V1(const InversionFields& definition, std::string_view comments,
                                  std::string_view original_mesh_name, const std::filesystem::path& path);

/// Reads an older file into session.record (and, from a refined head, session.original_mesh_name).
/// `file` stands behind the version line, or at the first value line of a file without one. Data
/// and topo file names are looked up (find_file, then locate_file); a name the person gives up on
/// ends the read with status -1. A method line or a second line the format can't hold gives
/// "Palvue cannot handle this file format" and status -1. Sections as in the current file
/// (`file` must be seekable). Other faults throw to the command's trap.
void read_inversion_parameters_V1(Session& session, std::istream& file, int group, int& line_count, int& status);

}  // namespace invsetup
