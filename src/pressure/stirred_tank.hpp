#pragma once

#include "base/cell_array.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/tables.hpp"
#include "pressure/buoyant_flow.hpp"
#include "pressure/fraction_slopes.hpp"

#include <array>
#include <span>

namespace kvr {

inline void add(double factor, const ConservedAmounts& a, ConservedAmounts& sum) {
    sum.water += factor * a.water;
    sum.oil += factor * a.oil;
    sum.gas += factor * a.gas;
}

/// What a cell's fluids are while it is emptied: held over the step.
struct TankFluid {
    CellId cell = 0;
    int region = 1;
    double poreVolume = 0.0;
    RecoveryFactors factors;
    double saturatedRs = 0.0;
    double MuW = 1.0, MuO = 1.0, MuG = 1.0;  // cp
};

/// Flows of a cell, a day.
struct TankFlows {
    ConservedAmounts inflow;   // surface amounts
    double tilt = 0.0;         // water volume in the place of oil by which that changes over the step
    double rest = 0.0;         // reservoir volume that leaves as the cell's own mobilities make it
    double asked = 0.0;        // reservoir volume that leaves with a known make-up ...
    ConservedAmounts request;  // ... and the surface amounts that it takes

    void ask(double flow, const ConservedAmounts& perVolume) {
        asked += flow;
        request.water += flow * perVolume.water;
        request.oil += flow * perVolume.oil;
        request.gas += flow * perVolume.gas;
    }

    /// Leaves a share of what is asked for as it is; the rest goes as the cell's own mobilities make it.
    void follow(double share) {
        rest += (1.0 - share) * asked;
        asked *= share;
        request = {share * request.water, share * request.oil, share * request.gas};
    }
};

/// What left, as means over the step.
struct TankOutflow {
    ConservedAmounts own;    // of the cell's own make-up, surface amounts per reservoir volume
    double tilt = 0.0;       // water in the place of oil by which that changes, volume per volume
    ConservedAmounts apart;  // the same over the times when the known make-up was not followed
    double followed = 1.0;   // share of the step in which it was
    ConservedAmounts given{1.0, 1.0, 1.0};  // share of each component's outflow that was there to be given
    double deficit = 0.0;                   // reservoir volume of the rest
};

/// Reservoir volume of amounts at the factors of a tank; gas is dissolved as far as the oil takes it.
double volumeOf(const TankFluid& fluid, const ConservedAmounts& amounts);

/// What leaves a tank with these contents per reservoir volume, by its own mobilities.
ConservedAmounts ownMakeUp(const FluidTables& tables, const TankFluid& fluid, const ConservedAmounts& held);

/// Saturations as volume shares, and the solution gas of the oil; the bubble point is left open.
PhaseState tankState(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                     const ConservedAmounts& held);

/// Surface amounts that a reservoir volume takes along at the tank's mobilities in a state. Where nothing is
/// mobile the phases leave as they stand.
ConservedAmounts makeUpAt(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state);

/// Mobilities of water and oil of a tank in a state, with their shares of the sum.
struct PairMobility {
    double water = 0.0, oil = 0.0;  // 1/cp
    double waterShare = 0.0, oilShare = 0.0;
};

/// What gravity makes of the flows of a tank's own mobilities over a substep.
struct OwnExchange {
    PairMobility lambda;
    double Rs = 0.0;  // of the oil
    ConservedAmounts rest,
        asked;  // surface amounts a day in the place of others, in flows.rest and flows.asked
};
OwnExchange turnedOwn(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state,
                      std::span<const BuoyantFlow> buoyant);

/// Shares of the outflow that were there, and the reservoir volume of what was `missing` of `request` and of
/// what left by the tank's own mobilities.
void accountForMissing(const TankFluid& fluid, const TankFlows& flows, const ConservedAmounts& request,
                       double dt, const ConservedAmounts& missing, std::span<const BuoyantFlow> buoyant,
                       TankOutflow& out);

/// The outflow of a stirred tank over dt days from what it holds at the start, see advanceInOrder. Substeps
/// by the flow through the pore volume times the rise of the fractional flow over the saturations that they
/// lead through, or the steepest where regions have none. `buoyant`: those of the flows on which gravity
/// acts, of water and oil alone; what it makes of them is written there.
TankOutflow emptyTank(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows, double dt,
                      const FractionSlopes& slopes, const ConservedAmounts& start,
                      std::span<BuoyantFlow> buoyant = {});

}  // namespace kvr
