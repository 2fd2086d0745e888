#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "matching/well_series.hpp"

#include <span>
#include <string>
#include <vector>

namespace kvr {

/// What one well's history says of the model: one number for what it produces, one for its pressure.
struct WellMatch {
    std::string name;
    double shift = 0.0;       // travel time, days; above 0: the model is early. 0: not to be matched
    double misfit_bhp = 0.0;  // mean of observed minus calculated, psi; 0: not to be matched
    double amplitude = 0.0;   // mean of observed minus calculated of the matched curve, where amplitudes are
                              // matched in place of travel times; 0: not to be matched
    double slope = 0.0;       // steepest rise of the calculated curve, a day
    double multiplier_wct = 1.0, multiplier_bhp = 1.0;  // of the well's rows of sensitivities
    WellSeries obs, cal;                                // at the same times
};

/// Which curve gives the shift.
enum class MatchedQuantity { Cut, GasOilRatio, Fraction };

struct MisfitSettings {
    MatchedQuantity quantity = MatchedQuantity::Cut;
    int component = 1;           // of Fraction, 1-based
    double weightBhp = 1.0;      // 0 to 1: only later times of the history count
    double criterionWct = 10.0;  // days; shifts below it count as matched
    double criterionBhp = 10.0;  // psi, likewise
};

/// Mole fractions in a compositional run, else as HMDATA says: water cut where water is active, else
/// gas-oil ratio.
MisfitSettings misfitSettings(const RunOptions& options);

/// Mean of observed minus calculated. Pressures of 0 or less are not measured and do not count; none: 0.
double meanPressureDifference(std::span<const double> observed, std::span<const double> calculated);

/// The same over the points whose time, as a share of the last one, is above `weight`. A weight of 1 leaves
/// none: 0.
double latePressureDifference(std::span<const double> times, std::span<const double> observed,
                              std::span<const double> calculated, double weight);

/// 0 where |misfit| is below the criterion.
double beyondCriterion(double misfit, double criterion);

/// Brings a well's histories to the times of the observed one: calculated values between two times are
/// interpolated, observed points outside the calculated times are left out, which a warning tells.
WellMatch alignSeries(const Console& console, const WellSeries& observed, const WellSeries& calculated);

/// The curve of a history that gives the shift.
const std::vector<double>& matchedCurve(const MisfitSettings& settings, const WellSeries& series);

/// Misfits of a well before the criteria are applied.
struct MeasuredMisfit {
    double shift = 0.0;     // days
    double pressure = 0.0;  // psi, over the points that the weight leaves
    double matched = 0.0;   // sum of |observed - calculated| of the matched curve
    double mean = 0.0;      // mean of observed minus calculated of the matched curve
    double slope = 0.0;     // steepest rise of the calculated one, a day
};

/// Shift and pressure misfit of a well, told line by line. `pressureControlled`: a well under "bhp" control
/// has no pressure misfit. Wells with less than two points, which a warning tells, have neither.
MeasuredMisfit measureMisfit(const Console& console, const MisfitSettings& settings, bool pressureControlled,
                             WellMatch& well);

}  // namespace kvr
