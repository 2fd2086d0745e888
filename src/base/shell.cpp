#include "base/shell.hpp"

#include "base/end_signal.hpp"
#include "base/stopwatch.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kvr {

namespace {

constexpr int NotStarted = 127;        // the status by which shells say so
constexpr double ShortestLook = 1e-3;  // s between looks at the command, growing while it runs
constexpr double LongestLook = 0.05;   // s
constexpr double Patience = 5.0;       // s to the next, stronger signal

constexpr std::string_view PlainCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.,+@%/=:-";

/// Signals as a program that a user starts has them. The command ends with the run, however that does.
void resetSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD}) std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
}

/// What the child does; never comes back. A session of its own takes signals with all that it starts, and has
/// no terminal: a command that asks there would be stopped in the background without a word.
[[noreturn]] void becomeShell(const char* line, const char* folder) {
    constexpr unsigned FirstOfRun = 3;  // behind the standard streams
    setsid();
    resetSignals();
    const int nothing = open("/dev/null", O_RDONLY);
    if (nothing >= 0) dup2(nothing, STDIN_FILENO);
    close_range(FirstOfRun, ~0U, 0);
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

/// How far a command that is to end has been asked.
struct Asking {
    int next = 0;        // of the signals below
    double since = 0.0;  // s, wall clock of the last one
};

/// Passes the signal of the run on, then, each after some patience, stronger ones.
void askToEnd(const Console& console, pid_t group, Asking& asking) {
    const std::array<int, 3> signals = {endSignal(), SIGTERM, SIGKILL};
    if (endSignal() == 0 || asking.next == static_cast<int>(signals.size())) return;
    if (asking.next > 0 && wallSeconds() - asking.since < Patience) return;
    if (kill(-group, signals[static_cast<std::size_t>(asking.next)]) != 0) return;  // not yet a group
    if (asking.next == 0) tell(console, "Waiting for the outside simulator to end");
    asking.next += 1;
    asking.since = wallSeconds();
}

}  // namespace

std::string shellWord(const std::string& name) {
    if (name.find_first_not_of(PlainCharacters) == std::string::npos) return name;
    std::string word = "'";
    for (const char c : name) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

ShellEnd runShell(const Console& console, const std::string& line, const std::string& folder) {
    std::fflush(nullptr);
    std::signal(SIGCHLD, SIG_DFL);  // where it is ignored no end would be told
    const pid_t child = fork();
    if (child < 0) return {};
    if (child == 0) becomeShell(line.c_str(), folder.c_str());
    int state = 0;
    Asking asking;
    for (double look = ShortestLook;; look = std::min(LongestLook, 2.0 * look)) {
        const pid_t ended = waitpid(child, &state, WNOHANG);
        if (ended == child) {
            if (asking.next > 0) kill(-child, SIGTERM);  // what the shell has left behind
            return endOf(state);
        }
        if (ended < 0 && errno != EINTR) return {};
        askToEnd(console, child, asking);
        sleepFor(look);
    }
}

void pauseFor(double seconds) {
    if (seconds > 0.0 && endSignal() == 0) sleepFor(seconds);
}

}  // namespace kvr
