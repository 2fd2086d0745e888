#include "matching/adjoint_rows.hpp"

#include "base/messages.hpp"
#include "run/records/clock.hpp"

namespace kvr {

namespace {

/// The level that ends each report; as many as there are levels where none does.
std::vector<std::size_t> levelsOfReports(std::span<const RunLevel> levels,
                                         std::span<const double> reportEnds) {
    std::vector<std::size_t> places;
    for (const double end : reportEnds) {
        std::size_t n = 0;
        while (n < levels.size() && !sameTime(levels[n].time, end)) ++n;
        places.push_back(n);
    }
    return places;
}

void solveAdjoints(const Simulation& s, std::span<const WellFunctional> functionals,
                   std::vector<CellArray<double>>& derivatives) {
    if (!adjointDerivatives(s, s.match.levels, functionals, derivatives))
        warn(s.console, "WARNING :: A SYSTEM OF THE ADJOINTS IS NOT SOLVED, SENSITIVITIES ARE INCOMPLETE");
}

}  // namespace

bool usesAdjoints(const RunOptions& options) {
    return (options.historyMatch || options.outputSensitivity) &&
           (options.travelTimeForm == SensitivityForm::Adjoint ||
            options.pressureForm == SensitivityForm::Adjoint);
}

bool leavesAdjoints(const RunOptions& options) {
    return usesAdjoints(options) && (options.outputSensitivity || !options.mostProbable);
}

void keepRunLevel(double dt, Simulation& s) {
    if (usesAdjoints(s.options) && dt > 0.0) s.match.levels.push_back(levelOf(s, dt));
}

std::vector<CellArray<double>> reportDerivatives(const Simulation& s, WellQuantity quantity) {
    const std::vector<RunLevel>& levels = s.match.levels;
    std::vector<WellFunctional> functionals;
    for (const std::size_t place : levelsOfReports(levels, s.schedule.reportEnd))
        for (const Well& well : s.wells.wells) {
            functionals.push_back({well.WellName, quantity, std::vector<double>(levels.size(), 0.0)});
            const bool shows = quantity == WellQuantity::Pressure || !isInjector(well);
            if (shows && place < levels.size()) functionals.back().weights[place] = 1.0;
        }
    std::vector<CellArray<double>> derivatives;
    solveAdjoints(s, functionals, derivatives);
    return derivatives;
}

void addAdjointRows(const Simulation& s, WellQuantity quantity, std::span<const HistoryDatum> data,
                    std::size_t before, ErrorData& to) {
    const std::vector<RunLevel>& levels = s.match.levels;
    const std::vector<std::size_t> places = levelsOfReports(levels, s.schedule.reportEnd);
    std::vector<WellFunctional> functionals;
    for (const HistoryDatum& datum : data) {
        WellFunctional functional{s.match.wells[datum.well].name, quantity,
                                  std::vector<double>(levels.size(), 0.0)};
        for (std::size_t report = 0; report < places.size(); ++report)
            if (places[report] < levels.size()) functional.weights[places[report]] += datum.weights[report];
        functionals.push_back(std::move(functional));
    }
    std::vector<CellArray<double>> derivatives;
    solveAdjoints(s, functionals, derivatives);
    appendRows(std::move(derivatives), s.grid.Active, data, before, to);
}

}  // namespace kvr
