#pragma once

#include "eclipse/records.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kvr {

/// One block of a file with its place in bytes.
struct ReadBlock {
    std::string keyword;  // trailing blanks off
    std::int32_t count = 0;
    std::string tag;
    std::uint64_t bytes = 0;  // header and data records
    BlockData data;
};

/// Every block of a file, which must be whole.
inline std::vector<ReadBlock> blocksOf(const std::string& path) {
    std::vector<ReadBlock> blocks;
    RecordReader reader;
    EXPECT_EQ(open_read(path, ByteOrder::Big, reader), 0) << path;
    while (reader.file != nullptr && !at_end(reader)) {
        BlockHeader header;
        ReadBlock block;
        if (read_header(reader, header) != ReadResult::Ok ||
            read_block(reader, header, block.data) != ReadResult::Ok) {
            ADD_FAILURE() << path << " byte " << reader.fault.offset << ": " << reader.fault.what;
            break;
        }
        block.keyword = std::string(view(header.keyword));
        block.keyword.erase(block.keyword.find_last_not_of(' ') + 1);
        block.count = header.count;
        block.tag.assign(header.tag.data(), header.tag.size());
        block.bytes = reader.position - header.offset;
        blocks.push_back(std::move(block));
    }
    close(reader);
    return blocks;
}

inline std::vector<std::string> keywordsOf(const std::vector<ReadBlock>& blocks) {
    std::vector<std::string> names;
    for (const ReadBlock& block : blocks) names.push_back(block.keyword);
    return names;
}

/// The first block of a keyword.
inline const ReadBlock& blockNamed(const std::vector<ReadBlock>& blocks, const std::string& keyword) {
    for (const ReadBlock& block : blocks)
        if (block.keyword == keyword) return block;
    ADD_FAILURE() << "no " << keyword;
    static const ReadBlock none;
    return none;
}

inline std::vector<std::string> textsOf(const ReadBlock& block) {
    std::vector<std::string> texts;
    for (const Text8& text : block.data.texts) texts.emplace_back(view(text));
    return texts;
}

}  // namespace kvr
