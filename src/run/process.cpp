#include "run/process.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <new>
#include <omp.h>
#include <unistd.h>

namespace kvr {

namespace {

/// What an exception that nobody takes means. Files get what they were to get; nothing else is safe here.
[[noreturn]] void endWithALine() {
    const char* line = "ERROR :: THE PROGRAM CANNOT GO ON";
    try {
        if (const std::exception_ptr present = std::current_exception()) std::rethrow_exception(present);
    } catch (const std::bad_alloc&) {
        line = "ERROR :: OUT OF MEMORY";
    } catch (...) {
    }
    std::puts(line);
    std::fflush(nullptr);
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

void replaceClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        const int opened = open("/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        if (opened != stream && opened >= 0) {
            dup2(opened, stream);
            close(opened);
        }
    }
}

void endOnFailuresWithALine() {
    std::set_terminate(endWithALine);
    std::signal(SIGPIPE, SIG_IGN);
}

int statusOfSignal(int signal) {
    constexpr int FirstSignalStatus = 128;
    return FirstSignalStatus + signal;
}

void useThreads(const CommandLine& command) {
    if (command.threads > 0) omp_set_num_threads(command.threads);
}

}  // namespace kvr
