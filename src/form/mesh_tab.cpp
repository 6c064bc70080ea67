// src/form/mesh_tab.cpp - the Mesh tab: limits, padding, cell counts and their handlers.
#include "form/mesh_tab.h"

#include <cmath>
#include <exception>
#include <string>

#include "grids/interval_search.h"
#include "mesh/inversion_mesh.h"
#include "mesh/mesh_definition.h"
#include "mesh/tile_layout.h"
#include "session.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

int decode_padding_cells(Session& session) {
    InversionDefinition& definition = session.definition;
    if (definition.add_mesh_padding == 1) {
        definition.padding_multipliers[0] = session.form.text("Text_padding_multipliers", 0);
        definition.padding_multipliers[1] = session.form.text("Text_padding_multipliers", 1);
    }
    return decode_padding(session);
}

int calculate_cell_counts(Session& session, int n_x, int n_y, int n_z, int n_nonuniform) {
    const int status = decode_padding_cells(session);
    count_padded_cells(session.padding, n_x, n_y, n_z, n_nonuniform);
    return status;
}

void display_cell_counts(Session& session, int n_x, int n_y, int n_z, int n_nonuniform) {
    if (calculate_cell_counts(session, n_x, n_y, n_z, n_nonuniform) != 0) return;
    const MeshPadding& padding = session.padding;
    FormModel& form = session.form;
    FormUpdate guard(form);
    const double x = padding.total_x_cells;
    const double y = padding.total_y_cells;
    const double z = padding.total_z_cells;
    form.set_text("Text_num_cells", 5, general_number_text(x));
    form.set_text("Text_num_cells", 6, general_number_text(y));
    form.set_text("Text_num_cells", 7, general_number_text(z));
    form.set_text("Text_num_cells", 8, general_number_text(x * y * z));
    form.set_text("Text_num_x_cells", general_number_text(x));
    form.set_text("Text_num_y_cells", general_number_text(y));
    form.set_text("Text_num_z_cells", general_number_text(z));
}

namespace {

const char* const row_letters[] = {"X", "Y", "Z"};

double number_of(const FormModel& form, std::string_view name, int index = no_index) {
    return parse_number_prefix(form.text(name, index));
}

bool is_blank(const std::string& text) { return trim(text).empty(); }

/// The checks of one row of limits. Returns false after the row's message.
bool check_row(Session& session, int row) {
    const FormModel& form = session.form;
    const std::string letter = row_letters[row];
    std::string failure;
    if (!is_numeric(form.text("Text_min_val", row)))
        failure = "The minimum " + letter + " value is not valid";
    else if (!is_numeric(form.text("Text_max_val", row)))
        failure = "The maximum " + letter + " value is not valid";
    else if (number_of(form, "Text_max_val", row) <= number_of(form, "Text_min_val", row))
        failure = "The minimum " + letter + " value must be less than the maximum value";
    else if (!is_numeric(form.text("Text_cell_size", row)))
        failure = "The " + letter + " cell size is not valid";
    else if (number_of(form, "Text_cell_size", row) <= 0)
        failure = "The " + letter + " cell size must be positive";
    if (failure.empty()) return true;
    session.dialogue.message_box(failure);
    return false;
}

bool check_nonuniform_part(Session& session) {
    const FormModel& form = session.form;
    std::string failure;
    if (!is_numeric(form.text("Text_num_cells", 3)))
        failure = "The number of non-uniform z cells is not valid";
    else if (number_of(form, "Text_num_cells", 3) < 0)
        failure = "The number of non-uniform z cells cannot be negative";
    else if (!is_numeric(form.text("Text_cell_size", 3)))
        failure = "The non-uniform z cell multiplier is not valid";
    else if (number_of(form, "Text_cell_size", 3) < 1)
        failure = "The non-uniform z cell multiplier cannot be less than 1";
    if (failure.empty()) return true;
    session.dialogue.message_box(failure);
    return false;
}

/// The tile fields of refinement mode. Returns false after a message, or silently when the number
/// of X or Y tiles is empty.
bool check_tile_fields(Session& session) {
    const FormModel& form = session.form;
    auto fail = [&session](const std::string& message) {
        session.dialogue.message_box(message);
        return false;
    };
    if (!is_numeric(form.text("Text_x_tile_size"))) return fail("The X tile size is not valid");
    if (!is_numeric(form.text("Text_y_tile_size"))) return fail("The Y tile size is not valid");
    for (const char* axis : {"X", "Y"}) {
        const std::string name = std::string("Text_number_") + (axis[0] == 'X' ? "x" : "y") + "_tiles";
        const std::string& text = form.text(name);
        if (text.empty()) return false;
        if (!is_numeric(text)) return fail(std::string("The number of ") + axis + " tiles is not valid");
        if (parse_number_prefix(text) < 0) return fail(std::string("The number of ") + axis + " tiles must be positive");
    }
    if (!is_numeric(form.text("Text_tile_overlap"))) return fail("The number of overlap cells is not valid");
    const double overlap = number_of(form, "Text_tile_overlap");
    if (overlap < 0) return fail("The number of overlap cells must be positive");
    if (!is_numeric(form.text("Text_blend_overlap"))) return fail("The blend overlap is not valid");
    const double blend = number_of(form, "Text_blend_overlap");
    if (blend < 0) return fail("The number of blend cells must be positive");
    if (overlap < blend) return fail("The number of x/y blend cells must be less than the number of x/y overlap cells");
    if (!is_numeric(form.text("Text_z_blend"))) return fail("The z blend overlap is not valid");
    const double z_blend = number_of(form, "Text_z_blend");
    if (z_blend < 0) return fail("The number of z blend cells must be positive");
    if (overlap < z_blend) return fail("The number of z blend cells must be less than the number of x/y overlap cells");
    return true;
}

int integer_of(const FormModel& form, std::string_view name, int index = no_index) {
    return to_integer(number_of(form, name, index));
}

/// A limit moved onto the computed mesh's nodes: the last node not above it, held inside the nodes.
double snap_to_node(const Array1<double>& nodes, int count, double value) {
    if (value < nodes[1]) return nodes[1];
    if (value > nodes[count]) return nodes[count];
    return nodes[interval_search(nodes, count, value)];
}

int unload_mesh(Session& session, int row, int anchor) {
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    MeshLimits limits = mesh_limits(definition);
    FormUpdate guard(form);

    for (int i = 5; i <= 8; ++i) form.set_text("Text_num_cells", i, "");
    form.set_text("Text_num_x_cells", "");
    form.set_text("Text_num_y_cells", "");
    form.set_text("Text_num_z_cells", "");
    const int first = row < 0 ? 0 : row;
    const int last = row < 0 ? 2 : row;

    for (int r = first; r <= last; ++r)
        if (!check_row(session, r)) return -1;
    if (last == 2 && !is_blank(form.text("Text_num_cells", 3)) && !check_nonuniform_part(session)) return -1;
    if (definition.refinement_mode == 0) {
        if (decode_padding_cells(session) < 0) {
            session.dialogue.message_box("There is a problem with the padding cell definitions");
            return -1;
        }
    } else if (!check_tile_fields(session)) {
        return -1;
    }

    // A count the user typed counts as typed when the operation began: the first pass overwrites
    // the box before the second pass looks at it.
    std::array<double, 3> typed_counts{};
    std::array<int, 3> recorded_counts{};
    for (int r = first; r <= last; ++r) {
        typed_counts[static_cast<std::size_t>(r)] = number_of(form, "Text_num_cells", r);
        recorded_counts[static_cast<std::size_t>(r)] = limits.num_cells[r];
    }

    // First pass: each limit moves to a whole number of cells.
    for (int r = first; r <= last; ++r) {
        limits.min_val[r] = number_of(form, "Text_min_val", r);
        limits.max_val[r] = number_of(form, "Text_max_val", r);
        limits.cell_size[r] = number_of(form, "Text_cell_size", r);
        limits.num_cells[r] = to_integer((limits.max_val[r] - limits.min_val[r]) / limits.cell_size[r]);
        if (anchor == 1)
            limits.min_val[r] = limits.max_val[r] - limits.num_cells[r] * limits.cell_size[r];
        else
            limits.max_val[r] = limits.min_val[r] + limits.num_cells[r] * limits.cell_size[r];
        form.set_text("Text_num_cells", r, general_number_text(static_cast<double>(limits.num_cells[r])));
        form.set_text("Text_max_val", r, general_number_text(limits.max_val[r]));
    }
    for (int r = 0; r <= 2; ++r) form.set_text("Text_max_val", r + 3, general_number_text(limits.max_val[r] - limits.min_val[r]));

    if (session.mesh.nx == 0 || session.mesh.ny == 0 || definition.refinement_mode == 1) {
        definition.x_tile_size = integer_of(form, "Text_x_tile_size");
        definition.y_tile_size = integer_of(form, "Text_y_tile_size");
        definition.tile_overlap = integer_of(form, "Text_tile_overlap");
        definition.tile_xy_blend = integer_of(form, "Text_blend_overlap");
        definition.tile_z_blend = integer_of(form, "Text_z_blend");
        if (determine_inversion_mesh(session) < 0) return -1;
    }

    // Second pass, from the controls again.
    for (int r = first; r <= last; ++r) {
        limits.min_val[r] = number_of(form, "Text_min_val", r);
        limits.max_val[r] = number_of(form, "Text_max_val", r);
        limits.cell_size[r] = number_of(form, "Text_cell_size", r);
        if (definition.refinement_mode == 1 && r <= 1) {
            const Array1<double>& nodes = r == 0 ? session.mesh.x_nodes : session.mesh.y_nodes;
            const int count = (r == 0 ? session.mesh.nx : session.mesh.ny) + 1;
            if (limits.min_val[r] > nodes[count]) {
                // Past the end the lower limit takes the last cell and the upper limit stays as typed.
                limits.min_val[r] = nodes[count - 1];
            } else {
                limits.min_val[r] = snap_to_node(nodes, count, limits.min_val[r]);
                limits.max_val[r] = snap_to_node(nodes, count, limits.max_val[r]);
            }
            limits.num_cells[r] = to_integer((limits.max_val[r] - limits.min_val[r]) / limits.cell_size[r]);
            limits.max_val[r] = limits.num_cells[r] * limits.cell_size[r] + limits.min_val[r];
            form.set_text("Text_min_val", r, general_number_text(limits.min_val[r]));
            form.set_text("Text_max_val", r, general_number_text(limits.max_val[r]));
            form.set_text("Text_num_cells", r, general_number_text(static_cast<double>(limits.num_cells[r])));
        }
        // A count the user typed (above 1) wins over the one the limits give.
        const double typed = typed_counts[static_cast<std::size_t>(r)];
        if (typed != recorded_counts[static_cast<std::size_t>(r)] && typed > 1)
            limits.num_cells[r] = to_integer(typed);
        else
            limits.num_cells[r] = to_integer((limits.max_val[r] - limits.min_val[r]) / limits.cell_size[r]);
        if (limits.num_cells[r] >= 1) {
            if (r <= 1) {
                limits.max_val[r] = limits.num_cells[r] * limits.cell_size[r] + limits.min_val[r];
                form.set_text("Text_max_val", r, general_number_text(limits.max_val[r]));
            } else {
                // The Z core hangs from its top.
                limits.min_val[r] = limits.max_val[r] - limits.num_cells[r] * limits.cell_size[r];
                form.set_text("Text_min_val", r, general_number_text(limits.min_val[r]));
            }
        }
        form.set_text("Text_num_cells", r, general_number_text(static_cast<double>(limits.num_cells[r])));
    }

    if (last == 2) {
        if (!is_blank(form.text("Text_num_cells", 3))) {
            limits.num_cells[3] = integer_of(form, "Text_num_cells", 3);
            limits.cell_size[3] = number_of(form, "Text_cell_size", 3);
            if (limits.num_cells[3] > 0) {
                if (limits.cell_size[3] == 1)
                    limits.min_val[3] = limits.min_val[2] - limits.num_cells[3] * limits.cell_size[2];
                else
                    limits.min_val[3] = limits.min_val[2] - (std::pow(limits.cell_size[3], limits.num_cells[3]) - 1) *
                                                                limits.cell_size[2] / (limits.cell_size[3] - 1);
            } else {
                limits.min_val[3] = limits.min_val[2];
            }
        } else {
            limits.num_cells[3] = 0;
            limits.cell_size[3] = 1.0;
            limits.min_val[3] = limits.min_val[2];
        }
        form.set_text("Text_num_cells", 4, general_number_text(static_cast<double>(limits.num_cells[2] + limits.num_cells[3])));
        form.set_text("Text_min_val", 3, format_picture(limits.min_val[3], "0.0"));
    }

    display_cell_counts(session, limits.num_cells[0], limits.num_cells[1], limits.num_cells[2], limits.num_cells[3]);

    if (definition.refinement_mode == 1) {
        definition.tile_overlap = integer_of(form, "Text_tile_overlap");
        int x_cells_per_tile = 0;
        int y_cells_per_tile = 0;
        determine_number_of_tiles(session, x_cells_per_tile, y_cells_per_tile);
        display_tile_counts(session);
    }

    if (definition.add_mesh_padding == 1) display_total_mesh(session, limits);
    return 0;
}

}  // namespace

void display_total_mesh(Session& session, const MeshLimits& limits) {
    FormModel& form = session.form;
    FormUpdate guard(form);
    MeshPadding& padding = session.padding;
    sum_padding(padding);
    const double pad_x = padding.padding_xy_sum * limits.cell_size[0];
    const double pad_y = padding.padding_xy_sum * limits.cell_size[1];
    form.set_text("Text_min_east", general_number_text(limits.min_val[0] - pad_x));
    form.set_text("Text_max_east", general_number_text(limits.max_val[0] + pad_x));
    form.set_text("Text_range_east", general_number_text(limits.max_val[0] - limits.min_val[0] + 2 * pad_x));
    form.set_text("Text_min_north", general_number_text(limits.min_val[1] - pad_y));
    form.set_text("Text_max_north", general_number_text(limits.max_val[1] + pad_y));
    form.set_text("Text_range_north", general_number_text(limits.max_val[1] - limits.min_val[1] + 2 * pad_y));
    form.set_text("Text_max_elev", form.text("Text_max_val", 2));
    // The unpadded mesh runs from the Z core's top to the bottom of the non-uniform part.
    const double top = limits.max_val[2];
    const double bottom = limits.min_val[3];
    if (limits.num_cells[3] == 0) {
        const double pad_z = padding.padding_z_sum * limits.cell_size[2];
        form.set_text("Text_min_elev", general_number_text(bottom - pad_z));
        form.set_text("Text_range_elev", general_number_text(pad_z + top - bottom));
    } else {
        form.set_text("Text_min_elev", general_number_text(bottom));
        form.set_text("Text_range_elev", general_number_text(top - bottom));
    }
}

void display_tile_counts(Session& session) {
    FormUpdate guard(session.form);
    session.form.set_text("Text_number_x_tiles", format_picture(session.definition.number_of_x_tiles, "0"));
    session.form.set_text("Text_number_y_tiles", format_picture(session.definition.number_of_y_tiles, "0"));
}

int determine_inversion_mesh(Session& session) {
    MeshSteps steps;
    steps.refined_limits = [&session](const MeshLimits& limits) {
        FormModel& form = session.form;
        FormUpdate guard(form);
        for (int row = 0; row <= 2; ++row) {
            form.set_text("Text_min_val", row, general_number_text(limits.min_val[row]));
            form.set_text("Text_max_val", row, general_number_text(limits.max_val[row]));
            form.set_text("Text_num_cells", row, std::to_string(limits.num_cells[row]));
        }
        form.set_text("Text_num_cells", 3, "0");
        form.set_text("Text_num_cells", 4, std::to_string(limits.num_cells[2]));
        form.set_text("Text_min_val", 3, format_picture(limits.min_val[3], "0.0"));
        display_cell_counts(session, limits.num_cells[0], limits.num_cells[1], limits.num_cells[2], limits.num_cells[3]);
        for (int row = 0; row <= 2; ++row)
            form.set_text("Text_max_val", row + 3, general_number_text(limits.max_val[row] - limits.min_val[row]));
    };
    steps.tile_counts = [&session] { display_tile_counts(session); };
    return build_inversion_mesh(session, steps);
}

int unload_mesh_from_form(Session& session, int row, int anchor) {
    try {
        return unload_mesh(session, row, anchor);
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while reading the mesh definition: " + std::string(fault.what()));
        return -1;
    }
}

void command_update(Session& session, int index) {
    if (index < 3) {
        unload_mesh_from_form(session, index, 0);
        return;
    }
    unload_mesh_from_form(session, -1, 0);
    determine_inversion_mesh(session);
}

namespace {

bool is_positive_number(const std::string& text) { return is_numeric(text) && parse_number_prefix(text) > 0; }

/// The silent tests of a row's text boxes before a handler unloads it.
bool row_is_valid(const FormModel& form, int row) {
    if (!is_numeric(form.text("Text_min_val", row)) || !is_numeric(form.text("Text_max_val", row))) return false;
    if (number_of(form, "Text_max_val", row) <= number_of(form, "Text_min_val", row)) return false;
    return is_positive_number(form.text("Text_cell_size", row));
}

bool nonuniform_is_valid(const FormModel& form) {
    if (!is_positive_number(form.text("Text_cell_size", 3))) return false;
    const std::string& count = form.text("Text_num_cells", 3);
    return is_numeric(count) && parse_number_prefix(count) >= 0;
}

/// Changes below 0.1 of the record's value are ignored by design.
bool is_unchanged(double typed, double recorded) { return std::fabs(typed - recorded) < 0.1; }

}  // namespace

void register_mesh_behaviour(Session& session) {
    FormModel& form = session.form;
    form.on_change("Text_min_val", [&session](int i) {
        FormModel& f = session.form;
        if (f.updating_form || i < 0 || i > 2 || !row_is_valid(f, i)) return;
        if (is_unchanged(number_of(f, "Text_min_val", i), session.definition.mesh_min[static_cast<std::size_t>(i)])) return;
        unload_mesh_from_form(session, i, -1);
    });
    form.on_change("Text_max_val", [&session](int i) {
        FormModel& f = session.form;
        if (f.updating_form || i < 0 || i > 2 || !row_is_valid(f, i)) return;
        if (is_unchanged(number_of(f, "Text_max_val", i), session.definition.mesh_max[static_cast<std::size_t>(i)])) return;
        unload_mesh_from_form(session, i, 1);
    });
    form.on_change("Text_cell_size", [&session](int i) {
        FormModel& f = session.form;
        if (f.updating_form || i < 0 || i > 3) return;
        const int row = i > 2 ? 2 : i;
        if (!row_is_valid(f, row)) return;
        if (row == 2 && !nonuniform_is_valid(f)) return;
        // The multiplier box compares with the multiplier, not the core's size.
        if (is_unchanged(number_of(f, "Text_cell_size", i), session.definition.mesh_cell_size[static_cast<std::size_t>(i)]))
            return;
        unload_mesh_from_form(session, row, 0);
    });
    form.on_change("Text_num_cells", [&session](int i) {
        FormModel& f = session.form;
        if (f.updating_form || i != 3 || !nonuniform_is_valid(f)) return;
        unload_mesh_from_form(session, 2, 0);
    });
    form.on_change("Command_update", [&session](int i) {
        if (i >= 0) command_update(session, i);
    });
}

}  // namespace invsetup
