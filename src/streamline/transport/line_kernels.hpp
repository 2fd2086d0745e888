#pragma once

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "fluid/state_recovery.hpp"
#include "streamline/transport/fractional_flow.hpp"
#include "streamline/transport/solver_line.hpp"

#include <cmath>
#include <cstddef>

namespace kvr {

// Kernels of transport on one position of a line, without and with gas. Inline: they are the innermost
// loop of a run.

/// Flux and amounts of one position, or of what flows into a stretch.
struct NodeFlow {
    double Fw = 0.0, Fo = 0.0, Fg = 0.0;
    double Cw = 0.0, Co = 0.0, Cg = 0.0;
};
static_assert(offsetof(NodeFlow, Co) == offsetof(NodeFlow, Cw) + sizeof(double));

template <bool Gas>
inline NodeFlow flowAt(const FlowNode& node) {
    if constexpr (Gas) return {node.Fw, node.Fo, node.Fg, node.Cw, node.Co, node.Cg};
    return {node.Fw, node.Fo, 0.0, node.Cw, node.Co, 0.0};
}

/// The running maximum after one phase. Without branches: which node is fastest changes all the time.
inline double raisedSpeed(double speed, double dF, double dC, double inverseDeltaTof) {
    const double step = std::abs(dC);
    const double quotient = std::abs(dF) * inverseDeltaTof / step;
    const double counted = step > LeastAmountStep ? quotient : 0.0;
    return counted > speed ? counted : speed;
}

/// `speed` raised to that of the wave between a position and the one before it, 1/day.
template <bool Gas>
inline double raisedSpeed(double speed, const NodeFlow& before, const NodeFlow& here,
                          double inverseDeltaTof) {
    speed = raisedSpeed(speed, here.Fw - before.Fw, here.Cw - before.Cw, inverseDeltaTof);
    speed = raisedSpeed(speed, here.Fo - before.Fo, here.Co - before.Co, inverseDeltaTof);
    if constexpr (Gas) speed = raisedSpeed(speed, here.Fg - before.Fg, here.Cg - before.Cg, inverseDeltaTof);
    return speed;
}

inline double raisedSpeed(bool hasGas, double speed, const FlowNode& before, const FlowNode& here) {
    return hasGas
               ? raisedSpeed<true>(speed, flowAt<true>(before), flowAt<true>(here), here.inverseDeltaTof)
               : raisedSpeed<false>(speed, flowAt<false>(before), flowAt<false>(here), here.inverseDeltaTof);
}

/// Relative permeabilities of a position.
template <bool Gas>
inline RelPerms relPermsOf(const FlowNode& node, double sw, double sg) {
    return relPerms(*node.table, Gas, sw, Gas ? sg : 0.0);
}

/// Phase fluxes per unit of total flow.
struct PhaseFluxes {
    double w = 0.0, o = 0.0, g = 0.0;
};

/// Fluxes at the given relative permeabilities and dissolved gas, with the held factors of a position.
template <bool Gas>
inline PhaseFluxes phaseFluxes(const FlowNode& node, const RelPerms& kr, double rs) {
    const double lw = kr.w * node.inverseMuW;
    const double lo = kr.o * node.inverseMuO;
    double total = lw + lo;
    if constexpr (Gas) total += kr.g * node.inverseMuG;
    const double share = 1.0 / (total + MobilityGuard);
    PhaseFluxes flux;
    flux.w = lw * share * node.inverseBw;
    flux.o = lo * share * node.inverseBo;
    if constexpr (Gas) flux.g = kr.g * node.inverseMuG * share * node.inverseBg + rs * flux.o;
    return flux;
}

/// Fluxes of a position from its saturations.
template <bool Gas>
inline void setFluxes(FlowNode& node) {
    const PhaseFluxes flux = phaseFluxes<Gas>(node, relPermsOf<Gas>(node, node.Sw, node.Sg), node.Rs);
    node.Fw = flux.w;
    node.Fo = flux.o;
    if constexpr (Gas) node.Fg = flux.g;
}

/// State of a position from its amounts less `loss`; amounts are set anew from the scaled state. What is
/// not a number takes the value of the node before.
inline void recoverTwoPhase(const ConservedAmounts& loss, const FlowNode& before, FlowNode& node) {
    double sw = node.Bw * (node.Cw - loss.water);
    double so = node.Bo * (node.Co - loss.oil);
    sw = sw < 0.0 ? 0.0 : sw;
    so = so < 0.0 ? 0.0 : so;
    double sum = sw + so;
    if (std::isnan(sum)) {
        if (std::isnan(sw)) sw = before.Sw;
        if (std::isnan(so)) so = before.So;
        sum = sw + so;
    }
    const double share = sum > MachineEpsilon ? 1.0 / sum : 1.0;
    node.Sw = sw * share;
    node.So = so * share;
    node.Cw = node.Sw * node.inverseBw;
    node.Co = node.So * node.inverseBo;
}

/// Tables of the fluids at a position.
inline const FluidTables& pvtOf(const FluidTables& tables, const FlowNode& node) {
    return node.pvt != nullptr ? *node.pvt : tables;
}

/// State that the given amounts make at the held factors of a position, in a run with gas.
inline PhaseState stateOfAmounts(const FluidTables& tables, bool keepEndPoints, const FlowNode& node,
                                 const ConservedAmounts& amounts) {
    const RecoveryFactors factors{node.pressure, node.Bw, node.Bo, node.Bg, node.limitsRs};
    return recoverState(pvtOf(tables, node), *node.table, keepEndPoints, factors, node.saturatedRs, amounts);
}

/// The same but for the bubble point, see recoverButBubblePoint.
inline PhaseState openStateOfAmounts(const FluidTables& tables, bool keepEndPoints, const FlowNode& node,
                                     const ConservedAmounts& amounts) {
    const RecoveryFactors factors{node.pressure, node.Bw, node.Bo, node.Bg, node.limitsRs};
    return recoverButBubblePoint(pvtOf(tables, node), *node.table, keepEndPoints, factors, node.saturatedRs,
                                 amounts);
}

/// The same with gas. A node that keeps its amounts keeps them whatever its state shows. `Open`: without the
/// bubble point.
template <bool Open = false>
inline void recoverThreePhase(const FluidTables& tables, bool keepEndPoints, const ConservedAmounts& loss,
                              const FlowNode& before, FlowNode& node) {
    const ConservedAmounts amounts{node.Cw - loss.water, node.Co - loss.oil, node.Cg - loss.gas};
    const PhaseState state = Open ? openStateOfAmounts(tables, keepEndPoints, node, amounts)
                                  : stateOfAmounts(tables, keepEndPoints, node, amounts);
    node.Sw = std::isnan(state.Sw) ? before.Sw : state.Sw;
    node.So = std::isnan(state.So) ? before.So : state.So;
    node.Sg = std::isnan(state.Sg) ? before.Sg : state.Sg;
    node.Rs = std::isnan(state.Rs) ? before.Rs : state.Rs;
    node.bubblePoint = std::isnan(state.Pb) ? before.bubblePoint : state.Pb;
    node.Cw = node.Sw * node.inverseBw;
    node.Co = node.So * node.inverseBo;
    node.Cg = node.Sg * node.inverseBg + node.Rs * node.Co;
    if (!node.keepsAmounts || !std::isfinite(amounts.water + amounts.oil + amounts.gas)) return;
    node.Cw = std::max(0.0, amounts.water);
    node.Co = std::max(0.0, amounts.oil);
    node.Cg = std::max(0.0, amounts.gas);
}

template <bool Gas>
inline void recoverNode(const FluidTables& tables, bool keepEndPoints, const ConservedAmounts& loss,
                        const FlowNode& before, FlowNode& node) {
    if constexpr (Gas)
        recoverThreePhase(tables, keepEndPoints, loss, before, node);
    else
        recoverTwoPhase(loss, before, node);
}

}  // namespace kvr
