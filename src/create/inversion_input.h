// src/create/inversion_input.h - the input file of the inversion program (".inp") and its restart
// twin (".restart") for every method.
#pragma once
#include <string>
#include <vector>

#include "create/run_context.h"
#include "form/inversion_definition.h"

namespace invsetup {
struct Session;

/// "zarninv3d", "maginv3d" or "gzinv3d" by the method.
std::string inversion_input_stem(int inversion_method);
/// The stem and ".inp" for `restart_flag` 0, ".restart" for 1.
std::string inversion_input_file_name(int inversion_method, int restart_flag);

/// The lines of the inversion input file. Files of the parent run carry context.path_prefix();
/// UBC Gravity V2 has a list of its own (see gzinv3d_v2_lines).
std::vector<std::string> inversion_input_lines(const InversionDefinition& definition, const RunContext& context,
                                               int restart_flag);
/// The fixed list of UBC Gravity V2 (method 1), which never carries a path prefix.
std::vector<std::string> gzinv3d_v2_lines(const InversionDefinition& definition, int restart_flag);

/// Pieces the tile input files share with the run's own file.
/// The in-house tolerance line: trade-off, misfit tolerance, the positivity sign field and the
/// integration interval when there is one.
std::string zarninv3d_tolerance_line(const InversionDefinition& definition);
/// The alphas line of every method but 1: "null", or the specified alphas (without alpha_s for a
/// length method).
std::string alphas_line(const InversionDefinition& definition);
/// The in-house matrix line: the vector run's names as they stand, several types' names behind
/// `prefix` joined by "|", or `prefix` and "zarninv3d.mtx".
std::string zarninv3d_matrix_line(const InversionDefinition& definition, const std::string& prefix);
/// The vector magnetic run's line: the field direction from inclination and declination.
std::string vector_direction_line(const InversionDefinition& definition);

/// Writes the inversion input file with `restart_flag` (0 ".inp", 1 ".restart") in the run
/// directory. Throws std::runtime_error naming the file when it can't be written.
void write_inversion_input(Session& session, const RunContext& context, int restart_flag);

}  // namespace invsetup
