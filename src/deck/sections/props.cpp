#include "deck/sections/props.hpp"

#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/props_components.hpp"
#include "deck/sections/pvto.hpp"
#include "fluid/table_checks.hpp"
#include "fluid/table_print.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr std::size_t LeastTableRows = 2;
constexpr int MaxRegions = 10000;  // saturation regions that are held
constexpr double RankineAtZeroFahrenheit = 459.67;
constexpr double KelvinAtZeroCelsius = 273.15;

/// Deck Rs in the other unit system's unit, for the copies.
double copyGasRatio(const SectionReader& reader) {
    return isMetric(reader) ? GasRatioFactor : 1.0 / GasRatioFactor;
}

void begin(SectionReader& reader) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    copyKeyword(reader);
}

void endCopiedTable(SectionReader& reader) {
    if (reader.outputMetric) copyLine(reader, "/");
}

void requireRows(const SectionReader& reader, std::size_t rows) {
    if (rows >= LeastTableRows) return;
    both(consoleOf(reader), "ERROR :: INSUFFICIENT {} TABLE", reader.keyword);
    stopAtPlace(reader);
}

/// Behind the comments and slashes of one table no other one follows.
bool dataEnded(SectionReader& reader) {
    consumeSlashLines(reader);
    return nextLineIsKeyword(reader);
}

// --- tables of rows ------------------------------------------------------------------------------

/// A column that a table fills, with the factors of its numbers: deck to internal units, and to the
/// unit of the rewritten copy.
struct TableColumn {
    Column* target;
    double factor = 1.0;
    double copyFactor = 1.0;
};

constexpr std::size_t MaxColumns = 4;

/// One table, rows until its end; the columns are replaced.
void readTable(SectionReader& reader, std::span<const TableColumn> columns) {
    std::array<double, MaxColumns> row{};
    std::array<double, MaxColumns> copyFactors{};
    for (std::size_t c = 0; c < columns.size(); ++c) {
        columns[c].target->clear();
        copyFactors[c] = columns[c].copyFactor;
    }
    const std::span<double> values(row.data(), columns.size());
    RowLoop rows{RowSlash::EndsTable, RowStart::Number, {}, 0};
    while (nextTableRow(reader, rows)) {
        std::fill(row.begin(), row.end(), 0.0);
        rows.last = readDoubles(*reader.cursor, values);
        checkRead(reader, rows.last);
        if (rows.last.count == 0) continue;
        copyRow(reader, values, copyFactors);
        for (std::size_t c = 0; c < columns.size(); ++c)
            columns[c].target->push_back(values[c] * columns[c].factor);
    }
    endCopiedTable(reader);
}

/// Further tables of PVT regions, which are read and have no effect: one region serves all cells.
template <class ReadTable>
void dropFurtherTables(SectionReader& reader, int count, const ReadTable& readOne) {
    for (int t = 1; t < count && !dataEnded(reader); ++t) readOne();
}

void readDryTable(SectionReader& reader, PropsRecords& records, double fvfFactor, Column& pressure,
                  Column& fvf, Column& viscosity) {
    begin(reader);
    const UnitSystem& units = *reader.units;
    readTable(reader,
              std::array<TableColumn, 3>{
                  {{&pressure, units.pressure, units.copyPressure}, {&fvf, fvfFactor}, {&viscosity}}});
    requireRows(reader, pressure.size());
    std::array<Column, 3> dropped;
    dropFurtherTables(reader, records.options.maxPvtTables, [&] {
        readTable(reader, std::array<TableColumn, 3>{{{&dropped[0]}, {&dropped[1]}, {&dropped[2]}}});
    });
}

void readPvdo(SectionReader& reader, PropsRecords& records) {
    FluidTables& tables = records.tables;
    readDryTable(reader, records, 1.0, tables.OilPressure, tables.OilFvf, tables.OilViscosity);
    tables.OilRs.assign(tables.OilPressure.size(), 0.0);
    tables.UnderRows = 0;
}

void readPvdg(SectionReader& reader, PropsRecords& records) {
    FluidTables& tables = records.tables;
    readDryTable(reader, records, reader.units->gasFvf, tables.GasPressure, tables.GasFvf,
                 tables.GasViscosity);
}

void copyPvto(const SectionReader& reader, const PvtoTable& table) {
    const std::array<double, 4> factors{copyGasRatio(reader), reader.units->copyPressure, 1.0, 1.0};
    for (std::size_t r = 0; r < table.Rs.size(); ++r)
        copyRow(reader, std::array{table.Rs[r], table.pressure[r], table.fvf[r], table.viscosity[r]},
                factors);
    for (std::size_t r = 0; r < table.underPressure.size(); ++r)
        copyRow(reader, std::array{table.underPressure[r], table.underFvf[r], table.underViscosity[r]},
                std::span(factors).subspan(1));
    if (reader.outputMetric) copyLine(reader, "/");
}

void addScaled(const Column& from, double factor, Column& to) {
    for (const double value : from) to.push_back(value * factor);
}

void readPvto(SectionReader& reader, PropsRecords& records) {
    begin(reader);
    const PvtoTable table = readPvtoTable(reader);
    requireRows(reader, table.Rs.size() + table.underPressure.size());
    copyPvto(reader, table);
    dropFurtherTables(reader, records.options.maxPvtTables, [&] { readPvtoTable(reader); });

    const UnitSystem& units = *reader.units;
    FluidTables& tables = records.tables;
    for (Column* column : {&tables.OilRs, &tables.OilPressure, &tables.OilFvf, &tables.OilViscosity})
        column->clear();
    addScaled(table.Rs, units.gasRatio, tables.OilRs);
    tables.OilRs.resize(table.Rs.size() + table.underPressure.size(), tables.OilRs.back());
    addScaled(table.pressure, units.pressure, tables.OilPressure);
    addScaled(table.underPressure, units.pressure, tables.OilPressure);
    addScaled(table.fvf, 1.0, tables.OilFvf);
    addScaled(table.underFvf, 1.0, tables.OilFvf);
    addScaled(table.viscosity, 1.0, tables.OilViscosity);
    addScaled(table.underViscosity, 1.0, tables.OilViscosity);
    tables.UnderRows = static_cast<int>(table.underPressure.size());
}

/// The tables of all saturation regions, one behind another.
template <class ColumnsOf>
void readRegionTables(SectionReader& reader, PropsRecords& records, const ColumnsOf& columnsOf) {
    begin(reader);
    for (int r = 0; r < std::max(records.options.maxRockTables, 1); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        const auto index = static_cast<std::size_t>(r);
        if (records.tables.regions.size() <= index) records.tables.regions.resize(index + 1);
        const std::array<TableColumn, MaxColumns> columns = columnsOf(records.tables.regions[index]);
        readTable(reader, columns);
        requireRows(reader, columns[0].target->size());
    }
}

/// Capillary pressure is a pressure, or under JFUNC a number without unit.
TableColumn capillaryColumn(const SectionReader& reader, const PropsRecords& records, Column& column) {
    if (records.options.useJFunction) return {&column};
    return {&column, reader.units->pressure, reader.units->copyPressure};
}

void readSwof(SectionReader& reader, PropsRecords& records) {
    readRegionTables(reader, records, [&](SaturationTable& table) {
        return std::array<TableColumn, MaxColumns>{
            {{&table.SwAxis}, {&table.Krw}, {&table.Krow}, capillaryColumn(reader, records, table.Pcow)}};
    });
}

void readSgof(SectionReader& reader, PropsRecords& records) {
    readRegionTables(reader, records, [&](SaturationTable& table) {
        return std::array<TableColumn, MaxColumns>{
            {{&table.SgAxis}, {&table.Krg}, {&table.Krog}, capillaryColumn(reader, records, table.Pcog)}};
    });
}

// --- scalar records ------------------------------------------------------------------------------

struct ScalarItem {
    double* target;
    double factor = 1.0;
    double copyFactor = 1.0;
};

constexpr std::size_t MaxScalars = 5;

/// One record; items not given keep their values. Records of further PVT regions are dropped.
void readScalars(SectionReader& reader, int regionCount, std::span<const ScalarItem> items) {
    begin(reader);
    std::array<double, MaxScalars> deck{};
    std::array<double, MaxScalars> copyFactors{};
    for (std::size_t n = 0; n < items.size(); ++n) {
        deck[n] = *items[n].target / items[n].factor;
        copyFactors[n] = items[n].copyFactor;
    }
    const std::span<double> values(deck.data(), items.size());
    checkRead(reader, readDoubles(*reader.cursor, values));
    copyRow(reader, values, copyFactors);
    for (std::size_t n = 0; n < items.size(); ++n) *items[n].target = values[n] * items[n].factor;
    std::array<double, MaxScalars> dropped{};
    dropFurtherTables(reader, regionCount, [&] {
        skipCommentLines(reader);
        checkRead(reader, readDoubles(*reader.cursor, std::span(dropped.data(), items.size())));
    });
}

void readPvtw(SectionReader& reader, PropsRecords& records) {
    FluidTables& tables = records.tables;
    const UnitSystem& units = *reader.units;
    const double perPressure = 1.0 / units.pressure;
    const double copyPerPressure = 1.0 / units.copyPressure;
    readScalars(
        reader, records.options.maxPvtTables,
        std::array<ScalarItem, 5>{{{&tables.referencePressureWater, units.pressure, units.copyPressure},
                                   {&tables.waterFvf},
                                   {&tables.waterCompressibility, perPressure, copyPerPressure},
                                   {&tables.waterViscosity},
                                   {&tables.waterViscosibility, perPressure, copyPerPressure}}});
}

void readDensity(SectionReader& reader, PropsRecords& records) {
    FluidTables& tables = records.tables;
    const double factor = reader.units->density;
    const double copyFactor = reader.units->copyDensity;
    readScalars(reader, records.options.maxPvtTables,
                std::array<ScalarItem, 3>{{{&tables.oilDensity, factor, copyFactor},
                                           {&tables.waterDensity, factor, copyFactor},
                                           {&tables.gasDensity, factor, copyFactor}}});
}

void readRock(SectionReader& reader, PropsRecords& records) {
    FluidTables& tables = records.tables;
    const UnitSystem& units = *reader.units;
    readScalars(reader, records.options.maxPvtTables,
                std::array<ScalarItem, 2>{
                    {{&tables.rockReferencePressure, units.pressure, units.copyPressure},
                     {&tables.rockCompressibility, 1.0 / units.pressure, 1.0 / units.copyPressure}}});
}

double rankine(const SectionReader& reader, double deckTemperature) {
    if (isMetric(reader)) return (deckTemperature + KelvinAtZeroCelsius) * RankinePerKelvin;
    return deckTemperature + RankineAtZeroFahrenheit;
}

void readRtemp(SectionReader& reader, PropsRecords& records) {
    double temperature = 0.0;
    readScalars(reader, 1, std::array<ScalarItem, 1>{{{&temperature}}});
    records.tables.reservoirTemperature = rankine(reader, temperature);
}

void readStcond(SectionReader& reader, PropsRecords& records) {
    double temperature = 0.0;
    const UnitSystem& units = *reader.units;
    readScalars(reader, 1,
                std::array<ScalarItem, 2>{
                    {{&temperature}, {&records.tables.surfacePressure, units.pressure, units.copyPressure}}});
    records.tables.surfaceTemperature = rankine(reader, temperature);
}

void readTracer(SectionReader& reader, PropsRecords& records) {
    begin(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    while (nextTableRow(reader, rows)) {
        std::string name;
        std::string unit;
        const std::array<ListTarget, 2> targets{&name, &unit};
        rows.last = readList(*reader.cursor, targets);
        checkRead(reader, rows.last);
        if (rows.last.count == 0) continue;
        copyRow(reader, {{.text = name}, {.text = unit}});
        records.tables.tracerNames.push_back(name);
        records.tables.tracerUnits.push_back(unit);
    }
    endCopiedTable(reader);
}

// --- the section ---------------------------------------------------------------------------------

void readStone2(SectionReader& reader, PropsRecords& records) {
    announce(reader, "STONE2, oil with water and gas");
    records.tables.oilRule = OilRule::Stone2;
}

void readStone1(SectionReader& reader, PropsRecords& records) {
    warn(consoleOf(reader), "WARNING :: STONE1 is not known here, STONE2 is taken");
    readStone2(reader, records);
}

void skipRptprops(SectionReader& reader, PropsRecords&) {
    announce(reader, "RPTPROPS, skipped");
    announce(reader, "RPTPROPS, detailed information is below in this debug file");
    skipKeywordData(reader);
}

constexpr std::array PropsKeywords = {
    KeywordRow<PropsRecords>{"PVDO", readPvdo, "dead oil: pressure, Bo, viscosity"},
    KeywordRow<PropsRecords>{"PVTO", readPvto, "live oil: Rs, pressure, Bo, viscosity"},
    KeywordRow<PropsRecords>{"PVDG", readPvdg, "dry gas: pressure, Bg, viscosity"},
    KeywordRow<PropsRecords>{"SWOF", readSwof, "water and oil: Sw, krw, krow, pcow, a table per region"},
    KeywordRow<PropsRecords>{"SGOF", readSgof, "gas and oil: Sg, krg, krog, pcog, a table per region"},
    KeywordRow<PropsRecords>{"STONE2", readStone2, "oil with water and gas by Stone's second model", 6},
    KeywordRow<PropsRecords>{"STONE1", readStone1, "not known, `STONE2` with a warning", 6},
    KeywordRow<PropsRecords>{"STONE", readStone2, "`STONE2`"},
    KeywordRow<PropsRecords>{"PVTW", readPvtw,
                             "water: reference pressure, FVF, compressibility, viscosity, viscosibility"},
    KeywordRow<PropsRecords>{"DENSITY", readDensity, "surface densities of oil, water, gas"},
    KeywordRow<PropsRecords>{"ROCK", readRock, "rock: reference pressure, compressibility"},
    KeywordRow<PropsRecords>{"TRACER", readTracer, "rows of tracer name and unit word"},
    KeywordRow<PropsRecords>{"RTEMP", readRtemp, "reservoir temperature"},
    KeywordRow<PropsRecords>{"STCOND", readStcond, "surface temperature and pressure"},
    KeywordRow<PropsRecords>{"CNAMES", readCnames, "component names"},
    KeywordRow<PropsRecords>{"TCRIT", readTcrit, "critical temperatures"},
    KeywordRow<PropsRecords>{"PCRIT", readPcrit, "critical pressures"},
    KeywordRow<PropsRecords>{"VCRIT", readVcrit, "critical volumes"},
    KeywordRow<PropsRecords>{"MW", readMw, "molecular weights"},
    KeywordRow<PropsRecords>{"ACF", readAcf, "acentric factors"},
    KeywordRow<PropsRecords>{"BIC", readBic, "binary coefficients, lower triangle"},
    KeywordRow<PropsRecords>{"ZMFVD", readZmfvd, "rows of depth and mole fractions"},
    KeywordRow<PropsRecords>{"ZI", readZi, "mole fractions everywhere"},
    KeywordRow<PropsRecords>{"RPTPROPS", skipRptprops, "skipped; the tables always go to the log"},
};

constexpr IncludeTexts PropsIncludeTexts{"ERROR: INCLUDE File Open Error at PROPS section",
                                         "File I/O Error, in PROPS Section",
                                         "INCLUDE FILE FINISHED, PROPS SECTION"};

}  // namespace

void readProps(SectionReader& reader, PropsRecords& records) {
    const Console& console = consoleOf(reader);
    if (records.options.maxRockTables > MaxRegions) {
        both(console, "ERROR :: MORE THAN {} SATURATION TABLES", MaxRegions);
        stopAtPlace(reader);
    }
    dispatchSection<PropsRecords>(reader, records, PropsKeywords, PropsIncludeTexts);
    both(console, "-> Finished Reading PROPS. Move to Next Section");
    completeTables(console, records.options.maxRockTables, records.tables);
    printTables(console, *reader.units, records.tables);
}

}  // namespace kvr
