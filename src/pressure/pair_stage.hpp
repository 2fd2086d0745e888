#pragma once

#include "pressure/pair_tank.hpp"

#include <array>
#include <cstddef>
#include <span>

namespace kvr {

// One implicit stage of a fracture cell and its matrix, see emptyPair.

/// Newton's method of a stage.
struct PairNewton {
    static constexpr int MostIterations = 12;
    static constexpr double Balance = 1e-8;      // of the pores, that a state may be off by ...
    static constexpr double FairBalance = 1e-5;  // ... where slopes jump and the iteration creeps
    static constexpr double LargestMove = 0.25;  // of an unknown in an iteration
    static constexpr double Difference = 1e-7;   // of the pores, for slopes
};

inline constexpr double PairMobilityGuard = 1e-20;  // 1/cp, of all phases: below it none is mobile

inline constexpr std::size_t MostPairUnknowns = 6;  // three components in two cells
using PairUnknowns = std::array<double, MostPairUnknowns>;
using ByPhase = std::array<double, 3>;  // water, oil, gas

/// What the balances of a stage are made of. Its amounts are those from which it goes.
struct PairBalance {
    const FluidTables& tables;
    const TransferPair& pair;
    const TankFlows& flows;
    std::span<BuoyantFlow> buoyant;
    const SaturationTable& fractureTable;
    const SaturationTable& matrixTable;
    double out = 0.0;       // reservoir volume a day that leaves the fractures
    double inVolume = 0.0;  // ... and comes in, beside the exchange
    ConservedAmounts fracture, matrix;
};

/// What flows in a state of the pair.
struct PairFlow {
    PhaseState fracture, matrix;
    ConservedAmounts own;      // surface amounts per reservoir volume of the outflow
    OwnExchange turned;        // by gravity, in it
    ConservedAmounts outflow;  // surface amounts a day, all of it
    ConservedAmounts transfer;
};

/// The conductance of a stage of h days.
double stageConductance(const TransferPair& pair, double h);

/// Shares of the pores that components would fill, of the fractures and then of the matrix: the unknowns.
/// Without gas the first two, its water, are all: the flows tell the volume.
PairUnknowns unknownsOf(const PairBalance& balance);

/// Implicit Euler over h days from the amounts of the balance, by Newton's method from x; false where it
/// finds no state, then with the flows of the last iterate, or of the first where these are no numbers.
bool solveStage(const PairBalance& balance, double h, PairUnknowns& x, PairFlow& flow);

}  // namespace kvr
