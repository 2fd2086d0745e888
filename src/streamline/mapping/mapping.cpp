#include "streamline/mapping/mapping.hpp"

#include "base/constants.hpp"
#include "base/index.hpp"
#include "base/threads.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/state_recovery.hpp"
#include "streamline/transport/line_grid.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double BubblePointSlack = 1e-8;  // psi, excess over a limit that is left alone

/// Bubble point and Rs of a cell with free gas, without oil, or below saturation.
void setSolutionGas(const FluidTables& fluids, double pressure, double mostRs, double oldPb,
                    PhaseState& state) {
    if (state.Sg > 0.0) state.Pb = pressure;
    if (state.So <= 0.0)
        state.Pb = fluids.MaxRs > 0.0 && fluids.SatRows == 1 ? oldPb : BubblePoint(fluids, 0.0);
    state.Rs = SolutionRs(fluids, state.Pb);
    if (state.Rs <= mostRs) return;
    state.Rs = mostRs;
    state.Pb = BubblePoint(fluids, mostRs);
}

void repair(const SaturationTable& table, PhaseState& state) {
    if (std::isnan(state.So)) state.So = table.ResidualSo;
    if (std::isnan(state.Sw)) state.Sw = table.ConnateSw;
    if (std::isnan(state.Sg)) state.Sg = table.CriticalSg;
    if (std::isnan(state.Pb)) state.Pb = 0.0;
}

/// End points: the lower limits first, then the upper ones.
void limitToEndPoints(const SaturationTable& table, PhaseState& state) {
    const double swc = table.ConnateSw;
    const double sor = table.ResidualSo;
    const double sgc = table.CriticalSg;
    state.So = std::min(std::max(state.So, sor), 1.0 - swc - sgc);
    state.Sw = std::min(std::max(state.Sw, swc), 1.0 - sor - sgc);
    state.Sg = std::min(std::max(state.Sg, sgc), 1.0 - sor - swc);
}

void limitAndScale(const SaturationTable& table, bool keepEndPoints, PhaseState& state) {
    if (keepEndPoints) {
        limitToEndPoints(table, state);
    } else {
        state.Sw = std::clamp(state.Sw, 0.0, 1.0);
        state.So = std::clamp(state.So, 0.0, 1.0);
        state.Sg = std::clamp(state.Sg, 0.0, 1.0);
    }
    const double sum = state.Sw + state.So + state.Sg;
    if (sum > 0.0) {
        state.Sw /= sum;
        state.So /= sum;
        state.Sg /= sum;
    } else {
        state.Sw = 1.0;
        state.So = state.Sg = 0.0;
    }
}

void limitSolutionGas(const FluidTables& fluids, double saturated, PhaseState& state) {
    state.Rs = std::max(state.Rs, 0.0);
    if (state.Sg > 0.0 && state.Rs > saturated) {
        state.Rs = saturated;
        state.Pb = BubblePoint(fluids, state.Rs);
    }
    if (state.Rs <= 0.0) state.Pb = BubblePoint(fluids, 0.0);
}

void limitBubblePoint(const RunOptions& options, const FluidTables& fluids, double limit, PhaseState& state) {
    if (state.Sg > 0.0) return;
    const bool above = options.bubblePointMaxLimit && state.Pb > limit + BubblePointSlack;
    const bool below = options.bubblePointMinLimit && state.Pb < limit - BubblePointSlack;
    if (!above && !below) return;
    state.Pb = limit;
    state.Rs = state.So <= 0.0 ? 0.0 : SolutionRs(fluids, limit);
}

PhaseState meanOf(const MappingSums& sums, CellId cell, bool hasGas, const CellState& old) {
    const double weight = sums.weight[cell];
    PhaseState state;
    state.Sw = sums.water[cell] / weight;
    state.So = sums.oil[cell] / weight;
    state.Sg = hasGas ? sums.gas[cell] / weight : 0.0;
    state.Pb = hasGas ? sums.bubblePoint[cell] / weight : old.Pb[cell];
    state.Rs = old.Rs[cell];
    return state;
}

void mapTracersOfCell(const MappingSums& sums, CellId cell, CellState& state) {
    for (int t = 0; t < sums.tracer.width; ++t)
        state.tracer.row(cell)[t] = sums.tracer.row(cell)[t] / sums.weight[cell];
}

void mapCell(const RunOptions& options, const FluidTables& all, const SaturationTable& table,
             const MappingSums& sums, CellId cell, CellState& state) {
    const FluidTables& fluids = pvtAt(all, cell);
    const bool hasGas = fluids.hasGas;
    PhaseState mapped = meanOf(sums, cell, hasGas, state);
    const double saturated = hasGas ? allowedRs(state, cell, SolutionRs(fluids, state.Pressure[cell])) : 0.0;
    if (hasGas) setSolutionGas(fluids, state.Pressure[cell], saturated, state.Pb[cell], mapped);
    repair(table, mapped);
    limitAndScale(table, options.keepIrreducibleSaturation, mapped);
    if (hasGas) {
        limitSolutionGas(fluids, saturated, mapped);
        limitBubblePoint(options, fluids, sums.bubblePointLimit[cell], mapped);
    }
    storePhases(mapped, cell, state);
    mapTracersOfCell(sums, cell, state);
}

void limitUnvisited(const SaturationTable& table, CellId cell, CellState& state) {
    PhaseState kept = phasesOf(state, cell);
    limitAndScale(table, true, kept);
    storePhases(kept, cell, state);
}

void addHeld(const LineContribution& contribution, std::size_t n, double weight, double* row) {
    const ComponentFlow& held = contribution.held[n];
    const std::size_t count = at(contribution.components);
    for (std::size_t i = 0; i < count; ++i) row[i] += weight * held.moles[i];
    row[count] += weight * held.water;
}

}  // namespace

void sizeContribution(int tracedNodes, int tracerCount, LineContribution& contribution) {
    const std::size_t size = at(tracedNodes) + 2;
    contribution.cell.assign(size, 0);
    for (std::vector<double>* values : {&contribution.weight, &contribution.Sw, &contribution.So,
                                        &contribution.Sg, &contribution.bubblePoint})
        values->assign(size, 0.0);
    contribution.tracer.assign(at(tracerCount), std::vector<double>(size, 0.0));
}

void takeContribution(const SolverLine& line, bool hasGas, LineContribution& contribution) {
    const int count = line.tracedNodeCount;
    contribution.count = count;
    std::copy_n(line.tracedCell.begin(), at(count) + 1, contribution.cell.begin());
    std::copy_n(line.tracedDeltaTof.begin(), at(count) + 1, contribution.weight.begin());
    remapToTraced(line, &FlowNode::Sw, contribution.Sw);
    remapToTraced(line, &FlowNode::So, contribution.So);
    if (hasGas) {
        remapToTraced(line, &FlowNode::Sg, contribution.Sg);
        remapToTraced(line, &FlowNode::bubblePoint, contribution.bubblePoint);
    }
    for (std::size_t t = 0; t < line.tracer.size(); ++t)
        remapToTraced(line, line.tracer[t], contribution.tracer[t]);
}

void takeHeld(int count, const SolverLine& line, ComponentLine& components, LineContribution& contribution) {
    contribution.components = count;
    contribution.held.resize(std::max(contribution.held.size(), at(line.tracedNodeCount) + 1));
    components.solver.resize(at(line.nodeCount) + 1);
    components.traced.resize(at(line.tracedNodeCount) + 1);
    for (int k = 0; k <= count; ++k) {
        for (std::size_t n = 1; n <= at(line.nodeCount); ++n) {
            const ComponentFlow& held = components.nodes[n].held;
            components.solver[n] = k < count ? held.moles[at(k)] : held.water;
        }
        remapToTraced(line, components.solver, components.traced);
        for (std::size_t n = 1; n <= at(line.tracedNodeCount); ++n) {
            ComponentFlow& held = contribution.held[n];
            (k < count ? held.moles[at(k)] : held.water) = components.traced[n];
        }
    }
}

void scaleWeights(double flow, LineContribution& contribution) {
    for (int n = 1; n <= contribution.count; ++n) contribution.weight[at(n)] *= flow;
}

void sizeMapping(CellId cellCount, int tracerCount, bool hasGas, const CellState& state, MappingSums& sums) {
    for (CellArray<double>* values : {&sums.weight, &sums.water, &sums.oil}) values->assign(cellCount, 0.0);
    if (hasGas) {
        sums.gas.assign(cellCount, 0.0);
        sums.bubblePoint.assign(cellCount, 0.0);
        sums.bubblePointLimit = state.Pb;
    }
    sums.tracer.assign(cellCount, tracerCount, 0.0);
    sums.CellVisited.assign(cellCount, 0);
    sums.visitedSnapshot.assign(cellCount, 0);
}

void accumulate(const LineContribution& contribution, bool hasGas, bool onlyMissed, MappingSums& sums) {
    for (std::size_t n = 1; n <= at(contribution.count); ++n) {
        const CellId cell = contribution.cell[n];
        if (onlyMissed && sums.visitedSnapshot[cell] != 0) continue;
        const double weight = contribution.weight[n];
        sums.weight[cell] += weight;
        sums.water[cell] += contribution.Sw[n] * weight;
        sums.oil[cell] += contribution.So[n] * weight;
        if (hasGas) {
            sums.gas[cell] += contribution.Sg[n] * weight;
            sums.bubblePoint[cell] += contribution.bubblePoint[n] * weight;
        }
        for (std::size_t t = 0; t < contribution.tracer.size(); ++t)
            sums.tracer.row(cell)[t] += contribution.tracer[t][n] * weight;
        if (contribution.components > 0) addHeld(contribution, n, weight, sums.mixture.row(cell));
    }
}

void mapToCells(const RunOptions& options, const FluidTables& fluids, const GridModel& grid,
                const MappingSums& sums, CellState& state) {
#pragma omp parallel for schedule(static) if (grid.NCELLS >= ParallelCells)
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        const SaturationTable& table = regionTable(fluids, grid.SATNUM[cell]);
        if (sums.weight[cell] > 0.0)
            mapCell(options, fluids, table, sums, cell, state);
        else if (options.keepIrreducibleSaturation)
            limitUnvisited(table, cell, state);
    }
}

void mapTracers(const GridModel& grid, const MappingSums& sums, CellState& state) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (grid.Active[cell] != 0 && sums.weight[cell] > 0.0) mapTracersOfCell(sums, cell, state);
}

void clearMapping(MappingSums& sums) {
    for (CellArray<double>* values : {&sums.weight, &sums.water, &sums.oil, &sums.gas, &sums.bubblePoint})
        std::fill(values->slots.begin(), values->slots.end(), 0.0);
    std::fill(sums.tracer.slots.begin(), sums.tracer.slots.end(), 0.0);
    std::fill(sums.mixture.slots.begin(), sums.mixture.slots.end(), 0.0);
}

void clearVisited(MappingSums& sums) {
    std::fill(sums.CellVisited.slots.begin(), sums.CellVisited.slots.end(), std::uint8_t{0});
    std::fill(sums.visitedSnapshot.slots.begin(), sums.visitedSnapshot.slots.end(), std::uint8_t{0});
}

}  // namespace kvr
