// src/create/weighting_file.cpp - the weighting model "w.dat".
#include "create/weighting_file.h"

#include <exception>

#include "session.h"
#include "support/lines.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// Hands each line of the four blocks to `sink` in order, building them in one reused buffer:
/// a tile's model may hold millions of cells. For each cell column (y outer, x inner) a line of
/// `count_z` tokens; in the x and y smoothness blocks the first layers take the weights.
template <class Sink>
void for_each_weighting_line(const std::vector<std::string>& weights, int count_x, int count_y, int count_z,
                             Sink&& sink) {
    std::string line;
    auto block = [&](int block_x, int block_y, int block_z, bool weighted) {
        const int weighted_layers = weighted ? static_cast<int>(weights.size()) : 0;
        for (int j = 1; j <= block_y; ++j) {
            for (int i = 1; i <= block_x; ++i) {
                line.clear();
                for (int k = 1; k <= block_z; ++k) {
                    if (k <= weighted_layers) {
                        line += ' ';
                        line += weights[static_cast<std::size_t>(k - 1)];
                    } else {
                        line += " 1";
                    }
                }
                sink(line);
            }
        }
    };
    block(count_x, count_y, count_z, false);
    block(count_x - 1, count_y, count_z, true);
    block(count_x, count_y - 1, count_z, true);
    block(count_x, count_y, count_z - 1, false);
}

}  // namespace

std::vector<std::string> weighting_model_lines(const std::vector<std::string>& weights, int count_x, int count_y,
                                               int count_z) {
    std::vector<std::string> lines;
    for_each_weighting_line(weights, count_x, count_y, count_z,
                            [&lines](const std::string& line) { lines.push_back(line); });
    return lines;
}

int write_weighting_model(Session& session, int mode, const std::string& weight_list,
                          const std::filesystem::path& output_path, int count_x, int count_y, int count_z) {
    if (mode != 2) return -1;
    std::vector<std::string> weights;
    int count = 0;
    if (parse_weight_list(&session.dialogue, weight_list, weights, count) < 0) return -1;
    weights.resize(static_cast<std::size_t>(count));
    try {
        LineWriter file(output_path);
        for_each_weighting_line(weights, count_x, count_y, count_z,
                                [&file](const std::string& line) { file.write_line(line); });
        file.close();
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while setting up the weighting matrix: " +
                                     std::string(fault.what()));
        return -1;
    }
}

}  // namespace invsetup
