#pragma once

#include "fluid/state_recovery.hpp"

namespace kvr {

/// What the exchange over a face needs to know of a cell, frozen over a substep.
struct SplittingCell {
    double lambdaW = 0.0, lambdaO = 0.0, lambdaG = 0.0;  // 1/cp
    double pcow = 0.0, pcog = 0.0;                       // psi; 0 without capillary pressure
    double rhoW = 0.0, rhoO = 0.0, rhoG = 0.0;           // lb/ft3; 0 without gravity
    double inverseBw = 1.0, inverseBo = 1.0, inverseBg = 1.0;
    double Rs = 0.0;
};

/// Sums over the faces of a cell, out of the cell: surface amounts and reservoir volumes a day.
struct ExchangeRates {
    ConservedAmounts amount;
    double volumeW = 0.0, volumeO = 0.0, volumeG = 0.0;
};

/// A phase that is less mobile than this, 1/cp, in both cells together has no potential, and one whose
/// upstream mobility is below it does not flow.
inline constexpr double ImmobileLimit = 1e-10;

/// Flux of phase a out of cell i against phase b at zero total velocity, and where each comes from.
struct PairFlux {
    double q = 0.0;  // internal volume a day; phase b moves by -q
    bool aFromI = true, bFromI = true;
};

/// Mobilities of a phase in the cell and its neighbour, and its density times the head of the face.
struct PairPhase {
    double lambdaI = 0.0, lambdaJ = 0.0;  // 1/cp
    double weight = 0.0;                  // psi: mean density * (depth of j - depth of i) / 144
};

/// Counter-current exchange over one face:
///   q = T la lb / (la + lb) (G + C),  G = (rho_a - rho_b) dD,  dD = DepthDiff / 144
/// C = Pc difference that drives a out of i: Pcow(j) - Pcow(i) for water and oil, Pcog(i) - Pcog(j) for
/// gas and oil. Upstream compares the two phases, not the cells: with Phi_a = -rho_a dD and
/// Phi_b = C - rho_b dD phase a comes from i if Phi_a <= Phi_b, b from i if Phi_b <= Phi_a, both on a tie.
/// Seen from j the flux is the same number with the other sign, to the last bit.
inline PairFlux counterCurrentFlux(double trans, const PairPhase& a, const PairPhase& b, double capillary) {
    const double phiA = a.lambdaI + a.lambdaJ < ImmobileLimit ? 0.0 : -a.weight;
    const double phiB = b.lambdaI + b.lambdaJ < ImmobileLimit ? 0.0 : capillary - b.weight;
    PairFlux flux;
    flux.aFromI = phiA <= phiB;
    flux.bFromI = phiB <= phiA;
    const double la = flux.aFromI ? a.lambdaI : a.lambdaJ;
    const double lb = flux.bFromI ? b.lambdaI : b.lambdaJ;
    if (!(la >= ImmobileLimit) || !(la + lb > 0.0)) return flux;
    flux.q = trans * (la * lb / (la + lb)) * ((a.weight - b.weight) + capillary);
    return flux;
}

/// Adds what leaves cell i over one face to `out`. Water and oil, and with a gas phase gas and oil, exchange
/// by pairs; oil takes its solution gas along. trans internal volume cp/(day psi), head = DepthDiff / 144.
inline void addFaceExchange(const SplittingCell& i, const SplittingCell& j, double trans, double head,
                            bool hasGas, ExchangeRates& out) {
    const PairPhase oil{i.lambdaO, j.lambdaO, 0.5 * (i.rhoO + j.rhoO) * head};
    const PairPhase water{i.lambdaW, j.lambdaW, 0.5 * (i.rhoW + j.rhoW) * head};
    const PairFlux wo = counterCurrentFlux(trans, water, oil, j.pcow - i.pcow);
    const SplittingCell& oilUp = wo.bFromI ? i : j;
    const double oilRate = -wo.q * oilUp.inverseBo;
    out.amount.water += wo.q * (wo.aFromI ? i : j).inverseBw;
    out.amount.oil += oilRate;
    out.volumeW += wo.q;
    out.volumeO -= wo.q;
    if (!hasGas) return;
    const PairPhase gas{i.lambdaG, j.lambdaG, 0.5 * (i.rhoG + j.rhoG) * head};
    const PairFlux go = counterCurrentFlux(trans, gas, oil, i.pcog - j.pcog);
    const SplittingCell& oilBackUp = go.bFromI ? i : j;
    const double oilBackRate = -go.q * oilBackUp.inverseBo;
    out.amount.oil += oilBackRate;
    out.amount.gas += go.q * (go.aFromI ? i : j).inverseBg + oilUp.Rs * oilRate + oilBackUp.Rs * oilBackRate;
    out.volumeG += go.q;
    out.volumeO -= go.q;
}

}  // namespace kvr
