#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Keeps the wells as they are controlled from now on, where they differ from before: a span of the schedule
/// that the run leaves. `entry`: 1-based place of the deck's schedule that begins here, 0 for none.
void keepControls(int entry, Simulation& simulation);

/// KVR_RateSchedule.DATA: the rates of the run as a schedule section of its own: at each of its steps what
/// the deck says, times aside, and behind it the controls of the run; the controls at each change; the steps
/// between changes and reports. Nothing where no rate has been changed.
void writeRateSchedule(const Simulation& simulation);

}  // namespace kvr
