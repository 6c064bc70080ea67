// src/form/method_behaviour.h - what the choice of inversion method and data types does to the form.
#pragma once

namespace invsetup {
struct Session;

/// Change of Combo_inversion_method: stores inversion_method from the selected row's item data and
/// shows, hides, enables and captions the controls of that method family. Controls a method leaves
/// alone keep the state an earlier method gave them. Runs also while updating_form is set.
void apply_inversion_method(Session& session);
/// Change of Combo_data_type(index), index 0 to 2: stores data_types(index) (-1 with no selection)
/// and, for the first type under the in-house method, swaps the field and tensor frames and moves
/// the untouched defaults (trade-off, error floor, wavelet eps, beta) to the new type's.
void apply_data_type(Session& session, int index);
/// The Tab_inversion click: captions of Label_obs_data follow the method and the data types.
void update_obs_data_labels(Session& session);

/// Registers the handlers of Combo_inversion_method, Combo_data_type, Combo_optional_data_type,
/// Combo_inversion_mode and Combo_alpha_method.
void register_method_behaviour(Session& session);

}  // namespace invsetup
