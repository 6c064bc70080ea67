// src/commands/start_run.cpp - starting a run package's sh script in the background.
#include "commands/start_run.h"

#include <cerrno>
#include <cstring>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace invsetup {

#ifndef _WIN32

long start_in_background(const std::filesystem::path& script, const std::filesystem::path& log, std::string& error) {
    const std::string script_text = std::filesystem::absolute(script).string();
    const std::string log_text = std::filesystem::absolute(log).string();
    const std::string folder = std::filesystem::absolute(script).parent_path().string();
    // Opened here, so that a log that can't be written is told before anything starts.
    const int log_file = ::open(log_text.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (log_file < 0) {
        error = "cannot create " + log_text + ": " + std::strerror(errno);
        return -1;
    }
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) {
        error = std::string("cannot start a process: ") + std::strerror(errno);
        ::close(log_file);
        return -1;
    }
    // Two forks: the middle process ends at once, so the script is nobody's child to wait for. The
    // script's process id comes back through the pipe.
    const pid_t middle = ::fork();
    if (middle < 0) {
        error = std::string("cannot start a process: ") + std::strerror(errno);
        ::close(log_file);
        ::close(report[0]);
        ::close(report[1]);
        return -1;
    }
    if (middle == 0) {
        ::setsid();
        const pid_t script_process = ::fork();
        if (script_process != 0) {
            const long id = script_process;
            [[maybe_unused]] const ssize_t written = ::write(report[1], &id, sizeof id);
            ::_exit(0);
        }
        const int input = ::open("/dev/null", O_RDONLY);
        if (input >= 0) ::dup2(input, 0);
        ::dup2(log_file, 1);
        ::dup2(log_file, 2);
        if (::chdir(folder.c_str()) != 0) ::_exit(126);
        ::execl("/bin/sh", "sh", script_text.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(log_file);
    ::close(report[1]);
    long id = -1;
    const ssize_t got = ::read(report[0], &id, sizeof id);
    ::close(report[0]);
    int status = 0;
    ::waitpid(middle, &status, 0);
    if (got != static_cast<ssize_t>(sizeof id) || id <= 0) {
        error = "cannot start " + script_text;
        return -1;
    }
    return id;
}

#else

long start_in_background(const std::filesystem::path&, const std::filesystem::path&, std::string& error) {
    error = "sh scripts are started on POSIX systems only";
    return -1;
}

#endif

}  // namespace invsetup
