#pragma once

#include "streamline/transport/solver_line.hpp"

#include <span>
#include <string_view>

namespace kvr {

inline constexpr double MobilityGuard = 1e-20;   // 1/cp, added to the total mobility
inline constexpr double LeastAmountStep = 1e-6;  // difference of amounts that carries a wave speed

/// Phase fluxes per unit of total flow of positions from..to, from saturations and held factors:
///   lambda_p = kr_p / mu_p,  F_w = (lambda_w / lambda_t) / Bw,  F_o likewise,
///   F_g = (lambda_g / lambda_t) / Bg + Rs F_o
void evaluateFluxes(bool hasGas, int from, int to, SolverLine& line);

/// Amounts of a position from its saturations at the present factors.
void setAmounts(bool hasGas, FlowNode& node);

/// Largest of |dF/dC| / DeltaTof over the phases and the positions 1..N, 1/day; differences of amounts of
/// 1e-6 and less carry none. With the fluxes of the nodes, and with the limited ones.
double largestWaveSpeed(bool hasGas, const SolverLine& line);
double largestLimitedSpeed(bool hasGas, const SolverLine& line);

/// Fills the limited fluxes of a line by the scheme over a substep dt; "SPU" copies the node fluxes.
void limitFluxes(std::string_view scheme, bool hasGas, double dt, SolverLine& line);

/// Limited flux of a position between its neighbours. With c = dt/DeltaTof, a = f(i+1) - f(i),
/// b = f(i) - f(i-1):
///   f + minmod-like(a, b, h) (1 - c) / 2,  h = b/2, or for "Leonard" ((c+1)/3 b + (2-c)/3 a) / 2
/// The factor sign(a) sign(b) + 1 doubles the slope where both agree; that is the rule as required.
double limitedFlux(bool leonard, double c, double before, double here, double after);

/// Limits one phase: values at 0..N, the ends stay.
void limitFlux(std::string_view scheme, double dt, std::span<const FlowNode> nodes, double FlowNode::*flux,
               std::span<double> limited);

}  // namespace kvr
