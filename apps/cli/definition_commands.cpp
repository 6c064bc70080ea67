// apps/cli/definition_commands.cpp - show and upgrade: reading and saving definition files.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <ostream>
#include <string>

#include "definition/parameter_file.h"
#include "commands/commands.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"

namespace invsetup::cli {

namespace {

constexpr int tab_count = 5;

std::string control_label(const Control& control) {
    std::string label(control.declared->name);
    if (control.declared->index != no_index) label += "(" + std::to_string(control.declared->index) + ")";
    return label;
}

/// "Frame_magsen3d(0)" as a name and an index.
bool find_frame(const FormModel& form, std::string_view frame, const Control*& found) {
    int index = no_index;
    std::string_view name = frame;
    if (std::size_t open = frame.find('('); open != std::string_view::npos && frame.back() == ')') {
        name = frame.substr(0, open);
        index = std::stoi(std::string(frame.substr(open + 1, frame.size() - open - 2)));
    }
    if (!form.has_control(name, index)) return false;
    found = &form.control(name, index);
    return true;
}

/// A control counts as hidden when it or any frame around it is hidden.
bool is_shown(const FormModel& form, const Control& control) {
    const Control* current = &control;
    for (int depth = 0; depth < 8; ++depth) {
        if (!current->visible) return false;
        const Control* frame = nullptr;
        if (current->declared->frame.empty() || !find_frame(form, current->declared->frame, frame)) return true;
        current = frame;
    }
    return true;
}

std::string tab_caption(const FormModel& form, int tab) {
    const Control& tabs = form.control("Tab_inversion");
    if (tab < static_cast<int>(tabs.rows.size())) return tabs.rows[static_cast<std::size_t>(tab)].text;
    std::string_view rows = tabs.declared->rows;
    for (int skipped = 0; skipped < tab; ++skipped) rows.remove_prefix(std::min(rows.size(), rows.find('\n') + 1));
    return std::string(rows.substr(0, rows.find('\n')));
}

/// The value a control holds as text; false for controls that hold none (buttons, labels, frames).
bool control_value(const Control& control, std::string& value) {
    switch (control.declared->kind) {
        case ControlKind::text_box:
            value = control.text;
            return true;
        case ControlKind::rich_text:  // the description: its line breaks shown as \n
            value.clear();
            for (char c : control.text) {
                if (c == '\n') value += "\\n";
                else if (c != '\r') value += c;
            }
            return true;
        case ControlKind::list:
            if (control.list_index >= 0 && control.list_index < static_cast<int>(control.rows.size()))
                value = control.rows[static_cast<std::size_t>(control.list_index)].text;
            else
                value = "(none)";
            return true;
        case ControlKind::check_box:
        case ControlKind::option_button:
            value = control.checked ? "on" : "off";
            return true;
        default:
            return false;
    }
}

void print_form(const FormModel& form, std::ostream& out) {
    const std::vector<const Control*> controls = form.controls();
    for (int tab = 0; tab < tab_count; ++tab) {
        out << "== " << tab_caption(form, tab) << " ==\n";
        for (const Control* control : controls) {
            std::string value;
            if (control->declared->tab != tab || !control_value(*control, value)) continue;
            out << control_label(*control) << " =";
            if (!value.empty()) out << ' ' << value;
            if (!is_shown(form, *control)) out << " [hidden]";
            if (!control->enabled) out << " [disabled]";
            out << '\n';
        }
    }
}

int show_definition(const std::string& definition, int group) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    if (!read_definition(session, dialogue, definition, group)) return 1;
    print_form(session.form, std::cout);
    return 0;
}

// The record is saved rather than the form's definition: it holds every field the old file said,
// also those the form takes from elsewhere (the refinement mode comes from the menu).
int upgrade_definition(const std::string& old_file, const std::string& new_file) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    std::filesystem::path target = std::filesystem::absolute(new_file);
    if (!read_definition(session, dialogue, old_file, 0)) return 1;
    try {
        save_inversion_parameters(session.record, session.record.comments, target);
    } catch (const std::exception& fault) {
        std::cerr << "invsetup: the definition could not be saved as " << target.string() << ": " << fault.what() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace

bool read_definition(Session& session, HeadlessDialogue& dialogue, const std::filesystem::path& definition, int group,
                     const std::filesystem::path& working_directory) {
    const std::filesystem::path path = std::filesystem::absolute(definition);
    session.working_directory = working_directory.empty() ? path.parent_path() : working_directory;
    initialise_inversion_form(session);
    dialogue.file_answers.push_back(path.string());
    return read_command(session, group) == 0;
}

void register_show_command(CLI::App& app, int& exit_code) {
    CLI::App* show = app.add_subcommand("show", "Print what a definition file holds, tab by tab");
    auto definition = std::make_shared<std::string>();
    auto group = std::make_shared<int>(0);
    show->add_option("DEFINITION", *definition, "The definition file (.inp), any version")->required();
    show->add_option("--group", *group, "Read only one group: 1 parameters, 2 observed data, 3 topo, 4 mesh")
        ->check(CLI::Range(0, 4));
    show->callback([&exit_code, definition, group] { exit_code = show_definition(*definition, *group); });
}

void register_upgrade_command(CLI::App& app, int& exit_code) {
    CLI::App* upgrade = app.add_subcommand("upgrade", "Save a definition file as Version 3.0");
    auto old_file = std::make_shared<std::string>();
    auto new_file = std::make_shared<std::string>();
    upgrade->add_option("OLD", *old_file, "The definition file to read, any version")->required();
    upgrade->add_option("NEW", *new_file, "The Version 3.0 file to write (replaced when it exists)")->required();
    upgrade->callback([&exit_code, old_file, new_file] { exit_code = upgrade_definition(*old_file, *new_file); });
}

}  // namespace invsetup::cli
