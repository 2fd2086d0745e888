#include "run/step_control.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int MostCuts = 3;         // of one step, then it is taken fully implicitly
constexpr int MostCutsWithGas = 1;  // the same beside free gas, where phases come and go
constexpr double GasShare = 0.2;    // of the limits of a coupling beside free gas
constexpr double LagShare = 2.0;  // of the limit of mobilities not forecast: their error has no other source
constexpr double WholeLimit = 1.0;       // one cell's volume the next solve takes up, whatever it is made of
constexpr double LargestGrowth = 3.0;    // from step to step
constexpr double LargestCut = 0.1;       // of one rejection
constexpr double SmallestCut = 0.7;      // a rejected step is shortened at least to this share
constexpr double FirstShare = 0.1;       // of what the tables ask for, where a step has no past
constexpr double SplinterShare = 0.01;   // of MAXDT: a shorter rest of the way is shared out ...
constexpr double RoundedRest = 1e-9;     // ... but for what rounding leaves
constexpr double Safety = 0.8;           // of a length that a figure asks for
constexpr double ImplicitLag = 0.05;     // of mobilities in a fully implicit step: its error in time
constexpr double FailedSolveCut = 0.25;  // of a step whose pressure was not found

/// Share of a limit that holds for a step.
double shareOfLimit(double gasShare, double AttemptFigures::*figure, const AttemptFigures& figures) {
    const bool lags = figure == &AttemptFigures::mobilityError && !figures.forecast;
    return (figures.freeGas ? gasShare : 1.0) * (lags ? LagShare : 1.0);
}

/// A figure of a step with its limit.
struct Row {
    std::string_view name;
    double AttemptFigures::*figure;
    double RunOptions::*limit;
    double gasShare;  // of the limit, beside free gas
    double order;     // of the figure in the length of the step
};

constexpr double LeastLesson = 0.2;  // in the logarithm of a length, below it orders are noise
constexpr double LeastOrder = 0.4, LargestOrder = 1.5;  // of an error that one pair of lengths may show
constexpr double Quadratic = 2.0;                       // errors of a step
constexpr double ByTheFront = 0.0;  // as attempts of different lengths have shown, see MobilityGrowth

constexpr Row Rows[] = {
    {"volume error of the field", &AttemptFigures::volumeError, &RunOptions::stepVolumeError, GasShare,
     Quadratic},
    {"volume error of a cell", &AttemptFigures::largestVolumeError, &RunOptions::stepCellVolumeError,
     WholeLimit, Quadratic},
    {"volume that cells did not hold", &AttemptFigures::deficit, &RunOptions::stepDeficit, GasShare,
     Quadratic},
    {"rate over a target", &AttemptFigures::targetExcess, &RunOptions::stepTargetError, GasShare, Quadratic},
    {"rate away from the solved one", &AttemptFigures::targetMiss, &RunOptions::stepTargetMiss, GasShare,
     Quadratic},
    {"error of mobility", &AttemptFigures::mobilityError, &RunOptions::stepMobilityError, GasShare,
     ByTheFront},
};

/// What a step may be of its length for a figure to come to its limit, of which it has that share.
double askedOf(double share, double order) {
    if (!std::isfinite(share)) return 0.0;
    return share > 0.0 ? Safety / std::pow(share, 1.0 / order) : HUGE_VAL;
}

}  // namespace

StepJudgement judgeStep(const RunOptions& options, const AttemptFigures& figures,
                        const MobilityGrowth& growth, double dt, int cuts) {
    StepJudgement judgement;
    double worst = 0.0, asked = LargestGrowth;
    for (const Row& row : Rows) {
        const double limit = options.*row.limit * shareOfLimit(row.gasShare, row.figure, figures);
        const double share = figures.*row.figure / limit;
        asked = std::min(asked, askedOf(share, row.order == ByTheFront ? growth.order : row.order));
        if (std::isfinite(share) && share <= worst) continue;
        worst = std::isfinite(share) ? share : HUGE_VAL;
        judgement.reason = row.name;
        judgement.figure = figures.*row.figure;
        judgement.limit = limit;
    }
    if (!figures.pressureSolved) judgement.reason = "pressure without a solution";
    if (figures.pressureSolved && worst <= 1.0) {
        judgement.length = dt * std::clamp(asked, 1.0, LargestGrowth);
        return judgement;
    }
    const double cut = figures.pressureSolved ? std::clamp(asked, LargestCut, SmallestCut) : FailedSolveCut;
    judgement.length = dt * cut;
    const int most = figures.freeGas ? MostCutsWithGas : MostCuts;
    judgement.verdict = cuts + 1 >= most || judgement.length < options.stepSmallest ? StepVerdict::Implicit
                                                                                    : StepVerdict::Shorter;
    return judgement;
}

void learnGrowth(const AttemptFigures& figures, double dt, MobilityGrowth& growth) {
    const double error = figures.mobilityError;
    const auto counts = [](double one) { return std::isfinite(one) && one > 0.0; };
    const bool comparable =
        growth.length > 0.0 && counts(growth.error) && counts(error) && figures.forecast == growth.forecast;
    const double longer = comparable ? std::log(dt / growth.length) : 0.0;
    if (std::abs(longer) >= LeastLesson) {
        const double shown = std::clamp(std::log(error / growth.error) / longer, LeastOrder, LargestOrder);
        growth.order = 0.5 * (growth.order + shown);
    }
    growth.length = dt;
    growth.error = error;
    growth.forecast = figures.forecast;
}

bool lacksTooMuch(const RunOptions& options, const AttemptFigures& figures) {
    return !(figures.deficit <= options.stepDeficit * (figures.freeGas ? GasShare : 1.0));
}

AttemptFigures beyondRepair(AttemptFigures figures) {
    figures.targetExcess = figures.targetMiss = 0.0;
    return figures;
}

bool mayStillStand(const RunOptions& options, const AttemptFigures& figures) {
    constexpr double AnyLength = 1.0;
    return judgeStep(options, beyondRepair(figures), {}, AnyLength, 0).verdict == StepVerdict::Accepted;
}

bool isLost(const RunOptions& options, const AttemptFigures& figures) {
    return lacksTooMuch(options, figures) || (figures.freeGas && !mayStillStand(options, figures));
}

double evenPart(double longest, double dt) {
    if (longest <= 0.0 || dt <= longest) return dt;
    // A way of whole parts stays one of as many, whatever rounding makes of it.
    return dt / std::ceil(dt / longest - RoundedRest);
}

double partWithoutSplinter(double longest, double way) {
    const double parts = way / longest;
    const double rest = parts - std::floor(parts);
    const bool splinter = parts > 1.0 && rest > RoundedRest && rest < SplinterShare;
    return splinter ? way / std::ceil(parts) : std::min(longest, way);
}

double allowedBehind(double found, double before, double dt) {
    return dt * LargestGrowth < before ? std::max(found, before) : found;
}

double implicitLength(double lag, double dt) {
    if (lag <= ImplicitLag) return dt;
    return std::isfinite(lag) ? dt * std::clamp(Safety * ImplicitLag / lag, LargestCut, SmallestCut)
                              : dt * LargestCut;
}

double implicitGrowth(double lag) {
    constexpr double Most = 2.0;
    if (!std::isfinite(lag)) return SmallestCut;
    return lag > 0.0 ? std::clamp(Safety * ImplicitLag / lag, SmallestCut, Most) : Most;
}

double firstLength(double dt) {
    return FirstShare * dt;
}

}  // namespace kvr
