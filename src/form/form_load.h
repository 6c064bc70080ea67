// src/form/form_load.h - filling the form from the parameter record.
#pragma once

namespace invsetup {
struct Session;

/// Writes the defaults of a fresh definition into session.record and clears its transform; changes
/// no control.
void init_form_inversion_parameters(Session& session);
/// Run once when the form is shown: defaults, menu state, tab 4, list item data, load_mag3d_form(0).
void initialise_inversion_form(Session& session);
/// Pushes one group of session.record into the form and the definition: 0 all, 1 inversion
/// parameters, 2 observed data, 3 topo data, 4 mesh. Run-time faults are trapped at its top.
void load_mag3d_form(Session& session, int group);

}  // namespace invsetup
