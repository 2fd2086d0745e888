#include "streamline/tracing/cell_line.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

struct LegField {
    const GridModel& grid;
    const TraceField& field;
    const CellArray<double>& poreVolume;
    const WellRecord& wells;
    StandStill standStill;
};

/// Rate of the well's completion in the cell, the last one listed there, rb/day.
double completionRate(const WellRecord& wells, int well, CellId cell) {
    double rate = 0.0;
    if (well < 1) return rate;
    for (const WellConnection& connection : wells.wells[at(well) - 1].connections)
        if (connection.ConnCell == cell) rate = std::abs(connection.reservoirRate);
    return rate;
}

std::array<double, 3> middle(const TraceField& field, CellId cell) {
    const std::array<double, 3> length = cellLength(field, cell);
    return {0.5 * length[0], 0.5 * length[1], 0.5 * length[2]};
}

/// The well cell that closes a leg as node n; the well itself says which end of the line it is.
void endLeg(const LegField& on, CellId cell, int n, StreamlineRecord& leg) {
    const TraceCell& packed = on.field.cells[at(cell)];
    const double rate = completionRate(on.wells, packed.lastWell, cell);
    leg.nodeCount = n;
    leg.NodeTof[at(n)] = leg.NodeTof[at(n) - 1] + on.poreVolume[cell] / (rate + FluxGuard);
    leg.NodeStepLength[at(n)] = 0.0;
    leg.NodeExitFace[at(n)] = 0;
    leg.NodeLocalPoint[at(n)] = middle(on.field, cell);
    leg.NodePosition[at(n)] = cellPoint(on.grid, cell, {0.5, 0.5, 0.5});
    if (packed.lastWell < 1) return;
    const bool injects = isInjector(on.wells.wells[at(packed.lastWell) - 1]);
    (injects ? leg.injector : leg.producer) = packed.lastWell;
}

void startLeg(const LegField& on, CellId cell, StreamlineRecord& leg) {
    leg.injector = leg.producer = 0;
    leg.NodeCell[0] = cell;
    leg.NodeTof[0] = 0.0;
    leg.NodeLocalPoint[0] = middle(on.field, cell);
    if (on.field.referenceCube) leg.NodePosition[0] = cellPoint(on.grid, cell, {0.5, 0.5, 0.5});
}

/// The start cell without a traverse: nothing leaves it this way.
void standStill(StreamlineRecord& leg) {
    leg.nodeCount = 1;
    leg.NodeTof[1] = 0.0;
    leg.NodeStepLength[1] = 0.0;
    leg.NodeExitFace[1] = 0;
    leg.NodeLocalPoint[1] = leg.NodeLocalPoint[0];
    leg.NodePosition[1] = leg.NodePosition[0];
}

/// Marks a cell; its pore volume where it was not marked before.
double enter(const LegField& on, CellId cell, CellArray<std::uint8_t>& visited) {
    if (visited[cell] != 0) return 0.0;
    visited[cell] = 1;
    return on.poreVolume[cell];
}

/// One half of the line; node 1 is the start cell from its centre on.
double traceLeg(const LegField& on, CellId start, bool withFlow, CellArray<std::uint8_t>& visited,
                StreamlineRecord& leg) {
    const CellTagKind target = withFlow ? CellTagKind::Producer : CellTagKind::Injector;
    startLeg(on, start, leg);
    double fresh = 0.0;
    CellId current = start;
    for (int n = 1;; ++n) {
        const TraceCell& cell = on.field.cells[at(current)];
        leg.NodeCell[at(n)] = current;
        fresh += enter(on, current, visited);
        if (cell.tag == target) {
            endLeg(on, current, n, leg);
            return fresh;
        }
        const std::array<double, 3> entry = n == 1 ? middle(on.field, current)
                                                   : entryPoint(on.field, leg.NodeLocalPoint[at(n) - 1],
                                                                leg.NodeExitFace[at(n) - 1], current);
        current = crossNode(on.grid, on.field, {current, entry, withFlow, on.standStill}, n, leg);
        if (current != 0) continue;
        leg.nodeCount = n - 1;  // the unfinished node is dropped
        if (n == 1) standStill(leg);
        return fresh;
    }
}

double duration(const StreamlineRecord& leg, int n) {
    return leg.NodeTof[at(n)] - leg.NodeTof[at(n) - 1];
}

bool endsAtStart(const StreamlineRecord& leg) {
    return leg.nodeCount == 1 && leg.injector + leg.producer > 0;
}

/// Writes the joined line node by node.
struct Joiner {
    const TraceField& field;
    StreamlineRecord& record;
    int count = 0;

    /// The next node, or null where the record is full.
    bool add(CellId cell, double days, double length) {
        if (count >= record.MaxNodes) return false;
        ++count;
        record.NodeCell[at(count)] = cell;
        record.NodeTof[at(count)] = record.NodeTof[at(count) - 1] + days;
        record.NodeStepLength[at(count)] = length;
        return true;
    }
    void setEnd(const std::array<double, 3>& local, const std::array<double, 3>& position, int exitFace) {
        record.NodeLocalPoint[at(count)] = local;
        record.NodePosition[at(count)] = position;
        record.NodeExitFace[at(count)] = static_cast<std::uint8_t>(exitFace);
    }
};

/// Nodes of the back leg in the direction of flow: each ends where the leg had entered its cell.
void addBack(const StreamlineRecord& back, Joiner& line) {
    for (int n = back.nodeCount; n >= 2; --n) {
        const CellId cell = back.NodeCell[at(n)];
        if (!line.add(cell, duration(back, n), back.NodeStepLength[at(n)])) return;
        const int left = back.NodeExitFace[at(n) - 1];
        line.setEnd(entryPoint(line.field, back.NodeLocalPoint[at(n) - 1], left, cell),
                    back.NodePosition[at(n) - 1], oppositeFace(left));
    }
}

/// The start cell holds both halves, or the whole residence where it is a well cell itself.
void addStart(const CellLineLegs& legs, Joiner& line) {
    double days = duration(legs.back, 1) + duration(legs.forward, 1);
    if (endsAtStart(legs.back)) days = duration(legs.back, 1);
    if (endsAtStart(legs.forward)) days = duration(legs.forward, 1);
    const double length = legs.back.NodeStepLength[1] + legs.forward.NodeStepLength[1];
    if (!line.add(legs.forward.NodeCell[1], days, length)) return;
    line.setEnd(legs.forward.NodeLocalPoint[1], legs.forward.NodePosition[1], legs.forward.NodeExitFace[1]);
}

void addForward(const StreamlineRecord& forward, Joiner& line) {
    for (int n = 2; n <= forward.nodeCount; ++n) {
        if (!line.add(forward.NodeCell[at(n)], duration(forward, n), forward.NodeStepLength[at(n)])) return;
        line.setEnd(forward.NodeLocalPoint[at(n)], forward.NodePosition[at(n)], forward.NodeExitFace[at(n)]);
    }
}

void join(const TraceField& field, const CellLineLegs& legs, StreamlineRecord& record) {
    record.NodeTof[0] = 0.0;
    Joiner line{field, record};
    addBack(legs.back, line);
    addStart(legs, line);
    addForward(legs.forward, line);
    record.nodeCount = record.enteredNodes = line.count;
    record.NodeCell[0] = record.NodeCell[1];
    record.injector = std::max(legs.back.injector, legs.forward.injector);
    record.producer = std::max(legs.back.producer, legs.forward.producer);
    record.status =
        record.injector > 0 && record.producer > 0 ? TraceStatus::ReachedWell : TraceStatus::DiedInside;
}

}  // namespace

void sizeLegs(int nodes, CellLineLegs& legs) {
    sizeRecord(nodes, legs.back);
    sizeRecord(nodes, legs.forward);
}

bool hasInflow(const TraceCell& cell) {
    constexpr double LeastInflow = 1e-10;  // velocity into the cell, in the unit of the field
    const double low = std::max({cell.face[0], cell.face[2], cell.face[4]});
    const double high = std::min({cell.face[1], cell.face[3], cell.face[5]});
    return low >= LeastInflow || high <= -LeastInflow;
}

double traceThroughCell(const GridModel& grid, const TraceField& field, const CellArray<double>& poreVolume,
                        const WellRecord& wells, CellId cell, CellArray<std::uint8_t>& visited,
                        const StandStill& standStill, CellLineLegs& legs, StreamlineRecord& record) {
    const LegField on{grid, field, poreVolume, wells, standStill};
    if (!hasInflow(field.cells[at(cell)])) {
        record.nodeCount = record.enteredNodes = 0;
        record.injector = record.producer = 0;
        record.status = TraceStatus::DiedInside;
        return enter(on, cell, visited);
    }
    double fresh = traceLeg(on, cell, true, visited, legs.forward);
    fresh += traceLeg(on, cell, false, visited, legs.back);
    join(field, legs, record);
    return fresh;
}

}  // namespace kvr
