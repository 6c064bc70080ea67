// src/commands/commands.cpp - the file menu's read and save of a parameter file.
#include "commands/commands.h"

#include <fstream>
#include <stdexcept>

#include "definition/definition_checks.h"
#include "definition/legacy_parameter_file.h"
#include "definition/parameter_file.h"
#include "form/form_load.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

std::filesystem::path chosen_path(const Session& session, const std::string& choice) {
    return resolve_path(session.working_directory, choice);
}

/// Puts the working directory back after a dialogue, unless it was moved on purpose meanwhile.
class WorkingDirectoryKeeper {
public:
    explicit WorkingDirectoryKeeper(Session& session) : session_(session), kept_(session.working_directory) {}
    ~WorkingDirectoryKeeper() {
        if (!session_.working_directory_changed) session_.working_directory = kept_;
        session_.working_directory_changed = false;
    }
    WorkingDirectoryKeeper(const WorkingDirectoryKeeper&) = delete;
    WorkingDirectoryKeeper& operator=(const WorkingDirectoryKeeper&) = delete;

private:
    Session& session_;
    std::filesystem::path kept_;
};

}  // namespace

int read_command(Session& session, int group) {
    WorkingDirectoryKeeper keeper(session);
    std::string file_name;
    try {
        FileChoice request;
        request.title = "Select the inversion definition file";
        request.filter = "Inversion definition Files|*.inp;*.inp|All files (*.*)|*.*";
        std::optional<std::string> choice = session.dialogue.choose_file(request);
        if (!choice) return 1;
        std::filesystem::path path = chosen_path(session, *choice);
        file_name = file_name_only(*choice);
        if (find_file(path.string()).empty()) {
            session.dialogue.message_box("That file does not exist");
            return -1;
        }
        // Names inside the file are relative to its folder, as the file dialogue left it.
        session.working_directory = path.parent_path();
        if (group == 0) init_form_inversion_parameters(session);

        if (const std::string reason = not_a_regular_file(path); !reason.empty()) {
            session.dialogue.message_box("The definition file " + path.string() + " " + reason +
                                         ", not a file that can be read.");
            return -1;
        }
        std::ifstream file(path, std::ios::binary);
        if (!file) throw std::runtime_error("the file can't be opened");
        int version = 0;
        if (!read_parameter_file_version(file, version)) {
            session.dialogue.message_box("The specified file was empty");
            return -1;
        }
        int line_count = 0;
        int status = -1;
        if (version < 2)
            read_inversion_parameters_V1(session, file, group, line_count, status);
        else
            read_inversion_parameters(session.record, version, file, group, line_count, status);
        file.close();
        session.form.updating_form = false;
        if (status < 0) return -1;
        session.form.set_caption("Form_mag3d", form_caption_prefix + file_name);
        load_mag3d_form(session, group);
        return 0;
    } catch (const std::exception& fault) {
        session.form.updating_form = false;
        session.dialogue.message_box("An error occurred while reading the parameter file " + file_name + ": " +
                                     fault.what());
        return -1;
    }
}

int save_command(Session& session) {
    if (check_inversion_definitions(session) < 0) return -1;
    return choose_and_save_parameter_file(session);
}

int choose_and_save_parameter_file(Session& session) {
    WorkingDirectoryKeeper keeper(session);
    std::string file_name;
    try {
        FileChoice request;
        request.title = "Select the inversion definition file to create";
        request.filter = "Inversion Definition Files (*.inp)|*.inp|All files (*.*)|*.*";
        request.default_extension = "inp";
        request.save = true;
        std::optional<std::string> choice = session.dialogue.choose_file(request);
        if (!choice) return 1;
        std::string name = *choice;
        if (file_extension(name).empty()) name += ".inp";
        file_name = file_name_only(name);
        std::filesystem::path path = chosen_path(session, name);
        if (!find_file(path.string()).empty() && !session.dialogue.ask_yes_no("That file already, exists, overwrite?"))
            return 1;
        save_inversion_parameters(session.definition, session.form.text("Text_description"), path);
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while saving the parameter file " + file_name + ": " +
                                     fault.what());
        return -1;
    }
}

}  // namespace invsetup
