#pragma once

#include "base/console.hpp"
#include "deck/schedule.hpp"
#include "implicit/implicit_work.hpp"
#include "run/records/clock.hpp"
#include "run/records/stage_times.hpp"
#include "streamline/transport/line_newton.hpp"

namespace kvr {

/// Three lines that open every run, on the screen only.
void printProgramBanner(const Console& console);

/// The banner of the step from clock.time to clock.time + clock.dt; the log also gets the calendar date.
void printStepBanner(const Console& console, const Schedule& schedule, const RunClock& clock);

/// "UPDATE WELL SCHEDULE" between rows of dashes.
void printWellBanner(const Console& console);

/// Where the time went, a row per stage.
void printStageTimes(const Console& console, const StageTimes& times);

/// What the Newton loop of implicit lines took, behind the table of times; nothing where there were none.
void printLineNewton(const Console& console, const NewtonCounts& counts);

/// Steps, cuts and iterations of a fully implicit run, below the stages.
void printImplicitCounts(const Console& console, const ImplicitCounts& counts);

/// "END SIMULATION" and the processor seconds.
void printEnd(const Console& console, float cpuSeconds);

}  // namespace kvr
