#include "deck/sections/grid_arithmetic.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/rows_in_order.hpp"
#include "model/multipliers.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace kvr {

namespace {

bool isNamed(const std::string& name, const std::string& other) {
    return !trim(name).empty() && toUpper(trim(name)) == toUpper(trim(other));
}

/// EQUALS and COPY act before the rows of MULTIPLY and ADD, and EQUALS before COPY, whatever their order in
/// the deck: other programs go by the deck.
void tellOrder(const SectionReader& reader, std::initializer_list<std::string> names, const GridModel& grid) {
    const auto isOneOf = [&names](const std::string& name) {
        return std::any_of(names.begin(), names.end(),
                           [&name](const std::string& own) { return isNamed(own, name); });
    };
    const bool copied =
        reader.keyword == "EQUALS" &&
        std::any_of(grid.copyRows.begin(), grid.copyRows.end(),
                    [&](const ArithmeticRow& row) { return isOneOf(row.name) || isOneOf(row.secondName); });
    const bool changed = std::any_of(grid.multiplyRows.begin(), grid.multiplyRows.end(),
                                     [&](const ArithmeticRow& row) { return isOneOf(row.name); });
    if (!copied && !changed) return;
    warnHere(reader, "WARNING :: {} OF {} ACTS BEFORE {}, THOUGH IT STANDS BEHIND", reader.keyword,
             *names.begin(), changed ? "MULTIPLY AND ADD" : "COPY");
}

/// By rows the multipliers of connections act on both faces of a cell along the axis, from its own side.
void tellBothFaces(const SectionReader& reader, const MultiplierKeyword* multiplier) {
    if (multiplier == nullptr || multiplier->target != MultiplierTarget::Trans) return;
    warnHere(
        reader,
        "WARNING :: {} OF {} MULTIPLIES THE CONNECTIONS OF ITS CELLS TO BOTH SIDES, THE KEYWORD {} ONLY THE "
        "UPPER ONE",
        multiplier->name, reader.keyword, multiplier->name);
}

/// A row of the common form.
void actNow(SectionReader& reader, RowAction action, ArithmeticRow row, GridRecords& records) {
    row.action = action;
    if (!actInOrder(reader, row, records.grid)) return reportNotSupported(reader, row.name);
    const EqualsArray* array = findEqualsArray(row.name);
    if (action != RowAction::Set || array == nullptr || !array->isBlockSize) return;
    records.grid.blockInput = true;
    records.options.useNewtran = false;
}

}  // namespace

void readEquals(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.equalsRows, [&](ArithmeticRow row) {
        both(consoleOf(reader), "EQUALS  : {} {}", row.name, number(row.value));
        if (reader.commonForm) return actNow(reader, RowAction::Set, row, records);
        if (setFactors(row, false, grid)) return;
        tellOrder(reader, {row.name}, grid);
        const EqualsArray* array = findEqualsArray(row.name);
        const MultiplierKeyword* multiplier = findMultiplier(row.name);
        if (array == nullptr && (multiplier == nullptr || multiplier->target != MultiplierTarget::Trans))
            reportNotSupported(reader, row.name);
        tellBothFaces(reader, multiplier);
        if (array != nullptr && array->isLength) row.value *= reader.units->length;
        if (array != nullptr && array->isBlockSize) {
            grid.blockInput = true;
            records.options.useNewtran = false;
        }
        grid.equalsRows.push_back(std::move(row));
    });
    endCopiedList(reader);
}

void readCopy(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    CellBox before = boxOfFirstRow(reader);
    while (nextTableRow(reader, rows)) {
        checkRoom(reader, grid.copyRows);
        ArithmeticRow row = readCopyRow(reader, grid, before, rows.last);
        both(consoleOf(reader), "COPY : {} -> {}", row.name, row.secondName);
        if (reader.commonForm) {
            if (!copyInOrder(row, grid)) reportNotSupported(reader, row.name + " " + row.secondName);
            continue;
        }
        for (const std::string& name : {row.name, row.secondName})
            if (findCopyArray(name) == nullptr) reportNotSupported(reader, name);
        tellOrder(reader, {row.name, row.secondName}, grid);
        grid.copyRows.push_back(std::move(row));
    }
    endCopiedList(reader);
}

void readMultiply(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.multiplyRows, [&](ArithmeticRow row) {
        both(consoleOf(reader), "MULTIPLY : {} By {}", row.name, number(row.value));
        if (isNegativeFactor(reader, row)) return;
        if (reader.commonForm && trim(row.name) != "PORV")
            return actNow(reader, RowAction::Multiply, row, records);
        if (setFactors(row, true, grid)) return;
        const MultiplierKeyword* multiplier = findMultiplier(row.name);
        if (multiplier == nullptr) reportNotSupported(reader, row.name);
        tellBothFaces(reader, multiplier);
        grid.multiplyRows.push_back(std::move(row));
    });
    endCopiedList(reader);
}

// --- ADD, and rows for regions -------------------------------------------------------------------------

RegionSet regionSetOf(const SectionReader& reader, const std::string& word) {
    const std::string letter = toUpper(trim(word).substr(0, 1));
    if (letter.empty()) return RegionSet::Default;
    if (letter == "M") return RegionSet::Mult;
    if (letter == "F") return RegionSet::Flux;
    if (letter == "O") return RegionSet::Oper;
    both(consoleOf(reader), "ERROR :: {}: NUMBERING {} IS NONE OF M (MULTNUM), F (FLUXNUM), O (OPERNUM)",
         reader.keyword, word);
    stopAtPlace(reader);
}

namespace {

/// Keeps a row of ADD or for a region, if its array is one of those that they know.
void keepFurther(SectionReader& reader, ArithmeticRow row, RowAction action, GridModel& grid,
                 std::vector<ArithmeticRow>& list) {
    if (findArithmeticArray(row.name) == nullptr) return reportNotSupported(reader, row.name);
    if (action == RowAction::Multiply && isNegativeFactor(reader, row)) return;
    row.action = action;
    if (reader.commonForm && row.region > 0 && !regionNumbers(grid, row.regionSet).empty()) {
        actInOrder(reader, row, grid);
        return;
    }
    row.place = placeOf(reader);
    list.push_back(std::move(row));
}

/// Rows of name, value, region and numbering.
void readRegionRows(SectionReader& reader, RowAction action, GridModel& grid,
                    std::vector<ArithmeticRow>& list) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    while (nextTableRow(reader, rows)) {
        checkRoom(reader, list);
        ArithmeticRow row;
        std::string set;
        const std::array<ListTarget, 4> targets = {&row.name, &row.value, &row.region, &set};
        rows.last = readList(*reader.cursor, targets);
        checkRead(reader, rows.last);
        both(consoleOf(reader), "{} : {} {} region {}", reader.keyword, row.name, number(row.value),
             row.region);
        copyRow(reader, {{.text = row.name}, {row.value}, {1.0 * row.region}, {.text = set}});
        row.regionSet = regionSetOf(reader, set);
        if (row.region < 1) {
            warnHere(reader, "WARNING :: {}: REGION {} IS NO NUMBER ABOVE 0, ROW SKIPPED", reader.keyword,
                     row.region);
            continue;
        }
        keepFurther(reader, std::move(row), action, grid, list);
    }
    endCopiedList(reader);
}

}  // namespace

void readAdd(SectionReader& reader, GridRecords& records) {
    GridModel& grid = records.grid;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.multiplyRows, [&](ArithmeticRow row) {
        both(consoleOf(reader), "ADD : {} {}", row.name, number(row.value));
        if (reader.commonForm) return actNow(reader, RowAction::Add, row, records);
        keepFurther(reader, std::move(row), RowAction::Add, grid, grid.multiplyRows);
    });
    endCopiedList(reader);
}

void readEqualreg(SectionReader& reader, GridRecords& records) {
    readRegionRows(reader, RowAction::Set, records.grid, records.grid.equalsRows);
}
void readMultireg(SectionReader& reader, GridRecords& records) {
    readRegionRows(reader, RowAction::Multiply, records.grid, records.grid.multiplyRows);
}
void readAddreg(SectionReader& reader, GridRecords& records) {
    readRegionRows(reader, RowAction::Add, records.grid, records.grid.multiplyRows);
}

void requireRegionNumbers(SectionReader& reader, const ArithmeticStart& start, const GridModel& grid) {
    const auto check = [&](const std::vector<ArithmeticRow>& list, std::size_t from) {
        for (std::size_t n = from; n < list.size(); ++n) {
            const ArithmeticRow& row = list[n];
            if (row.region < 1 || !regionNumbers(grid, row.regionSet).empty()) continue;
            both(consoleOf(reader), "ERROR :: REGION {} OF {}, BUT THE DECK DOES NOT GIVE {}", row.region,
                 row.name,
                 row.regionSet == RegionSet::Flux   ? "FLUXNUM"
                 : row.regionSet == RegionSet::Oper ? "OPERNUM"
                                                    : "MULTNUM");
            lineToBoth(consoleOf(reader), placeText(row.place, row.action == RowAction::Set   ? "EQUALREG"
                                                               : row.action == RowAction::Add ? "ADDREG"
                                                                                              : "MULTIREG"));
            hardStop(consoleOf(reader));
        }
    };
    check(grid.equalsRows, start.equals);
    check(grid.multiplyRows, start.multiply);
}

}  // namespace kvr
