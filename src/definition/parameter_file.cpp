// src/definition/parameter_file.cpp - writing and reading the "Version 3.0" parameter file.
#include "definition/parameter_file.h"

#include <cmath>
#include <initializer_list>
#include <limits>
#include <stdexcept>

#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

std::string joined(std::initializer_list<std::string> values) {
    std::string line;
    for (const std::string& value : values) {
        if (!line.empty()) line += ' ';
        line += value;
    }
    return line;
}

std::string whole(int value) { return format_picture(value, "0"); }
std::string picture(float value, std::string_view picture_text) { return format_picture(value, picture_text); }
// Mesh limits are double reals; counts are written like them ("64.0000000") because the row is one
// list of reals in the old format's eyes.
std::string mesh_start(double value) { return format_picture(value, "0.000000"); }
std::string mesh_value(double value) { return format_picture(value, "0.0000000"); }
std::string mesh_count(int count) { return format_picture(static_cast<double>(count), "0.0000000"); }

std::string mesh_row(const InversionFields& d, int axis) {
    return joined({mesh_start(d.mesh_min[axis]), mesh_value(d.mesh_max[axis]), mesh_value(d.mesh_cell_size[axis]),
                   mesh_count(d.mesh_cell_count[axis])});
}

bool is_kept_character(unsigned char c) { return c >= 32 && c <= 126; }

/// The words of one key line's rest, taken off one at a time; a missing word reads as 0. A number
/// its field can't hold throws, naming the line and the number: nothing infinite enters a definition.
class Values {
public:
    explicit Values(std::string rest, std::string key = "") : rest_(std::move(rest)), key_(std::move(key)) {}
    bool empty() const { return trim(rest_).empty(); }
    std::string word() { return next_word(rest_); }
    double number() { return checked(std::numeric_limits<double>::max(), "a number"); }
    float single() { return static_cast<float>(checked(std::numeric_limits<float>::max(), "a single real")); }
    int integer() { return to_integer(checked(2147483647.0, "a whole number")); }
    /// What is left of the line, trimmed: a text value.
    std::string text() const { return trim(rest_); }

private:
    double checked(double largest, const char* kind) {
        const std::string text = word();
        const double value = parse_number_prefix(text);
        if (!(std::fabs(value) <= largest))
            throw std::runtime_error((key_.empty() ? std::string("a line") : "the line \"" + key_ + "\"") + " holds " +
                                     text + ", too large for " + kind);
        return value;
    }
    std::string rest_;
    std::string key_;
};

// The -1 entries of a version 3 file are part of the list (the writer always puts three values);
// older writers ended the list there.
void read_type_list(Values& values, std::array<int, 7>& types, int& count, int lowest_taken,
                    const char* key) {
    count = 0;
    while (!values.empty()) {
        std::string word = values.word();
        if (!is_numeric(word)) break;
        int code = Values(word, key).integer();
        if (code < lowest_taken) break;
        if (count >= static_cast<int>(types.size()))
            throw std::out_of_range(std::string("more than seven values on the line \"") + key + "\"");
        types[static_cast<std::size_t>(count)] = code;
        ++count;
    }
}

void rewind(std::istream& file) {
    file.clear();
    file.seekg(0);
}

bool find_heading(std::istream& file, std::string_view heading) {
    rewind(file);
    std::string line;
    while (read_clean_line(file, line))
        if (trim(line) == heading) return true;
    return false;
}

void read_key_line(ParameterRecord& r, int version, const std::string& key, Values v) {
    if (key == "Inversion method") r.inversion_method = v.integer();
    else if (key == "Inversion mode") r.inversion_mode = v.integer();
    else if (key == "Refinement Mode") r.refinement_mode = v.integer();
    else if (key == "X Range" || key == "Y Range") {
        std::size_t axis = key[0] == 'X' ? 0 : 1;
        r.mesh_min[axis] = v.number();
        r.mesh_max[axis] = v.number();
        r.mesh_cell_size[axis] = v.number();
        r.mesh_cell_count[axis] = v.integer();
    } else if (key == "Z Range") {
        r.mesh_min[2] = v.number();
        r.mesh_max[2] = v.number();
        r.mesh_cell_size[2] = v.number();
        r.mesh_cell_count[2] = v.integer();
        r.mesh_cell_size[3] = v.number();
        r.mesh_cell_count[3] = v.integer();
    } else if (key == "Add mesh padding") {
        r.add_mesh_padding = v.integer();
        r.use_expanded_mesh = v.integer();
    } else if (key == "X/Y padding") r.padding_multipliers[0] = v.text();
    else if (key == "Z padding") r.padding_multipliers[1] = v.text();
    else if (key == "Smoothness weighting") {
        r.smoothness_weighting = v.integer();
        r.weight_multipliers = v.text();
    } else if (key == "Trade-off parameter") r.trade_off_parameter = v.single();
    else if (key == "Misfit tolerance") r.misfit_tolerance = v.single();
    else if (key == "Maximum iterations") r.maximum_iterations = v.integer();
    else if (key == "Obs data types") read_type_list(v, r.data_types, r.data_type_count, version == 3 ? -1 : 0, "Obs data types");
    else if (key == "Calculation data types")
        read_type_list(v, r.calculation_data_types, r.calculation_data_type_count, 0, "Calculation data types");
    else if (key == "Line azimuth") r.line_azimuth = v.single();
    else if (key == "Background removal") {
        r.background_method = v.integer();
        r.background_value = v.single();
        r.background_topo = v.single();
    } else if (key == "Positivity flag") r.positivity_flag = v.integer();
    else if (key == "Data file type") r.obs_data_file_type = v.integer();
    else if (key == "Obs data file") r.data_file_names[0] = v.text();
    else if (key == "Topo data file") r.data_file_names[1] = v.text();
    else if (key == "Obs data grid") r.data_file_names[2] = v.text();
    else if (key == "Obs 2 data grid") r.data_file_names[3] = v.text();
    else if (key == "Obs 3 data grid") r.data_file_names[4] = v.text();
    else if (key == "Sensor grid") r.data_file_names[5] = v.text();
    else if (key == "Obs data definitions") {
        r.data_first_lines[0] = v.integer();
        r.data_name_lines[0] = v.integer();
        r.data_read_steps[0] = v.integer();
        r.line_column = v.integer();
        r.data_x_columns[0] = v.integer();
        r.data_y_columns[0] = v.integer();
        r.data_z_columns[0] = v.integer();
        r.data_value_columns[0] = v.integer();
        r.data_value_columns[1] = v.integer();
        r.extra_value_column = v.integer();
        // Files from before the third value column end here; they keep what the record holds.
        std::string eleventh = v.word();
        if (!eleventh.empty() && is_numeric(eleventh)) r.data_value_columns[2] = Values(eleventh, "Obs data definitions").integer();
        if (r.data_first_lines[0] < 1) r.data_first_lines[0] = 1;
        if (r.data_read_steps[0] < 1) r.data_read_steps[0] = 1;
    } else if (key == "Number of Obs data per cell") {
        r.values_per_cell = v.integer();
        r.integration_interval = v.single();
    } else if (key == "Obs data base value") r.regional_base = v.single();
    else if (key == "Obs data scale value") r.regional_scale = v.single();
    else if (key == "Sensor height definitions") {
        r.sensor_height_type = v.integer();
        r.elevation_offsets[0] = v.single();
        r.elevation_offsets[2] = v.single();
    } else if (key == "Error percent and floor") {
        r.error_percent = v.single();
        r.error_floor = v.single();
    } else if (key == "Topo data definitions") {
        r.data_first_lines[1] = v.integer();
        r.data_name_lines[1] = v.integer();
        r.data_read_steps[1] = v.integer();
        r.data_x_columns[1] = v.integer();
        r.data_y_columns[1] = v.integer();
        r.data_z_columns[1] = v.integer();
        if (r.data_first_lines[1] < 1) r.data_first_lines[1] = 1;
        if (r.data_read_steps[1] < 1) r.data_read_steps[1] = 1;
    } else if (key == "Topo type") r.topo_type = v.integer();
    else if (key == "Topo offset") r.elevation_offsets[1] = v.single();
    else if (key == "Topo shift option") r.topo_shift_option = v.integer();
    else if (key == "Initial model") r.initial_model_file = v.text();
    else if (key == "Reference model") r.reference_model_file = v.text();
    else if (key == "Weighting model") r.weighting_model_file = v.text();
    else if (key == "Model Bounds") r.model_bounds_files[0] = v.text();
    else if (key == "Model Upper Bounds") r.model_bounds_files[1] = v.text();
    else if (key == "Rock Property Model") r.rock_property_file = v.text();
    else if (key == "Rock properties application") r.rock_application = v.integer();
    else if (key == "Alpha method") r.alpha_method = v.integer();
    else if (key == "Alpha mode") r.alpha_mode = v.integer();
    else if (key == "Alpha values") {
        r.alpha_s = v.single();
        r.alpha_e = v.single();
        r.alpha_n = v.single();
        r.alpha_v = v.single();
    } else if (key == "Depth weighting") {
        r.depth_weighting_mode = v.integer();
        r.depth_weighting_type = v.integer();
        r.weighting_beta = v.single();
        r.weighting_znot = v.single();
        // Older files stop after four values and keep the record's smoothness method.
        if (!v.empty()) r.smoothness_method = v.integer();
    } else if (key == "Wavelet definitions") {
        r.wavelet_mode = v.integer();
        r.wavelet_type = v.integer();
        r.wavelet_itol = v.single();
        r.wavelet_eps = v.single();
    } else if (key == "Mag field") {
        r.mag_inclination = v.single();
        r.mag_declination = v.single();
        r.mag_intensity = v.single();
    } else if (key == "Grav3D V2") {
        r.grav_iterations = v.integer();
        r.chi_factor = v.single();
        r.subspace_size = v.integer();
    } else if (key == "Number of Threads") {
        r.number_of_threads = v.integer();
        if (r.number_of_threads < 0) r.number_of_threads = 0;
    } else if (key == "Output Debug Information") {
        r.output_debug_information = v.integer();
        if (r.output_debug_information < 0 || r.output_debug_information > 1) r.output_debug_information = 0;
    } else if (key == "X tile size") r.x_tile_size = v.integer();
    else if (key == "Y tile size") r.y_tile_size = v.integer();
    else if (key == "Tile overlap") r.tile_overlap = v.integer();
    else if (key == "Tile X/Y blend") r.tile_xy_blend = v.integer();
    else if (key == "Tile Z blend") r.tile_z_blend = v.integer();
    else if (key == "Tile order") {
        r.tile_order[0] = v.integer();
        r.tile_order[1] = v.integer();
        r.tile_order[2] = v.integer();
    } else if (key == "Tile min points") r.tile_min_points = v.integer();
    else if (key == "Tile use reference") r.tile_use_reference = v.integer();
    else if (key == "Tile coarse model") r.tile_coarse_model = v.integer();
    else if (key == "Include regional mesh") r.include_regional_mesh = v.integer();
    else if (key == "Use Cluster Controller") r.use_cluster_controller = v.integer();
}

}  // namespace

std::vector<std::string> comment_lines(std::string_view comments) {
    std::vector<std::string> lines;
    if (comments.empty()) return lines;
    std::string current;
    auto finish_line = [&] {
        std::string line = trim(current);
        current.clear();
        if (line.empty() && lines.empty()) return;  // the reader drops these too
        lines.push_back(std::move(line));
    };
    for (std::size_t i = 0; i < comments.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(comments[i]);
        if (c == '\r' || c == '\n') {
            if (c == '\r' && i + 1 < comments.size() && comments[i + 1] == '\n') ++i;
            finish_line();
        } else if (c == '\t') {
            current += ' ';
        } else if (is_kept_character(c)) {
            current += static_cast<char>(c);
        }
    }
    finish_line();
    return lines;
}

void append_closing_sections(std::vector<std::string>& lines, const PointTransform& transform,
                             std::string_view comments) {
    if (transform.active) {
        lines.emplace_back("[Coordinate transform]");
        for (std::string& line : transform_section_lines(transform)) lines.push_back(std::move(line));
    }
    lines.emplace_back("[Comments]");
    for (std::string& line : comment_lines(comments)) lines.push_back(std::move(line));
}

std::vector<std::string> transform_section_lines(const PointTransform& t) {
    auto listed = [](std::initializer_list<double> values) {
        std::string line;
        for (double value : values) line += number_to_text(value) + ' ';
        return line;
    };
    return {listed({t.angle, t.z_offset, t.z_scale}),
            listed({t.local_x0, t.x_scale, t.map_x0, t.local_x1, t.map_x1}),
            listed({t.local_y0, t.y_scale, t.map_y0, t.local_y1, t.map_y1})};
}

std::vector<std::string> parameter_file_lines(const InversionFields& d, std::string_view comments) {
    PointTransform transform = d.coordinate_transform;
    update_point_transform(transform);

    std::vector<std::string> lines;
    lines.reserve(80);
    auto add = [&lines](std::string_view key, const std::string& values) { lines.push_back(std::string(key) + values); };

    lines.emplace_back(parameter_file_version_line);
    add("Inversion method: ", whole(d.inversion_method));
    add("Inversion mode: ", whole(d.inversion_mode));
    add("Refinement Mode: ", whole(d.refinement_mode) + " ! 0=simple, 1=refined");
    add("X Range: ", mesh_row(d, 0));
    add("Y Range: ", mesh_row(d, 1));
    add("Z Range: ", joined({mesh_row(d, 2), mesh_value(d.mesh_cell_size[3]), mesh_count(d.mesh_cell_count[3])}));
    add("Add mesh padding: ", joined({whole(d.add_mesh_padding), whole(d.use_expanded_mesh)}));
    add("X/Y padding: ", d.padding_multipliers[0]);
    add("Z padding: ", d.padding_multipliers[1]);
    add("Smoothness weighting: ", joined({whole(d.smoothness_weighting), d.weight_multipliers}));
    add("Trade-off parameter: ", general_number_text(d.trade_off_parameter));
    add("Misfit tolerance: ", general_number_text(d.misfit_tolerance));
    add("Maximum iterations: ", whole(d.maximum_iterations));
    // Always three entries, unused ones as -1: the reader's version test depends on it.
    add("Obs data types  : ", joined({whole(d.data_types[0]), whole(d.data_types[1]), whole(d.data_types[2])}));
    add("Line azimuth: ", picture(d.line_azimuth, "0.0"));
    add("Background removal  : ", joined({whole(d.background_method), picture(d.background_value, "0.0000"),
                                          picture(d.background_topo, "0.0000E")}));
    add("Positivity flag: ", whole(d.positivity_flag));
    int calculation_count = 0;
    while (calculation_count < 6 && d.calculation_data_types[static_cast<std::size_t>(calculation_count)] >= 0)
        ++calculation_count;
    if (calculation_count > 0) {
        std::string line = "Calculation data types  :";
        for (int i = 0; i < calculation_count; ++i)
            line += ' ' + whole(d.calculation_data_types[static_cast<std::size_t>(i)]);
        lines.push_back(std::move(line));
    }
    add("Data file type: ", whole(d.obs_data_file_type) + " ! 0=point, 1=grid");
    add("Obs data file  : ", d.data_file_names[0]);
    add("Topo data file : ", d.data_file_names[1]);
    add("Obs data grid  : ", d.data_file_names[2]);
    add("Obs 2 data grid: ", d.data_file_names[3]);
    add("Obs 3 data grid: ", d.data_file_names[4]);
    add("Sensor grid    : ", d.data_file_names[5]);
    add("Obs data definitions: ",
        joined({whole(d.data_first_lines[0]), whole(d.data_name_lines[0]), whole(d.data_read_steps[0]), whole(d.line_column),
                whole(d.data_x_columns[0]), whole(d.data_y_columns[0]), whole(d.data_z_columns[0]),
                whole(d.data_value_columns[0]), whole(d.data_value_columns[1]), whole(d.extra_value_column),
                whole(d.data_value_columns[2])}));
    add("Number of Obs data per cell: ", joined({whole(d.values_per_cell), picture(d.integration_interval, "0.0000")}));
    add("Obs data base value: ", picture(d.regional_base, "0.0000"));
    add("Obs data scale value: ", picture(d.regional_scale, "0.0000"));
    add("Sensor height definitions: ", joined({whole(d.sensor_height_type), picture(d.elevation_offsets[0], "0.00"),
                                               picture(d.elevation_offsets[2], "0.00")}));
    add("Error percent and floor: ", joined({general_number_text(d.error_percent), general_number_text(d.error_floor)}));
    add("Topo data definitions: ",
        joined({whole(d.data_first_lines[1]), whole(d.data_name_lines[1]), whole(d.data_read_steps[1]),
                whole(d.data_x_columns[1]), whole(d.data_y_columns[1]), whole(d.data_z_columns[1])}));
    add("Topo type: ", whole(d.topo_type));
    add("Topo offset: ", picture(d.elevation_offsets[1], "0.00"));
    add("Topo shift option: ", whole(d.topo_shift_option));
    add("Initial model: ", d.initial_model_file);
    add("Reference model: ", d.reference_model_file);
    add("Weighting model: ", d.weighting_model_file);
    add("Model Bounds: ", d.model_bounds_files[0]);
    add("Model Upper Bounds: ", d.model_bounds_files[1]);
    add("Rock Property Model: ", d.rock_property_file);
    add("Rock properties application: ", whole(d.rock_application));
    add("Alpha method: ", whole(d.alpha_method));
    add("Alpha mode: ", whole(d.alpha_mode));
    add("Alpha values: ", joined({general_number_text(d.alpha_s), general_number_text(d.alpha_e),
                                  general_number_text(d.alpha_n), general_number_text(d.alpha_v)}));
    add("Depth weighting: ", joined({whole(d.depth_weighting_mode), whole(d.depth_weighting_type),
                                     picture(d.weighting_beta, "0.00"), picture(d.weighting_znot, "0.000"),
                                     whole(d.smoothness_method)}));
    add("Wavelet definitions: ", joined({whole(d.wavelet_mode), whole(d.wavelet_type), picture(d.wavelet_itol, "0.00"),
                                         picture(d.wavelet_eps, "0.00000")}));
    add("Mag field: ", joined({picture(d.mag_inclination, "0.00"), picture(d.mag_declination, "0.00"),
                               picture(d.mag_intensity, "0.00")}));
    add("Grav3D V2: ", joined({whole(d.grav_iterations), picture(d.chi_factor, "0.000"), whole(d.subspace_size)}));
    add("Number of Threads: ", whole(d.number_of_threads));
    add("Output Debug Information: ", whole(d.output_debug_information));
    add("X tile size: ", whole(d.x_tile_size));
    add("Y tile size: ", whole(d.y_tile_size));
    add("Tile overlap: ", whole(d.tile_overlap));
    add("Tile X/Y blend: ", whole(d.tile_xy_blend));
    add("Tile Z blend: ", whole(d.tile_z_blend));
    add("Tile order: ", joined({whole(d.tile_order[0]), whole(d.tile_order[1]), whole(d.tile_order[2])}));
    add("Tile min points: ", whole(d.tile_min_points));
    add("Tile use reference: ", whole(d.tile_use_reference));
    add("Tile coarse model: ", whole(d.tile_coarse_model));
    add("Include regional mesh: ", whole(d.include_regional_mesh));
    add("Use Cluster Controller: ", whole(d.use_cluster_controller));
    append_closing_sections(lines, transform, comments);
    return lines;
}

void save_inversion_parameters(const InversionFields& definition, std::string_view comments,
                               const std::filesystem::path& path) {
    LineWriter writer(path);
    for (const std::string& line : parameter_file_lines(definition, comments)) writer.write_line(line);
    writer.close();
}

bool read_parameter_file_version(std::istream& file, int& version) {
    version = 0;
    std::string line;
    for (;;) {
        std::streampos line_start = file.tellg();
        if (!read_clean_line(file, line)) return false;
        line = trim(line);
        if (line.empty()) continue;
        if (line.starts_with("Ver")) {
            version = Values(line.size() > 8 ? line.substr(8) : "", "Version").integer();
        } else {
            // Files without a version line begin with their first value line: leave it to the reader.
            file.clear();
            file.seekg(line_start);
        }
        return true;
    }
}

bool read_transform_section(std::istream& file, PointTransform& t, int& line_count) {
    if (!find_heading(file, "[Coordinate transform]")) return false;
    std::string line;
    if (!read_clean_line(file, line)) line.clear();
    ++line_count;
    Values first(line, "[Coordinate transform]");
    t.angle = first.number();
    if (!first.empty()) t.z_offset = first.number();
    if (!first.empty()) t.z_scale = first.number();
    for (bool x_line : {true, false}) {
        if (!read_clean_line(file, line)) line.clear();
        ++line_count;
        Values v(line, "[Coordinate transform]");
        double* targets[] = {x_line ? &t.local_x0 : &t.local_y0, x_line ? &t.x_scale : &t.y_scale,
                             x_line ? &t.map_x0 : &t.map_y0, x_line ? &t.local_x1 : &t.local_y1,
                             x_line ? &t.map_x1 : &t.map_y1};
        *targets[0] = v.number();
        for (int i = 1; i < 5 && !v.empty(); ++i) *targets[i] = v.number();
    }
    update_point_transform(t);
    return true;
}

bool read_comments_section(std::istream& file, std::string& comments) {
    if (!find_heading(file, "[Comments]")) return false;
    comments.clear();
    std::string line;
    while (read_clean_line(file, line)) {
        std::string trimmed = trim(line);
        if (comments.empty()) comments = trimmed;
        else comments += "\r\n" + trimmed;
    }
    return true;
}

void read_inversion_parameters(ParameterRecord& record, int version, std::istream& file, int group, int& line_count,
                               int& status) {
    std::string line;
    // The headings don't end this loop: a comment line that looks like a key line is read as one.
    while (read_clean_line(file, line)) {
        ++line_count;
        std::string key = split_at(line, ":");
        read_key_line(record, version, key, Values(line, key));
    }
    if (group < 2) read_transform_section(file, record.coordinate_transform, line_count);
    read_comments_section(file, record.comments);
    status = 0;
}

}  // namespace invsetup
