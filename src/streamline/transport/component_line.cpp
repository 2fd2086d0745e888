#include "streamline/transport/component_line.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double MostCrossings = 4.0;  // of a solver node in a step

/// What a solver node covers of the cells of the traced line, as the sum of their amounts.
ComponentFlow meanOverNode(const ComponentField& field, const CellState& state, const SolverLine& line,
                           std::size_t n, std::size_t& first) {
    const ComponentStage& stage = *field.stage;
    const auto add = [&](CellId cell, double share, ComponentFlow& sum) {
        const double perPore = share / state.PoreVolume[cell];
        const double* moles = stage.amounts.moles.row(cell);
        for (int i = 0; i < stage.set.count; ++i) sum.moles[at(i)] += perPore * moles[i];
        sum.water += perPore * stage.amounts.water[cell];
    };
    ComponentFlow mean;
    const std::size_t last = at(line.tracedNodeCount);
    const double from = line.Tof[n - 1], to = line.Tof[n];
    while (first < last && line.tracedTof[first] <= from) ++first;
    double covered = 0.0;
    if (line.regridded && to > from)
        for (std::size_t m = first; m <= last && line.tracedTof[m - 1] < to; ++m) {
            const double end = m < last ? std::min(line.tracedTof[m], to) : to;
            const double overlap = end - std::max(line.tracedTof[m - 1], from);
            if (overlap <= 0.0) continue;
            add(line.tracedCell[m], overlap / (to - from), mean);
            covered += overlap;
        }
    if (!(covered > 0.0)) {
        mean = {};
        add(line.tracedCell[at(line.tracedNode[n])], 1.0, mean);
    }
    return mean;
}

/// Whether a node holds what its cell does, whose flash it then has.
bool holdsItsCell(const ComponentStage& stage, const CellState& state, const ComponentNode& node) {
    constexpr double Slack = 1e-12;
    const double* moles = stage.amounts.moles.row(node.cell);
    for (std::size_t i = 0; i < at(stage.set.count); ++i) {
        const double held = node.held.moles[i] * state.PoreVolume[node.cell];
        if (std::abs(held - moles[i]) > Slack * moles[i]) return false;
    }
    return true;
}

/// What the well of a source has brought so far over what it brings a day.
double ageOf(const ComponentSource& source, const ComponentRun& run) {
    if (source.well >= run.wells.size()) return 0.0;  // wells of a run that has not begun
    const SourceTotals& brought = run.wells[source.well].injected;
    double sum = 0.0, perDay = 0.0, waterPerDay = 0.0;
    for (const ComponentSource& other : run.sources) {
        if (other.well != source.well) continue;
        for (std::size_t i = 0; i < at(run.stage.set.count); ++i) perDay += other.stream[i];
        waterPerDay += other.waterStream;
    }
    for (std::size_t i = 0; i < at(run.stage.set.count); ++i) sum += brought.moles[i];
    if (perDay > 0.0) return sum / perDay;
    return waterPerDay > 0.0 ? brought.water / waterPerDay : 0.0;
}

}  // namespace

void prepareComponentField(const UnitSystem& units, const GridModel& grid, const CellState& state,
                           const VelocityField& velocity, const WellRecord& wells, const ComponentRun& run,
                           ComponentField& field) {
    field.stage = &run.stage;
    field.surface = &run.surface;
    field.volumeFactor = units.VolumeFactor;
    field.expansion.assign(grid.NCELLS, 0.0);
    field.inlet.assign(grid.NCELLS, -1);
    field.inlets.clear();
    field.age.clear();
    field.through.clear();
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || !(state.PoreVolume[c] > 0.0)) continue;
        const double* flux = velocity.CellFaceFlux.row(c);
        field.expansion[c] =
            (flux[1] - flux[0] + flux[3] - flux[2] + flux[5] - flux[4]) / state.PoreVolume[c];
    }
    for (const ComponentSource& source : run.sources) {
        const double outflow = field.expansion[source.cell] * state.PoreVolume[source.cell];
        field.expansion[source.cell] = 0.0;
        const Well& well = wells.wells[source.well];
        const double rate = well.connections[source.place].reservoirRate;
        if (!isInjector(well) || !(rate > 0.0)) continue;
        field.inlet[source.cell] = static_cast<int>(field.inlets.size());
        ComponentFlow flow;
        for (int i = 0; i < run.stage.set.count; ++i) flow.moles[at(i)] = source.stream[at(i)] / rate;
        flow.water = source.waterStream / rate;
        field.inlets.push_back(flow);
        field.age.push_back(ageOf(source, run));
        field.through.push_back(outflow / rate);
    }
}

void joinShortNodes(double step, SolverLine& line) {
    const double least = step / MostCrossings;
    const int old = line.nodeCount;
    if (std::all_of(line.DeltaTof.begin() + 1, line.DeltaTof.begin() + 1 + old,
                    [least](double each) { return each >= least; }))
        return;
    int count = 0;
    double sum = 0.0;
    for (int n = 1; n <= old; ++n) {
        sum += line.DeltaTof[at(n)];
        if (sum < least && n < old) continue;
        // What is left at the end of the line goes with the node before.
        if (sum < least && count > 0)
            line.DeltaTof[at(count)] += sum;
        else
            line.DeltaTof[at(++count)] = sum;
        sum = 0.0;
    }
    line.nodeCount = count;
    line.regridded = true;
    line.Tof[0] = 0.0;
    int traced = 1;
    for (int n = 1; n <= count; ++n) {
        line.Tof[at(n)] = line.Tof[at(n) - 1] + line.DeltaTof[at(n)];
        line.groupMark[at(n)] = 1;
        const double middle = 0.5 * (line.Tof[at(n) - 1] + line.Tof[at(n)]);
        while (traced < line.tracedNodeCount && line.tracedTof[at(traced)] < middle) ++traced;
        line.tracedNode[at(n)] = traced;
    }
}

void loadComponentLine(const GridModel& grid, const FluidTables& tables, const CellState& state,
                       const ComponentField& field, const SolverLine& line, ComponentLine& components) {
    components.nodes.resize(std::max(components.nodes.size(), at(line.nodeCount) + 1));
    std::size_t first = 1;
    for (std::size_t n = 1; n <= at(line.nodeCount); ++n) {
        ComponentNode& node = components.nodes[n];
        const CellId cell = line.tracedCell[at(line.tracedNode[n])];
        placeNode(grid, state, cell, node);
        node.held = meanOverNode(field, state, line, n, first);
        node.flash = field.stage->cells.flash[at(cell)];
        // A cell without pore volume holds nothing to move.
        node.inverseDeltaTof = line.DeltaTof[n] > 0.0 ? 1.0 / line.DeltaTof[n] : 0.0;
        node.outflowRate = node.inverseDeltaTof + std::max(0.0, field.expansion[cell]);
        node.inflowRate = node.inverseDeltaTof - std::min(0.0, field.expansion[cell]);
        node.changed = 0.0;
        node.passed = {};
        findPhases(tables, field.stage->set, field.volumeFactor, holdsItsCell(*field.stage, state, node),
                   node);
    }
    ComponentNode& inlet = components.nodes[0];
    inlet = components.nodes[1];
    const int place = field.inlet[line.tracedCell[1]];
    if (place >= 0) inlet.flux = field.inlets[at(place)];
}

void advanceComponentLine(const FluidTables& tables, const ComponentField& field,
                          const ExplicitControl& control, double step, SolverLine& line,
                          ComponentLine& components) {
    const int last = line.nodeCount;
    std::vector<ComponentNode>& nodes = components.nodes;
    line.substeps = 0;
    for (double t = 0.0; t < step;) {
        const double left = step - t;
        const double dt = marchNodes(tables, field.stage->set, field.volumeFactor, control,
                                     control.firstStep && t == 0.0, left, last, nodes);
        ++line.substeps;
        t = dt >= left ? step : t + dt;
    }
    for (std::size_t n = 1; n <= at(last); ++n) {
        FlowNode& node = line.nodes[n];
        node.Sw = nodes[n].Sw;
        node.Sg = nodes[n].Sg;
        node.So = std::max(0.0, 1.0 - node.Sw - node.Sg);
        node.bubblePoint = 0.0;
    }
}

}  // namespace kvr
