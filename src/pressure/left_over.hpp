#pragma once

#include "deck/options.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/pressure_work.hpp"
#include "pressure/wells/wells.hpp"

namespace kvr {

/// What the equations of an assembled pressure system still ask for, read off its right-hand side.
struct LeftOver {
    double field = 0.0;     // sum of the volumes left over in cells, of all pore volumes
    double cell = 0.0;      // largest of them, of the cell's pore volume
    double pressure = 0.0;  // psi by which their signed sum would move the field as a whole
    double rate = 0.0;      // largest distance of a rate well from its target, of what its connections let by
};

/// Pore volume below which a cell is judged as if it had this much: a millionth of the mean of those that
/// have any. What a cell of next to no pores has too much or too little is nothing to the field.
double leastJudgedVolume(const GridModel& grid, const CellState& state);

/// The system is that of the present state; coefficients are to stand (see releaseCoefficients).
LeftOver measureLeftOver(double dt, const GridModel& grid, const CellState& state, const WellRecord& wells,
                         const PressureMatrix& matrix);

/// What is left over, of what a step may hand on, by the criterion that is furthest gone: that is a share of
/// what it may be judged wrong by itself, so that another solve would change nothing that counts.
double shareOfHandedOn(const RunOptions& options, const LeftOver& leftOver);

/// Moves the bottom-hole pressures of rate wells to where their rows ask for nothing at the present pressures
/// of the cells, so that the rates are the targets; what this leaves over is in cells.
void settleRateWells(const PressureMatrix& matrix, WellRecord& wells);

}  // namespace kvr
