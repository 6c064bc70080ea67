// src/create/inversion_input.cpp - the input file of the inversion program and its restart twin.
#include "create/inversion_input.h"

#include <cmath>

#include "create/run_names.h"
#include "session.h"
#include "support/files.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

bool is_version5(int method) { return method == method_ubc_grav_v5 || method == method_ubc_mag_v5; }

std::string join_alphas(std::initializer_list<float> alphas) {
    std::string line;
    for (float alpha : alphas) {
        if (!line.empty()) line += ' ';
        line += single_to_text(alpha);
    }
    return line;
}

std::string reference_line(const InversionDefinition& definition, const std::string& prefix) {
    const int method = definition.inversion_method;
    if (!definition.reference_model_given) return is_version5(method) ? "VALUE 0.0" : "null";
    // A rock property run extracts its reference model under a fixed name first. The in-house
    // method names the magnetic file here whatever its data kind.
    if (definition.rock_properties_used && definition.rock_application != 2)
        return prefix + (method == method_ubc_grav_v3 || method == method_ubc_grav_v5 ? "grav3d_ref.den"
                                                                                       : "mag3d_ref.sus");
    if (is_version5(method)) return value_rule(prefix, definition.reference_model_file, "VALUE 0.0");
    return file_rule(prefix, definition.reference_model_file);
}

std::string bounds_line(const InversionDefinition& definition, const std::string& prefix) {
    if (!definition.model_bounds_given) return "null";
    if (definition.rock_properties_used && definition.rock_application != 1) {
        const bool magnetic = definition.inversion_method == method_zarninv3d
                                  ? uses_magnetic_names(definition)
                                  : definition.inversion_method == method_ubc_mag_v4;
        return prefix + (magnetic ? "mag3d_bounds.sus" : "grav3d_bounds.den");
    }
    return file_rule(prefix, definition.model_bounds_files[0]);
}

std::string initial_model_line(const InversionDefinition& definition, const std::string& prefix) {
    const std::string& text = definition.initial_model_file;
    // The initial model is copied into the run, so only its name counts.
    if (is_file_reference(text)) return prefix + file_name_only(text);
    if (is_version5(definition.inversion_method)) return value_rule(prefix, text, "VALUE 0.0");
    return text;
}

std::string weights_line(const InversionDefinition& definition, const std::string& prefix) {
    if (use_weighting_model(definition)) return "w.dat";
    const std::string& text = definition.weighting_model_file;
    if (!text.empty() && !iequals(text, "NULL")) return prefix + text;
    return text;
}

}  // namespace

std::string inversion_input_stem(int inversion_method) {
    if (inversion_method == method_zarninv3d) return "zarninv3d";
    if (is_magnetic_method(inversion_method)) return "maginv3d";
    return "gzinv3d";
}

std::string inversion_input_file_name(int inversion_method, int restart_flag) {
    return inversion_input_stem(inversion_method) + (restart_flag == 0 ? ".inp" : ".restart");
}

std::string zarninv3d_tolerance_line(const InversionDefinition& definition) {
    std::string line =
        number_to_text(definition.trade_off_parameter) + " " + number_to_text(definition.misfit_tolerance);
    // The sign field: -1 negative, 0 unconstrained, 1 positive. By default magnetic total field
    // data (and the vector run) are kept positive.
    if (definition.positivity_flag > 0) {
        line += format_picture(definition.positivity_flag - 2, " 0");
    } else {
        const int first = definition.data_types[0];
        line += first == 100 || first == 1 ? " 1" : " 0";
    }
    if (definition.integration_interval > 0) {
        line += " ";
        line += number_to_text(definition.integration_interval);
    }
    return line;
}

std::string alphas_line(const InversionDefinition& definition) {
    if (definition.alpha_mode != 1) return "null";
    if (definition.alpha_method == 0)
        return join_alphas({definition.alpha_s, definition.alpha_e, definition.alpha_n, definition.alpha_v});
    return join_alphas({definition.alpha_e, definition.alpha_n, definition.alpha_v});
}

std::string zarninv3d_matrix_line(const InversionDefinition& definition, const std::string& prefix) {
    if (definition.data_types[0] == 100) return definition.sensitivity_matrix_names[0];
    if (definition.data_type_count > 1) {
        std::string line;
        for (int k = 0; k < definition.data_type_count; ++k) {
            if (k > 0) line += '|';
            line += prefix + definition.sensitivity_matrix_names.at(static_cast<std::size_t>(k));
        }
        return line;
    }
    return prefix + "zarninv3d.mtx";
}

std::string vector_direction_line(const InversionDefinition& definition) {
    const double inclination = definition.mag_inclination * 0.017453292;
    const double declination = definition.mag_declination * 0.017453292;
    return "3 1,1," + format_picture(std::cos(inclination) * std::sin(declination), "0.0000") + " 2,1," +
           format_picture(std::cos(inclination) * std::cos(declination), "0.0000") + " 3,1," +
           format_picture(std::sin(inclination), "0.0000") + " RMS";
}

std::vector<std::string> gzinv3d_v2_lines(const InversionDefinition& definition, int restart_flag) {
    std::string alphas = "null";
    if (definition.alpha_mode == 1)
        // This program reads alpha_s first also with a length method, and has no alpha_v then.
        alphas = definition.alpha_method == 0
                     ? join_alphas({definition.alpha_s, definition.alpha_e, definition.alpha_n, definition.alpha_v})
                     : join_alphas({definition.alpha_s, definition.alpha_e, definition.alpha_n});
    return {
        format_picture(restart_flag, "0") + " " + std::to_string(definition.maximum_iterations),
        format_picture(definition.chi_factor, "0.000"),
        format_picture(definition.positivity_flag, "0"),
        format_picture(definition.subspace_size, "0"),
        "mesh",
        topo_file_entry(definition),
        "gzinv3d.mtx",
        "grav.obs",
        file_name_only(definition.initial_model_file),
        file_name_only(definition.reference_model_file),
        alphas,
        definition.weighting_model_file,
        definition.model_bounds_files[0],
        "0",
    };
}

std::vector<std::string> inversion_input_lines(const InversionDefinition& definition, const RunContext& context,
                                               int restart_flag) {
    const int method = definition.inversion_method;
    if (method == method_ubc_grav_v2) return gzinv3d_v2_lines(definition, restart_flag);

    const bool in_house = method == method_zarninv3d;
    const bool vector_run = is_vector_magnetic_run(definition);
    const bool magnetic = is_magnetic_method(method);
    const std::string prefix = context.path_prefix();
    std::vector<std::string> lines;

    if (vector_run)
        lines.push_back(format_picture(restart_flag, "0") + " 3 1 1");
    else if (in_house)
        lines.push_back(format_picture(restart_flag, "0") + " " + format_picture(definition.data_type_count, "0"));
    else if (!is_version5(method))
        lines.push_back(format_picture(restart_flag, "0"));

    if (in_house)
        lines.push_back("2 " + format_picture(definition.background_method, "0") + " " +
                        format_picture(definition.background_value, "0.0000"));
    else
        lines.push_back(format_picture(definition.inversion_mode + 1, "0"));

    if (in_house)
        lines.push_back(zarninv3d_tolerance_line(definition));
    else
        lines.push_back(number_to_text(definition.trade_off_parameter) + " " +
                        number_to_text(definition.misfit_tolerance));

    if (in_house) {
        // New observation files of a variation run lie in the variation directory itself.
        const std::string data_prefix = context.create_mode < 3 ? prefix : std::string();
        lines.push_back(data_prefix + (uses_magnetic_names(definition) ? "mag.obs" : "grav.obs"));
        lines.push_back(zarninv3d_matrix_line(definition, prefix));
    } else {
        lines.push_back(prefix + (magnetic ? "mag.obs" : "grav.obs"));
        lines.push_back(prefix + (magnetic ? "maginv3d.mtx" : "gzinv3d.mtx"));
    }

    lines.push_back(initial_model_line(definition, prefix));
    lines.push_back(reference_line(definition, prefix));
    if (is_version5(method)) lines.emplace_back("null");
    if (in_house || method == method_ubc_grav_v3 || method == method_ubc_mag_v4)
        lines.push_back(bounds_line(definition, prefix));
    if (is_version5(method)) {
        lines.push_back(value_rule(prefix, definition.model_bounds_files[0], "VALUE -2.0"));
        lines.push_back(value_rule(prefix, definition.model_bounds_files[1], "VALUE 2.0"));
    }
    lines.push_back(alphas_line(definition));
    if (is_version5(method)) lines.emplace_back(definition.smoothness_method == 1 ? "SMOOTH_MOD_DIF" : "SMOOTH_MOD");
    lines.push_back(weights_line(definition, prefix));
    if (!is_version5(method)) lines.emplace_back("0");

    if (vector_run) {
        lines.push_back(definition.maximum_iterations > 0 ? format_picture(definition.maximum_iterations, "0")
                                                          : std::string("300"));
        lines.push_back(vector_direction_line(definition));
    } else if (in_house && definition.maximum_iterations > 0) {
        lines.push_back(format_picture(definition.maximum_iterations, "0"));
    }
    return lines;
}

void write_inversion_input(Session& session, const RunContext& context, int restart_flag) {
    const InversionDefinition& definition = session.definition;
    write_text_lines(context.run_directory / inversion_input_file_name(definition.inversion_method, restart_flag),
                     inversion_input_lines(definition, context, restart_flag));
}

}  // namespace invsetup
