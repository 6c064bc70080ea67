// src/form/column_definitions.h - showing a data file and its column definitions in the form: the
// file's kind and preview, and the column names of its name line laid over the column boxes.
#pragma once
#include <istream>
#include <string_view>

namespace invsetup {
struct Session;

/// Shows the file of a slot (0 observed points, 1 topography, 2..4 data grids, 5 sensor grid) and
/// finds its kind: 1 for a grid (slots from 1), 2 for a Geosoft database (by its ".gdb" extension;
/// only the vendor's libraries read one, so it has no preview and no names), else 0, a text file
/// whose first lines go to Text_data_file. A missing file has kind 0 and, in slot 1, turns the
/// topography to the top of the mesh; an existing one in slot 1 turns the data file on. The column
/// names of a point slot are forgotten, so that the next display reads the new file's.
void display_data_file(Session& session, int slot);

/// Shows the chosen columns of slot 0 or 1 in the column boxes: by name when the file has a name
/// line (a column beyond the names, or 0, shows empty), else by number (x and y always; z, values,
/// line and extra empty when 0 or less). Loads the names first when none are loaded.
void display_location_column_definitions(Session& session, int slot);

/// The line reader that suits a file: 0 (read_line) when a CR appears in its first 512 bytes, 1
/// (read_clean_line) when none does or the file starts with a byte order mark. The stream is put
/// back at its start.
int detect_line_mode(std::istream& in);

/// Reads the names of line data_name_lines(slot) of a text file of slot 0 or 1, split at commas
/// (a leading "#", "\" or "/" is dropped), into definition.column_names, column_name_count(slot) and
/// Combo_names(slot) ("N/A" first, hidden). Silent: any failure leaves the count 0.
void load_location_column_names(Session& session, int slot);

/// A click on a column box (Text_UBC_locations_xpos, _ypos, _zpos, _magpos, _lpos, _valpos): with
/// names loaded, Combo_names(slot) opens over the box on the box's column.
void click_column_box(Session& session, std::string_view name, int index);

/// Focus leaves Text_UBC_locations_nhead, _nstep or _name_line: a numeric text is stored (the name
/// line then reloads the names and the boxes); another goes back to the stored value, with a beep.
void leave_column_definition_box(Session& session, std::string_view name, int slot);

/// Registers the change handlers of the data file boxes, their buttons, the column boxes and
/// Combo_names.
void register_column_behaviour(Session& session);

}  // namespace invsetup
