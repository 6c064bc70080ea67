// src/create/run_names.h - the naming rules the files of a run package share: which data kind a
// run writes, how a model box's text reaches a file line, when the weighting model is used.
#pragma once
#include <string>
#include <string_view>

#include "form/inversion_definition.h"

namespace invsetup {

/// The in-house method chooses its magnetic or gravity names by the first data type (100 vector
/// magnetic, 1 total field, 20 and above the field components); the UBC methods by their family.
bool uses_magnetic_names(const InversionDefinition& definition);
/// The in-house vector magnetic inversion (first data type 100), which has lines of its own.
bool is_vector_magnetic_run(const InversionDefinition& definition);

/// "topo.dat" when the run uses topography, else "null".
std::string topo_file_entry(const InversionDefinition& definition);

/// True when a model box names a file: not empty, not "null" in any case, and not a number (a
/// number is a constant model).
bool is_file_reference(std::string_view text);
/// A file reference behind `prefix`; any other text as it stands.
std::string file_rule(std::string_view prefix, std::string_view text);
/// The version 5 programs' form: a file reference behind `prefix`; "null" in any case becomes
/// `missing`; anything else (a number) becomes "VALUE " and the text.
std::string value_rule(std::string_view prefix, std::string_view text, std::string_view missing);

/// The run uses the weighting model "w.dat": the multiplier list isn't blank and
/// Check_create_weighting_file is on.
bool use_weighting_model(const InversionDefinition& definition);

}  // namespace invsetup
