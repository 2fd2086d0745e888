#include "deck/sections/saturation_tables.hpp"

#include "base/hard_stop.hpp"
#include "deck/sections/table_columns.hpp"
#include "fluid/phase_tables.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace kvr {

namespace {

constexpr std::size_t MatrixTable = 1, FractureTable = 2;

/// The tables of all saturation regions, one behind another.
template <class ColumnsOf>
void readRegionTables(SectionReader& reader, PropsRecords& records, const ColumnsOf& columnsOf) {
    beginTables(reader);
    for (int r = 0; r < std::max(records.options.maxRockTables, 1); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        const auto index = static_cast<std::size_t>(r);
        if (records.tables.regions.size() <= index) records.tables.regions.resize(index + 1);
        const std::array<TableColumn, MaxColumns> columns = columnsOf(records.tables.regions[index]);
        readTable(reader, index + 1, columns);
        requireRows(reader, columns[0].target->size());
    }
}

/// Capillary pressure is a pressure, or under JFUNC a number without unit.
TableColumn capillaryColumn(const SectionReader& reader, const PropsRecords& records, Column& column) {
    if (records.options.useJFunction) return {&column};
    return {&column, reader.units->pressure, reader.units->copyPressure};
}

std::array<TableColumn, MaxColumns> waterColumns(const SectionReader& reader, const PropsRecords& records,
                                                 SaturationTable& table) {
    return {{{&table.SwAxis}, {&table.Krw}, {&table.Krow}, capillaryColumn(reader, records, table.Pcow)}};
}

std::array<TableColumn, MaxColumns> gasColumns(const SectionReader& reader, const PropsRecords& records,
                                               SaturationTable& table) {
    return {{{&table.SgAxis}, {&table.Krg}, {&table.Krog}, capillaryColumn(reader, records, table.Pcog)}};
}

/// The table of the matrix is the first one, that of the fractures the second; rows and rules are those of
/// `keyword`.
template <class ColumnsOf>
void readContinuumTable(SectionReader& reader, PropsRecords& records, std::size_t table,
                        std::string_view keyword, const ColumnsOf& columnsOf) {
    if (records.options.maxRockTables < static_cast<int>(table)) {
        both(consoleOf(reader), "ERROR :: {} IS SATURATION TABLE {}, AND TABDIMS HAS ROOM FOR {}",
             reader.keyword, table, records.options.maxRockTables);
        stopAtPlace(reader);
    }
    beginTables(reader);
    reader.keyword = keyword;
    std::vector<SaturationTable>& regions = records.tables.regions;
    if (regions.size() < table) regions.resize(table);
    const auto columns = columnsOf(reader, records, regions[table - 1]);
    readTable(reader, table, columns);
    requireRows(reader, columns[0].target->size());
    records.tables.ofContinua = records.tables.ofContinua || table > 1;
}

/// Tables of one phase each, for all saturation regions.
template <class ColumnsOf>
void readPhaseTables(SectionReader& reader, PropsRecords& records, const ColumnsOf& columnsOf) {
    beginTables(reader);
    for (std::size_t r = 0; r < static_cast<std::size_t>(std::max(records.options.maxRockTables, 1)); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        std::vector<PhaseTables>& phases = records.tables.phaseTables;
        if (phases.size() <= r) phases.resize(r + 1);
        const std::vector<TableColumn> columns = columnsOf(phases[r]);
        readTable(reader, r + 1, columns);
        requireRows(reader, columns[0].target->size());
    }
}

}  // namespace

void readSwof(SectionReader& reader, PropsRecords& records) {
    readRegionTables(reader, records,
                     [&](SaturationTable& table) { return waterColumns(reader, records, table); });
}

void readSgof(SectionReader& reader, PropsRecords& records) {
    readRegionTables(reader, records,
                     [&](SaturationTable& table) { return gasColumns(reader, records, table); });
}

/// The same rows by the saturation of the liquids, which rises as that of the gas falls.
void readSlgof(SectionReader& reader, PropsRecords& records) {
    std::size_t read = 0;
    readRegionTables(reader, records, [&](SaturationTable& table) {
        ++read;
        return gasColumns(reader, records, table);
    });
    for (SaturationTable& table : std::span(records.tables.regions).first(read)) {
        for (double& saturation : table.SgAxis) saturation = 1.0 - saturation;
        for (Column* column : {&table.SgAxis, &table.Krg, &table.Krog, &table.Pcog})
            std::reverse(column->begin(), column->end());
    }
}

void readMatrixWater(SectionReader& reader, PropsRecords& records) {
    readContinuumTable(reader, records, MatrixTable, "SWOF", waterColumns);
}

void readMatrixGas(SectionReader& reader, PropsRecords& records) {
    readContinuumTable(reader, records, MatrixTable, "SGOF", gasColumns);
}

void readFractureWater(SectionReader& reader, PropsRecords& records) {
    readContinuumTable(reader, records, FractureTable, "SWOF", waterColumns);
}

void readFractureGas(SectionReader& reader, PropsRecords& records) {
    readContinuumTable(reader, records, FractureTable, "SGOF", gasColumns);
}

void readSwfn(SectionReader& reader, PropsRecords& records) {
    readPhaseTables(reader, records, [&](PhaseTables& table) {
        return std::vector<TableColumn>{
            {&table.Sw}, {&table.Krw}, capillaryColumn(reader, records, table.Pcow)};
    });
}

void readSgfn(SectionReader& reader, PropsRecords& records) {
    readPhaseTables(reader, records, [&](PhaseTables& table) {
        return std::vector<TableColumn>{
            {&table.Sg}, {&table.Krg}, capillaryColumn(reader, records, table.Pcog)};
    });
}

/// Oil with one other phase: water, or gas in a run without water.
void readSof2(SectionReader& reader, PropsRecords& records) {
    if (records.options.hasWater && records.options.hasGas)
        warnHere(reader,
                 "WARNING :: SOF2 IN A RUN WITH WATER AND GAS: OIL MOVES ALIKE BESIDE BOTH, SOF3 TELLS THEM "
                 "APART");
    readPhaseTables(reader, records, [&](PhaseTables& table) {
        return std::vector<TableColumn>{{&table.So}, {&table.Krow}};
    });
    for (PhaseTables& table : records.tables.phaseTables) table.Krog = table.Krow;
}

void readSof3(SectionReader& reader, PropsRecords& records) {
    readPhaseTables(reader, records, [&](PhaseTables& table) {
        return std::vector<TableColumn>{{&table.So}, {&table.Krow}, {&table.Krog}};
    });
}

}  // namespace kvr
