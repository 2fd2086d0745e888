#include "matching/well_match.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"
#include "deck/matched_curve.hpp"
#include "matching/travel_time_shift.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

/// The lists of a history that stand beside its times, the fractions aside.
constexpr std::vector<double> WellSeries::*Lists[] = {&WellSeries::oil, &WellSeries::water,
                                                      &WellSeries::gas, &WellSeries::pressure,
                                                      &WellSeries::cut, &WellSeries::gasOilRatio};

std::vector<double> picked(const std::vector<double>& values, const std::vector<std::size_t>& places) {
    std::vector<double> result;
    result.reserve(places.size());
    for (const std::size_t place : places) result.push_back(values[place]);
    return result;
}

/// The history at some of its points.
WellSeries atPoints(const WellSeries& series, const std::vector<std::size_t>& points) {
    WellSeries result;
    result.name = series.name;
    result.time = picked(series.time, points);
    for (const auto list : Lists) result.*list = picked(series.*list, points);
    for (const std::vector<double>& fraction : series.fractions)
        result.fractions.push_back(picked(fraction, points));
    return result;
}

std::vector<double> interpolated(const std::vector<double>& from, const std::vector<double>& values,
                                 const std::vector<double>& times) {
    std::vector<double> result;
    result.reserve(times.size());
    for (const double time : times) result.push_back(interpolateHeld(from, values, time));
    return result;
}

WellSeries atTimes(const WellSeries& series, const std::vector<double>& times) {
    WellSeries result;
    result.name = series.name;
    result.time = times;
    for (const auto list : Lists) result.*list = interpolated(series.time, series.*list, times);
    for (const std::vector<double>& fraction : series.fractions)
        result.fractions.push_back(interpolated(series.time, fraction, times));
    return result;
}

/// Points of the observed history that the run has reached.
std::vector<std::size_t> reachedPoints(const WellSeries& observed, const WellSeries& calculated) {
    std::vector<std::size_t> points;
    if (calculated.time.empty()) return points;
    const auto [first, last] = std::minmax_element(calculated.time.begin(), calculated.time.end());
    for (std::size_t i = 0; i < observed.count(); ++i)
        if (observed.time[i] >= *first - TimeTolerance && observed.time[i] <= *last + TimeTolerance)
            points.push_back(i);
    return points;
}

/// Mean of observed minus calculated over the pressures that count, measured and of a well that is open.
template <class Counts>
double meanDifference(std::span<const double> observed, std::span<const double> calculated,
                      const Counts& counts) {
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < observed.size(); ++i) {
        if (observed[i] <= 0.0 || calculated[i] <= 0.0 || !counts(i)) continue;
        sum += observed[i] - calculated[i];
        ++count;
    }
    return count == 0 ? 0.0 : sum / static_cast<double>(count);
}

/// The misfit before its criterion.
double measurePressure(const Console& console, const MisfitSettings& settings, bool pressureControlled,
                       WellMatch& well) {
    const std::vector<double>&obs = well.obs.pressure, &cal = well.cal.pressure;
    const double whole = pressureControlled ? 0.0 : meanPressureDifference(obs, cal);
    both(console, " WBHP misfit : {} Wel: {}", number(whole), well.name);
    const double late =
        pressureControlled ? 0.0 : latePressureDifference(well.obs.time, obs, cal, settings.weightBhp);
    both(console, " Adjusted WBHP misfit after Weight: {}", number(late));
    well.misfit_bhp = beyondCriterion(late, settings.criterionBhp);
    return late;
}

}  // namespace

MisfitSettings misfitSettings(const RunOptions& options) {
    MisfitSettings settings;
    settings.quantity = matchesGasOilRatio(options) ? MatchedQuantity::GasOilRatio : MatchedQuantity::Cut;
    if (options.componentCount > 0) settings.quantity = MatchedQuantity::Fraction;
    settings.weightBhp = std::clamp(options.sensitivityTimeWeightBhp, 0.0, 1.0);
    settings.criterionWct = options.misfitCriterionWct;
    settings.criterionBhp = options.misfitCriterionBhp;
    return settings;
}

double meanPressureDifference(std::span<const double> observed, std::span<const double> calculated) {
    return meanDifference(observed, calculated, [](std::size_t) { return true; });
}

double latePressureDifference(std::span<const double> times, std::span<const double> observed,
                              std::span<const double> calculated, double weight) {
    if (times.empty()) return 0.0;
    const double end = *std::max_element(times.begin(), times.end());
    return meanDifference(observed, calculated, [&](std::size_t i) { return times[i] > weight * end; });
}

double beyondCriterion(double misfit, double criterion) {
    return std::abs(misfit) < criterion ? 0.0 : misfit;
}

WellMatch alignSeries(const Console& console, const WellSeries& observed, const WellSeries& calculated) {
    WellMatch well;
    well.name = observed.name;
    const std::vector<std::size_t> points = reachedPoints(observed, calculated);
    if (points.size() < observed.count())
        warn(console, "WARNING :: Well {}: {} of {} observed points are at times that the run does not reach",
             observed.name, observed.count() - points.size(), observed.count());
    well.obs = atPoints(observed, points);
    well.cal = atTimes(calculated, well.obs.time);
    return well;
}

const std::vector<double>& matchedCurve(const MisfitSettings& settings, const WellSeries& series) {
    if (settings.quantity == MatchedQuantity::Fraction)
        return series.fractions[static_cast<std::size_t>(settings.component) - 1];
    return settings.quantity == MatchedQuantity::Cut ? series.cut : series.gasOilRatio;
}

MeasuredMisfit measureMisfit(const Console& console, const MisfitSettings& settings, bool pressureControlled,
                             WellMatch& well) {
    MeasuredMisfit found;
    well.shift = well.misfit_bhp = 0.0;
    if (well.obs.count() < 2) {
        warn(console, "WARNING :: Well {} has {} observed points and is not matched", well.name,
             well.obs.count());
        return found;
    }
    const std::vector<double>& obs = matchedCurve(settings, well.obs);
    const std::vector<double>& cal = matchedCurve(settings, well.cal);
    found.matched = sumOfDifferences(obs, cal);
    both(console, " Sum(Abs( Obs - cal )) : {} Wel: {}", number(found.matched), well.name);
    found.shift = travelTimeShift(well.obs.time, obs, cal).days;
    both(console, " GTTI misfit : {} Wel: {}", number(found.shift), well.name);
    for (std::size_t i = 0; i < obs.size(); ++i)
        found.mean += (obs[i] - cal[i]) / static_cast<double>(obs.size());
    found.slope = steepestRise(well.obs.time, cal);
    well.shift = beyondCriterion(found.shift, settings.criterionWct);
    found.pressure = measurePressure(console, settings, pressureControlled, well);
    return found;
}

}  // namespace kvr
