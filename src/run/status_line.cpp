#include "run/status_line.hpp"

#include "base/constants.hpp"
#include "base/stopwatch.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kvr {

namespace {

constexpr std::size_t UsualWidth = 80;  // columns of a terminal that does not tell
constexpr long SecondsPerMinute = 60;
constexpr long SecondsPerHour = 3600;
constexpr std::size_t MostStepText = 700 << 10;  // bytes of the steps on the screen
constexpr double LongestTime = 1e8;              // s; longer than any run, and safe to cut to whole seconds

bool rewritesLines(std::FILE* screen) {
    if (screen == nullptr || isatty(fileno(screen)) == 0) return false;
    const char* kind = std::getenv("TERM");
    return kind == nullptr || std::string_view(kind) != "dumb";
}

/// One column stays free: a full line would move the cursor to the next.
std::size_t usableWidth(std::FILE* screen) {
    winsize size{};
    const bool told = ioctl(fileno(screen), TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return (told ? size.ws_col : UsualWidth) - 1;
}

std::string hours(double seconds) {
    const long whole = std::lround(std::clamp(seconds, 0.0, LongestTime));
    return fmt::format("{}:{:02}:{:02}", whole / SecondsPerHour, whole % SecondsPerHour / SecondsPerMinute,
                       whole % SecondsPerMinute);
}

/// A line for each hundredth of the schedule, where the lines of the steps stand in the log alone.
void tellProgress(Simulation& s) {
    if (!isFolded(s.console) || !(s.clock.endTime > 0.0)) return;
    const int hundredth = static_cast<int>(Percent * s.clock.time / s.clock.endTime);
    if (hundredth <= s.toldHundredth) return;
    s.toldHundredth = hundredth;
    lineToScreenAlways(s.console, statusText(s.clock, wallSeconds() - s.loopStart, UsualWidth));
}

}  // namespace

std::string statusText(const RunClock& clock, double elapsedSeconds, std::size_t width) {
    const double done = clock.endTime > 0.0 ? std::clamp(clock.time / clock.endTime, 0.0, 1.0) : 1.0;
    const std::string left = done > 0.0 ? hours(elapsedSeconds * (1.0 - done) / done) : "-";
    std::string text =
        fmt::format("{:02}.{:02}.{}  {:5.1f} % of the schedule   elapsed {}   left {}", clock.day,
                    clock.month, clock.year, Percent * done, hours(elapsedSeconds), left);
    text.resize(std::min(text.size(), width));
    return text;
}

void startStatus(Simulation& simulation) {
    simulation.loopStart = wallSeconds();
    simulation.account = ScreenAccount{MostStepText, 0, {}};
    simulation.console.account = &simulation.account;
    if (!rewritesLines(simulation.console.screen)) return;
    simulation.console.status = &simulation.status;
    updateStatus(simulation);
}

void updateStatus(Simulation& simulation) {
    const Console& console = simulation.console;
    tellProgress(simulation);
    if (console.status == nullptr) return;
    showStatus(console, statusText(simulation.clock, wallSeconds() - simulation.loopStart,
                                   usableWidth(console.screen)));
}

void endStatus(Simulation& simulation) {
    clearStatus(simulation.console);
    simulation.console.status = nullptr;
    unfold(simulation.console, false);
}

}  // namespace kvr
