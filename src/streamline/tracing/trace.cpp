#include "streamline/tracing/trace.hpp"

#include "base/threads.hpp"
#include "model/neighbours.hpp"
#include "streamline/tracing/cell_crossing.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LongestResidence = 1e20;        // days in the launching cell beyond which nothing is traced
constexpr StandStill LaunchedStandStill{1e-10};  // of launched lines
constexpr double LongestCrossing = 1e21;         // crossing time that ends a line
constexpr double MostNodes = 100'000'000.0;      // capacity limit of a node list
constexpr int NodesPerSide3d = 16;
constexpr int NodesPerSide2d = 8;

TraceCell packedCell(bool referenceCube, const GridModel& grid, const CellState& state,
                     const VelocityField& velocity, CellId cell) {
    TraceCell packed{};
    std::copy_n((referenceCube ? velocity.CellFaceFlux : velocity.CellFaceVelocity).row(cell), 6,
                packed.face.begin());
    packed.dayPerTime = referenceCube ? state.PoreVolume[cell] : state.PoreFraction[cell] * grid.NTG[cell];
    return packed;
}

double residence(double poreVolume, const double* flux) {
    double sum = 0.0;
    for (int f = 0; f < 6; ++f) sum += std::abs(flux[f]);
    return poreVolume / (sum + FluxGuard);
}

BoxCell boxCell(const GridModel& grid, const CellState& state, const VelocityField& velocity, CellId cell) {
    BoxCell box{};
    box.length = {grid.DX[cell], grid.DY[cell], grid.DZ[cell]};
    for (std::size_t axis = 0; axis < 3; ++axis)
        box.gradient[axis] = velocityGradient(velocity, cell, static_cast<int>(axis) + 1, box.length[axis]);
    box.completionTime = residence(state.PoreVolume[cell], velocity.CellFaceFlux.row(cell));
    return box;
}

/// `Cube`: the reference-cube family, whose sides are 1 and whose gradients are differences of fluxes.
template <bool Cube>
CrossingInput crossingOf(const TraceField& field, CellId id, const std::array<double, 3>& entry,
                         bool withFlow) {
    const TraceCell& cell = field.cells[static_cast<std::size_t>(id)];
    const double direction = withFlow ? 1.0 : -1.0;
    CrossingInput in;
    in.entry = entry;
    in.exitFlags = withFlow ? cell.exitForward : cell.exitBackward;
    for (std::size_t f = 0; f < 6; ++f) in.face[f] = direction * cell.face[f];
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if constexpr (Cube) {
            in.length[axis] = 1.0;
            in.gradient[axis] = in.face[2 * axis + 1] - in.face[2 * axis];
        } else {
            const BoxCell& box = field.boxes[static_cast<std::size_t>(id)];
            in.length[axis] = box.length[axis];
            in.gradient[axis] = direction * box.gradient[axis];
        }
        in.velocity[axis] = in.face[2 * axis] + in.gradient[axis] * entry[axis];
    }
    return in;
}

/// cellPoint of a point on a face of the cell: the other four corners have no weight.
std::array<double, 3> facePoint(const GridModel& grid, CellId cell, int face,
                                const std::array<double, 3>& local) {
    const auto axis = static_cast<std::size_t>(face - 1) / 2;
    const std::size_t first = axis == 0 ? 1 : 0, second = axis == 2 ? 1 : 2;
    const std::size_t low = face % 2 == 0 ? std::size_t{1} << axis : 0;
    const float* corners = cornerOf(grid, cell, 1);
    std::array<double, 3> point{};
    for (std::size_t b = 0; b < 2; ++b)
        for (std::size_t a = 0; a < 2; ++a) {
            const double weight =
                (a == 1 ? local[first] : 1.0 - local[first]) * (b == 1 ? local[second] : 1.0 - local[second]);
            const float* corner = corners + 3 * (low + (a << first) + (b << second));
            for (std::size_t x = 0; x < 3; ++x) point[x] += weight * static_cast<double>(corner[x]);
        }
    return point;
}

/// Asks for the corners of the cell that a line goes to next; they are read a crossing later.
void fetchCorners(const GridModel& grid, CellId cell) {
    constexpr int FloatsPerCacheLine = 16;
    const float* corners = cornerOf(grid, cell, 1);
    __builtin_prefetch(corners);
    __builtin_prefetch(corners + FloatsPerCacheLine);
}

double distance(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::sqrt((a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                     (a[2] - b[2]) * (a[2] - b[2]));
}

double boxStep(const TraceField& field, const CrossingInput& in, const Crossing& crossing, CellId next) {
    std::array<double, 3> step = crossing.displacement;
    if (field.flatStep && next >= 1 && next <= field.cellCount)
        step[2] = std::abs(in.entry[2] - field.boxes[static_cast<std::size_t>(next)].length[2] / 2.0);
    return distance(step, {});
}

bool standsStill(double gained, double crossingTime, const StandStill& least) {
    return std::abs(gained) <= least.gained || crossingTime <= least.crossing ||
           crossingTime > LongestCrossing;
}

/// Asks for the cells that the flow out of a cell leads to while the time to each face is worked out.
void fetchNext(const TraceField& field, const TraceCell& cell, CellId id, bool withFlow) {
    constexpr CellId FarStride = 4;  // cells; nearer ones come along by themselves
    const unsigned flags = withFlow ? cell.exitForward : cell.exitBackward;
    for (std::size_t face = 0; face < 6; ++face) {
        const CellId step = field.stride[face];
        if ((flags >> face & 1U) != 0 && std::abs(step) >= FarStride)
            __builtin_prefetch(field.cells.data() + (id + step));
    }
}

/// See crossNode.
template <bool Cube>
CellId crossTo(const GridModel& grid, const TraceField& field, const NodeStep& step, int n,
               StreamlineRecord& record) {
    const auto node = static_cast<std::size_t>(n);
    const TraceCell& cell = field.cells[static_cast<std::size_t>(step.cell)];
    fetchNext(field, cell, step.cell, step.withFlow);
    const CrossingInput in = crossingOf<Cube>(field, step.cell, step.entry, step.withFlow);
    const Crossing crossing = crossCell(in);
    if (crossing.exitFace == 0) return 0;
    const CellId next = grid.PinchedOut.empty()
                            ? step.cell + field.stride[static_cast<std::size_t>(crossing.exitFace) - 1]
                            : neighbourOf(grid, step.cell, crossing.exitFace);
    const bool inside = next >= 1 && next <= field.cellCount;
    record.NodeLocalPoint[node] = crossing.point;
    record.NodeExitFace[node] = static_cast<std::uint8_t>(crossing.exitFace);
    if constexpr (Cube) {
        if (inside) fetchCorners(grid, next);
        record.NodePosition[node] = facePoint(grid, step.cell, crossing.exitFace, crossing.point);
        record.NodeStepLength[node] = distance(record.NodePosition[node], record.NodePosition[node - 1]);
    } else {
        record.NodeStepLength[node] = boxStep(field, in, crossing, next);
    }
    record.NodeTof[node] = record.NodeTof[node - 1] + cell.dayPerTime * crossing.time;
    const double gained = record.NodeTof[node] - record.NodeTof[node - 1];
    const bool ends = !inside || n >= record.MaxNodes || standsStill(gained, crossing.time, step.standStill);
    return ends ? 0 : next;
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
    record.NodeTof[1] = completionTime(field, start.cell);
    record.NodeStepLength[1] = 0.0;
    if (field.referenceCube) record.NodePosition[1] = cellPoint(grid, start.cell, start.point);
}

/// Drops the unfinished node `n`.
void endInside(int n, StreamlineRecord& record) {
    record.nodeCount = n - 1;
    record.status = record.nodeCount < 2 ? TraceStatus::Rejected : TraceStatus::DiedInside;
}

/// The last node, in a well cell of the far side: its whole residence time. False where that is nothing.
bool endInWell(const TraceField& field, CellId cell, bool fromInjector, int n, StreamlineRecord& record) {
    const auto node = static_cast<std::size_t>(n);
    (fromInjector ? record.producer : record.injector) = field.cells[static_cast<std::size_t>(cell)].lastWell;
    record.NodeTof[node] = record.NodeTof[node - 1] + completionTime(field, cell);
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

void buildTraceField(const RunOptions& options, const GridModel& grid, const CellState& state,
                     const VelocityField& velocity, const WellRecord& wells, const CellTags& tags,
                     const ExitFlags& flags, TraceField& field) {
    field.referenceCube = options.cornerPointTracing;
    field.flat = grid.NZ == 1;
    field.flatStep = field.flat && options.useNewtran;
    field.cellCount = grid.NCELLS;
    const CellId layer = grid.NX * grid.NY;
    field.stride = {-1, 1, -grid.NX, grid.NX, -layer, layer};
    field.cells.resize(static_cast<std::size_t>(grid.NCELLS) + 1);
    field.boxes.resize(field.referenceCube ? 0 : field.cells.size());
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelHeavyCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        TraceCell& packed = field.cells[static_cast<std::size_t>(cell)];
        packed = packedCell(field.referenceCube, grid, state, velocity, cell);
        if (!field.referenceCube)
            field.boxes[static_cast<std::size_t>(cell)] = boxCell(grid, state, velocity, cell);
        packed.exitForward = flags.ExitFacesForward[cell];
        packed.exitBackward = flags.ExitFacesBackward[cell];
        packed.tag = tags.CellTag[cell];
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        for (const WellConnection& connection : wells.wells[w].connections)
            if (startsOrEndsLines(wells.wells[w], connection))
                field.cells[static_cast<std::size_t>(connection.ConnCell)].lastWell = static_cast<int>(w) + 1;
}

void releaseTraceField(TraceField& field) {
    std::vector<TraceCell>().swap(field.cells);
    std::vector<BoxCell>().swap(field.boxes);
}

std::array<double, 3> cellLength(const TraceField& field, CellId cell) {
    if (field.referenceCube) return {1.0, 1.0, 1.0};
    return field.boxes[static_cast<std::size_t>(cell)].length;
}

double completionTime(const TraceField& field, CellId cell) {
    const TraceCell& packed = field.cells[static_cast<std::size_t>(cell)];
    if (field.referenceCube) return residence(packed.dayPerTime, packed.face.data());
    return field.boxes[static_cast<std::size_t>(cell)].completionTime;
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

std::array<double, 3> entryPoint(const TraceField& field, std::array<double, 3> point, int exitFace,
                                 CellId cell) {
    const auto axis = static_cast<std::size_t>(exitFace - 1) / 2;
    const std::array<double, 3> length = cellLength(field, cell);
    point[axis] = exitFace % 2 == 1 ? length[axis] : 0.0;
    if (field.flat) point[2] = 0.5 * length[2];
    return point;
}

CellId crossNode(const GridModel& grid, const TraceField& field, const NodeStep& step, int n,
                 StreamlineRecord& record) {
    return field.referenceCube ? crossTo<true>(grid, field, step, n, record)
                               : crossTo<false>(grid, field, step, n, record);
}

void traceLine(const GridModel& grid, const TraceField& field, const LineStart& start, bool fromInjector,
               StreamlineRecord& record) {
    startRecord(grid, field, start, fromInjector, record);
    const CellTagKind target = fromInjector ? CellTagKind::Producer : CellTagKind::Injector;
    // Faces that lines leave by have a neighbour; those that they start from may have none.
    CellId current = grid.Active[start.cell] != 0 ? neighbourOf(grid, start.cell, start.face) : 0;
    const bool startable = current >= 1 && record.NodeTof[1] <= LongestResidence;
    if (!startable) return endInside(2, record);

    for (int n = 2;; ++n) {
        const auto node = static_cast<std::size_t>(n);
        const TraceCell& cell = field.cells[static_cast<std::size_t>(current)];
        const std::array<double, 3> entry =
            entryPoint(field, record.NodeLocalPoint[node - 1], record.NodeExitFace[node - 1], current);
        if (!fromInjector) record.NodeLocalPoint[node - 1] = entry;
        record.NodeCell[node] = current;
        record.enteredNodes = n;
        if (cell.tag == target) {
            record.NodeLocalPoint[node] = entry;
            if (!endInWell(field, current, fromInjector, n, record)) endInside(n, record);
            return;
        }
        current = crossNode(grid, field, {current, entry, fromInjector, LaunchedStandStill}, n, record);
        if (current == 0) return endInside(n, record);
    }
}

void reportTracing(const Console& console, const CellTags& tags, int lineCount,
                   CellArray<std::uint8_t>& visited) {
    int missed = 0;
    for (CellId cell = 1; cell <= tags.CellTag.count(); ++cell) {
        if (tags.CellTag[cell] != CellTagKind::Pop) visited[cell] = 1;
        if (visited[cell] == 0) ++missed;
    }
    both(console, "Successed Streamline : {}", lineCount);
    both(console, "Number of Missed blk : {}", missed);
}

}  // namespace kvr
