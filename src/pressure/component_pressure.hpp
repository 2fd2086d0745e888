#pragma once

#include "base/units.hpp"
#include "model/connections.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/pressure_matrix.hpp"

namespace kvr {

/// Volume balance of components: what a cell holds, with what flows in, fills its pores at the new pressure,
///   (V_fluid(N, P) - V_pores(P))/dt + sum_i Partial_i F_i(P) = 0,
/// F_i the inflow in lb-mole a day. Storage into MatDiag and MatRhs, which are set: what the pores lack or
/// hold too much of stands in the residual, so that it does not pile up over steps; with
/// it what the passes before over the same step left over.
void accumulateComponents(double dt, const GridModel& grid, const FluidTables& tables,
                          const ComponentStage& stage, const CellState& state, PressureMatrix& matrix);

/// Flow between cells: MatOff is set, the inflow is added to MatRhs. A phase has its upstream mobility, molar
/// density and composition, and the volume that these moles take in the cell.
void flowComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const ComponentStage& stage, const CellState& state, PressureMatrix& matrix);

}  // namespace kvr
