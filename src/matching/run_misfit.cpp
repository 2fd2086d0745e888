#include "matching/run_misfit.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

struct QuantityRow {
    std::size_t place;
    std::vector<double> WellSeries::*list;
};
constexpr QuantityRow Rows[] = {
    {quantity::Pressure, &WellSeries::pressure}, {quantity::GasOilRatio, &WellSeries::gasOilRatio},
    {quantity::Gas, &WellSeries::gas},           {quantity::Oil, &WellSeries::oil},
    {quantity::Cut, &WellSeries::cut},           {quantity::Water, &WellSeries::water},
};

void addDifferences(const std::vector<double>& observed, const std::vector<double>& calculated,
                    std::size_t place, WellMisfit& misfit) {
    for (std::size_t i = 0; i < observed.size(); ++i) {
        if (place == quantity::Pressure && (observed[i] <= 0.0 || calculated[i] <= 0.0)) continue;
        misfit.sum[place] += observed[i] - calculated[i];
        misfit.sumAbs[place] += std::abs(observed[i] - calculated[i]);
    }
}

}  // namespace

void sumMisfits(const WellMatch& well, int component, WellMisfit& misfit) {
    misfit.sum = misfit.sumAbs = {};
    for (const QuantityRow& row : Rows)
        addDifferences(well.obs.*row.list, well.cal.*row.list, row.place, misfit);
    const auto c = static_cast<std::size_t>(component) - 1;
    if (c < well.obs.fractions.size() && c < well.cal.fractions.size())
        addDifferences(well.obs.fractions[c], well.cal.fractions[c], quantity::Fraction, misfit);
}

void totalMisfits(const ObjectiveWeights& weights, std::span<const RunMisfit> before, RunMisfit& run) {
    run.shiftRms = run.shift = run.matched = run.pressure = 0.0;
    for (const WellMisfit& well : run.wells) {
        run.shiftRms += well.shift * well.shift;
        run.shift += std::abs(well.shift);
        run.matched += well.matched;
        run.pressure += std::abs(well.pressure);
    }
    if (!run.wells.empty()) run.shiftRms = std::sqrt(run.shiftRms / static_cast<double>(run.wells.size()));
    const RunMisfit& first = before.empty() ? run : before.front();
    double sum = 0.0, all = 0.0;
    const auto add = [&](double weight, double RunMisfit::*part) {
        if (!(first.*part > 0.0)) return;
        sum += weight * (run.*part / first.*part);
        all += weight;
    };
    add(0.5 * weights.cut, &RunMisfit::matched);
    const bool anyShift = std::any_of(first.wells.begin(), first.wells.end(), [&](const WellMisfit& well) {
        return std::abs(well.shift) >= weights.leastShift;
    });
    if (anyShift) add(0.5 * weights.cut, &RunMisfit::shift);
    add(weights.pressure, &RunMisfit::pressure);
    run.judged = all > 0.0 ? sum / all : 0.0;
}

}  // namespace kvr
