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
/// weighting matrix: " and the fault. Other modes are not offered: -1 with no file.
int write_weighting_model(Session& session, int mode, const std::string& weight_list,
                          const std::filesystem::path& output_path, int count_x, int count_y, int count_z);

}  // namespace invsetup
