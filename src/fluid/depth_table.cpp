#include "fluid/depth_table.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/table_lookup.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>

namespace kvr {

namespace {

constexpr int RowsPerLayer = 20;
constexpr double SettledPressure = 1e-5;  // psi, change of one pass
constexpr int MaxPasses = 1000;
constexpr double MaxWalkSteps = 1000.0;  // of a walk between a datum and a contact
constexpr int MaxContactPasses = 50;     // for the Rs of oil that is saturated at the contact

constexpr std::size_t Oil = 0, Water = 1, Gas = 2;  // places of the pressures last seen

using Phase = ColumnPhase;

/// What the walks need, and the pressures last seen, for the message when one does not settle.
struct Walk {
    const Console& console;
    const ColumnDensity& density;
    double rowStep = 0.0;           // ft
    bool mayStayUnsettled = false;  // a row that goes to and fro keeps its last pressure
    bool isSettled = true;          // no row did
    std::array<double, 3> last{};   // psia, by phase
};

struct Level {
    double depth = 0.0;     // ft
    double pressure = 0.0;  // psia
};

/// Densities of the tables: oil by the Rs of its depth.
double tableDensity(const FluidTables& tables, const InitDepthTable& rows, Phase phase, double depth,
                    double p) {
    if (phase == Phase::Water) return waterDensityAt(tables, WaterFvf(tables, p));
    if (phase == Phase::Gas) return gasDensityAt(tables, GasFvf(tables, p));
    const double pb = bubblePointAtDepth(tables, rows, depth, p);
    return oilDensityAt(tables, SolutionRs(tables, pb), usableOilProperties(tables, p, pb).Bo);
}

[[noreturn]] void failInitialisation(const Walk& walk) {
    both(walk.console, "Initialization Failed:");
    both(walk.console, "Check Capillary-Density-OWC/OGC Data.");
    both(walk.console, "Oil Pressure: {}", number(walk.last[Oil]));
    both(walk.console, "Wat Pressure: {}", number(walk.last[Water]));
    both(walk.console, "Gas Pressure: {}", number(walk.last[Gas]));
    hardStop(walk.console);
}

/// One step of a column: pNew = P + density((P + pNew)/2) dz / 144 by repeated substitution.
Level stepTo(Walk& walk, Phase phase, const Level& from, double depth) {
    const double dz = depth - from.depth;
    double estimate = from.pressure;
    for (int pass = 0; pass < MaxPasses; ++pass) {
        const double rho = walk.density(phase, depth, 0.5 * (from.pressure + estimate));
        const double next = rho * dz / SquareInchesPerSquareFoot + from.pressure;
        const double change = std::abs(next - estimate);
        estimate = walk.last[static_cast<std::size_t>(phase)] = next;
        if (change < SettledPressure) return {depth, estimate};
    }
    if (!walk.mayStayUnsettled || !(estimate > 0.0 && std::isfinite(estimate))) failInitialisation(walk);
    walk.isSettled = false;
    return {depth, estimate};
}

/// A walk over any distance, in steps of about a row.
Level walkTo(Walk& walk, Phase phase, const Level& from, double depth) {
    const double distance = depth - from.depth;
    if (distance == 0.0) return from;
    const double wanted = walk.rowStep > 0.0 ? std::ceil(std::abs(distance) / walk.rowStep) : MaxWalkSteps;
    const int steps = static_cast<int>(std::clamp(wanted, 1.0, MaxWalkSteps));
    Level level = from;
    for (int n = 1; n <= steps; ++n) level = stepTo(walk, phase, level, from.depth + distance * n / steps);
    return level;
}

/// Every row of a column, outward in both directions from a level of known pressure.
void fillColumn(Walk& walk, Phase phase, const Level& start, const Column& depths, Column& pressures) {
    const auto below = static_cast<std::size_t>(std::lower_bound(depths.begin(), depths.end(), start.depth) -
                                                depths.begin());
    Level level = start;
    for (std::size_t r = below; r < depths.size(); ++r) {
        level = r == below ? walkTo(walk, phase, level, depths[r]) : stepTo(walk, phase, level, depths[r]);
        pressures[r] = level.pressure;
    }
    level = start;
    for (std::size_t r = below; r-- > 0;) {
        level =
            r + 1 == below ? walkTo(walk, phase, level, depths[r]) : stepTo(walk, phase, level, depths[r]);
        pressures[r] = level.pressure;
    }
}

/// Row depths, and room for the columns.
void layOutRows(const Console& console, const GridModel& grid, InitDepthTable& rows) {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int corner = 1; corner <= 8; ++corner) {
            const double z = cornerOf(grid, cell, corner)[2];
            low = std::min(low, z);
            high = std::max(high, z);
        }
    const auto count = static_cast<std::size_t>(RowsPerLayer) * static_cast<std::size_t>(grid.NZ) + 1;
    try {
        for (Column* column : {&rows.Depth, &rows.PressureO, &rows.PressureW, &rows.PressureG})
            column->assign(count, 0.0);
    } catch (const std::bad_alloc&) {
        both(console, "Error :: Rs - Depth table");
        hardStop(console);
    }
    const double step = (high - low) / static_cast<double>(count - 1);
    for (std::size_t r = 0; r < count; ++r) rows.Depth[r] = low + static_cast<double>(r) * step;
    rows.Depth.back() = high;
}

void setConstantRs(InitDepthTable& rows, double rs) {
    rows.RsDepth = {rows.Depth.front(), rows.Depth.back()};
    rows.RsValue = {rs, rs};
}

/// Rs of oil that is saturated at the gas-oil contact: its pressure there depends on the oil between.
void saturateAtContact(Walk& walk, const FluidTables& tables, const Level& oilStart, InitDepthTable& rows) {
    double pressure = oilStart.pressure;
    for (int pass = 0; pass < MaxContactPasses; ++pass) {
        setConstantRs(rows, SolutionRs(tables, pressure));
        const double next = walkTo(walk, Phase::Oil, oilStart, rows.GocDepth).pressure;
        const double change = std::abs(next - pressure);
        pressure = next;
        if (change < SettledPressure) break;
    }
    setConstantRs(rows, SolutionRs(tables, pressure));
}

/// Contacts of a phase that the run does not have lie outside the grid and do not claim the datum.
void placeContacts(const Equilibrium& initial, bool hasWater, bool hasGas, InitDepthTable& rows) {
    rows.WocDepth = hasWater ? initial.wocDepth : std::max(rows.Depth.back(), initial.datumDepth);
    rows.GocDepth = hasGas ? initial.gocDepth : std::min(rows.Depth.front(), initial.datumDepth);
}

/// A level in the oil: the datum, or the contact next to it when it lies in the gas or in the water.
Level oilLevel(Walk& walk, const InitDepthTable& rows, const Level& datum) {
    if (datum.depth < rows.GocDepth) return walkTo(walk, Phase::Gas, datum, rows.GocDepth);
    if (datum.depth > rows.WocDepth) return walkTo(walk, Phase::Water, datum, rows.WocDepth);
    return datum;
}

/// All columns outward from the datum, `oil` a level in the oil.
void fillColumns(Walk& walk, const Level& datum, const Level& oil, bool hasWater, bool hasGas,
                 InitDepthTable& rows) {
    fillColumn(walk, Phase::Oil, oil, rows.Depth, rows.PressureO);
    rows.PressureW = rows.PressureG = rows.PressureO;
    const auto startAt = [&](double contact, bool datumIsInside) {
        return datumIsInside ? datum : walkTo(walk, Phase::Oil, oil, contact);
    };
    if (hasWater)
        fillColumn(walk, Phase::Water, startAt(rows.WocDepth, datum.depth > rows.WocDepth), rows.Depth,
                   rows.PressureW);
    if (hasGas)
        fillColumn(walk, Phase::Gas, startAt(rows.GocDepth, datum.depth < rows.GocDepth), rows.Depth,
                   rows.PressureG);
}

}  // namespace

double rsAtDepth(const InitDepthTable& rows, double depth) {
    return TableLookup(rows.RsDepth, rows.RsValue, 1, 1, static_cast<int>(rows.RsDepth.size()), depth);
}

double bubblePointAtDepth(const FluidTables& tables, const InitDepthTable& rows, double depth,
                          double pressure) {
    return std::min(BubblePoint(tables, rsAtDepth(rows, depth)), pressure);
}

InitDepthTable buildDepthTable(const Console& console, const GridModel& grid, const FluidTables& tables,
                               const Equilibrium& initial, bool hasWater) {
    InitDepthTable rows;
    layOutRows(console, grid, rows);
    placeContacts(initial, hasWater, tables.hasGas, rows);
    rows.RsDepth = initial.rsTableDepth;
    rows.RsValue = initial.rsTableRs;

    const ColumnDensity density = [&](Phase phase, double depth, double p) {
        return tableDensity(tables, rows, phase, depth, p);
    };
    const Level datum{initial.datumDepth, initial.datumPressure};
    Walk walk{console, density, rows.Depth[1] - rows.Depth[0], false, true, {}};
    walk.last.fill(datum.pressure);
    const Level oil = oilLevel(walk, rows, datum);
    if (rows.RsDepth.empty()) saturateAtContact(walk, tables, oil, rows);
    fillColumns(walk, datum, oil, hasWater, tables.hasGas, rows);
    return rows;
}

InitDepthTable buildColumns(const Console& console, const GridModel& grid, const ColumnDensity& density,
                            const Equilibrium& initial, bool hasWater, bool& isSettled) {
    InitDepthTable rows;
    layOutRows(console, grid, rows);
    placeContacts(initial, hasWater, true, rows);
    const Level datum{initial.datumDepth, initial.datumPressure};
    Walk walk{console, density, rows.Depth[1] - rows.Depth[0], true, true, {}};
    walk.last.fill(datum.pressure);
    const Level oil = oilLevel(walk, rows, datum);
    fillColumns(walk, datum, oil, hasWater, true, rows);
    isSettled = walk.isSettled;
    return rows;
}

}  // namespace kvr
