#pragma once

#include "fluid/phase_state.hpp"
#include "fluid/tables.hpp"

namespace kvr {

/// Formation volume factors and pressure at which amounts are turned into saturations.
struct RecoveryFactors {
    double pressure = 0.0;  // psia
    double Bw = 1.0, Bo = 1.0, Bg = 1.0;
    bool limitsRs = false;  // oil beside free gas holds less than the pressure would let it (DRSDT)
};

/// Saturations from conserved amounts after a transport step, at held pressure and factors: gas beyond
/// what the oil can dissolve is free, otherwise all of it is dissolved; then the limits (0..1, or the end
/// points of the region with `keepEndPoints`) and the scaling to sum 1. Without a gas phase water and oil
/// are clamped at 0 and scaled, nothing more, a NaN is left for the caller to replace, and Rs and Pb are
/// returned as 0: the node's own stand. `tables` hold the fluids of the place, `table` its rock.
PhaseState recoverState(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                        const RecoveryFactors& factors, const ConservedAmounts& amounts);

/// The same for a saturation region of `tables`.
inline PhaseState recoverState(const FluidTables& tables, int region, bool keepEndPoints,
                               const RecoveryFactors& factors, const ConservedAmounts& amounts) {
    return recoverState(tables, regionTable(tables, region), keepEndPoints, factors, amounts);
}

/// The same in a run with gas for a node whose pressure is held over many steps: `saturatedRs` is
/// SolutionRs(factors.pressure), looked up once.
PhaseState recoverState(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                        const RecoveryFactors& factors, double saturatedRs, const ConservedAmounts& amounts);

/// The same with gas, but for the table search of an undersaturated state: its bubble point is left at
/// OpenBubblePoint, and completeBubblePoint sets it from its Rs. Transport takes many substeps, of which only
/// the last one is asked for it.
inline constexpr double OpenBubblePoint = -1.0;  // psia
PhaseState recoverButBubblePoint(const FluidTables& tables, const SaturationTable& table, bool keepEndPoints,
                                 const RecoveryFactors& factors, double saturatedRs,
                                 const ConservedAmounts& amounts);
void completeBubblePoint(const FluidTables& tables, double pressure, double rs, double& pb);

/// The limits and the scaling alone. A sum of nothing is left as it is.
void limitSaturations(const SaturationTable& table, bool keepEndPoints, PhaseState& state);

}  // namespace kvr
