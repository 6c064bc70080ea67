// src/create/sensitivity_input.cpp - the input files of the sensitivity programs.
#include "create/sensitivity_input.h"

#include "create/run_names.h"
#include "session.h"
#include "support/lines.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

bool is_version5(int method) { return method == method_ubc_grav_v5 || method == method_ubc_mag_v5; }

/// "beta znot" when the weighting is specified, else "null" (the program's own defaults).
std::string weighting_parameter_line(const InversionDefinition& definition) {
    if (definition.depth_weighting_mode != 1) return "null";
    return single_to_text(definition.weighting_beta) + " " + single_to_text(definition.weighting_znot);
}

/// A background elevation was given (a blank box holds the null value).
bool has_background_topo(const InversionDefinition& definition) {
    return definition.background_topo > -1.0e30f;
}

void add_wavelet_lines(const InversionDefinition& definition, std::string_view wavelet_name,
                       std::vector<std::string>& lines) {
    const bool in_house = definition.inversion_method == method_zarninv3d;
    if (definition.wavelet_mode == 1) {
        lines.emplace_back(wavelet_name);
        std::string parameters =
            single_to_text(definition.wavelet_itol) + " " + single_to_text(definition.wavelet_eps);
        if (in_house && has_background_topo(definition)) {
            parameters += ' ';
            parameters += single_to_text(definition.background_topo);
        }
        lines.push_back(std::move(parameters));
    } else if (in_house && has_background_topo(definition)) {
        // The in-house program reads its background elevation from this line, so it gets the
        // default wavelet written out.
        lines.emplace_back("daub2");
        lines.push_back("1 0.001 " + single_to_text(definition.background_topo));
    } else {
        lines.emplace_back("daub2");
        lines.emplace_back("null");
    }
}

std::string data_type_line(const InversionDefinition& definition, const RunContext& context) {
    const int first = definition.data_types[0];
    if (first == 100) return "20 21 22";
    std::string line = format_picture(first, "0");
    auto add = [&line](std::string_view separator, const std::string& number) {
        line += separator;
        line += number;
    };
    for (int k = 1; k < definition.data_type_count; ++k)
        add(" ", format_picture(definition.data_types.at(static_cast<std::size_t>(k)), "0"));
    for (int k = 0; k < definition.calculation_data_type_count; ++k)
        add(" ", format_picture(definition.calculation_data_types.at(static_cast<std::size_t>(k)), "0"));
    // Gne and Guv are taken along the grid's axes: a rotated grid passes its rotation on.
    if ((first == 5 || first == 6) && context.transform_in_use && context.transform_rotation != 0)
        add(" 0 ", format_picture(context.transform_rotation, "0.0"));
    if (first == 3 || first == 4) add(" 0 ", format_picture(definition.line_azimuth, "0.0"));
    return line;
}

}  // namespace

std::string weighting_input_file_name(int inversion_method) {
    if (inversion_method == method_ubc_grav_v5) return "gz_weights.inp";
    if (inversion_method == method_ubc_mag_v5) return "mag_weights.inp";
    return {};
}

std::vector<std::string> weighting_input_lines(const InversionDefinition& definition) {
    const bool gravity = definition.inversion_method == method_ubc_grav_v5;
    return {
        gravity ? "GRAV" : "MAG",
        "mesh",
        gravity ? "grav.obs" : "mag.obs",
        topo_file_entry(definition),
        format_picture(definition.depth_weighting_type + 1, "0"),
        weighting_parameter_line(definition),
    };
}

std::string thread_suffix_for(const InversionDefinition& definition) {
    if (!is_version5(definition.inversion_method)) return {};
    std::string suffix(1, ' ');
    suffix += format_picture(definition.number_of_threads, "0");
    return suffix;
}

std::string sensitivity_input_file_name(int inversion_method) {
    if (inversion_method == method_zarninv3d) return "zarnsen3d.inp";
    if (is_magnetic_method(inversion_method)) return "magsen3d.inp";
    if (inversion_method == method_ubc_grav_v3 || inversion_method == method_ubc_grav_v5) return "gzsen3d.inp";
    return {};
}

std::vector<std::string> sensitivity_input_lines(const InversionDefinition& definition, const RunContext& context,
                                                 std::string_view wavelet_name) {
    const int method = definition.inversion_method;
    const bool in_house = method == method_zarninv3d;
    std::vector<std::string> lines;
    lines.emplace_back("mesh");
    lines.emplace_back(uses_magnetic_names(definition) ? "mag.obs" : "grav.obs");
    lines.push_back(topo_file_entry(definition));

    const std::string weighting_type = format_picture(definition.depth_weighting_type + 1, "0");
    if (is_version5(method)) {
        lines.emplace_back(definition.depth_weighting_type == 0 ? "depth_weight.txt" : "distance_weight.txt");
    } else if (in_house && definition.data_types[0] == 100) {
        lines.push_back(weighting_type + " 3 " + format_picture(definition.inversion_mode, "0"));
    } else if (in_house) {
        lines.push_back(weighting_type + " " +
                        format_picture(definition.data_type_count + definition.calculation_data_type_count, "0") +
                        " " + format_picture(definition.inversion_mode, "0"));
    } else {
        lines.push_back(weighting_type);
    }
    if (!is_version5(method)) lines.push_back(weighting_parameter_line(definition));

    add_wavelet_lines(definition, wavelet_name, lines);
    if (in_house) lines.push_back(data_type_line(definition, context));
    if (is_version5(method)) lines.push_back(format_picture(definition.output_debug_information, "0"));
    return lines;
}

void write_weighting_input(Session& session, RunContext& context) {
    const InversionDefinition& definition = session.definition;
    context.thread_suffix = thread_suffix_for(definition);
    const std::string name = weighting_input_file_name(definition.inversion_method);
    if (name.empty()) return;
    write_text_lines(context.run_directory / name, weighting_input_lines(definition));
}

void write_sensitivity_input(Session& session, const RunContext& context) {
    const InversionDefinition& definition = session.definition;
    const std::string name = sensitivity_input_file_name(definition.inversion_method);
    if (name.empty()) return;
    std::string wavelet_name;  // only a specified wavelet names its row
    if (definition.wavelet_mode == 1)
        wavelet_name =
            session.form.control("Combo_wavelet_type").rows.at(static_cast<std::size_t>(definition.wavelet_type)).text;
    write_text_lines(context.run_directory / name, sensitivity_input_lines(definition, context, wavelet_name));
}

}  // namespace invsetup
