#pragma once

#include "base/cell_array.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/tables.hpp"
#include "pressure/buoyant_flow.hpp"

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
    ConservedAmounts own;                   // of the cell's own make-up, surface amounts per reservoir volume
    ConservedAmounts apart;                 // the same over the times when the known make-up was not followed
    double followed = 1.0;                  // share of the step in which it was
    ConservedAmounts given{1.0, 1.0, 1.0};  // share of each component's outflow that was there to be given
    double deficit = 0.0;                   // reservoir volume of the rest
};

/// Reservoir volume of amounts at the factors of a tank; gas is dissolved as far as the oil takes it.
double volumeOf(const TankFluid& fluid, const ConservedAmounts& amounts);

/// What leaves a tank with these contents per reservoir volume, by its own mobilities.
ConservedAmounts ownMakeUp(const FluidTables& tables, const TankFluid& fluid, const ConservedAmounts& held);

/// The outflow of a stirred tank over dt days from what it holds at the start, see advanceInOrder. Substeps
/// by the flow through the pore volume times `slope`, the steepest rise of a fractional flow; a tank whose
/// composition stands still takes the rest of the step at once. `buoyant`: those of the flows on which
/// gravity acts, of water and oil alone; what it makes of them is written there.
TankOutflow emptyTank(const FluidTables& tables, const TankFluid& fluid, const TankFlows& flows, double dt,
                      double slope, const ConservedAmounts& start, std::span<BuoyantFlow> buoyant = {});

}  // namespace kvr
