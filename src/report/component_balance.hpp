#pragma once

#include "run/records/simulation.hpp"

#include <string>

namespace kvr {

/// Sums what the cells hold of each component, and what that gives at the surface by one flash of every
/// cell's mixture; the free gas is that of its vapour by a flash of its own. The first call is the start of
/// the balance.
void sumComponents(Simulation& simulation);

/// The sums in the form of all runs: `sums` comes with the pore volumes of the phases.
void takeComponentSums(const Simulation& simulation, InPlaceSums& sums);

/// 1 - (now - net inflow)/initial of component i (0-based) by moles; over what is there now where nothing
/// was at the start.
double componentError(const ComponentRun& components, int i);

/// The error of the component that is furthest off.
double worstComponentError(const ComponentRun& components);

/// Produced mole fraction of component i by the wells in the last step; `well` -1: by all producers. 0
/// without production.
double producedFraction(const Simulation& simulation, int i, int well);

/// Mass in place, lb, and moles, lb-mole.
struct ComponentSums {
    double mass = 0.0, moles = 0.0;
};
ComponentSums componentSums(const ComponentRun& components);

/// The blocks " Mole In Place **" of the report in the log.
void logComponents(const Simulation& simulation);

/// Row of KVR_Excl_mbec.xls: the row of the phases, then mass and error of each component.
std::string componentSheetRow(const Simulation& simulation);

}  // namespace kvr
