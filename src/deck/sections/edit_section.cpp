#include "base/text.hpp"
#include "deck/reading/keyword_table.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/grid_checks.hpp"
#include "deck/sections/grid_section.hpp"
#include "deck/sections/rows_in_order.hpp"

#include <array>

namespace kvr {

namespace {

void sayGridKeyword(SectionReader& reader, GridModel&) {
    lineToBoth(consoleOf(reader), "Grid keyword found.. read here as grid section");
}

bool isTransmissibility(const std::string& name) {
    return trim(name).starts_with("TRAN");
}

/// Kept, not applied: every word, since only conditioning knows which of them act.
void readMultiply(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    readBoxRows(reader, grid, grid.editRows, [&](ArithmeticRow row) {
        if (isNegativeFactor(reader, row)) return;
        if (reader.commonForm && isTransmissibility(row.name)) {
            actInOrder(reader, row, grid);
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

constexpr std::array Keywords = {
    KeywordRow<GridModel>{"EDIT", sayGridKeyword, "the section word"},
    KeywordRow<GridModel>{
        "MULTIPLY", readMultiply,
        "multiplies PERMX, PERMY, PERMZ, PORV, TRANX, TRANY, TRANZ over a box; TRANX, TRANY, "
        "TRANZ in a named deck to the upper neighbour alone"},
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
