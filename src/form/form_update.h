// src/form/form_update.h - program writes to the form that must not run the form's own handlers.
#pragma once
#include "form/form_model.h"

namespace invsetup {

/// Sets updating_form for its lifetime and restores what was there, so nested writers compose.
class FormUpdate {
public:
    explicit FormUpdate(FormModel& form) : form_(form), was_(form.updating_form) { form_.updating_form = true; }
    ~FormUpdate() { form_.updating_form = was_; }
    FormUpdate(const FormUpdate&) = delete;
    FormUpdate& operator=(const FormUpdate&) = delete;

private:
    FormModel& form_;
    bool was_;
};

}  // namespace invsetup
