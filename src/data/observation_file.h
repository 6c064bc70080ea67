// src/data/observation_file.h - the observation files of a run ("mag.obs", "grav.obs", "mag.ref",
// "grav.ref", and each tile's): one line per reading in fixed fields of 14 characters.
#pragma once
#include <cstddef>
#include <filesystem>

namespace invsetup {
struct Session;

/// Width of every field of a data line.
inline constexpr int observation_field_width = 14;

/// Writes the readings that process_inversion_data left in session.bins and session.readings for the
/// mesh columns x_first..x_end - 1 by y_first..y_end - 1 (the whole mesh is 1, nx + 1, 1, ny + 1).
/// The readings come from the list, in file order and at most values_per_cell per cell (0: all),
/// when values_per_cell is not 1 and the list holds readings; otherwise from the bins, X fastest.
/// The magnetic methods (and the in-house method's magnetic data types) start with the two field
/// lines; then the count " N " and the data lines. `with_extras` 1 adds the line label and the extra
/// value where those columns are defined. `use_expanded` has no effect on the output.
/// `written` becomes the number of data lines; with no reading selected no file is made and
/// `written` keeps its value. The bins must have been filled (sized (nx + 1) by (ny + 1)).
/// Returns 0, or -1 after the trap's message (a file that can't be written).
int write_inversion_data(Session& session, int with_extras, const std::filesystem::path& file_name, int x_first,
                         int x_end, int y_first, int y_end, int use_expanded, int& written);

/// Writes `value` by the picture "0.0000" into `out` (room for 48 characters), the same bytes as
/// format_picture(value, "0.0000"), and returns the length.
std::size_t format_fixed4(double value, char* out);

}  // namespace invsetup
