#include "eclipse/activity_reader.hpp"

#include "base/messages.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/keyword_loop.hpp"

namespace kvr {

namespace {

void takeActivity(const Console& console, const std::vector<std::int32_t>& values, GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        const std::int32_t value = values[static_cast<std::size_t>(cell) - 1];
        if (value != static_cast<std::int32_t>(grid.Active[cell]))
            warn(console, " WARNING :: ACTNUM for KVR and ECLIPSE does not match {}", cell);
        grid.Active[cell] = value > 0 ? 1 : 0;
    }
}

}  // namespace

ReadResult readActivityBlocks(const Console& console, RecordReader& reader, GridModel& grid) {
    return readBlocks(reader, [&](const BlockHeader& header, const BlockData& data) {
        if (view(header.keyword) != "ACTNUM  ") {
            logNeglected(console, header);
            return ReadResult::Ok;
        }
        logEmployed(console, header);
        if (data.integers.size() != static_cast<std::size_t>(grid.NCELLS))
            return rejectBlock(reader, header, "one value per cell was expected");
        takeActivity(console, data.integers, grid);
        return ReadResult::Ok;
    });
}

void input_ACTNUM_EGRID(const Console& console, const RunOptions& options, std::string_view header,
                        GridModel& grid) {
    logReaderStart(console, " Function Called  : input_ACTNUM_EGRID");
    RecordReader reader;
    if (open_read(outsideFile(options, header, ".EGRID"), ByteOrder::Big, reader) != 0) return;
    if (readActivityBlocks(console, reader, grid) == ReadResult::Error) stopOnRecordFault(console, reader);
    close(reader);
    logReaderEnd(console, " Function Ends    : input_ACTNUM_EGRID");
}

}  // namespace kvr
