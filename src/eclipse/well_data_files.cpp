#include "eclipse/well_data_files.hpp"

#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/well_data_layout.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr std::array<int, 6> CalculatedIds = {response::WOPR, response::WWPR, response::WGPR,
                                              response::WBHP, response::WWCT, response::WGOR};
constexpr std::array<int, 6> ObservedIds = {response::WOPRH, response::WWPRH, response::WGPRH,
                                            response::WBHPH, response::WWCTH, response::WGORH};

std::FILE* createFile(const Console& console, const std::string& path) {
    std::FILE* file = replaceTextOrStop(console, path);
    log(console, " File Created -> {}", path);
    return file;
}

void putHead(int componentCount, std::FILE* file) {
    NumberWriter writer;
    writer.file = file;
    putWellDataHead(componentCount, writer);
    flush(writer);
}

void putRows(const std::vector<int>& ids, const SharedElements<ScheduleWell>& wells,
             const SummaryResponse& response, std::FILE* file) {
    NumberWriter writer;
    writer.file = file;
    std::vector<double> values(ids.size() + 1);
    for (std::size_t slot = 0; slot < response.wellNames.size(); ++slot) {
        const std::string& name = response.wellNames[slot];
        const bool injects = std::any_of(wells.begin(), wells.end(), [&](const ScheduleWell& well) {
            return well.name == name && well.isInjector;
        });
        if (injects) continue;
        for (std::size_t step = 0; step < response.time.size(); ++step) {
            values[0] = response.time[step];
            for (std::size_t n = 0; n < ids.size(); ++n) {
                const std::vector<double>* vector = responseOf(response, ids[n], static_cast<int>(slot) + 1);
                values[n + 1] = vector == nullptr ? 0.0 : (*vector)[step];
            }
            putWellDataRow(name, values, writer);
        }
    }
    flush(writer);
}

std::vector<int> withComponents(const std::array<int, 6>& ids, int componentCount) {
    std::vector<int> all(ids.begin(), ids.end());
    for (int c = 0; c < componentCount; ++c) all.push_back(response::FirstComponent + c);
    return all;
}

}  // namespace

WellDataFiles openWellData(const Console& console, const RunOptions& options) {
    WellDataFiles files;
    files.calculated = createFile(console, options.workingFolder + "WELL_CALCULATED.DATA");
    if (options.useHistoryControls)
        files.observed = createFile(console, options.workingFolder + "WELL_OBSERVED.DATA");
    return files;
}

void writeWellDataHeads(int componentCount, WellDataFiles& files) {
    putHead(componentCount, files.calculated);
    if (files.observed != nullptr) putHead(componentCount, files.observed);
}

void writeWellDataRows(int componentCount, const SharedElements<ScheduleWell>& wells,
                       const SummaryResponse& response, WellDataFiles& files) {
    putRows(withComponents(CalculatedIds, componentCount), wells, response, files.calculated);
    if (files.observed != nullptr)
        putRows(withComponents(ObservedIds, componentCount), wells, response, files.observed);
}

void closeWellData(const Console& console, WellDataFiles& files) {
    for (std::FILE** file : {&files.calculated, &files.observed}) {
        if (*file != nullptr) closeWhole(console, *file);
        *file = nullptr;
    }
}

}  // namespace kvr
