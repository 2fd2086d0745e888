// ternary_row KIND CELLS PORES MOBILITY K1 K2 K3 OIL1 OIL2 OIL3 GAS1 GAS2 GAS3: mole fractions of each cell
// of a row of oil behind so many pore volumes of gas, by the transport of components on cells (KIND cells) or
// along a line (SPU, 2PU, or by its fronts: BTF). In place of the equation of state stand constant K-values
// and one molar volume for all, by which the displacement has a solution in closed form
// (tests/support/ternary_fronts.py): this file's FlashPT, phaseVolumes and VIS_COMPS are linked before the
// library's. MOBILITY: of pure gas over that of pure oil.

#include "fluid/components/viscosity.hpp"
#include "pressure/component_transport.hpp"
#include "streamline/transport/component_fronts.hpp"
#include "unit/streamline/transport/component_row_line.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace kvr {

namespace {

double K[3];

/// Of moles and of volume; below 0 or above 1 of one phase.
double vapourFractionOf(const Composition& z) {
    constexpr int Halvings = 60;
    double low = 1.0 / (1.0 - std::max({K[0], K[1], K[2]})),
           high = 1.0 / (1.0 - std::min({K[0], K[1], K[2]}));
    for (int n = 0; n < Halvings; ++n) {
        const double V = 0.5 * (low + high);
        double g = 0.0;
        for (std::size_t i = 0; i < 3; ++i) g += z[i] * (K[i] - 1.0) / (1.0 + V * (K[i] - 1.0));
        (g > 0.0 ? low : high) = V;
    }
    return 0.5 * (low + high);
}

}  // namespace

void FlashPT(const ComponentSet&, const Composition& feed, double, FlashState& state) {
    const double V = vapourFractionOf(feed);
    state.vapourFraction = std::clamp(V, 0.0, 1.0);
    state.liquid = state.vapour = feed;
    state.phases = V <= 0.0 ? FluidPhases::Liquid : FluidPhases::Vapour;
    if (V <= 0.0 || V >= 1.0) return;
    state.phases = FluidPhases::Both;
    for (std::size_t i = 0; i < 3; ++i) {
        state.liquid[i] = feed[i] / (1.0 + V * (K[i] - 1.0));
        state.vapour[i] = K[i] * state.liquid[i];
    }
}

PhaseVolumes phaseVolumes(const ComponentSet& set, double pressure, const FlashState& state) {
    const double unit = GasConstant * set.temperature / pressure;
    return {(1.0 - state.vapourFraction) * unit, state.vapourFraction * unit};
}

double VIS_COMPS(const ComponentSet&, double, double, const Composition&) {
    return 1.0;
}

}  // namespace kvr

namespace {

using namespace kvr;

constexpr int Rows = 400;  // of the tables: near enough to squares

void setMobilities(double mobility, FluidTables& tables) {
    SaturationTable& table = tables.regions.front();
    table.SgAxis.clear(), table.Krg.clear(), table.Krog.clear();
    for (int r = 0; r <= Rows; ++r) {
        const double s = static_cast<double>(r) / Rows;
        table.SgAxis.push_back(s);
        table.Krg.push_back(s * s);
        table.Krog.push_back((1.0 - s) * (1.0 - s) / mobility);
    }
    table.Krow.front() = 1.0 / mobility;
    table.Pcog.assign(Rows + 1, 0.0);
    finishTables(tables);
}

void print(int cells, const auto& fraction) {
    for (int n = 1; n <= cells; ++n)
        std::printf("%.12g %.12g %.12g\n", fraction(n, 0), fraction(n, 1), fraction(n, 2));
}

void alongLine(const char* upwind, double pores, const Composition& stream, RowLine& run) {
    run.control.upwind = upwind;
    run.load(stream);
    run.advance(pores * Residence * run.line.nodeCount);
    print(run.line.nodeCount, [&run](int n, int i) {
        return run.fraction(static_cast<std::size_t>(n), static_cast<std::size_t>(i));
    });
}

/// The tracker in two steps, the second of which is shown.
void byFronts(double pores, const Composition& stream, RowLine& run) {
    run.load(stream);
    const CellState& state = run.row.state;
    prepareFronts(run.row.grid, run.row.tables, state, run.control.cfl, run.field);
    const double age = pores * Residence * run.line.nodeCount;
    run.field.age = {0.5 * age};
    trackFronts(run.row.grid, state, run.field, 0.5 * age, run.line, run.components);
    print(run.line.nodeCount, [&run](int n, int i) {
        return run.fraction(static_cast<std::size_t>(n), static_cast<std::size_t>(i));
    });
}

void onCells(double pores, const Composition& stream, Row& row) {
    const CellId cells = row.grid.NCELLS;
    const double flow = row.state.PoreVolume[1];  // one cell a day
    for (CellId c = 1; c < cells; ++c)
        row.run.velocity.CellFaceFlux(c, 2) = row.run.velocity.CellFaceFlux(c + 1, 1) = flow;
    ComponentSource in, out;
    in.cell = 1;
    for (std::size_t i = 0; i < 3; ++i)
        in.stream[i] = flow * stream[i] *
                       phaseMoles(row.stage.set, row.run.units.VolumeFactor, row.state.Pressure[1], 1.0);
    out.cell = cells;
    out.produced = flow;
    const ComponentSource sources[] = {in, out};
    std::vector<SourceTotals> moved;
    moveComponents(row.run.units, row.grid, row.connections, row.tables, row.run.velocity, sources, {},
                   pores * cells, row.stage, row.state, moved);
    print(cells, [&row](int n, int i) { return row.stage.cells.z(n, i + 1); });
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 14) return 2;
    const auto number = [arguments](int k) { return std::atof(arguments[k]); };
    const std::string kind = arguments[1];
    const int cells = std::atoi(arguments[2]);
    for (int i = 0; i < 3; ++i) K[i] = number(5 + i);
    const Composition oil = {number(8), number(9), number(10)}, gas = {number(11), number(12), number(13)};
    RowLine run(threeComponents(), cells, oil);
    setMobilities(number(4), run.row.tables);
    startComponents(run.row.run);
    if (kind == "cells")
        onCells(number(3), gas, run.row);
    else if (kind == "BTF")
        byFronts(number(3), gas, run);
    else
        alongLine(kind.c_str(), number(3), gas, run);
}
