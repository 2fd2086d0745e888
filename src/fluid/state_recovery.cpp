#include "fluid/state_recovery.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// NaN passes through all three.
double notNegative(double value) {
    return value < 0.0 ? 0.0 : value;
}

double within(double value, double low, double high) {
    if (value < low) return low;
    return value > high ? high : value;
}

void scaleToOne(PhaseState& state) {
    const double sum = state.Sw + state.So + state.Sg;
    if (!(sum > MachineEpsilon)) return;
    state.Sw /= sum;
    state.So /= sum;
    state.Sg /= sum;
}

PhaseState recoverTwoPhase(const RecoveryFactors& factors, const ConservedAmounts& amounts) {
    PhaseState state;
    state.Sw = notNegative(factors.Bw * amounts.water);
    state.So = notNegative(factors.Bo * amounts.oil);
    scaleToOne(state);
    return state;
}

}  // namespace

PhaseState recoverState(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                        const RecoveryFactors& factors, const ConservedAmounts& amounts) {
    if (!tables.hasGas) return recoverTwoPhase(factors, amounts);
    return recoverState(tables, table, keepEndPoints, factors, SolutionRs(tables, factors.pressure), amounts);
}

PhaseState recoverState(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                        const RecoveryFactors& factors, double saturatedRs, const ConservedAmounts& amounts) {
    PhaseState state = recoverButBubblePoint(tables, table, keepEndPoints, factors, saturatedRs, amounts);
    completeBubblePoint(tables, factors.pressure, state.Rs, state.Pb);
    return state;
}

PhaseState recoverButBubblePoint(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                                 const RecoveryFactors& factors, double saturatedRs,
                                 const ConservedAmounts& amounts) {
    const double oil = notNegative(amounts.oil);
    const double gas = notNegative(amounts.gas);
    PhaseState state;
    state.Sw = factors.Bw * notNegative(amounts.water);
    state.So = factors.Bo * oil;
    state.Sg = factors.Bg * (gas - saturatedRs * oil);
    if (!(state.So > MachineEpsilon)) {
        state.So = 0.0;
        state.Rs = 0.0;
        state.Pb = BubblePoint(tables, 0.0);
    } else if (state.Sg > MachineEpsilon) {
        state.Rs = saturatedRs;
        state.Pb = factors.limitsRs ? OpenBubblePoint : factors.pressure;
    } else {
        state.Sg = 0.0;
        state.Rs = gas / oil;
        state.Pb = OpenBubblePoint;
    }
    limitSaturations(table, keepEndPoints, state);
    return state;
}

void completeBubblePoint(const FluidTables& tables, double pressure, double rs, double& pb) {
    if (pb == OpenBubblePoint) pb = std::min(pressure, BubblePoint(tables, rs));
}

void limitSaturations(const SaturationTable& table, bool keepEndPoints, PhaseState& state) {
    const double swc = keepEndPoints ? table.ConnateSw : 0.0;
    const double sor = keepEndPoints ? table.ResidualSo : 0.0;
    const double sgc = keepEndPoints ? table.CriticalSg : 0.0;
    state.So = within(state.So, sor, 1.0 - swc - sgc);
    state.Sw = within(state.Sw, swc, 1.0 - sor - sgc);
    state.Sg = within(state.Sg, sgc, 1.0 - swc - sor);
    scaleToOne(state);
}

}  // namespace kvr
