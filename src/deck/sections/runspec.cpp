#include "deck/sections/runspec.hpp"

#include "base/text.hpp"
#include "deck/reading/deck_extent.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "fluid/components/component_set.hpp"
#include "model/grid_memory.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace kvr {

namespace {

constexpr int NinePointConnections = 26;
constexpr int DefaultStartYear = 2000;
constexpr int LastStartYear = 9999;      // a year of more digits is a slip of the pen
constexpr int LongestMonth = 31;         // days
constexpr int UncheckedCells = 100'000;  // their memory is small; too few values are told by the array itself
constexpr int MaxTableCount = 10000;     // tables of one kind
constexpr std::string_view TracerText =
    "-> Tracer Option Activated, Make Sure That Other Data are Assigned. ";

void startSection(SectionReader& reader, RunspecRecords&) {
    lineToBoth(consoleOf(reader), "READING - RUNSPEC SECTION");
}

void readNinePoint(SectionReader& reader, RunspecRecords& records) {
    announce(reader, "NINEPOIN, Nine point scheme activated");
    records.options.ninePoint = true;
    records.options.maxConnectionsPerCell = NinePointConnections;
    copyKeyword(reader);
}

void readDimens(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    GridModel& grid = records.grid;
    std::array<int, 3> cells = {grid.NX, grid.NY, grid.NZ};
    checkRead(reader, readIntegers(*reader.cursor, cells));
    grid.NX = cells[0];
    grid.NY = cells[1];
    grid.NZ = cells[2];
    records.dimensLine = reader.cursor->lineNumber;
    both(consoleOf(reader), "NX = {}", grid.NX);
    both(consoleOf(reader), "NY = {}", grid.NY);
    both(consoleOf(reader), "NZ = {}", grid.NZ);
    copyLine(reader, "DIMENS");
    copyLine(reader, fmt::format("{} {} {} /", grid.NX, grid.NY, grid.NZ));
}

void readDualPorosity(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), "-> Dual porosity: upper half of the layers matrix, lower half fractures");
    records.options.modelName = DualPorosityName;
    records.grid.dual.isSet = true;
    copyKeyword(reader);
}

[[noreturn]] void refuseDualPermeability(SectionReader& reader, RunspecRecords&) {
    both(consoleOf(reader), "ERROR :: {}: FLOW BETWEEN MATRIX CELLS IS NOT KNOWN HERE, DUALPORO IS",
         reader.keyword);
    stopAtPlace(reader);
}

void readGravityDrainage(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    records.options.gravityDrainage = true;
    records.grid.dual.gravityDrainage = true;
    copyKeyword(reader);
}

void readEffectivePermeability(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    records.grid.dual.permeabilityEffective = true;
    copyKeyword(reader);
}

void announcePhase(const SectionReader& reader, std::string_view text) {
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), text);
    copyKeyword(reader);
}

void readOil(SectionReader& reader, RunspecRecords& records) {
    announcePhase(reader, "USE OIL PHASE");
    records.options.hasOil = true;
}

void readWater(SectionReader& reader, RunspecRecords& records) {
    announcePhase(reader, "USE WATER PHASE");
    records.options.hasWater = true;
}

void readGas(SectionReader& reader, RunspecRecords& records) {
    announcePhase(reader, "USE GAS PHASE");
    records.options.hasGas = true;
    records.tables.hasGas = true;
}

void readSolutionGas(SectionReader& reader, RunspecRecords&) {
    announcePhase(reader, "USE SOLUTION GAS IN OIL PHASE");
}

void takeUnits(const SectionReader& reader, const UnitSystem& units, RunspecRecords& records) {
    announce(reader, reader.keyword);
    if (records.units.deck != DeckUnits::None && records.units.deck != units.deck)
        warnHere(reader, "WARNING :: FIELD AND METRIC ARE BOTH GIVEN, THE LAST ONE HOLDS: {}",
                 reader.keyword);
    records.units = units;
    if (reader.outputMetric) copyLines(reader, "METRIC", "FIELD");
}

void readField(SectionReader& reader, RunspecRecords& records) {
    takeUnits(reader, fieldUnits(), records);
}

void readMetric(SectionReader& reader, RunspecRecords& records) {
    takeUnits(reader, metricUnits(), records);
}

[[noreturn]] void refuseUnits(SectionReader& reader, RunspecRecords&) {
    both(consoleOf(reader), "ERROR :: UNITS {} ARE NOT KNOWN HERE, FIELD OR METRIC ARE", reader.keyword);
    stopAtPlace(reader);
}

void readStart(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    RunOptions& options = records.options;
    std::string month;
    const std::array<ListTarget, 3> targets = {&options.startDay, &month, &options.startYear};
    const std::size_t first = reader.cursor->position;
    checkRead(reader, readList(*reader.cursor, targets));
    options.startMonth = monthOfWord(std::string_view(month).substr(0, FullKeyword));
    if (!isMonthWord(month) && !month.empty())
        warnHere(reader, "WARNING :: MONTH {} IS NOT KNOWN, TAKEN FOR JANUARY", month);
    const int last = options.startYear >= 1 && options.startYear <= LastStartYear
                         ? monthLength(std::max(options.startMonth, 1), options.startYear)
                         : LongestMonth;
    if (options.startDay < 1 || options.startDay > last || options.startYear < 1 ||
        options.startYear > LastStartYear)
        warnHere(reader, "WARNING :: START {} {} {} IS NO DATE OF THE CALENDAR", options.startDay, month,
                 options.startYear);
    if (options.startDay > last) options.startDay = last;
    const std::string_view asRead =
        std::string_view(reader.cursor->text).substr(first, reader.cursor->position - first);
    copyLine(reader, "START");
    copyLine(reader, trim(asRead.substr(0, asRead.find_last_not_of("\r\n") + 1)));
}

/// Integers with defaults, each printed behind its text.
template <std::size_t Count>
void readSizes(SectionReader& reader, const std::array<int*, Count>& sizes) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::array<ListTarget, Count> targets;
    std::copy(sizes.begin(), sizes.end(), targets.begin());
    checkRead(reader, readList(*reader.cursor, targets));
}

void readTabdims(SectionReader& reader, RunspecRecords& records) {
    RunOptions& options = records.options;
    readSizes<4>(reader,
                 {&options.maxRockTables, &options.maxPvtTables, &options.maxRockRows, &options.maxPvtRows});
    options.maxRockTables = std::clamp(options.maxRockTables, 1, MaxTableCount);
    options.maxPvtTables = std::clamp(options.maxPvtTables, 1, MaxTableCount);
    const Console& console = consoleOf(reader);
    both(console, "-> Maximum Rock Table Num   (Def = 1   )-> {}", options.maxRockTables);
    both(console, "-> Maximum PVT  Table Num   (Def = 1   )-> {}", options.maxPvtTables);
    both(console, "-> Maximum Rock Table Col   (Def = 1000)-> {}", options.maxRockRows);
    both(console, "-> Maximum PVT  Table Col   (Def = 200 )-> {}", options.maxPvtRows);
    copyKeyword(reader);
    copyRow(reader, {{1.0 * options.maxRockTables},
                     {1.0 * options.maxPvtTables},
                     {1.0 * options.maxRockRows},
                     {1.0 * options.maxPvtRows}});
}

void readEqldims(SectionReader& reader, RunspecRecords& records) {
    RunOptions& options = records.options;
    readSizes<1>(reader, {&options.maxEquilibria});
    options.maxEquilibria = std::clamp(options.maxEquilibria, 1, MaxTableCount);
    both(consoleOf(reader), "-> Maximum Equilibrium Region Num -> {}", options.maxEquilibria);
    copyKeyword(reader);
    copyRow(reader, {{1.0 * options.maxEquilibria}});
}

void readNosim(SectionReader& reader, RunspecRecords& records) {
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), "-> The deck is read and checked, nothing is run");
    records.options.noSimulation = true;
}

/// Scaling that depends on the direction of flow, or that does not reverse, is told and not done.
void readEndscale(SectionReader& reader, RunspecRecords& records) {
    if (!reader.commonForm) {
        reportNotSupported(reader, reader.keyword);
        return skipKeywordData(reader);
    }
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::string direction = "NODIR", reversal = "REVERS";
    const std::array<ListTarget, 2> targets = {&direction, &reversal};
    checkRead(reader, readList(*reader.cursor, targets));
    if (toUpper(trim(direction)) != "NODIR")
        warnHere(reader, "WARNING :: END POINTS BY DIRECTION OF FLOW ({}) ARE NOT KNOWN HERE, NODIR IS TAKEN",
                 direction);
    if (toUpper(trim(reversal)) != "REVERS")
        warnHere(reader, "WARNING :: END POINTS THAT DO NOT REVERSE ({}) ARE NOT KNOWN HERE, REVERS IS TAKEN",
                 reversal);
    records.tables.scaling.isSet = true;
}

void skipAqudims(SectionReader& reader, RunspecRecords&) {
    announce(reader, reader.keyword);
    skipKeywordData(reader);
}

void readWelldims(SectionReader& reader, RunspecRecords& records) {
    RunOptions& options = records.options;
    readSizes<2>(reader, {&options.maxWells, &options.maxConnPerWell});
    if (options.maxWells > 0 && options.maxConnPerWell > 0) {
        const std::int64_t product = static_cast<std::int64_t>(options.maxWells) * options.maxConnPerWell;
        options.maxConnAll =
            static_cast<int>(std::min<std::int64_t>(product, std::numeric_limits<int>::max()));
    }
    const Console& console = consoleOf(reader);
    both(console, "-> Maximum Allocatable Memory Adjusted   (Def = 500)-> {}", options.maxWells);
    both(console, "-> Maximum Well Connection Adjusted(PER) (Def = 500)-> {}", options.maxConnPerWell);
    both(console, "-> Maximum Well Connection Adjusted(ALL) (Def = 500)-> {}", options.maxConnAll);
    copyKeyword(reader);
    copyRow(reader, {{1.0 * options.maxWells}, {1.0 * options.maxConnPerWell}});
}

void readTracers(SectionReader& reader, RunspecRecords& records) {
    std::array<int, 3> values{};  // the first and the third are read and have no use
    readSizes<3>(reader, {&values[0], &values[1], &values[2]});
    records.options.tracerActive = values[1] >= 0;  // a count of 0 is active, without a tracer
    records.options.tracerCount = std::max(values[1], 0);
    if (records.options.tracerActive) lineToBoth(consoleOf(reader), TracerText);
}

void readComps(SectionReader& reader, RunspecRecords& records) {
    RunOptions& options = records.options;
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), "-> COMPS.. Composotional model Activated.");
    skipCommentLines(reader);
    const std::array<ListTarget, 1> targets = {&options.componentCount};
    checkRead(reader, readList(*reader.cursor, targets));
    if (options.componentCount < 0 || options.componentCount > MaxComponents) {
        both(consoleOf(reader), "ERROR :: COMPS OUT OF RANGE, 0 TO {}", MaxComponents);
        stopAtPlace(reader);
    }
    options.hasGas = true;
    records.tables.hasGas = true;
}

using Row = KeywordRow<RunspecRecords>;
constexpr std::array Keywords = {
    Row{"RUNSPEC", startSection, "the section word"},
    Row{"NINEPOIN", readNinePoint, "nine point connections (26 per cell)"},
    Row{"DIMENS", readDimens, "number of cells along x, y, z; must be given"},
    Row{"OIL", readOil, "the run has oil", 7},
    Row{"WATER", readWater, "the run has water", 7},
    Row{"GAS", readGas, "the run has gas", 7},
    Row{"SGAS", readSolutionGas, "accepted without effect"},
    Row{"DISGAS", readSolutionGas, "accepted without effect"},
    Row{"FIELD", readField, "field units"},
    Row{"METRIC", readMetric, "metric units"},
    Row{"LAB", refuseUnits, "not known, stops"},
    Row{"PVT-M", refuseUnits, "not known, stops"},
    Row{"START", readStart, "day, month word and year of time zero"},
    Row{"TABDIMS", readTabdims, "saturation tables, PVT tables, rows of each"},
    Row{"EQLDIMS", readEqldims, "regions of equilibrium"},
    Row{"AQUDIMS", skipAqudims, "accepted without effect: aquifers take what room they need"},
    Row{"ENDSCALE", readEndscale,
        "the saturation functions are scaled to end points by cell (`SWL` and its like in `PROPS`)"},
    Row{"NOSIM", readNosim, "the deck is read and checked, nothing is run; also in `SCHEDULE`"},
    Row{"WELLDIMS", readWelldims, "wells, connections per well"},
    Row{"TRACERS", readTracers, "the second value is the number of tracers", 7},
    Row{"COMPS", readComps, "number of components"},
    Row{"DUALPORO", readDualPorosity,
        "dual porosity: of an even number of layers the upper half is the matrix, the lower half the "
        "fractures"},
    Row{"DUALPERM", refuseDualPermeability, "not known, stops"},
    Row{"GRAVDR", readGravityDrainage, "gravity drainage between matrix and fractures"},
    Row{"NODPPM", readEffectivePermeability,
        "the permeability of fractures is that of the bulk as read, not to be multiplied by their porosity"},
};
constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at RUNSPEC section",
                             "File I/O Error, in RUNSPEC Section", "INCLUDE FILE FINISHED, RUNSPEC SECTION"};

[[noreturn]] void stopOnDimensions(SectionReader& reader, int line, std::string_view message) {
    lineToBoth(consoleOf(reader), message);
    reader.keyword = "DIMENS";
    if (line > 0) reader.cursor->lineNumber = line;
    stopAtPlace(reader);
}

/// A large grid that no array of the deck could fill is a slip of the pen: it stops before its memory is
/// taken.
void checkExtent(SectionReader& reader, const RunspecRecords& records) {
    const GridModel& grid = records.grid;
    const std::int64_t cells = static_cast<std::int64_t>(grid.NX) * grid.NY * grid.NZ;
    if (cells <= UncheckedCells) return;
    const auto values = largestArray(*reader.cursor, reader.workingFolder, cells);
    if (!values || *values >= cells) return;
    stopOnDimensions(
        reader, records.dimensLine,
        fmt::format("ERROR :: DIMENS GIVES {} CELLS, THE LARGEST ARRAY OF THE DECK HAS {} VALUES", cells,
                    *values));
}

void checkDimensions(SectionReader& reader, const RunspecRecords& records) {
    const GridModel& grid = records.grid;
    const GridSize size = checkGridSize(grid.NX, grid.NY, grid.NZ);
    if (size == GridSize::NotPositive) {
        stopOnDimensions(reader, records.dimensLine, "ERROR :: DIMENS NOT SPECIFIED");
    } else if (size != GridSize::Usable) {
        stopOnDimensions(reader, records.dimensLine, "Error :: Memory error , Variable");
    }
    checkExtent(reader, records);
    if (grid.dual.isSet && grid.NZ % 2 != 0)
        stopOnDimensions(
            reader, records.dimensLine,
            fmt::format("ERROR :: DUALPORO NEEDS AN EVEN NUMBER OF LAYERS, DIMENS GIVES {}", grid.NZ));
}

void takeStartDate(RunOptions& options, RunClock& clock) {
    if (options.startDay < 1) options.startDay = 1;
    if (options.startMonth < 1) options.startMonth = 1;
    if (options.startYear < 1) options.startYear = DefaultStartYear;
    options.startDay = std::min(options.startDay, LongestMonth);
    options.startYear = std::min(options.startYear, LastStartYear);
    clock.day = options.startDay;
    clock.month = options.startMonth;
    clock.year = options.startYear;
}

/// A grid of NX = 1 is deliberately not of a lower dimension.
std::string_view dimensionality(const GridModel& grid) {
    const int layers = grid.dual.isSet ? grid.NZ / 2 : grid.NZ;
    if (layers == 1) return grid.NY == 1 ? "x_1d" : "xy_2d";
    return grid.NY == 1 ? "xz_2d" : "xyz_3d";
}

}  // namespace

void readRunspec(SectionReader& reader, RunspecRecords& records) {
    dispatchSection<RunspecRecords>(reader, records, Keywords, Texts);
    records.options.outputMetric = reader.outputMetric;
    lineToBoth(consoleOf(reader), "-> Finished Reading RUNSPEC. Move to Next Section");
    checkDimensions(reader, records);
    if (records.units.deck == DeckUnits::None)
        warn(consoleOf(reader),
             "WARNING :: NEITHER FIELD NOR METRIC IS GIVEN, THE DECK IS READ IN FIELD UNITS");
    takeStartDate(records.options, records.clock);
    if (!allocateGrid(records.grid)) {
        stopOnDimensions(reader, records.dimensLine, "Error :: Memory error , Variable");
    }
    records.options.gridDimensionality = dimensionality(records.grid);
}

}  // namespace kvr
