#include "streamline/transport/component_line.hpp"

#include "base/index.hpp"
#include "fluid/components/viscosity.hpp"
#include "fluid/saturation_functions.hpp"
#include "streamline/transport/fractional_flow.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double MostCrossings = 4.0;  // of a solver node in a step
constexpr double LeastChange = 1e-6;   // lb-mole/ft3, below which a difference has no wave speed
constexpr double FastestWave = 20.0;   // of the flow
constexpr double StaleChange = 1e-4;   // of what a node holds, behind which its phases are found anew
constexpr double LargestGiven = 0.9;   // of what a node holds of a component, in a substep
constexpr double LeastMoles = 1e-30;

double sumOf(const Composition& z, int count) {
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += z[at(i)];
    return sum;
}

void addFlow(int count, double factor, const ComponentFlow& flow, ComponentFlow& sum) {
    for (int i = 0; i < count; ++i) sum.moles[at(i)] += factor * flow.moles[at(i)];
    sum.water += factor * flow.water;
}

/// Phases of what a node holds, by the flash that it keeps where that is the one of its cell; its saturations
/// and its fluxes by their mobilities.
void findPhases(const FluidTables& tables, const ComponentField& field, bool isFlashed, ComponentNode& node) {
    const ComponentSet& set = field.stage->set;
    const double moles = sumOf(node.held.moles, set.count);
    double oil = 0.0, gas = 0.0;
    if (moles > LeastMoles) {
        Composition z{};
        for (int i = 0; i < set.count; ++i) z[at(i)] = node.held.moles[at(i)] / moles;
        if (!isFlashed) FlashPT(set, z, node.pressure, node.flash);
        const PhaseVolumes volumes = phaseVolumes(set, node.pressure, node.flash);
        oil = moles * volumes.liquid / field.volumeFactor;
        gas = moles * volumes.vapour / field.volumeFactor;
    }
    const double water = node.Bw * node.held.water;
    const double total = oil + gas + water;
    node.Sw = total > 0.0 ? water / total : 1.0;
    node.Sg = total > 0.0 ? gas / total : 0.0;
    const FlashState& flash = node.flash;
    const RelPerms kr = relPermsAtCell(tables, node.cell, node.region, node.Sw, node.Sg);
    const double muO = VIS_COMPS(set, node.pressure, flash.zLiquid, flash.liquid);
    const double muG =
        flash.phases == FluidPhases::Both ? VIS_COMPS(set, node.pressure, flash.zVapour, flash.vapour) : muO;
    const double lo = kr.o / muO;
    const double lg = kr.g / muG;
    const double lw = kr.w / node.MuW;
    const double share = 1.0 / (lo + lg + lw + MobilityGuard);
    const double liquid = lo * share * phaseMoles(set, field.volumeFactor, node.pressure, flash.zLiquid);
    const double vapour = lg * share * phaseMoles(set, field.volumeFactor, node.pressure, flash.zVapour);
    for (int i = 0; i < set.count; ++i)
        node.flux.moles[at(i)] = liquid * flash.liquid[at(i)] + vapour * flash.vapour[at(i)];
    node.flux.water = lw * share / node.Bw;
}

double raised(double speed, double dF, double dC, double least, double rate) {
    const double step = std::abs(dC);
    return step > least ? std::max(speed, std::min(FastestWave, std::abs(dF) / step) * rate) : speed;
}

/// Largest wave speed of the line, 1/day: of amounts and fluxes in lb-mole/ft3, of water in volumes.
double largestSpeed(int count, double volumeFactor, int last, const std::vector<ComponentNode>& nodes) {
    const double least = LeastChange * volumeFactor;
    double speed = 0.0;
    for (std::size_t n = 1; n <= at(last); ++n) {
        const ComponentNode& node = nodes[n];
        const ComponentNode& before = nodes[n - 1];
        for (std::size_t i = 0; i < at(count); ++i) {
            if (n > 1)
                speed = raised(speed, node.flux.moles[i] - before.flux.moles[i],
                               node.held.moles[i] - before.held.moles[i], least, node.inverseDeltaTof);
            if (node.held.moles[i] > least)
                speed = std::max(speed, node.flux.moles[i] / node.held.moles[i] * node.outflowRate);
        }
        if (n > 1)
            speed = raised(speed, node.flux.water - before.flux.water, node.held.water - before.held.water,
                           LeastChange, node.inverseDeltaTof);
        if (node.held.water > LeastChange)
            speed = std::max(speed, node.flux.water / node.held.water * node.outflowRate);
    }
    return speed;
}

void limitLine(std::string_view upwind, int count, double dt, int last, std::vector<ComponentNode>& nodes) {
    for (std::size_t n = 0; n <= at(last); ++n) nodes[n].limited = nodes[n].flux;
    if (upwind == "SPU") return;
    const bool leonard = upwind == "Leonard";
    for (std::size_t n = 1; n < at(last); ++n) {
        const double c = std::min(1.0, dt * nodes[n].inverseDeltaTof);
        const ComponentFlow &before = nodes[n - 1].flux, &after = nodes[n + 1].flux;
        ComponentNode& node = nodes[n];
        for (std::size_t i = 0; i < at(count); ++i)
            node.limited.moles[i] =
                limitedFlux(leonard, c, before.moles[i], node.flux.moles[i], after.moles[i]);
        node.limited.water = limitedFlux(leonard, c, before.water, node.flux.water, after.water);
    }
}

/// No more leaves a node in a substep than the most of what it holds: where a floor of the substep, or a
/// limited flux, would take more.
void boundOutflow(int count, double dt, ComponentNode& node) {
    constexpr double NoBound = 1e100;
    const double most = node.outflowRate > 0.0 ? LargestGiven / (dt * node.outflowRate) : NoBound;
    for (std::size_t i = 0; i < at(count); ++i)
        node.limited.moles[i] = std::clamp(node.limited.moles[i], 0.0, most * node.held.moles[i]);
    node.limited.water = std::clamp(node.limited.water, 0.0, most * node.held.water);
}

bool isFinite(int count, const ComponentFlow& flow) {
    return std::isfinite(sumOf(flow.moles, count) + flow.water);
}

/// One substep; phases are found anew where a node has changed.
void takeSubstep(const FluidTables& tables, const ComponentField& field, double dt, int last,
                 std::vector<ComponentNode>& nodes) {
    const int count = field.stage->set.count;
    for (std::size_t n = 1; n <= at(last); ++n) boundOutflow(count, dt, nodes[n]);
    addFlow(count, dt, nodes[0].limited, nodes[0].passed);
    for (std::size_t n = 1; n <= at(last); ++n) {
        ComponentNode& node = nodes[n];
        const ComponentFlow before = node.held;
        addFlow(count, dt * node.inflowRate, nodes[n - 1].limited, node.held);
        addFlow(count, -dt * node.outflowRate, node.limited, node.held);
        addFlow(count, dt, node.limited, node.passed);
        if (!isFinite(count, node.held)) node.held = n > 1 ? nodes[n - 1].held : before;
        double change = 0.0;
        for (std::size_t i = 0; i < at(count); ++i) change += std::abs(node.held.moles[i] - before.moles[i]);
        node.changed += change / std::max(LeastMoles, sumOf(node.held.moles, count)) +
                        node.Bw * std::abs(node.held.water - before.water);
        if (node.changed <= StaleChange) continue;
        node.changed = 0.0;
        findPhases(tables, field, false, node);
    }
}

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
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0 || !(state.PoreVolume[c] > 0.0)) continue;
        const double* flux = velocity.CellFaceFlux.row(c);
        field.expansion[c] =
            (flux[1] - flux[0] + flux[3] - flux[2] + flux[5] - flux[4]) / state.PoreVolume[c];
    }
    for (const ComponentSource& source : run.sources) {
        field.expansion[source.cell] = 0.0;
        const Well& well = wells.wells[source.well];
        const double rate = well.connections[source.place].reservoirRate;
        if (!isInjector(well) || !(rate > 0.0)) continue;
        field.inlet[source.cell] = static_cast<int>(field.inlets.size());
        ComponentFlow flow;
        for (int i = 0; i < run.stage.set.count; ++i) flow.moles[at(i)] = source.stream[at(i)] / rate;
        flow.water = source.waterStream / rate;
        field.inlets.push_back(flow);
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
        node.cell = cell;
        node.region = grid.SATNUM[cell];
        node.pressure = state.Pressure[cell];
        node.Bw = state.Bw[cell];
        node.MuW = state.MuW[cell];
        node.held = meanOverNode(field, state, line, n, first);
        node.flash = field.stage->cells.flash[at(cell)];
        // A cell without pore volume holds nothing to move.
        node.inverseDeltaTof = line.DeltaTof[n] > 0.0 ? 1.0 / line.DeltaTof[n] : 0.0;
        node.outflowRate = node.inverseDeltaTof + std::max(0.0, field.expansion[cell]);
        node.inflowRate = node.inverseDeltaTof - std::min(0.0, field.expansion[cell]);
        node.changed = 0.0;
        node.passed = {};
        findPhases(tables, field, holdsItsCell(*field.stage, state, node), node);
    }
    ComponentNode& inlet = components.nodes[0];
    inlet = components.nodes[1];
    const int place = field.inlet[line.tracedCell[1]];
    if (place >= 0) inlet.flux = field.inlets[at(place)];
}

void advanceComponentLine(const FluidTables& tables, const ComponentField& field,
                          const ExplicitControl& control, double step, SolverLine& line,
                          ComponentLine& components) {
    const int count = field.stage->set.count, last = line.nodeCount;
    std::vector<ComponentNode>& nodes = components.nodes;
    line.substeps = 0;
    for (double t = 0.0; t < step;) {
        const double left = step - t;
        const double speed = largestSpeed(count, field.volumeFactor, last, nodes);
        const double dt = std::min(left, stepOfSpeed(control, speed, control.firstStep && t == 0.0));
        limitLine(control.upwind, count, dt, last, nodes);
        takeSubstep(tables, field, dt, last, nodes);
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
