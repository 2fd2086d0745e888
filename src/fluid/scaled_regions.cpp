#include "fluid/scaled_regions.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "fluid/scaled_table.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace kvr {

namespace {

/// Cells of one table and one set of end points.
using ScaledKey = std::pair<int, EndPoints>;

bool anyGiven(const EndPointScaling& scaling) {
    return std::any_of(scaling.given.begin(), scaling.given.end(),
                       [](const CellArray<double>& values) { return !values.empty(); });
}

/// End points of a cell: those of its table unless arrays give others.
EndPoints endPointsAt(const EndPointScaling& scaling, CellId cell, EndPoints points) {
    for (std::size_t n = 0; n < EndPointKeywords.size(); ++n) {
        const CellArray<double>& values = scaling.given[n];
        if (values.empty() || std::isnan(values[cell])) continue;
        const EndPointKeyword& keyword = EndPointKeywords[n];
        points.*keyword.point = values[cell];
        if (keyword.second != nullptr) points.*keyword.second = values[cell];
    }
    return points;
}

constexpr double Slack = 1e-6;  // of saturations that are given with a few digits

/// Saturations are shares, relative permeabilities not below 0.
bool isPossible(const EndPointKeyword& keyword, double value) {
    if (keyword.isPressure || std::isnan(value)) return true;
    return value >= -Slack && (value <= 1.0 + Slack || keyword.name.front() == 'K');
}

void requirePossible(const Console& console, const GridModel& grid, const EndPointScaling& scaling) {
    for (std::size_t n = 0; n < EndPointKeywords.size(); ++n)
        for (CellId cell = 1; cell <= scaling.given[n].count(); ++cell) {
            if (grid.Active[cell] == 0 || isPossible(EndPointKeywords[n], scaling.given[n][cell])) continue;
            both(console, "ERROR :: {} OF GRID {} (I {}, J {}, K {}) IS {}", EndPointKeywords[n].name, cell,
                 grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell], number(scaling.given[n][cell]));
            hardStop(console);
        }
}

void requireSound(const Console& console, const GridModel& grid, std::string_view fault, CellId cell) {
    if (fault.empty()) return;
    both(console, "ERROR :: END POINTS OF GRID {} (I {}, J {}, K {}): {}", cell, grid.CellI[cell],
         grid.CellJ[cell], grid.CellK[cell], fault);
    hardStop(console);
}

/// What can be computed but is hardly meant, by cell.
struct DoubtRow {
    bool (*holds)(const EndPoints&);
    bool ofGas;
    std::string_view text;
    int cells = 0;
    CellId first = 0;
};

void tellDoubts(const Console& console, std::span<const DoubtRow> doubts) {
    for (const DoubtRow& doubt : doubts)
        if (doubt.cells > 0)
            warn(console, "WARNING :: END POINTS OF {} CELLS: {}; FIRST: GRID {}", doubt.cells, doubt.text,
                 doubt.first);
}

double bytesOf(const SaturationTable& table) {
    const std::size_t rows = table.SwAxis.size() + table.SgAxis.size();
    const std::size_t buckets = table.SwSearch.firstRow.size() + table.SgSearch.firstRow.size();
    return static_cast<double>(sizeof(SaturationTable) + 5 * rows * sizeof(double) +
                               buckets * sizeof(std::uint32_t));
}

void tellMade(const Console& console, CellId cells, const FluidTables& tables) {
    constexpr double Megabyte = 1e6;
    double bytes = 0.0;
    for (std::size_t r = ownRegions(tables); r < tables.regions.size(); ++r)
        bytes += bytesOf(tables.regions[r]);
    both(console, "-> End points of {} cells, {} tables scaled by {} points, {} MB", cells,
         tables.scaledRegions, tables.scaling.threePoint ? "three" : "two", number(bytes / Megabyte, 3));
}

/// Counts the cells that each doubt is about.
struct Doubts {
    std::array<DoubtRow, 4> rows = {{
        {[](const EndPoints& p) { return p.SWCR < p.SWL - Slack; }, false, "SWCR IS BELOW SWL"},
        {[](const EndPoints& p) { return p.SGCR < p.SGL - Slack; }, true, "SGCR IS BELOW SGL"},
        {[](const EndPoints& p) { return p.SWL + p.SGU > 1.0 + Slack; }, true, "SWL + SGU IS ABOVE 1"},
        {[](const EndPoints& p) { return p.SGL + p.SWU > 1.0 + Slack; }, true, "SGL + SWU IS ABOVE 1"},
    }};
    void note(const EndPoints& points, bool hasGas, CellId cell) {
        for (DoubtRow& row : rows) {
            if ((row.ofGas && !hasGas) || !row.holds(points)) continue;
            if (row.cells++ == 0) row.first = cell;
        }
    }
};

}  // namespace

void makeScaledRegions(const Console& console, bool hasWater, GridModel& grid, FluidTables& tables) {
    if (!tables.scaling.isSet || !anyGiven(tables.scaling)) return;
    const EndPointScaling& scaling = tables.scaling;
    requirePossible(console, grid, scaling);
    const std::size_t own = ownRegions(tables);
    std::vector<EndPoints> ofTable;
    for (std::size_t r = 0; r < own; ++r) ofTable.push_back(endPointsOf(tables.regions[r]));
    Doubts doubts;
    std::map<ScaledKey, int> regions;
    CellId cells = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const int table = grid.SATNUM[cell];
        if (grid.Active[cell] == 0 || table < 1 || static_cast<std::size_t>(table) > own) continue;
        const EndPoints& from = ofTable[static_cast<std::size_t>(table) - 1];
        const EndPoints to = endPointsAt(scaling, cell, from);
        if (to == from) continue;
        ++cells;
        requireSound(console, grid, endPointFault(to, hasWater, tables.hasGas), cell);
        doubts.note(to, tables.hasGas, cell);
        const int next = static_cast<int>(tables.regions.size()) + 1;
        const auto [found, isNew] = regions.try_emplace({table, to}, next);
        grid.SATNUM[cell] = found->second;
        if (!isNew) continue;
        tables.regions.push_back(
            scaledTable(regionTable(tables, table), from, to, scaling.threePoint, tables.hasGas));
        ++tables.scaledRegions;
    }
    tellDoubts(console, doubts.rows);
    tellMade(console, cells, tables);
    for (CellArray<double>& values : tables.scaling.given) values = {};
}

}  // namespace kvr
