#include "streamline/transport/line_gravity.hpp"

#include "base/constants.hpp"
#include "base/index.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastLength = 1e-10;    // ft; a shorter node exchanges nothing
constexpr double LeastMobility = 1e-10;  // 1/cp, of a pair that can pass each other
constexpr double FeetPerDay =
    DarcyConstant * CubicFeetPerBarrel / SquareInchesPerSquareFoot;  // of md lb/ft3 / cp

/// Length along the line and depth at the end of a solver node.
struct Place {
    double s = 0.0;
    double z = 0.0;
};

/// Walks the traced nodes while times rise.
struct TracedWalk {
    const SolverLine& line;
    int node = 1;
    double lengthBefore = 0.0;  // ft, up to the start of `node`
};

Place placeAt(TracedWalk& walk, double time) {
    const SolverLine& line = walk.line;
    while (walk.node < line.tracedNodeCount && line.tracedTof[at(walk.node)] < time) {
        walk.lengthBefore += line.tracedStepLength[at(walk.node)];
        ++walk.node;
    }
    const std::size_t n = at(walk.node);
    const double width = line.tracedTof[n] - line.tracedTof[n - 1];
    const double share = width > 0.0 ? std::clamp((time - line.tracedTof[n - 1]) / width, 0.0, 1.0) : 1.0;
    return {walk.lengthBefore + share * line.tracedStepLength[n],
            line.tracedDepth[n - 1] + share * (line.tracedDepth[n] - line.tracedDepth[n - 1])};
}

/// Permeability in a direction that descends by `slope` = dz/ds, md.
double permeabilityAlong(const GridModel& grid, CellId cell, double slope) {
    const double down = std::min(1.0, slope * slope);
    const double lateral = grid.PERMX[cell];
    const double vertical = grid.PERMZ[cell];
    if (lateral <= 0.0 || vertical <= 0.0) return 0.0;
    return 1.0 / ((1.0 - down) / lateral + down / vertical);
}

/// A solver node on its way along the line.
struct NodePlace {
    Place middle;
    double permeability = 0.0;  // md, along the line
    double storage = 0.0;       // ft, porosity times length; 0: exchanges nothing
};

double harmonicMean(double a, double b) {
    return a + b > 0.0 ? 2.0 * a * b / (a + b) : 0.0;
}

/// Exchange of one pair over a face, out of the upper-index side where positive: `drive` is the face term
/// times the density difference.
double pairFlux(double drive, double aHere, double aNext, double bHere, double bNext) {
    const double a = drive > 0.0 ? aHere : aNext;
    const double b = drive > 0.0 ? bNext : bHere;
    return a < LeastMobility || b < LeastMobility ? 0.0 : drive * a * b / (a + b);
}

}  // namespace

void loadLineGravity(const GridModel& grid, const CellState& state, SolverLine& line) {
    const int count = line.nodeCount;
    TracedWalk walk{line};
    Place before = placeAt(walk, 0.0);
    NodePlace last{before, 0.0, 0.0};
    line.gravityFace[0] = 0.0;
    for (std::size_t i = 1; i <= at(count); ++i) {
        const CellId cell = line.tracedCell[at(line.tracedNode[i])];
        const Place end = placeAt(walk, line.Tof[i]);
        const Place middle{0.5 * (before.s + end.s), 0.5 * (before.z + end.z)};
        const double length = end.s - before.s;
        line.RhoW[i] = state.RhoW[cell];
        line.RhoO[i] = state.RhoO[cell];
        line.RhoG[i] = state.RhoG[cell];
        const double apart = middle.s - last.middle.s;
        const double slope = apart > LeastLength ? (middle.z - last.middle.z) / apart : 0.0;
        const NodePlace node{middle, permeabilityAlong(grid, cell, slope),
                             length > LeastLength ? state.PoreFraction[cell] * grid.NTG[cell] * length : 0.0};
        const double times = line.DeltaTof[i] + (i > 1 ? line.DeltaTof[i - 1] : 0.0);
        const bool both = i > 1 && node.storage > 0.0 && last.storage > 0.0;
        line.gravityFace[i - 1] = both ? FeetPerDay * harmonicMean(last.permeability, node.permeability) *
                                             slope * times / (last.storage + node.storage)
                                       : 0.0;
        line.gravityFace[i] = 0.0;
        before = end;
        last = node;
    }
}

GravityNode gravityNode(bool hasGas, const FlowNode& node, const RelPerms& kr, double rs) {
    return {kr.w * node.inverseMuW, kr.o * node.inverseMuO, hasGas ? kr.g * node.inverseMuG : 0.0, rs};
}

GravityExchange exchangeAt(bool hasGas, const SolverLine& line, std::size_t i, const GravityNode& here,
                           const GravityNode& next) {
    GravityExchange exchange;
    const double face = line.gravityFace[i];
    if (face == 0.0) return exchange;
    const double rhoO = 0.5 * (line.RhoO[i] + line.RhoO[i + 1]);
    const double driveW = face * (0.5 * (line.RhoW[i] + line.RhoW[i + 1]) - rhoO);
    const double water = pairFlux(driveW, here.w, next.w, here.o, next.o);
    double gas = 0.0;
    if (hasGas) {
        const double driveG = face * (0.5 * (line.RhoG[i] + line.RhoG[i + 1]) - rhoO);
        gas = pairFlux(driveG, here.g, next.g, here.o, next.o);
    }
    const double oil = -(water + gas);
    const FlowNode* nodes = &line.nodes[i];
    exchange.water = water * nodes[water > 0.0 ? 0 : 1].inverseBw;
    exchange.oil = oil * nodes[oil > 0.0 ? 0 : 1].inverseBo;
    if (hasGas)
        exchange.gas = gas * nodes[gas > 0.0 ? 0 : 1].inverseBg + (oil > 0.0 ? here : next).Rs * exchange.oil;
    return exchange;
}

void setGravitySources(bool hasGas, SolverLine& line) {
    const std::size_t count = at(line.nodeCount);
    line.exchange[0] = line.exchange[count] = {};
    for (std::size_t i = 1; i <= count; ++i) line.gravityW[i] = line.gravityO[i] = line.gravityG[i] = 0.0;
    const auto bring = [&](const FlowNode& node) {
        return gravityNode(hasGas, node, relPerms(*node.table, hasGas, node.Sw, hasGas ? node.Sg : 0.0),
                           node.Rs);
    };
    GravityNode here = bring(line.nodes[1]);
    for (std::size_t i = 1; i < count; ++i) {
        const GravityNode next = bring(line.nodes[i + 1]);
        const GravityExchange exchange = exchangeAt(hasGas, line, i, here, next);
        line.exchange[i] = exchange;
        const double from = line.nodes[i].inverseDeltaTof;
        const double to = line.nodes[i + 1].inverseDeltaTof;
        line.gravityW[i] += exchange.water * from;
        line.gravityO[i] += exchange.oil * from;
        line.gravityG[i] += exchange.gas * from;
        line.gravityW[i + 1] -= exchange.water * to;
        line.gravityO[i + 1] -= exchange.oil * to;
        line.gravityG[i + 1] -= exchange.gas * to;
        here = next;
    }
}

}  // namespace kvr
