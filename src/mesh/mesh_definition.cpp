// src/mesh/mesh_definition.cpp - the mesh limits, the padding lists and the cell counts in numbers.
#include "mesh/mesh_definition.h"

#include "session.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

MeshLimits mesh_limits(InversionFields& fields) {
    return MeshLimits{fields.mesh_min, fields.mesh_max, fields.mesh_cell_size, fields.mesh_cell_count};
}

int decode_padding(Session& session) {
    MeshPadding& padding = session.padding;
    InversionDefinition& definition = session.definition;
    padding.num_padding_xy = 0;
    padding.num_padding_z = 0;
    if (definition.add_mesh_padding != 1) return 0;
    parse_number_list(session.dialogue, true, definition.padding_multipliers[0], padding.num_padding_xy,
                      padding.padding_xy_texts);
    return parse_number_list(session.dialogue, true, definition.padding_multipliers[1], padding.num_padding_z,
                             padding.padding_z_texts);
}

void count_padded_cells(MeshPadding& padding, int n_x, int n_y, int n_z, int n_nonuniform) {
    padding.total_x_cells = 2 * padding.num_padding_xy + n_x;
    padding.total_y_cells = 2 * padding.num_padding_xy + n_y;
    // A non-uniform part takes the place of the padding below the mesh.
    padding.total_z_cells = n_z + n_nonuniform;
    if (n_nonuniform == 0) padding.total_z_cells += padding.num_padding_z;
}

namespace {

float padding_sum(const std::vector<std::string>& texts, int count) {
    float sum = 0;
    for (int i = 0; i < count && i < static_cast<int>(texts.size()); ++i)
        sum += static_cast<float>(parse_number_prefix(texts[static_cast<std::size_t>(i)]));
    return sum;
}

}  // namespace

void sum_padding(MeshPadding& padding) {
    padding.padding_xy_sum = padding_sum(padding.padding_xy_texts, padding.num_padding_xy);
    padding.padding_z_sum = padding_sum(padding.padding_z_texts, padding.num_padding_z);
}

}  // namespace invsetup
