// src/support/dialogue.h - what the library may ask of a person. Qt, the command line and tests
// implement it; the core never talks to a screen any other way.
#pragma once
#include <deque>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace invsetup {

/// A file chooser request. `filter` is the label|pattern pair text ("Data files (*.dat)|*.dat|All
/// files (*.*)|*.*"); `start_name` a proposed file or directory; `save` asks for a new file.
struct FileChoice {
    std::string title;
    std::string filter;
    std::string start_name;
    std::string default_extension;
    bool save = false;
};

/// One row of an option dialogue: a check box with its tip.
struct OptionRow {
    std::string caption;
    std::string tip;
    bool checked = false;
};

class Dialogue {
public:
    virtual ~Dialogue() = default;
    /// A message with one OK button.
    virtual void message_box(const std::string& text) = 0;
    /// A question with Yes and No buttons; true for Yes.
    virtual bool ask_yes_no(const std::string& text) = 0;
    /// A text prompt; returns the text entered, or `initial` when the person just accepts it.
    virtual std::string ask_text(const std::string& prompt, const std::string& initial) = 0;
    /// A file chooser; no value when cancelled.
    virtual std::optional<std::string> choose_file(const FileChoice& request) = 0;
    /// A modal dialogue of check boxes titled `title`; the person may change the rows' `checked`.
    /// False when cancelled. The default accepts the rows as they stand.
    virtual bool ask_options(const std::string& /*title*/, std::vector<OptionRow>& /*rows*/) { return true; }
    /// Lets the interface breathe during long work.
    virtual void do_events() {}
    /// Progress of the current stage, 0 to 100.
    virtual void progress(int /*percent*/) {}
    /// A beep for a refused entry.
    virtual void beep() {}
};

/// A progress bar over a long loop: from 0 to 100, moved only when the whole percentage of
/// done / total grows, with do_events each time it moves.
class ProgressMeter {
public:
    ProgressMeter(Dialogue& dialogue, double total) : dialogue_(dialogue), total_(total > 0 ? total : 1) {}
    void advance(double done);

private:
    Dialogue& dialogue_;
    double total_;
    int last_ = 0;
};

/// The dialogue of the command line and of tests: records every message and question, answers
/// questions Yes (unless told otherwise), gives text prompts their default, and cancels file
/// choosers unless answers were queued. With an echo stream every message is also written there.
class HeadlessDialogue : public Dialogue {
public:
    explicit HeadlessDialogue(std::ostream* echo = nullptr) : echo_(echo) {}

    void message_box(const std::string& text) override;
    bool ask_yes_no(const std::string& text) override;
    std::string ask_text(const std::string& prompt, const std::string& initial) override;
    std::optional<std::string> choose_file(const FileChoice& request) override;
    void progress(int percent) override { last_progress = percent; }
    void beep() override { ++beeps; }

    std::vector<std::string> messages;        // message boxes, in order
    std::vector<std::string> questions;       // yes/no questions, in order
    std::vector<FileChoice> file_requests;    // every file chooser shown
    std::deque<std::string> file_answers;     // answers for the next choosers; empty means cancel
    bool answer_yes = true;
    int last_progress = -1;
    int beeps = 0;

private:
    std::ostream* echo_;
};

}  // namespace invsetup
