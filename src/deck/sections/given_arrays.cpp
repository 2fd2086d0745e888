#include "deck/sections/given_arrays.hpp"

#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"
#include "model/array_arithmetic.hpp"
#include "model/given_by_cell.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr double NotGiven = -1.0;
constexpr std::array<std::string_view, 3> TransNames = {"TRANX", "TRANY", "TRANZ"};

/// Deck to internal volume of a reservoir. Liquids at the surface have the same unit.
double volumeFactor(const UnitSystem& units) {
    return units.liquidRate;
}

double volumeCopyFactor(const UnitSystem& units) {
    const UnitSystem other = otherUnits(units);
    return volumeFactor(units) * units.VolumeFactor / (volumeFactor(other) * other.VolumeFactor);
}

/// Hands the cells that the keyword gives to `give(cell, value)`, values in internal units. Those left out,
/// or below 0, keep what they have.
template <class Give>
void readGiven(SectionReader& reader, const GridModel& grid, double factor, double copyFactor,
               const Give& give) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    CellArray<double> values;
    values.assign(grid.NCELLS, NotGiven);
    readCellArray(reader, values.cells(), factor, copyFactor);
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (values[cell] >= 0.0) give(cell, values[cell]);
}

}  // namespace

UnitSystem otherUnits(const UnitSystem& units) {
    return units.deck == DeckUnits::Metric ? fieldUnits() : metricUnits();
}

void readPorv(SectionReader& reader, GridModel& grid) {
    readGiven(reader, grid, volumeFactor(*reader.units), volumeCopyFactor(*reader.units),
              [&](CellId cell, double value) { givePoreVolume(cell, value, grid); });
}

void readTrans(SectionReader& reader, int axis, GridModel& grid) {
    const UnitSystem& units = *reader.units;
    readGiven(reader, grid, units.connectionFactor,
              units.connectionFactor / otherUnits(units).connectionFactor,
              [&](CellId cell, double value) { giveTrans(cell, axis, value, grid); });
}

void readMinpv(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::array<double, 1> value = {0.0};
    checkRead(reader, readDoubles(*reader.cursor, value));
    grid.leastPoreVolume = value[0] * volumeFactor(*reader.units);
    copyKeyword(reader);
    copyRow(reader, {{value[0], volumeCopyFactor(*reader.units), {}}});
}

void readPinch(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    constexpr double AnyGap = 1e20;
    double thickness = grid.pinch.thickness / reader.units->length, gap = AnyGap;
    std::string small = "GAP", trans = "TOPBOT", multiplier = "TOP";
    const std::array<ListTarget, 5> targets = {&thickness, &small, &gap, &trans, &multiplier};
    checkRead(reader, readList(*reader.cursor, targets));
    grid.pinch = {true, thickness * reader.units->length, toUpper(trim(small)) != "NOGAP"};
    if (gap < AnyGap) warnHere(reader, "WARNING :: PINCH ITEM 3: CELLS ARE JOINED ACROSS ANY GAP");
    if (toUpper(trim(trans)) != "TOPBOT" || toUpper(trim(multiplier)) != "TOP")
        warnHere(reader, "WARNING :: PINCH ITEMS 4 AND 5: {} {} IS NOT KNOWN HERE, TOPBOT TOP IS TAKEN",
                 trans, multiplier);
}

bool giveInOrder(const SectionReader& reader, const ArithmeticRow& row, GridModel& grid) {
    if (row.action != RowAction::Set || !(row.value >= 0.0)) return false;
    const std::string name = toUpper(trim(row.name));
    if (name == "PORV") {
        const double volume = row.value * volumeFactor(*reader.units);
        forEachCellOf(grid, row, [&](CellId cell) { givePoreVolume(cell, volume, grid); });
        return true;
    }
    const auto found = std::find(TransNames.begin(), TransNames.end(), name);
    if (found == TransNames.end()) return false;
    const int axis = static_cast<int>(found - TransNames.begin());
    const double trans = row.value * reader.units->connectionFactor;
    forEachCellOf(grid, row, [&](CellId cell) { giveTrans(cell, axis, trans, grid); });
    return true;
}

}  // namespace kvr
