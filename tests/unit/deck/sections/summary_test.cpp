#include "deck/sections/summary.hpp"

#include "unit/deck/deck_bench.hpp"

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
    DeckBench bench("BPR\n 1 1 1 /\n/\nINCLUDE\n'x' /\nSCHEDULE\n", "SUMMARY");
    std::vector<SummaryRequest> requests;
    readSummary(bench.reader, requests);
    EXPECT_TRUE(requests.empty());
    EXPECT_EQ(bench.screen(), " BPR      -> not surpported  \n INCLUDE  -> not surpported  \n");
    EXPECT_EQ(bench.next(), "SCHEDULE");
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
