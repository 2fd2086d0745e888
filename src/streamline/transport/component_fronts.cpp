#include "streamline/transport/component_fronts.hpp"

#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int RowNodes = 200;
constexpr int NodesAhead = 3;           // of the row's end, that the first front ends the march at
constexpr double ArrivedChange = 1e-4;  // of what a node held at first
constexpr double MoleStep = 1e-4;       // of what a node holds, in the difference that gives its room
constexpr double LeastMoles = 1e-30;
constexpr double StalePartials = 2e-3;  // of what a node holds
constexpr double ExcessRate = 0.5;      // 1/day, at which a node gives what is more than its pores
constexpr double LeastFlow = 0.1, MostFlow = 10.0;  // of that at the inlet
constexpr double StaleFronts = 0.01;                // of pressure or stream

/// The row that is marched; a node has one unit of pores, one unit a day comes in.
struct FrontRow {
    std::vector<ComponentNode> nodes;           // [0..RowNodes], 0 the inlet
    std::vector<double> flow, through;          // behind each node; its integral over the days so far
    std::vector<ComponentFlow> partial, known;  // volumes a lb-mole in each node, and what it held then
};

double sumOf(int count, const ComponentFlow& flow) {
    double sum = 0.0;
    for (std::size_t i = 0; i < at(count); ++i) sum += flow.moles[i];
    return sum;
}

/// Volumes that a lb-mole of each component takes in what a node holds, by differences.
void findPartials(const ComponentSet& set, double volumeFactor, const ComponentNode& node,
                  ComponentFlow& partial) {
    const double held = sumOf(set.count, node.held);
    partial.water = node.Bw;
    if (!(held > LeastMoles)) return;
    const double part = MoleStep * held, mixture = node.volume - node.Bw * node.held.water;
    for (std::size_t k = 0; k < at(set.count); ++k) {
        Composition feed{};
        for (std::size_t i = 0; i < at(set.count); ++i)
            feed[i] = (node.held.moles[i] + (i == k ? part : 0.0)) / (held + part);
        FlashState state = node.flash;
        FlashPT(set, feed, node.pressure, state);
        const PhaseVolumes volumes = phaseVolumes(set, node.pressure, state);
        const double more = (held + part) * (volumes.liquid + volumes.vapour) / volumeFactor;
        partial.moles[k] = (more - mixture) / part;
    }
}

double roomOf(int count, const ComponentFlow& partial, const ComponentFlow& flow) {
    double room = partial.water * flow.water;
    for (std::size_t i = 0; i < at(count); ++i) room += partial.moles[i] * flow.moles[i];
    return room;
}

/// Flow behind every node: what enters finds the room that what leaves gives it, and what exceeds the pores
/// goes too.
void findFlow(const ComponentSet& set, double volumeFactor, FrontRow& row) {
    for (std::size_t n = 1; n <= at(RowNodes); ++n) {
        ComponentNode& node = row.nodes[n];
        const double held = sumOf(set.count, node.held);
        double change = std::abs(node.Bw * (node.held.water - row.known[n].water));
        for (std::size_t i = 0; i < at(set.count); ++i)
            change += std::abs(node.held.moles[i] - row.known[n].moles[i]) / std::max(held, LeastMoles);
        if (!(change <= StalePartials)) {
            row.known[n] = node.held;
            findPartials(set, volumeFactor, node, row.partial[n]);
        }
        const double enters = roomOf(set.count, row.partial[n], row.nodes[n - 1].limited);
        const double leaves = roomOf(set.count, row.partial[n], node.limited);
        const double flow = (row.flow[n - 1] * enters + ExcessRate * (node.volume - 1.0)) / leaves;
        row.flow[n] = std::clamp(flow, LeastFlow, MostFlow);
        node.inflowRate = row.flow[n - 1];
        node.outflowRate = node.inverseDeltaTof = row.flow[n];
    }
}

void fillRow(const FluidTables& tables, const ComponentSet& set, double volumeFactor, const FrontStart& start,
             FrontRow& row) {
    ComponentNode first = start.node;
    first.flash = {};
    findPhases(tables, set, volumeFactor, false, first);
    // What was there fills the pores at the pressure of the row.
    if (first.volume > 0.0)
        for (double& moles : first.held.moles) moles /= first.volume;
    if (first.volume > 0.0) first.held.water /= first.volume;
    findPhases(tables, set, volumeFactor, true, first);
    first.passed = {};
    first.changed = 0.0;
    const std::size_t size = at(RowNodes) + 1;
    first.inflowRate = first.outflowRate = first.inverseDeltaTof = 1.0;
    row.nodes.assign(size, first);
    row.nodes[0].flux = start.stream;
    row.flow.assign(size, 1.0);
    row.through.assign(size, 0.0);
    row.partial.assign(size, {});
    row.known.assign(size, {});
}

bool hasArrived(int count, const ComponentFlow& initial, double Bw, const FrontRow& row) {
    const ComponentFlow& held = row.nodes[at(RowNodes - NodesAhead)].held;
    double change = 0.0;
    for (std::size_t i = 0; i < at(count); ++i) change += std::abs(held.moles[i] - initial.moles[i]);
    return change > ArrivedChange * sumOf(count, initial) ||
           Bw * std::abs(held.water - initial.water) > ArrivedChange;
}

/// What has gone by the nodes by balance: what came in less what they hold more than at first.
void takePositions(int count, double days, const FrontRow& row, ComponentFronts& fronts) {
    const double perDay = 1.0 / days;
    fronts.positions.assign(at(RowNodes) + 1, {});
    FrontPosition& inlet = fronts.positions.front();
    inlet.passed = fronts.stream;
    inlet.volume = 1.0;
    inlet.Sw = row.nodes[1].Sw;
    inlet.Sg = row.nodes[1].Sg;
    for (std::size_t n = 1; n <= at(RowNodes); ++n) {
        const FrontPosition& before = fronts.positions[n - 1];
        const ComponentNode& node = row.nodes[n];
        FrontPosition& here = fronts.positions[n];
        here.place = before.place + perDay;
        here.volume = perDay * row.through[n];
        here.passed = before.passed;
        addFlow(count, -perDay, node.held, here.passed);
        addFlow(count, perDay, fronts.initial, here.passed);
        here.Sw = node.Sw;
        here.Sg = node.Sg;
    }
}

/// Between the positions of the table; past its end the last one stands.
void findPosition(const std::vector<FrontPosition>& positions, double place, std::size_t& behind,
                  double& share) {
    const auto next =
        std::upper_bound(positions.begin() + 1, positions.end() - 1, place,
                         [](double p, const FrontPosition& position) { return p < position.place; });
    behind = static_cast<std::size_t>(next - positions.begin()) - 1;
    const double width = positions[behind + 1].place - positions[behind].place;
    share = std::clamp((place - positions[behind].place) / width, 0.0, 1.0);
}

/// What has gone by a pore volume from the inlet, `days` after the stream came in.
FrontPosition goneBy(int count, const ComponentFronts& fronts, double place, double days) {
    FrontPosition sum;
    if (!(days > 0.0)) return sum;
    std::size_t k = 0;
    double share = 0.0;
    findPosition(fronts.positions, place / days, k, share);
    const FrontPosition &before = fronts.positions[k], &after = fronts.positions[k + 1];
    addFlow(count, days * (1.0 - share), before.passed, sum.passed);
    addFlow(count, days * share, after.passed, sum.passed);
    sum.volume = days * ((1.0 - share) * before.volume + share * after.volume);
    sum.Sw = (1.0 - share) * before.Sw + share * after.Sw;
    sum.Sg = (1.0 - share) * before.Sg + share * after.Sg;
    return sum;
}

/// Pores that a tube of flow has over a time of flight, with a net outflow a day and pore volume along it;
/// the flow goes to what it is behind them. Times of flight themselves hang on where fronts stand in cells.
double poresPassed(double days, double expansion, double& flow) {
    constexpr double NoGrowth = 1e-9;
    const double growth = expansion * days, before = flow;
    flow *= std::exp(growth);
    return std::abs(growth) > NoGrowth ? (flow - before) / expansion : before * days;
}

/// Mean of what the cells hold, a pore volume.
ComponentFlow meanHeld(const GridModel& grid, const CellState& state, const ComponentStage& stage) {
    ComponentFlow sum;
    double pores = 0.0;
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (grid.Active[c] == 0) continue;
        pores += state.PoreVolume[c];
        for (int i = 0; i < stage.set.count; ++i) sum.moles[at(i)] += stage.amounts.moles(c, i + 1);
        sum.water += stage.amounts.water[c];
    }
    if (!(pores > 0.0)) return {};
    for (double& moles : sum.moles) moles /= pores;
    sum.water /= pores;
    return sum;
}

/// A stream by the volume that it has of its own: what it takes in the cell of its well is the room of its
/// components there.
ComponentFlow asOneVolume(const ComponentSet& set, double volumeFactor, double pressure, double Bw,
                          const ComponentFlow& stream) {
    double volume = Bw * stream.water;
    if (const double moles = sumOf(set.count, stream); moles > 0.0) {
        Composition feed{};
        for (std::size_t i = 0; i < at(set.count); ++i) feed[i] = stream.moles[i] / moles;
        FlashState state;
        FlashPT(set, feed, pressure, state);
        const PhaseVolumes volumes = phaseVolumes(set, pressure, state);
        volume += moles * (volumes.liquid + volumes.vapour) / volumeFactor;
    }
    ComponentFlow one;
    if (volume > 0.0) addFlow(set.count, 1.0 / volume, stream, one);
    return one;
}

bool standsFor(int count, double pressure, const ComponentFlow& stream, double Bw,
               const ComponentFronts& fronts) {
    if (fronts.positions.empty() || !(std::abs(fronts.pressure - pressure) <= StaleFronts * pressure))
        return false;
    double change = 0.0;
    for (std::size_t i = 0; i < at(count); ++i) change += std::abs(stream.moles[i] - fronts.stream.moles[i]);
    return change <= StaleFronts * sumOf(count, stream) &&
           Bw * std::abs(stream.water - fronts.stream.water) <= StaleFronts;
}

}  // namespace

void findFronts(const FluidTables& tables, const ComponentSet& set, double volumeFactor, double cfl,
                const FrontStart& start, ComponentFronts& fronts) {
    FrontRow row;
    fillRow(tables, set, volumeFactor, start, row);
    fronts.pressure = start.node.pressure;
    fronts.stream = start.stream;
    fronts.initial = row.nodes[1].held;
    ExplicitControl control;
    control.cfl = cfl;
    control.upwind = "2PU";
    control.minimumStep = 0.0;
    control.maximumStep = HUGE_VAL;
    const double Bw = start.node.Bw;
    double days = 0.0, dt = 0.0;
    while (days < RowNodes && !hasArrived(set.count, fronts.initial, Bw, row)) {
        const double speed = largestSpeed(set.count, volumeFactor, RowNodes, row.nodes);
        dt = std::min(RowNodes - days, stepOfSpeed(control, speed, days == 0.0));
        limitNodes(control.upwind, set.count, dt, RowNodes, row.nodes);
        findFlow(set, volumeFactor, row);
        moveNodes(tables, set, volumeFactor, dt, RowNodes, row.nodes);
        if (!(dt > 0.0)) break;
        for (std::size_t n = 0; n <= at(RowNodes); ++n) row.through[n] += dt * row.flow[n];
        days += dt;
    }
    takePositions(set.count, days, row, fronts);
}

void prepareFronts(const GridModel& grid, const FluidTables& tables, const CellState& state, double cfl,
                   ComponentField& field) {
    const ComponentStage& stage = *field.stage;
    if (!field.hasInitial) field.initial = meanHeld(grid, state, stage);
    field.hasInitial = true;
    field.fronts.resize(field.inlets.size());
    for (CellId c = 1; c <= grid.NCELLS; ++c) {
        if (field.inlet[c] < 0) continue;
        const std::size_t place = at(field.inlet[c]);
        ComponentFronts& fronts = field.fronts[place];
        FrontStart start;
        start.stream =
            asOneVolume(stage.set, field.volumeFactor, state.Pressure[c], state.Bw[c], field.inlets[place]);
        if (standsFor(stage.set.count, state.Pressure[c], start.stream, state.Bw[c], fronts)) continue;
        placeNode(grid, state, c, start.node);
        start.node.held = field.initial;
        findFronts(tables, stage.set, field.volumeFactor, cfl, start, fronts);
    }
}

bool trackFronts(const GridModel& grid, const CellState& state, const ComponentField& field, double step,
                 SolverLine& line, ComponentLine& components) {
    const std::size_t inlet = at(field.inlet[line.tracedCell[1]]);
    const ComponentFronts& fronts = field.fronts[inlet];
    const double age = field.age[inlet] + step;
    const int count = field.stage->set.count;
    const std::size_t last = at(line.nodeCount);
    std::vector<ComponentNode>& nodes = components.nodes;
    if (nodes.size() < last + 2) nodes.resize(last + 2);
    const double from = std::max(0.0, age - step);
    nodes[0] = {};
    addFlow(count, step, fronts.stream, nodes[0].passed);
    nodes[0].held = fronts.stream;
    double placeBefore = 0.0, flow = field.through[inlet];
    FrontPosition before = goneBy(count, fronts, 0.0, age);
    bool isFiniteLine = true;
    for (std::size_t n = 1; n <= last; ++n) {
        ComponentNode& node = nodes[n];
        const CellId cell = line.tracedCell[at(line.tracedNode[n])];
        placeNode(grid, state, cell, node);
        const double place = placeBefore + poresPassed(line.DeltaTof[n], field.expansion[cell], flow);
        const FrontPosition now = goneBy(count, fronts, place, age), was = goneBy(count, fronts, place, from);
        const double perVolume = step > 0.0 ? step / (now.volume - was.volume) : 0.0;
        node.passed = {};
        addFlow(count, perVolume, now.passed, node.passed);
        addFlow(count, -perVolume, was.passed, node.passed);
        const double perPore = place > placeBefore ? 1.0 / (place - placeBefore) : 0.0;
        node.held = fronts.initial;
        addFlow(count, perPore, before.passed, node.held);
        addFlow(count, -perPore, now.passed, node.held);
        const FrontPosition middle = goneBy(count, fronts, 0.5 * (place + placeBefore), age);
        node.Sw = middle.Sw;
        node.Sg = middle.Sg;
        if (!isFinite(count, node.held) || !isFinite(count, node.passed)) {
            isFiniteLine = false;
            node.held = nodes[n - 1].held;
            node.passed = nodes[n - 1].passed;
        }
        line.nodes[n].Sw = node.Sw;
        line.nodes[n].Sg = node.Sg;
        line.nodes[n].So = std::max(0.0, 1.0 - node.Sw - node.Sg);
        line.nodes[n].bubblePoint = 0.0;
        placeBefore = place;
        before = now;
    }
    line.substeps = 1;
    return isFiniteLine;
}

}  // namespace kvr
