#include "eclipse/outside_command.hpp"

#include "base/end_signal.hpp"
#include "base/hard_stop.hpp"
#include "base/shell.hpp"
#include "base/text.hpp"
#include "eclipse/file_names.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace kvr {

namespace {

constexpr int NoSuchCommand = 127;  // exit status of a shell

/// The folder that a command runs in where it changes none itself: a deck that was named need not stand in
/// the present one.
std::string folderOfShell(const RunOptions& options) {
    return options.deckFile.empty() ? "" : outsideFolder(options);
}

/// The variable that stands for the command where its first word is $NAME and the environment has none; the
/// shell would run the name of the deck in its place.
std::string unsetVariable(const RunOptions& options) {
    const std::string word(firstWord(trim(options.simulatorCommand)));
    if (word.size() < 2 || word.front() != '$') return {};
    const std::string name = word.substr(1);
    const bool isName = std::all_of(name.begin(), name.end(),
                                    [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; });
    return isName && std::getenv(name.c_str()) == nullptr ? name : std::string();
}

std::string howItEnded(const ShellEnd& end) {
    if (!end.started) return "no shell could be started";
    if (end.signal != 0) return fmt::format("ended by signal {}", end.signal);
    return fmt::format("exit status {}", end.status);
}

}  // namespace

std::string outsideCommand(const RunOptions& options, std::string_view deck) {
    const std::string run =
        std::string(trim(options.simulatorCommand)) + " " + shellWord(std::string(trim(deck)));
    if (options.linuxRun) return run;
    return "cd /d " + shellWord(std::string(trim(outsideFolder(options)))) + " & " + run;
}

void requirePermission(const Console& console, const RunOptions& options, std::string_view deck) {
    if (options.outsideAllowed) return;
    lineToBoth(console,
               "ERROR :: THE INPUT ASKS TO RUN A COMMAND, WHICH TAKES --allow-outside ON THE COMMAND LINE");
    lineToBoth(console, "Command :: " + outsideCommand(options, deck));
    hardStop(console);
}

bool runOutsideCommand(const Console& console, const RunOptions& options, std::string_view deck) {
    requirePermission(console, options, deck);
    const std::string line = outsideCommand(options, deck);
    tell(console, "Command :: " + line);
    const std::string unset = unsetVariable(options);
    if (!unset.empty()) tell(console, fmt::format("The variable {} of the environment is not set", unset));
    const ShellEnd end =
        unset.empty() ? runShell(console, line, folderOfShell(options)) : ShellEnd{true, NoSuchCommand, 0};
    if (endSignal() != 0) return false;
    if (succeeded(end)) return true;
    tell(console, "Commandline -$eclipse- is not recognized");
    tell(console, "Check environmental varialbe of computer");
    tell(console, "Command ended :: " + howItEnded(end));
    return false;
}

}  // namespace kvr
