#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Sets relative permeabilities and mobilities to those of the mean of a step of `dt` days that is about to
/// start, so that the pressure is solved with them: the present amounts are moved on by the step with the
/// flow field of the step before, as cells without lines, then by what gravity and capillarity exchanged in
/// that step, at the same rates, and put back; mobilities are those at the mean of the saturations before
/// and behind. With mobilities of its start a step is right to first order in its length, with these to
/// second order. Half a step of transport would not do: where phases part faster than a step it mixes them
/// most in its first half. Saturations, amounts and rates stay. Keeps the change in
/// PressureStage::mobilityRatio.
void forecastMobilities(double dt, Simulation& simulation);

}  // namespace kvr
