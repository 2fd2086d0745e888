#pragma once

#include <cstddef>
#include <cstdio>
#include <deque>
#include <fmt/format.h>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace kvr {

/// The line that stands below everything else on a terminal and is rewritten in place; empty: none.
struct StatusLine {
    std::string text;
};

/// What the screen has been told. Stages tell every step and every iteration, megabytes in a run of thousands
/// of steps; beyond `limit` bytes such lines stand in the log alone, the last ones kept to be shown at a
/// stop.
struct ScreenAccount {
    std::size_t limit = 0;    // bytes; 0: no bound
    std::size_t written = 0;  // bytes
    std::deque<std::string> withheld;
};

struct MessageRecord;  // base/messages.hpp
struct WrittenFiles;   // base/written_files.hpp

/// Where the program speaks and listens. `log` is KVR_dbg.out once it is open, before that null;
/// writing to a null stream does nothing.
struct Console {
    std::FILE* screen = stdout;
    std::FILE* log = nullptr;
    std::FILE* input = stdin;
    StatusLine* status = nullptr;                   // set only while the screen is a terminal
    ScreenAccount* account = nullptr;               // set while steps are taken
    MessageRecord* messages = nullptr;              // keeps warnings for the end of the run
    WrittenFiles* files = nullptr;                  // open files that are checked
    const std::function<void()>* atStop = nullptr;  // what is still to be left behind when a run fails
    bool concise = false;                           // lines of the stages stand in the log alone
};

/// One line of text, the line end added here.
void lineToScreen(const Console& console, std::string_view text);
void lineToLog(const Console& console, std::string_view text);
void lineToBoth(const Console& console, std::string_view text);

/// The same with a format string of the formatting library.
template <class... Args>
void screen(const Console& console, fmt::format_string<Args...> format, Args&&... args) {
    lineToScreen(console, fmt::format(format, std::forward<Args>(args)...));
}
template <class... Args>
void log(const Console& console, fmt::format_string<Args...> format, Args&&... args) {
    if (console.log != nullptr) lineToLog(console, fmt::format(format, std::forward<Args>(args)...));
}
template <class... Args>
void both(const Console& console, fmt::format_string<Args...> format, Args&&... args) {
    lineToBoth(console, fmt::format(format, std::forward<Args>(args)...));
}

/// Whether lines stand in the log alone now.
bool isFolded(const Console& console);

/// One line that the screen gets however much it has had.
void lineToScreenAlways(const Console& console, std::string_view text);

/// What a user is to see whatever else the console shows: screen and log.
void tell(const Console& console, std::string_view text);

/// Ends the withholding of lines, and shows the last ones where they tell why a run stops.
void unfold(const Console& console, bool showLast);

/// Puts `text` in place of the status line, or takes the line away. Lines to the screen go above it.
/// Nothing happens where the console has none.
void showStatus(const Console& console, std::string_view text);
void clearStatus(const Console& console);

/// A number in general form with at most `digits` significant digits, as the reports print it.
std::string number(double value, int digits = 9);

/// Waits for one line from the console; end of input counts as the line.
void waitForLine(const Console& console);

}  // namespace kvr
