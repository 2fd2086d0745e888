#pragma once

#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"

#include <cstdint>
#include <span>

namespace kvr {

/// Amounts that fill the pores of every active cell with the composition, saturation of water and pressure
/// that it has. `volumeFactor`: ft3 in an internal volume.
void fillPores(const GridModel& grid, const FluidTables& tables, double volumeFactor, const CellState& state,
               ComponentStage& stage);

/// Which volumes are measured beside the phases.
enum class VolumeSlopes { None, Pressure, All };

/// Whether saturations follow the volumes of the phases: over a pressure solve they stand, with the relative
/// permeabilities, for the flash of a closed cell knows nothing of what flows through it.
enum class Saturations { Found, Held };

/// Everything of every active cell that follows from its amounts and its pressure: composition, flash,
/// saturations as shares of the fluids' volume, pore volume, densities, viscosities, mobilities, phase
/// pressures; with VolumeSlopes::Pressure also FluidSlope, with All Partial too, which stand otherwise. Every
/// cell by itself: the same for any number of threads.
void refreshComponents(const GridModel& grid, const FluidTables& tables, double volumeFactor,
                       VolumeSlopes slopes, Saturations saturations, ComponentStage& stage, CellState& state);

/// Keeps the mobilities that a pressure has been solved with in ComponentStage::solvedMobility.
void keepSolvedMobilities(const CellState& state, ComponentStage& stage);

/// Back from the means of a step to the mobilities of what cells hold.
void leaveMeanMobilities(const GridModel& grid, ComponentStage& stage, CellState& state);

/// The same without slopes for some cells.
void refreshCells(const GridModel& grid, const FluidTables& tables, double volumeFactor,
                  std::span<const CellId> cells, ComponentStage& stage, CellState& state);

}  // namespace kvr
