#pragma once

#include "base/console.hpp"

#include <string>

namespace kvr {

/// How a line that was handed to the system shell ended.
struct ShellEnd {
    bool started = false;  // there was a shell to hand it to
    int status = 0;        // exit status; 127 where the shell knows no such command
    int signal = 0;        // that ended the shell; 0: none
};

inline bool succeeded(const ShellEnd& end) {
    return end.started && end.status == 0 && end.signal == 0;
}

/// A name as one word of a line for the system shell: as it is where every character is plain, else in
/// quotes.
std::string shellWord(const std::string& name);

/// Hands `line` to the system shell, in `folder` (blank: the present one), and waits for its end. The command
/// reads nothing from the console and has none of the files of the run. A signal that asks the run to end is
/// passed on to it and all it has started; what does not heed it is ended after some seconds.
ShellEnd runShell(const Console& console, const std::string& line, const std::string& folder);

/// Waits, no longer than until a signal asks the run to end.
void pauseFor(double seconds);

}  // namespace kvr
