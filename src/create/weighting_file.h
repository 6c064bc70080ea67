// src/create/weighting_file.h - the weighting model "w.dat": cell weights of the smallest-model
// term and of the three smoothness terms.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {
struct Session;

/// The lines of a weighting model for count_x by count_y by count_z cells: four blocks (smallest
/// model; x, y and z smoothness, each one cell shorter on its own axis), y outer and x inner, one
/// line per cell column with a token per layer from the top. Layers 1 to weights.size() of the x
/// and y smoothness blocks take the weights as the texts stand; every other token is " 1".
std::vector<std::string> weighting_model_lines(const std::vector<std::string>& weights, int count_x, int count_y,
                                               int count_z);

/// Writes the weighting model to `output_path`. `mode` 2 is the driver's: the horizontal smoothness
/// weights come from `weight_list` ("16,8,4,2,1"). Returns 0; -1 after "The weighting definitions
/// are not valid for weight n" (nothing written), or after "An error occurred while setting up the
/// weighting matrix: " and the fault.
/// Modes 1 and 3 work on the loaded mesh instead (the list, path and counts are not used): the
/// person gives the horizontal weights (a cancel, an empty text, gives none), in mode 3 the weights of
/// the smallest-model block too, and the layer where the smoothing rolls off (from it, four layers
/// of 0.8 down to 0.2, then 0.1; "The weighting roll-off is not valid" for a text that isn't a
/// number). "w.dat" goes beside the loaded mesh, with each block as a model and its mesh ("ws.mod"
/// and "ws.msh", "wx", "wy", "wz"; the x, y and z meshes one cell shorter on their axis, the last).
/// Mode 1 marks the loaded model's present cells: 10 in the smallest-model block, 5 in a smoothness
/// block where the cell or its next neighbour is present. Other modes: -1 with no file.
int write_weighting_model(Session& session, int mode, const std::string& weight_list,
                          const std::filesystem::path& output_path, int count_x, int count_y, int count_z);

}  // namespace invsetup
