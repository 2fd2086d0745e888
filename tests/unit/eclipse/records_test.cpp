#include "eclipse/records.hpp"

#include "eclipse/file_failure.hpp"
#include "eclipse/keyword_loop.hpp"
#include "unit/eclipse/record_bytes.hpp"
#include "unit/quiet_console.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>
#include <numeric>

namespace kvr {
namespace {

/// A file with one block, as the writer leaves it.
template <class T>
std::string writtenBlock(std::string_view keyword, const std::vector<T>& values, Cut cut = Cut::Blocked) {
    const ScratchFolder folder;
    RecordWriter writer;
    EXPECT_EQ(open_write(folder.path + "F", writer), 0);
    write_keyword<T>(
        writer, keyword, static_cast<std::int32_t>(values.size()), [&](std::size_t n) { return values[n]; },
        cut);
    EXPECT_TRUE(close(writer));
    return folder.read("F");
}

/// An open reader over bytes made by hand.
struct OpenedBytes {
    explicit OpenedBytes(const std::string& bytes, ByteOrder order = ByteOrder::Big) {
        folder.write("F", bytes);
        EXPECT_EQ(open_read(folder.path + "F", order, reader), 0);
    }
    ~OpenedBytes() { close(reader); }
    OpenedBytes(const OpenedBytes&) = delete;
    OpenedBytes& operator=(const OpenedBytes&) = delete;

    ReadResult header() { return read_header(reader, last); }
    ReadResult block() { return read_block(reader, last, data); }

    ScratchFolder folder;
    RecordReader reader;
    BlockHeader last;
    BlockData data;
};

std::vector<std::int32_t> countedUp(std::size_t count) {
    std::vector<std::int32_t> values(count);
    std::iota(values.begin(), values.end(), 1);
    return values;
}

TEST(RecordSizes, FollowCountAndTag) {
    EXPECT_EQ(writtenBlock<std::int32_t>("EMPTY", {}).size(), 24U);
    EXPECT_EQ(writtenBlock("INTS", countedUp(1000)).size(), 4032U);
    EXPECT_EQ(writtenBlock("INTS", countedUp(1001)).size(), 4044U);
    EXPECT_EQ(writtenBlock("NAMES", std::vector<Text8>(105)).size(), 872U);
    EXPECT_EQ(writtenBlock("NAMES", std::vector<Text8>(106)).size(), 888U);
}

TEST(RecordSizes, OfOneRecordDoNotDependOnTheCut) {
    EXPECT_EQ(writtenBlock("INTS", countedUp(1001), Cut::OneRecord).size(), 24U + 8U + 4004U);
    EXPECT_EQ(writtenBlock<std::int32_t>("INTS", {}, Cut::OneRecord).size(), 24U);
}

TEST(WrittenBytes, OfAnEmptyBlockAreItsHeaderOnly) {
    EXPECT_EQ(writtenBlock<std::int32_t>("ENDGRID", {}),
              bytesOf("00000010 454e444752494420 00000000 494e5445 00000010"));
}

TEST(WrittenBytes, OfEachTypeAreBigEndian) {
    EXPECT_EQ(writtenBlock<std::int32_t>("A", {1, -2}),
              headerOf("A       ", 2, "INTE") + bytesOf("00000008 00000001 fffffffe 00000008"));
    EXPECT_EQ(writtenBlock<float>("A", {1.5F}),
              headerOf("A       ", 1, "REAL") + bytesOf("00000004 3fc00000 00000004"));
    EXPECT_EQ(writtenBlock<double>("A", {-2.0}),
              headerOf("A       ", 1, "DOUB") + bytesOf("00000008 c000000000000000 00000008"));
    EXPECT_EQ(writtenBlock<Text8>("A", {text8("P1")}),
              headerOf("A       ", 1, "CHAR") + recordOf("P1      "));
}

TEST(WrittenBytes, OfTrueAreAllOnes) {
    EXPECT_EQ(writtenBlock<bool>("FLAGS", {true, false}),
              headerOf("FLAGS   ", 2, "LOGI") + bytesOf("00000008 ffffffff 00000000 00000008"));
}

TEST(ReadBytes, WrittenAgainAreTheSame) {
    const std::string original =
        headerOf("INTS    ", 3, "INTE") + bytesOf("0000000c 00000007 80000000 7fffffff 0000000c") +
        headerOf("REALS   ", 1, "REAL") + bytesOf("00000004 c2f6e979 00000004") +
        headerOf("DOUBS   ", 1, "DOUB") + bytesOf("00000008 40091eb851eb851f 00000008") +
        headerOf("FLAGS   ", 2, "LOGI") + bytesOf("00000008 00000000 ffffffff 00000008") +
        headerOf("NAMES   ", 2, "CHAR") + recordOf("WELL-1  I2      ");
    OpenedBytes file(original);
    const ScratchFolder folder;
    RecordWriter writer;
    ASSERT_EQ(open_write(folder.path + "COPY", writer), 0);
    while (!at_end(file.reader)) {
        ASSERT_EQ(file.header(), ReadResult::Ok);
        ASSERT_EQ(file.block(), ReadResult::Ok);
        const std::string_view keyword = view(file.last.keyword);
        const BlockData& data = file.data;
        if (keyword == "INTS    ") write_keyword(writer, keyword, std::span(std::as_const(data.integers)));
        if (keyword == "REALS   ") write_keyword(writer, keyword, std::span(std::as_const(data.reals)));
        if (keyword == "DOUBS   ") write_keyword(writer, keyword, std::span(std::as_const(data.doubles)));
        if (keyword == "NAMES   ") write_keyword(writer, keyword, std::span(std::as_const(data.texts)));
        if (keyword == "FLAGS   ")
            write_keyword<bool>(writer, keyword, file.last.count,
                                [&](std::size_t n) { return data.logicals[n] != 0; });
    }
    ASSERT_TRUE(close(writer));
    EXPECT_EQ(folder.read("COPY"), original);
}

TEST(ReadBlock, TakesAllDataRecordsOfABlock) {
    for (const std::size_t count : {1U, 999U, 1000U, 1001U, 2000U, 2001U}) {
        OpenedBytes file(writtenBlock("INTS", countedUp(count)) + writtenBlock<std::int32_t>("END", {}));
        ASSERT_EQ(file.header(), ReadResult::Ok);
        ASSERT_EQ(file.block(), ReadResult::Ok);
        EXPECT_EQ(file.data.integers, countedUp(count));
        ASSERT_EQ(file.header(), ReadResult::Ok);
        EXPECT_EQ(view(file.last.keyword), "END     ");
        EXPECT_TRUE(at_end(file.reader));
    }
}

TEST(ReadBlock, TakesALongBlockFromASingleRecord) {
    OpenedBytes file(writtenBlock("INTS", countedUp(1500), Cut::OneRecord));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Ok);
    EXPECT_EQ(file.data.integers, countedUp(1500));
}

TEST(ReadBlock, ReleasesThePreviousArray) {
    OpenedBytes file(writtenBlock("INTS", countedUp(5)) + writtenBlock<float>("REALS", {1.0F}));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Ok);
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Ok);
    EXPECT_TRUE(file.data.integers.empty());
    EXPECT_EQ(file.data.reals, std::vector<float>{1.0F});
}

TEST(ReadBlock, GivesAnyNonZeroLogicalAsTrue) {
    OpenedBytes file(headerOf("FLAGS   ", 3, "LOGI") +
                     bytesOf("0000000c 00000000 00000001 ffffffff 0000000c"));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Ok);
    EXPECT_EQ(file.data.logicals[0], 0);
    EXPECT_NE(file.data.logicals[1], 0);
    EXPECT_NE(file.data.logicals[2], 0);
}

TEST(SkipBlock, StandsBehindTheBlock) {
    OpenedBytes file(writtenBlock("INTS", countedUp(2500)) + writtenBlock<float>("REALS", {2.0F}));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(skip_block(file.reader, file.last), ReadResult::Ok);
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Ok);
    EXPECT_EQ(file.data.reals, std::vector<float>{2.0F});
}

TEST(ReadHeader, OfFifteenBytesHasAKeywordOfSeven) {
    OpenedBytes file(recordOf("MAPAXES" + bigEndian32(1) + "REAL") + bytesOf("00000004 40000000 00000004"));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    EXPECT_EQ(view(file.last.keyword), "MAPAXES ");
    ASSERT_EQ(file.block(), ReadResult::Ok);
    EXPECT_EQ(file.data.reals, std::vector<float>{2.0F});
}

TEST(ReadHeader, OfUnknownTypeWithoutElementsIsTaken) {
    OpenedBytes file(headerOf("STARTSOL", 0, "MESS") + writtenBlock<float>("REALS", {2.0F}));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    EXPECT_EQ(file.block(), ReadResult::Ok);
    ASSERT_EQ(file.header(), ReadResult::Ok);
    EXPECT_EQ(view(file.last.keyword), "REALS   ");
}

TEST(ReadHeader, AtTheEndOfTheFileIsNoError) {
    OpenedBytes file("");
    EXPECT_TRUE(at_end(file.reader));
    EXPECT_EQ(file.header(), ReadResult::EndOfFile);
}

TEST(KeywordLoop, ReadsNoMoreHeadersThanItMay) {
    const std::string bytes =
        headerOf("FIRST", 0, "INTE") + headerOf("SECOND", 0, "INTE") + headerOf("THIRD", 0, "INTE");
    const auto keywords = [&](std::uint64_t most) {
        OpenedBytes file(bytes);
        std::string all;
        const auto take = [&](const BlockHeader& header, const BlockData&) {
            all += view(header.keyword);
            return ReadResult::Ok;
        };
        EXPECT_EQ(readBlocks(file.reader, take, most), ReadResult::Ok);
        return all;
    };
    EXPECT_EQ(keywords(2), "FIRST   SECOND  ");
    EXPECT_EQ(keywords(4), "FIRST   SECOND  THIRD   ");
}

TEST(ReadHeader, SeesACountInTheWrongByteOrder) {
    std::string bytes = headerOf("DIMENS  ", 3, "INTE");
    bytes = reversedGroups(bytes.substr(0, 4), 0, 4) + bytes.substr(4, 8) +
            reversedGroups(bytes.substr(12, 4), 0, 4) + bytes.substr(16, 4) +
            reversedGroups(bytes.substr(20, 4), 0, 4);
    OpenedBytes strict(bytes);
    EXPECT_EQ(strict.header(), ReadResult::Error);
    OpenedBytes file(bytes);
    file.reader.eitherMarkerOrder = true;
    ASSERT_EQ(file.header(), ReadResult::Ok);
    EXPECT_EQ(view(file.last.keyword), "DIMENS  ");
    EXPECT_EQ(static_cast<std::uint32_t>(file.last.count), 50331648U);
}

// --- malformed files ---------------------------------------------------------------------------------------

void expectFault(const std::string& bytes, int status, std::uint64_t offset) {
    OpenedBytes file(bytes);
    ReadResult result = file.header();
    if (result == ReadResult::Ok) result = file.block();
    ASSERT_EQ(result, ReadResult::Error);
    EXPECT_EQ(file.reader.fault.status, status);
    EXPECT_EQ(file.reader.fault.offset, offset);
    EXPECT_FALSE(file.reader.fault.what.empty());
}

TEST(MalformedFile, WithAHeaderAndNoDataEndsAsAnError) {
    expectFault(headerOf("PORO    ", 4, "REAL"), RecordFault::Truncated, 0);
}

TEST(MalformedFile, CutInsideARecordEndsAsAnError) {
    const std::string whole = writtenBlock("INTS", countedUp(1200));
    for (const std::size_t kept : {3U, 20U, 23U, 25U, 4000U, 4033U, 4800U})
        expectFault(whole.substr(0, kept), RecordFault::Truncated,
                    kept < 24 ? (kept < 4    ? 0U
                                 : kept < 20 ? 4U
                                             : 20U)
                              : 0U);
}

TEST(MalformedFile, WithACountPastItsEndIsRefusedBeforeAnythingIsSized) {
    OpenedBytes file(headerOf("PORO    ", 0x7fffffff, "DOUB") + std::string(100, '\0'));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    EXPECT_EQ(file.block(), ReadResult::Error);
    EXPECT_EQ(file.reader.fault.status, RecordFault::Truncated);
    EXPECT_EQ(file.data.doubles.capacity(), 0U);
}

TEST(MalformedFile, WithANegativeCountIsRefused) {
    expectFault(headerOf("PORO    ", 0xffffffff, "REAL"), RecordFault::BadCount, 0);
}

TEST(MalformedFile, WithElementsOfUnknownTypeIsRefused) {
    expectFault(headerOf("PORO    ", 1, "WHAT") + recordOf("1234"), RecordFault::BadTag, 0);
}

TEST(MalformedFile, WithAHeaderOfAnotherLengthIsRefused) {
    expectFault(recordOf("12345678901234567"), RecordFault::BadMarker, 0);
    expectFault(recordOf("12345678"), RecordFault::BadMarker, 0);
}

TEST(MalformedFile, WithDifferentLengthsAroundARecordIsRefused) {
    std::string header = headerOf("PORO    ", 1, "REAL");
    header.back() = 17;
    expectFault(header + recordOf("1234"), RecordFault::BadMarker, 0);
    std::string data = recordOf("1234");
    data.back() = 5;
    expectFault(headerOf("PORO    ", 1, "REAL") + data, RecordFault::BadMarker, 24);
}

TEST(MalformedFile, WithADataRecordOfAnotherLengthIsRefused) {
    expectFault(headerOf("PORO    ", 2, "REAL") + recordOf("1234") + recordOf("1234"), RecordFault::BadMarker,
                24);
}

TEST(OpenFile, ThatIsAFolderOrMissingGivesAStatus) {
    const ScratchFolder folder;
    RecordReader reader;
    EXPECT_NE(open_read(folder.path + "missing", ByteOrder::Big, reader), 0);
    EXPECT_NE(open_read(folder.path, ByteOrder::Big, reader), 0);
    RecordWriter writer;
    EXPECT_NE(open_write(folder.path, writer), 0);
}

TEST(FileReport, StopsByTheStatus) {
    // Not anchored at the end: the leak checker may add a line of its own.
    const Console console = consoleOnStandardError();
    EXPECT_EXIT(stopOnFileStatus(console, -1, "F"), testing::ExitedWithCode(1),
                "^ERROR: File Open Error\nF\n");
    EXPECT_EXIT(stopOnFileStatus(console, -2, "F"), testing::ExitedWithCode(1),
                "^ERROR: File handling Error\nF\n");
    EXPECT_EXIT(stopOnFileStatus(console, 13, "F"), testing::ExitedWithCode(1),
                "^\nERROR: File handling error, code = 13\n"
                "       Cannot create file for output. Check Directry path.\nF\n");
}

TEST(FileReport, OfAReadErrorNamesFileAndByte) {
    OpenedBytes file(headerOf("PORO    ", 1, "WHAT") + recordOf("1234"));
    ASSERT_EQ(file.header(), ReadResult::Ok);
    ASSERT_EQ(file.block(), ReadResult::Error);
    file.reader.path = "CASE.INIT";
    EXPECT_EXIT(
        stopOnRecordFault(consoleOnStandardError(), file.reader), testing::ExitedWithCode(1),
        "code = 3\n.*Directry path.\nCASE.INIT: byte 0: the elements of this block have no known type");
}

TEST(FileReport, OfAnOutputThatCannotBeOpenedStops) {
    RecordWriter writer;
    EXPECT_EXIT(openOrStop(consoleOnStandardError(), "/nowhere/at/all/CASE.INIT", writer),
                testing::ExitedWithCode(1), "File handling error, code = 2\n.*Directry path.\n/nowhere");
}

}  // namespace
}  // namespace kvr
