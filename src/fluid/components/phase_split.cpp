#include "fluid/components/phase_split.hpp"

#include "fluid/components/rachford_rice.hpp"
#include "fluid/components/small_systems.hpp"
#include "fluid/components/stability.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double SolvedResidual = 1e-11;   // |ln(f_V/f_L)|
constexpr double AcceptedResidual = 1e-9;  // where rounding stops the descent
constexpr double TrivialLnK = 1e-5;        // largest |ln K| of phases that are one
constexpr int MostNearSteps = 12;
constexpr int MostDescentSteps = 500;
constexpr int NewtonHalvings = 3, SubstitutionHalvings = 30;
// Added to the diagonal of Newton's system, which is 1 and the other terms: with much of it the step is one
// of substitution, with little it leaves a saddle quickly.
constexpr double Shifts[] = {0.0, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1};
constexpr double EnergyRounding = 1e-14;  // of 1 + |energy|
constexpr double LeastPivot = 1e-14;
constexpr double LeastFraction = 1e-10;  // of a phase while substitution goes on

void phaseProperties(const ComponentSet& set, double pressure, PhaseSplit& split) {
    PR_EOS(set, split.x, pressure, split.liquid);
    PR_EOS(set, split.y, pressure, split.vapour);
}

void residualOf(const ComponentSet& set, PhaseSplit& split) {
    fugacityCoefficients(set, split.liquid, split.zLiquid, split.lnPhiLiquid);
    fugacityCoefficients(set, split.vapour, split.zVapour, split.lnPhiVapour);
    split.worst = 0.0;
    for (int i = 0; i < set.count; ++i) {
        split.residual[i] = split.lnK[i] - split.lnPhiLiquid[i] + split.lnPhiVapour[i];
        split.worst = std::max(split.worst, std::abs(split.residual[i]));
    }
}

/// Newton's change of ln K. In moles of vapour v the system is symmetric,
///   (diag(z/(x y)) - 1 + L V-slopes + V L-slopes) dv = -V L residual;
/// it is solved scaled by sqrt(x y/z), and  d ln K = (diag(z/(x y)) - 1) dv/(V L).
bool newtonChange(const ComponentSet& set, const Composition& feed, const PhaseSplit& split, bool isDefinite,
                  double shift, Composition& change) {
    const int n = set.count;
    const double V = split.V, L = 1.0 - V;
    ComponentMatrix M, ofVapour;
    fugacitySlopes(set, split.liquid, split.x, split.zLiquid, M);
    fugacitySlopes(set, split.vapour, split.y, split.zVapour, ofVapour);
    Composition scale, right;
    for (int i = 0; i < n; ++i) scale[i] = std::sqrt(split.x[i] * split.y[i] / feed[i]);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j)
            M[i][j] = (V * M[i][j] + L * ofVapour[i][j] - 1.0) * (scale[i] * scale[j]);
        M[i][i] += 1.0 + shift;
        right[i] = -scale[i] * split.residual[i];
    }
    // right holds dv/(V L scale) once solved.
    if (!(isDefinite ? solvePositiveDefinite(n, M, right, LeastPivot) : solveGeneral(n, M, right)))
        return false;
    double total = 0.0;
    for (int i = 0; i < n; ++i) total += scale[i] * right[i];
    for (int i = 0; i < n; ++i) change[i] = right[i] / scale[i] - total;
    return true;
}

bool isTrivial(int count, const PhaseSplit& split) {
    double largest = 0.0;
    for (int i = 0; i < count; ++i) largest = std::max(largest, std::abs(split.lnK[i]));
    return !(largest > TrivialLnK);
}

/// The split with ln K changed by a share of `change`.
bool tryChange(const ComponentSet& set, const Composition& feed, double pressure, const Composition& change,
               double share, const PhaseSplit& from, PhaseSplit& to) {
    to.V = from.V;
    for (int i = 0; i < set.count; ++i) to.lnK[i] = from.lnK[i] + share * change[i];
    return evaluateSplit(set, feed, pressure, SplitRange::Inside, to);
}

/// Shortens a change until the energy falls; `split` and `energy` are those of the new place.
bool stepDown(const ComponentSet& set, const Composition& feed, double pressure, const Composition& change,
              int halvings, PhaseSplit& split, double& energy) {
    PhaseSplit next;
    double share = 1.0;
    for (int halving = 0; halving < halvings; ++halving, share *= 0.5) {
        if (!tryChange(set, feed, pressure, change, share, split, next)) continue;
        const double reached = splitEnergy(set.count, next);
        if (!(reached <= energy + EnergyRounding * (1.0 + std::abs(energy)))) continue;
        split = next;
        energy = reached;
        return true;
    }
    return false;
}

/// One step down: the plainest of Newton's that holds, or substitution.
bool descentStep(const ComponentSet& set, const Composition& feed, double pressure, PhaseSplit& split,
                 double& energy) {
    Composition change;
    for (const double shift : Shifts)
        if (newtonChange(set, feed, split, true, shift, change) &&
            stepDown(set, feed, pressure, change, NewtonHalvings, split, energy))
            return true;
    for (int i = 0; i < set.count; ++i) change[i] = -split.residual[i];
    return stepDown(set, feed, pressure, change, SubstitutionHalvings, split, energy);
}

}  // namespace

bool evaluateSplit(const ComponentSet& set, const Composition& feed, double pressure, SplitRange range,
                   PhaseSplit& split) {
    const int n = set.count;
    for (int i = 0; i < n; ++i) split.K[i] = std::exp(split.lnK[i]);
    if (range == SplitRange::Negative) {
        if (!negativeFlash(n, feed, split.K, split.V)) return false;
    } else {
        split.V = vapourFraction(n, feed, split.K, split.V);
        if (!(split.V > 0.0 && split.V < 1.0)) return false;
    }
    splitFeed(n, feed, split.K, split.V, split.x, split.y);
    phaseProperties(set, pressure, split);
    split.zLiquid = stableRoot(split.liquid);
    split.zVapour = stableRoot(split.vapour);
    residualOf(set, split);
    return true;
}

double splitEnergy(int count, const PhaseSplit& split) {
    double liquid = 0.0, vapour = 0.0;
    for (int i = 0; i < count; ++i) {
        const double lnX = std::log(split.x[i]);
        liquid += split.x[i] * (lnX + split.lnPhiLiquid[i]);
        vapour += split.y[i] * (lnX + split.lnK[i] + split.lnPhiVapour[i]);
    }
    return (1.0 - split.V) * liquid + split.V * vapour;
}

double feedEnergy(int count, const Composition& feed, const Composition& lnPhi) {
    double energy = 0.0;
    for (int i = 0; i < count; ++i) energy += feed[i] * (std::log(feed[i]) + lnPhi[i]);
    return energy;
}

int substituteFromWilson(const ComponentSet& set, const Composition& feed, double pressure, int mostPasses,
                         double tolerance, PhaseSplit& split) {
    const int n = set.count;
    wilsonLnK(set, pressure, split.lnK);
    split.V = 0.5;
    for (int pass = 1; pass <= mostPasses; ++pass) {
        for (int i = 0; i < n; ++i) split.K[i] = std::exp(split.lnK[i]);
        if (pass > 1) {
            split.V = vapourFraction(n, feed, split.K, split.V);
            if (split.V <= LeastFraction || split.V >= 1.0 - LeastFraction) {
                split.V = split.V < 0.5 ? 0.0 : 1.0;
                return pass;
            }
        }
        splitFeed(n, feed, split.K, split.V, split.x, split.y);
        // With V one half the first compositions do not sum to 1.
        double sumX = 0.0, sumY = 0.0;
        for (int i = 0; i < n; ++i) sumX += split.x[i], sumY += split.y[i];
        for (int i = 0; i < n; ++i) split.x[i] /= sumX, split.y[i] /= sumY;
        phaseProperties(set, pressure, split);
        split.zLiquid = split.liquid.zLiquid;
        split.zVapour = split.vapour.zVapour;
        fugacityCoefficients(set, split.liquid, split.zLiquid, split.lnPhiLiquid);
        fugacityCoefficients(set, split.vapour, split.zVapour, split.lnPhiVapour);
        split.worst = 0.0;
        bool isSolved = true;
        for (int i = 0; i < n; ++i) {
            const double ratio =
                split.lnPhiLiquid[i] - split.lnPhiVapour[i] - std::log(split.y[i] / split.x[i]);
            if (std::abs(1.0 - std::exp(ratio)) > tolerance) {
                isSolved = false;
                split.lnK[i] += ratio;
            }
            split.residual[i] = -ratio;
            split.worst = std::max(split.worst, std::abs(ratio));
        }
        if (isSolved) return pass;
    }
    return mostPasses;
}

bool convergeNear(const ComponentSet& set, const Composition& feed, double pressure, PhaseSplit& split) {
    Composition change;
    for (int step = 0; step < MostNearSteps; ++step) {
        if (!evaluateSplit(set, feed, pressure, SplitRange::Negative, split)) return false;
        if (isTrivial(set.count, split)) return false;
        if (split.worst < SolvedResidual) return true;
        const bool isInside = split.V > 0.0 && split.V < 1.0;
        if (!newtonChange(set, feed, split, isInside, 0.0, change)) {
            for (int i = 0; i < set.count; ++i) change[i] = -split.residual[i];
        }
        for (int i = 0; i < set.count; ++i) split.lnK[i] += change[i];
    }
    return false;
}

bool descendSplit(const ComponentSet& set, const Composition& feed, double pressure, PhaseSplit& split) {
    if (!evaluateSplit(set, feed, pressure, SplitRange::Inside, split)) return false;
    double energy = splitEnergy(set.count, split);
    for (int step = 0; step < MostDescentSteps; ++step) {
        if (split.worst < SolvedResidual) return true;
        if (!descentStep(set, feed, pressure, split, energy)) break;
    }
    // Beside a critical point the energy is flat to its last digits: there the residual alone leads on.
    PhaseSplit ahead = split;
    if (convergeNear(set, feed, pressure, ahead) && ahead.V > 0.0 && ahead.V < 1.0) split = ahead;
    return split.worst < AcceptedResidual;
}

}  // namespace kvr
