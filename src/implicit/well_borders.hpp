#pragma once

#include "base/units.hpp"
#include "implicit/implicit_work.hpp"

namespace kvr {

/// Lays out one border per well, with the rows of its connections. To be called when the wells have changed.
void buildWellBorders(const WellRecord& wells, ImplicitWork& work);

/// Adds the wells to an assembled system. A connection's rates are those of connectionCoefficients, with
/// their slopes by the cell's unknowns and by the bottom-hole pressure; heads are held. Row of a rate well:
///   controlled rate = TargetRate
/// A well at a held bottom-hole pressure has the row dBhp = 0, and so has one whose rate nothing moves.
void addWells(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
              const CellState& state, double averagePressure, const WellRecord& wells, ImplicitWork& work);

}  // namespace kvr
