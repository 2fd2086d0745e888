#include "base/end_signal.hpp"

#include <csignal>

namespace kvr {

namespace {

// A signal handler can reach nothing else.
volatile std::sig_atomic_t caughtSignal = 0;

void keepSignal(int signal) {
    caughtSignal = signal;
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

}  // namespace

void catchEndSignals() {
    std::signal(SIGINT, keepSignal);
    std::signal(SIGTERM, keepSignal);
}

int endSignal() {
    return caughtSignal;
}

std::string_view signalName(int signal) {
    return signal == SIGINT ? "SIGINT" : "SIGTERM";
}

}  // namespace kvr
