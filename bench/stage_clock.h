// bench/stage_clock.h - each line a run writes to its progress box, stamped with the seconds since the
// clock started, to see where the time of a run goes.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "form/form_model.h"

class StageClock {
public:
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();

    /// Starts stamping the progress lines of `form`; the clock must outlive the form's run.
    explicit StageClock(invsetup::FormModel& form) : form_(form) {
        subscription_ = form.subscribe([this](const invsetup::Control& control, invsetup::ControlProperty property) {
            if (property != invsetup::ControlProperty::value || control.declared->name != "Text_progress") return;
            if (control.text.size() < seen_) seen_ = 0;
            const double at = seconds();
            std::size_t end;
            while ((end = control.text.find("\r\n", seen_)) != std::string::npos) {
                char stamp[32];
                std::snprintf(stamp, sizeof stamp, "%7.3f s  ", at);
                stages_ += stamp + control.text.substr(seen_, end - seen_) + "\n";
                seen_ = end + 2;
            }
        });
    }
    ~StageClock() { form_.unsubscribe(subscription_); }
    StageClock(const StageClock&) = delete;
    StageClock& operator=(const StageClock&) = delete;

    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }
    /// The stamped lines so far, one per line.
    const std::string& stages() const { return stages_; }

private:
    invsetup::FormModel& form_;
    int subscription_ = 0;
    std::string stages_;
    std::size_t seen_ = 0;
};
