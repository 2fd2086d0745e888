#include "report/run_vectors.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(RunVectors, AreFoundByTheirMnemonicWhereTheyExist) {
    ASSERT_NE(vectorOf("FOPR"), nullptr);
    EXPECT_EQ(vectorOf("FOPR"), vectorOf("WOPR"));
    EXPECT_NE(vectorOf("WBHP"), nullptr);
    // A pressure at the bottom of the field and an average pressure of a well are none.
    for (const char* unknown : {"FBHP", "WPR", "GOPR", "F", "", "XOPR", "FOPRX"})
        EXPECT_EQ(vectorOf(unknown), nullptr) << unknown;
}

TEST(RunVectors, TakeTheirValueFromTheWellOrTheField) {
    StepFigures step;
    step.averagePressure = 2500.0;
    WellFigures well;
    well.production = {30.0, 10.0, 60.0, 0.0};
    EXPECT_EQ(vectorOf("WLPR")->value(step, well), 40.0);
    EXPECT_EQ(vectorOf("WWCT")->value(step, well), 0.25);
    EXPECT_EQ(vectorOf("WGOR")->value(step, well), 2.0);
    EXPECT_EQ(vectorOf("FPR")->value(step, well), 2500.0);
}

TEST(VectorUnits, OfAFieldDeckAreThoseOfTheFigures) {
    for (const RunVector& row : runVectors()) {
        EXPECT_EQ(deckUnit(fieldUnits(), row.quantity).factor, 1.0) << row.suffix;
        EXPECT_EQ(deckUnit(fieldUnits(), row.quantity).word, fieldUnit(row.quantity)) << row.suffix;
    }
}

TEST(VectorUnits, OfAMetricDeckTurnFiguresIntoIt) {
    const UnitSystem metric = metricUnits();
    constexpr double CubicMetresPerBarrel = 0.158987294928;  // 42 US gallons, exact
    constexpr double CubicMetresPerMscf = 28.316846592;      // international foot, exact
    constexpr double BarPerPsi = 0.0689475729;
    constexpr double Share = 1e-6;  // to which the constants of the deck units agree with the exact ones
    EXPECT_NEAR(deckUnit(metric, Quantity::LiquidRate).factor / CubicMetresPerBarrel, 1.0, Share);
    EXPECT_NEAR(deckUnit(metric, Quantity::GasTotal).factor / CubicMetresPerMscf, 1.0, Share);
    EXPECT_NEAR(deckUnit(metric, Quantity::Pressure).factor / BarPerPsi, 1.0, Share);
    EXPECT_NEAR(deckUnit(metric, Quantity::GasRatio).factor / (CubicMetresPerMscf / CubicMetresPerBarrel),
                1.0, Share);
    EXPECT_EQ(deckUnit(metric, Quantity::Pressure).word, "BARSA");
}

}  // namespace
}  // namespace kvr
