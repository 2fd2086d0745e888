#include "matching/travel_time_shift.hpp"

#include "base/constants.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace kvr {

namespace {

constexpr int ShiftSteps = 2500;  // to either side
constexpr int SlopeSweeps = 50;

double between(double x1, double x2, double y1, double y2, double place) {
    return x1 == x2 ? y1 : y1 + (y2 - y1) * ((place - x1) / (x2 - x1));
}

double totalVariation(std::span<const double> values) {
    double sum = 0.0;
    for (std::size_t i = 1; i < values.size(); ++i) sum += std::abs(values[i] - values[i - 1]);
    return sum;
}

/// Number of points that count under a shift.
std::size_t countedPoints(std::span<const double> times, double shift) {
    if (shift >= 0.0) return times.size();
    const auto end =
        std::find_if(times.begin(), times.end(), [&](double time) { return time - shift >= times.back(); });
    return static_cast<std::size_t>(end - times.begin());
}

/// The curve moved by the shift, at the first points of the times. Rising times take one walk over the curve
/// for all points.
void moveCurve(std::span<const double> times, std::span<const double> curve, double shift, bool rising,
               std::span<double> moved) {
    std::size_t low = 0;
    for (std::size_t i = 0; i < moved.size(); ++i) {
        const double place = times[i] - shift;
        if (!rising) {
            moved[i] = interpolateHeld(times, curve, place);
            continue;
        }
        while (low + 1 < times.size() && times[low + 1] < place) ++low;
        if (place <= times.front())
            moved[i] = curve.front();
        else if (place >= times.back())
            moved[i] = curve.back();
        else
            moved[i] = between(times[low], times[low + 1], curve[low], curve[low + 1], place);
    }
}

double fitOf(std::span<const double> observed, std::span<const double> moved) {
    const auto count = static_cast<double>(observed.size());
    double mean = 0.0, residual = 0.0, spread = 0.0, largest = 0.0;
    for (const double value : observed) {
        mean += value / count;
        largest = std::max(largest, std::abs(value));
    }
    for (std::size_t i = 0; i < observed.size(); ++i) {
        residual += (observed[i] - moved[i]) * (observed[i] - moved[i]);
        spread += (observed[i] - mean) * (observed[i] - mean);
    }
    // A plateau has no spread, but its mean is rounded.
    const double rounding = count * MachineEpsilon * largest;
    return spread > count * rounding * rounding ? 1.0 - residual / spread : 0.0;
}

}  // namespace

double interpolateHeld(std::span<const double> x, std::span<const double> y, double place) {
    if (x.empty()) return 0.0;
    const bool rises = x.back() >= x.front();
    if (rises ? place <= x.front() : place >= x.front()) return y.front();
    if (rises ? place >= x.back() : place <= x.back()) return y.back();
    for (std::size_t i = 1; i < x.size(); ++i)
        if (rises ? place <= x[i] : place >= x[i]) return between(x[i - 1], x[i], y[i - 1], y[i], place);
    return y.back();
}

double sumOfDifferences(std::span<const double> observed, std::span<const double> calculated) {
    double sum = 0.0;
    for (std::size_t i = 0; i < observed.size(); ++i) sum += std::abs(observed[i] - calculated[i]);
    return sum;
}

TimeShift travelTimeShift(std::span<const double> times, std::span<const double> observed,
                          std::span<const double> calculated) {
    TimeShift best;
    if (times.empty() || sumOfDifferences(observed, calculated) < MachineEpsilon) return best;
    if (totalVariation(calculated) < MachineEpsilon || totalVariation(observed) < MachineEpsilon) return best;
    const double step = (times.back() - times.front()) / ShiftSteps;
    const bool rising = std::is_sorted(times.begin(), times.end());
    std::vector<double> moved(times.size());
    for (int s = -ShiftSteps; s <= ShiftSteps; ++s) {
        const double shift = s * step;
        const std::size_t count = countedPoints(times, shift);
        const std::span<double> counted(moved.data(), count);
        moveCurve(times, calculated, shift, rising, counted);
        const double fit = fitOf(observed.first(count), counted);
        if (fit > best.fit && fit <= 1.0) best = {shift, fit};
    }
    return best;
}

double steepestRise(std::span<const double> times, std::span<const double> calculated) {
    if (times.size() < 2) return 0.0;
    std::vector<double> slope(times.size(), 0.0);
    for (std::size_t i = 1; i < slope.size(); ++i) {
        const double interval = times[i] - times[i - 1];
        slope[i] = interval == 0.0 ? 0.0 : (calculated[i] - calculated[i - 1]) / interval;
    }
    for (int sweep = 0; sweep < SlopeSweeps; ++sweep)
        for (std::size_t i = 1; i + 1 < slope.size(); ++i)
            slope[i] = (slope[i - 1] + slope[i] + slope[i + 1]) / 3.0;
    return *std::max_element(slope.begin(), slope.end());
}

}  // namespace kvr
