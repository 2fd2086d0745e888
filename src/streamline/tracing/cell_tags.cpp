#include "streamline/tracing/cell_tags.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double LeastTaggedRate = 1e-8;  // surface volume a day; below it a rate well does not count

bool marksItsCells(const Well& well) {
    return !well.shut && (!isRateControlled(well) || std::abs(well.TargetRate) > LeastTaggedRate);
}

}  // namespace

CellTagKind tagKindOf(std::string_view word) {
    if (word == "inj") return CellTagKind::Injector;
    return word == "prd" ? CellTagKind::Producer : CellTagKind::Pop;
}

void rebuildCellTags(CellId cellCount, const WellRecord& wells, CellTags& tags) {
    tags.CellTag.assign(cellCount, CellTagKind::Pop);
    for (const Well& well : wells.wells) {
        if (!marksItsCells(well)) continue;
        for (const WellConnection& connection : well.connections)
            if (startsOrEndsLines(well, connection))
                tags.CellTag[connection.ConnCell] = tagKindOf(well.WellKind);
    }
}

}  // namespace kvr
