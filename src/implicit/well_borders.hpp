#pragma once

#include "base/units.hpp"
#include "implicit/implicit_work.hpp"

#include <array>
#include <vector>

namespace kvr {

/// Lays out one border per well, with the rows of its connections. To be called when the wells have changed.
void buildWellBorders(const WellRecord& wells, ImplicitWork& work);

/// Adds the wells to an assembled system. A connection's rates are those of connectionCoefficients, with
/// their slopes by the cell's unknowns and by the bottom-hole pressure; heads are held. Row of a rate well:
///   controlled rate = TargetRate
/// A well at a held bottom-hole pressure has the row dBhp = 0, and so has one whose rate nothing moves.
void addWells(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
              const CellState& state, double averagePressure, const WellRecord& wells, ImplicitWork& work);

/// What one connection of a well gives, surface volumes a day by component (water, oil, gas with what is
/// dissolved), with the slopes by the unknowns of its cell and by the bottom-hole pressure.
struct ConnectionSlopes {
    int row = -1;                // of the cell
    std::size_t connection = 0;  // of the well
    std::array<double, 3> rate{}, byBhp{};
    std::array<std::array<double, 3>, 3> byUnknown{};  // [component][unknown]
    double controlled = 0.0;  // share of the controlled rate; 0 where the well holds none
};

/// Those of the connections that flow, as `addWells` takes them.
std::vector<ConnectionSlopes> connectionSlopes(const UnitSystem& units, const GridModel& grid,
                                               const FluidTables& tables, const CellState& state,
                                               double averagePressure, const Well& well,
                                               const ImplicitWork& work);

}  // namespace kvr
