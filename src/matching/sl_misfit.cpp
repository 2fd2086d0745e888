#include "matching/sl_misfit.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "eclipse/file_names.hpp"
#include "matching/run_misfit.hpp"
#include "matching/well_series_reader.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr std::string_view ObservedFile = "WELL_OBSERVED.DATA";

/// Observed histories stand where the results go, or else beside the deck.
const std::string& observedFolder(const RunOptions& options) {
    const bool here = fileExists(options.workingFolder + std::string(ObservedFile));
    return here ? options.workingFolder : outsideFolder(options);
}

bool underPressureControl(const WellRecord& wells, const std::string& name) {
    return std::any_of(wells.wells.begin(), wells.wells.end(),
                       [&](const Well& well) { return well.WellName == name && well.WellControl == "bhp"; });
}

/// Amplitudes count as matched where the time that stands for them is below the criterion of times.
double beyondAmplitude(const MisfitSettings& settings, const MeasuredMisfit& found) {
    if (found.slope <= 0.0) return 0.0;
    return std::abs(found.mean) / found.slope < settings.criterionWct ? 0.0 : found.mean;
}

void measureWell(const Simulation& s, const MisfitSettings& settings, WellMatch& well, WellMisfit& misfit) {
    const MeasuredMisfit found =
        measureMisfit(s.console, settings, underPressureControl(s.wells, well.name), well);
    well.slope = found.slope;
    well.amplitude = s.options.amplitudeMatching ? beyondAmplitude(settings, found) : 0.0;
    misfit.shift = found.shift;
    misfit.pressure = found.pressure;
    misfit.matched = found.matched;
    misfit.slope = found.slope;
    sumMisfits(well, settings.component, misfit);
}

/// One line for each well and time.
void logPoints(const Console& console, const MisfitSettings& settings, const std::vector<WellMatch>& wells) {
    std::size_t steps = 0;
    for (const WellMatch& well : wells) steps = std::max(steps, well.obs.count());
    for (std::size_t step = 0; step < steps; ++step) {
        log(console, "STEP : {}", step + 1);
        for (const WellMatch& well : wells)
            if (step < well.obs.count())
                log(console, " {:<8} {} {} {} {} {}", well.name, number(well.obs.time[step]),
                    number(matchedCurve(settings, well.obs)[step]),
                    number(matchedCurve(settings, well.cal)[step]), number(well.obs.pressure[step]),
                    number(well.cal.pressure[step]));
    }
}

void tellHead(const Console& console) {
    lineToBoth(console, " --------------------------------------------");
    lineToBoth(console, "-- INVERSION OPTION is TRUE, Run Inversion --");
    lineToBoth(console, "Start analyzing saved information...");
}

std::vector<WellSeries> readObserved(const Simulation& s, const std::vector<std::string>& names) {
    return readWellSeries(s.console, observedFolder(s.options), WellDataSide::Observed, names,
                          s.options.componentCount);
}

/// Without a point to go by nothing can be matched.
void requireData(const Console& console, bool any) {
    if (any) return;
    both(console, "ERROR :: {} HAS NO PRODUCER OF THE RUN WITH TWO POINTS OR MORE", ObservedFile);
    hardStop(console);
}

}  // namespace

std::vector<std::string> producerNames(const WellRecord& wells) {
    std::vector<std::string> names;
    for (const Well& well : wells.wells)
        if (!isInjector(well)) names.push_back(well.WellName);
    return names;
}

void checkObserved(const Simulation& s) {
    if (s.options.useHistoryControls || s.options.traceFromRestart) return;
    const std::vector<WellSeries> observed = readObserved(s, producerNames(s.wells));
    requireData(s.console, std::any_of(observed.begin(), observed.end(),
                                       [](const WellSeries& well) { return well.count() > 1; }));
}

void SL_MISFIT(Simulation& s, RunMisfit& run) {
    const RunOptions& options = s.options;
    tellHead(s.console);
    const std::vector<std::string> names = producerNames(s.wells);
    const std::vector<WellSeries> observed = readObserved(s, names);
    const std::vector<WellSeries> calculated = readWellSeries(
        s.console, options.workingFolder, WellDataSide::Calculated, names, options.componentCount);
    const MisfitSettings settings = misfitSettings(options);
    s.match.wells.clear();
    run.wells.assign(names.size(), {});
    for (std::size_t w = 0; w < names.size(); ++w) {
        s.match.wells.push_back(alignSeries(s.console, observed[w], calculated[w]));
        measureWell(s, settings, s.match.wells.back(), run.wells[w]);
    }
    requireData(s.console, std::any_of(s.match.wells.begin(), s.match.wells.end(),
                                       [](const WellMatch& well) { return well.obs.count() > 1; }));
    totalMisfits({options.objectiveWeightWct, options.objectiveWeightBhp, settings.criterionWct},
                 s.match.accepted, run);
    logPoints(s.console, settings, s.match.wells);
    if (s.match.firstWells.empty()) s.match.firstWells = s.match.wells;
}

}  // namespace kvr
