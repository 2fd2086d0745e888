#include "deck/sections/summary.hpp"

#include "unit/deck/deck_bench.hpp"
#include "unit/scratch_folder.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(Summary, KeepsVectorsOfTheFieldAndOfNamedOrAllWells) {
    DeckBench bench("FOPR\nWBHP\n 'P 1' P2 -- two\n P3 /\nWOPR\n/\n\nFPR\nSCHEDULE\n", "SUMMARY");
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_EQ(requests[0].mnemonic, "FOPR");
    EXPECT_EQ(requests[1].mnemonic, "WBHP");
    EXPECT_EQ(requests[1].wells, (std::vector<std::string>{"P 1", "P2", "P3"}));
    EXPECT_EQ(requests[2].mnemonic, "WOPR");
    EXPECT_TRUE(requests[2].wells.empty());
    EXPECT_EQ(requests[3].mnemonic, "FPR");
    EXPECT_EQ(bench.next(), "SCHEDULE");
}

TEST(Summary, ReportsWhatItDoesNotKnow) {
    DeckBench bench("BPR\n 1 1 1 /\n/\nRUNSUM\nSCHEDULE\n", "SUMMARY");
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    EXPECT_TRUE(requests.empty());
    EXPECT_EQ(bench.screen(), " BPR      -> not surpported  \n RUNSUM   -> not surpported  \n");
    EXPECT_EQ(bench.next(), "SCHEDULE");
}

TEST(Summary, ReadsVectorsOfAnIncludedFileAndGoesOnBehindIt) {
    const ScratchFolder folder;
    folder.write("VECTORS.INC", "FWCT\nWOPRH\n'P1'\n/\n");
    DeckBench bench("FOPR\nINCLUDE\n'VECTORS.INC' /\nFPR\nSCHEDULE\n", "SUMMARY");
    bench.reader.workingFolder = folder.path;
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    ASSERT_EQ(requests.size(), 4U);
    EXPECT_EQ(requests[1].mnemonic, "FWCT");
    EXPECT_EQ(requests[2].wells, std::vector<std::string>{"P1"});
    EXPECT_EQ(requests[3].mnemonic, "FPR");
    EXPECT_EQ(bench.next(), "SCHEDULE");
}

TEST(Summary, PassesOverAnIncludedFileThatIsNotThereWithAWarning) {
    DeckBench bench("INCLUDE\n'NONE.INC' /\nFPR\nSCHEDULE\n", "SUMMARY");
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_TRUE(bench.printed("WARNING :: INCLUDE FILE OF SUMMARY CANNOT BE READ :: NONE.INC"));
}

TEST(Summary, EndsAListOfWellsWithoutASlashAtTheNextSection) {
    DeckBench bench("WOPR\n'P1'\nSCHEDULE\n", "SUMMARY");
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].wells, std::vector<std::string>{"P1"});
    EXPECT_EQ(bench.next(), "SCHEDULE");
}

}  // namespace
}  // namespace kvr
