// src/form/column_definitions.cpp - data file display and column names over the column boxes.
#include "form/column_definitions.h"

#include <algorithm>
#include <array>
#include <exception>
#include <fstream>
#include <string>

#include "data/location_file.h"
#include "form/field_validators.h"
#include "form/form_load.h"
#include "grids/grid_access.h"
#include "session.h"
#include "support/files.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

constexpr int kind_text = 0;
constexpr int kind_grid = 1;
constexpr int kind_database = 2;

/// Room of the name table: a name line with more fields keeps the first ones.
constexpr int name_capacity = 256;
/// The preview shows the head of a text file.
constexpr int preview_lines = 50;

/// A column box: its control, the index of the control, the slot it belongs to and its code.
struct ColumnBox {
    const char* name;
    int index;
    int slot;
    int code;  // 1 x, 2 y, 3 z, 4..6 value columns 0..2, 7 line, 8 extra value
};

constexpr ColumnBox column_boxes[] = {
    {"Text_UBC_locations_xpos", 0, 0, 1},    {"Text_UBC_locations_ypos", 0, 0, 2},
    {"Text_UBC_locations_zpos", 0, 0, 3},    {"Text_UBC_locations_magpos", 0, 0, 4},
    {"Text_UBC_locations_magpos", 1, 0, 5},  {"Text_UBC_locations_magpos", 2, 0, 6},
    {"Text_UBC_locations_lpos", no_index, 0, 7}, {"Text_UBC_locations_valpos", no_index, 0, 8},
    {"Text_UBC_locations_xpos", 1, 1, 1},    {"Text_UBC_locations_ypos", 1, 1, 2},
    {"Text_UBC_locations_zpos", 1, 1, 3},
};

const ColumnBox* find_box(std::string_view name, int index) {
    for (const ColumnBox& box : column_boxes)
        if (name == box.name && index == box.index) return &box;
    return nullptr;
}

const ColumnBox* find_box(int slot, int code) {
    for (const ColumnBox& box : column_boxes)
        if (box.slot == slot && box.code == code) return &box;
    return nullptr;
}

/// The definition's field behind a box code of a slot.
int& column_field(InversionDefinition& definition, int slot, int code) {
    const std::size_t s = static_cast<std::size_t>(slot);
    switch (code) {
        case 1: return definition.data_x_columns.at(s);
        case 2: return definition.data_y_columns.at(s);
        case 3: return definition.data_z_columns.at(s);
        case 4: case 5: case 6: return definition.data_value_columns.at(static_cast<std::size_t>(code - 4));
        case 7: return definition.line_column;
        case 8: return definition.extra_value_column;
        default: throw std::out_of_range("no column box of code " + std::to_string(code));
    }
}

/// A data file name as a path: relative names count from the working directory.
std::filesystem::path data_file_path(const Session& session, const std::string& name) {
    return resolve_path(session.working_directory, name);
}

bool is_existing_file(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

/// The head of a text file, lines joined by CR LF.
std::string preview_text(const std::filesystem::path& path) {
    if (const std::string reason = not_a_regular_file(path); !reason.empty()) return "This file " + reason + ".";
    std::ifstream in(path, std::ios::binary);
    std::string text, line;
    for (int n = 0; n < preview_lines && read_clean_line(in, line); ++n) {
        if (n > 0) text += "\r\n";
        text += line;
    }
    return text;
}

void set_topo_type(Session& session, int topo_type) {
    FormModel& form = session.form;
    const bool was_updating = form.updating_form;
    form.updating_form = true;
    form.set_checked("Check_topo_type", 0, topo_type == 0);
    form.set_checked("Check_topo_type", 1, topo_type != 0);
    form.updating_form = was_updating;
    session.definition.topo_type = topo_type;
}

void show_box_text(Session& session, const ColumnBox& box, std::string text) {
    FormModel& form = session.form;
    const bool was_updating = form.updating_form;
    form.updating_form = true;
    form.set_text(box.name, box.index, std::move(text));
    form.updating_form = was_updating;
}

/// Column box change: without names the box takes a number typed into it.
void store_typed_column(Session& session, const ColumnBox& box) {
    if (session.form.updating_form) return;
    if (session.definition.column_name_count.at(static_cast<std::size_t>(box.slot)) > 0) return;
    const std::string text = trim(session.form.text(box.name, box.index));
    int& field = column_field(session.definition, box.slot, box.code);
    if (text.empty()) field = 0;
    else if (is_numeric(text)) field = to_integer(parse_number_prefix(text));
}

/// Combo_names(slot) click: the row is the column (row 0, "N/A", none).
void pick_column_name(Session& session, int slot) {
    InversionDefinition& definition = session.definition;
    FormModel& form = session.form;
    if (definition.updating_clip || form.updating_form) return;
    const int row = form.list_index("Combo_names", slot);
    if (row < 0) return;
    form.set_visible("Combo_names", slot, false);
    const ColumnBox* box = find_box(definition.picked_slot, definition.picked_column);
    if (!box || definition.picked_slot != slot) return;
    int& field = column_field(definition, box->slot, box->code);
    if (field == row) return;
    field = row;
    show_box_text(session, *box, form.control("Combo_names", slot).rows.at(static_cast<std::size_t>(row)).text);
}

/// Text_data_locations change: an emptied box means no file.
void clear_data_file(Session& session, int slot) {
    if (session.form.updating_form || slot < 0 || slot > 5) return;
    if (!trim(session.form.text("Text_data_locations", slot)).empty()) return;
    session.definition.data_file_names.at(static_cast<std::size_t>(slot)).clear();
    display_data_file(session, slot);
    if (slot == 1) set_topo_type(session, 1);
}

}  // namespace

void display_data_file(Session& session, int slot) {
    FormModel& form = session.form;
    InversionDefinition& definition = session.definition;
    const std::size_t s = static_cast<std::size_t>(slot);
    if (slot <= 1) {
        form.set_text("Text_data_file", slot, "");
        definition.column_name_count.at(s) = 0;
    }
    if (slot >= 1) form.set_caption("Picture_mag", slot, "");

    const std::string& name = definition.data_file_names.at(s);
    const std::filesystem::path path = data_file_path(session, name);
    const bool exists = !trim(name).empty() && is_existing_file(path);
    const bool grid = exists && slot >= 1 && is_grid_file(path.string());
    // The topography's points picture has nothing to show for a grid: the grid's own picture shows it.
    if (slot == 1) form.set_visible("Picture_topo_points", !grid);
    if (!exists) {
        definition.data_file_kinds.at(s) = kind_text;
        // Only an empty name means "no topography". A named file that has gone missing keeps the
        // data file on, so that the checks ask for it and say so, rather than quietly inverting
        // without the surface.
        if (slot == 1 && trim(name).empty()) set_topo_type(session, 1);
        return;
    }

    const bool has_image_frame = form.has_control("Frame_data_file_image", slot);
    if (grid) {
        definition.data_file_kinds.at(s) = kind_grid;
        if (has_image_frame) {
            const Control& frame = form.control("Frame_data_file_definitions", slot);
            form.move_to("Frame_data_file_image", slot, frame.left, frame.top);
            form.set_visible("Frame_data_file_image", slot, true);
            form.set_visible("Frame_data_file_definitions", slot, false);
            form.set_caption("Picture_mag", slot, file_name_only(name));
        }
    } else if (slot <= 1) {
        definition.data_file_kinds.at(s) = to_upper(file_extension(name)) == "GDB" ? kind_database : kind_text;
        if (has_image_frame) form.set_visible("Frame_data_file_image", slot, false);
        form.set_visible("Frame_data_file_definitions", slot, true);
        if (definition.data_file_kinds.at(s) == kind_text) {
            form.set_text("Text_data_file", slot, preview_text(path));
        } else {
            // Only the vendor's libraries read a database: no channels to offer.
            form.clear_rows("Combo_names", slot);
            form.set_text("Text_data_file", slot, "Geosoft database: " + file_name_only(name));
        }
    } else {
        definition.data_file_kinds.at(s) = kind_text;
    }

    if (slot == 1) set_topo_type(session, 0);
    const bool was_updating = form.updating_form;
    form.updating_form = true;
    form.set_text("Text_data_locations", slot, file_name_only(name));
    form.updating_form = was_updating;
}

int detect_line_mode(std::istream& in) {
    std::array<char, 512> head{};
    in.clear();
    in.seekg(0);
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    const std::streamsize read = in.gcount();
    int mode = 1;
    for (std::streamsize k = 0; k < read; ++k) {
        const unsigned char byte = static_cast<unsigned char>(head[static_cast<std::size_t>(k)]);
        if (k == 0 && byte == 239) break;  // a byte order mark: the clean reader drops it
        if (byte == 13) {
            mode = 0;
            break;
        }
    }
    in.clear();
    in.seekg(0);
    return mode;
}

void load_location_column_names(Session& session, int slot) {
    InversionDefinition& definition = session.definition;
    const std::size_t s = static_cast<std::size_t>(slot);
    try {
        const int name_line = definition.data_name_lines.at(s);
        if (name_line <= 0 && definition.data_file_kinds.at(s) != kind_text) return;
        definition.column_name_count.at(s) = 0;
        if (name_line <= 0) return;

        // A pipe or a device would be read forever; the data reader tells what it is.
        const auto path = data_file_path(session, definition.data_file_names.at(s));
        if (!not_a_regular_file(path).empty()) return;
        std::ifstream in(path, std::ios::binary);
        if (!in) return;
        const int mode = detect_line_mode(in);
        std::string line;
        for (int n = 1; n <= name_line; ++n) {
            const bool read = mode == 0 ? read_line(in, line) : read_clean_line(in, line);
            if (!read) return;
        }
        if (!line.empty() && (line[0] == '#' || line[0] == '\\' || line[0] == '/')) line[0] = ' ';
        definition.column_names = split_fields(line, name_capacity);
        definition.column_name_count.at(s) = static_cast<int>(definition.column_names.size());

        FormModel& form = session.form;
        form.clear_rows("Combo_names", slot);
        form.add_row("Combo_names", slot, "N/A");
        for (const std::string& column_name : definition.column_names) form.add_row("Combo_names", slot, column_name);
        form.set_visible("Combo_names", slot, false);
    } catch (const std::exception&) {
        // Names are a convenience: without them the boxes take column numbers.
        definition.column_name_count.at(s) = 0;
    }
}

void display_location_column_definitions(Session& session, int slot) {
    if (slot < 0 || slot > 1) return;
    InversionDefinition& definition = session.definition;
    const std::size_t s = static_cast<std::size_t>(slot);
    if (definition.column_name_count[s] == 0 && definition.data_file_kinds[s] == kind_text)
        load_location_column_names(session, slot);

    const int name_count = definition.column_name_count[s];
    const Control& names = session.form.control("Combo_names", slot);
    for (const ColumnBox& box : column_boxes) {
        if (box.slot != slot) continue;
        const int column = column_field(definition, slot, box.code);
        std::string text;
        if (name_count > 0) {
            if (column >= 1 && column <= name_count && column < static_cast<int>(names.rows.size()))
                text = names.rows[static_cast<std::size_t>(column)].text;
        } else if (box.code <= 2 || column > 0) {
            text = format_picture(column, "0");
        }
        show_box_text(session, box, std::move(text));
    }
}

void click_column_box(Session& session, std::string_view name, int index) {
    const ColumnBox* box = find_box(name, index);
    if (!box) return;
    InversionDefinition& definition = session.definition;
    if (definition.column_name_count.at(static_cast<std::size_t>(box->slot)) <= 0) return;
    FormModel& form = session.form;
    const Control& target = form.control(box->name, box->index);
    form.move_to("Combo_names", box->slot, target.left, target.top);
    const int column = column_field(definition, box->slot, box->code);
    definition.updating_clip = true;
    form.set_list_index("Combo_names", box->slot,
                        column >= 1 && column < form.row_count("Combo_names", box->slot) ? column : 0);
    definition.updating_clip = false;
    form.set_visible("Combo_names", box->slot, true);
    definition.picked_column = box->code;
    definition.picked_slot = box->slot;
}

void leave_column_definition_box(Session& session, std::string_view name, int slot) {
    if (slot < 0 || slot > 1) return;
    const std::size_t s = static_cast<std::size_t>(slot);
    InversionDefinition& definition = session.definition;
    int* field = nullptr;
    if (name == "Text_UBC_locations_nhead") field = &definition.data_first_lines[s];
    else if (name == "Text_UBC_locations_nstep") field = &definition.data_read_steps[s];
    else if (name == "Text_UBC_locations_name_line") field = &definition.data_name_lines[s];
    else return;

    FormModel& form = session.form;
    const std::string& text = form.text(name, slot);
    if (!is_numeric(text)) {
        const bool was_updating = form.updating_form;
        form.updating_form = true;
        form.set_text(name, slot, format_picture(*field, "0"));
        form.updating_form = was_updating;
        session.dialogue.beep();
        return;
    }
    *field = to_integer(parse_number_prefix(text));
    if (name == "Text_UBC_locations_name_line") {
        load_location_column_names(session, slot);
        display_location_column_definitions(session, slot);
    }
}

void register_column_behaviour(Session& session) {
    FormModel& form = session.form;
    Session* s = &session;
    // One handler per control name serves all its indices: the index finds the box.
    for (const char* name : {"Text_UBC_locations_xpos", "Text_UBC_locations_ypos", "Text_UBC_locations_zpos",
                             "Text_UBC_locations_magpos", "Text_UBC_locations_lpos", "Text_UBC_locations_valpos"}) {
        const std::string control(name);
        form.on_change(name, [s, control](int index) {
            if (const ColumnBox* box = find_box(control, index)) store_typed_column(*s, *box);
        });
    }
    form.on_change("Combo_names", [s](int slot) { pick_column_name(*s, slot); });
    form.on_change("Text_data_locations", [s](int slot) { clear_data_file(*s, slot); });
    form.on_change("Command_select_data_location_file",
                   [s](int slot) { choose_file_for_box(*s, "Text_data_locations", slot); });
}

}  // namespace invsetup
