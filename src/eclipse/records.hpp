#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kvr {

/// Framing and element types of the binary files shared with outside simulators and their viewers. A file
/// is a stream of records: length N in four bytes, N payload bytes, the same length again. A keyword block
/// is a header record (keyword of 8 characters, signed element count, tag of 4 characters) and the data
/// records that count and tag give. Numbers are big-endian. Nothing here knows a keyword.

using Text8 = std::array<char, 8>;

enum class ElementType { Inte, Real, Doub, Logi, Char };

struct ElementKind {
    std::string_view tag;
    std::size_t width;      // bytes of one element
    std::size_t perRecord;  // elements of a full data record
};

const ElementKind& kindOf(ElementType type);
/// Empty where the tag is none of the five.
std::optional<ElementType> typeOfTag(std::string_view tag);

/// The first eight characters of `text`, padded with blanks.
Text8 text8(std::string_view text);
inline std::string_view view(const Text8& text) {
    return {text.data(), text.size()};
}

// --- writing ---------------------------------------------------------------------------------------------

/// How the elements of a block are cut into data records.
enum class Cut {
    Blocked,   // full records of ElementKind::perRecord elements, then one with the rest
    OneRecord  // everything in one, whatever its length
};

struct RecordWriter {
    std::FILE* file = nullptr;
    std::string path;
    std::vector<unsigned char> record;  // the record being put together, with its markers
};

/// Creates or replaces the file. 0, or the error number of the operating system.
int open_write(const std::string& path, RecordWriter& writer);

/// Header record; a keyword of fewer than `keywordWidth` characters is padded to it.
void write_header(RecordWriter& writer, std::string_view keyword, std::int32_t count, ElementType type,
                  std::size_t keywordWidth = sizeof(Text8));

/// False when anything written since the opening did not reach the file.
bool close(RecordWriter& writer);

// The type of an element in memory tells its type in the file.
template <class T>
constexpr ElementType elementTypeOf() {
    if constexpr (std::is_same_v<T, std::int32_t>) return ElementType::Inte;
    if constexpr (std::is_same_v<T, float>) return ElementType::Real;
    if constexpr (std::is_same_v<T, double>) return ElementType::Doub;
    if constexpr (std::is_same_v<T, bool>) return ElementType::Logi;
    if constexpr (std::is_same_v<T, Text8>) return ElementType::Char;
}

namespace record_detail {

inline constexpr std::size_t MarkerBytes = 4;
inline constexpr std::int32_t True = -1;  // as written; any other value but 0 is read as true as well

inline std::uint32_t swapBytes(std::uint32_t bits) {
    return __builtin_bswap32(bits);
}
inline std::uint64_t swapBytes(std::uint64_t bits) {
    return __builtin_bswap64(bits);
}
/// From the machine's order to big-endian or back.
template <class Bits>
Bits bigEndian(Bits bits) {
    if constexpr (std::endian::native == std::endian::big) return bits;
    return swapBytes(bits);
}

inline void putElement(unsigned char* place, std::int32_t value) {
    const auto bits = bigEndian(std::bit_cast<std::uint32_t>(value));
    std::memcpy(place, &bits, sizeof bits);
}
inline void putElement(unsigned char* place, float value) {
    putElement(place, std::bit_cast<std::int32_t>(value));
}
inline void putElement(unsigned char* place, double value) {
    const auto bits = bigEndian(std::bit_cast<std::uint64_t>(value));
    std::memcpy(place, &bits, sizeof bits);
}
inline void putElement(unsigned char* place, bool value) {
    putElement(place, value ? True : 0);
}
inline void putElement(unsigned char* place, const Text8& value) {
    std::memcpy(place, value.data(), value.size());
}

/// Sizes writer.record for a payload, sets both markers and hands out the payload's place.
unsigned char* beginRecord(RecordWriter& writer, std::size_t payloadBytes);
void endRecord(RecordWriter& writer);

}  // namespace record_detail

/// Data records of `count` elements; element n (0-based) is valueOf(n), asked once each in rising order.
template <class T, class ValueOf>
void write_block(RecordWriter& writer, std::int32_t count, ValueOf valueOf, Cut cut = Cut::Blocked) {
    const ElementKind& kind = kindOf(elementTypeOf<T>());
    const auto total = static_cast<std::size_t>(count);
    const std::size_t most = cut == Cut::OneRecord ? total : kind.perRecord;
    for (std::size_t first = 0; first < total; first += most) {
        const std::size_t here = total - first < most ? total - first : most;
        unsigned char* place = record_detail::beginRecord(writer, here * kind.width);
        for (std::size_t n = 0; n < here; ++n, place += kind.width)
            record_detail::putElement(place, static_cast<T>(valueOf(first + n)));
        record_detail::endRecord(writer);
    }
}

/// A whole keyword block of the elements of an array.
template <class T>
void write_keyword(RecordWriter& writer, std::string_view keyword, std::span<const T> values,
                   Cut cut = Cut::Blocked) {
    const auto count = static_cast<std::int32_t>(values.size());
    write_header(writer, keyword, count, elementTypeOf<T>());
    write_block<T>(
        writer, count, [&](std::size_t n) { return values[n]; }, cut);
}

/// A whole keyword block whose elements are computed one by one.
template <class T, class ValueOf>
void write_keyword(RecordWriter& writer, std::string_view keyword, std::int32_t count, ValueOf valueOf,
                   Cut cut = Cut::Blocked) {
    write_header(writer, keyword, count, elementTypeOf<T>());
    write_block<T>(writer, count, valueOf, cut);
}

// --- reading ---------------------------------------------------------------------------------------------

enum class ByteOrder { Big, Little };

enum class ReadResult { Ok, EndOfFile, Error };

/// What went wrong in a file, and where.
struct RecordFault {
    static constexpr int Truncated = -1;  // the file ends inside a record or a block
    static constexpr int NotRead = -2;    // the operating system gave no data
    static constexpr int BadMarker = 1;   // the two lengths of a record differ, or are not the expected one
    static constexpr int BadCount = 2;    // a negative or impossible count of elements
    static constexpr int BadTag = 3;      // elements of an unknown type
    static constexpr int BadContent = 4;  // a block that does not hold what its keyword promises
    static constexpr int NoMemory = 5;    // no memory for the elements of a block

    int status = 0;
    std::uint64_t offset = 0;  // bytes from the start of the file
    std::string_view what;
};

/// An open file. Lengths and counts are held against the file's size before anything is sized by them.
struct RecordReader {
    std::FILE* file = nullptr;
    std::string path;
    ByteOrder order = ByteOrder::Big;
    bool eitherMarkerOrder = false;  // header lengths may be in the other byte order too
    std::uint64_t size = 0;          // bytes
    std::uint64_t position = 0;      // bytes read
    Text8 lastKeyword{};             // of the last header read
    RecordFault fault;               // of the last call that gave ReadResult::Error
};

struct BlockHeader {
    Text8 keyword{};
    std::int32_t count = 0;
    std::array<char, 4> tag{};
    std::uint64_t offset = 0;  // of the header record
};

/// Scratch arrays for one block, one per element type; only that of the block's type is filled.
struct BlockData {
    std::vector<std::int32_t> integers;
    std::vector<float> reals;
    std::vector<double> doubles;
    std::vector<std::int32_t> logicals;  // 0 is false
    std::vector<Text8> texts;
};

/// Opens an existing file. 0, or the error number of the operating system.
int open_read(const std::string& path, ByteOrder order, RecordReader& reader);
void close(RecordReader& reader);

/// True when no further record exists.
bool at_end(const RecordReader& reader);

/// The next header. The record may be up to seven bytes short: the keyword then has fewer characters.
ReadResult read_header(RecordReader& reader, BlockHeader& header);

/// The data records behind a header, into a freshly sized array of its type; a previous array is released.
/// A block of several data records may also stand in a single one. Elements of an unknown type are an
/// error, a block of none is not. Never gives EndOfFile: a file that ends here is truncated.
ReadResult read_block(RecordReader& reader, const BlockHeader& header, BlockData& data);

/// The same reads with the data discarded.
ReadResult skip_block(RecordReader& reader, const BlockHeader& header);

/// Marks the block of `header` as one that does not hold what it should.
ReadResult rejectBlock(RecordReader& reader, const BlockHeader& header, std::string_view what);

}  // namespace kvr
