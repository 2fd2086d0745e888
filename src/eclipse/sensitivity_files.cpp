#include "eclipse/sensitivity_files.hpp"

#include "eclipse/file_failure.hpp"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <string_view>
#include <system_error>

namespace kvr {

namespace {

constexpr std::string_view NewFile = ".new";  // behind the name of a file until it is whole

BlockHeader valuesOfWell(CellId cells) {
    BlockHeader header;
    header.count = cells;
    header.tag = {'D', 'O', 'U', 'B'};
    return header;
}

void replaceFile(const Console& console, const std::string& from, const std::string& to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    if (error) stopOnFileStatus(console, error.value(), to);
}

}  // namespace

std::string sensitivityFileName(SensitivityKind kind, int step) {
    return fmt::format("HM_SENSTEMP_{}.K{:04}", kind == SensitivityKind::TravelTime ? "GTTI" : "GBHPI", step);
}

long long sensitivityBytes(CellId cells) {
    constexpr long long Markers = 8;  // of a record
    const auto perRecord = static_cast<long long>(kindOf(ElementType::Doub).perRecord);
    const auto width = static_cast<long long>(kindOf(ElementType::Doub).width);
    const long long records = (cells + perRecord - 1) / perRecord;
    return cells * width + records * Markers;
}

void writeSensitivityStep(const Console& console, const SensitivityPaths& paths, bool first,
                          std::size_t wellCount, CellId cells, const SensitivityFill& fill) {
    const std::string newPath = paths.ofRun + std::string(NewFile);
    RecordWriter ofStep, ofRun;
    SensitivityReader before;
    openOrStop(console, paths.ofStep, ofStep);
    openOrStop(console, newPath, ofRun);
    if (!first) openSensitivities(console, paths.ofRun, wellCount, cells, before);
    CellArray<double> values;
    values.assign(cells, 0.0);
    for (std::size_t well = 0; well < wellCount; ++well) {
        fill(well, values);
        write_block<double>(ofStep, cells, [&](std::size_t n) { return values.slots[n + 1]; });
        std::span<const double> sums;
        if (before.isOpen()) sums = readSensitivities(console, cells, well, before);
        write_block<double>(ofRun, cells, [&](std::size_t n) {
            return sums.empty() ? values.slots[n + 1] : sums[n] + values.slots[n + 1];
        });
    }
    closeOrStop(console, ofStep);
    closeOrStop(console, ofRun);
    closeSensitivities(before);
    replaceFile(console, newPath, paths.ofRun);
}

bool openSensitivities(const Console& console, const std::string& path, std::size_t wellCount, CellId cells,
                       SensitivityReader& reader) {
    const int error = open_read(path, ByteOrder::Big, reader.records);
    if (error == ENOENT) return false;
    if (error != 0) stopOnFileStatus(console, error, path);
    const auto expected =
        static_cast<std::uint64_t>(wellCount) * static_cast<std::uint64_t>(sensitivityBytes(cells));
    if (reader.records.size == expected) return true;
    rejectBlock(reader.records, valuesOfWell(cells),
                "the size is not that of the wells and cells of this run");
    stopOnRecordFault(console, reader.records);
}

std::span<const double> readSensitivities(const Console& console, CellId cells, std::size_t well,
                                          SensitivityReader& reader) {
    const auto place = static_cast<long long>(well) * sensitivityBytes(cells);
    RecordReader& records = reader.records;
    if (records.position != static_cast<std::uint64_t>(place)) {
        if (std::fseek(records.file, static_cast<long>(place), SEEK_SET) != 0)
            stopOnFileStatus(console, errno, records.path);
        records.position = static_cast<std::uint64_t>(place);
    }
    if (read_block(records, valuesOfWell(cells), reader.data) != ReadResult::Ok)
        stopOnRecordFault(console, records);
    return reader.data.doubles;
}

void closeSensitivities(SensitivityReader& reader) {
    if (reader.isOpen()) close(reader.records);
}

}  // namespace kvr
