// src/commands/start_run.h - starting a run package's sh script in the background, detached from the
// program that starts it, with its output in a log file.
#pragma once
#include <filesystem>
#include <string>

namespace invsetup {

/// The start script of the package already in `run_directory`, told by the files it holds: the sh
/// twin of "iter_all.bat" (tiled run), else of "run_inversion.bat", else of the inversion program's
/// own batch file (a variation run), the same choice start_batch_file_name makes from the form.
/// Empty when the folder holds none of them.
std::filesystem::path start_script_in(const std::filesystem::path& run_directory);

/// Runs `script` with /bin/sh in the background, in a session of its own so that it outlives the
/// caller, standard output and errors to `log` (replaced), standard input from /dev/null. Returns the
/// process id, or -1 with the reason in `error`. POSIX systems only; elsewhere always -1.
long start_in_background(const std::filesystem::path& script, const std::filesystem::path& log, std::string& error);

}  // namespace invsetup
