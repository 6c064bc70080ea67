// src/commands/start_run.h - starting a run package's sh script in the background, detached from the
// program that starts it, with its output in a log file.
#pragma once
#include <filesystem>
#include <string>

namespace invsetup {

/// Runs `script` with /bin/sh in the background, in a session of its own so that it outlives the
/// caller, standard output and errors to `log` (replaced), standard input from /dev/null. Returns the
/// process id, or -1 with the reason in `error`. POSIX systems only; elsewhere always -1.
long start_in_background(const std::filesystem::path& script, const std::filesystem::path& log, std::string& error);

}  // namespace invsetup
