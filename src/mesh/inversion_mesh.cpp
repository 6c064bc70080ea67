// src/mesh/inversion_mesh.cpp - building the tensor mesh of a run.
#include "mesh/inversion_mesh.h"

#include <cmath>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "grids/interval_search.h"
#include "mesh/mesh_definition.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "support/numbers.h"
#include "support/memory.h"
#include "support/text.h"

namespace invsetup {

void InversionMesh::size_arrays() {
    // Asked before anything is taken: a mistyped limit can ask for more memory than the machine has.
    require_mesh_memory("mesh", static_cast<double>(nx) * ny * nz);
    dx.assign(nx);
    dy.assign(ny);
    dz.assign(nz);
    x_nodes.assign(nx + 1);
    y_nodes.assign(ny + 1);
    z_nodes.assign(nz + 1);
    z_nodes_up.assign(nz + 1);
    x_centres.assign(nx);
    y_centres.assign(ny);
    z_centres.assign(nz);
    cell_state.assign(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny) * static_cast<std::size_t>(nz), 0.0f);
}

float& InversionMesh::cell_state_at(int i, int j, int k) {
    if (i < 1 || i > nx || j < 1 || j > ny || k < 1 || k > nz)
        throw std::out_of_range("cell (" + std::to_string(i) + ", " + std::to_string(j) + ", " + std::to_string(k) +
                                ") outside the mesh");
    const std::size_t index = (static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(nx) + static_cast<std::size_t>(i - 1)) *
                                  static_cast<std::size_t>(nz) +
                              static_cast<std::size_t>(k - 1);
    return cell_state[index];
}

double level_tolerance(const InversionMesh& mesh) {
    double thinnest = 0;
    for (int k = 1; k <= mesh.nz; ++k)
        if (thinnest == 0 || mesh.dz[k] < thinnest) thinnest = mesh.dz[k];
    return thinnest * 1e-4;
}

void lay_nodes(InversionMesh& mesh) {
    for (int i = 1; i <= mesh.nx; ++i) {
        mesh.x_nodes[i + 1] = mesh.x_nodes[i] + mesh.dx[i];
        mesh.x_centres[i] = (mesh.x_nodes[i] + mesh.x_nodes[i + 1]) / 2;
    }
    for (int i = 1; i <= mesh.ny; ++i) {
        mesh.y_nodes[i + 1] = mesh.y_nodes[i] + mesh.dy[i];
        mesh.y_centres[i] = (mesh.y_nodes[i] + mesh.y_nodes[i + 1]) / 2;
    }
    for (int i = 1; i <= mesh.nz; ++i) {
        mesh.z_nodes[i + 1] = mesh.z_nodes[i] - mesh.dz[i];
        mesh.z_centres[i] = (mesh.z_nodes[i] + mesh.z_nodes[i + 1]) / 2;
    }
    for (int i = 1; i <= mesh.nz + 1; ++i) mesh.z_nodes_up[mesh.nz + 2 - i] = mesh.z_nodes[i];
}

namespace {

/// One padding list as numbers. A list that fails to parse leaves no padding on its axis.
void decode_padding_list(Session& session, const std::string& text, int& count, std::vector<std::string>& items,
                         std::array<float, max_padding_items + 1>& multipliers, float& sum) {
    // The definition checks have told of a bad list; here it only leaves its axis without padding.
    const int status = parse_number_list(session.dialogue, true, text, count, items);
    if (status != 0 || count <= 0) {
        count = 0;
        sum = 0;
        return;
    }
    sum = 0;
    for (int i = 1; i <= count; ++i) {
        // The list has room for 16 items; a longer one is a fault for the trap.
        multipliers.at(static_cast<std::size_t>(i)) = static_cast<float>(parse_number_prefix(items.at(static_cast<std::size_t>(i - 1))));
        sum += multipliers[static_cast<std::size_t>(i)];
    }
}

void build_normal_mesh(Session& session, InversionMesh& mesh) {
    InversionDefinition& definition = session.definition;
    MeshLimits limits = mesh_limits(definition);
    MeshPadding& padding = session.padding;

    mesh.mesh_x_min = limits.min_val[0];
    mesh.mesh_x_max = limits.max_val[0];
    mesh.nx = limits.num_cells[0];
    mesh.core_x_first = 1;
    mesh.core_x_last = mesh.nx + 1;
    mesh.mesh_y_min = limits.min_val[1];
    mesh.mesh_y_max = limits.max_val[1];
    mesh.ny = limits.num_cells[1];
    mesh.core_y_first = 1;
    mesh.core_y_last = mesh.ny + 1;
    mesh.mesh_z_top = limits.max_val[2];
    mesh.mesh_z_bottom = limits.min_val[3];
    mesh.nz = limits.num_cells[2] + limits.num_cells[3];
    mesh.core_z_first = 1;
    mesh.core_z_last = mesh.nz + 1;

    const bool padded = definition.add_mesh_padding == 1;
    if (padded) {
        decode_padding_list(session, definition.padding_multipliers[0], padding.num_padding_xy, padding.padding_xy_texts,
                            padding.padding_xy, padding.padding_xy_sum);
        mesh.mesh_x_min -= padding.padding_xy_sum * limits.cell_size[0];
        mesh.mesh_x_max += padding.padding_xy_sum * limits.cell_size[0];
        mesh.nx += 2 * padding.num_padding_xy;
        mesh.core_x_first = padding.num_padding_xy + 1;
        mesh.core_x_last = mesh.nx + 1 - padding.num_padding_xy;
        mesh.mesh_y_min -= padding.padding_xy_sum * limits.cell_size[1];
        mesh.mesh_y_max += padding.padding_xy_sum * limits.cell_size[1];
        mesh.ny += 2 * padding.num_padding_xy;
        mesh.core_y_first = padding.num_padding_xy + 1;
        mesh.core_y_last = mesh.ny + 1 - padding.num_padding_xy;

        decode_padding_list(session, definition.padding_multipliers[1], padding.num_padding_z, padding.padding_z_texts,
                            padding.padding_z, padding.padding_z_sum);
        // A non-uniform part takes the place of the padding below the mesh.
        if (limits.num_cells[3] == 0) {
            mesh.mesh_z_bottom -= padding.padding_z_sum * limits.cell_size[2];
            mesh.nz += padding.num_padding_z;
            mesh.core_z_last = mesh.nz + 1 - padding.num_padding_z;
        }
    }

    mesh.size_arrays();
    for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = limits.cell_size[0];
    for (int i = 1; i <= mesh.ny; ++i) mesh.dy[i] = limits.cell_size[1];
    for (int i = 1; i <= mesh.nz; ++i) mesh.dz[i] = limits.cell_size[2];

    // The first non-uniform cell keeps the core's width; growth starts at the second.
    if (limits.cell_size[3] > 1 && limits.num_cells[3] > 0)
        for (int i = limits.num_cells[2] + 2; i <= mesh.nz; ++i) mesh.dz[i] = mesh.dz[i - 1] * limits.cell_size[3];

    if (padded) {
        // The first list item lies next to the core, the last on the outside.
        const int n_xy = padding.num_padding_xy;
        for (int i = 1; i <= n_xy; ++i) {
            const double p = padding.padding_xy.at(static_cast<std::size_t>(n_xy + 1 - i));
            mesh.dx[i] = mesh.dx[mesh.nx + 1 - i] = p * limits.cell_size[0];
            mesh.dy[i] = mesh.dy[mesh.ny + 1 - i] = p * limits.cell_size[1];
        }
        if (limits.num_cells[3] == 0) {
            const int n_z = padding.num_padding_z;
            const double last_width = mesh.dz[limits.num_cells[2] + limits.num_cells[3]];
            for (int i = 1; i <= n_z; ++i)
                mesh.dz[mesh.nz + 1 - i] = padding.padding_z.at(static_cast<std::size_t>(n_z + 1 - i)) * last_width;
        }
    }

    mesh.x_nodes[1] = mesh.mesh_x_min;
    mesh.y_nodes[1] = mesh.mesh_y_min;
    mesh.z_nodes[1] = mesh.mesh_z_top;
    lay_nodes(mesh);
}

bool outside(double value, double low, double high) { return value < low || value > high; }

/// Refinement mode: checks and snaps the limits against the loaded mesh and builds the mesh that keeps
/// the loaded cells outside them. Returns -1 after a message when a limit is outside the loaded core.
int build_refined_mesh(Session& session, InversionMesh& mesh, const MeshSteps& steps) {
    InversionDefinition& definition = session.definition;
    MeshLimits limits = mesh_limits(definition);
    const LoadedMesh& loaded = session.loaded_mesh;
    Dialogue& dialogue = session.dialogue;

    const double core_west = loaded.x_nodes[loaded.pad_x_low + 1];
    const double core_east = loaded.x_nodes[loaded.nx + 1 - loaded.pad_x_high];
    const double core_south = loaded.y_nodes[loaded.pad_y_low + 1];
    const double core_north = loaded.y_nodes[loaded.ny + 1 - loaded.pad_y_high];
    const double core_bottom = loaded.z_nodes[loaded.nz + 1 - loaded.pad_z_high];
    const std::string outside_core = " limit of the refined area is outside the core mesh region of the original model";
    if (outside(limits.min_val[0], core_west, core_east)) {
        dialogue.message_box("The minimum x" + outside_core);
        return -1;
    }
    if (outside(limits.max_val[0], core_west, core_east)) {
        dialogue.message_box("The maximum x" + outside_core);
        return -1;
    }
    if (outside(limits.min_val[1], core_south, core_north)) {
        dialogue.message_box("The minimum y" + outside_core);
        return -1;
    }
    if (outside(limits.max_val[1], core_south, core_north)) {
        dialogue.message_box("The maximum y" + outside_core);
        return -1;
    }
    if (std::abs(limits.max_val[2] - loaded.z_nodes[1]) > 0.1) {
        dialogue.message_box("The top z limit of the refined volume has to be the same as the top node in the original model: " +
                             format_picture(loaded.z_nodes[1], "0.0"));
        return -1;
    }
    if (limits.min_val[2] >= loaded.z_nodes[1] || limits.min_val[2] < core_bottom) {
        dialogue.message_box("The minimum z" + outside_core);
        return -1;
    }

    // The refined limits move to the loaded nodes at or below them.
    const int loaded_x_count = loaded.nx + 1;
    const int loaded_y_count = loaded.ny + 1;
    mesh.core_x_first = interval_search(loaded.x_nodes, loaded_x_count, limits.min_val[0]);
    limits.min_val[0] = loaded.x_nodes[mesh.core_x_first];
    mesh.core_x_last = interval_search(loaded.x_nodes, loaded_x_count, limits.max_val[0]);
    limits.max_val[0] = loaded.x_nodes[mesh.core_x_last];
    limits.num_cells[0] = to_integer((limits.max_val[0] - limits.min_val[0]) / limits.cell_size[0]);
    mesh.core_y_first = interval_search(loaded.y_nodes, loaded_y_count, limits.min_val[1]);
    limits.min_val[1] = loaded.y_nodes[mesh.core_y_first];
    mesh.core_y_last = interval_search(loaded.y_nodes, loaded_y_count, limits.max_val[1]);
    limits.max_val[1] = loaded.y_nodes[mesh.core_y_last];
    limits.num_cells[1] = to_integer((limits.max_val[1] - limits.min_val[1]) / limits.cell_size[1]);

    // The bottom snaps from below to the first loaded node within 1.0 of the limit or above it.
    mesh.core_z_first = 1;
    limits.max_val[2] = loaded.z_nodes[1];
    mesh.core_z_last = loaded.nz + 1 - loaded.pad_z_high;
    while (loaded.z_nodes[mesh.core_z_last] + 1.0 < limits.min_val[2]) --mesh.core_z_last;
    limits.min_val[2] = loaded.z_nodes[mesh.core_z_last];

    if (limits.min_val[2] - definition.tile_z_blend * limits.cell_size[2] < core_bottom)
        dialogue.message_box("The lower z limit of the z-blend interval is below the core mesh region of the original model");

    limits.num_cells[2] = to_integer((limits.max_val[2] - limits.min_val[2]) / limits.cell_size[2]);
    limits.num_cells[3] = 0;
    limits.min_val[3] = limits.min_val[2];
    for (int row = 0; row <= 2; ++row)
        limits.num_cells[row] = to_integer((limits.max_val[row] - limits.min_val[row]) / limits.cell_size[row]);
    if (steps.refined_limits) steps.refined_limits(limits);

    // The loaded cells outside the limits stay as they are.
    mesh.nx = limits.num_cells[0] + mesh.core_x_first - 1 + loaded.nx + 1 - mesh.core_x_last;
    mesh.ny = limits.num_cells[1] + mesh.core_y_first - 1 + loaded.ny + 1 - mesh.core_y_last;
    mesh.nz = limits.num_cells[2] + loaded.nz + 1 - mesh.core_z_last;
    mesh.size_arrays();

    auto keep_outer_cells = [](const Array1<double>& loaded_widths, int loaded_count, int core_first, int core_last,
                               double fine_width, Array1<double>& widths, int count, int& fine_first, int& fine_last) {
        for (int i = 1; i <= count; ++i) widths[i] = fine_width;
        for (int i = 1; i <= core_first - 1; ++i) widths[i] = loaded_widths[i];
        fine_first = core_first;
        int j = count;
        for (int i = loaded_count; i >= core_last; --i, --j) widths[j] = loaded_widths[i];
        fine_last = j;
    };
    keep_outer_cells(loaded.dx, loaded.nx, mesh.core_x_first, mesh.core_x_last, limits.cell_size[0], mesh.dx, mesh.nx,
                     mesh.fine_x_first, mesh.fine_x_last);
    keep_outer_cells(loaded.dy, loaded.ny, mesh.core_y_first, mesh.core_y_last, limits.cell_size[1], mesh.dy, mesh.ny,
                     mesh.fine_y_first, mesh.fine_y_last);
    for (int i = 1; i <= limits.num_cells[2]; ++i) mesh.dz[i] = limits.cell_size[2];
    for (int i = loaded.nz, j = mesh.nz; i >= mesh.core_z_last; --i, --j) mesh.dz[j] = loaded.dz[i];

    mesh.x_nodes[1] = limits.min_val[0];
    for (int i = mesh.core_x_first - 1; i >= 1; --i) mesh.x_nodes[1] -= mesh.dx[i];
    mesh.y_nodes[1] = limits.min_val[1];
    for (int i = mesh.core_y_first - 1; i >= 1; --i) mesh.y_nodes[1] -= mesh.dy[i];
    mesh.z_nodes[1] = loaded.z_nodes[1];
    lay_nodes(mesh);

    // The upper limits are the lower node of the last fine cell, one cell short of the fine region:
    // the tile layout counts on that.
    mesh.mesh_x_min = mesh.x_nodes[mesh.fine_x_first];
    mesh.mesh_x_max = mesh.x_nodes[mesh.fine_x_last];
    mesh.mesh_y_min = mesh.y_nodes[mesh.fine_y_first];
    mesh.mesh_y_max = mesh.y_nodes[mesh.fine_y_last];
    mesh.mesh_z_top = mesh.z_nodes[1];
    mesh.mesh_z_bottom = mesh.z_nodes[mesh.nz + 1];
    return 0;
}

}  // namespace

int build_inversion_mesh(Session& session, const MeshSteps& steps) {
    // A refined mesh whose tiles can't be laid out gives way to the mesh held before it.
    std::optional<InversionMesh> previous;
    try {
        InversionDefinition& definition = session.definition;
        MeshLimits limits = mesh_limits(definition);
        if (limits.num_cells[0] <= 0 || limits.num_cells[1] <= 0 || limits.num_cells[2] <= 0) return -1;

        // The in-house method's mesh top is at elevation 0.
        if (definition.inversion_method == method_zarninv3d) {
            limits.min_val[2] -= limits.max_val[2];
            limits.min_val[3] -= limits.max_val[2];
            limits.max_val[2] = 0;
        }

        InversionMesh mesh;
        if (definition.refinement_mode == 0) {
            build_normal_mesh(session, mesh);
            session.mesh = std::move(mesh);
            return 0;
        }

        if (build_refined_mesh(session, mesh, steps) != 0) return -1;
        previous.emplace(std::exchange(session.mesh, std::move(mesh)));
        int x_cells_per_tile = 0;
        int y_cells_per_tile = 0;
        determine_number_of_tiles(session, x_cells_per_tile, y_cells_per_tile);
        if (steps.tile_counts) steps.tile_counts();
        const LoadedMesh& loaded = session.loaded_mesh;
        lay_out_tiles(session.mesh, LoadedNodes{loaded.x_nodes, loaded.nx, loaded.y_nodes, loaded.ny}, definition,
                      session.tiles);
        return 0;
    } catch (const std::exception& fault) {
        if (previous) session.mesh = std::move(*previous);
        session.dialogue.message_box("An error occurred while determining the inversion mesh: " + std::string(fault.what()));
        return -1;
    }
}

}  // namespace invsetup
