#include "deck/sections/solution.hpp"

#include "base/text.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/aquifer_rows.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "deck/sections/component_rules.hpp"
#include "fluid/black_oil.hpp"
#include "model/cell_box.hpp"
#include "model/multipliers.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace kvr {

namespace {

constexpr double DefaultHalfSlices = 5.0;  // where item 9 of EQUIL is not given, as published
constexpr double NotGiven = std::numeric_limits<double>::max();
constexpr double MostHalfSlices = 20.0;  // as published

/// Items of a record of EQUIL behind the depths: what they ask for beyond what is done is told.
void tellEquilibriumItems(const SectionReader& reader, std::span<const double> items) {
    if (items[3] != 0.0)
        warnHere(reader, "WARNING :: CAPILLARY PRESSURE {} AT THE WATER-OIL CONTACT IS NOT USED, 0 IS",
                 number(items[3]));
    if (items[5] != 0.0)
        warnHere(reader, "WARNING :: CAPILLARY PRESSURE {} AT THE GAS-OIL CONTACT IS NOT USED, 0 IS",
                 number(items[5]));
    if (items[7] > 0.0)
        warnHere(reader, "WARNING :: EQUIL ITEM 8: GAS HOLDS NO OIL HERE, TABLES OF IT ARE NOT USED");
    if (items[8] > 0.0 && items[8] < NotGiven)
        warnHere(reader, "WARNING :: EQUIL ITEM 9: PARTS OF CELLS ARE LEVEL, NOT TILTED WITH THE CELL");
    if (std::abs(items[8]) > MostHalfSlices && items[8] < NotGiven)
        warnHere(reader, "WARNING :: EQUIL ITEM 9: {} PARTS OF HALF A CELL ARE TAKEN AS {}",
                 number(std::abs(items[8])), number(MostHalfSlices));
}

/// Level parts of a cell by item 9 of EQUIL, which counts those of half a cell. Where it is not given, cells
/// through which a transition zone goes on keep their centres: there they are at rest, as averages are not.
CellSlices slicesOf(double item) {
    if (item >= NotGiven) return {2 * static_cast<int>(DefaultHalfSlices), false};
    return {2 * static_cast<int>(std::min(std::abs(item), MostHalfSlices)), true};
}

/// One record of EQUIL.
void readEquilibrium(SectionReader& reader, Equilibrium& region) {
    skipCommentLines(reader);
    // Datum depth, its pressure, WOC depth, Pc there (dropped), GOC depth, Pc there, RSVD, RVVD, accuracy.
    std::array<double, 9> items{};
    items[8] = NotGiven;
    const ListEnd end = readDoubles(*reader.cursor, items);
    checkRead(reader, end);
    tellEquilibriumItems(reader, items);
    region.isGiven = true;
    region.place = placeOf(reader);
    region.rsTableItem = items[6];
    region.slices = slicesOf(items[8]);
    const UnitSystem& units = *reader.units;
    region.datumDepth = items[0] * units.length;
    region.datumPressure = items[1] * units.pressure;
    region.wocDepth = items[2] * units.length;
    region.gocDepth = items[4] * units.length;
    const std::array<double, 6> copyFactors = {units.copyLength,   units.copyPressure, units.copyLength,
                                               units.copyPressure, units.copyLength,   units.copyPressure};
    const auto given = static_cast<std::size_t>(std::max(end.count, 5));
    copyRow(reader, std::span<const double>(items).first(given), copyFactors);
}

/// The regions of equilibrium that keywords of one record or table each fill.
std::size_t equilibria(const SolutionRecords& records) {
    return static_cast<std::size_t>(std::max(records.options.maxEquilibria, 1));
}

Equilibrium& equilibriumRegion(SolutionRecords& records, std::size_t index) {
    std::vector<Equilibrium>& regions = records.initial.regions;
    if (regions.size() <= index) regions.resize(index + 1);
    return regions[index];
}

/// Behind the comments and slashes of one record no other one follows.
bool dataEnded(SectionReader& reader) {
    consumeSlashLines(reader);
    return nextLineIsKeyword(reader);
}

void readEquil(SectionReader& reader, SolutionRecords& records) {
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), "-> Initial Condition Assigned by WOC/GOC-Pc-Density");
    copyKeyword(reader);
    records.initial.equilibrationMode = true;
    for (std::size_t r = 0; r < equilibria(records); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        readEquilibrium(reader, equilibriumRegion(records, r));
    }
    if (!dataEnded(reader))
        warnHere(reader, "WARNING :: MORE RECORDS OF EQUIL THAN THE {} OF EQLDIMS, NOT READ",
                 equilibria(records));
}

constexpr ValueRule Share{0.0, 1.0, false};
constexpr ValueRule NotNegative{0.0, std::numeric_limits<double>::max(), false};

/// A whole array of the initial state; given behind EQUIL it takes EQUIL's place.
void readStateArray(SectionReader& reader, SolutionRecords& records, std::string_view text,
                    const ValueRule& rule, CellArray<double>& values, bool& given, double factor = 1.0,
                    double copyFactor = 1.0) {
    announce(reader, text);
    skipCommentLines(reader);
    if (!reader.box.isSet) values.assign(records.grid.NCELLS, 0.0);
    readCheckedArray(reader, rule, values.cells(), factor, copyFactor);
    given = true;
    records.initial.equilibrationMode = false;
}

void readPressure(SectionReader& reader, SolutionRecords& records) {
    readStateArray(reader, records, "FIELD PRESSURE by MANUAL", NotNegative, records.initial.initialPressure,
                   records.initial.pressureGiven, reader.units->pressure, reader.units->copyPressure);
}

void readSwat(SectionReader& reader, SolutionRecords& records) {
    readStateArray(reader, records, "FIELD WATER SATURATION by MANUAL", Share, records.initial.initialSwat,
                   records.initial.swatGiven);
}

void readSgas(SectionReader& reader, SolutionRecords& records) {
    readStateArray(reader, records, "FIELD GAS SATURATION by MANUAL", Share, records.initial.initialSgas,
                   records.initial.sgasGiven);
}

void readSoil(SectionReader& reader, SolutionRecords& records) {
    readStateArray(reader, records, "FIELD OIL SATURATION by MANUAL", Share, records.initial.initialSoil,
                   records.initial.soilGiven);
}

void readRs(SectionReader& reader, SolutionRecords& records) {
    readStateArray(reader, records, "FIELD Solution GOR by MANUAL", NotNegative, records.initial.initialRs,
                   records.initial.rsGiven, reader.units->gasRatio,
                   inOtherUnits(reader, ItemUnit::GasRatio, 1.0));
}

// --- rows of EQUALS --------------------------------------------------------------------------------

/// Calls `take(row)` for every row of array, value and box; one whose array is not known is reported.
template <class Take>
void readEqualsRows(SectionReader& reader, const GridModel& grid, const Take& take) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    bool boxed = false;
    CellBox before = boxOfFirstRow(reader);
    while (nextTableRow(reader, rows)) {
        const ArithmeticRow row = readBoxRow(reader, grid, before, rows.last);
        tellMissingBox(reader, rows.last, boxed);
        if (!take(row)) reportNotSupported(reader, row.name);
    }
    endCopiedList(reader);
}

struct StateArray {
    std::string_view name;
    CellArray<double> InitialConditions::*values;
    bool InitialConditions::*given;
    double factor;
    double most;  // in units of the deck
};

/// A value outside 0 .. most becomes the nearest one inside.
double soundValue(const SectionReader& reader, const ArithmeticRow& row, double most) {
    const double value = std::clamp(row.value, 0.0, most);
    if (value != row.value)
        warnHere(reader, "WARNING :: {} {} IS OUT OF RANGE, SET TO {}", row.name, number(row.value),
                 number(value));
    return value;
}

/// Arrays of the initial state over boxes; as a whole array they take the place of EQUIL.
void readStateEquals(SectionReader& reader, SolutionRecords& records) {
    constexpr double AnyAmount = std::numeric_limits<double>::max();
    InitialConditions& initial = records.initial;
    const StateArray arrays[] = {
        {"PRESSURE", &InitialConditions::initialPressure, &InitialConditions::pressureGiven,
         reader.units->pressure, AnyAmount},
        {"SWAT", &InitialConditions::initialSwat, &InitialConditions::swatGiven, 1.0, 1.0},
        {"SGAS", &InitialConditions::initialSgas, &InitialConditions::sgasGiven, 1.0, 1.0},
        {"SOIL", &InitialConditions::initialSoil, &InitialConditions::soilGiven, 1.0, 1.0},
        {"RS", &InitialConditions::initialRs, &InitialConditions::rsGiven, reader.units->gasRatio,
         AnyAmount}};
    readEqualsRows(reader, records.grid, [&](const ArithmeticRow& row) {
        const auto* const known = std::find_if(
            std::begin(arrays), std::end(arrays),
            [&row](const StateArray& array) { return matchesInThreeForms(trim(row.name), array.name); });
        if (known == std::end(arrays)) return false;
        CellArray<double>& values = initial.*known->values;
        if (values.empty()) values.assign(records.grid.NCELLS, 0.0);
        const double value = soundValue(reader, row, known->most) * known->factor;
        forEachCell(records.grid, row.box, [&](CellId cell) { values[cell] = value; });
        initial.*known->given = true;
        initial.equilibrationMode = false;
        return true;
    });
}

/// Depths in ft and a value there, rows to the end of a table. Factors of the value: to internal units, and
/// to the unit of a copy.
struct DepthRows {
    std::vector<double> depth, value;
};
DepthRows readDepthRows(SectionReader& reader, double factor, double copyFactor) {
    DepthRows read;
    const UnitSystem& units = *reader.units;
    RowLoop rows{RowSlash::EndsTable, RowStart::Number};
    while (nextTableRow(reader, rows)) {
        std::array<double, 2> row{};
        rows.last = readDoubles(*reader.cursor, row);
        checkRead(reader, rows.last);
        if (rows.last.count == 0) continue;
        rows.axis = row[0];
        read.depth.push_back(row[0] * units.length);
        read.value.push_back(row[1] * factor);
        copyTableRow(reader, row, std::array{units.copyLength, copyFactor});
    }
    copyTableEnd(reader);
    return read;
}

void readRsTable(SectionReader& reader, Equilibrium& region) {
    DepthRows rows =
        readDepthRows(reader, reader.units->gasRatio, inOtherUnits(reader, ItemUnit::GasRatio, 1.0));
    region.rsTableDepth = std::move(rows.depth);
    region.rsTableRs = std::move(rows.value);
}

void readRsvd(SectionReader& reader, SolutionRecords& records) {
    announce(reader, "FIELD Solution GOR by Depth Table");
    copyKeyword(reader);
    for (std::size_t r = 0; r < equilibria(records); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        readRsTable(reader, equilibriumRegion(records, r));
    }
}

/// Bubble points by depth: Rs of the saturated oil there. Between two depths the bubble point goes straight,
/// so that Rs gets rows in between.
void readPbTable(SectionReader& reader, const FluidTables& tables, Equilibrium& region) {
    constexpr int PartsOfARow = 20;
    const DepthRows rows = readDepthRows(reader, reader.units->pressure, reader.units->copyPressure);
    region.rsTableDepth.clear();
    region.rsTableRs.clear();
    const auto add = [&](double depth, double bubblePoint) {
        region.rsTableDepth.push_back(depth);
        region.rsTableRs.push_back(SolutionRs(tables, bubblePoint));
    };
    for (std::size_t n = 0; n < rows.depth.size(); ++n) {
        for (int part = 1; n > 0 && part < PartsOfARow; ++part) {
            const double share = static_cast<double>(part) / PartsOfARow;
            add(std::lerp(rows.depth[n - 1], rows.depth[n], share),
                std::lerp(rows.value[n - 1], rows.value[n], share));
        }
        add(rows.depth[n], rows.value[n]);
    }
}

void readPbvd(SectionReader& reader, SolutionRecords& records) {
    announce(reader, reader.keyword);
    if (records.tables.MaxRs <= 0.0) return skipKeywordData(reader);
    copyKeyword(reader);
    for (std::size_t r = 0; r < equilibria(records); ++r) {
        if (r > 0 && dataEnded(reader)) return;
        readPbTable(reader, records.tables, equilibriumRegion(records, r));
    }
}

bool hasComponents(SectionReader& reader, const SolutionRecords& records) {
    if (records.options.componentCount > 0) return true;
    skipKeywordData(reader);
    return false;
}

void readNei(SectionReader& reader, SolutionRecords& records) {
    announce(reader, "FIELD Composition");
    skipCommentLines(reader);
    if (!hasComponents(reader, records)) return;
    const int components = records.options.componentCount;
    std::vector<double> composition(static_cast<std::size_t>(components), 0.0);
    readArray(reader, composition);
    checkComposition(reader, composition);
    DirectionArray<double>& initialZ = records.initial.initialZ;
    initialZ.assign(records.grid.NCELLS, components, 0.0);
    for (CellId cell = 1; cell <= records.grid.NCELLS; ++cell) {
        std::copy(composition.begin(), composition.end(), initialZ.row(cell));
    }
}

void readZmf(SectionReader& reader, SolutionRecords& records) {
    announce(reader, "FIELD Composition, each grid block");
    skipCommentLines(reader);
    if (!hasComponents(reader, records)) return;
    DirectionArray<double>& initialZ = records.initial.initialZ;
    initialZ.assign(records.grid.NCELLS, records.options.componentCount, 0.0);
    const auto cellZero = static_cast<std::size_t>(initialZ.width);  // values of the unused slot
    readArray(reader, std::span<double>(initialZ.slots).subspan(cellZero));
    checkCellCompositions(reader, initialZ);
}

void readRestart(SectionReader& reader, SolutionRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    RunOptions& options = records.options;
    const std::array<ListTarget, 2> targets = {&options.restartName, &options.restartStep};
    checkRead(reader, readList(*reader.cursor, targets));
}

void readAqufetp(SectionReader& reader, SolutionRecords& records) {
    readFetkovichAquifers(reader, records.aquifers);
}

void readAquct(SectionReader& reader, SolutionRecords& records) {
    readCarterTracyAquifers(reader, records.aquifers);
}

void readAquancon(SectionReader& reader, SolutionRecords& records) {
    readAquiferFaces(reader, records.grid, records.aquifers);
}

using Row = KeywordRow<SolutionRecords>;
constexpr std::array Keywords = {
    Row{"RPTSOL", neglect<SolutionRecords>, "neglected"},
    Row{"RPTRST", neglectRestartReports<SolutionRecords>, "neglected"},
    Row{"EQUIL", readEquil,
        "datum depth and pressure, WOC depth, Pc there, GOC depth, Pc there, items of `RSVD`, `RVVD` and "
        "accuracy (level parts of half a cell over which saturations are averaged, 0: none; where it is not "
        "given, 5 in cells that hold a whole contact); both Pc and `RVVD` are not used, `RSVD` is where it "
        "is given"},
    Row{"PRESSURE", readPressure, "initial pressure, one value per cell"},
    Row{"SWAT", readSwat, "initial water saturation, one value per cell"},
    Row{"SGAS", readSgas, "initial gas saturation, one value per cell"},
    Row{"SOIL", readSoil, "initial oil saturation, one value per cell"},
    Row{"EQUALS", readStateEquals, "rows of PRESSURE, SWAT, SGAS, SOIL or RS, a value and a box"},
    Row{"RSVD", readRsvd, "rows of depth and solution gas ratio"},
    Row{"PBVD", readPbvd, "rows of depth and bubble point, in place of `RSVD`; by the first table of `PVTO`"},
    Row{"RS", readRs, "initial solution gas ratio, one value per cell"},
    Row{"NEI", readNei, "initial composition, the same in all cells"},
    Row{"ZMF", readZmf, "initial composition, one per cell"},
    Row{"RESTART", readRestart, "name and step of a restart"},
    Row{"AQUFETP", readAqufetp,
        "rows of a Fetkovich aquifer: number, datum depth, pressure there (left out: at rest), volume of "
        "water, compressibility, productivity, PVT table"},
    Row{"AQUCT", readAquct,
        "rows of a Carter-Tracy aquifer: number, datum depth, pressure there (left out: at rest), "
        "permeability, porosity, compressibility, inner radius, thickness, angle, PVT table, table of "
        "`AQUTAB` (1: without an outer border)"},
    Row{"AQUANCON", readAquancon,
        "rows of an aquifer, I1, I2, J1, J2, K1, K2, a face, what its share goes by (left out: area), a "
        "factor, and `YES` where faces to active cells count"},
};
// RUNSPEC is the required text of this section.
constexpr IncludeTexts Texts{"ERROR: File handling error, code =", "Include file missing, RUNSPEC section",
                             "INCLUDE FILE FINISHED, SOLUTION SECTION", true};

bool belowResidual(const SolutionRecords& records, CellId cell) {
    const auto region = static_cast<std::size_t>(records.grid.SATNUM[cell]) - 1;
    if (region >= records.tables.regions.size()) return false;
    const SaturationTable& table = records.tables.regions[region];
    const InitialConditions& initial = records.initial;
    const double sw = initial.initialSwat[cell];
    const double so = initial.soilGiven ? initial.initialSoil[cell] : 1.0 - sw - initial.initialSgas[cell];
    return (initial.swatGiven && sw < table.ConnateSw) || so < table.ResidualSo;
}

/// Lines of single cells go to the console for the first few of them, all of them to the log.
constexpr int ShownCells = 10;

template <class Test, class Line>
void tellCells(const SectionReader& reader, const SolutionRecords& records, const Test& test,
               const Line& line, std::string_view kind) {
    const Console& console = consoleOf(reader);
    CellId first = 0;
    int count = 0;
    for (CellId cell = 1; cell <= records.grid.NCELLS; ++cell) {
        if (records.grid.Active[cell] == 0 || !test(cell)) continue;
        if (++count <= ShownCells)
            lineToBoth(console, line(cell));
        else
            lineToLog(console, line(cell));
        if (first == 0) first = cell;
    }
    if (count == 0) return;
    warn(console, "WARNING :: {} IN {} CELLS; FIRST: {}", kind, count,
         cellText(reader, static_cast<std::size_t>(first)));
}

constexpr double SumSlack = 1e-3;  // of saturations that are given with a few digits

bool sumIsOff(const InitialConditions& initial, CellId cell) {
    const double sum = initial.initialSwat[cell] + initial.initialSgas[cell] + initial.initialSoil[cell];
    const bool all = initial.soilGiven && initial.swatGiven;
    return all ? std::abs(sum - 1.0) > SumSlack : sum > 1.0 + SumSlack;
}

/// Item 7 of EQUIL says whether RSVD holds, or oil is saturated at the contact; here RSVD does where it is
/// given.
void tellRsTables(const Console& console, const SolutionRecords& records) {
    if (!records.initial.equilibrationMode || records.tables.MaxRs <= 0.0) return;
    for (const Equilibrium& region : records.initial.regions) {
        const bool hasTable = !region.rsTableDepth.empty();
        if (!region.isGiven || hasTable == (region.rsTableItem > 0.0)) continue;
        if (hasTable)
            warnAt(console, region.place, "EQUIL",
                   "WARNING :: EQUIL ITEM 7: RSVD IS USED, THOUGH OIL SATURATED AT THE GAS-OIL CONTACT IS "
                   "ASKED FOR");
        else
            warnAt(console, region.place, "EQUIL",
                   "WARNING :: EQUIL ITEM 7: NO RSVD IS GIVEN, OIL IS SATURATED AT THE GAS-OIL CONTACT");
    }
}

void checkArrays(const SectionReader& reader, const SolutionRecords& records) {
    const InitialConditions& initial = records.initial;
    tellCells(
        reader, records, [&](CellId cell) { return belowResidual(records, cell); },
        [](CellId cell) {
            return fmt::format(" WARNING ::  INITIAL SATURATION INPUT BELOW RESIDUAL,  {}", cell);
        },
        "INITIAL SATURATION BELOW RESIDUAL");
    tellCells(
        reader, records, [&](CellId cell) { return initial.initialPressure[cell] == 0.0; },
        [](CellId cell) { return fmt::format("WARNING ::   INITIAL PRESSURE INPUT IS ZERO, {}", cell); },
        "INITIAL PRESSURE 0");
    tellCells(
        reader, records, [&](CellId cell) { return sumIsOff(initial, cell); },
        [&](CellId cell) {
            return fmt::format(
                "WARNING :: INITIAL SATURATIONS ADD UP TO {}, GRID {}",
                number(initial.initialSwat[cell] + initial.initialSgas[cell] + initial.initialSoil[cell]),
                cell);
        },
        "INITIAL SATURATIONS THAT DO NOT ADD UP TO 1, SCALED");
}

struct RegionRecords {
    GridModel& grid;
};

/// Region numbers by cell; cells left out stand in region 1.
template <CellArray<int> GridModel::*Array>
void readRegionNumbers(SectionReader& reader, RegionRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    CellArray<int>& numbers = records.grid.*Array;
    if (numbers.empty()) numbers.assign(records.grid.NCELLS, 1);
    readCellArray(reader, numbers.cells());
}

/// Region numbers over boxes.
void readRegionEquals(SectionReader& reader, RegionRecords& records) {
    constexpr double LargestNumber = 1e9;  // beyond any region
    struct RegionArray {
        std::string_view name;
        CellArray<int> GridModel::*numbers;
    };
    static constexpr RegionArray Arrays[] = {{"SATNUM", &GridModel::SATNUM},
                                             {"PVTNUM", &GridModel::PVTNUM},
                                             {"EQLNUM", &GridModel::EQLNUM},
                                             {"FIPNUM", &GridModel::FIPNUM}};
    GridModel& grid = records.grid;
    readEqualsRows(reader, grid, [&](const ArithmeticRow& row) {
        const auto* const known = std::find_if(
            std::begin(Arrays), std::end(Arrays),
            [&row](const RegionArray& array) { return matchesInThreeForms(trim(row.name), array.name); });
        if (known == std::end(Arrays)) return false;
        CellArray<int>& numbers = grid.*known->numbers;
        if (numbers.empty()) numbers.assign(grid.NCELLS, 1);
        const int number = static_cast<int>(std::clamp(row.value, -LargestNumber, LargestNumber));
        forEachCell(grid, row.box, [&](CellId cell) { numbers[cell] = number; });
        return true;
    });
}

constexpr std::array RegionKeywords = {
    KeywordRow<RegionRecords>{"SATNUM", readRegionNumbers<&GridModel::SATNUM>,
                              "saturation table number, one per cell"},
    KeywordRow<RegionRecords>{"PVTNUM", readRegionNumbers<&GridModel::PVTNUM>,
                              "number of the tables of fluids and rock, one per cell"},
    KeywordRow<RegionRecords>{"EQLNUM", readRegionNumbers<&GridModel::EQLNUM>,
                              "number of the record of `EQUIL` and the table of `RSVD`, one per cell"},
    KeywordRow<RegionRecords>{"FIPNUM", readRegionNumbers<&GridModel::FIPNUM>,
                              "region of the balance by regions, one per cell"},
    KeywordRow<RegionRecords>{"EQUALS", readRegionEquals,
                              "rows of SATNUM, PVTNUM, EQLNUM or FIPNUM, a number and a box"},
};
constexpr int MaxBalanceRegions = 10000;

/// Region numbers outside 1 .. `most` become 1, told in one line.
void limitRegions(SectionReader& reader, std::string_view keyword, int most, CellArray<int>& numbers) {
    const auto isOutside = [most](int region) { return region < 1 || region > most; };
    const auto cells = numbers.cells();
    const auto first = std::find_if(cells.begin(), cells.end(), isOutside);
    if (first == cells.end()) return;
    reader.keyword = keyword;
    warnHere(reader, "WARNING :: {} OF {} CELLS IS OUT OF RANGE 1 TO {}, SET TO 1; FIRST: CELL {}, {}",
             keyword, std::count_if(first, cells.end(), isOutside), most, first - cells.begin() + 1, *first);
    std::replace_if(first, cells.end(), isOutside, 1);
}

// GRID is the required text of this section.
constexpr IncludeTexts RegionTexts{"ERROR: INCLUDE File Open Error at GRID section",
                                   "File I/O Error, in GRID Section",
                                   "INCLUDE FILE FINISHED, REGIONS SECTION"};

}  // namespace

void sizeInitialArrays(const GridModel& grid, InitialConditions& initial) {
    for (CellArray<double>* values : {&initial.initialPressure, &initial.initialSwat, &initial.initialSgas,
                                      &initial.initialSoil, &initial.initialRs}) {
        if (values->count() != grid.NCELLS) values->assign(grid.NCELLS, 0.0);
    }
}

void readSolution(SectionReader& reader, SolutionRecords& records) {
    dispatchSection<SolutionRecords>(reader, records, Keywords, Texts);
    lineToBoth(consoleOf(reader), "-> Finished Reading SOLUTION. Move to Next Section");
    if (records.initial.regions.front().rsTableDepth.empty()) {
        lineToBoth(consoleOf(reader),
                   "No RS-Depth(RSVD) Table - Table is assumed inside the code while not used");
    }
    tellRsTables(consoleOf(reader), records);
    if (records.initial.equilibrationMode) return;
    checkArrays(reader, records);
}

void readRegions(SectionReader& reader, const RunOptions& options, GridModel& grid) {
    RegionRecords records{grid};
    dispatchSection<RegionRecords>(reader, records, RegionKeywords, RegionTexts);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.SATNUM[cell] >= 1 && grid.SATNUM[cell] <= options.maxRockTables) continue;
        warn(consoleOf(reader), "WARNING :: SATNUM, GRID {} IS OUT OF RANGE. SET AS 1 ", cell);
        grid.SATNUM[cell] = 1;
    }
    limitRegions(reader, "PVTNUM", options.maxPvtTables, grid.PVTNUM);
    limitRegions(reader, "EQLNUM", options.maxEquilibria, grid.EQLNUM);
    limitRegions(reader, "FIPNUM", MaxBalanceRegions, grid.FIPNUM);
}

}  // namespace kvr
