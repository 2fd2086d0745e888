#include "model/smoothing.hpp"

#include "base/messages.hpp"
#include "base/text.hpp"
#include "model/neighbours.hpp"
#include "model/rock_properties.hpp"

#include <algorithm>
#include <utility>

namespace kvr {

namespace {

double meanAround(const GridModel& grid, const CellArray<double>& values, CellId cell) {
    double sum = values[cell];
    int count = 1;
    for (int d = 1; d <= static_cast<int>(DirectionOffset.size()); ++d) {
        const CellId neighbour = neighbourOf(grid, cell, d);
        if (neighbour == 0) continue;
        sum += values[neighbour];
        ++count;
    }
    return sum / count;
}

}  // namespace

void smooth(const GridModel& grid, int passes, CellArray<double>& values) {
    CellArray<double> before = values;
    for (int pass = 1; pass <= std::min(passes, MostSmoothingPasses); ++pass) {
        std::swap(before.slots, values.slots);
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell) values[cell] = meanAround(grid, before, cell);
    }
}

void smoothRock(const Console& console, const std::vector<ConditioningRow>& rows, GridModel& grid) {
    if (grid.smoothingApplied) return;
    grid.smoothingApplied = true;
    for (const ConditioningRow& row : rows) {
        if (row.iterations > MostSmoothingPasses)
            warn(console, "WARNING :: SMTHPRM count {} is too large, {} is used", row.iterations,
                 MostSmoothingPasses);
        if (const RockProperty* property = findRockProperty(row.name); property != nullptr)
            smooth(grid, row.iterations, grid.*property->array);
        else
            both(console, " {}-> not surpported", padded(row.name, 8));
    }
}

}  // namespace kvr
