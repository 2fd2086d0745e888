#include "optimization/rate_balance.hpp"

#include <gtest/gtest.h>
#include <random>

using namespace kvr;

namespace {

SharedRate shared(double wanted, double least, double most, double weight = 1.0) {
    return {wanted, least, most, weight, 0.0};
}

double sum(const std::vector<SharedRate>& rates) {
    double total = 0.0;
    for (const SharedRate& rate : rates) total += rate.weight * rate.rate;
    return total;
}

}  // namespace

TEST(BalanceRates, ScalesTheWantedRatesToTheTotal) {
    std::vector<SharedRate> rates{shared(10.0, 0.0, 1e9), shared(30.0, 0.0, 1e9)};
    EXPECT_EQ(balanceRates(20.0, rates), 0.0);
    EXPECT_NEAR(rates[0].rate, 5.0, 1e-12);
    EXPECT_NEAR(rates[1].rate, 15.0, 1e-12);
}

TEST(BalanceRates, GivesWhatABoundHoldsBackToTheOthers) {
    std::vector<SharedRate> rates{shared(10.0, 0.0, 1e9), shared(30.0, 0.0, 12.0), shared(10.0, 9.0, 1e9)};
    EXPECT_EQ(balanceRates(26.0, rates), 0.0);
    EXPECT_NEAR(rates[0].rate, 5.0, 1e-12);
    EXPECT_EQ(rates[1].rate, 12.0);
    EXPECT_EQ(rates[2].rate, 9.0);
}

TEST(BalanceRates, CountsWhatAUnitWeighs) {
    std::vector<SharedRate> rates{shared(10.0, 0.0, 1e9, 1.2), shared(10.0, 0.0, 1e9, 0.8)};
    balanceRates(40.0, rates);
    EXPECT_NEAR(rates[0].rate, 20.0, 1e-12);
    EXPECT_NEAR(rates[1].rate, 20.0, 1e-12);
}

TEST(BalanceRates, TellsWhatTheBoundsLeaveOver) {
    std::vector<SharedRate> rates{shared(10.0, 5.0, 20.0), shared(30.0, 6.0, 12.0)};
    EXPECT_NEAR(balanceRates(50.0, rates), 18.0, 1e-12);
    EXPECT_NEAR(balanceRates(4.0, rates), -7.0, 1e-12);
    EXPECT_EQ(rates[0].rate, 5.0);
    EXPECT_EQ(rates[1].rate, 6.0);
}

TEST(BalanceRates, LeavesNothingToDoWithoutWells) {
    std::vector<SharedRate> none;
    EXPECT_EQ(balanceRates(0.0, none), 0.0);
    std::vector<SharedRate> idle{shared(0.0, 0.0, 0.0)};
    EXPECT_EQ(balanceRates(0.0, idle), 0.0);
    EXPECT_EQ(idle[0].rate, 0.0);
}

TEST(BalanceRates, KeepsTotalsAndBoundsOfRandomWells) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    for (int n = 0; n < 2000; ++n) {
        std::vector<SharedRate> rates;
        double total = 0.0;
        for (int w = 0; w < 12; ++w) {
            const double before = 1e3 * any(random);
            rates.push_back(shared(before * 30.0 * any(random), 0.75 * before, before * (1.0 + any(random)),
                                   0.9 + 0.4 * any(random)));
            total += rates.back().weight * before;
        }
        ASSERT_EQ(balanceRates(total, rates), 0.0);
        EXPECT_NEAR(sum(rates) / total, 1.0, 1e-10);
        for (const SharedRate& rate : rates) {
            EXPECT_GE(rate.rate, rate.least);
            EXPECT_LE(rate.rate, rate.most);
        }
    }
}
