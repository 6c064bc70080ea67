// src/create/weighting_file.cpp - the weighting model "w.dat".
#include "create/weighting_file.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_write.h"
#include "modelfiles/model_file_write.h"

#include "session.h"
#include "support/lines.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// What decides the tokens besides the horizontal list: the list of the smallest-model block (mode
/// 3), the layer where the smoothing rolls off, and the model whose present cells are marked (mode 1).
struct WeightingRules {
    std::vector<std::string> smallest;  // empty: " 1"
    int roll_off = 0;
    const ModelValues* marked = nullptr;
};

/// Hands each line of the four blocks to `sink` in order, building them in one reused buffer:
/// a tile's model may hold millions of cells. For each cell column (y outer, x inner) a line of
/// `count_z` tokens; in the x and y smoothness blocks the first layers take the weights.
template <class Sink>
void for_each_weighting_line(const std::vector<std::string>& weights, int count_x, int count_y, int count_z,
                             const WeightingRules& rules, Sink&& sink) {
    std::string line;
    const ModelValues* marked = rules.marked;
    const auto active = [marked](int i, int j, int k) { return !is_null(marked->at(i, j, k)); };
    // block 1 smallest model, 2 x, 3 y, 4 z smoothness.
    auto block = [&](int number, int block_x, int block_y, int block_z) {
        const std::vector<std::string>* list = number == 2 || number == 3 ? &weights
                                               : number == 1 && !rules.smallest.empty() ? &rules.smallest
                                                                                        : nullptr;
        const int listed = list ? static_cast<int>(list->size()) : 0;
        const bool rolls = list != nullptr && rules.roll_off > 0;
        for (int j = 1; j <= block_y; ++j) {
            for (int i = 1; i <= block_x; ++i) {
                line.clear();
                for (int k = 1; k <= block_z; ++k) {
                    if (marked != nullptr) {
                        const bool mark = number == 1   ? active(i, j, k)
                                          : number == 2 ? active(i, j, k) || active(i + 1, j, k)
                                          : number == 3 ? active(i, j, k) || active(i, j + 1, k)
                                                        : active(i, j, k) || active(i, j, k + 1);
                        if (mark) {
                            line += number == 1 ? " 10" : " 5";
                            continue;
                        }
                    }
                    if (k <= listed) {
                        line += ' ';
                        line += (*list)[static_cast<std::size_t>(k - 1)];
                    } else if (rolls && k >= rules.roll_off) {
                        // The smoothing fades over four layers from the roll-off layer, then stays low.
                        if (k <= rules.roll_off + 3) {
                            line += ' ';
                            line += format_picture(1.0 - 0.2 * (k - rules.roll_off + 1), "0.0");
                        } else {
                            line += " 0.1";
                        }
                    } else {
                        line += " 1";
                    }
                }
                sink(line);
            }
        }
    };
    block(1, count_x, count_y, count_z);
    block(2, count_x - 1, count_y, count_z);
    block(3, count_x, count_y - 1, count_z);
    block(4, count_x, count_y, count_z - 1);
}

/// The loaded mesh with one cell less on `axis` (0 x, 1 y, 2 z; -1 none), as a mesh to write.
InversionMesh block_mesh(const LoadedMesh& loaded, int axis) {
    InversionMesh mesh;
    mesh.nx = loaded.nx - (axis == 0 ? 1 : 0);
    mesh.ny = loaded.ny - (axis == 1 ? 1 : 0);
    mesh.nz = loaded.nz - (axis == 2 ? 1 : 0);
    mesh.size_arrays();
    for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = loaded.dx[i];
    for (int j = 1; j <= mesh.ny; ++j) mesh.dy[j] = loaded.dy[j];
    for (int k = 1; k <= mesh.nz; ++k) mesh.dz[k] = loaded.dz[k];
    mesh.x_nodes[1] = loaded.x_nodes[1];
    mesh.y_nodes[1] = loaded.y_nodes[1];
    mesh.z_nodes[1] = loaded.z_nodes[1];
    lay_nodes(mesh);
    return mesh;
}

/// Modes 1 and 3: the lists asked of the person, "w.dat" beside the loaded mesh, and each block as a
/// model with its mesh ("ws", "wx", "wy", "wz").
int write_mesh_weighting(Session& session, int mode) {
    Dialogue& dialogue = session.dialogue;
    const LoadedMesh& loaded = session.loaded_mesh;
    if (!loaded.loaded || loaded.nx < 1 || loaded.ny < 1 || loaded.nz < 1) {
        dialogue.message_box("No mesh file has been specified");
        return -1;
    }
    std::vector<std::string> weights;
    int count = 0;
    const std::string horizontal =
        dialogue.ask_text("Enter desired horizontal smoothing weights\r\nPress Cancel for no smoothing", "16,8,4,2,1");
    if (parse_weight_list(&dialogue, horizontal, weights, count) < 0) return -1;
    weights.resize(static_cast<std::size_t>(count));
    WeightingRules rules;
    if (mode == 3) {
        const std::string smallest =
            dialogue.ask_text("Enter desired smallest model weights\r\nPress Cancel for no weighting", "16,8,4,2,1");
        if (parse_weight_list(&dialogue, smallest, rules.smallest, count) < 0) return -1;
        rules.smallest.resize(static_cast<std::size_t>(count));
    }
    const std::string roll_off = trim(dialogue.ask_text(
        "Enter layer number to start depth weighting attenuation (0 means no roll-off applied)", "0"));
    if (!is_numeric(roll_off)) {
        dialogue.message_box("The weighting roll-off is not valid");
        return -1;
    }
    rules.roll_off = to_integer(parse_number_prefix(roll_off));
    if (mode == 1 && session.loaded_model.loaded) rules.marked = &session.loaded_model.values;

    const std::filesystem::path folder = native_path(directory_of(session.original_mesh_name));
    try {
        LineWriter file(folder / "w.dat");
        const int nx = loaded.nx, ny = loaded.ny, nz = loaded.nz;
        // Each block also as a model of its own shape: the lines come block after block.
        const int shapes[4][3] = {{nx, ny, nz}, {nx - 1, ny, nz}, {nx, ny - 1, nz}, {nx, ny, nz - 1}};
        const char* names[4] = {"ws", "wx", "wy", "wz"};
        ModelValues block;
        int number = 0;
        std::size_t lines_left = 0;
        int column = 0;
        const auto start_block = [&] {
            while (number < 4) {
                const int* shape = shapes[number];
                lines_left = shape[0] > 0 && shape[1] > 0 ? static_cast<std::size_t>(shape[0]) * shape[1] : 0;
                block.size(std::max(shape[0], 0), std::max(shape[1], 0), std::max(shape[2], 0));
                column = 0;
                if (lines_left > 0) return;
                ++number;
            }
        };
        const auto finish_block = [&] {
            const int axis = number - 1;
            write_mesh_file(folder / (std::string(names[number]) + ".msh"), block_mesh(loaded, axis),
                            whole_mesh_request(block_mesh(loaded, axis)));
            ModelWriteRequest request = whole_model_request(block);
            write_model_file(dialogue, folder / (std::string(names[number]) + ".mod"), block, request);
            ++number;
            start_block();
        };
        start_block();
        for_each_weighting_line(weights, nx, ny, nz, rules, [&](const std::string& line) {
            file.write_line(line);
            if (number >= 4) return;
            const int i = column % block.nx + 1, j = column / block.nx + 1;
            std::string_view rest(line);
            for (int k = 1; k <= block.nz; ++k) block.at(i, j, k) = static_cast<float>(parse_number_prefix(next_word(rest)));
            ++column;
            if (--lines_left == 0) finish_block();
        });
        file.close();
        return 0;
    } catch (const std::exception& fault) {
        dialogue.message_box("An error occurred while setting up the weighting matrix: " + std::string(fault.what()));
        return -1;
    }
}

}  // namespace

std::vector<std::string> weighting_model_lines(const std::vector<std::string>& weights, int count_x, int count_y,
                                               int count_z) {
    std::vector<std::string> lines;
    for_each_weighting_line(weights, count_x, count_y, count_z, WeightingRules{},
                            [&lines](const std::string& line) { lines.push_back(line); });
    return lines;
}

int write_weighting_model(Session& session, int mode, const std::string& weight_list,
                          const std::filesystem::path& output_path, int count_x, int count_y, int count_z) {
    if (mode == 1 || mode == 3) return write_mesh_weighting(session, mode);
    if (mode != 2) return -1;
    std::vector<std::string> weights;
    int count = 0;
    if (parse_weight_list(&session.dialogue, weight_list, weights, count) < 0) return -1;
    weights.resize(static_cast<std::size_t>(count));
    try {
        LineWriter file(output_path);
        for_each_weighting_line(weights, count_x, count_y, count_z, WeightingRules{},
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
