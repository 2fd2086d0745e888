#include "eclipse/well_data_files.hpp"

#include "base/number_writer.hpp"
#include "base/text.hpp"
#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr std::size_t NameWidth = 8, NameGap = 4, HeadGap = 13;
constexpr std::array<std::string_view, 8> Columns = {"WNAME", "TIME", "WOPR", "WWPR",
                                                     "WGPR",  "WBHP", "WWCT", "WGOR"};
constexpr std::array<int, 6> CalculatedIds = {response::WOPR, response::WWPR, response::WGPR,
                                              response::WBHP, response::WWCT, response::WGOR};
constexpr std::array<int, 6> ObservedIds = {response::WOPRH, response::WWPRH, response::WGPRH,
                                            response::WBHPH, response::WWCTH, response::WGORH};

std::FILE* createFile(const Console& console, const std::string& path) {
    std::FILE* file = replaceTextOrStop(console, path);
    log(console, " File Created -> {}", path);
    return file;
}

void putHeadName(std::string_view name, NumberWriter& writer) {
    put(writer, padded(name, NameWidth + HeadGap));
}

void putHead(int componentCount, std::FILE* file) {
    NumberWriter writer;
    writer.file = file;
    for (const std::string_view column : Columns) putHeadName(column, writer);
    put(writer, "\n");
    for (int c = 1; c <= componentCount; ++c) putHeadName(fmt::format("WZMF_{:04d}", c), writer);
    if (componentCount > 0) put(writer, "\n");
    flush(writer);
}

void putRows(const std::vector<int>& ids, const SharedElements<ScheduleWell>& wells,
             const SummaryResponse& response, std::FILE* file) {
    NumberWriter writer;
    writer.file = file;
    const auto putValue = [&](double value) { put(writer, fmt::format("{:20.12E} ", value)); };
    for (std::size_t slot = 0; slot < response.wellNames.size(); ++slot) {
        const std::string& name = response.wellNames[slot];
        const bool injects = std::any_of(wells.begin(), wells.end(), [&](const ScheduleWell& well) {
            return well.name == name && well.isInjector;
        });
        if (injects) continue;
        for (std::size_t step = 0; step < response.time.size(); ++step) {
            put(writer, padded(name, NameWidth + NameGap));
            putValue(response.time[step]);
            for (const int id : ids) {
                const std::vector<double>* values = responseOf(response, id, static_cast<int>(slot) + 1);
                putValue(values == nullptr ? 0.0 : (*values)[step]);
            }
            put(writer, "\n");
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
