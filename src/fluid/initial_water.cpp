#include "fluid/initial_water.hpp"

#include "base/messages.hpp"
#include "fluid/column_state.hpp"
#include "fluid/equilibrium.hpp"
#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace kvr {

namespace {

/// Why the given saturations cannot act; empty where they can.
std::string_view hindrance(const InitialConditions& initial, const RunOptions& options,
                           const FluidTables& tables) {
    if (options.componentCount > 0) return "IN A RUN OF COMPONENTS";
    if (!initial.equilibrationMode) return "WITHOUT EQUIL";
    if (!options.hasWater || tables.PcowSpan <= CapillarySpanLimit) return "WITHOUT CAPILLARY PRESSURE";
    return {};
}

/// What the capillary pressure of water has to balance at a saturation, psi before JFactor: oil against
/// water, or where gas leaves no room for oil gas against water, less what the gas holds itself.
double pullOnWater(const CellView& cell, const InitDepthTable& rows, bool hasGas, double sw) {
    constexpr double Slack = 1e-9;  // of saturations: rounding of tables that end at one another
    const PhasePressures& p = cell.columns;
    if (!hasGas || sw + gasSaturation(cell, rows) <= 1.0 + Slack) return (p.oil - p.water) / cell.pcowFactor;
    const SaturationTable& table = cell.table;
    const double sg = std::clamp(1.0 - sw, table.SgAxis.front(), table.SgAxis.back());
    const double held = cell.pcogFactor * columnAt(table.Pcog, placeOnAxis(table.SgAxis, table.SgSearch, sg));
    return (p.gas - p.water - held) / cell.pcowFactor;
}

/// Factor of a cell's capillary pressure; 0 where none puts the saturation there.
double capillaryFactor(const CellView& cell, const InitDepthTable& rows, bool hasGas, double water) {
    if (!(cell.pcowFactor > 0.0)) return 0.0;
    const SaturationTable& table = cell.table;
    const double sw = std::clamp(water, table.SwAxis.front(), table.SwAxis.back());
    const double held = columnAt(table.Pcow, placeOnAxis(table.SwAxis, table.SwSearch, sw));
    const double pull = pullOnWater(cell, rows, hasGas, sw);
    return pull > 0.0 && held > CapillarySpanLimit ? pull / held : 0.0;
}

/// The table with another capillary pressure becomes the last region.
void addScaled(int region, double factor, FluidTables& tables) {
    SaturationTable table = regionTable(tables, region);
    for (double& capillary : table.Pcow) capillary *= factor;
    tables.regions.push_back(std::move(table));
    ++tables.scaledRegions;
}

}  // namespace

void scaleToInitialWater(const Console& console, const InitialConditions& initial, const RunOptions& options,
                         GridModel& grid, FluidTables& tables) {
    const CellArray<double> given = std::exchange(tables.scaling.initialWater, {});
    if (given.empty() || !tables.scaling.isSet) return;
    if (const std::string_view why = hindrance(initial, options, tables); !why.empty())
        return warn(console, "WARNING :: SWATINIT HAS NO EFFECT {}", why);
    requireRegions(console, grid, tables, initial);
    const std::vector<InitDepthTable> columns =
        equilibriumColumns(console, grid, tables, initial, options.hasWater);
    std::vector<RegionInverse> inverses;
    for (const SaturationTable& table : tables.regions) inverses.push_back(invert(table));
    const bool hasPcog = tables.hasGas && tables.PcogSpan > CapillarySpanLimit;
    std::map<std::pair<int, double>, int> made;
    CellId scaled = 0, left = 0, first = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0 || std::isnan(given[cell])) continue;
        const int region = grid.SATNUM[cell];
        const int equilibrium = grid.EQLNUM.empty() ? 1 : grid.EQLNUM[cell];
        const InitDepthTable& rows = columns[static_cast<std::size_t>(equilibrium) - 1];
        const SaturationTable& table = regionTable(tables, region);
        const double depth = grid.CellCentre(cell, 3), scale = grid.JFactor[cell];
        const CellView view{table, inverses[static_cast<std::size_t>(region) - 1],
                            scale, hasPcog ? scale : 0.0,
                            depth, pressuresAt(rows, depth)};
        const double factor = capillaryFactor(view, rows, tables.hasGas, given[cell]);
        if (factor == 0.0) {
            constexpr double Slack = 1e-3;  // of saturations that are given with a few digits
            if (given[cell] < table.SwAxis.back() - Slack && left++ == 0) first = cell;
            continue;
        }
        ++scaled;
        const auto [found, isNew] =
            made.try_emplace({region, factor}, static_cast<int>(tables.regions.size()) + 1);
        grid.SATNUM[cell] = found->second;
        if (isNew) addScaled(region, factor, tables);
    }
    both(console, "-> SWATINIT: capillary pressure of {} cells scaled, {} tables", scaled, made.size());
    if (left > 0)
        warn(
            console,
            "WARNING :: SWATINIT OF {} CELLS HAS NO EFFECT, BELOW THE CONTACT OR WITHOUT CAPILLARY PRESSURE; "
            "FIRST: GRID {}",
            left, first);
}

}  // namespace kvr
