#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/cell_state.hpp"
#include "pressure/velocity_field.hpp"
#include "pressure/wells.hpp"
#include "streamline/launch_plan.hpp"
#include "streamline/solver_line.hpp"
#include "streamline/streamline_record.hpp"

#include <array>
#include <vector>

namespace kvr {

/// What tracing needs of one cell, side by side in memory: a line touches cells in no order.
struct TraceCell {
    std::array<double, 6> face;      // velocity at faces 1..6, positive toward increasing index
    std::array<double, 3> gradient;  // of each velocity along its own axis
    std::array<double, 3> length;    // 1 in the reference cube, ft in the box
    double dayPerTime;      // days in one unit of crossing time: pore volume (cube), porosity NTG (box)
    double completionTime;  // days, pore volume over the sum of the six fluxes: residence in a well cell
    std::array<CellId, 6> neighbour;
    int lastWell;  // last well completed here, 0 for none
    std::uint8_t exitForward, exitBackward;
    CellTagKind tag;
};

/// The frozen field of one step, as tracing reads it.
struct TraceField {
    bool referenceCube = true;
    bool flat = false;      // one layer: points stay at mid-cell along z
    bool flatStep = false;  // box family, one layer, corner-point depths: see traceLine on step lengths
    CellId cellCount = 0;
    std::vector<TraceCell> cells;  // by CellId, [0] unused
};

/// Node capacity of a line: Nx on a row of cells, 16 or 8 times the longest side, times the node factor
/// where that exceeds 1.
int maxNodes(const RunOptions& options, const GridModel& grid);

void sizeRecord(int nodes, StreamlineRecord& record);

/// Gathers the packed cells once per step.
void buildTraceField(const RunOptions& options, const GridModel& grid, const ConnectionTable& connections,
                     const CellState& state, const VelocityField& velocity, const WellRecord& wells,
                     const CellTags& tags, const ExitFlags& flags, TraceField& field);

/// Where a line that left its last cell through `exitFace` at `point` enters `cell`; on one layer at
/// mid-height.
std::array<double, 3> entryPoint(std::array<double, 3> point, int exitFace, const TraceCell& cell, bool flat);

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

/// Closing report of the traced lines: marks the tagged cells as visited and speaks the line count and
/// the number of cells that no line reached.
void reportTracing(const Console& console, const CellTags& tags, int lineCount, MappingSums& sums);

}  // namespace kvr
