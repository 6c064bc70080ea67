// src/support/files.h - the file helper: names, directories, finding files that moved.
#pragma once
#include <exception>
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
/// Why `path` can't be read as a file, or "" when it is a regular file or doesn't exist (opening
/// it then says so): "is a folder", "is a pipe", "is a device", "is not a regular file". A pipe or a
/// device could be read forever, so every reader asks before it opens.
std::string not_a_regular_file(const std::filesystem::path& path);
/// Throws std::runtime_error("The <what> <path> <reason>, not a file that can be read.") when
/// not_a_regular_file has a reason.
void require_regular_file(const std::filesystem::path& path, std::string_view what);
/// The sentence for an unforeseen fault met while reading one part (`field`) of a file: "The mesh
/// file a.msh could not be read at its cell widths: a number there is too large for a whole number
/// (Overflow)." A library's own text (an index range, a stream error, "Overflow") stays in brackets
/// behind words a person can act on. A fault that is already a sentence of ours ("The ...") is kept.
std::string read_fault_text(std::string_view what, std::string_view file, std::string_view field,
                            const std::exception& fault);
/// The reason alone, for a message that already names the file: "a number there is too large for
/// a whole number (Overflow)"; a sentence of ours as it is.
std::string fault_reason_text(const std::exception& fault);
/// Makes a directory with its parents; "\" and "/" both separate. Throws std::runtime_error
/// naming the path on failure.
void make_directory_path(const std::string& path);
/// A path from `from_directory` to `to_path` with "..\" steps and back-slashes; `to_path` as it
/// stands when the first parts differ (the drive, or the first folder under the root; any case). Parts compare in any case; "/" counts
/// as "\", so "C:\run\" to "C:\run\mesh\a.msh" is "mesh\a.msh", and to "C:\data\x.obs" "..\data\x.obs".
std::string relative_path(std::string_view from_directory, std::string_view to_path);
/// A path in the form the generated files use: "/" turned to "\".
std::string windows_path(std::string_view path);
/// A file system path from a text that may use "\" or "/" separators ("..\mesh\a.msh" works on
/// POSIX too, where every "\" becomes "/").
std::filesystem::path native_path(std::string_view path);
/// A file name as the definition holds it, made a path: a relative name counts from `working_directory`.
std::filesystem::path resolve_path(const std::filesystem::path& working_directory, std::string_view name);

/// What locate_file remembers between calls (one per session).
struct FileSearchMemory {
    std::string last_search_directory;
    std::string last_found_directory;
    std::string replaced_directory;
    std::string replacing_directory;
};

/// Finds a file that moved: by its name in the working directory, in `directory` (also with the
/// original's last folders), in the directories remembered from earlier searches, and at last by
/// asking the person ("Could not find <title or name> please specify its location" and a file
/// chooser). Returns 0 with `file_name` rewritten to the found path; after a cancelled chooser, a
/// negative status when the person chooses to stop reading the rest of the definition file, and 1
/// (not found, `file_name` unchanged) when they choose to go on.
int locate_file(Dialogue& dialogue, FileSearchMemory& memory, const std::string& working_directory,
                const std::string& title, std::string& file_name, const std::string& directory);

}  // namespace invsetup
