#include "eclipse/outside_head.hpp"

#include "eclipse/file_names.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/keyword_loop.hpp"

namespace kvr {

namespace {

constexpr std::int32_t OilBit = 1, WaterBit = 2, GasBit = 4;  // of the phases in a header

std::int32_t slotOf(const std::vector<std::int32_t>& head, std::size_t slot) {
    return head[slot - 1];
}

OutsideHead headOf(const std::vector<std::int32_t>& slots) {
    const std::int32_t phases = slotOf(slots, inte_head::Phases);
    OutsideHead head;
    head.found = true;
    head.hasOil = (phases & OilBit) != 0;
    head.hasWater = (phases & WaterBit) != 0;
    head.hasGas = (phases & GasBit) != 0;
    head.startDay = slotOf(slots, inte_head::Day);
    head.startMonth = slotOf(slots, inte_head::Month);
    head.startYear = slotOf(slots, inte_head::Year);
    return head;
}

bool isDate(const OutsideHead& head) {
    return head.startDay >= 1 && head.startDay <= 31 && head.startMonth >= 1 && head.startMonth <= 12 &&
           head.startYear >= 1 && head.startYear <= 9999;
}

}  // namespace

OutsideHead readOutsideHead(const RunOptions& options, std::string_view header) {
    OutsideHead head;
    RecordReader reader;
    if (open_read(outsideFile(options, header, ".INIT"), ByteOrder::Big, reader) != 0) return head;
    BlockHeader block;
    BlockData data;
    const bool read =
        read_header(reader, block) == ReadResult::Ok && read_block(reader, block, data) == ReadResult::Ok;
    close(reader);
    if (!read || view(block.keyword) != "INTEHEAD" || data.integers.size() < inte_head::Year) return head;
    head = headOf(data.integers);
    head.found = isDate(head);
    return head;
}

}  // namespace kvr
