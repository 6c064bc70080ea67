// src/create/shell_twin.h - the POSIX sh twin of a Windows batch file: the same programs with the
// same arguments in the same order, for the Linux builds of the outside programs.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {

/// "run_inversion.bat" -> "run_inversion.sh" (any case of ".bat"; another name gets ".sh" added).
std::filesystem::path shell_twin_path(const std::filesystem::path& batch_path);

/// The twin's text, LF line ends: "#!/bin/sh", `set -e`, a `cd` to the script's own folder, then the
/// batch lines one by one. Paths take "/" for "\", "call X.bat" runs "sh ./X.sh", copy/del/ren/move
/// become cp/rm -f/mv, "start" runs in the background, a "rem" line becomes a "#" comment, a line
/// holding one blank an empty line, "%~dp0" the script's folder. The forward "goto"s of the tile
/// files ("@if exist F goto L:" ... ":L") become a `skip` variable naming the label being sought:
/// while it is set, the commands up to the label are passed over, as the batch file jumps them.
/// `batch_name` is named in the twin's head comment.
std::string shell_twin_text(const std::string& batch_name, const std::vector<std::string>& batch_lines);

/// The start script of the package already in `run_directory`, told by the files it holds: the sh
/// twin of "iter_all.bat" (tiled run), else of "run_inversion.bat", else of the inversion program's
/// own batch file (a variation run), the same choice start_batch_file_name makes from the form.
/// Empty when the folder holds none of them.
std::filesystem::path start_script_in(const std::filesystem::path& run_directory);

/// Writes the twin of the batch file at `batch_path` beside it, executable (rwxr-xr-x). Throws
/// std::runtime_error naming the file when it can't be written.
void write_shell_twin(const std::filesystem::path& batch_path, const std::vector<std::string>& batch_lines);

}  // namespace invsetup
