#include "deck/sections/arithmetic_rows.hpp"

#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"
#include "model/array_arithmetic.hpp"
#include "model/cell_box.hpp"
#include "model/multipliers.hpp"

#include <array>

namespace kvr {

namespace {

constexpr std::size_t NameWidth = 8;

std::string nameOf(const std::string& text) {
    return std::string(trim(std::string_view(text).substr(0, NameWidth)));
}

/// No limit of the box is given.
bool isOpen(const CellBox& b) {
    return b.i1 == 0 && b.i2 == 0 && b.j1 == 0 && b.j2 == 0 && b.k1 == 0 && b.k2 == 0;
}

/// From the deck's unit to the other system's, of what a row sets.
double copyFactorOf(const SectionReader& reader, std::string_view name) {
    const auto isNamed = [name](std::string_view other) { return matchesInThreeForms(trim(name), other); };
    const bool sets = reader.keyword == "EQUALS";
    if ((sets || reader.keyword == "ADD") && (isNamed("PCW") || isNamed("PCG")))
        return reader.units->copyPressure;
    if (!sets) return 1.0;
    if (isNamed("PRESSURE")) return reader.units->copyPressure;
    const EqualsArray* known = findEqualsArray(name);
    return known != nullptr && known->isLength ? reader.units->copyLength : 1.0;
}

void copyBoxRow(const SectionReader& reader, const ArithmeticRow& row) {
    const double factor = copyFactorOf(reader, row.name);
    const CellBox& b = row.box;
    if (isOpen(b)) return copyRow(reader, {{0.0, 1.0, row.name}, {row.value, factor, {}}});
    copyRow(reader, {{0.0, 1.0, row.name},
                     {row.value, factor, {}},
                     {static_cast<double>(b.i1), 1.0, {}},
                     {static_cast<double>(b.i2), 1.0, {}},
                     {static_cast<double>(b.j1), 1.0, {}},
                     {static_cast<double>(b.j2), 1.0, {}},
                     {static_cast<double>(b.k1), 1.0, {}},
                     {static_cast<double>(b.k2), 1.0, {}}});
}

}  // namespace

void checkBox(const SectionReader& reader, const GridModel& grid, const CellBox& box) {
    if (boxFits(grid, box)) return;
    both(consoleOf(reader), "ERROR :: BOX OUTSIDE THE GRID: {} {} {} {} {} {} IN {} {} {}", box.i1, box.i2,
         box.j1, box.j2, box.k1, box.k2, grid.NX, grid.NY, grid.NZ);
    stopAtPlace(reader);
}

void tellMissingBox(const SectionReader& reader, const ListEnd& row, bool& boxed) {
    constexpr int ValuesBeforeBox = 2;
    if (reader.commonForm) return;
    const bool hasBox = row.count > ValuesBeforeBox;
    if (!hasBox && boxed)
        warnHere(reader, "WARNING :: A ROW WITHOUT A BOX MEANS {}, NOT THE BOX OF THE ROW BEFORE",
                 reader.box.isSet ? "THE PRESENT BOX" : "ALL CELLS");
    boxed = boxed || hasBox;
}

void checkRoom(const SectionReader& reader, const std::vector<ArithmeticRow>& list) {
    if (list.size() < MaxArithmeticRows) return;
    ListEnd full;
    full.error = ListError::TooManyRows;
    full.errorLine = reader.cursor->lineNumber + 1;
    full.errorText = fmt::format("more than {} rows", MaxArithmeticRows);
    checkRead(reader, full);
}

bool isNegativeFactor(const SectionReader& reader, const ArithmeticRow& row) {
    if (row.value >= 0.0) return false;
    warnHere(reader, "WARNING :: MULTIPLY {} BY {}, WHICH IS BELOW 0, ROW SKIPPED", row.name,
             number(row.value));
    return true;
}

void endCopiedList(const SectionReader& reader) {
    copyTableEnd(reader);
}

CellBox boxOfFirstRow(const SectionReader& reader) {
    return reader.box.isSet ? reader.box.cells : CellBox{};
}

ArithmeticRow readBoxRow(SectionReader& reader, const GridModel& grid, CellBox& before, ListEnd& end) {
    ArithmeticRow row;
    row.box = before;
    CellBox& box = row.box;
    const std::array<ListTarget, 8> targets = {&row.name, &row.value, &box.i1, &box.i2,
                                               &box.j1,   &box.j2,    &box.k1, &box.k2};
    end = readList(*reader.cursor, targets);
    checkRead(reader, end);
    row.name = nameOf(row.name);
    checkBox(reader, grid, box);
    copyBoxRow(reader, row);
    if (reader.commonForm) before = row.box;
    return row;
}

ArithmeticRow readCopyRow(SectionReader& reader, const GridModel& grid, CellBox& before, ListEnd& end) {
    constexpr std::size_t Names = 2;
    ArithmeticRow row;
    if (reader.commonForm) row.box = before;
    CellBox& box = row.box;
    const std::array<ListTarget, 8> targets = {&row.name, &row.secondName, &box.i1, &box.i2,
                                               &box.j1,   &box.j2,         &box.k1, &box.k2};
    end = readList(*reader.cursor, std::span(targets).first(reader.commonForm ? targets.size() : Names));
    checkRead(reader, end);
    checkBox(reader, grid, box);
    if (reader.commonForm) before = box;
    row.name = nameOf(row.name);
    row.secondName = nameOf(row.secondName);
    if (isOpen(box)) return copyRow(reader, {{0.0, 1.0, row.name}, {0.0, 1.0, row.secondName}}), row;
    copyRow(reader, {{0.0, 1.0, row.name},
                     {0.0, 1.0, row.secondName},
                     {1.0 * box.i1, 1.0, {}},
                     {1.0 * box.i2, 1.0, {}},
                     {1.0 * box.j1, 1.0, {}},
                     {1.0 * box.j2, 1.0, {}},
                     {1.0 * box.k1, 1.0, {}},
                     {1.0 * box.k2, 1.0, {}}});
    return row;
}

}  // namespace kvr
