#include "eclipse/outside_command.hpp"

#include "base/end_signal.hpp"
#include "base/hard_stop.hpp"
#include "base/shell.hpp"
#include "base/text.hpp"
#include "eclipse/file_names.hpp"

namespace kvr {

namespace {

/// The folder that a command runs in where it changes none itself: a deck that was named need not stand in
/// the present one.
std::string folderOfShell(const RunOptions& options) {
    return options.deckFile.empty() ? "" : outsideFolder(options);
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
    tell(console,
         "ERROR :: THE INPUT ASKS TO RUN A COMMAND, WHICH TAKES --allow-outside ON THE COMMAND LINE");
    tell(console, "Command :: " + outsideCommand(options, deck));
    hardStop(console);
}

bool runOutsideCommand(const Console& console, const RunOptions& options, std::string_view deck) {
    requirePermission(console, options, deck);
    const std::string line = outsideCommand(options, deck);
    tell(console, "Command :: " + line);
    const ShellEnd end = runShell(console, line, folderOfShell(options));
    if (endSignal() != 0) return false;
    if (succeeded(end)) return true;
    tell(console, "Commandline -$eclipse- is not recognized");
    tell(console, "Check environmental varialbe of computer");
    tell(console, "Command ended :: " + howItEnded(end));
    return false;
}

}  // namespace kvr
