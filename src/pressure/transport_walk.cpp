#include "pressure/transport_walk.hpp"

#include "base/constants.hpp"
#include "fluid/black_oil.hpp"
#include "pressure/flow_order.hpp"
#include "pressure/pair_tank.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double TrustedError =
    0.01;                             // saturation that a known make-up may be wrong by and still be followed
constexpr double TrustedTurns = 1.0;  // of a cell's content, within which it always is
constexpr double LeastJump = 0.1, FullJump = 0.3;  // relative, of water and gas: a front

bool connectionIsKnown(const MakeUp& makeUp, const Outlet& outlet) {
    return outlet.well < makeUp.connectionKnown.size() &&
           outlet.connection < makeUp.connectionKnown[outlet.well].size() &&
           makeUp.connectionKnown[outlet.well][outlet.connection] != 0;
}

/// Whether a face stands between two cells of one unit of a ring: nothing is told of what passes there.
bool withinUnit(const Walk& walk, CellId cell, int face) {
    if (walk.unit.empty() || walk.unit[cell] == 0) return false;
    return walk.unit[walk.connections.Neighbour(cell, face)] == walk.unit[cell];
}

/// By how much the water saturation of the step's end would differ from the one that the source of the known
/// make-up tells, were it followed in full. Without bound where it tells nothing of this cell.
double errorOfMakeUp(CellId cell, const TankFlows& flows, const Walk& walk) {
    if (walk.makeUp.Sw[cell] < 0.0) return HUGE_VAL;
    const double gain = walk.dt * (flows.inflow.water - flows.request.water);
    return std::abs(walk.state.Bw[cell] * (walk.amounts.water[cell] + gain) / walk.state.PoreVolume[cell] -
                    walk.makeUp.Sw[cell]);
}

/// Whether the flow of a cell comes in one way and leaves another one: then all lines take as long.
bool flowsStraight(CellId cell, const Walk& walk) {
    int in = 0, out = 0;
    const auto count = [&](double outflow) {
        in += outflow < 0.0 ? 1 : 0;
        out += outflow > 0.0 ? 1 : 0;
    };
    for (int face = 1; face <= walk.connections.flowDirections; ++face)
        if (walk.connections.Neighbour(cell, face) > 0)
            count(outflowThrough(walk.connections, walk.flux, cell, face));
    for (int k = walk.firstOutlet[cell]; k != NoConnection;
         k = walk.outlets[static_cast<std::size_t>(k)].next)
        count(-connectionOf(walk, walk.outlets[static_cast<std::size_t>(k)]).reservoirRate);
    return in <= 1 && out <= 1;
}

double relativeJump(double a, double b) {
    const double larger = std::max(a, b);
    return larger > 0.0 ? std::abs(a - b) / larger : 0.0;
}

/// How far a front stands in a cell, from 0 to 1: by how far the water and the gas that run in are from those
/// that would leave at the step's start. What lines tell is sharper than a stirred tank at a front alone.
/// Where all changes little from cell to cell they tell too much water: fast and slow lines of a cell start
/// alike in each step, and the fast ones come to what runs in before the slow ones do.
double frontIn(const TankFluid& fluid, const TankFlows& flows, const ConservedAmounts& start,
               const Walk& walk) {
    const double inVolume = volumeOf(fluid, flows.inflow);
    if (!(inVolume > 0.0)) return 0.0;
    const ConservedAmounts own = ownMakeUp(walk.tables, fluid, start);
    const double jump = std::max({relativeJump(flows.inflow.water, inVolume * own.water),
                                  relativeJump(flows.inflow.gas, inVolume * own.gas),
                                  relativeJump(flows.request.water, flows.asked * own.water),
                                  relativeJump(flows.request.gas, flows.asked * own.gas)});
    return std::clamp((jump - LeastJump) / (FullJump - LeastJump), 0.0, 1.0);
}

/// Share of the flow with a known make-up that follows it. Beside free gas none does: gas that comes out of
/// solution within the step is on no line, and a small error of its share moves the mobility of the cell far.
double trustOf(CellId cell, const TankFlows& flows, const Walk& walk) {
    if (walk.tables.hasGas && walk.state.Sg[cell] > SmallestFreeGas) return 0.0;
    if (walk.makeUp.Sw.empty() || !(walk.state.PoreVolume[cell] > 0.0)) return 1.0;
    const double turns = walk.dt * (flows.asked + flows.rest) / walk.state.PoreVolume[cell];
    if (turns <= TrustedTurns) return 1.0;
    const double error = flows.rest > 0.0 ? HUGE_VAL : errorOfMakeUp(cell, flows, walk);
    return error > TrustedError ? std::max(TrustedError / error, TrustedTurns / turns) : 1.0;
}

}  // namespace

ConservedAmounts operator*(double factor, const ConservedAmounts& a) {
    return {factor * a.water, factor * a.oil, factor * a.gas};
}

FacePlace placeOf(const ConnectionTable& connections, CellId cell, int face) {
    if (isLowSide(connections, cell, face)) return {cell, axisOf(face)};
    const CellId low = connections.Neighbour(cell, face);
    return {low, axisOf(directionBack(connections, cell, low, face))};
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
    return place.axis <= makeUp.faceKnown.width && makeUp.faceKnown(place.cell, place.axis) != 0;
}

const WellConnection& connectionOf(const Walk& walk, const Outlet& outlet) {
    return walk.wells.wells[outlet.well].connections[outlet.connection];
}

bool produces(const Walk& walk, const Outlet& outlet) {
    return !isInjector(walk.wells.wells[outlet.well]);
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
    if (walk.tables.hasGas)
        fluid.saturatedRs =
            allowedRs(walk.state, cell, SolutionRs(pvtAt(walk.tables, cell), walk.state.Pressure[cell]));
    return fluid;
}

ConservedAmounts amountsOf(const CellAmounts& amounts, CellId cell) {
    return {amounts.water[cell], amounts.oil[cell], amounts.gas[cell]};
}

/// What drives water against oil out of a cell through a face by gravity, times the transmissibility,
/// reservoir volume a day per mobility.
double buoyantPull(CellId cell, int face, const Walk& walk) {
    if (!walk.buoyancy.acts) return 0.0;
    const CellId other = walk.connections.Neighbour(cell, face);
    const double head = walk.connections.DepthDiff(cell, face) / SquareInchesPerSquareFoot;
    if (head == 0.0 || meetsFreeGas(walk.buoyancy.gasCells, cell, other)) return 0.0;
    const CellState& state = walk.state;
    const double heavier =
        0.5 * ((state.RhoW[cell] + state.RhoW[other]) - (state.RhoO[cell] + state.RhoO[other]));
    const CellArray<double>& pcow = walk.buoyancy.pcow;
    const double capillary = pcow.empty() ? 0.0 : pcow[other] - pcow[cell];
    return walk.connections.Trans(cell, face) * walk.buoyancy.flowUnit *
           lastingDrive(heavier * head, capillary);
}

void listBuoyant(CellId cell, int face, double out, Walk& walk) {
    const double pull = buoyantPull(cell, face, walk);
    if (pull == 0.0) return;
    BuoyantFlow flow;
    flow.cell = cell;
    flow.face = face;
    flow.flow = out;
    flow.pull = pull / out;
    const FacePlace place = placeOf(walk.connections, cell, face);
    if (faceIsKnown(walk.makeUp, place)) {
        const ConservedAmounts& known = walk.makeUp.face(place.cell, place.axis);
        flow.followed = 1.0;
        flow.knownWater = walk.state.Bw[cell] * known.water;
        flow.knownOil = walk.state.Bo[cell] * known.oil;
    }
    walk.buoyant.push_back(flow);
}

TankFlows flowsOf(CellId cell, Walk& walk) {
    TankFlows flows;
    for (int face = 1; face <= walk.connections.flowDirections; ++face) {
        if (walk.connections.Neighbour(cell, face) <= 0 || withinUnit(walk, cell, face)) continue;
        const double out = outflowThrough(walk.connections, walk.flux, cell, face);
        if (out == 0.0) continue;
        const FacePlace place = placeOf(walk.connections, cell, face);
        if (out < 0.0) {
            add(1.0, walk.passed(place.cell, place.axis), flows.inflow);
            flows.tilt -= out * walk.tilt(place.cell, place.axis);
        } else if (faceIsKnown(walk.makeUp, place))
            flows.ask(out, walk.makeUp.face(place.cell, place.axis));
        else
            flows.rest += out;
        if (out > 0.0) listBuoyant(cell, face, out, walk);
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

/// Water that gravity has put in the place of oil in a flow, and Rs times it, volumes a day.
struct Turned {
    double water = 0.0, gas = 0.0;
};
Turned turnedByGravity(const BuoyantFlow& face, double timesFollowed) {
    const double own = face.flow * (1.0 - face.followed), apart = face.flow * face.followed;
    return {own * face.own + apart * (face.apart + timesFollowed * face.known),
            own * face.ownGas + apart * (face.apartGas + timesFollowed * face.knownGas)};
}

/// Largest change of a make-up over the step that leaves none of it negative at either end.
double mostTilt(double water, double oil) {
    return 2.0 * std::max(0.0, std::min(water, oil));
}

ConservedAmounts share(CellId cell, double trust, const TankFluid& fluid, const TankOutflow& outflow,
                       std::size_t& buoyant, Walk& walk) {
    ConservedAmounts sum;
    const auto passedBy = [&](double flow, bool known, const ConservedAmounts& asked, const Turned& turned) {
        const double followed = known ? trust * flow : 0.0;
        ConservedAmounts passed = (flow - followed) * outflow.own;
        add(followed, outflow.apart, passed);
        add(followed * outflow.followed, asked, passed);
        passed.water += turned.water / fluid.factors.Bw;
        passed.oil -= turned.water / fluid.factors.Bo;
        passed.gas -= turned.gas / fluid.factors.Bo;
        passed = {passed.water * outflow.given.water, passed.oil * outflow.given.oil,
                  passed.gas * outflow.given.gas};
        add(1.0, passed, sum);
        return passed;
    };
    // What passes back in a ring is repeated until it stands, in the mean of the step.
    const bool inRing = !walk.unit.empty() && walk.unit[cell] != 0;
    for (int face = 1; face <= walk.connections.flowDirections; ++face) {
        if (walk.connections.Neighbour(cell, face) <= 0 || withinUnit(walk, cell, face)) continue;
        const double out = outflowThrough(walk.connections, walk.flux, cell, face);
        if (!(out > 0.0)) continue;
        const FacePlace place = placeOf(walk.connections, cell, face);
        const bool known = faceIsKnown(walk.makeUp, place);
        const bool pulled = buoyant < walk.buoyant.size() && walk.buoyant[buoyant].cell == cell &&
                            walk.buoyant[buoyant].face == face;
        const double tilt = outflow.tilt + (pulled ? walk.buoyant[buoyant].tilt : 0.0);
        const Turned turned = pulled ? turnedByGravity(walk.buoyant[buoyant++], outflow.followed) : Turned{};
        const ConservedAmounts& passed = walk.passed(place.cell, place.axis) = passedBy(
            out, known, known ? walk.makeUp.face(place.cell, place.axis) : ConservedAmounts{}, turned);
        const double most =
            mostTilt(fluid.factors.Bw * passed.water / out, fluid.factors.Bo * passed.oil / out);
        const double ownShare = inRing ? 0.0 : (known ? 1.0 - trust : 1.0);
        walk.tilt(place.cell, place.axis) = std::clamp(ownShare * tilt, -most, most);
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
        rate = -1.0 * passedBy(-connection.reservoirRate, known, asked, {});
    }
    return sum;
}

bool hasMatrix(const Walk& walk, CellId cell) {
    return !walk.transfer.flux.empty() && !isMatrixCell(walk.grid, cell) &&
           walk.connections.Trans(cell, TransferDirection) > 0.0 && walk.state.PoreVolume[cell] > 0.0 &&
           walk.state.PoreVolume[partnerOf(walk.grid, cell)] > 0.0;
}

/// A cell as one side of a pair.
PairSide sideOf(CellId cell, const Walk& walk) {
    PairSide side;
    side.fluid = fluidOf(cell, walk);
    side.JFactor = walk.grid.JFactor[cell];
    if (!walk.grid.dual.gravityDrainage) return side;
    const SaturationTable& table = regionTable(walk.tables, side.fluid.region);
    const double height = blockHeight(walk.grid, cell);
    side.fullWater = headOf(height, walk.state.RhoW[cell], walk.state.RhoO[cell], 1.0);
    side.fullGas = headOf(height, walk.state.RhoO[cell], walk.state.RhoG[cell], 1.0);
    side.waterShare = waterHeight(table);
    side.gasShare = gasHeight(table);
    return side;
}

/// Fractures and matrix of a cell by the flows of the fractures.
TankOutflow emptyWithMatrix(CellId cell, const TankFlows& flows, const ConservedAmounts& start, Walk& walk) {
    const CellId matrix = partnerOf(walk.grid, cell);
    TransferPair pair{sideOf(cell, walk), sideOf(matrix, walk)};
    pair.conductance = walk.connections.Trans(cell, TransferDirection) * walk.transfer.flowUnit;
    pair.total = walk.transfer.flux[cell];
    const ConservedAmounts before = amountsOf(walk.amounts, matrix);
    const PairOutflow out = emptyPair(walk.tables, pair, flows, walk.dt, start, before, walk.buoyant);
    walk.account.transferred[cell] = out.transferred;
    walk.matrixEnd[cell] = before;
    add(-walk.dt, out.transferred, walk.matrixEnd[cell]);
    return out.outflow;
}

ConservedAmounts passCell(CellId cell, const ConservedAmounts& start, Walk& walk, double& deficit) {
    walk.buoyant.clear();
    TankFlows flows = flowsOf(cell, walk);
    const bool paired = hasMatrix(walk, cell);
    const TankFluid fluid = fluidOf(cell, walk);
    double trust = 0.0;
    if (!paired && flows.asked > 0.0) {
        trust = trustOf(cell, flows, walk);
        const bool byFront = trust > 0.0 && !walk.makeUp.Sw.empty() && !walk.makeUp.holdsGravity;
        if (byFront && !flowsStraight(cell, walk)) trust *= frontIn(fluid, flows, start, walk);
    }
    flows.follow(trust);
    for (BuoyantFlow& face : walk.buoyant) face.followed *= trust;
    ConservedAmounts end = start;
    TankOutflow outflow;
    if (paired)
        outflow = emptyWithMatrix(cell, flows, start, walk);
    else if (walk.state.PoreVolume[cell] > 0.0)
        outflow = emptyTank(walk.tables, fluid, flows, walk.dt, walk.slopes, start, walk.buoyant);
    deficit = outflow.deficit;
    std::size_t buoyant = 0;
    const ConservedAmounts out = share(cell, trust, fluid, outflow, buoyant, walk);
    add(walk.dt, flows.inflow, end);
    add(-walk.dt, out, end);
    if (paired) add(walk.dt, walk.account.transferred[cell], end);
    return end;
}

void store(CellId cell, const ConservedAmounts& held, CellAmounts& amounts) {
    amounts.water[cell] = std::max(0.0, held.water);
    amounts.oil[cell] = std::max(0.0, held.oil);
    amounts.gas[cell] = std::max(0.0, held.gas);
}

void storeMatrix(Walk& walk) {
    for (CellId cell = 1; cell <= walk.matrixEnd.count(); ++cell)
        if (hasMatrix(walk, cell)) store(partnerOf(walk.grid, cell), walk.matrixEnd[cell], walk.amounts);
}

}  // namespace kvr
