// apps/gui/qt_dialogue.h - the dialogue port in Qt: message boxes, questions, text prompts, file
// choosers with the system's titles and filters, option lists, progress and do_events.
#pragma once
#include <QPointer>
#include <QWidget>
#include <functional>
#include <string>

#include "support/dialogue.h"

namespace invsetup::gui {

/// A filter of label|pattern pairs ("Data Files (*.dat)|*.dat|All files (*.*)|*.*") as Qt writes
/// it ("Data Files (*.dat);;All files (*)").
QString qt_file_filter(const std::string& filter);

class QtDialogue : public Dialogue {
public:
    /// The window the dialogues stand over; may be set later.
    void set_parent(QWidget* parent) { parent_ = parent; }
    /// Where progress goes (the progress bar of the form).
    void set_progress_sink(std::function<void(int)> sink) { progress_sink_ = std::move(sink); }

    void message_box(const std::string& text) override;
    bool ask_yes_no(const std::string& text) override;
    std::string ask_text(const std::string& prompt, const std::string& initial) override;
    std::optional<std::string> choose_file(const FileChoice& request) override;
    bool ask_options(const std::string& title, std::vector<OptionRow>& rows) override;
    void do_events() override;
    void progress(int percent) override;
    void beep() override;

    /// Answers for the next file choosers, taken before any chooser is shown (a definition named on
    /// the command line, a scripted run).
    std::deque<std::string> file_answers;
    /// Messages go to the error stream instead of a box (a run that saves pictures and ends).
    bool messages_to_error_stream = false;

private:
    QPointer<QWidget> parent_;
    std::function<void(int)> progress_sink_;
};

/// The caption of the program's message boxes.
inline constexpr const char* dialogue_caption = "3D inversion setup";

}  // namespace invsetup::gui
