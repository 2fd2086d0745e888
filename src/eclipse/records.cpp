#include "eclipse/records.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>

namespace kvr {

namespace {

using record_detail::MarkerBytes;

constexpr std::array<ElementKind, 5> Kinds = {
    {{"INTE", 4, 1000}, {"REAL", 4, 1000}, {"DOUB", 8, 1000}, {"LOGI", 4, 1000}, {"CHAR", 8, 105}}};

constexpr std::size_t HeaderBytes = 16;     // payload of a header record
constexpr std::size_t CountTagBytes = 8;    // what a header holds behind the keyword
constexpr std::size_t DiscardBytes = 8192;  // read at once where the data are not wanted

ReadResult fail(RecordReader& reader, int status, std::uint64_t offset, std::string_view what) {
    reader.fault = {status, offset, what};
    return ReadResult::Error;
}

std::uint64_t remaining(const RecordReader& reader) {
    return reader.size - reader.position;
}

bool nativeIs(ByteOrder order) {
    return (order == ByteOrder::Big) == (std::endian::native == std::endian::big);
}

template <class Bits>
Bits inOrder(Bits bits, ByteOrder order) {
    return nativeIs(order) ? bits : record_detail::swapBytes(bits);
}

std::uint32_t bitsAt(const unsigned char* place, ByteOrder order) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, place, sizeof bits);
    return inOrder(bits, order);
}

ReadResult readBytes(RecordReader& reader, void* place, std::size_t count) {
    if (remaining(reader) < count)
        return fail(reader, RecordFault::Truncated, reader.position, "the file ends here");
    if (std::fread(place, 1, count, reader.file) != count)
        return fail(reader, RecordFault::NotRead, reader.position, "the data could not be read");
    reader.position += count;
    return ReadResult::Ok;
}

ReadResult readMarker(RecordReader& reader, std::uint32_t& length) {
    std::array<unsigned char, MarkerBytes> bytes{};
    const ReadResult result = readBytes(reader, bytes.data(), bytes.size());
    if (result == ReadResult::Ok) length = bitsAt(bytes.data(), reader.order);
    return result;
}

/// The closing length of a record that began at `start`.
ReadResult readClosingMarker(RecordReader& reader, std::uint32_t length, std::uint64_t start) {
    std::uint32_t closing = 0;
    if (readMarker(reader, closing) == ReadResult::Error) return ReadResult::Error;
    if (closing != length)
        return fail(reader, RecordFault::BadMarker, start, "the two lengths of this record differ");
    return ReadResult::Ok;
}

bool isHeaderLength(std::uint32_t length) {
    return length > CountTagBytes && length <= HeaderBytes;
}

/// Takes one data record apart: its elements go to `place`, or nowhere when that is null.
ReadResult readPayload(RecordReader& reader, std::size_t bytes, unsigned char* place) {
    if (place != nullptr) return readBytes(reader, place, bytes);
    std::array<unsigned char, DiscardBytes> discarded;
    for (std::size_t done = 0; done < bytes; done += DiscardBytes)
        if (readBytes(reader, discarded.data(), std::min(DiscardBytes, bytes - done)) == ReadResult::Error)
            return ReadResult::Error;
    return ReadResult::Ok;
}

/// All data records of `total` elements, in the cut of the format or all in one.
ReadResult readRecords(RecordReader& reader, const ElementKind& kind, std::size_t total,
                       unsigned char* place) {
    const std::size_t wholeBytes = total * kind.width;
    for (std::size_t done = 0; done < wholeBytes;) {
        const std::uint64_t start = reader.position;
        std::uint32_t length = 0;
        if (readMarker(reader, length) == ReadResult::Error) return ReadResult::Error;
        const std::size_t expected = std::min(kind.perRecord * kind.width, wholeBytes - done);
        const bool allInOne = done == 0 && length == wholeBytes;
        if (length != expected && !allInOne)
            return fail(reader, RecordFault::BadMarker, start,
                        "this data record has not the length that its block asks for");
        if (readPayload(reader, length, place == nullptr ? nullptr : place + done) == ReadResult::Error ||
            readClosingMarker(reader, length, start) == ReadResult::Error)
            return ReadResult::Error;
        done += length;
    }
    return ReadResult::Ok;
}

/// Elements that are numbers: read as they stand, then turned to the machine's byte order.
template <class Bits, class T>
ReadResult readInto(RecordReader& reader, ElementType type, std::size_t total, std::vector<T>& values) {
    static_assert(sizeof(Bits) == sizeof(T));
    values.resize(total);
    auto* place = reinterpret_cast<unsigned char*>(values.data());
    if (readRecords(reader, kindOf(type), total, place) == ReadResult::Error) return ReadResult::Error;
    if (nativeIs(reader.order)) return ReadResult::Ok;
    for (T& value : values) value = std::bit_cast<T>(record_detail::swapBytes(std::bit_cast<Bits>(value)));
    return ReadResult::Ok;
}

ReadResult readTexts(RecordReader& reader, std::size_t total, std::vector<Text8>& texts) {
    texts.resize(total);
    auto* place = reinterpret_cast<unsigned char*>(texts.data());
    return readRecords(reader, kindOf(ElementType::Char), total, place);
}

void release(BlockData& data) {
    data.integers.clear();
    data.reals.clear();
    data.doubles.clear();
    data.logicals.clear();
    data.texts.clear();
}

/// The type of a block that the file can hold; no type for a block without elements.
ReadResult checkBlock(RecordReader& reader, const BlockHeader& header, std::optional<ElementType>& type) {
    type.reset();
    if (header.count == 0) return ReadResult::Ok;
    if (header.count < 0)
        return fail(reader, RecordFault::BadCount, header.offset, "this block has a negative count");
    type = typeOfTag({header.tag.data(), header.tag.size()});
    if (!type)
        return fail(reader, RecordFault::BadTag, header.offset,
                    "the elements of this block have no known type");
    const std::uint64_t bytes = static_cast<std::uint64_t>(header.count) * kindOf(*type).width;
    if (remaining(reader) < bytes + 2 * MarkerBytes)
        return fail(reader, RecordFault::Truncated, header.offset,
                    "this block has more elements than the rest of the file holds");
    return ReadResult::Ok;
}

}  // namespace

const ElementKind& kindOf(ElementType type) {
    return Kinds[static_cast<std::size_t>(type)];
}

std::optional<ElementType> typeOfTag(std::string_view tag) {
    for (std::size_t n = 0; n < Kinds.size(); ++n)
        if (Kinds[n].tag == tag) return static_cast<ElementType>(n);
    return {};
}

Text8 text8(std::string_view text) {
    Text8 result;
    result.fill(' ');
    std::copy_n(text.begin(), std::min(text.size(), result.size()), result.begin());
    return result;
}

// --- writing ---------------------------------------------------------------------------------------------

namespace record_detail {

unsigned char* beginRecord(RecordWriter& writer, std::size_t payloadBytes) {
    writer.record.resize(payloadBytes + 2 * MarkerBytes);
    const auto length = static_cast<std::int32_t>(payloadBytes);
    putElement(writer.record.data(), length);
    putElement(writer.record.data() + MarkerBytes + payloadBytes, length);
    return writer.record.data() + MarkerBytes;
}

void endRecord(RecordWriter& writer) {
    std::fwrite(writer.record.data(), 1, writer.record.size(), writer.file);
}

}  // namespace record_detail

int open_write(const std::string& path, RecordWriter& writer) {
    errno = 0;
    writer.path = path;
    writer.file = std::fopen(path.c_str(), "wb");
    if (writer.file != nullptr) return 0;
    return errno;
}

void write_header(RecordWriter& writer, std::string_view keyword, std::int32_t count, ElementType type,
                  std::size_t keywordWidth) {
    unsigned char* place = record_detail::beginRecord(writer, keywordWidth + CountTagBytes);
    const Text8 name = text8(keyword);
    std::memcpy(place, name.data(), keywordWidth);
    record_detail::putElement(place + keywordWidth, count);
    const std::string_view tag = kindOf(type).tag;
    std::memcpy(place + keywordWidth + sizeof count, tag.data(), tag.size());
    record_detail::endRecord(writer);
}

bool close(RecordWriter& writer) {
    if (writer.file == nullptr) return true;
    const bool whole = std::ferror(writer.file) == 0;
    const bool closed = std::fclose(writer.file) == 0;
    writer.file = nullptr;
    return whole && closed;
}

// --- reading ---------------------------------------------------------------------------------------------

int open_read(const std::string& path, ByteOrder order, RecordReader& reader) {
    close(reader);
    reader = {};
    reader.path = path;
    reader.order = order;
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return errno;
    reader.file = file;
    // A folder opens but has no end to go to.
    const long end = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
    if (end < 0 || end == LONG_MAX || std::fseek(file, 0, SEEK_SET) != 0) {
        const int status = errno == 0 ? EISDIR : errno;
        close(reader);
        return status;
    }
    reader.size = static_cast<std::uint64_t>(end);
    return 0;
}

void close(RecordReader& reader) {
    if (reader.file != nullptr) std::fclose(reader.file);
    reader.file = nullptr;
}

bool at_end(const RecordReader& reader) {
    return reader.position >= reader.size;
}

ReadResult read_header(RecordReader& reader, BlockHeader& header) {
    if (at_end(reader)) return ReadResult::EndOfFile;
    header = {};
    header.offset = reader.position;
    std::uint32_t length = 0;
    if (readMarker(reader, length) == ReadResult::Error) return ReadResult::Error;
    const std::uint32_t marker = length;
    if (!isHeaderLength(length) && reader.eitherMarkerOrder) length = record_detail::swapBytes(length);
    if (!isHeaderLength(length))
        return fail(reader, RecordFault::BadMarker, header.offset, "a header record was expected here");
    std::array<unsigned char, HeaderBytes> bytes{};
    if (readBytes(reader, bytes.data(), length) == ReadResult::Error ||
        readClosingMarker(reader, marker, header.offset) == ReadResult::Error)
        return ReadResult::Error;
    const std::size_t letters = length - CountTagBytes;
    // Keywords are compared left-adjusted, wherever in its field a program has written one.
    const std::string_view written(reinterpret_cast<const char*>(bytes.data()), letters);
    header.keyword = reader.lastKeyword =
        text8(written.substr(std::min(written.find_first_not_of(' '), letters)));
    header.count = std::bit_cast<std::int32_t>(bitsAt(bytes.data() + letters, reader.order));
    std::memcpy(header.tag.data(), bytes.data() + letters + sizeof header.count, header.tag.size());
    return ReadResult::Ok;
}

ReadResult read_block(RecordReader& reader, const BlockHeader& header, BlockData& data) {
    release(data);
    std::optional<ElementType> type;
    if (checkBlock(reader, header, type) == ReadResult::Error) return ReadResult::Error;
    if (!type) return ReadResult::Ok;
    const auto total = static_cast<std::size_t>(header.count);
    try {
        switch (*type) {
            case ElementType::Inte:
                return readInto<std::uint32_t>(reader, *type, total, data.integers);
            case ElementType::Real:
                return readInto<std::uint32_t>(reader, *type, total, data.reals);
            case ElementType::Doub:
                return readInto<std::uint64_t>(reader, *type, total, data.doubles);
            case ElementType::Logi:
                return readInto<std::uint32_t>(reader, *type, total, data.logicals);
            case ElementType::Char:
                return readTexts(reader, total, data.texts);
        }
    } catch (const std::bad_alloc&) {
        return fail(reader, RecordFault::NoMemory, header.offset, "there is no memory for this block");
    }
    return ReadResult::Ok;
}

ReadResult skip_block(RecordReader& reader, const BlockHeader& header) {
    std::optional<ElementType> type;
    if (checkBlock(reader, header, type) == ReadResult::Error) return ReadResult::Error;
    if (!type) return ReadResult::Ok;
    return readRecords(reader, kindOf(*type), static_cast<std::size_t>(header.count), nullptr);
}

ReadResult rejectBlock(RecordReader& reader, const BlockHeader& header, std::string_view what) {
    return fail(reader, RecordFault::BadContent, header.offset, what);
}

}  // namespace kvr
