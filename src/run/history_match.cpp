#include "run/history_match.hpp"

#include "base/messages.hpp"
#include "base/stopwatch.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/summary_reader.hpp"
#include "matching/match_maps.hpp"
#include "matching/match_reports.hpp"
#include "matching/match_resume.hpp"
#include "matching/probable_update.hpp"
#include "matching/sl_misfit.hpp"
#include "matching/sl_sensitivity.hpp"
#include "run/rewind.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr long SecondsPerMinute = 60, SecondsPerHour = 3600;

std::string hours(double seconds) {
    const long whole = std::lround(std::max(seconds, 0.0));
    return fmt::format("{}:{:02}:{:02}", whole / SecondsPerHour, whole % SecondsPerHour / SecondsPerMinute,
                       whole % SecondsPerMinute);
}

/// Calculated histories of a run of our own come from its summary files; those of a run that was traced are
/// there already.
void readResponse(Simulation& s) {
    if (s.options.traceFromRestart) return;
    RunOptions place = s.options;
    place.deckFile.clear();  // own files stand where the results do
    place.useHistoryControls = s.options.useHistoryControls && !s.match.observedGiven;
    read_ECL_response(s.console, place, s.schedule, s.options.headerName, 1, s.outside.response);
}

double sumOver(const RunMisfit& run, std::size_t quantity) {
    double sum = 0.0;
    for (const WellMisfit& well : run.wells) sum += well.sumAbs[quantity];
    return sum;
}

/// One line of the console for a run: misfits of all wells, the largest change that led to it, times.
void tellRun(const Simulation& s, const RunMisfit& run, std::string_view remark) {
    const MatchRecord& match = s.match;
    const double elapsed = wallSeconds() - match.startSeconds;
    const int left = std::max(0, s.options.hmIterationLimit - static_cast<int>(match.accepted.size()));
    tell(s.console,
         fmt::format("Match, run {} of {}: misfit {} (cut {}, GOR {}, travel time {} days, pressure {} psi), "
                     "largest change of ln k {}, {}, left {}{}",
                     match.accepted.size() + (remark.empty() ? 0 : 1), s.options.hmIterationLimit,
                     number(run.judged, 4), number(sumOver(run, quantity::Cut), 5),
                     number(sumOver(run, quantity::GasOilRatio), 5), number(run.shiftRms, 4),
                     number(run.pressure, 4), number(run.largestChange, 3), hours(elapsed),
                     hours(elapsed / std::max(1, match.runs) * left), remark));
}

double largestChange(const MatchRecord& match, double share) {
    double largest = 0.0;
    for (const double change : match.dlnk.cells()) largest = std::max(largest, std::abs(change));
    return share * largest;
}

/// A file of the user's own goes ahead of the rates in the deck.
void tellObserved(const Simulation& s) {
    if (s.match.observedGiven && s.options.useHistoryControls)
        warn(s.console,
             "WARNING :: WELL_OBSERVED.DATA stands in the folder and is matched, not the rates of "
             "WCONHIST and WCONINJH; without it the file is made of them");
}

/// Lines end where cells are joined that are not neighbours, and so does what they know of the rock.
void tellFurther(const Simulation& s) {
    const auto isByLines = [](SensitivityForm form) { return form != SensitivityForm::Adjoint; };
    if (s.connections.further.empty() ||
        !(isByLines(s.options.travelTimeForm) || isByLines(s.options.pressureForm)))
        return;
    warn(s.console,
         "WARNING :: SENSITIVITIES OF LINES LEAVE OUT CONNECTIONS OF CELLS THAT ARE NOT NEIGHBOURS, SNSFORM "
         "ADJOINT COUNTS THEM");
}

bool grows(const MatchRecord& match, const RunMisfit& run) {
    return !match.accepted.empty() && !(run.judged <= match.accepted.back().judged);
}

/// The update again, half as large, or another one of the most probable field; or the field before it where
/// that has been done often enough. That ends the match, since the same field would ask for the same update;
/// a last run leaves the files of the field.
bool tryAgain(Simulation& s, const RunMisfit& run) {
    MatchRecord& match = s.match;
    if (match.halvings >= s.options.matchHalvings) {
        tellRun(s, run, " :: grown, the update is put back and no other is left");
        std::fill(match.dlnk.slots.begin(), match.dlnk.slots.end(), 0.0);
        match.halvings = 0;
        match.ended = match.closingRun = true;
        takeUpdate(s);
        return true;
    }
    match.halvings += 1;
    tellRun(s, run,
            fmt::format(" :: grown, the update is {} ({} of {})",
                        s.options.mostProbable ? "asked for anew" : "halved", match.halvings,
                        s.options.matchHalvings));
    if (s.options.mostProbable)
        askAgain(s);
    else
        takeUpdate(s);
    return true;
}

/// The next update. False: it is not to be run.
bool update(Simulation& s) {
    const MatchStage stage = matchStage(s.options, s.clock.hmIteration);
    SL_SENSITIVITY(s, stage, rebuildSensitivities(s, stage));
    s.clock.hmIteration += 1;
    if (s.match.ended) {
        waitForLine(s.console);
        return false;
    }
    if (s.clock.hmIteration < s.options.hmIterationLimit) return true;
    s.match.lastUpdateMade = true;
    return s.options.matchFinalRun;
}

/// What a run asks for. False: nothing more is to be run.
bool judge(Simulation& s, RunMisfit& run) {
    MatchRecord& match = s.match;
    if (s.options.matchHalvings > 0 && grows(match, run)) return tryAgain(s, run);
    match.accepted.push_back(run);
    match.keptWells = match.wells;
    writeMatchTables(s, match.accepted.back());
    tellRun(s, run, "");
    if (match.lastUpdateMade) return false;
    return update(s);
}

void startAnew(Simulation& s) {
    s.match.levels.clear();
    rewindRun(s);
    s.course.tableBegun = false;
}

}  // namespace

void beginMatch(Simulation& s) {
    if (!s.options.historyMatch) return;
    s.match.startSeconds = wallSeconds();
    checkObserved(s);
    s.match.observedGiven = fileExists(s.options.workingFolder + "WELL_OBSERVED.DATA");
    s.match.prior = s.grid.PERMX;
    s.match.base = {s.grid.PERMX, s.grid.PERMY, s.grid.PERMZ};
    s.match.dlnk.assign(s.grid.NCELLS, 0.0);
    if (!s.options.permFileTarget.empty())
        s.match.permFile = readPermFile(s.console, s.options.permFileTarget, s.grid.NCELLS);
    keepRunStart(s);
    const ResumeState resumed = readMatchResume(s);
    tellObserved(s);
    tellFurther(s);
    switch (resumed) {
        case ResumeState::None:
            break;
        case ResumeState::Foreign:
            tell(s.console,
                 "The match in KVR_HM_Resume.bin is of another deck or other data: a new one begins");
            break;
        case ResumeState::Taken:
            tell(s.console, fmt::format("The match goes on behind {} runs (KVR_HM_Resume.bin)",
                                        s.match.accepted.size()));
            writeMatchTables(s, s.match.accepted.back());
            takeUpdate(s);
            return startAnew(s);
    }
    writeFirstMaps(s);
}

bool goOnMatching(Simulation& s) {
    if (!s.options.historyMatch) return false;
    MatchRecord& match = s.match;
    match.runs += 1;
    readResponse(s);
    if (match.closingRun) {
        removeMatchResume(s);
        return false;
    }
    RunMisfit run;
    run.largestChange = largestChange(match, updateShare(s));
    run.halvings = match.halvings;
    SL_MISFIT(s, run);
    if (s.options.mostProbable) rememberTried(s);
    if (!judge(s, run)) {
        removeMatchResume(s);
        return false;
    }
    writeMatchResume(s);
    startAnew(s);
    return true;
}

}  // namespace kvr
