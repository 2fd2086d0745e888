#include "pressure/tank_substeps.hpp"

#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double MobileShare = 0.4;  // of what is mobile that a substep takes by gravity ...
constexpr double LeastPart = 1e-3;   // ... of a substep without it, at the least
constexpr double Rounding = 1e-9;    // of all that is held: to lose no more than that is to keep it

/// Days in which a component loses MobileShare of what is above its immobile part; no bound where what goes
/// in all of `length` days is within `rounding`, as it is of what is immobile, or not there, to the last
/// digits.
double daysAbove(double length, double held, double floor, double loss, double rounding) {
    return length * loss > rounding ? MobileShare * std::max(0.0, held - floor) / loss : HUGE_VAL;
}

}  // namespace

double substepOf(const TankFluid& fluid, double through, double dt, double slope) {
    return dt / std::max(1.0, std::ceil(dt * through * slope / (SubstepLimit::Courant * fluid.poreVolume)));
}

LocalSlopes localSlopes(const FractionSlopes& slopes, const FluidTables& tables, const TankFluid& fluid,
                        double through, double steepest, std::span<const BuoyantFlow> buoyant) {
    const bool served = hasRegionTable(tables, fluid.cell);
    if (slopes.regions.empty() || !served) return {};
    LocalSlopes local{&slopes.regions[static_cast<std::size_t>(fluid.region) - 1], through, 0.0, steepest};
    for (const BuoyantFlow& face : buoyant) local.pull += std::abs(face.pull) * face.flow;
    return local;
}

ConservedAmounts floorIn(const TankFluid& fluid, const ConservedAmounts& floor,
                         const ConservedAmounts& held) {
    const double filled = volumeOf(fluid, held) / fluid.poreVolume;
    return {filled * floor.water, filled * floor.oil, filled * floor.gas};
}

double lengthUnderGravity(double length, const ConservedAmounts& held, const ConservedAmounts& floor,
                          const ConservedAmounts& loss) {
    const double rounding = Rounding * (held.water + held.oil);
    const double days = std::min(daysAbove(length, held.water, floor.water, loss.water, rounding),
                                 daysAbove(length, held.oil, floor.oil, loss.oil, rounding));
    return std::clamp(days, LeastPart * length, length);
}

}  // namespace kvr
