#pragma once

#include "base/constants.hpp"
#include "fluid/saturation_functions.hpp"
#include "fluid/state_recovery.hpp"
#include "streamline/fractional_flow.hpp"
#include "streamline/solver_line.hpp"

#include <cmath>
#include <cstddef>

namespace kvr {

// Kernels of explicit transport on one position of a line, without and with gas. Inline: they are the
// innermost loop of a run.

/// Flux and amounts of one position, or of what flows into a stretch.
struct NodeFlow {
    double Fw = 0.0, Fo = 0.0, Fg = 0.0;
    double Cw = 0.0, Co = 0.0, Cg = 0.0;
};

template <bool Gas>
inline NodeFlow flowAt(const SolverLine& line, std::size_t i) {
    if constexpr (Gas) return {line.Fw[i], line.Fo[i], line.Fg[i], line.Cw[i], line.Co[i], line.Cg[i]};
    return {line.Fw[i], line.Fo[i], 0.0, line.Cw[i], line.Co[i], 0.0};
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

/// Fluxes of position i from its saturations.
template <bool Gas>
inline void setFluxes(const SaturationTable& table, std::size_t i, SolverLine& line) {
    const RelPerms kr = relPerms(table, Gas, line.Sw[i], Gas ? line.Sg[i] : 0.0);
    const double lw = kr.w * line.inverseMuW[i];
    const double lo = kr.o * line.inverseMuO[i];
    double total = lw + lo;
    if constexpr (Gas) total += kr.g * line.inverseMuG[i];
    const double share = 1.0 / (total + MobilityGuard);
    line.Fw[i] = lw * share * line.inverseBw[i];
    line.Fo[i] = lo * share * line.inverseBo[i];
    if constexpr (Gas)
        line.Fg[i] = kr.g * line.inverseMuG[i] * share * line.inverseBg[i] + line.Rs[i] * line.Fo[i];
}

/// State of position i from its amounts less `loss`; amounts are set anew from the scaled state.
inline void recoverTwoPhase(const ConservedAmounts& loss, std::size_t i, SolverLine& line) {
    double sw = line.Bw[i] * (line.Cw[i] - loss.water);
    double so = line.Bo[i] * (line.Co[i] - loss.oil);
    if (sw < 0.0) sw = 0.0;
    if (so < 0.0) so = 0.0;
    if (std::isnan(sw)) sw = line.Sw[i - 1];
    if (std::isnan(so)) so = line.So[i - 1];
    const double sum = sw + so;
    const double share = sum > MachineEpsilon ? 1.0 / sum : 1.0;
    line.Sw[i] = sw * share;
    line.So[i] = so * share;
    line.Cw[i] = line.Sw[i] * line.inverseBw[i];
    line.Co[i] = line.So[i] * line.inverseBo[i];
}

inline void replaceNaN(std::vector<double>& values, std::size_t i) {
    if (std::isnan(values[i])) values[i] = values[i - 1];
}

inline void recoverThreePhase(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                              const ConservedAmounts& loss, std::size_t i, SolverLine& line) {
    const ConservedAmounts amounts{line.Cw[i] - loss.water, line.Co[i] - loss.oil, line.Cg[i] - loss.gas};
    const RecoveryFactors factors{line.pressure[i], line.Bw[i], line.Bo[i], line.Bg[i]};
    const PhaseState state =
        recoverState(tables, table, keepEndPoints, factors, line.saturatedRs[i], amounts);
    line.Sw[i] = state.Sw;
    line.So[i] = state.So;
    line.Sg[i] = state.Sg;
    line.Rs[i] = state.Rs;
    line.bubblePoint[i] = state.Pb;
    replaceNaN(line.Sw, i);
    replaceNaN(line.So, i);
    replaceNaN(line.Sg, i);
    replaceNaN(line.Rs, i);
    replaceNaN(line.bubblePoint, i);
    setAmounts(true, static_cast<int>(i), line);
}

template <bool Gas>
inline void recoverNode(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                        const ConservedAmounts& loss, std::size_t i, SolverLine& line) {
    if constexpr (Gas)
        recoverThreePhase(tables, table, keepEndPoints, loss, i, line);
    else
        recoverTwoPhase(loss, i, line);
}

}  // namespace kvr
