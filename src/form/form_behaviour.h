// src/form/form_behaviour.h - the form's change handlers: method behaviour, field validators, plain
// value handlers. Registered on the session's form when the session is built.
#pragma once

namespace invsetup {
struct Session;

/// Registers every change handler of the form on session.form.
void register_form_behaviour(Session& session);

}  // namespace invsetup
