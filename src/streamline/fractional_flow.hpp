#pragma once

#include "fluid/tables.hpp"
#include "streamline/solver_line.hpp"

#include <span>
#include <string_view>

namespace kvr {

inline constexpr double MobilityGuard = 1e-20;   // 1/cp, added to the total mobility
inline constexpr double LeastAmountStep = 1e-6;  // difference of amounts that carries a wave speed

/// Phase fluxes per unit of total flow of positions from..to, from saturations and held factors:
///   lambda_p = kr_p / mu_p,  F_w = (lambda_w / lambda_t) / Bw,  F_o likewise,
///   F_g = (lambda_g / lambda_t) / Bg + Rs F_o
void evaluateFluxes(const FluidTables& tables, int from, int to, SolverLine& line);

/// Amounts of position i from its saturations at the present factors.
void setAmounts(bool hasGas, int i, SolverLine& line);

/// The three flux arrays of a line, as they stand or limited.
struct FluxView {
    std::span<const double> w, o, g;
};
FluxView plainFluxes(const SolverLine& line);
FluxView limitedFluxes(const SolverLine& line);

/// Largest of |dF/dC| / DeltaTof over the phases and the positions 1..N, 1/day; differences of amounts of
/// 1e-6 and less carry none.
double largestWaveSpeed(const FluxView& flux, bool hasGas, const SolverLine& line);

/// Limits the fluxes of positions 1..N-1 of one phase into `limited`; the ends stay. With c the Courant
/// number dt/DeltaTof, a = f(i+1) - f(i), b = f(i) - f(i-1):
///   f + minmod-like(a, b, h) (1 - c) / 2,  h = b/2, or for "Leonard" ((c+1)/3 b + (2-c)/3 a) / 2
/// The factor sign(a) sign(b) + 1 doubles the slope where both agree; that is the rule as required.
void limitFlux(std::string_view scheme, double dt, int nodeCount, std::span<const double> inverseDeltaTof,
               std::span<const double> flux, std::span<double> limited);

}  // namespace kvr
