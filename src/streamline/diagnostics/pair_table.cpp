#include "streamline/diagnostics/pair_table.hpp"

#include "base/index.hpp"
#include "streamline/diagnostics/line_course.hpp"

#include <limits>

namespace kvr {

namespace {

constexpr double NoTime = std::numeric_limits<double>::epsilon();  // days; below it no line is kept yet

int indexAmong(const WellRecord& wells, const PairTable& table, int well, bool injectors) {
    if (well < 1 || at(well) > wells.wells.size() || at(well) > table.indexOfWell.size()) return 0;
    return isInjector(wells.wells[at(well) - 1]) == injectors ? table.indexOfWell[at(well) - 1] : 0;
}

}  // namespace

int injectorIndex(const WellRecord& wells, const PairTable& table, int well) {
    return indexAmong(wells, table, well, true);
}

int producerIndex(const WellRecord& wells, const PairTable& table, int well) {
    return indexAmong(wells, table, well, false);
}

int connectionNumber(const PairTable& table, int injector, int producer) {
    if (injector <= 0 || producer <= 0) return 0;
    return (injector - table.injectors) + table.injectors * producer;
}

void clearPairs(const WellRecord& wells, bool keepFastest, PairTable& table) {
    table.injectors = table.producers = 0;
    table.indexOfWell.clear();
    table.joining.clear();
    for (const Well& well : wells.wells)
        table.indexOfWell.push_back(isInjector(well) ? ++table.injectors : ++table.producers);
    const std::size_t pairs = at(table.injectors) * at(table.producers);
    table.allocation.assign(pairs, 0.0);
    table.waterAllocation.assign(pairs, 0.0);
    table.lineCount.assign(at(table.producers), 0);
    table.fastest.assign(keepFastest ? pairs : 0, {});
}

void addToPair(const WellRecord& wells, const PairShare& share, PairTable& table) {
    const int injector = injectorIndex(wells, table, share.injector);
    const int producer = producerIndex(wells, table, share.producer);
    const int pair = connectionNumber(table, injector, producer);
    if (pair == 0) return;
    table.allocation[at(pair) - 1] += share.flow;
    table.waterAllocation[at(pair) - 1] += share.waterFraction * share.flow;
    ++table.lineCount[at(producer) - 1];
}

void keepFastest(const WellRecord& wells, const GridModel& grid, const StreamlineRecord& record,
                 bool againstFlow, PairTable& table) {
    const int pair = connectionNumber(table, injectorIndex(wells, table, record.injector),
                                      producerIndex(wells, table, record.producer));
    if (pair == 0 || table.fastest.empty()) return;
    EndNodeRecord& kept = table.fastest[at(pair) - 1];
    const double time = record.NodeTof[at(record.nodeCount)];
    if (kept.endTime >= NoTime && time >= kept.endTime) return;
    kept.endTime = time;
    kept.cell.clear();
    kept.time.clear();
    kept.position.clear();
    const LineCourse course{record, againstFlow};
    for (int m = 1; m <= record.nodeCount; ++m) {
        const std::array<double, 3> point = coursePoint(grid, course, m);
        kept.cell.push_back(courseCell(course, m));
        kept.time.push_back(static_cast<float>(courseTime(course, m)));
        kept.position.push_back(
            {static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2])});
    }
}

}  // namespace kvr
