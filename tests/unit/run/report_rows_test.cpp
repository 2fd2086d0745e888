#include "run/report_rows.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// Pores of 10,000 volumes with oil and water in place, and next to no gas.
BalanceRecord balance(double firstGas, double gasError) {
    BalanceRecord record;
    record.initial = {4000.0, 5000.0, firstGas};
    BalanceRow row;
    row.poreVolume = 10000.0;
    row.inPlace = record.initial;
    row.errorGas = gasError;
    record.rows = {row};
    return record;
}

TEST(JudgedErrors, AreThoseOfTheRowForPhasesThatWereThere) {
    BalanceRecord record = balance(20.0, 0.03);  // more than a thousandth of the pores
    record.rows.back().errorOil = -0.02;
    record.field.produced.oil = 1e6;  // what has moved makes no error small
    EXPECT_EQ(judgedErrors(record).oil, -0.02);
    EXPECT_EQ(judgedErrors(record).gas, 0.03);
    EXPECT_DOUBLE_EQ(largestBalanceError(record), 3.0);
}

TEST(JudgedErrors, OfNextToNothingAreHeldAgainstAShareOfThePores) {
    // All of 1e-6 lost: of a thousandth of the pores, 10, that is 1e-7.
    EXPECT_DOUBLE_EQ(judgedErrors(balance(1e-6, 1.0)).gas, 1e-7);
    // 0.5 lost of 5 is a tenth of what was there and a twentieth of that thousandth: still an error.
    EXPECT_DOUBLE_EQ(largestBalanceError(balance(5.0, 0.1)), 5.0);
}

TEST(JudgedErrors, OfAPhaseThatOnlyWellsBroughtAreHeldAgainstWhatTheyDid) {
    BalanceRecord record = balance(0.0, 0.5);
    record.rows.back().inPlace.gas = 300.0;  // what the error has been divided by: 150 too much
    record.field.injected.gas = 600.0;
    EXPECT_DOUBLE_EQ(judgedErrors(record).gas, 0.25);
    record.field.injected.gas = 0.0;
    EXPECT_DOUBLE_EQ(judgedErrors(record).gas, 0.5) << "gas from nowhere";
}

TEST(JudgedErrors, AreNoneBeforeTheFirstRow) {
    EXPECT_EQ(largestBalanceError({}), 0.0);
}

}  // namespace
}  // namespace kvr
