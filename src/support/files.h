// src/support/files.h - the file helper: names, directories, finding files that moved.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>

namespace invsetup {

class Dialogue;

/// The path if the file or directory exists, else "".
std::string find_file(const std::string& path);
/// The name behind the last separator ("\" or "/").
std::string file_name_only(std::string_view path);
/// The extension without its point, or "".
std::string file_extension(std::string_view path);
/// The directory part, without the closing separator; "" for a bare name.
std::string directory_of(std::string_view path);
bool directory_exists(const std::string& path);
/// Makes a directory with its parents; "\" and "/" both separate. Throws on failure.
void make_directory_path(const std::string& path);
/// A path from `from_directory` to `to_path` with "..\" steps and back-slashes; `to_path` as it
/// stands when the first three characters differ (any case).
std::string relative_path(std::string_view from_directory, std::string_view to_path);
/// A path in the form the generated files use: "/" turned to "\".
std::string windows_path(std::string_view path);
/// A file system path from a text that may use "\" or "/" separators.
std::filesystem::path native_path(std::string_view path);

/// What locate_file remembers between calls (one per session).
struct FileSearchMemory {
    std::string last_search_directory;
    std::string last_found_directory;
    std::string replaced_directory;
    std::string replacing_directory;
};

/// Finds a file that moved. Returns 0 with `file_name` rewritten to the found path, or a negative
/// status when the person gave up ("Cancel reading rest of specification file?" answered Yes).
int locate_file(Dialogue& dialogue, FileSearchMemory& memory, const std::string& working_directory,
                const std::string& title, std::string& file_name, const std::string& directory);

}  // namespace invsetup
