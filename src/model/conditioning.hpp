#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

namespace kvr {

/// Finishes the rock arrays, builds the neighbour table and every connection, applies the multipliers in
/// their fixed order and prints the "PRECONDITIONED GEOLOGICAL INFORMATION" summary. Repeatable: rock
/// rows of EDIT act once per run, transmissibility rows every time. Smoothing acts in place once per run,
/// behind the connections; upscaling leaves its averages in `grid.upscaled`. NINEPOIN moves transmissibility
/// to the diagonals for the FIM method only; the others have the neighbours, without flow.
void CALCTRANS_STATICGEOPART(const Console& console, const RunOptions& options, const UnitSystem& units,
                             GridModel& grid, ConnectionTable& connections);

/// Gives back what no run reads behind the conditioning: half transmissibilities, harmonic permeabilities,
/// lengths and sums of areas; the areas too where no velocities are needed.
void releaseConditioning(bool keepAreas, ConnectionTable& connections);

/// The first step of the conditioning, which the initial state needs as well: cells without rock are shut,
/// and capillary scales of the J-function are formed (1 without it). Repeatable.
void prepareRock(const RunOptions& options, GridModel& grid);

}  // namespace kvr
