// src/session.cpp - a session and the registration of the form's behaviour.
#include "session.h"

#include "commands/limits_commands.h"
#include "form/form_behaviour.h"

namespace invsetup {

Session::Session(Dialogue& dialogue_port) : dialogue(dialogue_port), working_directory(std::filesystem::current_path()) {
    register_form_behaviour(*this);
    register_limits_commands(*this);
}

}  // namespace invsetup
