#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// One step of clock.dt from the present state: pressure, transport, gravity and capillarity, repeated for
/// the global iterations. Under step control every attempt is measured and judged before it stands; one that
/// fails is put back and taken anew, shorter or fully implicitly. Leaves clock.dt and clock.workDt at the
/// length that was executed; the calendar is moved by the caller. `solve`: the pressure is to be solved anew.
void takeStep(bool solve, Simulation& simulation);

/// The mapping sub-steps of a step on its flow field; an attempt that has failed is not gone on with.
void saturationStage(Simulation& simulation);

/// The fully implicit method of the run itself is not judged from outside, it has its own attempts.
bool underStepControl(const RunOptions& options);

}  // namespace kvr
