#include "eclipse/restart_time.hpp"

#include "eclipse/file_names.hpp"
#include "eclipse/keyword_loop.hpp"
#include "eclipse/records.hpp"

namespace kvr {

namespace {

std::optional<double> timeOf(const std::string& path) {
    RecordReader reader;
    if (open_read(path, ByteOrder::Big, reader) != 0) return std::nullopt;
    std::optional<double> time;
    readBlocks(reader, [&time](const BlockHeader& header, const BlockData& data) {
        if (view(header.keyword) != "DOUBHEAD" || data.doubles.empty()) return ReadResult::Ok;
        time = data.doubles.front();
        return ReadResult::EndOfFile;
    });
    close(reader);
    return time;
}

}  // namespace

std::optional<double> timeOfNamedRestart(const RunOptions& options) {
    for (const std::string& name : {options.restartName, options.headerName}) {
        if (name.empty()) continue;
        const std::string path = outsideFile(options, name, ".X", options.restartStep);
        if (!fileExists(path)) continue;
        if (const auto time = timeOf(path)) return time;
    }
    return std::nullopt;
}

}  // namespace kvr
