// src/definition/definition_checks.cpp - the ordered checks of a whole definition.
#include "definition/definition_checks.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <string>
#include <string_view>

#include "form/mesh_tab.h"
#include "grids/grid_file.h"
#include "mesh/inversion_mesh.h"
#include "mesh/mesh_definition.h"
#include "session.h"
#include "support/files.h"
#include "support/memory.h"
#include "support/numbers.h"
#include "support/point_transform.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// The checks' reading of the form: every test takes the control's text as it stands.
class FormReader {
public:
    explicit FormReader(Session& session) : session_(session), form_(session.form) {}

    const std::string& text(std::string_view name, int index = no_index) const { return form_.text(name, index); }
    /// A number the single real of its field can hold: "1e39" or "1e309" is no number to the checks.
    bool is_number(std::string_view name, int index = no_index) const {
        return is_numeric(text(name, index)) && std::fabs(value(name, index)) <= std::numeric_limits<float>::max();
    }
    double value(std::string_view name, int index = no_index) const { return parse_number_prefix(text(name, index)); }
    float single(std::string_view name, int index = no_index) const { return static_cast<float>(value(name, index)); }
    int integer(std::string_view name, int index = no_index) const { return to_integer(value(name, index)); }

    /// Shows the message; the walk ends with -1.
    bool fail(const std::string& message) const {
        session_.dialogue.message_box(message);
        return false;
    }

private:
    Session& session_;
    const FormModel& form_;
};

/// A relative name is taken from the working directory.
bool file_exists(const Session& session, const std::string& name) {
    if (trim(name).empty()) return false;
    return !find_file(resolve_path(session.working_directory, name).string()).empty();
}

/// Looks further for a file that isn't where its name says; true only when it was found. A person who
/// neither picks the file nor stops the reading still has no file, and the check must say so.
bool located(Session& session, const std::string& title, std::string& name) {
    return locate_file(session.dialogue, session.file_search, session.working_directory.string(), title, name, "") == 0;
}

/// A data file slot must exist, or be found elsewhere.
bool data_file_found(Session& session, int slot, const std::string& title, const std::string& missing) {
    std::string& name = session.definition.data_file_names.at(static_cast<std::size_t>(slot));
    if (file_exists(session, name) || located(session, title, name)) return true;
    session.dialogue.message_box(missing);
    return false;
}

/// A model box holds something other than nothing or "null".
bool is_given(const std::string& text) { return !text.empty() && to_upper(trim(text)) != "NULL"; }

struct ComponentName {
    int code;
    const char* component;
    const char* matrix;
};

constexpr ComponentName component_names[] = {
    {100, "VMI", "Zarninv3D_Tx.mtx|Zarninv3D_Ty.mtx|Zarninv3D_Tz.mtx"},
    {1, "mag", "Zarninv3D.mtx"},
    {2, "Gzz", "Zarninv3D_Gzz.mtx"},
    {3, "VKa", "Zarninv3D_VKa.mtx"},
    {4, "VKc", "Zarninv3D_VKc.mtx"},
    {5, "Gne", "Zarninv3D_Gne.mtx"},
    {6, "Guv", "Zarninv3D_Guv.mtx"},
    {10, "Gxx", "Zarninv3D_Gxx.mtx"},
    {11, "Gyy", "Zarninv3D_Gyy.mtx"},
    {12, "Gzz", "Zarninv3D_Gzz.mtx"},
    {13, "Gxy", "Zarninv3D_Gxy.mtx"},
    {14, "Gxz", "Zarninv3D_Gxz.mtx"},
    {15, "Gyz", "Zarninv3D_Gyz.mtx"},
    {20, "Tx", "Zarninv3D_Tx.mtx"},
    {21, "Ty", "Zarninv3D_Ty.mtx"},
    {22, "Tz", "Zarninv3D_Tz.mtx"},
};

ComponentName component_name(int code) {
    for (const ComponentName& name : component_names)
        if (name.code == code) return name;
    return {code, "Gz", "Zarninv3D.mtx"};  // vertical gravity, and any code not listed
}

class DefinitionWalk {
public:
    explicit DefinitionWalk(Session& session)
        : session_(session), definition_(session.definition), form_(session.form), read_(session) {}

    bool run() {
        definition_.reference_model_given = false;
        definition_.model_bounds_given = false;
        definition_.rock_properties_used = false;
        return check_mesh_limits() && check_regional_and_errors() && check_data_files() && check_data_types() &&
               check_field() && check_method_parameters() && check_errors_again() && check_alphas() &&
               check_model_files() && check_bounds_and_rock_properties() && check_iterations() &&
               check_refinement() && determine_inversion_mesh(session_) >= 0 && check_refined_mesh_bottom() &&
               tell_of_a_large_mesh();
    }

private:
    /// A mesh that fits but is huge is most often a mistyped cell size: said once, it fails nothing.
    bool tell_of_a_large_mesh() {
        const InversionMesh& mesh = session_.mesh;
        const std::string warning = large_mesh_warning("mesh", static_cast<double>(mesh.nx) * mesh.ny * mesh.nz);
        if (!warning.empty()) session_.dialogue.message_box(warning);
        return true;
    }

    bool check_mesh_limits() {
        static constexpr const char* axes[] = {"x", "y", "z"};
        for (std::size_t i = 0; i < 3; ++i) {
            const std::string axis = axes[i];
            if (!std::isfinite(definition_.mesh_min[i]) || !std::isfinite(definition_.mesh_max[i]))
                return read_.fail("The " + axis + " mesh limits are too large: " +
                                  general_number_text(definition_.mesh_min[i]) + " to " +
                                  general_number_text(definition_.mesh_max[i]));
            if (!(definition_.mesh_min[i] < definition_.mesh_max[i]))
                return read_.fail("Min " + axis + " mesh must be less than max");
            if (!std::isfinite(definition_.mesh_cell_size[i]))
                return read_.fail("The " + axis + " mesh cell size is too large: " +
                                  general_number_text(definition_.mesh_cell_size[i]));
            if (definition_.mesh_cell_size[i] <= 0) return read_.fail("Mesh " + axis + " cell size must be positive");
            if (definition_.mesh_cell_count[i] < 1) return read_.fail("Mesh " + axis + " must have more than one cell");
        }
        definition_.padding_multipliers[0] = read_.text("Text_padding_multipliers", 0);
        definition_.padding_multipliers[1] = read_.text("Text_padding_multipliers", 1);
        if (definition_.add_mesh_padding == 1)
            return check_padding_list(definition_.padding_multipliers[0], "X/Y padding") &&
                   check_padding_list(definition_.padding_multipliers[1], "Z padding");
        return true;
    }

    /// A padding list: at most 16 multipliers, each a number above 0 that a single real holds.
    bool check_padding_list(const std::string& text, const std::string& list) {
        int count = 0;
        std::vector<std::string> items;
        if (parse_number_list(session_.dialogue, true, text, count, items) != 0)
            return read_.fail("The " + list + " item " + format_picture(count + 1, "0") + " is not a number above 0: \"" +
                              trim(items.at(static_cast<std::size_t>(count))) + "\"");
        if (count > max_padding_items)
            return read_.fail("The " + list + " has " + format_picture(count, "0") + " items; it can have at most " +
                              format_picture(max_padding_items, "0"));
        for (int i = 0; i < count; ++i) {
            const std::string item = trim(items[static_cast<std::size_t>(i)]);
            if (!(parse_number_prefix(item) <= std::numeric_limits<float>::max()))
                return read_.fail("The " + list + " item " + format_picture(i + 1, "0") + " is too large: \"" + item + "\"");
        }
        return true;
    }

    bool check_regional_and_errors() {
        if (!read_.is_number("Text_UBC_regional_field"))
            return read_.fail("The regional field base level is not numeric");
        definition_.regional_base = read_.single("Text_UBC_regional_field");
        if (!read_.is_number("Text_UBC_regional_scale")) return read_.fail("The field scale value is not numeric");
        if (read_.single("Text_UBC_regional_scale") == 0) return read_.fail("The field scale value cannot be 0");
        definition_.regional_scale = read_.single("Text_UBC_regional_scale");
        if (!read_.is_number("Text_percent_error")) return read_.fail("The percent error field is not numeric");
        if (read_.single("Text_percent_error") < 0) return read_.fail("The percent error field must be positive");
        if (!read_.is_number("Text_error_floor")) return read_.fail("The error floor field is not numeric");
        if (read_.single("Text_error_floor") < 0) return read_.fail("The error floor field must be non-negative");
        if (read_.single("Text_percent_error") == 0 && read_.single("Text_error_floor") == 0)
            return read_.fail("The percent error and error floor fields cannot both be zero");
        return true;
    }

    bool check_data_files() {
        const bool grids = definition_.obs_data_file_type == 1;
        if (!grids) {
            if (definition_.data_file_names[0].empty())
                return read_.fail("The observed data file must be specified");
            if (!data_file_found(session_, 0, "Observed Data file", "The specified observed data file does not exist"))
                return false;
            if (check_file_definitions(session_, 0) < 0) return false;
        }
        if (definition_.topo_type == 0) {
            if (definition_.data_file_names[1].empty()) {
                definition_.topo_type = 1;  // the run takes the top of the mesh as its surface
            } else {
                if (!data_file_found(session_, 1, "Topo file", "The topo file does not exist")) return false;
                if (check_file_definitions(session_, 1) < 0) return false;
            }
        }
        if (!grids) return true;

        const auto& names = definition_.data_file_names;
        if (names[2].empty()) return read_.fail("The observed data grid file must be specified");
        if (!data_file_found(session_, 2, "Observed Data Grid file", "The observed data grid file does not exist"))
            return false;
        if (check_file_definitions(session_, 2) < 0) return false;
        if (!names[3].empty() &&
            !data_file_found(session_, 3, "Observed data component 2 file", "The observed data 2 grid file does not exist"))
            return false;
        if (!names[4].empty() &&
            !data_file_found(session_, 4, "Observed data component 3 file", "The observed data 3 grid file does not exist"))
            return false;
        for (int slot : {3, 4})
            if (!names[static_cast<std::size_t>(slot)].empty() && check_file_definitions(session_, slot) < 0) return false;
        if (!names[5].empty()) {
            if (!data_file_found(session_, 5, "Sensor grid file", "The sensor grid file does not exist")) return false;
            if (check_file_definitions(session_, 5) < 0) return false;
        }
        return true;
    }

    bool check_data_types() {
        if (definition_.data_type_count < 1) return read_.fail("No data types have been selected");
        definition_.data_type_count = 1;
        if (definition_.inversion_method == method_zarninv3d) {
            definition_.data_type_count = 6;
            for (int k = 0; k <= 5; ++k) {
                if (definition_.data_types[static_cast<std::size_t>(k)] < 0) {
                    definition_.data_type_count = k;
                    break;
                }
            }
        }
        for (int k = 0; k < definition_.data_type_count; ++k) {
            const std::size_t slot = static_cast<std::size_t>(k);
            const ComponentName name = component_name(definition_.data_types[slot]);
            definition_.data_component_names[slot] = name.component;
            definition_.sensitivity_matrix_names[slot] = name.matrix;
        }
        return true;
    }

    bool check_field() {
        const int method = definition_.inversion_method;
        const int first = definition_.data_types[0];
        const bool magnetic_field = is_magnetic_method(method) ||
                                    (method == method_zarninv3d && (first == 1 || first == 100 || first >= 20));
        if (!magnetic_field) return true;
        if (!read_.is_number("Text_mag_inclination")) return read_.fail("The mag inclination is not numeric");
        if (!read_.is_number("Text_mag_declination")) return read_.fail("The mag declination is not numeric");
        if (!read_.is_number("Text_mag_intensity")) return read_.fail("The mag intensity is not numeric");
        if (read_.single("Text_mag_intensity") <= 0) return read_.fail("The mag intensity must be positive");
        return true;
    }

    bool check_method_parameters() {
        const int method = definition_.inversion_method;
        if (method == method_zarninv3d) {
            const int first = definition_.data_types[0];
            if ((first == 3 || first == 4) && !read_.is_number("Text_line_azimuth"))
                return read_.fail("The line azimuth is not numeric");
            if (definition_.background_method == 2 && !read_.is_number("Text_inversion_background_value"))
                return read_.fail("The model background value is not numeric");
        }
        if (method == method_ubc_grav_v2) {
            if (!read_.is_number("Text_iterations")) return read_.fail("The number of iterations is not numeric");
            if (read_.value("Text_iterations") <= 0) return read_.fail("The number of iterations must be positive");
            if (!read_.is_number("Text_chi_factor")) return read_.fail("The Chi factor is not numeric");
            if (read_.single("Text_chi_factor") <= 0) return read_.fail("The Chi factor must be positive");
            if (!read_.is_number("Text_subspace")) return read_.fail("The Subspace size is not numeric");
            if (read_.value("Text_subspace") < 0) return read_.fail("The Subspace size cannot be negative");
            return true;
        }
        if (form_.checked("Option_depth_weighting_parameters", 1)) {
            if (!read_.is_number("Text_weighting_beta")) return read_.fail("The beta value is not numeric");
            if (read_.single("Text_weighting_beta") <= 0) return read_.fail("The beta value must be positive");
            if (!read_.is_number("Text_weighting_znot")) return read_.fail("The znot value is not numeric");
            // The sign test of znot reads beta: any znot passes once beta has.
            if (read_.single("Text_weighting_beta") <= 0) return read_.fail("The znot value must be positive");
        }
        if (form_.checked("Option_wavelet_parameters", 1)) {
            const std::string& itol = read_.text("Text_wavelet_itol");
            if (itol != "1" && itol != "2") return read_.fail("The itol parameter must be either 1 or 2");
            if (!read_.is_number("Text_wavelet_eps"))
                return read_.fail("The wavelet compression tolerance value is not numeric");
            if (read_.single("Text_wavelet_eps") <= 0)
                return read_.fail("The wavelet compression tolerance value must be positive");
        }
        if (!read_.is_number("Text_inversion_par"))
            return read_.fail("The misfit/smoothness trade-off parameter is not numeric");
        if (read_.single("Text_inversion_par") <= 0)
            return read_.fail("The misfit/smoothness trade-off parameter must be positive");
        if (form_.control("Text_inversion_tolc").enabled) {
            if (!read_.is_number("Text_inversion_tolc")) return read_.fail("The misfit tolerance value is not numeric");
            if (read_.single("Text_inversion_tolc") <= 0)
                return read_.fail("The misfit tolerance value must be positive");
        }
        return true;
    }

    bool check_errors_again() {
        if (!read_.is_number("Text_error_floor")) return read_.fail("The error floor is not valid");
        if (read_.single("Text_error_floor") < 0) return read_.fail("The error floor cannot be negative");
        definition_.error_floor = read_.single("Text_error_floor");
        if (!read_.is_number("Text_percent_error")) return read_.fail("The error percent is not valid");
        if (read_.single("Text_percent_error") < 0) return read_.fail("The error percent cannot be negative");
        definition_.error_percent = read_.single("Text_percent_error");
        if (definition_.error_percent == 0 && definition_.error_floor == 0)
            return read_.fail("The error percent and floor vallues cannot both be zero");
        return true;
    }

    bool check_alphas() {
        if (!form_.checked("Option_alphas", 1)) return true;
        struct Alpha {
            const char* box;
            const char* name;
        };
        static constexpr Alpha alphas[] = {
            {"Text_alpha_s", "s"}, {"Text_alpha_e", "E"}, {"Text_alpha_n", "N"}, {"Text_alpha_v", "V"}};
        for (const Alpha& alpha : alphas) {
            // Gravity V3 has no smallest-model term to weight.
            if (alpha.box == alphas[0].box && definition_.inversion_method == method_ubc_grav_v3) continue;
            const std::string what = std::string("The alpha ") + alpha.name + " value";
            if (!read_.is_number(alpha.box)) return read_.fail(what + " is not numeric");
            if (read_.single(alpha.box) < 0) return read_.fail(what + " must be positive");
        }
        if (std::all_of(std::begin(alphas), std::end(alphas),
                        [this](const Alpha& alpha) { return read_.single(alpha.box) == 0; }))
            return read_.fail("The alpha values cannot all be zero");
        return true;
    }

    bool check_model_files() {
        const std::string& weight_text = read_.text("Text_weight_file");
        if (is_given(weight_text)) {
            std::string name = trim(weight_text);
            if (!file_exists(session_, name) && !located(session_, "Inversion weights file", name))
                return read_.fail("The specified weighting matrix model file does not exist");
            definition_.weighting_model_file = trim(weight_text);
        } else {
            definition_.weighting_model_file = "null";
        }
        definition_.smoothness_weighting = form_.checked("Check_create_weighting_file") ? 1 : 0;
        definition_.weight_multipliers = read_.text("Text_weight_multipliers");

        // A number in a model box is a constant model, not a file.
        const std::string& initial_text = read_.text("Text_initial_file");
        if (is_given(initial_text)) {
            if (!file_exists(session_, trim(initial_text)) && !is_numeric(initial_text))
                return read_.fail("The specified initial model file does not exist in the folder: " +
                                  session_.working_directory.string());
            definition_.initial_model_file = trim(initial_text);
        } else {
            definition_.initial_model_file = "null";
        }

        const std::string& reference_text = read_.text("Text_reference_file");
        if (is_given(reference_text)) {
            if (!file_exists(session_, trim(reference_text)) && !is_numeric(reference_text))
                return read_.fail("The specified reference model file does not exist");
            definition_.reference_model_given = true;
            definition_.reference_model_file = trim(reference_text);
        } else {
            definition_.reference_model_file = "null";
        }
        return true;
    }

    bool check_bounds_and_rock_properties() {
        const int method = definition_.inversion_method;
        if (method < 1 || method > 6) return true;
        const bool version5 = method == method_ubc_grav_v5 || method == method_ubc_mag_v5;
        const int box_count = version5 ? 2 : 1;
        for (int i = 0; i < box_count; ++i) {
            const std::size_t slot = static_cast<std::size_t>(i);
            std::string& bounds = definition_.model_bounds_files[slot];
            const std::string& text = read_.text("Text_depth_weighting_file", i);
            if (!is_given(text)) {
                bounds = "null";
                continue;
            }
            const std::string trimmed = trim(text);
            std::string rest = trimmed;
            const std::string first_word = next_word(rest);
            if (is_numeric(first_word) && version5) {
                bounds = first_word;  // a constant bound
            } else if (!is_numeric(first_word) || version5) {
                bounds = session_.working_directory.string() + "\\" + trimmed;
                if (!file_exists(session_, bounds) && !located(session_, "Inversion bounds file", bounds))
                    return read_.fail(method == method_ubc_grav_v2
                                          ? "The specified depth weighting matrix model file does not exist"
                                          : "The specified bounds file does not exist");
            } else {
                bounds = trimmed;  // numbers for the other methods stay as typed
            }
            definition_.model_bounds_given = true;
        }

        const std::string& rock_text = read_.text("Text_rock_propery_file");
        if (is_given(rock_text)) {
            if (!file_exists(session_, trim(rock_text))) return read_.fail("The specified rock property file does not exist");
            definition_.rock_property_file = trim(rock_text);
            definition_.rock_properties_used = true;
        }
        // Rock properties only ever feed the reference model or the bounds.
        if (definition_.rock_properties_used && !definition_.reference_model_given && !definition_.model_bounds_given)
            definition_.rock_properties_used = false;
        return true;
    }

    bool check_iterations() {
        if (definition_.inversion_method != method_zarninv3d) return true;
        // Blank or letters leave the limit to the program.
        if (read_.is_number("Text_max_iter") && read_.value("Text_max_iter") < 0)
            return read_.fail("The number of iterations is not valid");
        return true;
    }

    bool check_refinement() {
        if (definition_.refinement_mode != 1) return true;
        if (!read_.is_number("Text_tile_overlap")) return read_.fail("The number of overlap cells is not valid");
        if (read_.value("Text_tile_overlap") < 0) return read_.fail("The number of overlap cells must be positive");
        definition_.tile_overlap = read_.integer("Text_tile_overlap");
        if (!read_.is_number("Text_x_tile_size")) return read_.fail("The X tile size is not valid");
        definition_.x_tile_size = read_.integer("Text_x_tile_size");
        if (!read_.is_number("Text_y_tile_size")) return read_.fail("The Y tile size is not valid");
        definition_.y_tile_size = read_.integer("Text_y_tile_size");

        // A blend as wide as the overlap passes, whatever the message says.
        if (!read_.is_number("Text_blend_overlap")) return read_.fail("The blend overlap is not valid");
        if (read_.value("Text_blend_overlap") < 0) return read_.fail("The number of blend cells must be positive");
        if (read_.value("Text_blend_overlap") > definition_.tile_overlap)
            return read_.fail("The number of blend cells must be less than the number of overlap cells");
        definition_.tile_xy_blend = read_.integer("Text_blend_overlap");
        if (!read_.is_number("Text_z_blend")) return read_.fail("The z blend overlap is not valid");
        if (read_.value("Text_z_blend") < 0) return read_.fail("The number of z blend cells must be positive");
        if (read_.value("Text_z_blend") > definition_.tile_overlap)
            return read_.fail("The number of z blend cells must be less than the number of overlap cells");
        definition_.tile_z_blend = read_.integer("Text_z_blend");
        if (!read_.is_number("Text_minimum_points"))
            return read_.fail("The minimum number of points per tile is not valid");
        if (read_.value("Text_minimum_points") < 0)
            return read_.fail("The minimum number of points per tile must be positive");
        definition_.tile_min_points = read_.integer("Text_minimum_points");

        if (definition_.mesh_cell_count[3] >= 1)
            return read_.fail("The use of multiplicative Z mesh cells is not supported for refinement inversions");
        return true;
    }

    bool check_refined_mesh_bottom() {
        if (definition_.refinement_mode != 1 || definition_.inversion_method == method_zarninv3d) return true;
        const LoadedMesh& loaded = session_.loaded_mesh;
        // The surface is known from the mesh's topography block or from the model read onto it.
        if (!loaded.loaded || !(loaded.topo_min < 1e31f)) return true;
        if (static_cast<float>(definition_.mesh_min[2]) > loaded.topo_min)
            return read_.fail("The bottom of the mesh refinement must be below the bottom of the topo: " +
                              format_picture(loaded.topo_min, "0.0"));
        return true;
    }

    Session& session_;
    InversionDefinition& definition_;
    FormModel& form_;
    FormReader read_;
};

/// The column definitions of a point file (slot 0 or 1).
bool check_columns(Session& session, int index) {
    InversionDefinition& definition = session.definition;
    FormReader read(session);
    const std::size_t slot = static_cast<std::size_t>(index);
    if (definition.data_file_kinds[slot] == 0) {
        if (!read.is_number("Text_UBC_locations_nhead", index))
            return read.fail("The number of the first data line is not numeric");
        if (read.value("Text_UBC_locations_nhead", index) <= 0)
            return read.fail("The number of the first data line must be positive");
    }
    definition.data_first_lines.at(slot) = std::max(1, read.integer("Text_UBC_locations_nhead", index));
    definition.data_read_steps.at(slot) = std::max(1, read.integer("Text_UBC_locations_nstep", index));
    definition.data_name_lines.at(slot) = read.integer("Text_UBC_locations_name_line", index);

    if (!(definition.data_x_columns.at(slot) > 0)) return read.fail("The X column location must be defined");
    if (!(definition.data_y_columns.at(slot) > 0)) return read.fail("The Y column location must be defined");
    // Observed data may have no elevation column: the sensor heights then come from elsewhere.
    if (index == 1 && !(definition.data_z_columns.at(slot) > 0))
        return read.fail("The Z column location must be defined");

    int last_column = std::max({definition.data_x_columns[slot], definition.data_y_columns[slot],
                                definition.data_z_columns[slot]});
    if (index == 0) {
        if (definition.data_value_columns[0] < 1) return read.fail("The mag column location must be defined");
        if (!read.is_number("Text_UBC_locations_valcount"))
            return read.fail("The nuber of values per cell is not numeric");
        if (read.value("Text_UBC_locations_valcount") < 0)
            return read.fail("The nuber of values per cell must be non-negative");
        definition.values_per_cell = read.integer("Text_UBC_locations_valcount");
        if (!read.is_number("Text_UBC_integration_interval"))
            return read.fail("The integration interval is not numeric");
        if (read.single("Text_UBC_integration_interval") < 0)
            return read.fail("The integration interval cannot be negative");
        definition.integration_interval = read.single("Text_UBC_integration_interval");
        last_column = std::max({last_column, definition.data_value_columns[0], definition.line_column,
                                definition.extra_value_column});
    }
    // A line of the reader holds at most 10240 characters, so at most 5121 fields.
    constexpr int most_fields = 5121;
    const int highest_column =
        index == 0 ? std::max({last_column, definition.data_value_columns[1], definition.data_value_columns[2]})
                   : last_column;
    if (highest_column > most_fields)
        return read.fail(std::string("The column ") + format_picture(highest_column, "0") + " of the " +
                         (index > 0 ? "topo" : "observed") + " data file is beyond the " +
                         format_picture(most_fields, "0") + " fields a line can have");
    definition.data_last_columns.at(slot) = last_column;
    if (last_column < 3)
        return read.fail(index > 0 ? "There are not enough distinct fields for the topo data file"
                                   : "There are not enough distinct fields for the observed data file");
    return true;
}

bool check_one_file(Session& session, int index) {
    InversionDefinition& definition = session.definition;
    FormReader read(session);
    const std::size_t slot = static_cast<std::size_t>(index);
    const std::string& name = definition.data_file_names.at(slot);
    if (name.empty()) return read.fail("No data location file has been specified");
    if (!file_exists(session, name)) return read.fail("The specified data location file does not exist");

    const std::filesystem::path path = resolve_path(session.working_directory, name);
    if (is_grid_file(path.string())) {
        definition.data_file_kinds[slot] = 1;
    } else {
        definition.data_file_kinds[slot] = to_upper(file_extension(name)) == "GDB" ? 2 : 0;
        if (index > 1)
            return read.fail("The grid file format could not be dertermined for the file: " + file_name_only(name));
    }
    // Grids have no column definitions.
    if (definition.data_file_kinds[slot] != 1 && !check_columns(session, index)) return false;

    if (index < 3) {
        if (!read.is_number("Text_UBC_elevation_offset", index))
            return read.fail("The elevation offset value is not numeric");
        definition.elevation_offsets.at(slot) = read.single("Text_UBC_elevation_offset", index);
    }
    update_point_transform(definition.coordinate_transform);
    return true;
}

}  // namespace

int check_file_definitions(Session& session, int index) {
    try {
        return check_one_file(session, index) ? 0 : -1;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while checking the data file definitions: " +
                                     std::string(fault.what()));
        return -1;
    }
}

int check_inversion_definitions(Session& session) {
    try {
        DefinitionWalk walk(session);
        return walk.run() ? 0 : -1;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while checking the inversion definitions: " +
                                     std::string(fault.what()));
        return -1;
    }
}

}  // namespace invsetup
