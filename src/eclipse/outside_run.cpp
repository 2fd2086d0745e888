#include "eclipse/outside_run.hpp"

#include "base/end_signal.hpp"
#include "base/hard_stop.hpp"
#include "base/shell.hpp"
#include "base/text.hpp"
#include "eclipse/activity_reader.hpp"
#include "eclipse/end_file.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/grid_reader.hpp"
#include "eclipse/init_reader.hpp"
#include "eclipse/keyword_loop.hpp"
#include "eclipse/outside_command.hpp"
#include "eclipse/restart_velocity.hpp"
#include "eclipse/schedule_files.hpp"
#include "eclipse/step_decks.hpp"
#include "eclipse/summary_reader.hpp"
#include "report/material_balance.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kvr {

namespace {

constexpr std::string_view IxCommand = "ECLRUN ix";
constexpr std::string_view FrontsimCommand = "$frontsim";  // its end file has counts of its own
constexpr int FirstStep = 1;
constexpr double PausePerTurn = 0.1;  // s before the next turn of a run that fails, growing with their number
constexpr double LongestPause = 5.0;  // s

/// A deck that is run until what it is run for is there.
struct OutsideTask {
    std::string deck;  // without folder and extension
    int restart = 1;   // the step whose file has to be there
    bool errorsCount = true;
    bool stopOnFailure = false;  // of the command
    bool namesCommand = false;   // the log has it behind a failure
};

bool hasRestart(const Console& console, const RunOptions& options, const OutsideTask& task) {
    if (fileExists(outsideFile(options, task.deck, ".X", task.restart))) return true;
    tell(console, "ECLIPSE Restart is not exported.");
    tell(console, "     -> Change RPTRST or Inputdeck");
    return false;
}

bool endedWithoutErrors(const Console& console, const RunOptions& options, const OutsideTask& task) {
    int errors = 0;
    Check_ECLEND(console, outsideFile(options, task.deck, ".ECLEND"), errors);
    if (errors == 0 || !task.errorsCount) return true;
    tell(console, "Error found in .ECLEND file. Run again...");
    return false;
}

bool askedToEnd(const Console& console, int turn) {
    if (endSignal() == 0) return false;
    tell(console, fmt::format("RUN OF THE OUTSIDE SIMULATOR IS ENDED BY {} IN TURN {}",
                              signalName(endSignal()), turn));
    return true;
}

void stopBehindFailure(const Console& console, const OutsideTask& task, bool whole) {
    if (!whole && task.stopOnFailure) hardStop(console);
}

/// Turn after turn, without a bound, until the run is whole. False: a signal has asked for the end.
bool runUntilWhole(const Console& console, const RunOptions& options, const OutsideTask& task) {
    for (int turn = 1;; ++turn) {
        lineToBoth(console, "Run Simulation by ECLIPSE");
        tell(console, fmt::format("Run of the outside simulator, turn :: {}", turn));
        if (options.deleteEclipseRun) clear_ECLIPSE_Data(console, outsideFile(options, task.deck, ""));
        const bool whole = runOutsideCommand(console, options, task.deck);
        if (askedToEnd(console, turn)) return false;
        if (!whole && task.namesCommand)
            log(console, "Command Given :: {}", outsideCommand(options, task.deck));
        stopBehindFailure(console, task, whole);
        if (hasRestart(console, options, task)) {
            lineToBoth(console, " ECLIPSE seemed working successfully ");
            if (endedWithoutErrors(console, options, task)) return true;
        }
        pauseFor(std::min(LongestPause, turn * PausePerTurn));
        if (askedToEnd(console, turn)) return false;
    }
}

void logStart(const Console& console) {
    lineToLog(console, OpeningArrow.substr(1));  // this row has a dash less than those of the readers
    lineToLog(console, " Function Called  : RUN_ECL");
}

bool errorsCount(const RunOptions& options) {
    return trim(options.simulatorCommand) != FrontsimCommand;
}

/// What an outside run says of the model and of its start, once in a process.
void readModel(Simulation& s, std::string_view deck, bool withGrid) {
    if (s.outside.modelRead) return;
    s.outside.modelRead = true;
    if (withGrid) input_GRID(s.console, s.options, s.units, deck, s.grid);
    input_ACTNUM_EGRID(s.console, s.options, deck, s.grid);
    input_INIT_TRANS(s.console, s.options, s.units, deck, s.grid, s.connections);
    input_RST2Velocity(s, deck, 0);
    RESET_INITIAL_INPLACE(s);
}

/// Wells of the run, to the files of histories; observed histories that a match was given stay the user's.
void readResponse(Simulation& s, const std::string& header, int firstStep) {
    RunOptions place = s.options;
    place.useHistoryControls = s.options.useHistoryControls && !s.match.observedGiven;
    read_ECL_response(s.console, place, s.schedule, header, firstStep, s.outside.response);
}

}  // namespace

bool RUN_ECL(Simulation& s, int step) {
    const std::string& header = s.options.headerName;
    logStart(s.console);
    if (s.clock.stepCount == FirstStep) {
        if (!runUntilWhole(s.console, s.options, {header, step, errorsCount(s.options), false, false}))
            return false;
        readResponse(s, header, 0);
        Write_ECLSchedule_forHM(s.console, s.options, s.units, s.schedule, s.outside.response);
    }
    readModel(s, header, true);
    input_RST2Velocity(s, header, step);
    logReaderEnd(s.console, " Function Ends Normally  : RUN_ECL");
    return true;
}

bool forward_restart_run(Simulation& s) {
    const std::string deck = restartDeckName(s.options, s.clock.reportIndex);
    const int step = s.options.useEclipsePressure ? FirstStep : s.clock.reportIndex;
    logStart(s.console);
    if (!runUntilWhole(s.console, s.options, {deck, step, true, false, true})) return false;
    readResponse(s, deck, s.clock.reportIndex);
    readModel(s, deck, false);
    input_RST2Velocity(s, deck, step);
    logReaderEnd(s.console, " Function Ends Normally  : RUN_ECL");
    return true;
}

bool first_outside_run(Simulation& s) {
    const std::string& header = s.options.headerName;
    if (s.options.deleteEclipseRun) clear_ECLIPSE_Data(s.console, outsideFile(s.options, header, ""));
    if (fileExists(outsideFile(s.options, header, ".X", FirstStep))) return true;
    return runUntilWhole(s.console, s.options, {header, FirstStep, errorsCount(s.options), true, false});
}

void ix_run(Simulation& s) {
    s.options.simulatorCommand = IxCommand;
    lineToBoth(s.console, "Run Simulation by IX");
    const bool whole = runOutsideCommand(s.console, s.options, s.options.headerName);
    if (endSignal() != 0) return;
    if (!whole) hardStop(s.console);
    s.options.traceFromRestart = true;
}

void Check_ECLEND(const Console& console, const std::string& path, int& errors) {
    constexpr int MostLines = 100;
    constexpr int NoFile = 1;
    lineToLog(console, " Function Callecd  : Check_ECLEND");
    errors = 0;
    std::error_code failure;
    if (!std::filesystem::exists(path, failure)) {
        log(console, "Error :: File not found : {}", path);
        errors = NoFile;
        return;
    }
    errno = 0;
    std::ifstream file(path);
    if (!file || !fileExists(path)) {
        tellFileStatus(console, errno != 0 ? errno : HandlingErrorStatus, path);
        errors = NoFile;
        return;
    }
    log(console, " File Found : {}", path);
    std::string line;
    for (int count = 0; count < MostLines && std::getline(file, line); ++count) {
        if (toUpper(line).find("ERRORS") == std::string::npos) continue;
        std::istringstream words(line);
        std::string word;
        if (!(words >> word >> errors)) errors = NoFile;
        break;
    }
    lineToLog(console, " Function Ends Normally  : Check_ECLEND");
}

}  // namespace kvr
