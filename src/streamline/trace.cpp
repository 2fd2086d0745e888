#include "streamline/trace.hpp"

#include "streamline/cell_crossing.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double FluxGuard = 1e-10;              // rb/day, keeps the residence time of a dead cell finite
constexpr double LongestResidence = 1e20;        // days in the launching cell beyond which nothing is traced
constexpr StandStill LaunchedStandStill{1e-10};  // of launched lines
constexpr double LongestCrossing = 1e21;         // crossing time that ends a line
constexpr double MostNodes = 100'000'000.0;      // capacity limit of a node list
constexpr int NodesPerSide3d = 16;
constexpr int NodesPerSide2d = 8;

TraceCell packedCell(bool referenceCube, const GridModel& grid, const ConnectionTable& connections,
                     const CellState& state, const VelocityField& velocity, CellId cell) {
    TraceCell packed{};
    const double* flux = velocity.CellFaceFlux.row(cell);
    const double* face = referenceCube ? flux : velocity.CellFaceVelocity.row(cell);
    const double* gradient =
        referenceCube ? velocity.CellFluxGradient.row(cell) : velocity.CellVelocityGradient.row(cell);
    std::copy_n(face, 6, packed.face.begin());
    std::copy_n(gradient, 3, packed.gradient.begin());
    std::copy_n(connections.Neighbour.row(cell), 6, packed.neighbour.begin());
    packed.length = {1.0, 1.0, 1.0};
    packed.dayPerTime = state.PoreVolume[cell];
    if (!referenceCube) {
        packed.length = {grid.DX[cell], grid.DY[cell], grid.DZ[cell]};
        packed.dayPerTime = state.PoreFraction[cell] * grid.NTG[cell];
    }
    double sum = 0.0;
    for (int f = 0; f < 6; ++f) sum += std::abs(flux[f]);
    packed.completionTime = state.PoreVolume[cell] / (sum + FluxGuard);
    return packed;
}

CrossingInput crossingOf(const TraceCell& cell, const std::array<double, 3>& entry, bool fromInjector) {
    CrossingInput in;
    in.entry = entry;
    in.length = cell.length;
    in.face = cell.face;
    in.gradient = cell.gradient;
    in.exitFlags = fromInjector ? cell.exitForward : cell.exitBackward;
    if (!fromInjector) {
        for (double& value : in.face) value = -value;
        for (double& value : in.gradient) value = -value;
    }
    for (std::size_t axis = 0; axis < 3; ++axis)
        in.velocity[axis] = in.face[2 * axis] + in.gradient[axis] * entry[axis];
    return in;
}

double distance(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

double boxStep(const TraceField& field, const CrossingInput& in, const Crossing& crossing, CellId next) {
    std::array<double, 3> step = crossing.displacement;
    if (field.flatStep && next >= 1 && next <= field.cellCount)
        step[2] = std::abs(in.entry[2] - field.cells[static_cast<std::size_t>(next)].length[2] / 2.0);
    return distance(step, {});
}

bool endsLine(double gained, double crossingTime, const StandStill& least, CellId next, CellId cellCount) {
    return std::abs(gained) <= least.gained || crossingTime <= least.crossing ||
           crossingTime > LongestCrossing || next < 1 || next > cellCount;
}

void startRecord(const GridModel& grid, const TraceField& field, const LineStart& start, bool fromInjector,
                 StreamlineRecord& record) {
    record.status = TraceStatus::ReachedWell;
    record.enteredNodes = 1;
    record.injector = fromInjector ? start.well : 0;
    record.producer = fromInjector ? 0 : start.well;
    record.NodeCell[0] = record.NodeCell[1] = start.cell;
    record.NodeExitFace[1] = static_cast<std::uint8_t>(start.face);
    record.NodeLocalPoint[1] = start.point;
    record.NodeTof[0] = 0.0;
    record.NodeTof[1] = field.cells[static_cast<std::size_t>(start.cell)].completionTime;
    record.NodeStepLength[1] = 0.0;
    if (field.referenceCube) record.NodePosition[1] = cellPoint(grid, start.cell, start.point);
}

/// Drops the unfinished node `n`.
void endInside(int n, StreamlineRecord& record) {
    record.nodeCount = n - 1;
    record.status = record.nodeCount < 2 ? TraceStatus::Rejected : TraceStatus::DiedInside;
}

/// The last node, in a well cell of the far side: its whole residence time. False where that is nothing.
bool endInWell(const TraceCell& cell, bool fromInjector, int n, StreamlineRecord& record) {
    const auto node = static_cast<std::size_t>(n);
    (fromInjector ? record.producer : record.injector) = cell.lastWell;
    record.NodeTof[node] = record.NodeTof[node - 1] + cell.completionTime;
    record.NodeStepLength[node] = 0.0;
    record.NodeExitFace[node] = 0;
    if (record.NodeTof[node] == record.NodeTof[node - 1]) return false;
    record.nodeCount = n;
    record.status = TraceStatus::ReachedWell;
    return true;
}

}  // namespace

int maxNodes(const RunOptions& options, const GridModel& grid) {
    const int longest = std::max({grid.NX, grid.NY, grid.NZ});
    double nodes = static_cast<double>(NodesPerSide2d) * longest;
    if (options.gridDimensionality == "x_1d") nodes = grid.NX;
    if (options.gridDimensionality == "xyz_3d") nodes = static_cast<double>(NodesPerSide3d) * longest;
    if (options.nodeFactor > 1.0) nodes = std::trunc(nodes * options.nodeFactor);
    return static_cast<int>(std::min(nodes, MostNodes));
}

void sizeRecord(int nodes, StreamlineRecord& record) {
    const auto slots = static_cast<std::size_t>(nodes) + 2;  // node 0, and a second node where only one fits
    record.MaxNodes = nodes;
    record.nodeCount = 0;
    record.NodeCell.assign(slots, 0);
    record.NodeLocalPoint.assign(slots, {});
    record.NodePosition.assign(slots, {});
    record.NodeStepLength.assign(slots, 0.0);
    record.NodeTof.assign(slots, 0.0);
    record.NodeExitFace.assign(slots, 0);
}

void buildTraceField(const RunOptions& options, const GridModel& grid, const ConnectionTable& connections,
                     const CellState& state, const VelocityField& velocity, const WellRecord& wells,
                     const CellTags& tags, const ExitFlags& flags, TraceField& field) {
    field.referenceCube = options.cornerPointTracing;
    field.flat = grid.NZ == 1;
    field.flatStep = field.flat && options.useNewtran;
    field.cellCount = grid.NCELLS;
    field.cells.resize(static_cast<std::size_t>(grid.NCELLS) + 1);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        TraceCell& packed = field.cells[static_cast<std::size_t>(cell)];
        packed = packedCell(field.referenceCube, grid, connections, state, velocity, cell);
        packed.exitForward = flags.ExitFacesForward[cell];
        packed.exitBackward = flags.ExitFacesBackward[cell];
        packed.tag = tags.CellTag[cell];
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        for (const WellConnection& connection : wells.wells[w].connections)
            field.cells[static_cast<std::size_t>(connection.ConnCell)].lastWell = static_cast<int>(w) + 1;
}

std::array<double, 3> cellPoint(const GridModel& grid, CellId cell, const std::array<double, 3>& local) {
    std::array<double, 3> point{};
    for (int n = 1; n <= 8; ++n) {
        const float* corner = cornerOf(grid, cell, n);
        double weight = 1.0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            weight *=
                CornerOffset[static_cast<std::size_t>(n) - 1][axis] == 1 ? local[axis] : 1.0 - local[axis];
        for (std::size_t axis = 0; axis < 3; ++axis)
            point[axis] += weight * static_cast<double>(corner[axis]);
    }
    return point;
}

std::array<double, 3> entryPoint(std::array<double, 3> point, int exitFace, const TraceCell& cell,
                                 bool flat) {
    const auto axis = static_cast<std::size_t>(exitFace - 1) / 2;
    point[axis] = exitFace % 2 == 1 ? cell.length[axis] : 0.0;
    if (flat) point[2] = 0.5 * cell.length[2];
    return point;
}

CellId crossNode(const GridModel& grid, const TraceField& field, const NodeStep& step, int n,
                 StreamlineRecord& record) {
    const auto node = static_cast<std::size_t>(n);
    const TraceCell& cell = field.cells[static_cast<std::size_t>(step.cell)];
    const CrossingInput in = crossingOf(cell, step.entry, step.withFlow);
    const Crossing crossing = crossCell(in);
    if (crossing.exitFace == 0) return 0;
    const CellId next = cell.neighbour[static_cast<std::size_t>(crossing.exitFace) - 1];
    record.NodeLocalPoint[node] = crossing.point;
    record.NodeExitFace[node] = static_cast<std::uint8_t>(crossing.exitFace);
    if (field.referenceCube) {
        record.NodePosition[node] = cellPoint(grid, step.cell, crossing.point);
        record.NodeStepLength[node] = distance(record.NodePosition[node], record.NodePosition[node - 1]);
    } else {
        record.NodeStepLength[node] = boxStep(field, in, crossing, next);
    }
    record.NodeTof[node] = record.NodeTof[node - 1] + cell.dayPerTime * crossing.time;
    const double gained = record.NodeTof[node] - record.NodeTof[node - 1];
    const bool ends =
        n >= record.MaxNodes || endsLine(gained, crossing.time, step.standStill, next, field.cellCount);
    return ends ? 0 : next;
}

void traceLine(const GridModel& grid, const TraceField& field, const LineStart& start, bool fromInjector,
               StreamlineRecord& record) {
    startRecord(grid, field, start, fromInjector, record);
    const CellTagKind target = fromInjector ? CellTagKind::Producer : CellTagKind::Injector;
    CellId current =
        field.cells[static_cast<std::size_t>(start.cell)].neighbour[static_cast<std::size_t>(start.face) - 1];
    const bool startable =
        current >= 1 && current <= field.cellCount && record.NodeTof[1] <= LongestResidence;
    if (!startable) return endInside(2, record);

    for (int n = 2;; ++n) {
        const auto node = static_cast<std::size_t>(n);
        const TraceCell& cell = field.cells[static_cast<std::size_t>(current)];
        const std::array<double, 3> entry =
            entryPoint(record.NodeLocalPoint[node - 1], record.NodeExitFace[node - 1], cell, field.flat);
        if (!fromInjector) record.NodeLocalPoint[node - 1] = entry;
        record.NodeCell[node] = current;
        record.enteredNodes = n;
        if (cell.tag == target) {
            record.NodeLocalPoint[node] = entry;
            if (!endInWell(cell, fromInjector, n, record)) endInside(n, record);
            return;
        }
        current = crossNode(grid, field, {current, entry, fromInjector, LaunchedStandStill}, n, record);
        if (current == 0) return endInside(n, record);
    }
}

void reportTracing(const Console& console, const CellTags& tags, int lineCount, MappingSums& sums) {
    int missed = 0;
    for (CellId cell = 1; cell <= tags.CellTag.count(); ++cell) {
        if (tags.CellTag[cell] != CellTagKind::Pop) sums.CellVisited[cell] = 1;
        if (sums.CellVisited[cell] == 0) ++missed;
    }
    both(console, "Successed Streamline : {}", lineCount);
    both(console, "Number of Missed blk : {}", missed);
}

}  // namespace kvr
