// src/form/form_load.h - filling the form from the parameter record.
#pragma once
#include <filesystem>

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
/// What closing the form does: the grid files it named that are temporary (a name beginning with
/// "~") are deleted and both names emptied. Returns the working directory, which the window keeps
/// as its "CWD" setting for the next start.
std::filesystem::path unload_mag3d_form(Session& session);

}  // namespace invsetup
