#include "deck/reading/keyword_table.hpp"

#include "unit/deck/deck_bench.hpp"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>

namespace kvr {
namespace {

struct Notes {
    int oil = 0;
    std::array<int, 2> data{};
};

void takeOil(SectionReader& reader, Notes& notes) {
    announce(reader, reader.keyword);
    ++notes.oil;
}
void takeData(SectionReader& reader, Notes& notes) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    checkRead(reader, readIntegers(*reader.cursor, notes.data));
}

constexpr std::array Keywords = {
    KeywordRow<Notes>{"OIL", takeOil, "", 7},
    KeywordRow<Notes>{"OPTIONKVR", takeData, ""},
    KeywordRow<Notes>{"RPTGRID", neglect<Notes>, ""},
};
constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at RUNSPEC section",
                             "File I/O Error, in RUNSPEC Section", "INCLUDE FILE FINISHED, RUNSPEC SECTION"};

Notes dispatch(DeckBench& bench) {
    Notes notes;
    dispatchSection<Notes>(bench.reader, notes, Keywords, Texts);
    return notes;
}

/// A file that is gone at the end of the test.
struct ScratchFile {
    std::string path;
    ScratchFile(std::string_view name, std::string_view text)
        : path((std::filesystem::temp_directory_path() / name).string()) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { std::filesystem::remove(path); }
};

TEST(SectionLoop, FindsKeywordsBehindBlanksAndInFrontOfComments) {
    DeckBench bench("   OIL -- phase\nOIL\r\n/\n\tOIL/\n");
    EXPECT_EQ(dispatch(bench).oil, 3);
    EXPECT_EQ(bench.reader.keywordCount, 3);
}

TEST(SectionLoop, ComparesEightCharactersInUpperCaseOnly) {
    DeckBench bench("OPTIONKVRX\n1 2 /\noptionkvr\nOIL\n");
    const Notes notes = dispatch(bench);
    EXPECT_EQ(notes.data, (std::array<int, 2>{1, 2}));
    EXPECT_EQ(notes.oil, 1);
    EXPECT_TRUE(bench.printed(" optionkv -> not surpported  "));
}

TEST(SectionLoop, TriesTheDataLinesOfAnUnknownKeywordAsKeywordsOneByOne) {
    DeckBench bench("FOO\n1 2 3\n4 /\nOIL\n");
    EXPECT_EQ(dispatch(bench).oil, 1);
    EXPECT_EQ(bench.screen(), " FOO      -> not surpported  \n 1 2 3    -> not surpported  \nREAD -> OIL\n");
    EXPECT_EQ(bench.reader.keywordCount, 1);
}

TEST(SectionLoop, StopsInFrontOfAnotherSectionWord) {
    DeckBench bench("OIL\nREGION\n");
    dispatch(bench);
    EXPECT_EQ(bench.next(), "REGION");
}

TEST(SectionLoop, DropsTheOneLineBehindTitle) {
    DeckBench bench("TITLE\nGRID OIL FIELD\nOIL\n");
    EXPECT_EQ(dispatch(bench).oil, 1);
}

TEST(SectionLoop, SaysThatAKeywordIsNeglected) {
    DeckBench bench("RPTGRID\n 1 2 /\n 3*4\nOIL\n");
    EXPECT_EQ(dispatch(bench).oil, 1);
    EXPECT_TRUE(bench.printed("READ -> RPTGRID, is neglected\n"));
}

TEST(SectionLoop, CutsTheLineOfAKeywordTestButNotItsData) {
    DeckBench bench(std::string(100, ' ') + "OIL\nOPTIONKVR\n" + std::string(300, ' ') + "1 2\nOIL\n");
    const Notes notes = dispatch(bench);
    EXPECT_EQ(notes.oil, 1);
    EXPECT_EQ(notes.data[1], 2);
}

TEST(SectionLoop, EndsAfterTenThousandKeywordLinesAndSaysSo) {
    std::string text;
    for (int n = 0; n < MaxKeywordLines; ++n) text += "1 2 3\n";
    DeckBench bench(text + "OIL\n");
    EXPECT_EQ(dispatch(bench).oil, 0);
    EXPECT_TRUE(bench.printed("MORE THAN 10000 KEYWORD LINES"));
    EXPECT_EQ(bench.next(), "OIL");
}

TEST(Include, ReadsTheFileByTheSameTableAndEndsItAtASectionWord) {
    const ScratchFile file("kvr_include_test.inc", "OIL\nINCLUDE\n'x' /\nOPTIONKVR\n3 4 /\nGRID\nOIL\n");
    DeckBench bench("INCLUDE\n-- the file\n '" + file.path + "' /\nOIL\n");
    const Notes notes = dispatch(bench);
    EXPECT_EQ(notes.oil, 2);
    EXPECT_EQ(notes.data, (std::array<int, 2>{3, 4}));
    EXPECT_EQ(bench.reader.keywordCount, 4);  // INCLUDE counts as well
    EXPECT_EQ(bench.screen(), "READ -> INCLUDE\n-> Read Data from INCLUDE file\n-> " + file.path +
                                  "\nREAD -> OIL\n INCLUDE  -> not surpported  \nREAD -> OPTIONKVR\n"
                                  "INCLUDE FILE FINISHED, RUNSPEC SECTION\nREAD -> OIL\n");
}

TEST(Include, JoinsTheWorkingFolderAndTriesBackslashesAsSlashes) {
    const ScratchFile file("kvr_include_test2.inc", "OIL\n");
    DeckBench bench("INCLUDE\nkvr_include_test2.inc /\n");
    std::string folder = std::filesystem::temp_directory_path().string() + "\\";
    bench.reader.workingFolder = folder;
    EXPECT_EQ(dispatch(bench).oil, 1);
}

void dispatchText(std::string_view text) {
    DeckBench bench(text);
    bench.speakToStandardError();
    dispatch(bench);
}

TEST(IncludeDeathTest, StopsOnAMissingFileWithStatusAndPlace) {
    EXPECT_EXIT(dispatchText("OIL\nINCLUDE\nnowhere/missing.inc /\n"), testing::ExitedWithCode(1),
                "-> nowhere/missing.inc\nERROR: INCLUDE File Open Error at RUNSPEC section\n"
                "File I/O Error, in RUNSPEC Section 2\nFile TEST.DATA, line 3, keyword INCLUDE\n");
}

}  // namespace
}  // namespace kvr
