#include "base/text.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "deck/sections/given_arrays.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/grid_checks.hpp"
#include "deck/sections/grid_section.hpp"
#include "deck/sections/rows_in_order.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

void sayGridKeyword(SectionReader& reader, GridModel&) {
    lineToBoth(consoleOf(reader), "Grid keyword found.. read here as grid section");
}

/// Rows on pore volumes and transmissibilities act where they stand in the common form, and where the deck
/// has given these before: they would be lost in what it has given.
bool actsInPlace(const SectionReader& reader, const GridModel& grid, const std::string& name) {
    const bool ofVolume = trim(name) == "PORV";
    if (!ofVolume && !trim(name).starts_with("TRAN")) return false;
    const auto isGiven = [](const CellArray<double>& array) { return !array.empty(); };
    return reader.commonForm ||
           (ofVolume ? isGiven(grid.given.poreVolume)
                     : std::any_of(grid.given.trans.begin(), grid.given.trans.end(), isGiven));
}

/// Kept, not applied: every word, since only conditioning knows which of them act.
void readMultiply(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.editRows, [&](ArithmeticRow row) {
        if (isNegativeFactor(reader, row)) return;
        if (actsInPlace(reader, grid, row.name)) {
            if (!actInOrder(reader, row, grid)) reportNotSupported(reader, row.name);
            return;
        }
        grid.editRows.push_back(std::move(row));
    });
    endCopiedList(reader);
}

void readFaultMultiplierRows(SectionReader& reader, GridModel& grid) {
    readFaultMultipliers(reader, FaultMeans::Multiply, grid, grid.faultMultipliers);
}

void readMultpv(SectionReader& reader, GridModel& grid) {
    readPoreVolumeMultiplier(reader, grid);
}

/// PORV and TRANX .. TRANZ alone: what else could be set has gone into them when the section begins.
void readEditEquals(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.editRows, [&](ArithmeticRow row) {
        row.action = RowAction::Set;
        if (!giveInOrder(reader, row, grid)) reportNotSupported(reader, row.name);
    });
    endCopiedList(reader);
}

template <int Axis>
void readTransOf(SectionReader& reader, GridModel& grid) {
    readTrans(reader, Axis, grid);
}

template <ConnectionRow::Means What>
void readConnections(SectionReader& reader, GridModel& grid) {
    readConnectionRows(reader, What, grid);
}

constexpr std::array Keywords = {
    KeywordRow<GridModel>{"EDIT", sayGridKeyword, "the section word"},
    KeywordRow<GridModel>{
        "MULTIPLY", readMultiply,
        "multiplies PERMX, PERMY, PERMZ, PORV, TRANX, TRANY, TRANZ over a box; TRANX, TRANY, "
        "TRANZ in a named deck to the upper neighbour alone"},
    KeywordRow<GridModel>{"PORV", readPorv, "pore volumes in place of those computed, one value per cell"},
    KeywordRow<GridModel>{
        "TRANX", readTransOf<0>,
        "transmissibilities to the neighbours at i + 1 in place of those computed, one per cell"},
    KeywordRow<GridModel>{"TRANY", readTransOf<1>, "the same at j + 1"},
    KeywordRow<GridModel>{"TRANZ", readTransOf<2>, "the same at k + 1"},
    KeywordRow<GridModel>{"EQUALS", readEditEquals, "sets PORV, TRANX, TRANY, TRANZ over a box"},
    KeywordRow<GridModel>{"NNC", readConnections<ConnectionRow::Means::Add>, "as in `GRID`"},
    KeywordRow<GridModel>{
        "EDITNNC", readConnections<ConnectionRow::Means::Multiply>,
        "rows of I, J, K of two cells and what the connection between them is multiplied by, one of `NNC` or "
        "across a fault"},
    KeywordRow<GridModel>{"EDITNNCR", readConnections<ConnectionRow::Means::Replace>,
                          "the same, with the transmissibility that it then has"},
    KeywordRow<GridModel>{"MULTFLT", readFaultMultiplierRows, "as in `GRID`, on top of what stands there"},
    KeywordRow<GridModel>{"MULTPV", readMultpv, "as in `GRID`, in place of what stands there"},
};

constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at EDIT section",
                             "File I/O Error, in EDIT Section", "INCLUDE FILE FINISHED, EDIT SECTION"};

}  // namespace

void readEditSection(SectionReader& reader, GridModel& grid) {
    checkDimensionsKnown(reader, grid);
    dispatchSection<GridModel>(reader, grid, Keywords, Texts);
    lineToBoth(consoleOf(reader), "-> Finished Reading EDIT. Move to Next Section");
}

}  // namespace kvr
