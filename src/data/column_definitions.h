// src/data/column_definitions.h - showing a data file and its column definitions in the form.
#pragma once

namespace invsetup {
struct Session;

/// Shows the file of a slot (0 observed points, 1 topography, 2..4 data grids, 5 sensor grid) and
/// finds its kind.
void display_data_file(Session& session, int slot);
/// Shows the chosen columns of slot 0 or 1 in the column boxes, as names or numbers.
void display_location_column_definitions(Session& session, int slot);

}  // namespace invsetup
