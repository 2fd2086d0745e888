#pragma once

#include "base/arrow_rules.hpp"
#include "base/console.hpp"
#include "eclipse/records.hpp"

namespace kvr {

inline void logReaderStart(const Console& console, std::string_view line) {
    lineToLog(console, OpeningArrow);
    lineToLog(console, line);
}
inline void logReaderEnd(const Console& console, std::string_view line) {
    lineToLog(console, line);
    lineToLog(console, ClosingArrow);
}

inline void logEmployed(const Console& console, const BlockHeader& header) {
    log(console, "Keyword -> {} Employed ", view(header.keyword));
}
inline void logNeglected(const Console& console, const BlockHeader& header) {
    log(console, "Keyword :: {} Neglected", view(header.keyword));
}

/// Reads block after block up to the end of the file. take(header, data) gives Ok to go on, EndOfFile to
/// leave early, Error to end as an error; so does the loop, with Ok in the place of EndOfFile.
template <class Take>
ReadResult readBlocks(RecordReader& reader, Take take) {
    BlockData data;
    for (;;) {
        BlockHeader header;
        ReadResult result = read_header(reader, header);
        if (result == ReadResult::Ok) result = read_block(reader, header, data);
        if (result == ReadResult::Ok) result = take(header, data);
        if (result == ReadResult::EndOfFile) return ReadResult::Ok;
        if (result == ReadResult::Error) return result;
    }
}

}  // namespace kvr
