// src/support/files.cpp - path texts with either separator, directories, finding files that moved.
#include "support/files.h"

#include <ios>
#include <new>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "support/dialogue.h"
#include "support/text.h"

namespace invsetup {

namespace {

bool is_separator(char c) { return c == '\\' || c == '/'; }

/// `name` under `directory`, with the separator the directory already uses (the platform's when
/// it shows none), so that a text from a definition file keeps its own style.
std::string join_path(std::string_view directory, std::string_view name) {
    std::string joined = trim(directory);
    if (joined.empty()) return std::string(name);
    if (!is_separator(joined.back())) {
        const bool has_back = joined.find('\\') != std::string::npos;
        const bool has_forward = joined.find('/') != std::string::npos;
#ifdef _WIN32
        joined.push_back(has_forward && !has_back ? '/' : '\\');
#else
        joined.push_back(has_back && !has_forward ? '\\' : '/');
#endif
    }
    joined.append(name);
    return joined;
}

std::vector<std::string_view> split_back_slashes(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const std::size_t cut = text.find('\\', start);
        parts.push_back(text.substr(start, cut == std::string_view::npos ? cut : cut - start));
        if (cut == std::string_view::npos) return parts;
        start = cut + 1;
    }
}

bool starts_with_directory(std::string_view path, std::string_view directory) {
    if (directory.empty() || path.size() <= directory.size()) return false;
    return iequals(path.substr(0, directory.size()), directory) &&
           (is_separator(path[directory.size()]) || is_separator(directory.back()));
}

/// After the person pointed at a moved file, the starts of the old and new directories that
/// differ, so that the next file from the same old tree is looked for in the new one:
/// "D:\old\proj\data" and "E:\new\proj\data" give "D:\old" and "E:\new".
void remember_replacement(FileSearchMemory& memory, std::string_view old_path, std::string_view new_path) {
    std::string_view old_directory = old_path.substr(0, directory_of(old_path).size());
    std::string_view new_directory = new_path.substr(0, directory_of(new_path).size());
    if (old_directory.empty() || new_directory.empty()) return;
    for (;;) {
        const std::size_t old_cut = old_directory.find_last_of("\\/");
        const std::size_t new_cut = new_directory.find_last_of("\\/");
        if (old_cut == std::string_view::npos || new_cut == std::string_view::npos) break;
        if (!iequals(old_directory.substr(old_cut + 1), new_directory.substr(new_cut + 1))) break;
        if (old_cut == 0 || new_cut == 0) break;
        old_directory = old_directory.substr(0, old_cut);
        new_directory = new_directory.substr(0, new_cut);
    }
    memory.replaced_directory = std::string(old_directory);
    memory.replacing_directory = std::string(new_directory);
}

}  // namespace

std::string find_file(const std::string& path) {
    if (trim(path).empty()) return {};
    std::error_code error;
    return std::filesystem::exists(native_path(path), error) ? path : std::string();
}

std::string file_name_only(std::string_view path) {
    const std::size_t cut = path.find_last_of("\\/");
    return std::string(cut == std::string_view::npos ? path : path.substr(cut + 1));
}

std::string file_extension(std::string_view path) {
    const std::string name = file_name_only(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

std::string directory_of(std::string_view path) {
    const std::size_t cut = path.find_last_of("\\/");
    return cut == std::string_view::npos ? std::string() : std::string(path.substr(0, cut));
}

std::string not_a_regular_file(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error || !std::filesystem::exists(status) || std::filesystem::is_regular_file(status)) return "";
    if (std::filesystem::is_directory(status)) return "is a folder";
    if (std::filesystem::is_fifo(status)) return "is a pipe";
    if (std::filesystem::is_character_file(status) || std::filesystem::is_block_file(status)) return "is a device";
    return "is not a regular file";
}

void require_regular_file(const std::filesystem::path& path, std::string_view what) {
    const std::string reason = not_a_regular_file(path);
    if (!reason.empty())
        throw std::runtime_error("The " + std::string(what) + " " + path.string() + " " + reason +
                                 ", not a file that can be read.");
}

namespace {

bool is_our_sentence(const std::exception& fault) {
    return dynamic_cast<const std::runtime_error*>(&fault) && !dynamic_cast<const std::overflow_error*>(&fault) &&
           !dynamic_cast<const std::ios_base::failure*>(&fault) && trim(fault.what()).rfind("The ", 0) == 0;
}

std::string plain_reason(const std::exception& fault) {
    const std::string detail = trim(fault.what());
    std::string reason;
    if (dynamic_cast<const std::overflow_error*>(&fault) || dynamic_cast<const std::underflow_error*>(&fault))
        reason = "a number there is too large for a whole number";
    else if (dynamic_cast<const std::bad_alloc*>(&fault) || dynamic_cast<const std::length_error*>(&fault))
        reason = "there is not enough memory for what it describes";
    else if (dynamic_cast<const std::range_error*>(&fault))
        reason = "a value there is not a finite number a single real holds";
    else if (dynamic_cast<const std::out_of_range*>(&fault))
        reason = "a count or a position there does not match the table it fills";
    else if (dynamic_cast<const std::invalid_argument*>(&fault))
        reason = "a value there is not a number";
    else if (dynamic_cast<const std::ios_base::failure*>(&fault) || dynamic_cast<const std::system_error*>(&fault) ||
             detail.find("basic_filebuf") != std::string::npos)
        reason = "the system could not read it";
    else
        reason = "an unforeseen fault stopped the reading";
    if (!detail.empty() && detail != "std::exception") reason += " (" + detail + ")";
    return reason;
}

}  // namespace

std::string read_fault_text(std::string_view what, std::string_view file, std::string_view field,
                            const std::exception& fault) {
    if (is_our_sentence(fault)) return trim(fault.what());
    std::string text = "The " + std::string(what) + " " + std::string(file) + " could not be read";
    if (!field.empty()) text += " at its " + std::string(field);
    return text + ": " + plain_reason(fault) + ".";
}

std::string fault_reason_text(const std::exception& fault) {
    return is_our_sentence(fault) ? trim(fault.what()) : plain_reason(fault);
}

bool directory_exists(const std::string& path) {
    if (trim(path).empty()) return false;
    std::error_code error;
    return std::filesystem::is_directory(native_path(path), error);
}

void make_directory_path(const std::string& path) {
    if (trim(path).empty()) return;
    const std::filesystem::path target = native_path(path);
    std::error_code error;
    std::filesystem::create_directories(target, error);
    if (error || !std::filesystem::is_directory(target))
        throw std::runtime_error("cannot create directory " + path + (error ? ": " + error.message() : ""));
}

std::string relative_path(std::string_view from_directory, std::string_view to_path) {
    // Both texts in the back-slash form the generated files use, so a POSIX path works alike.
    std::string from = windows_path(from_directory);
    const std::string to = windows_path(to_path);
    if (from.empty() || from.back() != '\\') from.push_back('\\');
    const std::vector<std::string_view> from_parts = split_back_slashes(from);
    const std::vector<std::string_view> to_parts = split_back_slashes(to);
    // Paths on different drives (or, from the root, under different first folders) have no relative
    // form: the target stays as it is.
    const auto first_part = [](const std::vector<std::string_view>& parts) {
        if (parts.empty()) return std::string_view();
        return parts[0].empty() && parts.size() > 1 ? parts[1] : parts[0];
    };
    if (from_parts.empty() || to_parts.empty() || from_parts[0].empty() != to_parts[0].empty() ||
        !iequals(first_part(from_parts), first_part(to_parts)))
        return std::string(to_path);
    std::size_t common = 0;
    while (common < from_parts.size() && common < to_parts.size() && iequals(from_parts[common], to_parts[common]))
        ++common;
    std::string relative;
    // The part behind the closing back-slash of `from` is empty: it is no directory to step out of.
    for (std::size_t i = common; i + 1 < from_parts.size(); ++i) relative += "..\\";
    for (std::size_t i = common; i < to_parts.size(); ++i) {
        if (i > common) relative.push_back('\\');
        relative.append(to_parts[i]);
    }
    return relative;
}

std::string windows_path(std::string_view path) {
    std::string out(path);
    for (char& c : out)
        if (c == '/') c = '\\';
    return out;
}

std::filesystem::path native_path(std::string_view path) {
#ifdef _WIN32
    return std::filesystem::path(std::string(path));
#else
    std::string out(path);
    for (char& c : out)
        if (c == '\\') c = '/';
    return std::filesystem::path(out);
#endif
}

std::filesystem::path resolve_path(const std::filesystem::path& working_directory, std::string_view name) {
    std::filesystem::path path = native_path(name);
    return path.is_relative() ? working_directory / path : path;
}

int locate_file(Dialogue& dialogue, FileSearchMemory& memory, const std::string& working_directory,
                const std::string& title, std::string& file_name, const std::string& directory) {
    const std::string name = file_name_only(file_name);
    auto found = [&](const std::string& candidate) {
        if (find_file(candidate).empty()) return false;
        file_name = candidate;
        memory.last_found_directory = directory_of(candidate);
        return true;
    };

    if (found(join_path(working_directory, name))) return 0;

    if (!trim(directory).empty()) {
        if (found(join_path(directory, name))) return 0;
        // Then the original's last folders, one more at a time: a moved tree keeps its inside.
        std::size_t cut = file_name.find_last_of("\\/");
        while (cut != std::string::npos && cut > 0) {
            cut = file_name.find_last_of("\\/", cut - 1);
            if (cut == std::string::npos) break;
            if (found(join_path(directory, std::string_view(file_name).substr(cut + 1)))) return 0;
        }
    }

    if (!memory.last_search_directory.empty()) {
        if (found(join_path(memory.last_search_directory, name))) return 0;
        if (!memory.last_found_directory.empty() && found(join_path(memory.last_found_directory, name))) return 0;
        if (starts_with_directory(file_name, memory.replaced_directory) &&
            found(memory.replacing_directory + file_name.substr(memory.replaced_directory.size())))
            return 0;
    }

    const std::string what = title.empty() ? name : title;
    dialogue.message_box("Could not find " + what + " please specify its location");
    const std::string extension = file_extension(name);
    FileChoice request;
    request.title = what;
    request.filter = extension.empty() ? "All files (*.*)|*.*"
                                       : "Data files (*." + extension + ")|*." + extension + "|All files (*.*)|*.*";
    request.start_name = join_path(memory.last_search_directory.empty() ? working_directory : memory.last_search_directory, name);
    request.default_extension = extension;
    const std::optional<std::string> choice = dialogue.choose_file(request);
    if (!choice) return dialogue.ask_yes_no("Cancel reading rest of specification file?") ? -1 : 1;
    remember_replacement(memory, file_name, *choice);
    memory.last_search_directory = directory_of(*choice);
    memory.last_found_directory = memory.last_search_directory;
    file_name = *choice;
    return 0;
}

}  // namespace invsetup
