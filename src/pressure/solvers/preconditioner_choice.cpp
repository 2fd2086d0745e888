#include "pressure/solvers/preconditioner_choice.hpp"

namespace kvr {

namespace {

constexpr double Memory = 0.7;  // weight of the past in a running mean

void average(double cost, double& mean) {
    mean = mean > 0.0 ? Memory * mean + (1.0 - Memory) * cost : cost;
}

}  // namespace

void noteSolve(bool twoStages, int iterations, PreconditionerChoice& choice) {
    if (twoStages) {
        average(TwoStageIteration * iterations + PressureRefresh, choice.twoStageCost);
    } else {
        average(iterations, choice.iluCost);
    }
    ++choice.sinceTrial;
    if (choice.twoStageCost == 0.0) {
        choice.twoStages = iterations > TrialIterations;
        return;
    }
    const bool cheaper = choice.twoStageCost < choice.iluCost;
    const bool trial = choice.sinceTrial >= TrialPeriod && (cheaper || choice.iluCost > TrialIterations);
    choice.twoStages = trial ? !cheaper : cheaper;
    if (trial) choice.sinceTrial = 0;
}

void noteHierarchy(bool renewed, int iterations, PreconditionerChoice& choice) {
    if (renewed) choice.freshIterations = iterations;
    choice.hierarchyWorn = iterations > choice.freshIterations + WornIterations;
}

}  // namespace kvr
