// src/form/field_validators.h - text boxes that feed the definition, and the file boxes' chooser.
#pragma once
#include <string_view>

namespace invsetup {
struct Session;

/// Registers the boxes that store their value on every change: a numeric text that meets the
/// box's condition is stored, any other text leaves the field as it was (no message). Also the
/// special forms: Text_max_iter (letters count as 0), Text_inversion_background_topo (blank stores
/// the null value), Text_weight_multipliers (stored unchecked); and the Command_select_* buttons
/// of the file boxes.
void register_field_validators(Session& session);

/// Focus leaves a box. For Text_chi_factor, Text_iterations and Text_subspace a numeric text is
/// stored and any other text is replaced by the stored value, with a beep. Other boxes: nothing.
void leave_text_box(Session& session, std::string_view name, int index);

/// The file dialogue of a file box (a double click, or its Command_select_* button). Starts from the
/// box's text unless that reads "null"; on a choice the box takes the path (a data file box takes
/// the name alone and the path goes to data_file_names). The working directory is kept. Returns
/// true when a file was chosen.
bool choose_file_for_box(Session& session, std::string_view name, int index);

/// Command_define_coordinate_transform shows red while a transform is on, else the window colour.
void show_coordinate_transform_state(Session& session);

}  // namespace invsetup
