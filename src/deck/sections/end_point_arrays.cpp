#include "deck/sections/end_point_arrays.hpp"

#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "model/cell_box.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace kvr {

namespace {

constexpr double NotGiven = std::numeric_limits<double>::quiet_NaN();

/// Place of an array among EndPointKeywords, their number for any other word.
std::size_t placeOfArray(std::string_view name) {
    const std::string word = toUpper(trim(name));
    const auto* const found =
        std::find_if(EndPointKeywords.begin(), EndPointKeywords.end(),
                     [&word](const EndPointKeyword& keyword) { return keyword.name == word; });
    return static_cast<std::size_t>(found - EndPointKeywords.begin());
}

/// Scaling belongs to decks in the common form that ask for it; elsewhere its keywords are told and read
/// over.
bool isAskedFor(SectionReader& reader, const PropsRecords& records) {
    if (!reader.commonForm) {
        reportNotSupported(reader, reader.keyword);
        skipKeywordData(reader);
        return false;
    }
    if (!records.tables.scaling.isSet)
        warnHere(reader, "WARNING :: {} HAS NO EFFECT WITHOUT ENDSCALE IN RUNSPEC", reader.keyword);
    return true;
}

CellArray<double>& arrayAt(PropsRecords& records, std::size_t place) {
    CellArray<double>& values = records.tables.scaling.given[place];
    if (values.empty()) values.assign(records.grid.NCELLS, NotGiven);
    return values;
}

/// Rows of array, value and box; `act` gets what a cell has, and the value. Only EQUALS begins an array.
template <class Act>
void readRows(SectionReader& reader, PropsRecords& records, bool hasUnit, const Act& act) {
    if (!isAskedFor(reader, records)) return;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    CellBox before = boxOfFirstRow(reader);
    while (nextTableRow(reader, rows)) {
        const ArithmeticRow row = readBoxRow(reader, records.grid, before, rows.last);
        const std::size_t place = placeOfArray(row.name);
        if (place == EndPointKeywords.size()) {
            reportNotSupported(reader, row.name);
            continue;
        }
        if (reader.keyword != "EQUALS" && records.tables.scaling.given[place].empty()) {
            warnHere(reader, "WARNING :: {} OF {}, WHICH NO ARRAY GIVES, ROW SKIPPED", reader.keyword,
                     row.name);
            continue;
        }
        const bool isPressure = hasUnit && EndPointKeywords[place].isPressure;
        const double value = isPressure ? row.value * reader.units->pressure : row.value;
        CellArray<double>& values = arrayAt(records, place);
        forEachCell(records.grid, row.box, [&](CellId cell) { act(values[cell], value); });
    }
    endCopiedList(reader);
}

}  // namespace

void readEndPoints(SectionReader& reader, PropsRecords& records) {
    if (!isAskedFor(reader, records)) return;
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    const std::size_t place = placeOfArray(reader.keyword);
    const bool isPressure = EndPointKeywords[place].isPressure;
    readCellArray(reader, arrayAt(records, place).cells(), isPressure ? reader.units->pressure : 1.0,
                  isPressure ? reader.units->copyPressure : 1.0);
}

void readInitialWater(SectionReader& reader, PropsRecords& records) {
    if (!isAskedFor(reader, records)) return;
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    CellArray<double>& values = records.tables.scaling.initialWater;
    if (values.empty()) values.assign(records.grid.NCELLS, NotGiven);
    readCellArray(reader, values.cells());
}

void readScalecrs(SectionReader& reader, PropsRecords& records) {
    if (!isAskedFor(reader, records)) return;
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::string word = "NO";
    const std::array<ListTarget, 1> targets = {&word};
    checkRead(reader, readList(*reader.cursor, targets));
    records.tables.scaling.threePoint = toUpper(trim(word)).starts_with('Y');
}

void readEndPointEquals(SectionReader& reader, PropsRecords& records) {
    readRows(reader, records, true, [](double& point, double value) { point = value; });
}

void readEndPointMultiply(SectionReader& reader, PropsRecords& records) {
    readRows(reader, records, false, [](double& point, double value) { point *= value; });
}

void readEndPointAdd(SectionReader& reader, PropsRecords& records) {
    readRows(reader, records, true, [](double& point, double value) { point += value; });
}

void readEndPointCopy(SectionReader& reader, PropsRecords& records) {
    if (!isAskedFor(reader, records)) return;
    announce(reader, reader.keyword);
    copyKeyword(reader);
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    CellBox before = boxOfFirstRow(reader);
    while (nextTableRow(reader, rows)) {
        const ArithmeticRow row = readCopyRow(reader, records.grid, before, rows.last);
        const std::size_t source = placeOfArray(row.name), target = placeOfArray(row.secondName);
        if (source == EndPointKeywords.size() || target == EndPointKeywords.size()) {
            reportNotSupported(reader, row.name + " " + row.secondName);
            continue;
        }
        const CellArray<double>& from = arrayAt(records, source);
        CellArray<double>& to = arrayAt(records, target);
        forEachCell(records.grid, row.box, [&](CellId cell) { to[cell] = from[cell]; });
    }
    endCopiedList(reader);
}

}  // namespace kvr
