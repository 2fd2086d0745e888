#include "fluid/components/component_set.hpp"

#include <algorithm>
#include <cmath>
#include <span>

namespace kvr {

namespace {

constexpr double AttractionFactor = 0.457235529;  // Omega_a
constexpr double CovolumeFactor = 0.077796074;    // Omega_b
constexpr double LeastReducedTemperature = 1e-10;
constexpr double RankinePerKelvin = 1.8;
constexpr double PsiPerAtmosphere = 14.696;
constexpr double BranchTemperature = 1.5;  // reduced

Composition firstOf(std::span<const double> column, int count) {
    Composition values{};
    const std::size_t n = std::min(column.size(), static_cast<std::size_t>(count));
    std::copy_n(column.begin(), n, values.begin());
    return values;
}

/// m = 0.37464 + 1.54226 w - 0.26992 w^2;  a = Omega_a R^2 Tc^2/Pc (1 + m (1 - sqrt(T/Tc)))^2.
double attraction(double tc, double pc, double acentric, double temperature) {
    const double m = 0.37464 + 1.54226 * acentric - 0.26992 * acentric * acentric;
    const double reduced = std::max(temperature / tc, LeastReducedTemperature);
    const double alpha = 1.0 + m * (1.0 - std::sqrt(reduced));
    return AttractionFactor * GasConstant * GasConstant * tc * tc / pc * alpha * alpha;
}

}  // namespace

double inverseViscosity(double T, double P, double M) {
    const double pressure = std::cbrt(P / PsiPerAtmosphere);
    return std::pow(T / RankinePerKelvin, 1.0 / 6.0) / (std::sqrt(M) * pressure * pressure);
}

double diluteViscosity(const ComponentSet& set, int i) {
    const double reduced = set.temperature / set.Tc[i];
    const double xi = inverseViscosity(set.Tc[i], set.Pc[i], set.Mw[i]);
    if (reduced <= BranchTemperature) return 0.00034 * std::pow(reduced, 0.94) / xi;
    return 0.0001778 * std::pow(4.58 * reduced - 1.67, 0.625) / xi;
}

ComponentSet componentSet(const FluidTables& tables, double temperature) {
    ComponentSet set;
    set.count = std::min(static_cast<int>(tables.TCRIT.size()), MaxComponents);
    set.temperature = temperature;
    set.Tc = firstOf(tables.TCRIT, set.count);
    set.Pc = firstOf(tables.PCRIT, set.count);
    set.Mw = firstOf(tables.MW, set.count);
    set.Acf = firstOf(tables.ACF, set.count);
    set.Vc = firstOf(tables.VCRIT, set.count);
    const std::size_t n = static_cast<std::size_t>(set.count);
    for (std::size_t i = 0; i < n; ++i) {
        set.a[i] = attraction(set.Tc[i], set.Pc[i], set.Acf[i], temperature);
        set.b[i] = CovolumeFactor * GasConstant * set.Tc[i] / set.Pc[i];
        set.rootMw[i] = std::sqrt(set.Mw[i]);
        set.dilute[i] = diluteViscosity(set, static_cast<int>(i));
    }
    const std::size_t stride = tables.TCRIT.size();
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j) {
            const std::size_t pair = i * stride + j;
            const double interaction = pair < tables.BIC.size() ? tables.BIC[pair] : 0.0;
            set.cross[i][j] = (1.0 - interaction) * std::sqrt(set.a[i] * set.a[j]);
        }
    return set;
}

}  // namespace kvr
