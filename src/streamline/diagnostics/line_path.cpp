#include "streamline/diagnostics/line_path.hpp"

#include "base/hard_stop.hpp"
#include "base/index.hpp"

#include <algorithm>
#include <new>

namespace kvr {

namespace {

using Point = std::array<double, 3>;

/// Where node n stands, n in the order of tracing.
Point positionOf(const GridModel& grid, const StreamlineRecord& record, bool referenceCube, int n) {
    const bool inLaunchingWell = n == 0;
    const bool inFarWell = n == record.nodeCount && record.status == TraceStatus::ReachedWell;
    if (inLaunchingWell || inFarWell || !referenceCube)
        return centreOf(grid, record.NodeCell[at(std::max(1, n))]);
    return record.NodePosition[at(n)];
}

void sizePath(int segments, LinePath& path) {
    path.segments = segments;
    path.point.resize(at(segments) + 1);
    path.time.resize(at(segments) + 1);
    path.cell.resize(at(segments) + 1);
    path.Sw.resize(at(segments) + 1);
}

}  // namespace

void takePath(const GridModel& grid, const StreamlineRecord& record, bool fromInjector, bool referenceCube,
              const SolverLine& line, const LineContribution& contribution, LinePath& path) {
    const int last = line.tracedNodeCount;
    sizePath(last, path);
    for (int n = 0; n <= last; ++n) {
        path.point[at(n)] = positionOf(grid, record, referenceCube, fromInjector ? n : last - n);
        path.time[at(n)] = line.tracedTof[at(n)];
    }
    for (int n = 1; n <= last; ++n) {
        path.cell[at(n)] = line.tracedCell[at(n)];
        path.Sw[at(n)] = contribution.Sw[at(n)];
    }
    path.begin = line.injector;
    path.end = line.producer;
}

void takeEmptyPath(const GridModel& grid, const StreamlineRecord& record, LinePath& path) {
    sizePath(0, path);
    path.point[0] = centreOf(grid, record.NodeCell[1]);
    path.time[0] = 0.0;
    path.begin = record.injector;
    path.end = record.producer;
}

void addPath(const Console& console, const LinePath& path, LinePaths& paths) {
    const auto nodes = static_cast<std::ptrdiff_t>(path.segments) + 1;
    try {
        paths.point.insert(paths.point.end(), path.point.begin(), path.point.begin() + nodes);
        paths.time.insert(paths.time.end(), path.time.begin(), path.time.begin() + nodes);
        paths.cell.insert(paths.cell.end(), path.cell.begin() + 1, path.cell.begin() + nodes);
        paths.Sw.insert(paths.Sw.end(), path.Sw.begin() + 1, path.Sw.begin() + nodes);
        paths.offset.push_back(paths.offset.back() + path.segments);
        paths.begin.push_back(path.begin);
        paths.end.push_back(path.end);
    } catch (const std::bad_alloc&) {
        lineToScreen(console, "Error :: Memory of Streamline, inversion output");
        hardStop(console);
    }
}

void clearPaths(LinePaths& paths) {
    paths.point.clear();
    paths.time.clear();
    paths.cell.clear();
    paths.Sw.clear();
    paths.offset.assign(1, 0);
    paths.begin.clear();
    paths.end.clear();
}

}  // namespace kvr
