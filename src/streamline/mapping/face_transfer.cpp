#include "streamline/mapping/face_transfer.hpp"

#include "base/index.hpp"
#include "model/connections.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// Amount and flux of one phase, by member of the node and of the data of its cell.
struct Phase {
    double FlowNode::*flux;
    double FlowNode::*amount;
    double NodeData::*start;
    double FlowNode::*passed;
    std::vector<double> LinePassage::*onTraced;
};

/// Where gravity along the line moves phases beside the flux: from what every node has gained.
void passByGain(const std::vector<NodeData>& nodes, double step, const Phase& phase, const SolverLine& line,
                std::vector<double>& passed) {
    passed[0] = line.nodes[0].*phase.flux * step;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const FlowNode& node = line.nodes[i];
        const NodeData& start = nodes[at(line.tracedCell[at(line.tracedNode[i])])];
        const double gain = node.*phase.amount - start.*phase.start;
        passed[i] = node.outflowRate > 0.0 ? (passed[i - 1] * node.inflowRate - gain) / node.outflowRate
                                           : passed[i - 1];
    }
}

void passBetweenTracedNodes(const SolverLine& line, const std::vector<double>& solver,
                            std::vector<double>& traced) {
    if (!line.regridded) {
        std::copy_n(solver.begin(), at(line.tracedNodeCount) + 1, traced.begin());
        return;
    }
    std::size_t k = 1;
    for (std::size_t n = 0; n <= at(line.tracedNodeCount); ++n) {
        const double t = line.tracedTof[n];
        while (k < at(line.nodeCount) && line.Tof[k] < t) ++k;
        const double length = line.Tof[k] - line.Tof[k - 1];
        const double share = length > 0.0 ? std::clamp((t - line.Tof[k - 1]) / length, 0.0, 1.0) : 1.0;
        traced[n] = (1.0 - share) * solver[k - 1] + share * solver[k];
    }
}

/// The face of `from` behind which `to` lies, 0 if it is no neighbour.
int faceTowards(const ConnectionTable& connections, CellId from, CellId to) {
    const CellId* neighbour = connections.Neighbour.row(from);
    for (int face = 1; face <= FaceCount; ++face)
        if (neighbour[face - 1] == to) return face;
    return 0;
}

bool coveredCell(const CellArray<std::uint8_t>& covered, CellId cell) {
    return !covered.empty() && covered[cell] != 0;
}

}  // namespace

void sizePassage(int tracedNodes, std::size_t solverNodes, LinePassage& passage) {
    for (std::vector<double>* values : {&passage.water, &passage.oil, &passage.gas})
        values->assign(at(tracedNodes) + 2, 0.0);
    passage.solver.assign(solverNodes, 0.0);
}

void takePassage(const std::vector<NodeData>& nodes, double step, const SolverLine& line,
                 LinePassage& passage) {
    constexpr Phase Water{&FlowNode::Fw, &FlowNode::Cw, &NodeData::Cw, &FlowNode::passedW,
                          &LinePassage::water};
    constexpr Phase Oil{&FlowNode::Fo, &FlowNode::Co, &NodeData::Co, &FlowNode::passedO, &LinePassage::oil};
    constexpr Phase Gas{&FlowNode::Fg, &FlowNode::Cg, &NodeData::Cg, &FlowNode::passedG, &LinePassage::gas};
    for (const Phase& phase : {Water, Oil, Gas}) {
        if (line.hasGravity)
            passByGain(nodes, step, phase, line, passage.solver);
        else
            for (std::size_t i = 0; i <= at(line.nodeCount); ++i)
                passage.solver[i] = line.nodes[i].*phase.passed;
        passBetweenTracedNodes(line, passage.solver, passage.*phase.onTraced);
    }
}

void clearTransfer(CellId cells, FaceTransfer& transfer) {
    for (DirectionArray<double>* array : {&transfer.flow, &transfer.water, &transfer.oil, &transfer.gas})
        array->assign(cells, AxisCount, 0.0);
}

void addPassage(const ConnectionTable& connections, std::span<const CellId> cells, int count, double flow,
                const CellArray<std::uint8_t>& covered, const LinePassage& passage, FaceTransfer& transfer) {
    for (std::size_t n = 1; n < at(count); ++n) {
        const CellId from = cells[n];
        const CellId to = cells[n + 1];
        if (coveredCell(covered, from) && coveredCell(covered, to)) continue;
        const int face = faceTowards(connections, from, to);
        if (face == 0) continue;
        const TransferFace place = transferFace(connections, from, face);
        const double signedFlow = FaceSign[at(face) - 1] * flow;
        transfer.flow(place.cell, place.axis) += signedFlow;
        transfer.water(place.cell, place.axis) += signedFlow * passage.water[n];
        transfer.oil(place.cell, place.axis) += signedFlow * passage.oil[n];
        transfer.gas(place.cell, place.axis) += signedFlow * passage.gas[n];
    }
}

TransferFace transferFace(const ConnectionTable& connections, CellId cell, int face) {
    const bool high = face % 2 == 0;
    const CellId neighbour = connections.Neighbour(cell, face);
    return {high ? cell : std::max<CellId>(neighbour, 0), (face + 1) / 2};
}

}  // namespace kvr
