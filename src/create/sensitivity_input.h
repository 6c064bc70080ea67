// src/create/sensitivity_input.h - the input files of the sensitivity programs: the weighting
// program's file of the version 5 methods and the sensitivity file of every method but UBC Gravity V2.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "create/run_context.h"
#include "form/inversion_definition.h"

namespace invsetup {
struct Session;

/// "gz_weights.inp" (method 5), "mag_weights.inp" (method 6), "" for the methods without one.
std::string weighting_input_file_name(int inversion_method);
/// The lines of the weighting program's input file (methods 5 and 6).
std::vector<std::string> weighting_input_lines(const InversionDefinition& definition);
/// A blank and the thread count for methods 5 and 6, whose programs take it on their command
/// line; "" for every other method.
std::string thread_suffix_for(const InversionDefinition& definition);

/// "zarnsen3d.inp", "magsen3d.inp" or "gzsen3d.inp"; "" for method 1, which has none.
std::string sensitivity_input_file_name(int inversion_method);
/// The lines of the sensitivity input file. `wavelet_name` is the text of the selected row of
/// Combo_wavelet_type (used when a wavelet is specified).
std::vector<std::string> sensitivity_input_lines(const InversionDefinition& definition, const RunContext& context,
                                                 std::string_view wavelet_name);

/// Sets context.thread_suffix and, for methods 5 and 6, writes the weighting program's input file
/// in the run directory. Throws std::runtime_error naming the file when it can't be written.
void write_weighting_input(Session& session, RunContext& context);
/// Writes the sensitivity input file in the run directory (nothing for method 1). Throws
/// std::runtime_error naming the file when it can't be written.
void write_sensitivity_input(Session& session, const RunContext& context);

}  // namespace invsetup
