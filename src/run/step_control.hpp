#pragma once

#include "deck/options.hpp"
#include "run/records/step_record.hpp"

#include <string_view>

namespace kvr {

/// What becomes of an attempt.
enum class StepVerdict {
    Accepted,
    Shorter,  // put back, taken again with the given length
    Implicit  // put back, taken fully implicitly
};

/// Verdict on an attempt, with the length that follows from it and the figure that led to it.
struct StepJudgement {
    StepVerdict verdict = StepVerdict::Accepted;
    double length = 0.0;      // days: of the next attempt, or the longest that the next step may be
    std::string_view reason;  // name of the deciding figure
    double figure = 0.0, limit = 0.0;
};

/// Judges a step of `dt` days that has been rejected `cuts` times before: the figure that is furthest beyond
/// its limit decides. A step within all limits lets the next one grow by the share of the limits that is
/// left, at most threefold; one beyond a limit is shortened by the same rule; at the third time, beside
/// free gas at the first, or below the smallest step, it goes to the fully implicit method. The error of
/// mobility grows with the length to the power of `growth.order`, the others with its square.
StepJudgement judgeStep(const RunOptions& options, const AttemptFigures& figures,
                        const MobilityGrowth& growth, double dt, int cuts);

/// What an attempt of `dt` days adds to the knowledge of how the error of mobilities goes with the length:
/// the order goes half the way to ln(error/error before)/ln(dt/dt before), within bounds; nothing where the
/// two lengths are alike, or only one of the errors is that of a forecast.
void learnGrowth(const AttemptFigures& figures, double dt, MobilityGrowth& growth);

/// Whether the volume that cells did not hold is beyond its limit.
bool lacksTooMuch(const RunOptions& options, const AttemptFigures& figures);

/// The figures but those of the wells' rates, which another pass over the step may put right.
AttemptFigures beyondRepair(AttemptFigures figures);

/// Whether an attempt is within its limits but for its rates. Where it is not, neither another pass with
/// other targets nor the sub-steps ahead can save it.
bool mayStillStand(const RunOptions& options, const AttemptFigures& figures);

/// Whether an attempt in its mapping sub-steps is given up: cells lack too much, or, where the first
/// rejection is the last as it is beside free gas, anything that no rate can put right is beyond its limit.
bool isLost(const RunOptions& options, const AttemptFigures& figures);

/// Length of the next step: `dt` in even parts of at most `longest` days (0: no bound).
double evenPart(double longest, double dt);

/// Part of a `way` of days in steps of at most `longest`: these, or even ones where they would leave a
/// splinter behind them, as lengths do that a deck gives in a few digits.
double partWithoutSplinter(double longest, double way);

/// Days that the next step may last behind one of `dt` that was good: `found` of that step, or what was
/// allowed `before` it where the schedule left it far less: a splinter before a report says nothing against
/// it.
double allowedBehind(double found, double before, double dt);

/// Length in which a step that is handed to the fully implicit method is to be taken, of `dt` days over which
/// mobilities have changed by `lag` (AttemptFigures::mobilityLag): that method takes them at the step's end,
/// and is stable over any step but only of first order.
double implicitLength(double lag, double dt);

/// What the step behind such a one may be of its length.
double implicitGrowth(double lag);

/// Length of a step that starts without a past, at the start of the run and behind a well event.
double firstLength(double dt);

}  // namespace kvr
