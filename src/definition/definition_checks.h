// src/definition/definition_checks.h - the ordered checks of a whole definition before it is saved
// or created. They also move the form's values into the definition and derive the fields the
// writers of a run package need.
#pragma once

namespace invsetup {
struct Session;

/// Walks the form in a fixed order: mesh limits, regional and error values, the data files, the
/// data types (component and sensitivity matrix names), the field, the method's parameters, errors
/// again (stored), alphas, the model files ("null" for an empty box; sets reference_model_given,
/// model_bounds_given, rock_properties_used), the refinement settings, and at last the mesh
/// (determine_inversion_mesh). A point data run without a topography file is switched to the top
/// of the mesh (topo_type 1). Returns 0 when the definition may be used, or -1 after one message
/// telling what is wrong (nothing more when the mesh failed; a fault shows
/// "An error occurred while checking the inversion definitions: " and its description).
int check_inversion_definitions(Session& session);

/// Checks data file `index` of data_file_names (0 observed points, 1 topography, 2 to 4 observed
/// grids, 5 sensor grid): that it exists, its kind (data_file_kinds: 0 text, 1 grid, 2 Geosoft
/// database) and, for a file that isn't a grid, its column definitions (stores the first line,
/// step and name line, data_last_columns, and for index 0 values_per_cell and
/// integration_interval); then the elevation offset of index 0 to 2. Returns 0, or -1 after one
/// message (a fault: "An error occurred while checking the data file definitions: " and its
/// description).
int check_file_definitions(Session& session, int index);

}  // namespace invsetup
