#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Whether a cell holds free gas.
bool holdsFreeGas(const GridModel& grid, const CellState& state);

/// Figures of the step that has just been attempted.
AttemptFigures measureStep(const Simulation& simulation);

/// AttemptFigures::mobilityLag of a step of components, from the state of the step's level.
double lagOfComponentStep(const Simulation& simulation);

/// The same of the mobilities that the pressure of a step of components was solved with, from the means over
/// the step that its transport has found.
double errorOfComponentMobilities(const Simulation& simulation);

/// AttemptFigures::mobilityLag of the fully implicit step that has just been taken.
double lagOfImplicitStep(const Simulation& simulation);

/// Figures of an attempt that found no pressure.
AttemptFigures unsolvedStep(const Simulation& simulation);

/// Sets the factors of the targets by what the wells have really given in the last step: the rate that
/// mobilities promised over the rate that came out.
void correctTargets(WellRecord& wells);

}  // namespace kvr
