#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Time-of-flight and connection maps of the whole grid on the present velocity field, from lines through
/// the centres of cells: of every cell in grids of fewer than 2602 cells, otherwise of the cells that no
/// earlier one has passed. A line that joins two wells gives every cell that it passes the times from the
/// injector and to the producer at the point where it leaves the cell. Each map keeps the smallest time of a
/// cell, or with `means` the time halfway through it of the line that starts in its centre, elsewhere the
/// mean of that over the lines that pass near its centre, by the days that they take through it; the wells
/// are those of the last line. To pass a cell is to start in it, or to stay in it for the mean residence time
/// of its flow. Cells that no line passes keep 1e10 and no wells. `referenceField` is one of reference cubes,
/// `nodes` the capacity of a line. Returns the number of lines.
int traceDiagnostics(const GridModel& grid, const TraceField& referenceField,
                     const CellArray<double>& poreVolume, const WellRecord& wells, const PairTable& pairs,
                     int nodes, bool means, DiagnosticMaps& maps);

/// The maps, between two rules on the screen, and their files: Tecplot zones with the maps switched on,
/// plain lists by cell for the view.
void runDiagnostics(Simulation& simulation);

/// Replaces the table of rates by pair: running number, connection number, rb/day.
void writeRateAllocation(const Simulation& simulation);

}  // namespace kvr
