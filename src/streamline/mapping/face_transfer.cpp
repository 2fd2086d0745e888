#include "streamline/mapping/face_transfer.hpp"

#include "base/index.hpp"
#include "model/connections.hpp"

#include <algorithm>

namespace kvr {

namespace {

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

/// Where the node of the solver that the flow comes from is no longer than the traced one.
void findResolved(const SolverLine& line, std::vector<std::uint8_t>& told) {
    constexpr double Slack = 1e-6;  // of equal times that were summed differently
    if (!line.regridded) return std::fill(told.begin(), told.end(), std::uint8_t{1});
    std::size_t k = 1;
    for (std::size_t n = 0; n <= at(line.tracedNodeCount); ++n) {
        while (k < at(line.nodeCount) && line.Tof[k] < line.tracedTof[n]) ++k;
        told[n] = line.tracedDeltaTof[n] >= (1.0 - Slack) * line.DeltaTof[k] ? 1 : 0;
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
    passage.told.assign(at(tracedNodes) + 2, 1);
    passage.solver.assign(solverNodes, 0.0);
}

void takePassage(const SolverLine& line, LinePassage& passage) {
    struct Phase {
        double FlowNode::*passed;
        std::vector<double>* onTraced;
    };
    const Phase phases[] = {{&FlowNode::passedW, &passage.water},
                            {&FlowNode::passedO, &passage.oil},
                            {&FlowNode::passedG, &passage.gas}};
    for (const Phase& phase : phases) {
        for (std::size_t i = 0; i <= at(line.nodeCount); ++i) passage.solver[i] = line.nodes[i].*phase.passed;
        passBetweenTracedNodes(line, passage.solver, *phase.onTraced);
    }
    findResolved(line, passage.told);
}

void takeMixturePassage(int count, const SolverLine& line, const ComponentLine& components,
                        LinePassage& passage) {
    passage.mixture.resize(std::max(passage.mixture.size(), at(line.tracedNodeCount) + 1));
    std::size_t k = 1;
    for (std::size_t n = 0; n <= at(line.tracedNodeCount); ++n) {
        const double t = line.tracedTof[n];
        double share = 1.0;
        if (line.regridded) {
            while (k < at(line.nodeCount) && line.Tof[k] < t) ++k;
            share = std::clamp((t - line.Tof[k - 1]) / line.DeltaTof[k], 0.0, 1.0);
        } else {
            k = std::max<std::size_t>(n, 1);
            if (n == 0) share = 0.0;
        }
        const ComponentFlow &before = components.nodes[k - 1].passed, &here = components.nodes[k].passed;
        ComponentFlow& passed = passage.mixture[n];
        for (std::size_t i = 0; i < at(count); ++i)
            passed.moles[i] = (1.0 - share) * before.moles[i] + share * here.moles[i];
        passed.water = (1.0 - share) * before.water + share * here.water;
    }
    findResolved(line, passage.told);
}

void clearTransfer(CellId cells, FaceTransfer& transfer, int components) {
    transfer.components = components;
    for (DirectionArray<double>* array : {&transfer.flow, &transfer.told})
        array->assign(cells, AxisCount, 0.0);
    if (components > 0) return transfer.mixture.assign(cells, AxisCount * (components + 1), 0.0);
    for (DirectionArray<double>* array : {&transfer.water, &transfer.oil, &transfer.gas})
        array->assign(cells, AxisCount, 0.0);
}

namespace {

void addMixture(const TransferFace& place, double flow, const ComponentFlow& passed, FaceTransfer& transfer) {
    const auto width = at(transfer.components + 1);
    double* const row = transfer.mixture.row(place.cell) + at(place.axis - 1) * width;
    for (std::size_t i = 0; i + 1 < width; ++i) row[i] += flow * passed.moles[i];
    row[width - 1] += flow * passed.water;
}

}  // namespace

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
        if (passage.told[n] == 0) continue;
        transfer.told(place.cell, place.axis) += signedFlow;
        if (transfer.components > 0) {
            addMixture(place, signedFlow, passage.mixture[n], transfer);
            continue;
        }
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
