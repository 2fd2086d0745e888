#include "fluid/components/stability.hpp"

#include "fluid/components/small_systems.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastK = 1e-20;
constexpr double UnstableDistance = -1e-13;  // tm in RT below which the feed splits; rounding leaves 1e-15
constexpr double SurelyUnstable = -1e-3;     // from where the stationary point itself is not needed
constexpr double StationaryResidual = 1e-11;
constexpr double TrivialDistance = 1e-6;  // |W - z|/z, largest, of a trial that has come back to the feed
constexpr int PlainPasses = 5;            // of substitution before Newton takes over
constexpr int MostPasses = 200;
constexpr double LeastPivot = 1e-12;
constexpr double PureShare = 0.99;  // of the component in its own trial

struct Trial {
    Composition W{}, lnW{}, fraction{}, lnPhi{};
    double sum = 1.0;
    double Z = 1.0;
    EosMixture mixture;
};

/// Fractions and coefficients of the trial from ln W.
void evaluate(const ComponentSet& set, double pressure, Trial& trial) {
    trial.sum = 0.0;
    for (int i = 0; i < set.count; ++i) trial.sum += trial.W[i] = std::exp(trial.lnW[i]);
    for (int i = 0; i < set.count; ++i) trial.fraction[i] = trial.W[i] / trial.sum;
    PR_EOS(set, trial.fraction, pressure, trial.mixture);
    trial.Z = stableRoot(trial.mixture);
    fugacityCoefficients(set, trial.mixture, trial.Z, trial.lnPhi);
}

/// tm and the residual ln W + ln phi(W) - d.
double distanceOf(int count, const Trial& trial, const Composition& d, Composition& residual, double& worst) {
    double tm = 1.0;
    worst = 0.0;
    for (int i = 0; i < count; ++i) {
        residual[i] = trial.lnW[i] + trial.lnPhi[i] - d[i];
        tm += trial.W[i] * (residual[i] - 1.0);
        worst = std::max(worst, std::abs(residual[i]) * std::min(1.0, 1e12 * trial.W[i]));
    }
    return tm;
}

/// One Newton step in alpha = 2 sqrt(W): H = delta_ij + sqrt(W_i W_j) d(ln phi_i)/dW_j without the term that
/// vanishes at a stationary point. False where H is not positive definite.
bool newtonStep(const ComponentSet& set, const Composition& residual, const Trial& trial, Composition& lnW) {
    const int n = set.count;
    ComponentMatrix H;
    fugacitySlopes(set, trial.mixture, trial.fraction, trial.Z, H);
    Composition root, step;
    for (int i = 0; i < n; ++i) root[i] = std::sqrt(trial.W[i]);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) H[i][j] *= root[i] * root[j] / trial.sum;
        H[i][i] += 1.0;
        step[i] = -root[i] * residual[i];
    }
    if (!solvePositiveDefinite(n, H, step, LeastPivot)) return false;
    for (int i = 0; i < n; ++i) {
        // W = (alpha/2)^2, alpha = 2 sqrt(W) + step.
        const double half = root[i] + 0.5 * step[i];
        if (half <= 0.1 * root[i]) return false;
        lnW[i] = 2.0 * std::log(half);
        // A trace's square root has no digits left: it follows by substitution.
        if (trial.W[i] < 1e-12) lnW[i] = trial.lnW[i] - residual[i];
    }
    return true;
}

bool isFeed(int count, const Trial& trial, const Composition& feed) {
    double apart = 0.0;
    for (int i = 0; i < count; ++i)
        if (feed[i] > 1e-12) apart = std::max(apart, std::abs(trial.W[i] - feed[i]) / feed[i]);
    return apart < TrivialDistance;
}

enum class TrialEnd { Feed, Stationary, Unstable };

/// Takes one trial down; `distance` is tm where it ended.
TrialEnd descend(const ComponentSet& set, const Composition& feed, double pressure, const Composition& d,
                 Trial& trial, double& distance) {
    const int n = set.count;
    Composition residual;
    double worst = 0.0;
    evaluate(set, pressure, trial);
    distance = distanceOf(n, trial, d, residual, worst);
    Trial next;
    for (int pass = 0; pass < MostPasses; ++pass) {
        if (worst < StationaryResidual) break;
        if (isFeed(n, trial, feed)) return TrialEnd::Feed;
        if (pass >= PlainPasses && distance < SurelyUnstable) return TrialEnd::Unstable;
        if (pass >= PlainPasses && newtonStep(set, residual, trial, next.lnW)) {
            evaluate(set, pressure, next);
            Composition newResidual;
            double newWorst = 0.0;
            const double newDistance = distanceOf(n, next, d, newResidual, newWorst);
            if (newDistance <= distance + 1e-15 || newWorst < worst) {
                trial = next;
                distance = newDistance;
                residual = newResidual;
                worst = newWorst;
                continue;
            }
        }
        for (int i = 0; i < n; ++i) trial.lnW[i] -= residual[i];
        evaluate(set, pressure, trial);
        distance = distanceOf(n, trial, d, residual, worst);
    }
    if (isFeed(n, trial, feed)) return TrialEnd::Feed;
    return distance < UnstableDistance ? TrialEnd::Unstable : TrialEnd::Stationary;
}

/// Follows one trial and keeps it where it is the lowest so far.
void follow(const ComponentSet& set, const Composition& feed, double pressure, const Composition& d,
            Trial& trial, Stability& result) {
    double distance = 0.0;
    const TrialEnd end = descend(set, feed, pressure, d, trial, distance);
    if (end == TrialEnd::Feed) return;
    if (result.hasShadow && distance >= result.distance) return;
    result.hasShadow = true;
    result.distance = distance;
    result.shadow = trial.fraction;
    result.shadowPacking = packing(trial.mixture, trial.Z);
    if (end == TrialEnd::Unstable) result.isStable = false;
}

}  // namespace

bool isFarFromLimit(const ComponentSet& set, const EosMixture& mixture, const Composition& feed, double Z) {
    constexpr double LeastCurvature = 0.1;
    const int n = set.count;
    ComponentMatrix H;
    fugacitySlopes(set, mixture, feed, Z, H);
    Composition root, right{};
    for (int i = 0; i < n; ++i) root[i] = std::sqrt(feed[i]);
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) H[i][j] *= root[i] * root[j];
        H[i][i] += 1.0 - LeastCurvature;
    }
    return solvePositiveDefinite(n, H, right, LeastPivot);
}

void wilsonLnK(const ComponentSet& set, double pressure, Composition& lnK) {
    const double least = std::log(LeastK);
    for (int i = 0; i < set.count; ++i) {
        const double exponent = 5.37 * (1.0 + set.Acf[i]) * (1.0 - set.Tc[i] / set.temperature);
        lnK[i] = std::max(exponent + std::log(set.Pc[i] / pressure), least);
    }
}

Stability stabilityTest(const ComponentSet& set, const Composition& feed, double pressure,
                        const Composition& lnPhi, bool thorough) {
    const int n = set.count;
    Composition lnK, lnZ, d;
    wilsonLnK(set, pressure, lnK);
    for (int i = 0; i < n; ++i) {
        lnZ[i] = std::log(feed[i]);
        d[i] = lnZ[i] + lnPhi[i];
    }
    Stability result;
    Trial trial;
    const double powers[] = {1.0, -1.0, 1.0 / 3.0, -1.0 / 3.0};
    for (int t = 0; t < (thorough ? 4 : 2); ++t) {
        for (int i = 0; i < n; ++i) trial.lnW[i] = lnZ[i] + powers[t] * lnK[i];
        follow(set, feed, pressure, d, trial, result);
        if (!result.isStable) return result;
    }
    for (int pure = 0; thorough && pure < n; ++pure) {
        for (int i = 0; i < n; ++i)
            trial.lnW[i] = i == pure ? std::log(PureShare) : lnZ[i] + std::log(1.0 - PureShare);
        follow(set, feed, pressure, d, trial, result);
        if (!result.isStable) return result;
    }
    return result;
}

}  // namespace kvr
