// src/definition/definition_checks.h - the ordered checks of a whole definition before it is saved
// or created.
#pragma once

namespace invsetup {
struct Session;

/// Checks the form's definition and fills the derived fields the writers need. Returns 0 when the
/// definition may be used, or -1 after telling the user what is wrong.
int check_inversion_definitions(Session& session);

}  // namespace invsetup
