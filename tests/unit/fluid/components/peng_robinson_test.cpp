#include "fluid/components/peng_robinson.hpp"

#include "unit/fluid/components/component_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

namespace kvr {
namespace {

TEST(ComponentSet, HasTheAttractionAndCovolumeOfEachComponent) {
    const ComponentSet set = methaneDecane();
    EXPECT_NEAR(set.a[0], 6950.557646, 1e-6);
    EXPECT_NEAR(set.a[1], 345107.7006, 1e-4);
    EXPECT_NEAR(set.b[0], 0.428814496, 1e-9);
    EXPECT_NEAR(set.b[1], 3.053337692, 1e-9);
    EXPECT_DOUBLE_EQ(set.cross[0][1], 0.95 * std::sqrt(set.a[0] * set.a[1]));
}

TEST(PR_EOS, GivesTheCompressibilityOfPureGasAndLiquid) {
    EosMixture mixture;
    const Composition pure = {1.0};
    PR_EOS(onlyComponent(0, Fahrenheit160), pure, 1000.0, mixture);
    EXPECT_NEAR(mixture.A, 0.1571703293, 1e-10);
    EXPECT_NEAR(mixture.B, 0.06448295256, 1e-11);
    EXPECT_NEAR(mixture.zLiquid, 0.925183964, 1e-9);
    EXPECT_EQ(mixture.zLiquid, mixture.zVapour);
    PR_EOS(onlyComponent(1, Fahrenheit160), pure, 1000.0, mixture);
    EXPECT_NEAR(mixture.A, 7.80378981, 1e-8);
    EXPECT_NEAR(mixture.B, 0.45914546, 1e-8);
    EXPECT_NEAR(mixture.zLiquid, 0.524536437, 1e-9);
    PR_EOS(onlyComponent(0, 519.67), pure, 100.0, mixture);
    EXPECT_NEAR(mixture.zVapour, 0.983154625, 1e-9);
}

/// ln phi of moles, with the same phase's root.
Composition lnPhiOfMoles(const ComponentSet& set, const Composition& moles, double pressure, bool isLiquid) {
    double sum = 0.0;
    Composition x{}, lnPhi{};
    for (int i = 0; i < set.count; ++i) sum += moles[i];
    for (int i = 0; i < set.count; ++i) x[i] = moles[i] / sum;
    EosMixture mixture;
    PR_EOS(set, x, pressure, mixture);
    fugacityCoefficients(set, mixture, isLiquid ? mixture.zLiquid : mixture.zVapour, lnPhi);
    return lnPhi;
}

TEST(FugacitySlopes, AreThoseOfDifferencesAndSymmetric) {
    const ComponentSet set = sixComponentOil(620.0);
    const Composition x = {0.5, 0.03, 0.07, 0.2, 0.15, 0.05};
    for (const double pressure : {100.0, 2000.0}) {
        for (const bool isLiquid : {true, false}) {
            EosMixture mixture;
            PR_EOS(set, x, pressure, mixture);
            ComponentMatrix slopes;
            fugacitySlopes(set, mixture, x, isLiquid ? mixture.zLiquid : mixture.zVapour, slopes);
            const double step = 1e-6;
            for (int j = 0; j < set.count; ++j) {
                Composition more = x, less = x;
                more[j] += step;
                less[j] -= step;
                const Composition up = lnPhiOfMoles(set, more, pressure, isLiquid);
                const Composition down = lnPhiOfMoles(set, less, pressure, isLiquid);
                for (int i = 0; i < set.count; ++i) {
                    EXPECT_NEAR(slopes[i][j], (up[i] - down[i]) / (2.0 * step),
                                1e-6 * (1.0 + std::abs(slopes[i][j])));
                    EXPECT_NEAR(slopes[i][j], slopes[j][i], 1e-10 * (1.0 + std::abs(slopes[i][j])));
                }
            }
        }
    }
}

TEST(FugacityCoefficients, ObeyTheGibbsDuhemRelationOfPressure) {
    // d(sum x ln phi)/dP = (Z - 1)/P.
    const ComponentSet set = methaneDecane();
    const Composition x = {0.3, 0.7};
    const double P = 1500.0, step = 0.01;
    auto mean = [&](double p) {
        const Composition lnPhi = lnPhiOfMoles(set, x, p, true);
        return x[0] * lnPhi[0] + x[1] * lnPhi[1];
    };
    EosMixture mixture;
    PR_EOS(set, x, P, mixture);
    EXPECT_NEAR((mean(P + step) - mean(P - step)) / (2.0 * step), (mixture.zLiquid - 1.0) / P, 1e-9);
}

}  // namespace
}  // namespace kvr
