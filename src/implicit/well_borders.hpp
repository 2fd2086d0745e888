#pragma once

#include "base/units.hpp"
#include "implicit/implicit_work.hpp"

namespace kvr {

/// Lays out one border per well, with the rows of its connections. To be called when the wells have changed.
void buildWellBorders(const WellRecord& wells, ImplicitWork& work);

/// What the row of a rate well sums, as shares of its phase rates: the rate that its control holds at the
/// target. "wrat" holds the sum of all surface rates there, as in the pressure equation.
struct ControlShares {
    double water = 0.0, oil = 0.0, gas = 0.0, reservoir = 0.0;
};
ControlShares controlShares(const Well& well);
/// The rate itself, from the well's sums.
double controlledRate(const Well& well);

/// Adds the wells to an assembled system. A connection's rates are those of connectionCoefficients, with
/// their slopes by the cell's unknowns and by the bottom-hole pressure; heads are held. Row of a rate well:
///   controlled rate = TargetRate
/// A well at a held bottom-hole pressure has the row dBhp = 0. A rate well whose controlled rate no
/// bottom-hole pressure would change is driven past its limit, where the limits take it over.
void addWells(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
              const CellState& state, double averagePressure, const WellRecord& wells, ImplicitWork& work);

}  // namespace kvr
