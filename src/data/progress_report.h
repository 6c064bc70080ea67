// src/data/progress_report.h - what the data stages report while they run, without knowing who shows it.
#pragma once
#include <functional>
#include <string>

namespace invsetup {

/// Where the stages that read the data and grid the surface report as they go: the stage under way,
/// the progress bar brought into view, a line added to the progress log. The session
/// holds one, which the form connects to its progress controls; an empty one reports nothing.
struct ProgressReport {
    std::function<void(const std::string&)> stage;
    std::function<void()> show_bar;
    std::function<void(const std::string&)> log;

    void report_stage(const std::string& text) const {
        if (stage) stage(text);
    }
    void report_bar() const {
        if (show_bar) show_bar();
    }
    /// `line` ends with its own CR LF.
    void report_line(const std::string& line) const {
        if (log) log(line);
    }
};

}  // namespace invsetup
