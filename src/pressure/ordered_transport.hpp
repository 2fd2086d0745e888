#pragma once

#include "base/cell_array.hpp"
#include "fluid/state_recovery.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/buoyant_flow.hpp"
#include "pressure/fraction_slopes.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <cstdint>
#include <vector>

namespace kvr {

inline constexpr double SmallestFreeGas = 1e-9;  // saturation from which on gas counts as free

/// What the flow through faces and producing connections is made of, surface amounts per reservoir volume,
/// where somebody knows: lines do. Faces by their low cell and axis 1..3; connections as [well -
/// 1][connection].
struct MakeUp {
    DirectionArray<std::uint8_t> faceKnown;  // width 0: no face is known
    DirectionArray<ConservedAmounts> face;
    std::vector<std::vector<std::uint8_t>> connectionKnown;  // empty: no connection is known
    std::vector<std::vector<ConservedAmounts>> connection;
    CellArray<double>
        Sw;  // at the step's end by the same source, negative where it is silent; empty: not asked for
    bool holdsGravity = false;  // of all that flows: cells by themselves would leave it out
};

/// Exchange of matrix and fractures in the transport, dual porosity.
struct MatrixTransfer {
    double flowUnit = 1.0;  // of transmissibilities, see UnitSystem
    CellArray<double>
        flux;  // in fracture cells, reservoir volume a day out of the matrix; empty: there is none
};

/// What a transport step did beside the amounts.
struct TransportAccount {
    std::vector<std::vector<ConservedAmounts>> wellRates;  // surface amounts a day into the reservoir, mean
    DirectionArray<ConservedAmounts> passed;  // surface amounts a day by low cell and axis, along the flow
    CellArray<ConservedAmounts> transferred;  // in fracture cells, surface amounts a day out of the matrix,
                                              // mean; empty where there is none
    double deficit = 0.0;  // reservoir volume that cells could not give of what their outflow asked for
};

/// Transport of `amounts` over `dt` days by the total flow of faces, one cell after the other down the flow.
/// A cell is a stirred tank: what flows out by a face or a producing connection is made as `makeUp` says or,
/// where it is silent, as the cell's own mobilities make it, in substeps of the cell alone:
///   N(t + h) = N(t) + h (I(t) - sum q_f m_f - q F(N))
/// What is known of an inflow is its mean over the step and, of water and oil that others' own mobilities
/// have made up, how it changes over the step: the line of the same first moment. With means alone each cell
/// on the way of a front would mix it over the whole step.
/// Where a known make-up would take more of a component than the cell holds beyond its immobile part, the
/// cell's own mobilities take its place for that substep; what is not there is not given. A known make-up is
/// followed by a share of the flow only where it would leave another water saturation than `makeUp.Sw`: what
/// it is wrong by is multiplied by how often the flow turns the cell's content over, while the mean of what
/// leaves such a cell is that of what enters it whoever makes it up. What leaves a cell with free gas is
/// never made up by others. So every component is conserved, no amount falls below zero, and the cost does
/// not grow with the smallest cell: a tank that many times its content flows through is steady.
/// What gravity does to water and oil that go along with the flow, each face by itself, is part of it
/// (BuoyantFlow). Cells that flow into each other in a ring are repeated until their flows stand still, or
/// where the ring turns fast are one tank (RingPlan). A fracture cell with an exchange goes with its matrix
/// as a pair of tanks (emptyPair), by its own mobilities alone, and into no tank of a ring. Injecting
/// connections bring their ConnQ. `slopes` are those of the fractional flow. Factors and mobilities of
/// `state` are to be fresh; it is not changed.
void advanceInOrder(double dt, const FractionSlopes& slopes, const GridModel& grid,
                    const ConnectionTable& connections, const FluidTables& tables,
                    const DirectionArray<double>& flux, const WellRecord& wells, const MakeUp& makeUp,
                    const Buoyancy& buoyancy, const CellState& state, CellAmounts& amounts,
                    TransportAccount& account, const MatrixTransfer& transfer = {});

}  // namespace kvr
