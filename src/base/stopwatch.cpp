#include "base/stopwatch.hpp"

#include <chrono>
#include <ctime>

namespace kvr {

double wallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    constexpr double SecondsPerNanosecond = 1e-9;
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * SecondsPerNanosecond;
}

}  // namespace kvr
