#pragma once

#include "base/units.hpp"
#include "model/connections.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/flow_coefficients.hpp"
#include "pressure/pressure_matrix.hpp"

#include <span>

namespace kvr {

/// Volume balance of components: what a cell holds, with what flows in, fills its pores at the new pressure,
///   (V_fluid(N, P) - V_pores(P))/dt + sum_i Partial_i F_i(P) = 0,
/// F_i the inflow in lb-mole a day. Storage into MatDiag and MatRhs, which are set: what the pores lack or
/// hold too much of stands in the residual, so that it does not pile up over steps.
void accumulateComponents(double dt, const GridModel& grid, const FluidTables& tables,
                          const ComponentStage& stage, const CellState& state, PressureMatrix& matrix);

/// Flow between cells: MatOff is set, the inflow is added to MatRhs. A phase has its upstream mobility, molar
/// density and composition, and the volume that these moles take in the cell.
void flowComponents(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                    const ComponentStage& stage, const CellState& state, PressureMatrix& matrix);

/// Sources into MatDiag and MatRhs.
void addComponentSources(std::span<const ComponentSource> sources, const ComponentStage& stage,
                         const CellState& state, PressureMatrix& matrix);

/// Internal volume a day and psi that a source by pressure gives or takes, and the drawdown; both 0 where it
/// would flow the other way: one with a stream injects, one without produces.
struct SourceFlow {
    double coefficient = 0.0;
    double drawdown = 0.0;  // psi, into the reservoir positive
};
SourceFlow sourceFlow(const ComponentSource& source, const CellState& state);

/// True for sources that bring a stream.
bool injects(const ComponentSource& source);

}  // namespace kvr
