// src/support/dialogue.cpp - the headless dialogue.
#include "support/dialogue.h"

#include "support/numbers.h"

namespace invsetup {

void ProgressMeter::advance(double done) {
    const int percent = to_integer(done * 100 / total_);
    if (percent <= last_) return;
    last_ = percent;
    dialogue_.progress(percent);
    dialogue_.do_events();
}

void HeadlessDialogue::message_box(const std::string& text) {
    messages.push_back(text);
    if (echo_) *echo_ << text << '\n';
}

bool HeadlessDialogue::ask_yes_no(const std::string& text) {
    questions.push_back(text);
    if (echo_) *echo_ << text << (answer_yes ? " [Yes]" : " [No]") << '\n';
    return answer_yes;
}

std::string HeadlessDialogue::ask_text(const std::string& /*prompt*/, const std::string& initial) { return initial; }

std::optional<std::string> HeadlessDialogue::choose_file(const FileChoice& request) {
    file_requests.push_back(request);
    if (file_answers.empty()) return std::nullopt;
    std::string answer = file_answers.front();
    file_answers.pop_front();
    return answer;
}

}  // namespace invsetup
