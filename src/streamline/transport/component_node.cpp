#include "streamline/transport/component_node.hpp"

#include "base/index.hpp"
#include "fluid/components/viscosity.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/component_stage.hpp"
#include "streamline/transport/fractional_flow.hpp"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace kvr {

namespace {

constexpr double LeastChange = 1e-6;  // lb-mole/ft3, below which a difference has no wave speed
constexpr double FastestWave = 20.0;  // of the flow
constexpr double StaleChange = 1e-4;  // of what a node holds, behind which its phases are found anew
constexpr double LargestGiven = 0.9;  // of what a node holds of a component, in a substep
constexpr double LeastMoles = 1e-30;

double sumOf(const Composition& z, int count) {
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += z[at(i)];
    return sum;
}

double raised(double speed, double dF, double dC, double least, double rate) {
    const double step = std::abs(dC);
    return step > least ? std::max(speed, std::min(FastestWave, std::abs(dF) / step) * rate) : speed;
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

}  // namespace

void addFlow(int count, double factor, const ComponentFlow& flow, ComponentFlow& sum) {
    for (int i = 0; i < count; ++i) sum.moles[at(i)] += factor * flow.moles[at(i)];
    sum.water += factor * flow.water;
}

bool isFinite(int count, const ComponentFlow& flow) {
    return std::isfinite(sumOf(flow.moles, count) + flow.water);
}

void placeNode(const GridModel& grid, const CellState& state, CellId cell, ComponentNode& node) {
    node.cell = cell;
    node.region = grid.SATNUM[cell];
    node.pressure = state.Pressure[cell];
    node.Bw = state.Bw[cell];
    node.MuW = state.MuW[cell];
}

void findPhases(const FluidTables& tables, const ComponentSet& set, double volumeFactor, bool isFlashed,
                ComponentNode& node) {
    const double moles = sumOf(node.held.moles, set.count);
    double oil = 0.0, gas = 0.0;
    if (moles > LeastMoles) {
        Composition z{};
        for (int i = 0; i < set.count; ++i) z[at(i)] = node.held.moles[at(i)] / moles;
        if (!isFlashed) FlashPT(set, z, node.pressure, node.flash);
        const PhaseVolumes volumes = phaseVolumes(set, node.pressure, node.flash);
        oil = moles * volumes.liquid / volumeFactor;
        gas = moles * volumes.vapour / volumeFactor;
    }
    const double water = node.Bw * node.held.water;
    const double total = oil + gas + water;
    node.volume = total;
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
    const double liquid = lo * share * phaseMoles(set, volumeFactor, node.pressure, flash.zLiquid);
    const double vapour = lg * share * phaseMoles(set, volumeFactor, node.pressure, flash.zVapour);
    for (int i = 0; i < set.count; ++i)
        node.flux.moles[at(i)] = liquid * flash.liquid[at(i)] + vapour * flash.vapour[at(i)];
    node.flux.water = lw * share / node.Bw;
}

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

void limitNodes(std::string_view upwind, int count, double dt, int last, std::vector<ComponentNode>& nodes) {
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

void moveNodes(const FluidTables& tables, const ComponentSet& set, double volumeFactor, double dt, int last,
               std::vector<ComponentNode>& nodes) {
    const int count = set.count;
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
        findPhases(tables, set, volumeFactor, false, node);
    }
}

double marchNodes(const FluidTables& tables, const ComponentSet& set, double volumeFactor,
                  const ExplicitControl& control, bool first, double left, int last,
                  std::vector<ComponentNode>& nodes) {
    const double speed = largestSpeed(set.count, volumeFactor, last, nodes);
    const double dt = std::min(left, stepOfSpeed(control, speed, first));
    limitNodes(control.upwind, set.count, dt, last, nodes);
    moveNodes(tables, set, volumeFactor, dt, last, nodes);
    return dt;
}

}  // namespace kvr
