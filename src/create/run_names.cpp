// src/create/run_names.cpp - the naming rules the files of a run package share.
#include "create/run_names.h"

#include "support/text.h"

namespace invsetup {

bool uses_magnetic_names(const InversionDefinition& definition) {
    if (definition.inversion_method == method_zarninv3d) {
        const int type = definition.data_types[0];
        return type == 100 || type == 1 || type >= 20;
    }
    return is_magnetic_method(definition.inversion_method);
}

bool is_vector_magnetic_run(const InversionDefinition& definition) {
    return definition.inversion_method == method_zarninv3d && definition.data_types[0] == 100;
}

std::string topo_file_entry(const InversionDefinition& definition) {
    return definition.topo_type == 0 ? "topo.dat" : "null";
}

bool is_file_reference(std::string_view text) {
    return !text.empty() && !iequals(text, "NULL") && !is_numeric(text);
}

std::string file_rule(std::string_view prefix, std::string_view text) {
    if (is_file_reference(text)) return std::string(prefix) + std::string(text);
    return std::string(text);
}

std::string value_rule(std::string_view prefix, std::string_view text, std::string_view missing) {
    if (is_file_reference(text)) return std::string(prefix) + std::string(text);
    if (iequals(text, "NULL")) return std::string(missing);
    return "VALUE " + std::string(text);
}

bool use_weighting_model(const InversionDefinition& definition) {
    return !trim(definition.weight_multipliers).empty() && definition.smoothness_weighting != 0;
}

}  // namespace invsetup
