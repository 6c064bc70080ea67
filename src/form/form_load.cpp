// src/form/form_load.cpp - filling the form from the parameter record.
#include "form/form_load.h"

#include "session.h"

namespace invsetup {

void init_form_inversion_parameters(Session& session) { session.record = ParameterRecord{}; }
void initialise_inversion_form(Session& session) { init_form_inversion_parameters(session); }
void load_mag3d_form(Session& /*session*/, int /*group*/) {}

}  // namespace invsetup
