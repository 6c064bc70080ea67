// src/create/shell_twin.cpp - translating a run package's batch files into sh scripts.
#include "create/shell_twin.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string_view>

#include "support/text.h"

namespace invsetup {

namespace {

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

bool ends_with_nocase(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && lower(text.substr(text.size() - tail.size())) == tail;
}

/// One word of a batch line, its quotes taken off, or an operator outside quotes (|, ||, &&, &, >, >>, <).
struct Token {
    std::string text;
    bool is_operator = false;
};

std::vector<Token> split_tokens(std::string_view line) {
    std::vector<Token> tokens;
    Token word;
    bool in_word = false, in_quotes = false;
    auto finish = [&] {
        if (in_word) tokens.push_back(std::move(word));
        word = Token{};
        in_word = false;
    };
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        if (c == '"') {
            in_quotes = !in_quotes;
            in_word = true;
        } else if (in_quotes) {
            word.text += c;
        } else if (c == ' ' || c == '\t') {
            finish();
        } else if (c == '|' || c == '&' || c == '>' || c == '<') {
            finish();
            std::string op(1, c);
            if ((c == '|' || c == '&' || c == '>') && at + 1 < line.size() && line[at + 1] == c) op += line[++at];
            tokens.push_back(Token{op, true});
        } else {
            word.text += c;
            in_word = true;
        }
    }
    finish();
    return tokens;
}

bool is_safe_character(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::string_view("_./,:=+@%-^").find(c) != std::string_view::npos;
}

/// A batch word as one sh word: "\" becomes "/", "%~dp0" the script's folder ($here with its "/").
std::string sh_word(std::string_view word) {
    std::string body;
    bool plain = !word.empty();
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (lower(word.substr(at, 5)) == "%~dp0") {
            body += "${here}/";
            plain = false;
            at += 4;
            continue;
        }
        char c = word[at];
        if (c == '\\') c = '/';
        if (!is_safe_character(c)) plain = false;
        if (c == '"' || c == '$' || c == '`' || c == '\\') body += '\\';
        body += c;
    }
    return plain ? body : '"' + body + '"';
}

/// A program name: the Linux builds have no ".exe".
std::string program_word(std::string_view word) {
    if (ends_with_nocase(word, ".exe")) word.remove_suffix(4);
    return sh_word(word);
}

/// A batch flag such as /Y or /D (a path with "\" never looks like one).
bool is_flag(const Token& token) { return token.text.size() == 2 && token.text[0] == '/'; }

std::string join_words(const std::vector<Token>& tokens, std::size_t from, bool drop_flags = false) {
    std::string result;
    for (std::size_t at = from; at < tokens.size(); ++at) {
        if (drop_flags && is_flag(tokens[at])) continue;
        if (!result.empty()) result += ' ';
        result += sh_word(tokens[at].text);
    }
    return result;
}

/// The script a "call" runs: X.bat -> sh ./X.sh, anything else as a program.
std::string call_command(const std::vector<Token>& tokens, std::size_t from) {
    if (from >= tokens.size()) return "true";
    const std::string& target = tokens[from].text;
    std::string rest = join_words(tokens, from + 1);
    if (!rest.empty()) rest = ' ' + rest;
    if (ends_with_nocase(target, ".bat") || ends_with_nocase(target, ".cmd")) {
        std::string script = target.substr(0, target.size() - 4) + ".sh";
        std::replace(script.begin(), script.end(), '\\', '/');
        if (script.find('/') == std::string::npos) script = "./" + script;
        return "sh " + sh_word(script) + rest;
    }
    return program_word(target) + rest;
}

/// One simple command (no operators between its words); "" when it has no sh counterpart.
std::string simple_command(const std::vector<Token>& tokens) {
    if (tokens.empty()) return "";
    std::vector<Token> words;
    std::string redirections;
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (!tokens[at].is_operator) {
            words.push_back(tokens[at]);
            continue;
        }
        redirections += ' ' + tokens[at].text;
        if (at + 1 < tokens.size() && !tokens[at + 1].is_operator) {
            ++at;
            redirections += lower(tokens[at].text) == "nul" ? "/dev/null" : sh_word(tokens[at].text);
        }
    }
    if (words.empty()) return "";
    const std::string keyword = lower(words[0].text);
    std::string command;
    if (keyword == "call") {
        command = call_command(words, 1);
    } else if (keyword == "cd" || keyword == "chdir") {
        const std::string target = join_words(words, 1, true);
        command = target.empty() ? "pwd" : "cd " + target;
    } else if (keyword == "copy") {
        command = "cp " + join_words(words, 1, true);
    } else if (keyword == "del" || keyword == "erase") {
        command = "rm -f " + join_words(words, 1, true);
    } else if (keyword == "ren" || keyword == "rename") {
        // The new name of "ren" is a bare name in the folder of the old one.
        std::string source = words.size() > 1 ? words[1].text : "";
        std::replace(source.begin(), source.end(), '\\', '/');
        const std::size_t slash = source.rfind('/');
        const std::string folder = slash == std::string::npos ? "" : source.substr(0, slash + 1);
        command = "mv " + sh_word(source) + (words.size() > 2 ? " " + sh_word(folder + words[2].text) : "");
    } else if (keyword == "move") {
        command = "mv " + join_words(words, 1, true);
    } else if (keyword == "md" || keyword == "mkdir") {
        command = "mkdir -p " + join_words(words, 1, true);
    } else if (keyword == "type") {
        command = "cat " + join_words(words, 1, true);
    } else if (keyword == "start") {
        // START ["title"] [/MIN /B /WAIT ...] program arguments: in the background unless /WAIT.
        std::size_t at = 1;
        bool wait = false;
        if (at < words.size() && words[at].text.empty()) ++at;
        while (at < words.size() && words[at].text.size() > 1 && words[at].text[0] == '/') {
            if (lower(words[at].text) == "/wait") wait = true;
            ++at;
        }
        if (at >= words.size()) return "";
        std::vector<Token> program(words.begin() + static_cast<std::ptrdiff_t>(at), words.end());
        command = program_word(program[0].text);
        const std::string rest = join_words(program, 1);
        if (!rest.empty()) command += ' ' + rest;
        return command + redirections + (wait ? "" : " &");
    } else if (keyword == "exit") {
        std::size_t at = 1;
        if (at < words.size() && lower(words[at].text) == "/b") ++at;
        command = "exit " + (at < words.size() ? sh_word(words[at].text) : std::string("0"));
    } else if (keyword == "pause" || keyword == "cls" || keyword == "title" || keyword == "color" ||
               keyword == "setlocal" || keyword == "endlocal" || keyword == "chcp") {
        return "";
    } else {
        command = program_word(words[0].text);
        const std::string rest = join_words(words, 1);
        if (!rest.empty()) command += ' ' + rest;
    }
    return command + redirections;
}

/// A command line with its || and && lists and | pipes. "tasklist | findstr NAME" (is the program
/// running?) becomes "pgrep -f NAME", the name without ".exe".
std::string command_line(const std::vector<Token>& tokens) {
    std::string result;
    std::vector<Token> pipeline;
    std::vector<std::string> stages;
    auto end_stage = [&] {
        stages.push_back(simple_command(pipeline));
        pipeline.clear();
    };
    auto end_pipeline = [&] {
        end_stage();
        std::string text;
        if (stages.size() == 2 && stages[0] == "tasklist" && stages[1].rfind("findstr ", 0) == 0) {
            std::string name = stages[1].substr(8);
            if (name.size() >= 2 && name.front() == '"') name = name.substr(1, name.size() - 2);
            name = trim(name);
            if (ends_with_nocase(name, ".exe")) name.resize(name.size() - 4);
            // -f: the process name pgrep -x compares is cut at 15 characters.
            text = "pgrep -f " + sh_word(name) + " >/dev/null";
        } else {
            for (const std::string& stage : stages) text += (text.empty() ? "" : " | ") + stage;
        }
        stages.clear();
        return text;
    };
    for (const Token& token : tokens) {
        if (token.is_operator && (token.text == "||" || token.text == "&&")) {
            result += end_pipeline() + ' ' + token.text + ' ';
        } else if (token.is_operator && token.text == "|") {
            end_stage();
        } else {
            pipeline.push_back(token);
        }
    }
    std::string last = end_pipeline();
    // A background command inside a list is grouped, or the whole list would go to the background.
    if (!result.empty() && last.size() > 2 && last.compare(last.size() - 2, 2, " &") == 0) last = "{ " + last + " }";
    return result + last;
}

/// "skipsen:", ":FinishInversion" -> "finishinversion"
std::string label_name(std::string_view text) {
    std::string name = trim(std::string(text));
    while (!name.empty() && name.front() == ':') name.erase(0, 1);
    while (!name.empty() && name.back() == ':') name.pop_back();
    return lower(trim(name));
}

/// Whether the first word of `text` is `keyword` (any case).
bool starts_with_word(std::string_view text, std::string_view keyword) {
    return text.size() >= keyword.size() && lower(text.substr(0, keyword.size())) == keyword &&
           (text.size() == keyword.size() || text[keyword.size()] == ' ' || text[keyword.size()] == '\t');
}

class Translator {
public:
    Translator(const std::string& batch_name, const std::vector<std::string>& lines) : name_(batch_name), lines_(lines) {
        for (std::size_t at = 0; at < lines.size(); ++at) {
            std::string line = trim(lines[at]);
            if (!line.empty() && line[0] == '@') line = trim(line.substr(1));
            if (line.size() > 1 && line[0] == ':' && line[1] != ':') labels_.push_back({at, label_name(line)});
        }
    }

    std::string text() {
        for (line_ = 0; line_ < lines_.size(); ++line_) translate(lines_[line_]);
        close_block();
        std::string head = "#!/bin/sh\n# " + shell_twin_path(name_).string() + ": " + name_ +
                           " for sh, the same programs in the same order.\nset -e\ncd \"$(dirname \"$0\")\"\n";
        if (uses_here_) head += "here=$(pwd)\n";
        if (uses_skip_) head += "skip=\n";
        std::string text = head;
        for (const std::string& line : out_) text += line + '\n';
        return text;
    }

private:
    void translate(const std::string& raw) {
        std::string line = trim(raw);
        if (!line.empty() && line[0] == '@') line = trim(line.substr(1));
        if (line.empty()) return emit("");
        if (line.rfind("::", 0) == 0) return emit("#" + line.substr(2));
        if (line[0] == ':') return label(label_name(line));
        if (starts_with_word(line, "rem") || lower(line) == "rem") return comment(trim(line.substr(3)));
        const std::string keyword = lower(line.substr(0, line.find(' ')));
        if (keyword == "echo" || keyword == "echo.") return echo(line);
        if (keyword == "goto") return jump(label_name(line.substr(4)), "");
        if (keyword == "if") return conditional(trim(line.substr(2)));
        const std::string command = command_line(split_tokens(line));
        if (command.empty()) return emit("# " + line);
        run(command);
    }

    /// "rem call tile0102.bat" (a skipped tile) keeps the sh form of its command.
    void comment(const std::string& body) {
        if (starts_with_word(body, "call")) return emit("# " + command_line(split_tokens(body)));
        std::string text = body;
        std::replace(text.begin(), text.end(), '\\', '/');
        emit(text.empty() ? "#" : "# " + text);
    }

    void echo(const std::string& line) {
        std::string rest = line.size() > 5 ? line.substr(5) : "";
        if (lower(line) == "echo off" || lower(line) == "echo on") return emit("");
        std::string quoted = "'";
        for (char c : rest) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        run(rest.empty() ? "echo" : "echo " + quoted + "'");
    }

    /// "if [not] exist FILE command"; other tests have no twin and stop the script.
    void conditional(const std::string& rest) {
        bool negate = false;
        std::string text = rest;
        if (starts_with_word(text, "not")) {
            negate = true;
            text = trim(text.substr(3));
        }
        if (!starts_with_word(text, "exist")) return unsupported();
        std::vector<Token> tokens = split_tokens(trim(text.substr(5)));
        if (tokens.size() < 2) return unsupported();
        const std::string test = std::string("[ ") + (negate ? "! " : "") + "-e " + sh_word(tokens[0].text) + " ]";
        if (lower(tokens[1].text) == "goto" && tokens.size() >= 3) return jump(label_name(tokens[2].text), test);
        tokens.erase(tokens.begin());
        run("if " + test + "; then " + command_line(tokens) + "; fi");
    }

    /// A forward jump: `skip` names the label sought until the label line clears it.
    void jump(const std::string& target, const std::string& test) {
        if (target == "eof") return run(test.empty() ? "exit 0" : "if " + test + "; then exit 0; fi");
        const bool ahead = std::any_of(labels_.begin(), labels_.end(), [&](const auto& label) {
            return label.first > line_ && label.second == target;
        });
        if (!ahead) return unsupported();
        close_block();
        uses_skip_ = true;
        std::string condition = pending_.empty() ? "" : "[ -z \"$skip\" ]";
        if (!test.empty()) condition += (condition.empty() ? "" : " && ") + test;
        emit(condition.empty() ? "skip=" + target : "if " + condition + "; then skip=" + target + "; fi");
        pending_.insert(target);
    }

    void label(const std::string& name) {
        close_block();
        if (pending_.erase(name) == 0) return emit("# :" + name);
        emit("if [ \"$skip\" = " + name + " ]; then skip=; fi");
    }

    /// A command; passed over while a jump is on its way to a label further down.
    void run(const std::string& command) {
        if (command.find("${here}") != std::string::npos) uses_here_ = true;
        if (!pending_.empty() && !block_open_) {
            out_.push_back("if [ -z \"$skip\" ]; then");
            block_open_ = true;
        }
        emit(command);
    }

    void unsupported() {
        run("echo '" + name_ + " line " + std::to_string(line_ + 1) + " has no sh form' >&2; exit 1");
    }

    void emit(const std::string& line) { out_.push_back(block_open_ && !line.empty() ? "    " + line : line); }

    void close_block() {
        if (!block_open_) return;
        out_.push_back("fi");
        block_open_ = false;
    }

    std::string name_;
    const std::vector<std::string>& lines_;
    std::vector<std::pair<std::size_t, std::string>> labels_;
    std::vector<std::string> out_;
    std::set<std::string> pending_;
    std::size_t line_ = 0;
    bool block_open_ = false;
    bool uses_here_ = false;
    bool uses_skip_ = false;
};

}  // namespace

std::filesystem::path shell_twin_path(const std::filesystem::path& batch_path) {
    std::filesystem::path twin = batch_path;
    if (lower(batch_path.extension().string()) == ".bat") return twin.replace_extension(".sh");
    return twin += ".sh";
}

std::filesystem::path start_script_in(const std::filesystem::path& run_directory) {
    for (const char* batch : {"iter_all.bat", "run_inversion.bat", "run_maginv3d.bat", "run_gzinv3d.bat",
                              "run_zarninv3d.bat"}) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(run_directory / batch, ignored))
            return shell_twin_path(run_directory / batch);
    }
    return {};
}

std::string shell_twin_text(const std::string& batch_name, const std::vector<std::string>& batch_lines) {
    return Translator(batch_name, batch_lines).text();
}

void write_shell_twin(const std::filesystem::path& batch_path, const std::vector<std::string>& batch_lines) {
    const std::filesystem::path twin = shell_twin_path(batch_path);
    const std::string text = shell_twin_text(batch_path.filename().string(), batch_lines);
    {
        std::ofstream out(twin, std::ios::binary | std::ios::trunc);
        if (!out) throw std::runtime_error("cannot create " + twin.string());
        out << text;
        if (!out.flush()) throw std::runtime_error("cannot write " + twin.string());
    }
    namespace fs = std::filesystem;
    std::error_code error;
    fs::permissions(twin,
                    fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec | fs::perms::others_read |
                        fs::perms::others_exec,
                    fs::perm_options::replace, error);
    if (error) throw std::runtime_error("cannot make " + twin.string() + " executable: " + error.message());
}

}  // namespace invsetup
