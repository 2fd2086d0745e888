#pragma once

#include "base/arrow_rules.hpp"
#include "base/console.hpp"
#include "eclipse/records.hpp"

#include <cstdint>
#include <limits>
#include <string_view>

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
/// leave early, Error to end as an error; so does the loop, with Ok in the place of EndOfFile. No more than
/// `most` headers are read.
template <class Take>
ReadResult readBlocks(RecordReader& reader, Take take,
                      std::uint64_t most = std::numeric_limits<std::uint64_t>::max()) {
    BlockData data;
    for (std::uint64_t count = 0; count < most; ++count) {
        BlockHeader header;
        ReadResult result = read_header(reader, header);
        if (result == ReadResult::Ok) result = read_block(reader, header, data);
        if (result == ReadResult::Ok) result = take(header, data);
        if (result == ReadResult::EndOfFile) return ReadResult::Ok;
        if (result == ReadResult::Error) return result;
    }
    return ReadResult::Ok;
}

}  // namespace kvr
