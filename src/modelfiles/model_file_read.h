// src/modelfiles/model_file_read.h - the existing model of refinement mode: one value per cell of the
// loaded mesh, read from the UBC text form, the binary form with its "UBC" header, the
// multicomponent text form or the layered form of a layered mesh.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "modelfiles/model_file_write.h"

namespace invsetup {
class Dialogue;
struct Session;
struct LoadedMesh;

/// The model read for refinement. `values` has the loaded mesh's counts, x fastest, then y, then z
/// from the top; -1e32 marks a null cell.
struct LoadedModel {
    bool loaded = false;
    ModelValues values;
    std::vector<std::int16_t> mask;
    /// Order of the values in a text file: 1 y, x, z (the UBC order); 2 z, y, x; 3 z, x, y falling;
    /// 4 z, y falling, x falling; 5 z, y falling, x. Any other value (0, the default) reads no value
    /// from a text file.
    int model_order = 0;
    int model_kind = 0;  // kinds 6 and 8 hold the inverse of the property
    float null_value = 0;
    float scale = 0;
    float model_min = 1e32f, model_max = -1e32f;
    int display_mode = 1;  // 2 when every value is above 0 (a logarithmic scale fits)
    float sea_value = 0, air_value = 0;
};

/// Not loaded, extremes back to 1e32 and -1e32.
void clear_model(LoadedModel& model);

/// Reads the values of `file_name` for `mesh` into model.values (sized from the mesh, all 0 first).
/// Returns 0, or -1 after a message: "Unexpected end of file was encountered while reading the model
/// file", the multicomponent refusals, "An error occurred while reading the model file : " and the
/// fault; -1 without a message when the person gives no component. Progress goes to the dialogue.
int read_model_file(Dialogue& dialogue, const std::string& file_name, const LoadedMesh& mesh, LoadedModel& model);

/// Clears session.loaded_model, reads the file for session.loaded_mesh and conditions the values:
/// nulls (at or below null_value) become -1e32, the rest are scaled (kinds 6 and 8 inverted), the
/// extremes and display mode are set (on a trapezoidal mesh the minimum shown is 0). When the loaded
/// mesh holds no surface, its surface is taken from the model (the top of the first present cell of
/// each column; topo_min and topo_max too). Returns 0 or -1 as read_model_file.
int load_model(Session& session, const std::string& file_name);

}  // namespace invsetup
