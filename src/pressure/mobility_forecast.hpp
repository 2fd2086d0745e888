#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Sets relative permeabilities and mobilities to those of the middle of a step of `dt` days that is about
/// to start, so that the pressure is solved with them: the present amounts are moved on by half the step
/// with the flow field and the rates of the step before, as cells without lines, and put back. With
/// mobilities of its start a step is right to first order in its length, with these to second order
/// (midpoint rule). Saturations, amounts and rates stay. Keeps the change in PressureStage::mobilityRatio.
void forecastMobilities(double dt, Simulation& simulation);

}  // namespace kvr
