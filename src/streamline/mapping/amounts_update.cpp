#include "streamline/mapping/amounts_update.hpp"

#include "pressure/cell_transport.hpp"
#include "pressure/properties.hpp"
#include "streamline/mapping/face_transfer.hpp"
#include "streamline/mapping/mapping.hpp"

#include <algorithm>
#include <utility>

namespace kvr {

namespace {

constexpr int Faces = 6;
constexpr int MostPasses = 4;  // of setting cells apart

/// Adds what lines brought into a cell through one face, scaled to the flow of the face. Returns whether
/// lines went through it along its flow.
bool takeFromLines(const Simulation& s, CellId cell, int face, CellAmounts& rates) {
    const FaceTransfer& transfer = s.lines.transfer;
    const TransferFace place = transferFace(s.connections, cell, face);
    if (place.cell < 1) return false;
    const double flow = s.velocity.CellFaceFlux(cell, face);
    const double lines = transfer.flow(place.cell, place.axis);
    if (!(flow * lines > 0.0)) return false;
    const double share = -FaceSign[static_cast<std::size_t>(face) - 1] * flow / (lines * s.clock.workDt);
    rates.water[cell] += share * transfer.water(place.cell, place.axis);
    rates.oil[cell] += share * transfer.oil(place.cell, place.axis);
    rates.gas[cell] += share * transfer.gas(place.cell, place.axis);
    return true;
}

/// How the faces pass their flow: as the lines through them, or from cell to cell.
struct Shares {
    CellArray<std::uint8_t> apart;  // cells whose faces leave the lines out
    CellAmounts rates;              // a day, what lines bring
    DirectionArray<double> rest;    // flow that goes from cell to cell
};

void shareOut(const Simulation& s, Shares& shares) {
    sizeAmounts(s.grid.NCELLS, shares.rates);
    shares.rest = s.velocity.CellFaceFlux;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0 || shares.apart[cell] != 0) continue;
        for (int face = 1; face <= Faces; ++face) {
            const CellId neighbour = s.connections.Neighbour(cell, face);
            if (neighbour > 0 && shares.apart[neighbour] != 0) continue;
            if (takeFromLines(s, cell, face, shares.rates)) shares.rest(cell, face) = 0.0;
        }
    }
}

/// Sets the cells apart that the lines would take more from than they hold: the nodes of a regridded line
/// do not hold what the cells do. Returns whether there are new ones.
bool setEmptiedApart(const Simulation& s, const CellAmounts& amounts, Shares& shares) {
    bool found = false;
    const double dt = s.clock.workDt;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        if (s.grid.Active[cell] == 0 || shares.apart[cell] != 0) continue;
        const double least = std::min({amounts.water[cell] + dt * shares.rates.water[cell],
                                       amounts.oil[cell] + dt * shares.rates.oil[cell],
                                       amounts.gas[cell] + dt * shares.rates.gas[cell]});
        if (!(least < 0.0)) continue;
        shares.apart[cell] = 1;
        found = true;
    }
    return found;
}

void shareOutSafely(const Simulation& s, const CellAmounts& amounts, Shares& shares) {
    shares.apart.assign(s.grid.NCELLS, 0);
    shareOut(s, shares);
    for (int pass = 0; pass < MostPasses && setEmptiedApart(s, amounts, shares); ++pass) shareOut(s, shares);
}

/// Wells over this sub-step: what their rates make since the pressure step less what they have moved in the
/// sub-steps before.
void addWells(int substep, Simulation& s, CellAmounts& rates) {
    CellAmounts& moved = s.lines.movedByWells;
    if (substep <= 1 || moved.water.empty()) sizeAmounts(s.grid.NCELLS, moved);
    CellAmounts now;
    sizeAmounts(s.grid.NCELLS, now);
    addWellRates(s.wells, now);
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
        rates.water[cell] += substep * now.water[cell] - moved.water[cell];
        rates.oil[cell] += substep * now.oil[cell] - moved.oil[cell];
        rates.gas[cell] += substep * now.gas[cell] - moved.gas[cell];
        moved.water[cell] = substep * now.water[cell];
        moved.oil[cell] = substep * now.oil[cell];
        moved.gas[cell] = substep * now.gas[cell];
    }
}

}  // namespace

void advanceByFaceTransfer(int substep, Simulation& simulation) {
    CellAmounts amounts;
    measureWholeAmounts(simulation.grid, simulation.state, simulation.pressure.carried, amounts);
    Shares shares;
    shareOutSafely(simulation, amounts, shares);
    CellTransport transport;
    transport.flux = &shares.rest;
    transport.rates = std::move(shares.rates);
    addWells(substep, simulation, transport.rates);
    transportAmounts(transport, amounts, simulation);
    mapTracers(simulation.grid, simulation.mapping, simulation.state);
}

}  // namespace kvr
