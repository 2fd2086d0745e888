#pragma once

#include "fluid/tables.hpp"
#include "implicit/jet.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/well_rates.hpp"

#include <array>
#include <cstdint>

namespace kvr {

/// The third unknown of a cell in a run with gas. Where there is free gas, or an oil that dissolves none, the
/// oil is saturated (Pb = p, Rs = SolutionRs(p)) and the gas saturation is unknown; elsewhere Sg is 0 and
/// Rs is unknown, with Pb = BubblePoint(Rs). Without oil the gas saturation is unknown too, but Rs and Pb
/// stay as they are: nothing hangs on them but the density that neighbours see when oil comes in.
enum class ThirdUnknown : std::uint8_t { FreeGas, SolutionGas, WithoutOil };

/// Places of the unknowns of a cell. A run without gas has the first two.
enum UnknownPlace : std::size_t { PressurePlace, WaterPlace, GasPlace };
/// Places of the phases, and of the components that bear their names, in runs of two and three phases.
enum PhasePlace : std::size_t { WaterPhase, OilPhase, GasPhase };

/// Everything that the state of one cell gives, with its slopes by the N unknowns of the cell.
template <std::size_t N>
struct CellFluid {
    Jet<N> poreVolume;
    Jet<N> pressureW, pressureO, pressureG;
    HeldFluid<Jet<N>> held;
    ConnectionFluid<Jet<N>> mobile;
};

/// Values and slopes from a state whose properties are fresh; slopes of tables as the look-ups give them.
template <std::size_t N>
CellFluid<N> cellFluid(const GridModel& grid, const FluidTables& tables, const CellState& state, CellId cell,
                       ThirdUnknown unknown);

/// One value by phase, with its slopes by the unknowns of the cell.
template <std::size_t N>
using PhaseJets = std::array<Jet<N>, N>;

/// What accumulation and flow read of a cell, by phase.
template <std::size_t N>
struct CellTerms {
    std::array<Jet<N>, N> amount;    // surface volumes in the cell; dissolved gas stands with the gas
    std::array<Jet<N>, N> pressure;  // psia, of the phase
    std::array<Jet<N>, N> density;   // lb/ft3
    std::array<Jet<N>, N> flow;      // mobility over formation factor
    Jet<N> Rs;
};

template <std::size_t N>
CellTerms<N> cellTerms(const FluidTables& tables, const CellFluid<N>& fluid);

}  // namespace kvr
