#pragma once

#include "fluid/state_recovery.hpp"
#include "pressure/buoyant_flow.hpp"

#include <algorithm>

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

inline void scale(double factor, ExchangeRates& rates) {
    rates.amount = {factor * rates.amount.water, factor * rates.amount.oil, factor * rates.amount.gas};
    rates.volumeW *= factor;
    rates.volumeO *= factor;
    rates.volumeG *= factor;
}

inline void add(const ExchangeRates& more, ExchangeRates& sum) {
    sum.amount.water += more.amount.water;
    sum.amount.oil += more.amount.oil;
    sum.amount.gas += more.amount.gas;
    sum.volumeW += more.volumeW;
    sum.volumeO += more.volumeO;
    sum.volumeG += more.volumeG;
}

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

/// Two phases over a face through which something flows: what leaves cell i, and where each comes from.
struct ThroughPair {
    double a = 0.0, b = 0.0;  // internal volume a day
    bool aFromI = true, bFromI = true;
};

/// Flow of phases a and b under gravity and capillarity over a face through which both together flow at the
/// rate `through` out of i, each phase upstream by its own flow (phase potential upstream after Brenier and
/// Jaffre 1991):
///   q_a = la / (la + lb) (through + T lb d),  q_b = through - q_a
/// d is what drives a out of i against b, see counterCurrentFlux. The phase that d drives out of i, a with
/// d > 0, b with d < 0, comes from i unless `through` overcomes it; the same from j for the other one. With
/// through = 0 this is the counter-current exchange.
inline ThroughPair throughFlowFlux(double trans, double through, double d, const PairPhase& a,
                                   const PairPhase& b) {
    ThroughPair flux;
    if (d > 0.0) {
        flux.aFromI = through + trans * d * b.lambdaJ > 0.0;
        flux.bFromI = through - trans * d * a.lambdaI > 0.0;
    } else {
        flux.aFromI = through + trans * d * b.lambdaI > 0.0;
        flux.bFromI = through - trans * d * a.lambdaJ > 0.0;
    }
    const double la = flux.aFromI ? a.lambdaI : a.lambdaJ;
    const double lb = flux.bFromI ? b.lambdaI : b.lambdaJ;
    if (!(la + lb > 0.0)) return flux;
    flux.a = la / (la + lb) * (through + trans * lb * d);
    flux.b = through - flux.a;
    return flux;
}

/// Gas that leaves i for its own sake. What only takes back gas that transport brought in may exceed what
/// the cell shows as free, and limits no substep.
inline double gasLeaving(double gas, double transported) {
    return transported < 0.0 ? gas : gas - transported;
}

/// Adds what gravity and capillarity change in the flow of gas and oil out of i, where transport has moved
/// both by mobilities alone with the total flow `through` out of i. Gas that transport carries against
/// gravity into a cell without free gas dissolves there, so that no exchange of free phases could take it
/// back; this does.
inline void addThroughFlowExchange(const SplittingCell& i, const SplittingCell& j, double trans,
                                   double through, const PairPhase& gas, const PairPhase& oil,
                                   ExchangeRates& out) {
    const SplittingCell& up = through > 0.0 ? i : j;
    const double pair = up.lambdaO + up.lambdaG;
    if (!(pair > 0.0)) return;
    const double q = through * pair / (pair + up.lambdaW);
    const ThroughPair flux =
        throughFlowFlux(trans, q, (gas.weight - oil.weight) + (i.pcog - j.pcog), gas, oil);
    const double movedGas = q * up.lambdaG / pair;
    const double movedOil = q - movedGas;
    const SplittingCell& oilUp = flux.bFromI ? i : j;
    const double oilRate = flux.b * oilUp.inverseBo;
    const double movedOilRate = movedOil * up.inverseBo;
    out.amount.oil += oilRate - movedOilRate;
    out.amount.gas += flux.a * (flux.aFromI ? i : j).inverseBg - movedGas * up.inverseBg +
                      oilUp.Rs * oilRate - up.Rs * movedOilRate;
    out.volumeG += gasLeaving(flux.a, movedGas);
    out.volumeO += flux.b - movedOil;
}

/// Total flow out of a cell through a face, and the water in it as transport has moved it; volumes a day.
/// `daysMoved`: days of that transport to one of the exchange, 0 ahead of the transport.
struct ThroughFlow {
    double total = 0.0, water = 0.0, daysMoved = 1.0;
    bool buoyant = false;  // the transport has taken gravity along
    bool freeGas = false;  // gas was there when the transport began
};

/// What gravity and capillarity change in the flow of a phase: what they keep of what transport took along,
/// and what they drive against the flow beyond that; both 0 or more.
struct HeldBack {
    double kept = 0.0, turned = 0.0;
};
inline HeldBack heldBack(double moved, double flowing, double brought) {
    const double held = moved - flowing;
    if (!(held > 0.0)) return {};
    const double back = std::min(moved, held);
    return {std::min(back, std::max(0.0, brought)), held - back};
}

/// Adds what gravity and capillarity change in the flow of water and oil out of i, where transport has moved
/// both with the total flow, by mobilities alone or with gravity (`through.buoyant`). The change is that of
/// the flow at the mobilities of the cells, and of what transport has brought no more is taken back: lines
/// may have made the flow up otherwise. It is all taken back behind the transport, while what goes against
/// the flow goes ahead and behind. What is only taken back has been brought before, and limits no substep:
/// contents bound it.
inline void addThroughFlowOfWater(const SplittingCell& i, const SplittingCell& j, double trans, bool hasGas,
                                  const ThroughFlow& through, const PairPhase& water, const PairPhase& oil,
                                  ExchangeRates& out) {
    const bool outward = through.total > 0.0;
    const double sign = outward ? 1.0 : -1.0;
    const SplittingCell& up = outward ? i : j;
    const double pair = up.lambdaO + up.lambdaW;
    if (!(pair > 0.0)) return;
    const double gravity = water.weight - oil.weight, capillary = j.pcow - i.pcow;
    const ThroughPair flux = throughFlowFlux(trans, through.total, gravity + capillary, water, oil);
    const double flow = sign * through.total;
    double movedWater = flow * (up.lambdaW / pair);
    if (through.buoyant)
        movedWater += flow * buoyantShare(trans * lastingDrive(gravity, capillary) / through.total,
                                          up.lambdaW, up.lambdaO);
    const double movedOil = flow - movedWater;
    const HeldBack waterHeld = heldBack(movedWater, sign * flux.a, sign * through.water);
    const HeldBack oilHeld = heldBack(movedOil, sign * flux.b, sign * (through.total - through.water));
    // Water out of i in place of oil.
    const double kept = sign * through.daysMoved * (oilHeld.kept - waterHeld.kept);
    const double q = kept + sign * (oilHeld.turned - waterHeld.turned);
    const SplittingCell& oilFrom = q > 0.0 ? j : i;
    const double oilRate = -q * oilFrom.inverseBo;
    out.amount.water += q * (q > 0.0 ? i : j).inverseBw;
    out.amount.oil += oilRate;
    if (hasGas) out.amount.gas += oilFrom.Rs * oilRate;
    out.volumeW += q - kept;
    out.volumeO -= q - kept;
}

/// Adds what water and oil exchange at no total flow; oil takes its solution gas along.
inline void addPairExchange(const SplittingCell& i, const SplittingCell& j, double trans, bool hasGas,
                            const PairPhase& water, const PairPhase& oil, ExchangeRates& out) {
    const PairFlux wo = counterCurrentFlux(trans, water, oil, j.pcow - i.pcow);
    const SplittingCell& oilUp = wo.bFromI ? i : j;
    const double oilRate = -wo.q * oilUp.inverseBo;
    out.amount.water += wo.q * (wo.aFromI ? i : j).inverseBw;
    out.amount.oil += oilRate;
    if (hasGas) out.amount.gas += oilUp.Rs * oilRate;
    out.volumeW += wo.q;
    out.volumeO -= wo.q;
}

/// Adds what leaves cell i over one face to `out`. Water and oil, and with a gas phase gas and oil, exchange
/// by pairs; oil takes its solution gas along. trans internal volume cp/(day psi), head = DepthDiff / 144.
/// `through`: what transport has moved out of i over the face, 0 where it does not matter.
inline void addFaceExchange(const SplittingCell& i, const SplittingCell& j, double trans, double head,
                            bool hasGas, const ThroughFlow& through, ExchangeRates& out) {
    const PairPhase oil{i.lambdaO, j.lambdaO, 0.5 * (i.rhoO + j.rhoO) * head};
    const PairPhase water{i.lambdaW, j.lambdaW, 0.5 * (i.rhoW + j.rhoW) * head};
    if (!through.freeGas && through.total != 0.0)
        addThroughFlowOfWater(i, j, trans, hasGas, through, water, oil, out);
    else
        addPairExchange(i, j, trans, hasGas, water, oil, out);
    if (!hasGas) return;
    const PairPhase gas{i.lambdaG, j.lambdaG, 0.5 * (i.rhoG + j.rhoG) * head};
    if (through.total != 0.0) return addThroughFlowExchange(i, j, trans, through.total, gas, oil, out);
    const PairFlux go = counterCurrentFlux(trans, gas, oil, i.pcog - j.pcog);
    const SplittingCell& oilUp = go.bFromI ? i : j;
    const double oilRate = -go.q * oilUp.inverseBo;
    out.amount.oil += oilRate;
    out.amount.gas += go.q * (go.aFromI ? i : j).inverseBg + oilUp.Rs * oilRate;
    out.volumeG += go.q;
    out.volumeO -= go.q;
}

}  // namespace kvr
