#include "report/co2_stores.hpp"

#include "base/hard_stop.hpp"
#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "fluid/saturation_functions.hpp"
#include "pressure/properties.hpp"
#include "pressure/solubility_update.hpp"
#include "report/block_zone.hpp"
#include "report/run_vectors.hpp"

#include <algorithm>
#include <new>

namespace kvr {

namespace {

constexpr int Digits = 12;

struct ZoneRow {
    OutputFile file;
    double (*value)(const Co2Stores&);
};
constexpr ZoneRow StoreZones[] = {
    {OutputFile::Co2FreeZone, freeOf},
    {OutputFile::Co2TrappedZone, [](const Co2Stores& stores) { return stores.trapped; }},
    {OutputFile::Co2DissolvedZone, [](const Co2Stores& stores) { return stores.dissolved; }},
    {OutputFile::Co2SolidZone, [](const Co2Stores& stores) { return stores.solid; }},
};

/// What a row of the stores is made of.
struct StoreFigures {
    Co2Stores stores;
    double initial = 0.0, injected = 0.0, produced = 0.0;  // through the wells since the start
};

struct StoreColumn {
    std::string_view name;
    Quantity quantity;
    double (*value)(const StoreFigures&);
};

/// What is missing or too much in the stores, as a share of all that was there and came.
double balanceOfStores(const StoreFigures& f) {
    const double come = f.initial + f.injected;
    return come > 0.0 ? (totalOf(f.stores) + f.produced - come) / come : 0.0;
}

constexpr StoreColumn Columns[] = {
    {"MOBILE", Quantity::GasTotal, [](const StoreFigures& f) { return f.stores.mobile; }},
    {"TRAPPED", Quantity::GasTotal, [](const StoreFigures& f) { return f.stores.trapped; }},
    {"DISSOLVED", Quantity::GasTotal, [](const StoreFigures& f) { return f.stores.dissolved; }},
    {"SOLID", Quantity::GasTotal, [](const StoreFigures& f) { return f.stores.solid; }},
    {"TOTAL", Quantity::GasTotal, [](const StoreFigures& f) { return totalOf(f.stores); }},
    {"INJECTED", Quantity::GasTotal, [](const StoreFigures& f) { return f.injected; }},
    {"PRODUCED", Quantity::GasTotal, [](const StoreFigures& f) { return f.produced; }},
    {"BALANCE", Quantity::Fraction, balanceOfStores},
};

constexpr std::string_view TableHead = "Time : FreeGas : Dissolved : Solid : Total =\n";

std::string csvHead(const UnitSystem& units) {
    std::string names = "TIME,DATE", words = "DAYS,YYYY-MM-DD";
    for (const StoreColumn& column : Columns) {
        names += fmt::format(",{}", column.name);
        words += fmt::format(",{}", deckUnit(units, column.quantity).word);
    }
    return names + "\n" + words + "\n";
}

std::string csvRow(const Simulation& run, const StoreFigures& figures) {
    const RunClock& clock = run.clock;
    std::string row =
        fmt::format("{:.10g},{:04}-{:02}-{:02}", clock.time, clock.year, clock.month, clock.day);
    for (const StoreColumn& column : Columns) {
        const double value = column.value(figures);
        const bool gas = column.quantity == Quantity::GasTotal;
        row += fmt::format(
            ",{:.{}g}",
            (gas ? toMscf(run.units, value) : value) * deckUnit(run.units, column.quantity).factor, Digits);
    }
    return row + "\n";
}

std::string tableRow(const Simulation& run, const Co2Stores& stores) {
    std::string row = fmt::format("{:.10g}", run.clock.time);
    for (const double volume : {freeOf(stores), stores.dissolved, stores.solid, totalOf(stores)})
        row += fmt::format(" {:.{}g}", toMscf(run.units, volume), Digits);
    return row + "\n";
}

/// Behind what stands in the file; the first time in place of it, under `head`.
void addRow(const Simulation& run, OutputFile name, const std::string& head, const std::string& row) {
    const bool first = run.balance.rows.size() <= 1;
    const std::string path = outputPath(run.outputs, outputName(name));
    std::FILE* file = first ? openForReplace(run.console, path) : openForAppend(run.console, path);
    const long before = lengthOf(file);
    if (first) std::fputs(head.c_str(), file);
    std::fputs(row.c_str(), file);
    closeAppended(run.console, file, before);
}

void addZone(const Simulation& run, OutputFile name, const CellValue& value) {
    const bool first = run.balance.rows.empty();
    const std::string path = outputPath(run.outputs, outputName(name));
    std::FILE* file = first ? openForReplace(run.console, path) : openForAppend(run.console, path);
    const long before = lengthOf(file);
    writeBlockZone(file, run.grid, zoneNodes(run.options), value, run.clock.time, rowOf(name).title);
    closeAppended(run.console, file, before);
}

void add(const Co2Stores& stores, Co2Stores& sum) {
    sum.mobile += stores.mobile;
    sum.trapped += stores.trapped;
    sum.dissolved += stores.dissolved;
    sum.solid += stores.solid;
}

}  // namespace

void allocateStores(const Console& console, const RunOptions& options, CellId count, CellState& state) {
    if (!options.co2Model) return;
    try {
        state.SolidGas.assign(count, 0.0);
    } catch (const std::bad_alloc&) {
        lineToBoth(console, "Error :: Rs - Depth table");
        hardStop(console);
    }
}

Co2Stores storesOfCell(const GridModel& grid, const FluidTables& tables, const CellState& state,
                       const CellAmounts& carried, CellId cell) {
    Co2Stores stores;
    if (!tables.hasGas || grid.Active[cell] == 0) return stores;
    const double volume = state.PoreVolume[cell];
    const ConservedAmounts shown = shownAmounts(state, cell);
    const bool carries = !carried.gas.empty();
    const GasShares shares = gasShares(state, cell, shown.gas * volume + (carries ? carried.gas[cell] : 0.0),
                                       shown.oil * volume + (carries ? carried.oil[cell] : 0.0));
    const double critical = regionTable(tables, grid.SATNUM[cell]).CriticalSg;
    stores.trapped =
        state.Sg[cell] <= critical ? shares.free : std::min(shares.free, volume * critical / state.Bg[cell]);
    stores.mobile = shares.free - stores.trapped;
    stores.dissolved = shares.dissolved;
    stores.solid = state.SolidGas.empty() ? 0.0 : state.SolidGas[cell];
    return stores;
}

Co2Stores sumStores(const Simulation& s) {
    Co2Stores sum;
    for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
        add(storesOfCell(s.grid, s.fluids, s.state, s.pressure.carried, cell), sum);
    return sum;
}

void reportStores(const Simulation& run) {
    if (!isOn(run.options, OutputSwitch::Co2)) return;
    const BalanceRecord& balance = run.balance;
    const StoreFigures figures{sumStores(run), balance.initial.gas, balance.field.injected.gas,
                               balance.field.produced.gas};
    addRow(run, OutputFile::Co2Balance, std::string(TableHead), tableRow(run, figures.stores));
    addRow(run, OutputFile::Co2Stores, csvHead(run.units), csvRow(run, figures));
}

void addStoreZones(const Simulation& run) {
    if (!isOn(run.options, OutputSwitch::Co2Tecplot)) return;
    for (const ZoneRow& row : StoreZones)
        addZone(run, row.file, [&](CellId cell) {
            const Co2Stores stores =
                storesOfCell(run.grid, run.fluids, run.state, run.pressure.carried, cell);
            return toMscf(run.units, row.value(stores));
        });
    addZone(run, OutputFile::Co2KxZone, [&](CellId cell) { return run.grid.PERMX[cell]; });
    addZone(run, OutputFile::Co2PorosityZone, [&](CellId cell) { return run.state.PoreFraction[cell]; });
}

}  // namespace kvr
