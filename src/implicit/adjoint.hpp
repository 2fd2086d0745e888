#pragma once

#include "implicit/run_level.hpp"
#include "run/records/simulation.hpp"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kvr {

/// What a well shows.
enum class WellQuantity {
    Cut,          // water over liquid, surface rates
    GasOilRatio,  // Mscf/stb, units of the histories
    Pressure      // bottom-hole, psia
};

/// A number that a run gives: sum over levels of weight * quantity of a well at the end of the level.
struct WellFunctional {
    std::string well;
    WellQuantity quantity = WellQuantity::Cut;
    std::vector<double> weights;  // by level
};

/// The end of the step that a run has just taken, `dt` days long.
RunLevel levelOf(const Simulation& simulation, double dt);

/// Derivatives of functionals of a run by ln k of the cells, that along x, y and z at once, from the ends of
/// its steps. With R_n(x_n, x_n-1, ln k) = 0 the balances of step n (implicit/jacobian), wells among them,
///   (dR_n/dx_n)' l_n = -(dR_n+1/dx_n)' l_n+1 - (dg/dx_n)',
///   dg/d ln k = sum over n of l_n' dR_n/d ln k + the part of the wells' own indices,
/// one backward pass of linear systems for each functional (Oliver, Reynolds and Liu, Inverse Theory for
/// Petroleum Reservoir Characterization and History Matching, 2008, chapter 9). It is the derivative of the
/// fully implicit run, heads of wells with several connections being held; where the levels are those of
/// another method, that of the fully implicit steps which lead along them. Transmissibilities change by the
/// shares of their two cells in the resistance; connection factors that the deck gives stay. False where a
/// system cannot be solved: what has been found so far stays.
bool adjointDerivatives(const Simulation& simulation, std::span<const RunLevel> levels,
                        std::span<const WellFunctional> functionals,
                        std::vector<CellArray<double>>& derivatives);

}  // namespace kvr
