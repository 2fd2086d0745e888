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

enum Phase : std::size_t { Oil, Water, Gas };

/// What the walks need, and the pressures last seen, for the message when one does not settle.
struct Walk {
    const Console& console;
    const FluidTables& tables;
    InitDepthTable& rows;
    double rowStep = 0.0;          // ft
    std::array<double, 3> last{};  // psia, by phase
};

struct Level {
    double depth = 0.0;     // ft
    double pressure = 0.0;  // psia
};

double density(const Walk& walk, Phase phase, double depth, double p) {
    if (phase == Water) return waterDensityAt(walk.tables, WaterFvf(walk.tables, p));
    if (phase == Gas) return gasDensityAt(walk.tables, GasFvf(walk.tables, p));
    const double pb = bubblePointAtDepth(walk.tables, walk.rows, depth, p);
    return oilDensityAt(walk.tables, SolutionRs(walk.tables, pb), usableOilProperties(walk.tables, p, pb).Bo);
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
        const double rho = density(walk, phase, depth, 0.5 * (from.pressure + estimate));
        const double next = rho * dz / SquareInchesPerSquareFoot + from.pressure;
        const double change = std::abs(next - estimate);
        estimate = walk.last[phase] = next;
        if (change < SettledPressure) return {depth, estimate};
    }
    failInitialisation(walk);
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
void fillColumn(Walk& walk, Phase phase, const Level& start, Column& pressures) {
    const Column& depths = walk.rows.Depth;
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
void saturateAtContact(Walk& walk, const Level& oilStart) {
    double pressure = oilStart.pressure;
    for (int pass = 0; pass < MaxContactPasses; ++pass) {
        setConstantRs(walk.rows, SolutionRs(walk.tables, pressure));
        const double next = walkTo(walk, Oil, oilStart, walk.rows.GocDepth).pressure;
        const double change = std::abs(next - pressure);
        pressure = next;
        if (change < SettledPressure) break;
    }
    setConstantRs(walk.rows, SolutionRs(walk.tables, pressure));
}

/// Contacts of a phase that the run does not have lie outside the grid and do not claim the datum.
void placeContacts(const Equilibrium& initial, bool hasWater, bool hasGas, InitDepthTable& rows) {
    rows.WocDepth = hasWater ? initial.wocDepth : std::max(rows.Depth.back(), initial.datumDepth);
    rows.GocDepth = hasGas ? initial.gocDepth : std::min(rows.Depth.front(), initial.datumDepth);
}

/// A level in the oil: the datum, or the contact next to it when it lies in the gas or in the water.
Level oilLevel(Walk& walk, const Level& datum) {
    if (datum.depth < walk.rows.GocDepth) return walkTo(walk, Gas, datum, walk.rows.GocDepth);
    if (datum.depth > walk.rows.WocDepth) return walkTo(walk, Water, datum, walk.rows.WocDepth);
    return datum;
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

    const Level datum{initial.datumDepth, initial.datumPressure};
    Walk walk{console, tables, rows, rows.Depth[1] - rows.Depth[0], {}};
    walk.last.fill(datum.pressure);
    const Level oil = oilLevel(walk, datum);
    if (rows.RsDepth.empty()) saturateAtContact(walk, oil);

    fillColumn(walk, Oil, oil, rows.PressureO);
    rows.PressureW = rows.PressureG = rows.PressureO;
    const auto startAt = [&](double contact, bool datumIsInside) {
        return datumIsInside ? datum : walkTo(walk, Oil, oil, contact);
    };
    if (hasWater)
        fillColumn(walk, Water, startAt(rows.WocDepth, datum.depth > rows.WocDepth), rows.PressureW);
    if (tables.hasGas)
        fillColumn(walk, Gas, startAt(rows.GocDepth, datum.depth < rows.GocDepth), rows.PressureG);
    return rows;
}

}  // namespace kvr
