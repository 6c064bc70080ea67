// src/session.h - the state of one session of work: the form, the definition, the records of one
// creation and the person's dialogue. Operations take it by reference; nothing else is global, so a
// test may build as many sessions as it likes.
#pragma once
#include <filesystem>
#include <string>

#include "form/form_model.h"
#include "form/inversion_definition.h"
#include "support/dialogue.h"
#include "support/files.h"

namespace invsetup {

struct Session {
    /// Builds the form from its table and registers the form's change handlers.
    explicit Session(Dialogue& dialogue_port);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Dialogue& dialogue;
    FormModel form;
    InversionDefinition definition;
    ParameterRecord record;

    /// The process-wide working directory of the original design: relative names resolve here.
    std::filesystem::path working_directory;
    /// Set when the working directory moved on purpose, so that a read doesn't move it back.
    bool working_directory_changed = false;
    FileSearchMemory file_search;

    /// The mesh and model of refinement mode, by the names they were read from.
    std::string original_mesh_name;
    std::string original_model_name;
};

}  // namespace invsetup
