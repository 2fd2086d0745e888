#include "pressure/ordered_transport.hpp"

#include "fluid/black_oil.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/stirred_tank.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr int Faces = 6;
constexpr int Axes = 3;
constexpr int NoConnection = -1;
constexpr int MostSweeps = 50;       // over the cells of a ring
constexpr double SteadyRing = 1e-9;  // change of what passes between sweeps, per pore volume of the step

ConservedAmounts operator*(double factor, const ConservedAmounts& a) {
    return {factor * a.water, factor * a.oil, factor * a.gas};
}

void add(double factor, const ConservedAmounts& a, ConservedAmounts& sum) {
    sum.water += factor * a.water;
    sum.oil += factor * a.oil;
    sum.gas += factor * a.gas;
}

/// One connection, found from its cell.
struct Outlet {
    std::size_t well = 0, connection = 0;
    int next = NoConnection;
};

/// Everything that the walk reads and writes.
struct Walk {
    double dt = 0.0, slope = 1.0;
    const GridModel& grid;
    const ConnectionTable& connections;
    const FluidTables& tables;
    const DirectionArray<double>& flux;
    const WellRecord& wells;
    const MakeUp& makeUp;
    const CellState& state;
    CellArray<int> firstOutlet;
    std::vector<Outlet> outlets;
    DirectionArray<ConservedAmounts> passed;  // a day, by low cell and axis, along the flow
    CellAmounts& amounts;
    TransportAccount& account;
};

struct FacePlace {
    CellId cell = 0;
    int axis = 1;
};

FacePlace placeOf(const ConnectionTable& connections, CellId cell, int face) {
    return {face % 2 == 0 ? cell : connections.Neighbour(cell, face), (face + 1) / 2};
}

void listOutlets(Walk& walk) {
    walk.firstOutlet.assign(walk.grid.NCELLS, NoConnection);
    const std::vector<Well>& wells = walk.wells.wells;
    walk.account.wellRates.resize(wells.size());
    for (std::size_t w = 0; w < wells.size(); ++w) {
        walk.account.wellRates[w].assign(wells[w].connections.size(), {});
        for (std::size_t n = 0; n < wells[w].connections.size(); ++n) {
            const CellId cell = wells[w].connections[n].ConnCell;
            walk.outlets.push_back({w, n, walk.firstOutlet[cell]});
            walk.firstOutlet[cell] = static_cast<int>(walk.outlets.size()) - 1;
        }
    }
}

bool faceIsKnown(const MakeUp& makeUp, FacePlace place) {
    return makeUp.faceKnown.width > 0 && makeUp.faceKnown(place.cell, place.axis) != 0;
}

bool connectionIsKnown(const MakeUp& makeUp, const Outlet& outlet) {
    return outlet.well < makeUp.connectionKnown.size() &&
           outlet.connection < makeUp.connectionKnown[outlet.well].size() &&
           makeUp.connectionKnown[outlet.well][outlet.connection] != 0;
}

const WellConnection& connectionOf(const Walk& walk, const Outlet& outlet) {
    return walk.wells.wells[outlet.well].connections[outlet.connection];
}

bool produces(const Walk& walk, const Outlet& outlet) {
    return !isInjector(walk.wells.wells[outlet.well]);
}

/// What flows in and what is asked for, from the faces and connections of a cell.
TankFlows flowsOf(CellId cell, const Walk& walk) {
    TankFlows flows;
    for (int face = 1; face <= Faces; ++face) {
        if (walk.connections.Neighbour(cell, face) <= 0) continue;
        const double out = outflowThrough(walk.connections, walk.flux, cell, face);
        if (out == 0.0) continue;
        const FacePlace place = placeOf(walk.connections, cell, face);
        if (out < 0.0)
            add(1.0, walk.passed(place.cell, place.axis), flows.inflow);
        else if (faceIsKnown(walk.makeUp, place))
            flows.ask(out, walk.makeUp.face(place.cell, place.axis));
        else
            flows.rest += out;
    }
    for (int k = walk.firstOutlet[cell]; k != NoConnection;
         k = walk.outlets[static_cast<std::size_t>(k)].next) {
        const Outlet& outlet = walk.outlets[static_cast<std::size_t>(k)];
        const WellConnection& connection = connectionOf(walk, outlet);
        if (!produces(walk, outlet))
            add(1.0, {connection.ConnQw, connection.ConnQo, connection.ConnQg}, flows.inflow);
        else if (connectionIsKnown(walk.makeUp, outlet))
            flows.ask(-connection.reservoirRate, walk.makeUp.connection[outlet.well][outlet.connection]);
        else
            flows.rest += -connection.reservoirRate;
    }
    return flows;
}

/// Hands what the tank has let out to its faces and connections; returns the sum, a day.
ConservedAmounts share(CellId cell, const TankOutflow& outflow, Walk& walk) {
    ConservedAmounts sum;
    const auto passedBy = [&](double flow, bool known, const ConservedAmounts& asked) {
        ConservedAmounts passed = flow * (known ? outflow.apart : outflow.own);
        if (known) add(flow * outflow.followed, asked, passed);
        passed = {passed.water * outflow.given.water, passed.oil * outflow.given.oil,
                  passed.gas * outflow.given.gas};
        add(1.0, passed, sum);
        return passed;
    };
    for (int face = 1; face <= Faces; ++face) {
        if (walk.connections.Neighbour(cell, face) <= 0) continue;
        const double out = outflowThrough(walk.connections, walk.flux, cell, face);
        if (!(out > 0.0)) continue;
        const FacePlace place = placeOf(walk.connections, cell, face);
        const bool known = faceIsKnown(walk.makeUp, place);
        walk.passed(place.cell, place.axis) =
            passedBy(out, known, known ? walk.makeUp.face(place.cell, place.axis) : ConservedAmounts{});
    }
    for (int k = walk.firstOutlet[cell]; k != NoConnection;
         k = walk.outlets[static_cast<std::size_t>(k)].next) {
        const Outlet& outlet = walk.outlets[static_cast<std::size_t>(k)];
        const WellConnection& connection = connectionOf(walk, outlet);
        ConservedAmounts& rate = walk.account.wellRates[outlet.well][outlet.connection];
        if (!produces(walk, outlet)) {
            rate = {connection.ConnQw, connection.ConnQo, connection.ConnQg};
            continue;
        }
        const bool known = connectionIsKnown(walk.makeUp, outlet);
        const ConservedAmounts& asked =
            known ? walk.makeUp.connection[outlet.well][outlet.connection] : ConservedAmounts{};
        rate = -1.0 * passedBy(-connection.reservoirRate, known, asked);
    }
    return sum;
}

TankFluid fluidOf(CellId cell, const Walk& walk) {
    TankFluid fluid;
    fluid.cell = cell;
    fluid.region = walk.grid.SATNUM[cell];
    fluid.poreVolume = walk.state.PoreVolume[cell];
    fluid.factors = {walk.state.Pressure[cell], walk.state.Bw[cell], walk.state.Bo[cell],
                     walk.state.Bg[cell]};
    fluid.MuW = walk.state.MuW[cell];
    fluid.MuO = walk.state.MuO[cell];
    fluid.MuG = walk.state.MuG[cell];
    if (walk.tables.hasGas) fluid.saturatedRs = SolutionRs(walk.tables, walk.state.Pressure[cell]);
    return fluid;
}

ConservedAmounts amountsOf(const CellAmounts& amounts, CellId cell) {
    return {amounts.water[cell], amounts.oil[cell], amounts.gas[cell]};
}

/// One cell: its flows in, its tank, its flows out. Returns what it holds at the end.
ConservedAmounts passCell(CellId cell, const ConservedAmounts& start, Walk& walk, double& deficit) {
    const TankFlows flows = flowsOf(cell, walk);
    ConservedAmounts end = start;
    TankOutflow outflow;
    if (walk.state.PoreVolume[cell] > 0.0)
        outflow = emptyTank(walk.tables, fluidOf(cell, walk), flows, walk.dt, walk.slope, start);
    deficit = outflow.deficit;
    const ConservedAmounts out = share(cell, outflow, walk);
    add(walk.dt, flows.inflow, end);
    add(-walk.dt, out, end);
    return end;
}

void store(CellId cell, const ConservedAmounts& held, CellAmounts& amounts) {
    amounts.water[cell] = std::max(0.0, held.water);
    amounts.oil[cell] = std::max(0.0, held.oil);
    amounts.gas[cell] = std::max(0.0, held.gas);
}

/// Reservoir volume by which what leaves a cell has changed since the sweep before.
double changeOf(CellId cell, const ConservedAmounts& before, const ConservedAmounts& now,
                const CellState& state) {
    return state.Bw[cell] * std::abs(now.water - before.water) +
           state.Bo[cell] * std::abs(now.oil - before.oil) + state.Bg[cell] * std::abs(now.gas - before.gas);
}

/// A ring: its cells in turn until what they hold at the end stands still, then once more all by the same
/// flows.
void passRing(const FlowOrder& order, std::size_t first, std::size_t last, Walk& walk) {
    std::vector<ConservedAmounts> held(last - first);
    std::vector<double> deficit(last - first, 0.0);
    for (int sweep = 1; sweep <= MostSweeps; ++sweep) {
        double largest = 0.0;
        for (std::size_t n = first; n < last; ++n) {
            const CellId cell = order.cells[n];
            const ConservedAmounts before = held[n - first];
            held[n - first] = passCell(cell, amountsOf(walk.amounts, cell), walk, deficit[n - first]);
            const double pores = walk.state.PoreVolume[cell];
            if (pores > 0.0)
                largest = std::max(largest, changeOf(cell, before, held[n - first], walk.state) / pores);
        }
        if (sweep > 1 && largest < SteadyRing) break;
    }
    for (std::size_t n = first; n < last; ++n) {
        const CellId cell = order.cells[n];
        ConservedAmounts end = amountsOf(walk.amounts, cell);
        for (int face = 1; face <= Faces; ++face) {
            if (walk.connections.Neighbour(cell, face) <= 0) continue;
            const double out = outflowThrough(walk.connections, walk.flux, cell, face);
            if (out == 0.0) continue;
            const FacePlace place = placeOf(walk.connections, cell, face);
            add(out > 0.0 ? -walk.dt : walk.dt, walk.passed(place.cell, place.axis), end);
        }
        for (int k = walk.firstOutlet[cell]; k != NoConnection;
             k = walk.outlets[static_cast<std::size_t>(k)].next) {
            const Outlet& outlet = walk.outlets[static_cast<std::size_t>(k)];
            add(walk.dt, walk.account.wellRates[outlet.well][outlet.connection], end);
        }
        walk.account.deficit += deficit[n - first];
        held[n - first] = end;
    }
    for (std::size_t n = first; n < last; ++n) store(order.cells[n], held[n - first], walk.amounts);
}

}  // namespace

void advanceInOrder(double dt, double slope, const GridModel& grid, const ConnectionTable& connections,
                    const FluidTables& tables, const DirectionArray<double>& flux, const WellRecord& wells,
                    const MakeUp& makeUp, const CellState& state, CellAmounts& amounts,
                    TransportAccount& account) {
    FlowOrder order;
    orderByFlow(grid, connections, flux, order);
    Walk walk{dt, slope, grid, connections, tables, flux, wells, makeUp, state, {}, {}, {}, amounts, account};
    walk.passed.assign(grid.NCELLS, Axes, {});
    account.deficit = 0.0;
    listOutlets(walk);
    for (std::size_t g = 0; g + 1 < order.groupStart.size(); ++g) {
        const std::size_t first = order.groupStart[g];
        if (order.groupStart[g + 1] - first > 1) {
            passRing(order, first, order.groupStart[g + 1], walk);
            continue;
        }
        const CellId cell = order.cells[first];
        double deficit = 0.0;
        store(cell, passCell(cell, amountsOf(amounts, cell), walk, deficit), amounts);
        account.deficit += deficit;
    }
    account.passed = std::move(walk.passed);
}

}  // namespace kvr
