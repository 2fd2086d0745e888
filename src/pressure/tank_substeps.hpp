#pragma once

#include "pressure/stirred_tank.hpp"

#include <span>

namespace kvr {

/// What bounds the substeps of a tank by the saturations that they lead through.
struct LocalSlopes {
    const RegionSlopes* region = nullptr;  // none: the steepest rise holds
    double through = 0.0;                  // reservoir volume a day
    double pull = 0.0;                     // sum of |pull| * flow, cp volume a day
    double steepest = 0.0;                 // bound of what gravity makes of them, volume a day
};

/// Length of a substep by the steepest rise of all: even parts of the step.
double substepOf(const TankFluid& fluid, double through, double dt, double slope);

/// Those of a tank whose throughflow is `through`; none where its region has no bins, or tables of its own.
LocalSlopes localSlopes(const FractionSlopes& slopes, const FluidTables& tables, const TankFluid& fluid,
                        double through, double steepest, std::span<const BuoyantFlow> buoyant);

/// Length of a substep from Sw at which water comes in the place of oil by `gain` pore volumes a day.
double localSubstep(const LocalSlopes& slopes, const TankFluid& fluid, double Sw, double gain, double left);

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
double weightOfEnd(double rise);

}  // namespace kvr
