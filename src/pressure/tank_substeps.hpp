#pragma once

#include "pressure/stirred_tank.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace kvr {

/// What bounds the substeps of a tank by the saturations that they lead through.
struct LocalSlopes {
    const RegionSlopes* region = nullptr;  // none: the steepest rise holds
    double through = 0.0;                  // reservoir volume a day
    double pull = 0.0;                     // sum of |pull| * flow, cp volume a day
    double steepest = 0.0;                 // bound of what gravity makes of them, volume a day
};

struct SubstepLimit {
    static constexpr double Courant = 0.8;     // below 1 no component is overdrawn by its own flow
    static constexpr double LeastSlope = 1.0;  // of a fractional flow, that substeps go by
};

/// Length of a substep by the steepest rise of all: even parts of the step.
double substepOf(const TankFluid& fluid, double through, double dt, double slope);

/// Those of a tank whose throughflow is `through`; none where its region has no bins, or tables of its own.
LocalSlopes localSlopes(const FractionSlopes& slopes, const FluidTables& tables, const TankFluid& fluid,
                        double through, double steepest, std::span<const BuoyantFlow> buoyant);

/// Even parts of `days`, of at most `longest` each.
inline double evenPart(double longest, double days) {
    return days / std::max(1.0, std::ceil(days / longest));
}

/// Rise of what leaves with saturation between two of them, volume a day.
inline double riseBetween(const LocalSlopes& slopes, double a, double b) {
    const SlopeRange range = steepestBetween(*slopes.region, a, b);
    const double rise =
        slopes.through * std::max(SubstepLimit::LeastSlope, range.flow) + slopes.pull * range.exchange;
    return std::min(rise, slopes.steepest);
}

/// Length of a substep from Sw at which water comes in the place of oil by `gain` pore volumes a day.
inline double localSubstep(const LocalSlopes& slopes, const TankFluid& fluid, double Sw, double gain,
                           double left) {
    const double volume = SubstepLimit::Courant * fluid.poreVolume;
    const double first = std::min(left, volume / riseBetween(slopes, Sw, Sw));
    return evenPart(volume / riseBetween(slopes, Sw, Sw + first * gain), left);
}

/// The immobile parts in the volume that is held. A step of compression leaves it apart from the pore volume
/// by more than what may be mobile.
ConservedAmounts floorIn(const TankFluid& fluid, const ConservedAmounts& floor, const ConservedAmounts& held);

/// Length of a substep of at most `length` days in which water or oil leave by gravity too. The fraction of
/// water then rises to 1 within a little of what is mobile, as steep as gravity is strong against the flow:
/// no slope of the curves without it bounds what a substep would take.
double lengthUnderGravity(double length, const ConservedAmounts& held, const ConservedAmounts& floor,
                          const ConservedAmounts& loss);

/// Share of what leaves at the end of a substep in its mean, the rest is of its start. Where the flow of a
/// component out of a tank rises in line with what it holds, by `rise` of what it gains at the start over
/// the substep, that is that of the exponential: (1 - (1 - exp(-z)) / z) / z.
inline double weightOfEnd(double rise) {
    // No number where nothing is gained. Up to 1 the series errs by less than 2e-4.
    const double z = rise > 0.0 ? std::min(rise, 1.0) : 0.0;
    return 1.0 / 2.0 - z * (1.0 / 6.0 - z * (1.0 / 24.0 - z * (1.0 / 120.0 - z / 720.0)));
}

}  // namespace kvr
