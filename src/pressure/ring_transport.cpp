#include "pressure/ring_transport.hpp"

#include "pressure/acceleration.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/flow_rings.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr std::size_t Components = 3;
constexpr int MostSweeps = 50;       // over the cells of a ring
constexpr double SteadyRing = 1e-9;  // change of what passes back between sweeps, share of the receiver

/// A unit of several cells as one tank: everything weighted by pore volume, the rock of its largest cell.
TankFluid commonFluid(std::span<const CellId> cells, const Walk& walk) {
    TankFluid common = fluidOf(cells.front(), walk);
    double most = 0.0, whole = 0.0;
    TankFluid mean;
    mean.factors = {0.0, 0.0, 0.0, 0.0};
    mean.MuW = mean.MuO = mean.MuG = 0.0;
    for (const CellId cell : cells) {
        const TankFluid fluid = fluidOf(cell, walk);
        if (fluid.poreVolume > most) common = fluid;
        most = std::max(most, fluid.poreVolume);
        whole += fluid.poreVolume;
        const std::pair<double&, double> sums[] = {{mean.factors.pressure, fluid.factors.pressure},
                                                   {mean.factors.Bw, fluid.factors.Bw},
                                                   {mean.factors.Bo, fluid.factors.Bo},
                                                   {mean.factors.Bg, fluid.factors.Bg},
                                                   {mean.MuW, fluid.MuW},
                                                   {mean.MuO, fluid.MuO},
                                                   {mean.MuG, fluid.MuG},
                                                   {mean.saturatedRs, fluid.saturatedRs}};
        for (const auto& [sum, value] : sums) sum += fluid.poreVolume * value;
    }
    if (!(whole > 0.0)) return common;
    const double each = 1.0 / whole;
    common.poreVolume = whole;
    common.factors = {mean.factors.pressure * each, mean.factors.Bw * each, mean.factors.Bo * each,
                      mean.factors.Bg * each};
    common.MuW = mean.MuW * each;
    common.MuO = mean.MuO * each;
    common.MuG = mean.MuG * each;
    common.saturatedRs = mean.saturatedRs * each;
    return common;
}

/// Reservoir volume that a cell holds at the end by the total flows of its faces and connections.
double volumeAtEnd(CellId cell, const Walk& walk) {
    const TankFluid fluid = fluidOf(cell, walk);
    double volume = volumeOf(fluid, amountsOf(walk.amounts, cell));
    for (int face = 1; face <= walk.connections.flowDirections; ++face)
        if (walk.connections.Neighbour(cell, face) > 0)
            volume -= walk.dt * outflowThrough(walk.connections, walk.flux, cell, face);
    for (int k = walk.firstOutlet[cell]; k != NoConnection;
         k = walk.outlets[static_cast<std::size_t>(k)].next) {
        const Outlet& outlet = walk.outlets[static_cast<std::size_t>(k)];
        const WellConnection& connection = connectionOf(walk, outlet);
        volume +=
            walk.dt * (produces(walk, outlet)
                           ? connection.reservoirRate
                           : volumeOf(fluid, {connection.ConnQw, connection.ConnQo, connection.ConnQg}));
    }
    return std::max(0.0, volume);
}

/// Spreads what a unit holds over its cells: one mixture, as much of it as each cell has room for.
void spreadMixture(std::span<const CellId> cells, const ConservedAmounts& whole, const Walk& walk,
                   std::span<ConservedAmounts> held) {
    double sum = 0.0;
    for (std::size_t n = 0; n < cells.size(); ++n) {
        const double volume = volumeOf(fluidOf(cells[n], walk), whole);
        held[n].water = volume > 0.0 ? volumeAtEnd(cells[n], walk) / volume : 0.0;
        sum += held[n].water;
    }
    for (std::size_t n = 0; n < cells.size(); ++n)
        held[n] = (sum > 0.0 ? held[n].water / sum : 1.0 / static_cast<double>(cells.size())) * whole;
}

/// A unit of several cells, which turns fast enough to count as one tank. What lines say of its faces does
/// not hold: they know nothing of rings.
void passMixed(std::span<const CellId> cells, Walk& walk, std::span<ConservedAmounts> held, double& deficit) {
    TankFlows flows;
    ConservedAmounts start;
    walk.buoyant.clear();
    for (const CellId cell : cells) {
        const TankFlows own = flowsOf(cell, walk);
        add(1.0, own.inflow, flows.inflow);
        flows.rest += own.rest + own.asked;
        add(1.0, amountsOf(walk.amounts, cell), start);
    }
    const TankFluid fluid = commonFluid(cells, walk);
    TankOutflow outflow;
    for (BuoyantFlow& face : walk.buoyant) face.followed = 0.0;
    if (fluid.poreVolume > 0.0)
        outflow = emptyTank(walk.tables, fluid, flows, walk.dt, walk.slopes, start, walk.buoyant);
    outflow.apart = outflow.own;
    outflow.followed = 0.0;
    deficit = outflow.deficit;
    ConservedAmounts end = start;
    add(walk.dt, flows.inflow, end);
    std::size_t buoyant = 0;
    for (const CellId cell : cells) add(-walk.dt, share(cell, 1.0, fluid, outflow, buoyant, walk), end);
    spreadMixture(cells, end, walk, held);
}

/// A face through which a ring passes back to a cell that is worked before the one that gives.
struct BackFace {
    FacePlace place;
    std::size_t held = 0;    // place of the receiver among the cells of the plan
    ConservedAmounts scale;  // of a flow of each component: share of the receiver over the step
};

/// One group of a plan while it is worked.
struct Ring {
    const RingPlan& plan;
    std::size_t first, last;  // units
    std::vector<BackFace> back;
    std::vector<ConservedAmounts>& held;  // at the end, by place in the plan
    double deficit = 0.0;
};

std::span<const CellId> cellsOf(const RingPlan& plan, std::size_t unit) {
    return std::span(plan.cells)
        .subspan(plan.unitStart[unit], plan.unitStart[unit + 1] - plan.unitStart[unit]);
}

/// All units of a group once, down the flow.
void sweep(Ring& ring, Walk& walk) {
    ring.deficit = 0.0;
    for (std::size_t u = ring.first; u < ring.last; ++u) {
        const std::span<const CellId> cells = cellsOf(ring.plan, u);
        const std::size_t at = ring.plan.unitStart[u];
        double deficit = 0.0;
        if (cells.size() > 1)
            passMixed(cells, walk, std::span(ring.held).subspan(at, cells.size()), deficit);
        else
            ring.held[at] = passCell(cells.front(), amountsOf(walk.amounts, cells.front()), walk, deficit);
        ring.deficit += deficit;
    }
}

/// Lists the faces that pass back and fills them with what their givers hold.
void openBackFaces(Ring& ring, Walk& walk) {
    const int firstUnit = walk.unit[ring.plan.cells[ring.plan.unitStart[ring.first]]];
    const int lastUnit = firstUnit + static_cast<int>(ring.last - ring.first);
    for (std::size_t n = ring.plan.unitStart[ring.first]; n < ring.plan.unitStart[ring.last]; ++n) {
        const CellId cell = ring.plan.cells[n];
        for (int face = 1; face <= walk.connections.flowDirections; ++face) {
            const CellId giver = walk.connections.Neighbour(cell, face);
            if (giver <= 0 || walk.unit[giver] <= walk.unit[cell] || walk.unit[giver] >= lastUnit) continue;
            const double flow = -outflowThrough(walk.connections, walk.flux, cell, face);
            if (!(flow > 0.0)) continue;
            const FacePlace place = placeOf(walk.connections, cell, face);
            const TankFluid fluid = fluidOf(giver, walk);
            const double share = walk.dt / std::max(walk.state.PoreVolume[cell], walk.dt * flow);
            ring.back.push_back(
                {place, n, {share * fluid.factors.Bw, share * fluid.factors.Bo, share * fluid.factors.Bg}});
            walk.passed(place.cell, place.axis) =
                faceIsKnown(walk.makeUp, place) ? flow * walk.makeUp.face(place.cell, place.axis)
                : fluid.poreVolume > 0.0
                    ? flow * ownMakeUp(walk.tables, fluid, amountsOf(walk.amounts, giver))
                    : ConservedAmounts{};
        }
    }
}

/// Takes amounts that are negative from those of the other cells of a group, so that none is made.
void settle(std::span<ConservedAmounts> held) {
    for (double ConservedAmounts::*amount :
         {&ConservedAmounts::water, &ConservedAmounts::oil, &ConservedAmounts::gas}) {
        double there = 0.0, lacking = 0.0;
        for (const ConservedAmounts& cell : held) (cell.*amount > 0.0 ? there : lacking) += cell.*amount;
        if (!(lacking < 0.0) || !(there > 0.0)) continue;
        const double share = std::max(0.0, 1.0 + lacking / there);
        for (ConservedAmounts& cell : held) cell.*amount = std::max(0.0, cell.*amount) * share;
    }
}

ConservedAmounts& passedBack(const BackFace& face, Walk& walk) {
    return walk.passed(face.place.cell, face.place.axis);
}

/// What a sweep has changed on the faces that pass back, as shares of the receivers; returns the largest.
double changeBack(const Ring& ring, const std::vector<ConservedAmounts>& used, Walk& walk,
                  std::vector<double>& change) {
    double largest = 0.0;
    for (std::size_t k = 0; k < used.size(); ++k) {
        const BackFace& face = ring.back[k];
        const ConservedAmounts& now = passedBack(face, walk);
        double* own = &change[Components * k];
        own[0] = face.scale.water * (now.water - used[k].water);
        own[1] = face.scale.oil * (now.oil - used[k].oil);
        own[2] = face.scale.gas * (now.gas - used[k].gas);
        for (std::size_t c = 0; c < Components; ++c) largest = std::max(largest, std::abs(own[c]));
    }
    return largest;
}

/// What the next sweep passes back: what the last one used and a step from there, not below nothing.
void stepBack(const Ring& ring, const std::vector<ConservedAmounts>& used, std::span<const double> step,
              Walk& walk) {
    const auto moved = [](double from, double by, double scale) {
        return scale > 0.0 ? std::max(0.0, from + by / scale) : from;
    };
    for (std::size_t k = 0; k < used.size(); ++k) {
        const BackFace& face = ring.back[k];
        const double* own = &step[Components * k];
        passedBack(face, walk) = {moved(used[k].water, own[0], face.scale.water),
                                  moved(used[k].oil, own[1], face.scale.oil),
                                  moved(used[k].gas, own[2], face.scale.gas)};
    }
}

/// Sweeps until what passes back is what was passed back, by accelerated steps; what is left of a difference
/// goes to its receiver.
void turnRing(Ring& ring, Walk& walk) {
    openBackFaces(ring, walk);
    std::vector<ConservedAmounts> used(ring.back.size());
    std::vector<double> change(Components * ring.back.size());
    IterationHistory history;
    for (int count = 1; count <= MostSweeps; ++count) {
        for (std::size_t k = 0; k < used.size(); ++k) used[k] = passedBack(ring.back[k], walk);
        sweep(ring, walk);
        if (changeBack(ring, used, walk, change) < SteadyRing || count == MostSweeps) break;
        stepBack(ring, used, acceleratedStep(change, HUGE_VAL, history), walk);
    }
    for (std::size_t k = 0; k < used.size(); ++k) {
        add(walk.dt, passedBack(ring.back[k], walk), ring.held[ring.back[k].held]);
        add(-walk.dt, used[k], ring.held[ring.back[k].held]);
    }
}

/// Flows of wells in the cells of a ring, volume a day.
void addWellFlows(std::span<const CellId> cells, const Walk& walk, RingField& field) {
    field.wellIn.assign(cells.size(), 0.0);
    field.wellOut.assign(cells.size(), 0.0);
    for (std::size_t n = 0; n < cells.size(); ++n)
        for (int k = walk.firstOutlet[cells[n]]; k != NoConnection;
             k = walk.outlets[static_cast<std::size_t>(k)].next) {
            const double rate = connectionOf(walk, walk.outlets[static_cast<std::size_t>(k)]).reservoirRate;
            (rate > 0.0 ? field.wellIn : field.wellOut)[n] += std::abs(rate);
        }
}

}  // namespace

void passRing(std::span<const CellId> cells, Walk& walk) {
    RingField field{walk.connections, walk.flux, walk.state.PoreVolume, {}, {}, walk.dt, true};
    // A tank of several cells would have the matrix of all of them.
    field.mixes =
        std::none_of(cells.begin(), cells.end(), [&](CellId cell) { return hasMatrix(walk, cell); });
    addWellFlows(cells, walk, field);
    RingPlan plan;
    planRing(field, cells, plan);
    if (walk.unit.empty()) walk.unit.assign(walk.grid.NCELLS, 0);
    for (std::size_t u = 0; u + 1 < plan.unitStart.size(); ++u) {
        ++walk.units;
        for (const CellId cell : cellsOf(plan, u)) walk.unit[cell] = walk.units;
    }
    std::vector<ConservedAmounts> held(plan.cells.size());
    for (std::size_t g = 0; g + 1 < plan.groupStart.size(); ++g) {
        Ring ring{plan, plan.groupStart[g], plan.groupStart[g + 1], {}, held, 0.0};
        if (ring.last - ring.first > 1)
            turnRing(ring, walk);
        else
            sweep(ring, walk);
        const std::size_t first = plan.unitStart[ring.first], last = plan.unitStart[ring.last];
        settle(std::span(held).subspan(first, last - first));
        for (std::size_t n = first; n < last; ++n) store(plan.cells[n], held[n], walk.amounts);
        walk.account.deficit += ring.deficit;
    }
}

}  // namespace kvr
