#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/tracing/launch_plan.hpp"
#include "streamline/tracing/streamline_record.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace kvr {

/// rb/day; keeps the residence time of a dead cell and of an idle completion finite.
inline constexpr double FluxGuard = 1e-10;

/// What tracing needs of one cell in one line of the processor's cache: a line touches cells in no order.
struct alignas(64) TraceCell {
    std::array<double, 6> face;  // velocity at faces 1..6, positive toward increasing index
    double dayPerTime;           // days in one unit of crossing time: pore volume (cube), porosity NTG (box)
    int lastWell;                // last well completed here, 0 for none
    std::uint8_t exitForward, exitBackward;
    CellTagKind tag;
};
static_assert(sizeof(TraceCell) == 64);

/// What only the box family needs beside it; the reference cube has sides of 1.
struct BoxCell {
    std::array<double, 3> length;    // ft
    std::array<double, 3> gradient;  // of each velocity along its own axis
    double completionTime;           // see completionTime
};

/// The frozen field of one step, as tracing reads it.
struct TraceField {
    bool referenceCube = true;
    bool flat = false;      // one layer: points stay at mid-cell along z
    bool flatStep = false;  // box family, one layer, corner-point depths: see traceLine on step lengths
    CellId cellCount = 0;
    std::array<CellId, 6> stride{};  // from a cell to its neighbour behind faces 1..6, where it has one
    std::vector<TraceCell> cells;    // by CellId, [0] unused
    std::vector<BoxCell> boxes;      // the same, of the box family only
};

/// Node capacity of a line: Nx on a row of cells, 16 or 8 times the longest side, times the node factor
/// where that exceeds 1.
int maxNodes(const RunOptions& options, const GridModel& grid);

void sizeRecord(int nodes, StreamlineRecord& record);

/// Gathers the packed cells once per step.
void buildTraceField(const RunOptions& options, const GridModel& grid, const CellState& state,
                     const VelocityField& velocity, const WellRecord& wells, const CellTags& tags,
                     const ExitFlags& flags, TraceField& field);

/// Forgets the cells, and the memory that they take between the steps.
void releaseTraceField(TraceField& field);

/// Sides of a cell, in which its points are given.
std::array<double, 3> cellLength(const TraceField& field, CellId cell);

/// Residence in a well cell, days: pore volume over the sum of the sizes of the six fluxes.
double completionTime(const TraceField& field, CellId cell);

/// Where a line that left its last cell through `exitFace` at `point` enters `cell`; on one layer at
/// mid-height.
std::array<double, 3> entryPoint(const TraceField& field, std::array<double, 3> point, int exitFace,
                                 CellId cell);

/// Up to where a line counts as standing still in a cell, which ends it; negative: nowhere.
struct StandStill {
    double crossing;        // crossing time, in the unit of the field
    double gained = 1e-10;  // days
};

/// One cell to cross: with the flow, or against it.
struct NodeStep {
    CellId cell;
    std::array<double, 3> entry;
    bool withFlow;
    StandStill standStill;
};

/// Crosses a cell and writes node `n` of the record from node n - 1. Returns the cell behind the exit face,
/// or 0 where the line ends here: no face is reached, nothing is gained, or the list is full.
CellId crossNode(const GridModel& grid, const TraceField& field, const NodeStep& step, int n,
                 StreamlineRecord& record);

/// Traces one line from its start to a well of the far side, or until it dies. Launched from a producer
/// (`fromInjector` false) it runs against the flow. Node 1 is the launching cell with its whole residence
/// time, node 2 the neighbour across the start face. Step lengths are distances between node positions in
/// the reference-cube family and norms of the displacement in the box family, where on one layer with
/// corner-point transmissibility the z part is |entry z - half the next cell's thickness|.
/// Backward tracing overwrites the local point of a node by the entry point into the next cell; required.
void traceLine(const GridModel& grid, const TraceField& field, const LineStart& start, bool fromInjector,
               StreamlineRecord& record);

/// Point of a cell by trilinear interpolation of its corners, ft.
std::array<double, 3> cellPoint(const GridModel& grid, CellId cell, const std::array<double, 3>& local);

/// Closing report of the traced lines: marks the tagged cells in `visited` and speaks the line count and the
/// number of cells that no line reached.
void reportTracing(const Console& console, const CellTags& tags, int lineCount,
                   CellArray<std::uint8_t>& visited);

}  // namespace kvr
