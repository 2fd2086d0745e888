#include "optimization/rate_schedule.hpp"

#include "base/constants.hpp"
#include "base/written_files.hpp"
#include "eclipse/deck_text.hpp"
#include "eclipse/schedule_files.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Rows that are not among those in force.
std::vector<std::string> changedRows(const std::vector<std::string>& now,
                                     const std::vector<std::string>& before) {
    std::vector<std::string> changed;
    for (const std::string& row : now)
        if (std::find(before.begin(), before.end(), row) == before.end()) changed.push_back(row);
    return changed;
}

/// Ends of the steps of the file: changes and reports, none of them closer than times are equal.
std::vector<double> stepEnds(const Simulation& s) {
    std::vector<double> ends;
    for (const ControlSpan& span : s.optimization.spans) ends.push_back(span.start);
    for (const double report : s.schedule.reportEnd) ends.push_back(report);
    ends.push_back(s.clock.time);
    std::sort(ends.begin(), ends.end());
    std::vector<double> apart;
    for (const double end : ends) {
        const bool inside = end > TimeTolerance && end <= s.clock.time + TimeTolerance;
        if (inside && (apart.empty() || end > apart.back() + TimeTolerance)) apart.push_back(end);
    }
    return apart;
}

/// What the deck itself says at the begin of one of its steps. Wells of another source than its schedule, and
/// those of a keyword that other programs do not know, are defined anew.
void putDeckPart(const Simulation& s, std::size_t entry, std::FILE* file) {
    const ScheduleStep& step = s.schedule.steps[entry];
    const bool silent = std::all_of(s.schedule.steps.begin(), s.schedule.steps.end(),
                                    [](const ScheduleStep& one) { return one.source.empty(); });
    if (silent || !step.sourceHasWells) putDefinitions(s.units, step, file);
    std::fputs(step.source.c_str(), file);
}

/// The deck says something in its entries behind `before` up to `last`.
bool saysAnything(const Simulation& s, int before, int last) {
    const auto end = std::min(static_cast<std::size_t>(last), s.schedule.steps.size());
    for (auto n = static_cast<std::size_t>(before); n < end; ++n)
        if (!s.schedule.steps[n].source.empty()) return true;
    return false;
}

/// `passed`: entries of the deck's schedule that have been put. A traced run may pass several at once.
void putSpan(const Simulation& s, const ControlSpan& span, std::size_t& passed, std::FILE* file) {
    putTimeBanner(span.start, file);
    const auto entries = std::min(static_cast<std::size_t>(span.entry), s.schedule.steps.size());
    for (; passed < entries; ++passed) putDeckPart(s, passed, file);
    putKeyword("WCONINJE", span.injectors, file);
    putKeyword("WCONPROD", span.producers, file);
    putKeyword("WEFAC", span.efficiencies, file);
}

}  // namespace

void keepControls(int entry, Simulation& s) {
    OptimizationRecord& record = s.optimization;
    Console quiet;
    quiet.screen = nullptr;
    const ControlRows now = controlRows(quiet, s.units, s.wells);
    const bool begins = entry > record.entry;  // wells are built anew within an entry too, behind a limit
    if (begins && saysAnything(s, record.entry, entry)) {
        // All rows of the run follow those of the deck.
        record.injectorRows.clear();
        record.producerRows.clear();
        record.efficiencyRows.clear();
    }
    if (begins) record.entry = entry;
    ControlSpan span{s.clock.time, begins ? entry : 0, changedRows(now.injectors, record.injectorRows),
                     changedRows(now.producers, record.producerRows),
                     changedRows(now.efficiencies, record.efficiencyRows)};
    record.injectorRows = now.injectors;
    record.producerRows = now.producers;
    record.efficiencyRows = now.efficiencies;
    if (!begins && span.injectors.empty() && span.producers.empty() && span.efficiencies.empty()) return;
    record.spans.push_back(std::move(span));
}

void writeRateSchedule(const Simulation& s) {
    const OptimizationRecord& record = s.optimization;
    if (record.changes == 0) return;
    std::FILE* file = openBeside(s.console, s.outputs, OutputFile::RateSchedule);
    putRecord("RPTRST", "BASIC=2", file);
    const std::vector<double> ends = stepEnds(s);
    double time = record.spans.empty() ? 0.0 : record.spans.front().start;
    std::size_t next = 0, passed = 0;
    for (const ControlSpan& span : record.spans) {
        if (span.start >= s.clock.time - TimeTolerance) break;
        for (; next < ends.size() && ends[next] <= span.start + TimeTolerance; ++next) {
            if (ends[next] > time + TimeTolerance) putRecord("TSTEP", deckNumber(ends[next] - time), file);
            time = std::max(time, ends[next]);
        }
        putSpan(s, span, passed, file);
    }
    for (; next < ends.size(); ++next) {
        if (ends[next] > time + TimeTolerance) putRecord("TSTEP", deckNumber(ends[next] - time), file);
        time = std::max(time, ends[next]);
    }
    closeWhole(s.console, file);
    both(s.console, "RATE OPTIMISATION :: {} holds the rates of the run as a schedule",
         outputFileName(s.outputs.prefix, outputName(OutputFile::RateSchedule)));
}

}  // namespace kvr
