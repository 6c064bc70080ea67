// src/definition/legacy_parameter_file.cpp - writing and reading the older positional file.
#include "definition/legacy_parameter_file.h"

#include <cmath>
#include <initializer_list>
#include <limits>
#include <stdexcept>

#include "definition/parameter_file.h"
#include "session.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

constexpr std::string_view cannot_handle = "Palvue cannot handle this file format";

std::string joined(std::initializer_list<std::string> values, std::string_view separator = " ") {
    std::string line;
    bool first = true;
    for (const std::string& value : values) {
        if (!first) line += separator;
        line += value;
        first = false;
    }
    return line;
}

std::string whole(int value) { return format_picture(value, "0"); }
std::string picture(float value, std::string_view picture_text) { return format_picture(value, picture_text); }
std::string general(float value) { return general_number_text(value); }
std::string mesh_start(double value) { return format_picture(value, "0.000000"); }
std::string mesh_value(double value) { return format_picture(value, "0.0000000"); }
// Names can't be empty on a positional line: "." stands for none.
std::string name_or_dot(const std::string& name) { return name.empty() ? "." : name; }

// Lines shared by the refined head and the tail.
std::string data_names_line(const InversionFields& d) {
    return joined({name_or_dot(d.data_file_names[0]), name_or_dot(d.data_file_names[5]), name_or_dot(d.data_file_names[2])},
                  "|");
}
std::string data_counts_line(const InversionFields& d) {
    return joined({whole(d.values_per_cell), whole(d.data_name_lines[0]), whole(d.line_column), whole(d.extra_value_column)});
}
std::string data_columns_line(const InversionFields& d) {
    return joined({whole(d.data_first_lines[0]), whole(d.data_x_columns[0]), whole(d.data_y_columns[0]),
                   whole(d.data_z_columns[0]), whole(d.data_value_columns[0]), whole(d.smoothness_weighting),
                   d.weight_multipliers});
}
std::string errors_line(const InversionFields& d) { return joined({general(d.error_percent), general(d.error_floor)}); }
std::string models_line(const InversionFields& d) {
    return joined({name_or_dot(d.initial_model_file), name_or_dot(d.reference_model_file),
                   name_or_dot(d.model_bounds_files[0]), name_or_dot(d.rock_property_file)},
                  " | ");
}
std::string topo_columns_line(const InversionFields& d) {
    return joined({whole(d.data_first_lines[1]), whole(d.data_read_steps[1]), whole(d.data_x_columns[1]),
                   whole(d.data_y_columns[1]), whole(d.data_z_columns[1]), whole(d.topo_shift_option),
                   whole(d.data_name_lines[1])});
}
std::string topo_level_line(const InversionFields& d) {
    return joined({mesh_value(d.mesh_max[2]), picture(d.elevation_offsets[1], "0.00")});
}
std::string alpha_line(const InversionFields& d) {
    return joined({whole(d.alpha_mode), general(d.alpha_s), general(d.alpha_e), general(d.alpha_n), general(d.alpha_v),
                   whole(d.alpha_method)});
}

std::string method_line(int method) {
    if (method == 0) return "3 1";
    if (method == 2) return "4 1";
    return "2 0";
}

void add_tail(std::vector<std::string>& lines, const InversionFields& d) {
    lines.push_back(method_line(d.inversion_method));
    lines.emplace_back("1 0 0");
    for (std::size_t axis : {0u, 1u}) lines.push_back(joined({mesh_start(d.mesh_min[axis]), mesh_value(d.mesh_max[axis])}));
    for (std::size_t axis : {0u, 1u})
        lines.push_back(joined({mesh_value(d.mesh_cell_size[axis]), whole(d.mesh_cell_count[axis])}));
    lines.push_back(joined({mesh_value(d.mesh_cell_size[2]), mesh_value(d.mesh_cell_size[3])}));
    lines.push_back(joined({whole(d.mesh_cell_count[2]), whole(d.mesh_cell_count[3])}));
    lines.push_back(data_names_line(d));
    lines.push_back(data_counts_line(d));
    lines.push_back(name_or_dot(d.weighting_model_file));
    lines.push_back(data_columns_line(d));
    lines.push_back(joined({picture(d.regional_base, "0.0000"), picture(d.elevation_offsets[0], "0.00"),
                            picture(d.elevation_offsets[2], "0.00"), whole(d.sensor_height_type),
                            picture(d.integration_interval, "0.0000"), picture(d.regional_scale, "0.0000")}));
    lines.push_back(errors_line(d));
    lines.push_back(models_line(d));
    lines.push_back(name_or_dot(d.data_file_names[1]));
    lines.push_back(topo_columns_line(d));
    lines.push_back(topo_level_line(d));
    lines.push_back(joined({d.refinement_mode == 1 ? "refine" : "simple", whole(d.topo_type), whole(d.obs_data_file_type)}));
    lines.push_back(joined({picture(d.mag_inclination, "0.00"), picture(d.mag_declination, "0.00"),
                            picture(d.mag_intensity, "0.00")}));
    lines.push_back(joined({whole(d.inversion_method), whole(d.inversion_mode), general(d.trade_off_parameter),
                            general(d.misfit_tolerance), whole(d.add_mesh_padding), whole(d.tile_coarse_model),
                            whole(d.tile_use_reference), whole(d.use_expanded_mesh), whole(d.rock_application),
                            whole(d.data_types[0]), whole(d.maximum_iterations), picture(d.line_azimuth, "0.0"),
                            whole(d.background_method), picture(d.background_value, "0.0000"),
                            picture(d.background_topo, "0.0000E")}));
    lines.push_back(alpha_line(d));
    lines.push_back(joined({whole(d.depth_weighting_mode), whole(d.depth_weighting_type), picture(d.weighting_beta, "0.00"),
                            picture(d.weighting_znot, "0.000"), whole(d.smoothness_method)}));
    lines.push_back(joined({whole(d.wavelet_mode), whole(d.wavelet_type), picture(d.wavelet_itol, "0.00"),
                            picture(d.wavelet_eps, "0.00000")}));
    lines.push_back(joined({whole(d.grav_iterations), picture(d.chi_factor, "0.000"), whole(d.subspace_size),
                            whole(d.positivity_flag)}));
    lines.push_back(d.padding_multipliers[0]);
    lines.push_back(d.padding_multipliers[1]);
}

void add_refined_head(std::vector<std::string>& lines, const InversionFields& d, std::string_view original_mesh_name) {
    lines.push_back(name_or_dot(std::string(original_mesh_name)));
    if (d.topo_type == 0) {
        lines.push_back(name_or_dot(d.data_file_names[1]));
        lines.push_back(topo_columns_line(d));
        lines.push_back(topo_level_line(d));
    }
    lines.push_back(data_names_line(d));
    lines.push_back(data_counts_line(d));
    lines.push_back(data_columns_line(d));
    lines.push_back(errors_line(d));
    lines.push_back(joined({picture(d.regional_base, "0.0000"), picture(d.regional_scale, "0.0000")}));
    lines.push_back(models_line(d));
    lines.push_back(alpha_line(d));
    lines.emplace_back("null");
    for (std::size_t axis : {0u, 1u}) {
        lines.push_back(joined({mesh_start(d.mesh_min[axis]), mesh_value(d.mesh_max[axis]), mesh_value(d.mesh_cell_size[axis]),
                                whole(d.mesh_cell_count[axis])}));
        int tile_size = axis == 0 ? d.x_tile_size : d.y_tile_size;
        lines.push_back(joined({whole(tile_size), mesh_start(d.mesh_min[axis]), mesh_value(d.mesh_max[axis])}) + " 0 ");
    }
    lines.emplace_back("1 1");
    lines.push_back(joined({whole(d.tile_overlap), whole(d.tile_xy_blend), whole(d.tile_min_points), whole(d.tile_z_blend),
                            whole(d.tile_order[0]), whole(d.tile_order[1]), whole(d.tile_order[2])}));
    lines.emplace_back("1");
}

/// Positional reading: one line at a time, the words off it one at a time; a missing line or word
/// reads as "" and so as 0.
class LegacyReader {
public:
    LegacyReader(std::istream& file, int& line_count) : file_(file), line_count_(line_count) {}

    void next_line() {
        if (!read_clean_line(file_, rest_)) rest_.clear();
        rest_ = trim(rest_);
        ++line_count_;
    }
    const std::string& rest() const { return rest_; }
    std::string word() { return next_word(rest_); }
    /// A number its field can't hold (infinite, not a number, beyond a single real or a whole
    /// number) throws, naming the line and the word: nothing infinite enters a definition.
    double number() { return checked(std::numeric_limits<double>::max(), "a number"); }
    float single() { return static_cast<float>(checked(std::numeric_limits<float>::max(), "a single real")); }
    int integer() { return to_integer(checked(2147483647.0, "a whole number")); }
    std::string text() const { return trim(rest_); }
    /// The names of a line joined by "|" (blanks around the bar allowed).
    std::vector<std::string> names() {
        std::vector<std::string> result;
        std::string line = rest_;
        while (!trim(line).empty()) result.push_back(split_at(line, "|"));
        return result;
    }

private:
    double checked(double largest, const char* kind) {
        const std::string text = word();
        const double value = parse_number_prefix(text);
        if (!(std::fabs(value) <= largest))
            throw std::runtime_error("value line " + std::to_string(line_count_) + " (the version line not counted) holds " +
                                     text + ", too large for " + kind);
        return value;
    }
    std::istream& file_;
    int& line_count_;
    std::string rest_;
};

std::string name_at(const std::vector<std::string>& names, std::size_t i) {
    if (i >= names.size() || names[i] == ".") return "";
    return names[i];
}

std::string model_name(const std::vector<std::string>& names, std::size_t i) {
    std::string name = name_at(names, i);
    return iequals(name, "NULL") ? "null" : name;
}

/// A data file name of the file: empty stays empty, a file that moved is looked for. False when the
/// person gave up.
bool look_up(Session& session, const std::string& title, std::string& name) {
    if (name.empty()) return true;
    if (!find_file(resolve_path(session.working_directory, name).string()).empty()) return true;
    return locate_file(session.dialogue, session.file_search, session.working_directory.string(), title, name, "") >= 0;
}

void read_data_columns(LegacyReader& in, ParameterRecord& r) {
    in.next_line();
    r.data_first_lines[0] = in.integer();
    r.data_x_columns[0] = in.integer();
    r.data_y_columns[0] = in.integer();
    r.data_z_columns[0] = in.integer();
    r.data_value_columns[0] = in.integer();
    r.smoothness_weighting = in.integer();
    r.weight_multipliers = in.text();
    if (r.weight_multipliers.empty()) r.weight_multipliers = "16,8,4,2,1";
    // The format has no read step; the current reader makes a missing one 1 as well.
    if (r.data_first_lines[0] < 1) r.data_first_lines[0] = 1;
    if (r.data_read_steps[0] < 1) r.data_read_steps[0] = 1;
}

void read_topo_lines(LegacyReader& in, ParameterRecord& r) {
    in.next_line();
    r.data_file_names[1] = name_at(in.names(), 0);
    in.next_line();
    r.data_first_lines[1] = in.integer();
    r.data_read_steps[1] = in.integer();
    r.data_x_columns[1] = in.integer();
    r.data_y_columns[1] = in.integer();
    r.data_z_columns[1] = in.integer();
    r.topo_shift_option = in.integer();
    r.data_name_lines[1] = in.integer();
    if (r.data_first_lines[1] < 1) r.data_first_lines[1] = 1;
    if (r.data_read_steps[1] < 1) r.data_read_steps[1] = 1;
    in.next_line();
    r.mesh_max[2] = in.number();
    r.elevation_offsets[1] = in.single();
}

// The refined head: only the original mesh name and the tile values are kept from it, the tail
// says everything else again.
void read_refined_head(LegacyReader& in, Session& session) {
    ParameterRecord& r = session.record;
    session.original_mesh_name = in.text() == "." ? "" : in.text();
    in.next_line();
    bool has_topo_lines = in.rest().find('|') == std::string::npos;  // the data names line always has bars
    if (has_topo_lines) {
        in.next_line();
        in.next_line();
        in.next_line();
    }
    for (int skipped = 0; skipped < 7; ++skipped) in.next_line();  // data lines to "null"
    for (int* tile_size : {&r.x_tile_size, &r.y_tile_size}) {
        in.next_line();  // mesh terms, said again in the tail
        in.next_line();
        *tile_size = in.integer();
    }
    in.next_line();  // "1 1"
    in.next_line();
    r.tile_overlap = in.integer();
    r.tile_xy_blend = in.integer();
    r.tile_min_points = in.integer();
    r.tile_z_blend = in.integer();
    for (int& order : r.tile_order) order = in.integer();
    in.next_line();  // "1"
}

// The first two lines say what kind of run the file describes; only the three method lines and
// one data set were ever written, anything else is refused before a field is touched.
bool is_known_kind(LegacyReader& in) {
    std::string kind = in.word(), flag = in.word();
    bool method_known = (kind == "3" && flag == "1") || (kind == "4" && flag == "1") || (kind == "2" && flag == "0");
    in.next_line();
    for (const char* expected : {"1", "0", "0"}) {
        std::string word = in.word();
        if (!is_numeric(word) || parse_number_prefix(word) != parse_number_prefix(expected)) return false;
    }
    return method_known && in.rest().empty();
}

// Returns -1 after the message when the file can't be held, -2 when the person gave up on a name.
int read_tail(LegacyReader& in, Session& session) {
    ParameterRecord& r = session.record;
    if (!is_known_kind(in)) {
        session.dialogue.message_box(std::string(cannot_handle));
        return -1;
    }
    for (std::size_t axis : {0u, 1u}) {
        in.next_line();
        r.mesh_min[axis] = in.number();
        r.mesh_max[axis] = in.number();
    }
    for (std::size_t axis : {0u, 1u}) {
        in.next_line();
        r.mesh_cell_size[axis] = in.number();
        r.mesh_cell_count[axis] = in.integer();
    }
    in.next_line();
    r.mesh_cell_size[2] = in.number();
    r.mesh_cell_size[3] = in.number();
    in.next_line();
    r.mesh_cell_count[2] = in.integer();
    r.mesh_cell_count[3] = in.integer();

    in.next_line();
    std::vector<std::string> names = in.names();
    r.data_file_names[0] = name_at(names, 0);
    r.data_file_names[5] = name_at(names, 1);
    r.data_file_names[2] = name_at(names, 2);
    if (!look_up(session, "Observed data file", r.data_file_names[0])) return -2;
    if (!look_up(session, "Mag observation elevation file", r.data_file_names[5])) return -2;
    in.next_line();
    r.values_per_cell = in.integer();
    r.data_name_lines[0] = in.integer();
    r.line_column = in.integer();
    r.extra_value_column = in.integer();
    in.next_line();
    r.weighting_model_file = model_name(in.names(), 0);
    if (r.weighting_model_file.empty()) r.weighting_model_file = "null";
    read_data_columns(in, r);
    in.next_line();
    r.regional_base = in.single();
    r.elevation_offsets[0] = in.single();
    r.elevation_offsets[2] = in.single();
    r.sensor_height_type = in.integer();
    r.integration_interval = in.single();
    r.regional_scale = in.single();
    in.next_line();
    r.error_percent = in.single();
    r.error_floor = in.single();
    in.next_line();
    names = in.names();
    r.initial_model_file = model_name(names, 0);
    r.reference_model_file = model_name(names, 1);
    r.model_bounds_files[0] = model_name(names, 2);
    r.rock_property_file = name_at(names, 3);

    read_topo_lines(in, r);
    if (!look_up(session, "Topo data file file", r.data_file_names[1])) return -2;
    // The uniform z core is told by its top and its cells; its bottom follows from them.
    r.mesh_min[2] = r.mesh_max[2] - r.mesh_cell_count[2] * r.mesh_cell_size[2];
    in.next_line();
    r.refinement_mode = in.word() == "refine" ? 1 : 0;
    r.topo_type = in.integer();
    r.obs_data_file_type = in.integer();

    in.next_line();
    r.mag_inclination = in.single();
    r.mag_declination = in.single();
    r.mag_intensity = in.single();
    in.next_line();
    r.inversion_method = in.integer();
    r.inversion_mode = in.integer();
    r.trade_off_parameter = in.single();
    r.misfit_tolerance = in.single();
    r.add_mesh_padding = in.integer();
    r.tile_coarse_model = in.integer();
    r.tile_use_reference = in.integer();
    r.use_expanded_mesh = in.integer();
    r.rock_application = in.integer();
    r.data_types[0] = in.integer();
    r.data_type_count = 1;
    r.maximum_iterations = in.integer();
    r.line_azimuth = in.single();
    r.background_method = in.integer();
    r.background_value = in.single();
    r.background_topo = in.single();
    in.next_line();
    r.alpha_mode = in.integer();
    r.alpha_s = in.single();
    r.alpha_e = in.single();
    r.alpha_n = in.single();
    r.alpha_v = in.single();
    r.alpha_method = in.integer();
    in.next_line();
    r.depth_weighting_mode = in.integer();
    r.depth_weighting_type = in.integer();
    r.weighting_beta = in.single();
    r.weighting_znot = in.single();
    r.smoothness_method = in.integer();
    in.next_line();
    r.wavelet_mode = in.integer();
    r.wavelet_type = in.integer();
    r.wavelet_itol = in.single();
    r.wavelet_eps = in.single();
    in.next_line();
    r.grav_iterations = in.integer();
    r.chi_factor = in.single();
    r.subspace_size = in.integer();
    r.positivity_flag = in.integer();
    in.next_line();
    r.padding_multipliers[0] = in.text();
    in.next_line();
    r.padding_multipliers[1] = in.text();
    return 0;
}

}  // namespace

std::vector<std::string> legacy_parameter_file_lines(const InversionFields& definition, std::string_view comments,
                                                     std::string_view original_mesh_name) {
    PointTransform transform = definition.coordinate_transform;
    update_point_transform(transform);
    std::vector<std::string> lines;
    lines.emplace_back("Version 1.0");
    if (definition.refinement_mode == 1) add_refined_head(lines, definition, original_mesh_name);
    add_tail(lines, definition);
    append_closing_sections(lines, transform, comments);
    return lines;
}

void save_inversion_parameters_V1(const InversionFields& definition, std::string_view comments,
                                  std::string_view original_mesh_name, const std::filesystem::path& path) {
    write_text_lines(path, legacy_parameter_file_lines(definition, comments, original_mesh_name));
}

void read_inversion_parameters_V1(Session& session, std::istream& file, int group, int& line_count, int& status) {
    status = -1;
    LegacyReader in(file, line_count);
    in.next_line();
    // A refined file begins with the original mesh name, a plain one with the method line.
    std::string first = in.rest();
    if (!is_numeric(next_word(first))) {
        read_refined_head(in, session);
        in.next_line();
    }
    if (read_tail(in, session) < 0) return;
    if (group < 2) read_transform_section(file, session.record.coordinate_transform, line_count);
    read_comments_section(file, session.record.comments);
    status = 0;
}

}  // namespace invsetup
