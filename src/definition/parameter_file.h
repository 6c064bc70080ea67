// src/definition/parameter_file.h - the "Version 3.0" parameter file: a whole definition as
// `key: value` lines, a coordinate transform section and the description.
#pragma once
#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "form/inversion_definition.h"

namespace invsetup {

/// The version line the writer puts first.
inline constexpr std::string_view parameter_file_version_line = "Version 3.0";

/// The lines of a parameter file for `definition`, in the order of writing, without line ends. The
/// derived values of a copy of the coordinate transform are brought up to date first; the transform
/// section appears only when that copy is active. `comments` (the form's description; CR LF, LF or
/// CR break its lines) is written the way the reader gives it back: each line cleaned and trimmed
/// as read_clean_line would, leading empty lines dropped. So a file read and saved again keeps its
/// bytes.
std::vector<std::string> parameter_file_lines(const InversionFields& definition, std::string_view comments);

/// Writes parameter_file_lines to `path` with CR LF, replacing the file. Throws std::runtime_error
/// naming the file on an I/O fault; the caller's trap shows it.
void save_inversion_parameters(const InversionFields& definition, std::string_view comments,
                               const std::filesystem::path& path);

/// Reads the lines in front of the keys: blank lines are passed over; a first non-empty line that
/// begins with "Ver" gives the version (the integer of the number behind its first eight
/// characters, half to even), any other leaves it 0 and stays unread (the stream is put back in
/// front of it). Returns false when the input holds no non-empty line.
bool read_parameter_file_version(std::istream& file, int& version);

/// Reads the key lines of `file` (standing behind the version line) into `record`: keys in any
/// order, unknown keys and short value lists passed over, fields without a line left as they are.
/// Then, for `group` 0 or 1, the "[Coordinate transform]" section, and for every group the
/// "[Comments]" section, each found by reading again from the start of the stream (so `file` must
/// be seekable). `line_count` counts the lines read. `status` becomes 0. Faults a reader can't pass
/// over (more than seven data types, a number too large for an integer field) throw; the command
/// that started the read shows them.
void read_inversion_parameters(ParameterRecord& record, int version, std::istream& file, int group, int& line_count,
                               int& status);

/// Cuts a description into the lines a parameter file holds: CR LF, CR or LF break it, each line
/// cleaned as read_clean_line cleans (tab to blank, other bytes outside 32..126 dropped) and trimmed,
/// leading empty lines dropped. An empty description has no lines.
std::vector<std::string> comment_lines(std::string_view comments);

/// The three lines of an active transform's section (without the heading): values in printed-list
/// form, each followed by one blank.
std::vector<std::string> transform_section_lines(const PointTransform& transform);
/// Appends the closing sections both file versions share: "[Coordinate transform]" with its three
/// lines when the transform is on, then "[Comments]" and the description's lines.
void append_closing_sections(std::vector<std::string>& lines, const PointTransform& transform,
                             std::string_view comments);
/// Rescans `file` from its start for the heading "[Coordinate transform]" and reads its three lines
/// into `transform`, then updates the derived values. Returns false when there is no such heading.
bool read_transform_section(std::istream& file, PointTransform& transform, int& line_count);
/// Rescans `file` from its start for "[Comments]"; when found, `comments` takes the lines behind it
/// (trimmed, joined by CR LF; empty lines vanish while nothing has been taken). Returns false when
/// there is no such heading (then `comments` is left as it was).
bool read_comments_section(std::istream& file, std::string& comments);

}  // namespace invsetup
