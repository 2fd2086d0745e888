#include "base/shell.hpp"

#include "base/end_signal.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kvr {

namespace {

constexpr int NotStarted = 127;        // the status by which shells say so
constexpr double ShortestLook = 1e-3;  // s between looks at the command, growing while it runs
constexpr double LongestLook = 0.05;   // s

/// What the child does; never comes back. A group of its own takes signals with all that it starts.
[[noreturn]] void becomeShell(const char* line, const char* folder) {
    setpgid(0, 0);
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE}) std::signal(signal, SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY);
    if (nothing >= 0) dup2(nothing, STDIN_FILENO);
    if (*folder != '\0' && chdir(folder) != 0) _exit(NotStarted);
    execl("/bin/sh", "sh", "-c", line, static_cast<char*>(nullptr));
    _exit(NotStarted);
}

ShellEnd endOf(int state) {
    ShellEnd end;
    end.started = true;
    if (WIFSIGNALED(state)) end.signal = WTERMSIG(state);
    if (WIFEXITED(state)) end.status = WEXITSTATUS(state);
    return end;
}

void sleepFor(double seconds) {
    constexpr double NanosecondsPerSecond = 1e9;
    timespec length{};
    length.tv_sec = static_cast<std::time_t>(seconds);
    length.tv_nsec = static_cast<long>((seconds - static_cast<double>(length.tv_sec)) * NanosecondsPerSecond);
    nanosleep(&length, nullptr);  // a signal ends it
}

}  // namespace

ShellEnd runShell(const std::string& line, const std::string& folder) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) return {};
    if (child == 0) becomeShell(line.c_str(), folder.c_str());
    setpgid(child, child);  // whichever of the two comes first
    int state = 0;
    bool told = false;
    for (double look = ShortestLook;; look = std::min(LongestLook, 2.0 * look)) {
        const pid_t ended = waitpid(child, &state, WNOHANG);
        if (ended == child) {
            if (told) kill(-child, SIGTERM);  // what the shell has left behind
            return endOf(state);
        }
        if (ended < 0 && errno != EINTR) return {};
        if (endSignal() != 0 && !told) {
            told = true;
            kill(-child, endSignal());
        }
        sleepFor(look);
    }
}

void pauseFor(double seconds) {
    if (seconds > 0.0 && endSignal() == 0) sleepFor(seconds);
}

}  // namespace kvr
