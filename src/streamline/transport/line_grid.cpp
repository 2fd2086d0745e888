#include "streamline/transport/line_grid.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int RegularMark = 2;
constexpr double AutoShare = 0.5;  // of the first node's residence time, times the merge factor

using Point = std::array<double, 3>;

double distance(const Point& a, const Point& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// Depth where node n's traverse ended; the ends of the line count as their cell centres. The box family
/// keeps no positions and takes cell centres throughout.
double depthOf(const GridModel& grid, const StreamlineRecord& record, bool referenceCube, int n) {
    const bool end = n <= 1 || n >= record.nodeCount;
    if (end || !referenceCube) return centreOf(grid, record.NodeCell[at(n)])[2];
    return record.NodePosition[at(n)][2];
}

/// Length of the traverse that ends at node n, in the order of tracing.
double stepOf(const GridModel& grid, const StreamlineRecord& record, bool referenceCube, int n) {
    const int last = record.nodeCount;
    if (n == 1) return 0.0;
    if (!referenceCube || (n > 2 && n < last)) return record.NodeStepLength[at(n)];
    const Point from = n == 2 ? centreOf(grid, record.NodeCell[1]) : record.NodePosition[at(n) - 1];
    const Point to = n == last ? centreOf(grid, record.NodeCell[at(last)]) : record.NodePosition[at(n)];
    return distance(from, to);
}

void sumTimes(std::span<const double> steps, int count, std::span<double> times) {
    times[0] = 0.0;
    for (int n = 1; n <= count; ++n) times[at(n)] = times[at(n) - 1] + steps[at(n)];
}

/// Traced node that each solver node's mid-time falls into.
void assignTracedNodes(SolverLine& line) {
    int traced = 1;
    for (int n = 1; n <= line.nodeCount; ++n) {
        const double middle = 0.5 * (line.Tof[at(n) - 1] + line.Tof[at(n)]);
        while (traced < line.tracedNodeCount && line.tracedTof[at(traced)] < middle) ++traced;
        line.tracedNode[at(n)] = traced;
    }
}

void layIrregular(SolverLine& line) {
    line.nodeCount = line.tracedNodeCount;
    for (int n = 1; n <= line.nodeCount; ++n) {
        line.DeltaTof[at(n)] = line.tracedDeltaTof[at(n)];
        line.Tof[at(n)] = line.tracedTof[at(n)];
        line.groupMark[at(n)] = 0;
        line.tracedNode[at(n)] = n;
    }
}

void layRegular(double nodeFactor, SolverLine& line) {
    const int room = static_cast<int>(line.DeltaTof.size()) - 1;
    const double nodes = std::ceil(line.tracedNodeCount * nodeFactor);
    line.nodeCount = static_cast<int>(std::clamp(nodes, 1.0, static_cast<double>(room)));
    const double each = line.tracedTof[at(line.tracedNodeCount)] / line.nodeCount;
    for (int n = 1; n <= line.nodeCount; ++n) {
        line.DeltaTof[at(n)] = each;
        line.groupMark[at(n)] = RegularMark;
    }
    sumTimes(line.DeltaTof, line.nodeCount, line.Tof);
    assignTracedNodes(line);
}

void layAuto(double mergeFactor, SolverLine& line) {
    layIrregular(line);
    const double threshold = mergeFactor * AutoShare * line.tracedDeltaTof[1];
    int group = 0;
    for (int first = 1; first <= line.nodeCount;) {
        int last = first;
        double sum = line.DeltaTof[at(first)];
        if (sum < threshold) {
            while (sum / (last - first + 1) < threshold && last < line.nodeCount)
                sum += line.DeltaTof[at(++last)];
            ++group;
            const double mean = sum / (last - first + 1);
            for (int n = first; n <= last; ++n) {
                line.DeltaTof[at(n)] = mean;
                line.groupMark[at(n)] = group;
            }
        }
        first = last + 1;
    }
    if (group == 0) return;
    sumTimes(line.DeltaTof, line.nodeCount, line.Tof);
    assignTracedNodes(line);
}

template <class Value>
void remap(const SolverLine& line, Value value, std::span<double> traced) {
    if (!line.regridded) {
        for (int n = 1; n <= line.nodeCount; ++n) traced[at(n)] = value(n);
        return;
    }
    int s = 1;
    for (int n = 1; n <= line.tracedNodeCount; ++n) {
        const double from = line.tracedTof[at(n) - 1];
        const double to = line.tracedTof[at(n)];
        while (s < line.nodeCount && line.Tof[at(s)] <= from) ++s;
        double sum = 0.0;
        double weight = 0.0;
        for (int k = s; k <= line.nodeCount && line.Tof[at(k) - 1] < to; ++k) {
            const double overlap = std::min(line.Tof[at(k)], to) - std::max(line.Tof[at(k) - 1], from);
            if (overlap <= 0.0) continue;
            sum += overlap * value(k);
            weight += overlap;
        }
        traced[at(n)] = weight > 0.0 ? sum / weight : value(s);
    }
}

}  // namespace

NodeControl nodeControlOf(const RunOptions& options) {
    if (options.nodeControlAuto) return NodeControl::Auto;
    return options.nodeControl == "reg" ? NodeControl::Regular : NodeControl::Irregular;
}

void sizeSolverLine(int tracedNodes, double nodeFactor, int tracerCount, SolverLine& line) {
    const double wanted = std::ceil((tracedNodes + 1.0) * std::max(1.0, nodeFactor)) + 1.0;
    const auto size = static_cast<std::size_t>(wanted);
    const std::size_t traced = at(tracedNodes) + 2;
    line.tracedCell.assign(traced, 0);
    for (std::vector<double>* array :
         {&line.tracedTof, &line.tracedDeltaTof, &line.tracedStepLength, &line.tracedDepth})
        array->assign(traced, 0.0);
    for (std::vector<int>* array : {&line.groupMark, &line.tracedNode}) array->assign(size, 0);
    for (std::vector<double>* array :
         {&line.Tof, &line.DeltaTof, &line.limitedFw, &line.limitedFo, &line.limitedFg, &line.RhoW,
          &line.RhoO, &line.RhoG, &line.gravityFace, &line.gravityW, &line.gravityO, &line.gravityG})
        array->assign(size, 0.0);
    line.nodes.assign(size, {});
    line.exchange.assign(size, {});
    line.tracer.assign(at(tracerCount), std::vector<double>(size, 0.0));
}

void takeTracedLine(const GridModel& grid, const StreamlineRecord& record, bool againstFlow,
                    bool referenceCube, SolverLine& line) {
    const int count = record.nodeCount;
    line.tracedNodeCount = count;
    line.injector = record.injector;
    line.producer = record.producer;
    for (int n = 1; n <= count; ++n) {
        const std::size_t to = againstFlow ? at(count + 1 - n) : at(n);
        line.tracedCell[to] = record.NodeCell[at(n)];
        line.tracedDeltaTof[to] = record.NodeTof[at(n)] - record.NodeTof[at(n) - 1];
        line.tracedStepLength[to] = stepOf(grid, record, referenceCube, n);
        line.tracedDepth[to] = depthOf(grid, record, referenceCube, n);
    }
    line.tracedCell[0] = line.tracedCell[1];
    line.tracedDepth[0] = line.tracedDepth[1];
    if (againstFlow) {
        sumTimes(line.tracedDeltaTof, count, line.tracedTof);
    } else {
        std::copy_n(record.NodeTof.begin(), at(count) + 1, line.tracedTof.begin());
    }
}

void layNodes(NodeControl control, double nodeFactor, double mergeFactor, SolverLine& line) {
    switch (control) {
        case NodeControl::Irregular:
            layIrregular(line);
            break;
        case NodeControl::Regular:
            layRegular(nodeFactor, line);
            break;
        case NodeControl::Auto:
            layAuto(mergeFactor, line);
            break;
    }
    line.regridded = false;
    for (int n = 1; n <= line.nodeCount; ++n) {
        // A cell without pore volume holds nothing to move.
        line.nodes[at(n)].inverseDeltaTof = line.DeltaTof[at(n)] > 0.0 ? 1.0 / line.DeltaTof[at(n)] : 0.0;
        if (line.groupMark[at(n)] != 0) line.regridded = true;
    }
}

void remapToTraced(const SolverLine& line, double FlowNode::*value, std::span<double> traced) {
    remap(
        line, [&](int n) { return line.nodes[at(n)].*value; }, traced);
}

void remapToTraced(const SolverLine& line, std::span<const double> solver, std::span<double> traced) {
    remap(
        line, [&](int n) { return solver[at(n)]; }, traced);
}

}  // namespace kvr
