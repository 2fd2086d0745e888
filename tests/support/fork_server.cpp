// Runs the program many times without starting it anew: each run is a fork of this process, which holds the
// library and has done nothing yet. A request is a line on the standard input, its fields apart by tabs:
//
//     seconds of processor time, more for a run that was asked to end, seconds asleep, kilobytes, folder,
//     and each word of the command line
//
// The answer is a line on the standard output: what waitpid tells, seconds of processor time, kilobytes of
// the peak, and what was done to the run: "asked" (SIGTERM), "forced" (SIGKILL), "exhausted" (its memory,
// SIGKILL) or "left". The console and the errors go to console.txt and errors.txt of the folder. No thread
// may be started here: a fork has only the one that forks.

#include "run/program.hpp"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr long PollNanoseconds = 50'000'000;
constexpr int NotStarted = 126;

struct Request {
    double cpuSeconds = 0.0;
    double endSeconds = 0.0;
    double sleepSeconds = 0.0;  // on the clock, waiting for a command or for nothing
    long kilobytes = 0;
    std::string folder;
    std::vector<std::string> words;
};

/// How a run stands: how long it was found asleep so far, and what was done about it.
struct Watch {
    double asleep = 0.0;
    std::string done = "left";
};

/// What the system tells of a living run.
struct Use {
    double seconds = 0.0;  // of processor time, with the commands that it has run
    bool asleep = false;
};

/// One line of the standard input without its end; false at the end of the input. A stream with a buffer
/// would be inherited by the runs, with what it has read ahead.
bool readLine(std::string& line) {
    line.clear();
    for (char character = 0; read(STDIN_FILENO, &character, 1) == 1; line += character)
        if (character == '\n') return true;
    return false;
}

Request requestOf(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char character : line)
        if (character == '\t')
            fields.emplace_back();
        else
            fields.back() += character;
    constexpr std::size_t Fixed = 5;
    fields.resize(fields.size() < Fixed ? Fixed : fields.size());
    return {std::atof(fields[0].c_str()),
            std::atof(fields[1].c_str()),
            std::atof(fields[2].c_str()),
            std::atol(fields[3].c_str()),
            fields[4],
            {fields.begin() + Fixed, fields.end()}};
}

bool opensAs(int stream, const char* name, int flags) {
    constexpr mode_t Mode = 0644;
    const int opened = open(name, flags, Mode);
    return opened >= 0 && dup2(opened, stream) == stream && (opened == stream || close(opened) == 0);
}

/// The end of a run: what it has registered is done. What was at hand before it, the library's and the
/// sanitizer's lists of globals, is not taken apart; that would take longer than most runs.
void endHere(int status, void*) {
    std::fflush(nullptr);
    _exit(status);
}

[[noreturn]] void runHere(const Request& request, const sigset_t& mask) {
    constexpr int Written = O_WRONLY | O_CREAT | O_TRUNC;
    if (chdir(request.folder.c_str()) != 0 || !opensAs(STDIN_FILENO, "/dev/null", O_RDONLY) ||
        !opensAs(STDOUT_FILENO, "console.txt", Written) || !opensAs(STDERR_FILENO, "errors.txt", Written))
        _exit(NotStarted);
    sigprocmask(SIG_SETMASK, &mask, nullptr);
    on_exit(endHere, nullptr);
    std::vector<std::string> words{"kvr"};
    words.insert(words.end(), request.words.begin(), request.words.end());
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::exit(kvr::runProgram(static_cast<int>(words.size()), arguments.data()));
}

Use useOf(pid_t run) {
    std::FILE* file = std::fopen(("/proc/" + std::to_string(run) + "/stat").c_str(), "r");
    if (file == nullptr) return {};
    char state = 0;
    long user = 0, system = 0, userOfCommands = 0, systemOfCommands = 0;
    const int found =
        std::fscanf(file, "%*d (%*[^)]) %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld %ld %ld", &state,
                    &user, &system, &userOfCommands, &systemOfCommands);
    std::fclose(file);
    constexpr int Fields = 5;
    if (found != Fields) return {};
    const auto ticks = static_cast<double>(user + system + userOfCommands + systemOfCommands);
    return {ticks / static_cast<double>(sysconf(_SC_CLK_TCK)), state == 'S'};
}

long kilobytesOf(pid_t run) {
    std::FILE* file = std::fopen(("/proc/" + std::to_string(run) + "/statm").c_str(), "r");
    if (file == nullptr) return 0;
    long pages = 0;
    const bool found = std::fscanf(file, "%*d %ld", &pages) == 1;
    std::fclose(file);
    constexpr long Kilobyte = 1024;
    return found ? pages * (sysconf(_SC_PAGESIZE) / Kilobyte) : 0;
}

void end(pid_t run, int signal, const char* done, Watch& watch) {
    kill(run, signal);
    watch.done = done;
}

/// A run is asked to end behind its time, once, and is ended behind the time to do so.
void judge(pid_t run, const Request& request, Watch& watch) {
    if (watch.done == "forced" || watch.done == "exhausted") return;
    constexpr double Second = 1e9;
    const Use use = useOf(run);
    if (use.asleep) watch.asleep += PollNanoseconds / Second;
    if (kilobytesOf(run) > request.kilobytes)
        end(run, SIGKILL, "exhausted", watch);
    else if (use.seconds > request.cpuSeconds + request.endSeconds ||
             watch.asleep > 2.0 * request.sleepSeconds)
        end(run, SIGKILL, "forced", watch);
    else if ((use.seconds > request.cpuSeconds || watch.asleep > request.sleepSeconds) &&
             watch.done == "left")
        end(run, SIGTERM, "asked", watch);
}

double secondsOf(const timeval& time) {
    constexpr double Second = 1e6;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / Second;
}

void answer(int state, const rusage& usage, const Watch& watch) {
    char line[128];
    const int length = std::snprintf(line, sizeof line, "%d\t%.3f\t%ld\t%s\n", state,
                                     secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime), usage.ru_maxrss,
                                     watch.done.c_str());
    if (write(STDOUT_FILENO, line, static_cast<std::size_t>(length)) != length) std::_Exit(EXIT_FAILURE);
}

/// Waits for the end of a run, which SIGCHLD tells at once.
void watchOver(pid_t run, const Request& request, const sigset_t& ends) {
    Watch watch;
    int state = 0;
    rusage usage{};
    const timespec poll{0, PollNanoseconds};
    while (wait4(run, &state, WNOHANG, &usage) == 0)
        if (sigtimedwait(&ends, nullptr, &poll) < 0) judge(run, request, watch);
    answer(state, usage, watch);
}

}  // namespace

int main() {
    sigset_t ends, before;
    sigemptyset(&ends);
    sigaddset(&ends, SIGCHLD);
    sigprocmask(SIG_BLOCK, &ends, &before);
    for (std::string line; readLine(line);) {
        const Request request = requestOf(line);
        const pid_t run = _Fork();
        if (run < 0) return EXIT_FAILURE;
        if (run == 0) runHere(request, before);
        watchOver(run, request, ends);
    }
    return EXIT_SUCCESS;
}
