#pragma once

#include "pressure/stirred_tank.hpp"
#include "pressure/transfer_head.hpp"

#include <span>

namespace kvr {

// A fracture cell and its matrix as two stirred tanks that exchange fluid at a given total flow.

/// One cell of a pair.
struct PairSide {
    TankFluid fluid;
    double JFactor = 1.0;                   // of its capillary pressures
    double fullWater = 0.0, fullGas = 0.0;  // psi, heads of the phases where they fill the whole height
    HeightShare waterShare, gasShare;
};

struct TransferPair {
    PairSide fracture, matrix;
    double conductance = 0.0;  // Vk, volume a day per psi and 1/cp
    double total = 0.0;        // reservoir volume a day out of the matrix
};

/// What goes out of the matrix, surface amounts a day, negative into it. With the differences h of what
/// capillarity and gravity add to the pressure of the phases, matrix less fracture, the difference d of
/// pressures is the one at which their flows add up to the total Q,
///   Q = sum over the phases of Vk lambda_up (d + h)
/// with the mobility of the side that a phase comes from: phase-potential upstream at a given total flow
/// (Brenier and Jaffre 1991). Oil carries its Rs. Where no phase is mobile on the side that the total comes
/// from, it leaves that side as it stands.
ConservedAmounts transferRate(const FluidTables& tables, const TransferPair& pair, const PhaseState& fracture,
                              const PhaseState& matrix);

/// What left the fractures, and the exchange.
struct PairOutflow {
    TankOutflow outflow;
    ConservedAmounts transferred;  // surface amounts a day out of the matrix, mean of the step
};

/// A pair over dt days: inflow I of the fractures even over the step, total outflow q by their own mobilities
/// (what is asked for with a known make-up as well), X the exchange:
///   dNf/dt = I - q F(Nf) + X(Nf, Nm),   dNm/dt = -X(Nf, Nm)
/// in implicit Euler steps of the pair, solved by Newton's method, whose length follows the change of
/// saturations; so any shape factor, and any flow through the fractures, is stable. No amount falls below
/// zero. `buoyant`: as emptyTank has them, none with a known make-up.
PairOutflow emptyPair(const FluidTables& tables, const TransferPair& pair, const TankFlows& flows, double dt,
                      const ConservedAmounts& fracture, const ConservedAmounts& matrix,
                      std::span<BuoyantFlow> buoyant = {});

}  // namespace kvr
