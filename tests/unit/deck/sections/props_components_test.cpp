#include "deck/sections/props.hpp"
#include "unit/deck/deck_bench.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr std::string_view Gas = "SGOF\n0 0 0.9 0\n0.6 0.6 0 0 /\n";
constexpr std::string_view Names = "CNAMES\n'C1' C10 /\n";
constexpr std::string_view Critical = "TCRIT\n343 1111.8 /\nPCRIT\n667.8 304 /\nVCRIT\n1.59 9.66 /\n";
constexpr std::string_view Others = "MW\n16.043 142.285 /\nACF\n0.0104 0.4885 /\nBIC\n0.05 /\n";
constexpr std::string_view Temperature = "RTEMP\n160 /\n";

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text(Gas);
    for (const std::string_view part : parts) text += part;
    return text;
}

/// A PROPS section of two components, or of as many as the test says.
struct ComponentBench : DeckBench {
    RunOptions options;
    FluidTables tables;
    GridModel grid;

    explicit ComponentBench(const std::string& deck) : DeckBench(deck, "PROPS") {
        tables.hasGas = options.hasGas = true;
        options.componentCount = 2;
    }
    void read() {
        PropsRecords records{options, tables, grid};
        readProps(reader, records);
    }
};

TEST(PropsOfComponents, AreHeld) {
    ComponentBench bench(joined(
        {Names, Critical, Others, Temperature, "ZI\n0.6 0.4 /\nZMFVD\n8000 0.7 0.3\n9000 0.5 0.5 /\n"}));
    bench.read();
    EXPECT_EQ(bench.tables.CNAMES, (std::vector<std::string>{"C1", "C10"}));
    EXPECT_EQ(bench.tables.TCRIT, (Column{343, 1111.8}));
    EXPECT_EQ(bench.tables.ACF, (Column{0.0104, 0.4885}));
    EXPECT_EQ(bench.tables.ZI, (std::vector<double>{0.6, 0.4}));
    EXPECT_EQ(bench.tables.ZMFVD, (std::vector<double>{8000, 0.7, 0.3, 9000, 0.5, 0.5}));
    EXPECT_NEAR(bench.tables.reservoirTemperature, 619.67, 1e-12);
    EXPECT_TRUE(bench.printed("READ -> FIELD Composition\n"));
    EXPECT_FALSE(bench.printed("MOLE FRACTIONS"));
}

TEST(PropsOfComponents, StandInTheLogAsATable) {
    ComponentBench bench(joined({Names, Critical, Others, Temperature}));
    bench.read();
    const std::string log = bench.logged();
    EXPECT_NE(log.find("COMPONENT PROPERTY TABLE"), std::string::npos);
    EXPECT_NE(log.find("BINARY COEFFICIENTS"), std::string::npos);
    EXPECT_NE(
        log.find(
            "            C10         1111.8            304           9.66        142.285         0.4885"),
        std::string::npos)
        << log;
}

TEST(PropsOfComponents, MirrorTheTriangleOfBinaryCoefficients) {
    for (const char* text : {"BIC\n0.1 / 0.2 0.3 /\n", "BIC\n0.1 /\n0.2 0.3 /\n", "BIC\n0.1\n0.2\n0.3 /\n"}) {
        ComponentBench bench(joined({"TCRIT\n343 700 1100 /\nPCRIT\n667 500 300 /\nVCRIT\n1.6 4 9 /\n",
                                     "MW\n16 60 140 /\nACF\n0.01 0.2 0.5 /\n", text, Temperature}));
        bench.options.componentCount = 3;
        bench.read();
        EXPECT_EQ(bench.tables.BIC, (std::vector<double>{0, 0.1, 0.2, 0.1, 0, 0.3, 0.2, 0.3, 0})) << text;
    }
}

TEST(PropsOfComponents, AreCalledByNumberAndPairedByNothingWhereTheDeckIsSilent) {
    ComponentBench bench(joined({Critical, "MW\n16 142 /\nACF\n0.01 0.5 /\n", Temperature}));
    bench.read();
    EXPECT_EQ(bench.tables.CNAMES, (std::vector<std::string>{"COMP1", "COMP2"}));
    EXPECT_EQ(bench.tables.BIC, std::vector<double>(4, 0.0));
    EXPECT_TRUE(bench.printed("WARNING :: CNAMES IS NOT GIVEN"));
    EXPECT_TRUE(bench.printed("WARNING :: BIC IS NOT GIVEN, 0 FOR EVERY PAIR"));
}

TEST(PropsOfComponents, ThatAreMissingStopTheRun) {
    ComponentBench bench(joined({Names, "TCRIT\n343 1111.8 /\nVCRIT\n1.59 9.66 /\n", Others, Temperature}));
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "ERROR :: COMPONENTS NEED PCRIT, NOT GIVEN");
}

TEST(PropsOfComponents, BelowNothingStopTheRun) {
    ComponentBench bench(joined(
        {Names, "TCRIT\n343 1111.8 /\nPCRIT\n667.8 -304 /\nVCRIT\n1.59 9.66 /\n", Others, Temperature}));
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1),
                "ERROR :: PCRIT OF COMPONENT 2 .C10. MUST BE 3 TO 33000, IT IS -304");
}

TEST(PropsOfComponents, FarBeyondAnyFluidStopTheRun) {
    ComponentBench hot(joined(
        {Names, "TCRIT\n343 2147483647 /\nPCRIT\n667.8 304 /\nVCRIT\n1.59 9.66 /\n", Others, Temperature}));
    hot.speakToStandardError();
    EXPECT_EXIT(hot.read(), testing::ExitedWithCode(1),
                "ERROR :: TCRIT OF COMPONENT 2 .C10. MUST BE 0.9 TO 36000, IT IS");
    ComponentBench pair(joined({Names, Critical, Others, Temperature, "BIC\n400 /\n"}));
    pair.speakToStandardError();
    EXPECT_EXIT(pair.read(), testing::ExitedWithCode(1),
                "ERROR :: BIC OF COMPONENTS 2 AND 1 MUST BE -10 TO 10, IT IS 400");
}

TEST(PropsOfComponents, NeedATemperature) {
    ComponentBench none(joined({Names, Critical, Others}));
    none.speakToStandardError();
    EXPECT_EXIT(none.read(), testing::ExitedWithCode(1), "ERROR :: COMPONENTS NEED RTEMP, NOT GIVEN");
    ComponentBench cold(joined({Names, Critical, Others, "RTEMP\n0 /\n"}));
    cold.read();
    EXPECT_TRUE(cold.printed("WARNING :: RTEMP IS BELOW THE FREEZING POINT OF WATER, 459.67 RANKINE"));
}

TEST(PropsOfComponents, NeedRelativePermeabilitiesOfGas) {
    std::string deck;
    for (const std::string_view part : {Names, Critical, Others, Temperature}) deck += part;
    ComponentBench bench(deck);
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1),
                "ERROR :: NO RELATIVE PERMEABILITIES OF GAS AND OIL");
}

TEST(Compositions, ThatDoNotSumToOneAreDividedByTheirSum) {
    ComponentBench bench(joined({Names, Critical, Others, Temperature, "ZI\n0.6 0.6 /\n"}));
    bench.read();
    EXPECT_EQ(bench.tables.ZI, (std::vector<double>{0.5, 0.5}));
    EXPECT_TRUE(bench.printed("WARNING :: MOLE FRACTIONS SUM TO 1.2, EACH IS DIVIDED BY THAT"));
}

TEST(Compositions, OfAFewDigitsAreNotTold) {
    ComponentBench bench(joined({Names, Critical, Others, Temperature, "ZI\n0.333 0.6667 /\n"}));
    bench.read();
    EXPECT_DOUBLE_EQ(bench.tables.ZI[0] + bench.tables.ZI[1], 1.0);
    EXPECT_FALSE(bench.printed("MOLE FRACTIONS"));
}

TEST(Compositions, BelowNothingAreSetToNothing) {
    ComponentBench bench(joined({Names, Critical, Others, Temperature, "ZI\n-0.5 1.0 /\n"}));
    bench.read();
    EXPECT_EQ(bench.tables.ZI, (std::vector<double>{0.0, 1.0}));
    EXPECT_TRUE(bench.printed("WARNING :: MOLE FRACTION -0.5 IS BELOW 0, SET TO 0"));
    ComponentBench none(joined({Names, Critical, Others, Temperature, "ZI\n0 0 /\n"}));
    none.speakToStandardError();
    EXPECT_EXIT(none.read(), testing::ExitedWithCode(1), "ERROR :: MOLE FRACTIONS SUM TO 0");
}

TEST(Compositions, MustRiseInDepth) {
    ComponentBench bench(
        joined({Names, Critical, Others, Temperature, "ZMFVD\n9000 0.7 0.3\n8000 0.5 0.5 /\n"}));
    bench.speakToStandardError();
    EXPECT_EXIT(bench.read(), testing::ExitedWithCode(1), "ERROR :: ZMFVD: DEPTH 8000 DOES NOT RISE");
}

}  // namespace
}  // namespace kvr
