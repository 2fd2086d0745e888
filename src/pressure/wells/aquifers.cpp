#include "pressure/wells/aquifers.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"
#include "fluid/black_oil.hpp"
#include "model/cell_box.hpp"
#include "model/neighbours.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <string>
#include <utility>

namespace kvr {

namespace {

constexpr double FullCircle = 360.0;  // degrees
constexpr double NoChange = 1e-6;     // of the exponent of a step too short to change an aquifer

/// Area of a face of a cell by its nominal sizes.
double faceArea(const GridModel& grid, CellId cell, int face) {
    const double x = grid.DX[cell], y = grid.DY[cell], z = grid.DZ[cell];
    const int axis = (face - 1) / 2;
    return axis == 0 ? y * z : axis == 1 ? x * z : x * y;
}

bool takesWater(const GridModel& grid, CellId cell, const AquiferFaces& row) {
    if (grid.Active[cell] == 0) return false;
    const CellId beside = neighbourOf(grid, cell, row.face);
    return row.inside || beside <= 0 || grid.Active[beside] == 0;
}

void addShare(CellId cell, double share, std::vector<AquiferCell>& cells) {
    const auto known = std::find_if(cells.begin(), cells.end(),
                                    [cell](const AquiferCell& other) { return other.cell == cell; });
    if (known == cells.end())
        cells.push_back({cell, share});
    else
        known->share += share;
}

/// The cells of an aquifer, shares by area adding up to 1.
std::vector<AquiferCell> cellsOf(const GridModel& grid, int number, const std::vector<AquiferFaces>& rows) {
    std::vector<AquiferCell> cells;
    for (const AquiferFaces& row : rows) {
        if (row.number != number) continue;
        forEachCell(grid, row.box, [&](CellId cell) {
            if (!takesWater(grid, cell, row)) return;
            const double by = row.coefficient < 0.0 ? faceArea(grid, cell, row.face) : row.coefficient;
            if (by * row.multiplier > 0.0) addShare(cell, by * row.multiplier, cells);
        });
    }
    const double sum = std::accumulate(cells.begin(), cells.end(), 0.0,
                                       [](double s, const AquiferCell& cell) { return s + cell.share; });
    for (AquiferCell& cell : cells) cell.share /= sum;
    return cells;
}

double headOver(double density, double upper, double lower) {
    return density * (lower - upper) / SquareInchesPerSquareFoot;
}

/// The pressure at the datum with which nothing flows on the whole.
double restingPressure(const GridModel& grid, const CellState& state, const Aquifer& aquifer) {
    double pressure = 0.0;
    for (const AquiferCell& at : aquifer.cells)
        pressure +=
            at.share * (state.Pressure[at.cell] -
                        headOver(state.RhoW[at.cell], aquifer.given.datumDepth, grid.CellCentre(at.cell, 3)));
    return pressure;
}

const FluidTables& waterOf(const FluidTables& tables, int pvtTable) {
    const auto further = static_cast<std::size_t>(std::max(pvtTable, 1)) - 1;
    return further == 0 || further > tables.furtherPvt.size() ? tables : tables.furtherPvt[further - 1];
}

void setCarterTracy(const UnitSystem& units, const FluidTables& water, const FluidTables& tables,
                    Aquifer& aquifer) {
    const GivenAquifer& given = aquifer.given;
    const double storage = given.porosity * given.compressibility * given.radius * given.radius;
    const double viscosity = WaterViscosity(water, aquifer.initialPressure);
    aquifer.timeUnit = viscosity * storage / (given.permeability * CubicFeetPerBarrel * DarcyConstant);
    aquifer.influx =
        2.0 * std::numbers::pi * given.thickness * storage * given.angle / FullCircle / units.VolumeFactor;
    const auto table = static_cast<std::size_t>(std::max(given.influenceTable, 1)) - 1;
    const bool own = table > 0 && table <= tables.influenceTables.size() &&
                     tables.influenceTables[table - 1].time.size() > 1;
    aquifer.influence = own ? tables.influenceTables[table - 1] : unboundedInfluence();
}

/// One of the two wells of an aquifer.
Well wellOf(const Aquifer& aquifer, std::string_view kind) {
    Well well;
    well.WellName = "AQU" + std::to_string(aquifer.given.number);
    well.WellKind = kind;
    well.WellControl = well.deckControl = well.givenControl = "bhp";
    if (kind == "inj") well.InjectFluid = "wat";
    well.aquifer = true;
    for (const AquiferCell& at : aquifer.cells) {
        WellConnection connection;
        connection.ConnCell = at.cell;
        connection.completion = static_cast<int>(well.connections.size()) + 1;
        well.connections.push_back(connection);
    }
    return well;
}

/// An aquifer that the deck gives, without cells where it has none.
Aquifer aquiferOf(const UnitSystem& units, const GridModel& grid, const FluidTables& tables,
                  const CellState& state, const GivenAquifer& given, const std::vector<AquiferFaces>& faces) {
    Aquifer aquifer;
    aquifer.given = given;
    aquifer.cells = cellsOf(grid, given.number, faces);
    if (aquifer.cells.empty()) return aquifer;
    aquifer.initialPressure = given.pressure > 0.0 ? given.pressure : restingPressure(grid, state, aquifer);
    const FluidTables& water = waterOf(tables, given.pvtTable);
    aquifer.density = waterDensityAt(water, WaterFvf(water, aquifer.initialPressure));
    if (given.law == AquiferLaw::CarterTracy) setCarterTracy(units, water, tables, aquifer);
    return aquifer;
}

AquiferTerms termsOf(const Aquifer& aquifer, double dt) {
    return aquifer.given.law == AquiferLaw::Fetkovich ? fetkovichTerms(aquifer, dt)
                                                      : carterTracyTerms(aquifer, dt);
}

constexpr std::size_t WellsEach = 2;  // one gives, one takes

}  // namespace

AquiferTerms fetkovichTerms(const Aquifer& aquifer, double dt) {
    const GivenAquifer& given = aquifer.given;
    const double capacity = given.compressibility * given.volume;
    const double x = given.productivity * dt / capacity;
    const double mean = x > NoChange ? -std::expm1(-x) / x : 1.0;
    return {given.productivity * mean, aquifer.initialPressure - aquifer.gave / capacity};
}

AquiferTerms carterTracyTerms(const Aquifer& aquifer, double dt) {
    const double begin = aquifer.time / aquifer.timeUnit;
    const Influence end = influenceAt(aquifer.influence, (aquifer.time + dt) / aquifer.timeUnit);
    return {aquifer.influx / (aquifer.timeUnit * (end.value - begin * end.slope)),
            aquifer.initialPressure - aquifer.gave * end.slope / aquifer.influx};
}

Influence influenceAt(const InfluenceTable& table, double time) {
    const auto above = std::upper_bound(table.time.begin() + 1, table.time.end() - 1, time);
    const auto high = static_cast<std::size_t>(above - table.time.begin());
    const double slope =
        (table.pressure[high] - table.pressure[high - 1]) / (table.time[high] - table.time[high - 1]);
    return {table.pressure[high - 1] + slope * (time - table.time[high - 1]), slope};
}

InfluenceTable unboundedInfluence() {
    return {{0.01,  0.05,  0.1,   0.15,  0.2,   0.25,  0.3,   0.4,   0.5,   0.6,   0.7,   0.8,
             0.9,   1.0,   1.5,   2.0,   2.5,   3.0,   4.0,   5.0,   6.0,   7.0,   8.0,   9.0,
             10.0,  15.0,  20.0,  25.0,  30.0,  40.0,  50.0,  60.0,  70.0,  80.0,  90.0,  100.0,
             150.0, 200.0, 250.0, 300.0, 400.0, 500.0, 600.0, 700.0, 800.0, 900.0, 1000.0},
            {0.112, 0.229, 0.315, 0.376, 0.424, 0.469, 0.503, 0.564, 0.616, 0.659, 0.702, 0.735,
             0.772, 0.802, 0.927, 1.02,  1.101, 1.169, 1.275, 1.362, 1.436, 1.5,   1.556, 1.604,
             1.651, 1.829, 1.96,  2.067, 2.147, 2.282, 2.388, 2.476, 2.55,  2.615, 2.672, 2.723,
             2.921, 3.064, 3.173, 3.263, 3.406, 3.516, 3.608, 3.684, 3.75,  3.809, 3.86}};
}

AquiferRecord startAquifers(const Console& console, const UnitSystem& units, const GridModel& grid,
                            const FluidTables& tables, const CellState& state, const GivenAquifers& given) {
    AquiferRecord record;
    for (const GivenAquifer& one : given.aquifers) {
        const Aquifer aquifer = aquiferOf(units, grid, tables, state, one, given.faces);
        if (aquifer.cells.empty()) {
            warnAt(console, one.place, "AQUANCON",
                   "WARNING :: AQUIFER {} HAS NO FACE OF A CELL TO GIVE WATER TO", one.number);
            continue;
        }
        both(console, "-> Aquifer {}: {} cells, {} psia at {} ft", one.number, aquifer.cells.size(),
             number(aquifer.initialPressure), number(one.datumDepth));
        record.aquifers.push_back(aquifer);
        record.wells.push_back(wellOf(aquifer, "inj"));
        record.wells.push_back(wellOf(aquifer, "prd"));
    }
    return record;
}

void joinAquifers(AquiferRecord& record, WellRecord& wells) {
    for (Well& well : record.wells) wells.wells.push_back(std::move(well));
    record.wells.clear();
}

void partAquifers(double dt, const CellState& state, AquiferRecord& record, WellRecord& wells) {
    const std::size_t first = wells.wells.size() - WellsEach * record.aquifers.size();
    for (std::size_t w = first; w < wells.wells.size(); ++w) {
        Aquifer& aquifer = record.aquifers[(w - first) / WellsEach];
        for (const WellConnection& connection : wells.wells[w].connections)
            aquifer.gave += dt * connection.reservoirRate / state.Bw[connection.ConnCell];
        record.wells.push_back(std::move(wells.wells[w]));
    }
    for (Aquifer& aquifer : record.aquifers) aquifer.time += dt;
    wells.wells.resize(first);
}

void setAquiferTerms(double dt, const GridModel& grid, const AquiferRecord& record, WellRecord& wells) {
    const std::size_t first = wells.wells.size() - WellsEach * record.aquifers.size();
    for (std::size_t w = first; w < wells.wells.size(); ++w) {
        const Aquifer& aquifer = record.aquifers[(w - first) / WellsEach];
        const AquiferTerms terms = termsOf(aquifer, dt);
        Well& well = wells.wells[w];
        well.Bhp = well.BhpLimit = terms.pressure;
        for (std::size_t n = 0; n < well.connections.size(); ++n) {
            WellConnection& connection = well.connections[n];
            connection.aquiferFlow = aquifer.cells[n].share * terms.flow;
            connection.ConnHead =
                headOver(aquifer.density, aquifer.given.datumDepth, grid.CellCentre(connection.ConnCell, 3));
        }
    }
}

}  // namespace kvr
