#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/aquifers.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/aquifer_record.hpp"
#include "pressure/wells/wells.hpp"

#include <vector>

namespace kvr {

/// How an aquifer gives over a step, linear in the pressure of the cells:
///   rate into cell i = share_i flow (pressure + density (depth_i - datum depth)/144 - p_i)
struct AquiferTerms {
    double flow = 0.0;      // surface volume a day and psi
    double pressure = 0.0;  // psia at the datum
};

/// Fetkovich (1971), an aquifer in a state of its own, mean rate over a step of dt:
///   pressure = p0 - W/(c V),  flow = J (1 - exp(-x))/x,  x = J dt/(c V)
/// with W given so far, c compressibility, V volume, J productivity.
AquiferTerms fetkovichTerms(const Aquifer& aquifer, double dt);

/// Carter and Tracy (1960), radial flow towards an inner border:
///   flow = B/(T (P - t P')),  pressure = p0 - W P'/B
/// at the dimensionless time t of the end of the step for P and P', and in the bracket that of its begin;
///   T = mu phi c r^2/(k CubicFeetPerBarrel DarcyConstant),  B = 2 pi h phi c r^2 angle/360
AquiferTerms carterTracyTerms(const Aquifer& aquifer, double dt);

/// Dimensionless pressure and its slope; the end segments of the table are extended.
struct Influence {
    double value = 0.0, slope = 0.0;
};
Influence influenceAt(const InfluenceTable& table, double time);

/// The dimensionless pressure of a circle without an outer border at constant rate, van Everdingen and Hurst
/// (1949).
InfluenceTable unboundedInfluence();

/// Cells, pressures and constants of the aquifers of the deck. What keeps one from flowing is told.
AquiferRecord startAquifers(const Console& console, const UnitSystem& units, const GridModel& grid,
                            const FluidTables& tables, const CellState& state, const GivenAquifers& given);

/// Puts the wells of the aquifers behind those of the deck.
void joinAquifers(AquiferRecord& record, WellRecord& wells);

/// Takes them back behind a step of `dt`, with what they have given.
void partAquifers(double dt, const CellState& state, AquiferRecord& record, WellRecord& wells);

/// Pressures and flows of their wells for a step of `dt` days.
void setAquiferTerms(double dt, const GridModel& grid, const AquiferRecord& record, WellRecord& wells);

}  // namespace kvr
