#include "fluid/table_checks.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kvr {

namespace {

// What a deck leaves open becomes one of these.
constexpr double LowDefaultPressure = 10.0;       // psia, first row of a default PVT table
constexpr double HighDefaultPressure = 100000.0;  // psia, its second row
constexpr double DefaultOilDensity = 37.4;        // lb/ft3
constexpr double DefaultWaterDensity = 64.23;     // lb/ft3
constexpr double DefaultGasDensity = 0.11;        // lb/ft3
constexpr double LeastGiven = 1e-20;              // a scalar at or below this was not given
constexpr double LeastColumnValue = 1e-10;        // FVF or viscosity below this has no sound reciprocal

constexpr std::size_t BucketsPerRow = 4;  // of a saturation axis search
constexpr std::size_t MostBuckets = 4096;

double reciprocal(double value) {
    return 1.0 / std::max(value, LeastColumnValue);
}

int rowsOf(const Column& column) {
    return static_cast<int>(column.size());
}

void fillReciprocals(const Column& fvf, const Column& viscosity, Column& invFvf, Column& invFvfVisc) {
    invFvf.resize(fvf.size());
    invFvfVisc.resize(fvf.size());
    for (std::size_t r = 0; r < fvf.size(); ++r) {
        invFvf[r] = reciprocal(fvf[r]);
        invFvfVisc[r] = reciprocal(fvf[r] * viscosity[r]);
    }
}

/// Steps and slopes of the rows behind the last Rs; a row that does not rise in pressure adds nothing.
void fillUnderSaturatedBlock(FluidTables& tables) {
    const auto rows = static_cast<std::size_t>(tables.UnderRows);
    tables.UnderPressureStep.assign(rows, 0.0);
    tables.UnderFvfSlope.assign(rows, 0.0);
    tables.UnderViscSlope.assign(rows, 0.0);
    for (std::size_t k = 0; k < rows; ++k) {
        const std::size_t row = static_cast<std::size_t>(tables.SatRows) + k;
        const double step = tables.OilPressure[row] - tables.OilPressure[row - 1];
        if (step <= 0.0) continue;
        tables.UnderPressureStep[k] = step;
        tables.UnderFvfSlope[k] = (tables.OilFvf[row] - tables.OilFvf[row - 1]) / step;
        tables.UnderViscSlope[k] = (tables.OilViscosity[row] - tables.OilViscosity[row - 1]) / step;
    }
}

void finishPvt(FluidTables& tables) {
    tables.OilRows = rowsOf(tables.OilPressure);
    tables.GasRows = rowsOf(tables.GasPressure);
    tables.OilRs.resize(tables.OilPressure.size(), 0.0);
    tables.UnderRows = std::clamp(tables.UnderRows, 0, std::max(tables.OilRows - 1, 0));
    tables.SatRows = tables.OilRows - tables.UnderRows;
    tables.MaxRs = tables.OilRs.empty() ? 0.0 : *std::max_element(tables.OilRs.begin(), tables.OilRs.end());
    fillReciprocals(tables.OilFvf, tables.OilViscosity, tables.OilInvFvf, tables.OilInvFvfVisc);
    fillReciprocals(tables.GasFvf, tables.GasViscosity, tables.GasInvFvf, tables.GasInvFvfVisc);
    fillUnderSaturatedBlock(tables);
    if (tables.underRows.first.size() != static_cast<std::size_t>(tables.SatRows) + 1) tables.underRows = {};
}

void fillInverseSteps(const Column& axis, Column& inverse) {
    inverse.assign(axis.size() - 1, 0.0);
    for (std::size_t r = 0; r + 1 < axis.size(); ++r) {
        const double width = axis[r + 1] - axis[r];
        if (width > 0.0) inverse[r] = 1.0 / width;
    }
}

/// Buckets and, for each, the last row of a lower bucket.
AxisSearch searchOf(const Column& axis, bool holdsEnds) {
    AxisSearch search;
    if (axis.empty()) return search;
    fillInverseSteps(axis, search.inverseStep);
    if (holdsEnds) {
        search.least = axis.front();
        search.most = axis.back();
    }
    const std::size_t buckets = std::min(BucketsPerRow * axis.size(), MostBuckets);
    const double length = axis.back() - axis.front();
    search.start = axis.front();
    search.lastBucket = static_cast<double>(buckets - 1);
    if (length > 0.0) search.bucketsPerUnit = static_cast<double>(buckets) / length;
    search.firstRow.assign(buckets, 0);
    std::size_t row = 0;
    for (std::size_t b = 1; b < buckets; ++b) {
        while (row + 2 < axis.size() && bucketOf(search, axis[row + 1]) < b) ++row;
        search.firstRow[b] = static_cast<std::uint32_t>(row);
    }
    return search;
}

/// Highest axis value whose relative permeability is nil, at least the first row's. A phase that never
/// flows has the first row's: none of its amounts can be called movable or held back.
double highestImmobile(const Column& axis, const Column& relPerm) {
    if (axis.empty()) return 0.0;
    if (*std::max_element(relPerm.begin(), relPerm.end()) <= MachineEpsilon) return axis.front();
    double found = axis.front();
    for (std::size_t r = 0; r < axis.size(); ++r)
        if (relPerm[r] <= MachineEpsilon) found = std::max(found, axis[r]);
    return found;
}

/// 1 - Sw of the lowest row where oil does not flow, at least 1 - Sw of the last row.
double residualOil(const SaturationTable& table) {
    if (table.SwAxis.empty()) return 0.0;
    const double least = 1.0 - table.SwAxis.back();
    for (std::size_t r = 0; r < table.SwAxis.size(); ++r)
        if (table.Krow[r] <= MachineEpsilon) return std::max(least, 1.0 - table.SwAxis[r]);
    return least;
}

double span(const Column& capillary) {
    return capillary.empty() ? 0.0 : std::abs(capillary.front()) + std::abs(capillary.back());
}

void copySingleSet(FluidTables& tables) {
    const SaturationTable& first = tables.regions.front();
    tables.SwAxisSingle = first.SwAxis;
    tables.KrwSingle = first.Krw;
    tables.KrowSingle = first.Krow;
    tables.SgAxisSingle = first.SgAxis;
    tables.KrgSingle = first.Krg;
    tables.KrogSingle = first.Krog;
}

// --- completion ----------------------------------------------------------------------------------

void defaultPvt(Column& pressure, Column& fvf, Column& viscosity) {
    pressure = {LowDefaultPressure, HighDefaultPressure};
    fvf = {1.0, 1.0};
    viscosity = {1.0, 1.0};
}

void completePvt(const Console& console, FluidTables& tables) {
    if (tables.GasPressure.empty()) {
        both(console, "Gas PVT-Table was not given");
        defaultPvt(tables.GasPressure, tables.GasFvf, tables.GasViscosity);
    }
    if (tables.OilPressure.empty()) {
        both(console, "OIL PVT-Table was not given");
        defaultPvt(tables.OilPressure, tables.OilFvf, tables.OilViscosity);
        tables.OilRs = {0.0, 0.0};
        tables.UnderRows = 0;
    }
}

/// Gas that does not flow, and oil by the water table alone.
void defaultGasTable(SaturationTable& table) {
    table.SgAxis = {0.0, 1.0};
    table.Krg = {0.0, 0.0};
    table.Krog = {table.Krow.front(), table.Krow.front()};
    table.Pcog = {0.0, 0.0};
}

void defaultWaterTable(SaturationTable& table) {
    table.SwAxis = {0.0, 1.0};
    table.Krw = {0.0, 1.0};
    table.Krow = {1.0, 0.0};
    table.Pcow = {0.0, 0.0};
}

void completeRegions(const Console& console, int regionCount, FluidTables& tables) {
    const std::size_t count = std::max<std::size_t>(tables.regions.size(), std::max(regionCount, 1));
    tables.regions.resize(count);
    for (SaturationTable& table : tables.regions) {
        const bool noGas = table.SgAxis.empty();
        if (noGas) both(console, "Gas RelpPerm-Table was not given");
        if (table.SwAxis.empty()) {
            both(console, "OIL RelpPerm-Table was not given");
            defaultWaterTable(table);
        }
        if (noGas) defaultGasTable(table);
        table.holdsEnds = tables.holdsEnds;
        table.oilRule = noGas ? OilRule::Stone2 : tables.oilRule;  // by it oil follows the water table alone
    }
}

void completeReferencePressures(const Console& console, FluidTables& tables) {
    bool repaired = false;
    for (double* pressure : {&tables.referencePressureWater, &tables.rockReferencePressure}) {
        if (*pressure > LeastGiven) continue;
        *pressure = StandardPressure;
        repaired = true;
    }
    if (repaired) warn(console, "WARNING :: Given reference pressure is not realistic. -> Set ti 14.6 psi");
}

/// A scalar that was not given gets `value`, with its line.
void completeScalar(const Console& console, double value, std::string_view line, double& scalar) {
    if (scalar > LeastGiven) return;
    scalar = value;
    lineToBoth(console, line);
    noteWarning(console, line, line);
}

void completeScalars(const Console& console, FluidTables& tables) {
    if (tables.rockCompressibility <= LeastGiven) {
        screen(console,
               "WARNING :: Rock compressibility was not given, or less than 1.E-20. -> Check Input Deck");
        constexpr std::string_view Logged =
            "WARNING :: Rock compressibility was not given, or less than 1.E-20";
        lineToLog(console, Logged);
        noteWarning(console, Logged, Logged);
    }
    completeReferencePressures(console, tables);
    completeScalar(console, 1.0,
                   "WARNING :: Given water formation volume factor is not realistic -> Check input",
                   tables.waterFvf);
    completeScalar(console, 1.0, "WARNING :: Given water viscosity is not realistic -> Check input",
                   tables.waterViscosity);
    completeScalar(console, LeastGiven,
                   "WARNING :: Given water compressibility is not realistic -> Set to 1.D-20, Check input",
                   tables.waterCompressibility);
    if (tables.oilDensity <= 0.0) tables.oilDensity = DefaultOilDensity;
    if (tables.waterDensity <= 0.0) tables.waterDensity = DefaultWaterDensity;
    if (tables.gasDensity <= 0.0) tables.gasDensity = DefaultGasDensity;
}

/// What a further PVT region does not give it has from the region before, which is told.
void fillFromRegionBefore(const Console& console, std::size_t number, const FluidTables& before,
                          FluidTables& region) {
    const auto copy = [&](std::string_view what, auto... columns) {
        ((region.*columns = before.*columns), ...);
        warn(console, "WARNING :: PVT REGION {} HAS NO {}, THAT OF THE REGION BEFORE IS TAKEN", number, what);
    };
    if (region.OilPressure.empty() && !before.OilPressure.empty())
        copy("TABLE OF OIL", &FluidTables::OilPressure, &FluidTables::OilFvf, &FluidTables::OilViscosity,
             &FluidTables::OilRs, &FluidTables::UnderRows);
    if (region.GasPressure.empty() && before.hasGas)
        copy("TABLE OF GAS", &FluidTables::GasPressure, &FluidTables::GasFvf, &FluidTables::GasViscosity);
    if (region.GasPressure.empty())
        ((region.GasPressure = before.GasPressure), (region.GasFvf = before.GasFvf),
         (region.GasViscosity = before.GasViscosity));
    if (region.waterFvf <= LeastGiven)
        copy("PVTW", &FluidTables::referencePressureWater, &FluidTables::waterFvf,
             &FluidTables::waterCompressibility, &FluidTables::waterViscosity,
             &FluidTables::waterViscosibility);
    if (region.rockReferencePressure <= LeastGiven && region.rockCompressibility <= LeastGiven)
        copy("ROCK", &FluidTables::rockReferencePressure, &FluidTables::rockCompressibility);
    if (region.oilDensity <= 0.0 && region.waterDensity <= 0.0 && region.gasDensity <= 0.0)
        copy("DENSITY", &FluidTables::oilDensity, &FluidTables::waterDensity, &FluidTables::gasDensity);
}

void completeFurtherRegions(const Console& console, FluidTables& tables) {
    const FluidTables* before = &tables;
    std::size_t number = 1;
    for (FluidTables& region : tables.furtherPvt) {
        region.hasGas = tables.hasGas;
        fillFromRegionBefore(console, ++number, *before, region);
        before = &region;
    }
}

}  // namespace

/// Without a gas phase no gas is held back, whatever a gas table that stands in the deck says.
void finishRegion(bool hasGas, SaturationTable& table) {
    table.SwSearch = searchOf(table.SwAxis, table.holdsEnds);
    table.SgSearch = searchOf(table.SgAxis, table.holdsEnds);
    table.InverseOilAtConnate = table.Krow.empty() ? 0.0 : 1.0 / std::max(0.0, table.Krow.front());
    table.ConnateSw = highestImmobile(table.SwAxis, table.Krw);
    table.CriticalSg = hasGas ? highestImmobile(table.SgAxis, table.Krg) : 0.0;
    table.ResidualSo = residualOil(table);
}

void finishTables(FluidTables& tables) {
    finishPvt(tables);
    for (FluidTables& region : tables.furtherPvt) finishPvt(region);
    for (SaturationTable& table : tables.regions) finishRegion(tables.hasGas, table);
    if (tables.regions.empty()) return;
    tables.PcowSpan = span(tables.regions.front().Pcow);
    tables.PcogSpan = span(tables.regions.front().Pcog);
    copySingleSet(tables);
}

void switchCapillarityByAllRegions(FluidTables& tables) {
    for (const SaturationTable& table : tables.regions) {
        tables.PcowSpan = std::max(tables.PcowSpan, span(table.Pcow));
        tables.PcogSpan = std::max(tables.PcogSpan, span(table.Pcog));
    }
}

void completeTables(const Console& console, int regionCount, FluidTables& tables) {
    completePvt(console, tables);
    completeRegions(console, regionCount, tables);
    completeScalars(console, tables);
    completeFurtherRegions(console, tables);
    finishTables(tables);
    if (BubblePoint(tables, tables.MaxRs) > 0.0) return;
    both(console, "WARNING :: Dead oil PVT table confirmed..");
    both(console, "Bubble point pressure will be set to zero");
    both(console, "within given table data");
}

}  // namespace kvr
