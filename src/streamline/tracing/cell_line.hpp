#pragma once

#include "base/cell_array.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/tracing/streamline_record.hpp"
#include "streamline/tracing/trace.hpp"

#include <cstdint>

namespace kvr {

/// The two halves of a line through a cell, before they are joined.
struct CellLineLegs {
    StreamlineRecord back, forward;
};

void sizeLegs(int nodes, CellLineLegs& legs);

/// Where legs of lines that carry transport stand still.
inline constexpr StandStill LegStandStill{1e-12};

/// Traces the line through the centre of `cell` both ways, with the flow to a cell tagged "prd" and against
/// it to one tagged "inj", and joins the halves so that the record runs from the injector's end: the nodes
/// are (back + forward - 1), the start cell stands once with the time of both halves. A well cell at an end
/// takes its pore volume over the rate of its completion. Nodes beyond the capacity are dropped from the
/// producer's end.
/// Status is ReachedWell where both ends found a well, DiedInside otherwise. A cell that no flow enters
/// gives a record without nodes. Every cell that the line enters is marked in `visited`; the return value
/// is the pore volume (rb) of those that were not marked before.
double traceThroughCell(const GridModel& grid, const TraceField& field, const CellArray<double>& poreVolume,
                        const WellRecord& wells, CellId cell, CellArray<std::uint8_t>& visited,
                        const StandStill& standStill, CellLineLegs& legs, StreamlineRecord& record);

/// Some flow runs into the cell through its faces: not so in an injector's cell and in a dead one.
bool hasInflow(const TraceCell& cell);

}  // namespace kvr
