#include "deck/reading/source_copies.hpp"

#include "unit/deck/deck_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// The text behind a keyword copied from a deck in field units, or in metric ones.
struct CopyBench : DeckBench {
    CopyBench(const std::string& keyword, const std::string& text, const UnitSystem& system)
        : DeckBench(text, "SCHEDULE") {
        units = system;
        reader.outputMetric = true;
        reader.keyword = keyword;
        cursor.position = cursor.text.size();
        copySource(reader, keyword, 0);
    }
    [[nodiscard]] std::string metric() const { return contentsOf(sinks.metricCopy); }
    [[nodiscard]] std::string field() const { return contentsOf(sinks.fieldCopy); }
};

TEST(SourceCopies, HaveTheDecksOwnTextInItsOwnUnits) {
    const std::string rows = "'P1'  'OPEN' ORAT 100 4* 1000 /\n/\n";
    CopyBench bench("WCONPROD", "-- a comment\n" + rows, fieldUnits());
    EXPECT_EQ(bench.field(), "WCONPROD\n" + rows);
}

TEST(SourceCopies, ConvertTheItemsThatHaveAUnit) {
    // 1 stb is 0.158987295 sm3, 1 Mscf 28.3168466 sm3, 1 psi 0.0689475729 bar.
    CopyBench bench("WCONPROD", "'P1' OPEN ORAT 100 1* 10 2* 1000 /\n/\n", fieldUnits());
    const std::string text = bench.metric();
    EXPECT_EQ(text.substr(0, text.find("ORAT")), "WCONPROD\n'P1' OPEN ");
    double oil = 0.0, gas = 0.0, bhp = 0.0;
    ASSERT_EQ(
        std::sscanf(text.c_str(), "WCONPROD\n'P1' OPEN ORAT %lf 1* %lf 2* %lf /\n/\n", &oil, &gas, &bhp), 3)
        << text;
    EXPECT_NEAR(oil, 15.8987295, 1e-5);
    EXPECT_NEAR(gas, 283.168466, 1e-4);
    EXPECT_NEAR(bhp, 68.9475729, 1e-5);
}

TEST(SourceCopies, KeepDefaultsRepeatCountsAndExponents) {
    CopyBench bench("COMPDAT", "'P1' 2* 1 5 'OPEN' 2* 2*1.0d1 /\n/\n", metricUnits());
    EXPECT_EQ(bench.metric(), "COMPDAT\n'P1' 2* 1 5 'OPEN' 2* 2*1.0d1 /\n/\n");
    EXPECT_EQ(bench.field(), "COMPDAT\n'P1' 2* 1 5 'OPEN' 2* 2*32.8084 /\n/\n");
}

TEST(SourceCopies, TakeTheUnitOfARateFromTheWordsOfItsRow) {
    const UnitSystem field = fieldUnits();
    CopyBench water("WCONINJE", "'I' 'WATER' 'OPEN' 'RATE' 1000 /\n/\n", field);
    CopyBench gas("WCONINJE", "'I' 'GAS' 'OPEN' 'RATE' 1000 /\n/\n", field);
    CopyBench pressure("WELTARG", "'P' 'BHP' 1000 /\n'P' GRAT 1000 /\n/\n", field);
    double value = 0.0, second = 0.0;
    std::sscanf(water.metric().c_str(), "WCONINJE\n'I' 'WATER' 'OPEN' 'RATE' %lf", &value);
    EXPECT_NEAR(value, 158.987295, 1e-4);
    std::sscanf(gas.metric().c_str(), "WCONINJE\n'I' 'GAS' 'OPEN' 'RATE' %lf", &value);
    EXPECT_NEAR(value, 28316.8466, 1e-2);
    std::sscanf(pressure.metric().c_str(), "WELTARG\n'P' 'BHP' %lf /\n'P' GRAT %lf", &value, &second);
    EXPECT_NEAR(value, 68.94757, 1e-5);
    EXPECT_NEAR(second, 28316.8466, 1e-2);
}

TEST(SourceCopies, OfTemperaturesAreNoMultiples) {
    EXPECT_EQ(CopyBench("RTEMP", "212 /\n", fieldUnits()).metric(), "RTEMP\n100 /\n");
    EXPECT_EQ(CopyBench("RTEMP", "100 /\n", metricUnits()).field(), "RTEMP\n212 /\n");
}

TEST(SourceCopies, AreNotMadeOfAKeywordThatHasItsOwn) {
    DeckBench bench("1 /\n");
    bench.reader.outputMetric = true;
    bench.sinks.keywordCopied = true;
    copySource(bench.reader, "NOSIM", 0);
    EXPECT_EQ(contentsOf(bench.sinks.metricCopy), "");
}

}  // namespace
}  // namespace kvr
