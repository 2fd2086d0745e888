#include "pressure/tank_substeps.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double Courant = 0.8;      // of a substep: below 1 no component is overdrawn by its own flow
constexpr double LeastSlope = 1.0;   // of a fractional flow, that substeps go by
constexpr double MobileShare = 0.4;  // of what is mobile that a substep takes by gravity ...
constexpr double LeastPart = 1e-3;   // ... of a substep without it, at the least
constexpr double Rounding = 1e-9;    // of what is held: to lose no more than that is to keep it

/// Even parts of `days`, of at most `longest` each.
double evenPart(double longest, double days) {
    return days / std::max(1.0, std::ceil(days / longest));
}

/// Rise of what leaves with saturation between two of them, volume a day.
double riseBetween(const LocalSlopes& slopes, double a, double b) {
    const SlopeRange range = steepestBetween(*slopes.region, a, b);
    const double rise = slopes.through * std::max(LeastSlope, range.flow) + slopes.pull * range.exchange;
    return std::min(rise, slopes.steepest);
}

/// Days in which a component loses MobileShare of what is above its immobile part; no bound where all of
/// `length` days take no more than rounding, as they do from what is immobile to the last digits.
double daysAbove(double length, double held, double floor, double loss) {
    return length * loss > Rounding * held ? MobileShare * std::max(0.0, held - floor) / loss : HUGE_VAL;
}

}  // namespace

double substepOf(const TankFluid& fluid, double through, double dt, double slope) {
    return dt / std::max(1.0, std::ceil(dt * through * slope / (Courant * fluid.poreVolume)));
}

LocalSlopes localSlopes(const FractionSlopes& slopes, const FluidTables& tables, const TankFluid& fluid,
                        double through, double steepest, std::span<const BuoyantFlow> buoyant) {
    const bool served = tables.RegionTableCell.empty() || tables.RegionTableCell[fluid.cell] != 0;
    if (slopes.regions.empty() || !served) return {};
    LocalSlopes local{&slopes.regions[static_cast<std::size_t>(fluid.region) - 1], through, 0.0, steepest};
    for (const BuoyantFlow& face : buoyant) local.pull += std::abs(face.pull) * face.flow;
    return local;
}

double localSubstep(const LocalSlopes& slopes, const TankFluid& fluid, double Sw, double gain, double left) {
    const double volume = Courant * fluid.poreVolume;
    const double first = std::min(left, volume / riseBetween(slopes, Sw, Sw));
    return evenPart(volume / riseBetween(slopes, Sw, Sw + first * gain), left);
}

ConservedAmounts floorIn(const TankFluid& fluid, const ConservedAmounts& floor,
                         const ConservedAmounts& held) {
    const double filled = volumeOf(fluid, held) / fluid.poreVolume;
    return {filled * floor.water, filled * floor.oil, filled * floor.gas};
}

double lengthUnderGravity(double length, const ConservedAmounts& held, const ConservedAmounts& floor,
                          const ConservedAmounts& loss) {
    const double days = std::min(daysAbove(length, held.water, floor.water, loss.water),
                                 daysAbove(length, held.oil, floor.oil, loss.oil));
    return std::clamp(days, LeastPart * length, length);
}

double weightOfEnd(double rise) {
    // No number where nothing is gained. Up to 1 the series errs by less than 2e-4.
    const double z = rise > 0.0 ? std::min(rise, 1.0) : 0.0;
    return 1.0 / 2.0 - z * (1.0 / 6.0 - z * (1.0 / 24.0 - z * (1.0 / 120.0 - z / 720.0)));
}

}  // namespace kvr
