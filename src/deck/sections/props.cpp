#include "deck/sections/props.hpp"

#include "base/constants.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/source_copies.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/aquifer_rows.hpp"
#include "deck/sections/component_rules.hpp"
#include "deck/sections/end_point_arrays.hpp"
#include "deck/sections/props_components.hpp"
#include "deck/sections/props_tables.hpp"
#include "deck/sections/pvto.hpp"
#include "deck/sections/saturation_tables.hpp"
#include "deck/sections/table_columns.hpp"
#include "deck/sections/table_rules.hpp"
#include "fluid/phase_tables.hpp"
#include "fluid/table_checks.hpp"
#include "fluid/table_print.hpp"
#include "fluid/under_saturated.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

namespace kvr {

namespace {

constexpr int MaxRegions = 10000;  // saturation regions that are held
constexpr double RankineAtZeroFahrenheit = 459.67;
constexpr double KelvinAtZeroCelsius = 273.15;

/// The record of a PVT region, 0-based.
FluidTables& pvtRegion(FluidTables& tables, std::size_t region) {
    if (region == 0) return tables;
    if (tables.furtherPvt.size() < region) tables.furtherPvt.resize(region);
    return tables.furtherPvt[region - 1];
}

/// Calls `readOne(tables)` for every PVT region that the deck gives data for.
template <class ReadOne>
void readPvtRegions(SectionReader& reader, PropsRecords& records, const ReadOne& readOne) {
    beginTables(reader);
    const auto count = static_cast<std::size_t>(std::max(records.options.maxPvtTables, 1));
    for (std::size_t r = 0; r < count; ++r) {
        if (r > 0 && dataEnded(reader)) return;
        readOne(pvtRegion(records.tables, r), r + 1);
    }
}

/// The three columns of a dry table in a record of tables.
struct DryColumns {
    Column FluidTables::*pressure;
    Column FluidTables::*fvf;
    Column FluidTables::*viscosity;
    double fvfFactor = 1.0;
    double fvfCopyFactor = 1.0;
};

void readDryTable(SectionReader& reader, const DryColumns& dry, std::size_t table, FluidTables& tables) {
    const UnitSystem& units = *reader.units;
    readTable(reader, table,
              std::array<TableColumn, 3>{{{&(tables.*dry.pressure), units.pressure, units.copyPressure},
                                          {&(tables.*dry.fvf), dry.fvfFactor, dry.fvfCopyFactor},
                                          {&(tables.*dry.viscosity)}}});
    requireRows(reader, (tables.*dry.pressure).size());
}

void readPvdo(SectionReader& reader, PropsRecords& records) {
    const DryColumns oil{&FluidTables::OilPressure, &FluidTables::OilFvf, &FluidTables::OilViscosity};
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        readDryTable(reader, oil, table, tables);
        setDeadOil(tables);
    });
}

void readPvcdo(SectionReader& reader, PropsRecords& records) {
    const UnitSystem& units = *reader.units;
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t) {
        skipCommentLines(reader);
        std::array<double, 5> item{0.0, 1.0, 0.0, 1.0, 0.0};
        checkRead(reader, readDoubles(*reader.cursor, item));
        copyRow(reader, item,
                std::array{units.copyPressure, 1.0, 1.0 / units.copyPressure, 1.0, 1.0 / units.copyPressure});
        item[0] *= units.pressure;
        item[2] /= units.pressure;
        item[4] /= units.pressure;
        if (!(item[1] > 0.0) || !(item[3] > 0.0)) {
            both(consoleOf(reader),
                 "ERROR :: PVCDO FORMATION VOLUME FACTOR {} AND VISCOSITY {} MUST BE ABOVE 0",
                 number(item[1]), number(item[3]));
            stopAtPlace(reader);
        }
        tabulateConstantOil(item, tables);
    });
}

void readPvdg(SectionReader& reader, PropsRecords& records) {
    const DryColumns gas{&FluidTables::GasPressure, &FluidTables::GasFvf, &FluidTables::GasViscosity,
                         reader.units->gasFvf, inOtherUnits(reader, ItemUnit::GasFvf, 1.0)};
    readPvtRegions(reader, records,
                   [&](FluidTables& tables, std::size_t table) { readDryTable(reader, gas, table, tables); });
}

void copyPvto(const SectionReader& reader, const PvtoTable& table) {
    const double pressure = reader.units->copyPressure;
    for (const std::vector<double>& record : table.records) {
        std::vector<double> factors(record.size(), 1.0);
        factors[0] = inOtherUnits(reader, ItemUnit::GasRatio, 1.0);
        for (std::size_t n = 1; n < factors.size(); n += PvtoRowValues) factors[n] = pressure;
        copyRow(reader, record, factors);
    }
    copyTableEnd(reader);
}

void addScaled(const Column& from, double factor, Column& to) {
    for (const double value : from) to.push_back(value * factor);
}

void takeLiveOil(const UnitSystem& units, const PvtoTable& table, FluidTables& tables) {
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
    std::vector<OilRowsOfRs> records;
    for (const std::vector<double>& record : table.records) {
        OilRowsOfRs& rows = records.emplace_back(record.begin() + 1, record.end());
        for (std::size_t n = 0; n < rows.size(); n += PvtoRowValues) rows[n] *= units.pressure;
    }
    tables.underRows = underSaturatedRows(records);
}

void readPvto(SectionReader& reader, PropsRecords& records) {
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        const PvtoTable live = readPvtoTable(reader);
        requireRows(reader, live.Rs.size() + live.underPressure.size());
        checkTable(reader, table, {{&live.Rs, &live.pressure, &live.fvf, &live.viscosity}, live.lines});
        checkRowsOfRs(reader, table, live);
        copyPvto(reader, live);
        takeLiveOil(*reader.units, live, tables);
    });
}

// --- scalar records ------------------------------------------------------------------------------

struct ScalarItem {
    double* target;
    double factor = 1.0;
    double copyFactor = 1.0;
};

constexpr std::size_t MaxScalars = 5;

/// One record; items not given keep their values.
void readScalarRow(SectionReader& reader, std::size_t table, std::span<const ScalarItem> items) {
    skipCommentLines(reader);
    std::array<double, MaxScalars> deck{};
    std::array<double, MaxScalars> copyFactors{};
    for (std::size_t n = 0; n < items.size(); ++n) {
        deck[n] = *items[n].target / items[n].factor;
        copyFactors[n] = items[n].copyFactor;
    }
    const std::span<double> values(deck.data(), items.size());
    checkRead(reader, readDoubles(*reader.cursor, values));
    checkRecord(reader, table, values);
    copyRow(reader, values, copyFactors);
    for (std::size_t n = 0; n < items.size(); ++n) *items[n].target = values[n] * items[n].factor;
}

void readPvtw(SectionReader& reader, PropsRecords& records) {
    const UnitSystem& units = *reader.units;
    const double perPressure = 1.0 / units.pressure;
    const double copyPerPressure = 1.0 / units.copyPressure;
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        readScalarRow(
            reader, table,
            std::array<ScalarItem, 5>{{{&tables.referencePressureWater, units.pressure, units.copyPressure},
                                       {&tables.waterFvf},
                                       {&tables.waterCompressibility, perPressure, copyPerPressure},
                                       {&tables.waterViscosity},
                                       {&tables.waterViscosibility, perPressure, copyPerPressure}}});
    });
}

void readDensity(SectionReader& reader, PropsRecords& records) {
    const double factor = reader.units->density;
    const double copyFactor = reader.units->copyDensity;
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        readScalarRow(reader, table,
                      std::array<ScalarItem, 3>{{{&tables.oilDensity, factor, copyFactor},
                                                 {&tables.waterDensity, factor, copyFactor},
                                                 {&tables.gasDensity, factor, copyFactor}}});
    });
}

/// Gravities in place of densities: of oil in degrees API, of water to water and of gas to air at 60 F and
/// one atmosphere.
void readGravity(SectionReader& reader, PropsRecords& records) {
    constexpr double WaterDensity = 62.366, AirDensity = 0.0763;  // lb/ft3
    constexpr double ApiOfWater = 141.5, ApiShift = 131.5;        // gravity = 141.5 / (131.5 + degrees)
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        double degrees = 0.0, water = 1.0, gas = 0.0;
        readScalarRow(reader, table, std::array<ScalarItem, 3>{{{&degrees}, {&water}, {&gas}}});
        tables.oilDensity = WaterDensity * ApiOfWater / (ApiShift + degrees);
        tables.waterDensity = WaterDensity * water;
        tables.gasDensity = AirDensity * gas;
    });
}

void readRock(SectionReader& reader, PropsRecords& records) {
    const UnitSystem& units = *reader.units;
    readPvtRegions(reader, records, [&](FluidTables& tables, std::size_t table) {
        readScalarRow(reader, table,
                      std::array<ScalarItem, 2>{
                          {{&tables.rockReferencePressure, units.pressure, units.copyPressure},
                           {&tables.rockCompressibility, 1.0 / units.pressure, 1.0 / units.copyPressure}}});
    });
}

/// One record that is copied as it stands: temperatures are no multiples of each other.
void readPlainRow(SectionReader& reader, std::span<double> values) {
    skipCommentLines(reader);
    checkRead(reader, readDoubles(*reader.cursor, values));
    checkRecord(reader, 1, values);
}

double rankine(const SectionReader& reader, double deckTemperature) {
    if (isMetric(reader)) return (deckTemperature + KelvinAtZeroCelsius) * RankinePerKelvin;
    return deckTemperature + RankineAtZeroFahrenheit;
}

void readRtemp(SectionReader& reader, PropsRecords& records) {
    announce(reader, reader.keyword);
    std::array<double, 1> item{};
    readPlainRow(reader, item);
    records.tables.reservoirTemperature = rankine(reader, item[0]);
}

void readStcond(SectionReader& reader, PropsRecords& records) {
    announce(reader, reader.keyword);
    const double perUnit = reader.units->pressure;
    std::array<double, 2> item{0.0, records.tables.surfacePressure / perUnit};
    readPlainRow(reader, item);
    records.tables.surfacePressure = item[1] * perUnit;
    records.tables.surfaceTemperature = rankine(reader, item[0]);
}

void readTracer(SectionReader& reader, PropsRecords& records) {
    beginTables(reader);
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
    copyTableEnd(reader);
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

void readAqutab(SectionReader& reader, PropsRecords& records) {
    readInfluenceTable(reader, records.tables);
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
    KeywordRow<PropsRecords>{"SLGOF", readSlgof,
                             "the same by liquid saturation: Sw + So, krg, krog, pcog, a table per region"},
    KeywordRow<PropsRecords>{"swm", readMatrixWater,
                             "water and oil in the matrix of two continua: one table, rows as of `SWOF`"},
    KeywordRow<PropsRecords>{"sgm", readMatrixGas, "gas and oil in the matrix, rows as of `SGOF`"},
    KeywordRow<PropsRecords>{
        "swf", readFractureWater,
        "water and oil in the fractures; their cells are of region 2 then, unless `SATNUM` says otherwise"},
    KeywordRow<PropsRecords>{"sgf", readFractureGas, "gas and oil in the fractures, alike"},
    KeywordRow<PropsRecords>{"PVCDO", readPvcdo,
                             "dead oil of constant compressibility: reference pressure, Bo, compressibility, "
                             "viscosity, viscosibility"},
    KeywordRow<PropsRecords>{"SWFN", readSwfn, "water: Sw, krw, pcow, a table per region"},
    KeywordRow<PropsRecords>{"SGFN", readSgfn, "gas: Sg, krg, pcog, a table per region"},
    KeywordRow<PropsRecords>{"SOF2", readSof2, "oil with one other phase: So, kro, a table per region"},
    KeywordRow<PropsRecords>{"SOF3", readSof3,
                             "oil: So, kro with water, kro with gas and connate water, a table per region"},
    KeywordRow<PropsRecords>{"STONE2", readStone2, "oil with water and gas by Stone's second model", 6},
    KeywordRow<PropsRecords>{"STONE1", readStone1, "not known, `STONE2` with a warning", 6},
    KeywordRow<PropsRecords>{"STONE", readStone2, "`STONE2`"},
    KeywordRow<PropsRecords>{"PVTW", readPvtw,
                             "water: reference pressure, FVF, compressibility, viscosity, viscosibility"},
    KeywordRow<PropsRecords>{"DENSITY", readDensity, "surface densities of oil, water, gas"},
    KeywordRow<PropsRecords>{
        "GRAVITY", readGravity,
        "in place of `DENSITY`: gravity of oil in degrees API, of water to water, of gas to air"},
    KeywordRow<PropsRecords>{
        "AQUTAB", readAqutab,
        "dimensionless time and pressure of an aquifer, the next table from number 2 on"},
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
    KeywordRow<PropsRecords>{"SWL", readEndPoints, "end points by cell, with `ENDSCALE`: least water"},
    KeywordRow<PropsRecords>{"SWCR", readEndPoints, "highest water that does not flow"},
    KeywordRow<PropsRecords>{"SWU", readEndPoints, "greatest water"},
    KeywordRow<PropsRecords>{"SGL", readEndPoints, "least gas"},
    KeywordRow<PropsRecords>{"SGCR", readEndPoints, "highest gas that does not flow"},
    KeywordRow<PropsRecords>{"SGU", readEndPoints, "greatest gas"},
    KeywordRow<PropsRecords>{"SOWCR", readEndPoints, "oil that does not flow beside water"},
    KeywordRow<PropsRecords>{"SOGCR", readEndPoints, "oil that does not flow beside gas"},
    KeywordRow<PropsRecords>{"KRW", readEndPoints, "greatest krw"},
    KeywordRow<PropsRecords>{"KRO", readEndPoints, "greatest kro"},
    KeywordRow<PropsRecords>{"KRG", readEndPoints, "greatest krg"},
    KeywordRow<PropsRecords>{"KRWR", readEndPoints, "krw where oil stops flowing"},
    KeywordRow<PropsRecords>{"KRORW", readEndPoints, "kro where water stops flowing"},
    KeywordRow<PropsRecords>{"KRGR", readEndPoints, "krg where oil stops flowing"},
    KeywordRow<PropsRecords>{"KRORG", readEndPoints, "kro where gas stops flowing"},
    KeywordRow<PropsRecords>{"PCW", readEndPoints, "greatest capillary pressure of water"},
    KeywordRow<PropsRecords>{"PCG", readEndPoints, "greatest capillary pressure of gas"},
    KeywordRow<PropsRecords>{
        "SWATINIT", readInitialWater,
        "with `ENDSCALE`: the water that `EQUIL` is to give each cell, by scaling its Pcow"},
    KeywordRow<PropsRecords>{"SCALECRS", readScalecrs,
                             "`YES`: relative permeabilities are scaled by three points, `NO`: by two"},
    KeywordRow<PropsRecords>{"EQUALS", readEndPointEquals, "sets arrays of end points over boxes"},
    KeywordRow<PropsRecords>{"MULTIPLY", readEndPointMultiply, "multiplies them"},
    KeywordRow<PropsRecords>{"ADD", readEndPointAdd, "adds to them"},
    KeywordRow<PropsRecords>{"COPY", readEndPointCopy, "copies one to another"},
    KeywordRow<PropsRecords>{"RPTPROPS", skipRptprops, "skipped; the tables always go to the log"},
};

constexpr IncludeTexts PropsIncludeTexts{"ERROR: INCLUDE File Open Error at PROPS section",
                                         "File I/O Error, in PROPS Section",
                                         "INCLUDE FILE FINISHED, PROPS SECTION"};

/// Water of a deck that has none: its properties are asked for in places, and change nothing.
void fillAbsentWater(FluidTables& tables) {
    constexpr double Compressibility = 1e-6;  // 1/psi
    for (double* value : {&tables.waterFvf, &tables.waterViscosity})
        if (!(*value > 0.0)) *value = 1.0;
    if (!(tables.referencePressureWater > 0.0)) tables.referencePressureWater = StandardPressure;
    if (!(tables.waterCompressibility > 0.0)) tables.waterCompressibility = Compressibility;
}

}  // namespace

void readProps(SectionReader& reader, PropsRecords& records) {
    const Console& console = consoleOf(reader);
    if (records.options.maxRockTables > MaxRegions) {
        both(console, "ERROR :: MORE THAN {} SATURATION TABLES", MaxRegions);
        stopAtPlace(reader);
    }
    dispatchSection<PropsRecords>(reader, records, PropsKeywords, PropsIncludeTexts);
    both(console, "-> Finished Reading PROPS. Move to Next Section");
    combinePhaseTables(console, records.options.hasWater, records.tables);
    if (!reader.cursor->text.empty())
        requireTables(reader, records);  // a deck without PROPS has the defaults
    if (!records.options.hasWater) fillAbsentWater(records.tables);
    records.tables.holdsEnds = reader.commonForm;
    completeTables(console, records.options.maxRockTables, records.tables);
    if (reader.commonForm) switchCapillarityByAllRegions(records.tables);
    checkComponents(reader, records.options, records.tables);
    printTables(console, *reader.units, records.tables);
}

}  // namespace kvr
