// src/form/form_behaviour.cpp - the form's change handlers.
#include "form/form_behaviour.h"

#include "session.h"

namespace invsetup {

void register_form_behaviour(Session& /*session*/) {}

}  // namespace invsetup
