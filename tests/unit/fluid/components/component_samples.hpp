#pragma once

#include "fluid/components/component_set.hpp"

namespace kvr {

/// Methane and decane, BIC 0.05.
inline FluidTables methaneDecaneTables() {
    FluidTables tables;
    tables.CNAMES = {"C1", "C10"};
    tables.TCRIT = {343.0, 1111.8};
    tables.PCRIT = {667.8, 304.0};
    tables.ACF = {0.0104, 0.4885};
    tables.MW = {16.043, 142.285};
    tables.VCRIT = {1.59, 9.66};
    tables.BIC = {0.0, 0.05, 0.05, 0.0};
    return tables;
}

inline constexpr double Fahrenheit160 = 619.67;  // Rankine

inline ComponentSet methaneDecane() {
    return componentSet(methaneDecaneTables(), Fahrenheit160);
}

/// One component of the pair above.
inline ComponentSet onlyComponent(std::size_t i, double temperature) {
    FluidTables one, both = methaneDecaneTables();
    one.TCRIT = {both.TCRIT[i]};
    one.PCRIT = {both.PCRIT[i]};
    one.ACF = {both.ACF[i]};
    one.MW = {both.MW[i]};
    one.VCRIT = {both.VCRIT[i]};
    one.BIC = {0.0};
    return componentSet(one, temperature);
}

/// Six components from methane to a heavy fraction, an oil with much gas.
inline ComponentSet sixComponentOil(double temperature) {
    FluidTables tables;
    tables.CNAMES = {"C1", "C3", "C6", "C10", "C15", "C20"};
    tables.TCRIT = {343.0, 665.7, 913.4, 1111.8, 1270.0, 1380.0};
    tables.PCRIT = {667.8, 616.3, 436.9, 304.0, 200.0, 162.0};
    tables.ACF = {0.013, 0.1524, 0.3007, 0.4885, 0.65, 0.85};
    tables.MW = {16.04, 44.1, 86.18, 142.29, 206.0, 282.0};
    tables.VCRIT = {1.598, 3.211, 5.923, 10.087, 16.696, 21.484};
    tables.BIC.assign(36, 0.0);
    tables.BIC[4] = tables.BIC[4 * 6] = 0.05;
    tables.BIC[5] = tables.BIC[5 * 6] = 0.05;
    tables.BIC[1 * 6 + 4] = tables.BIC[4 * 6 + 1] = 0.005;
    tables.BIC[1 * 6 + 5] = tables.BIC[5 * 6 + 1] = 0.005;
    return componentSet(tables, temperature);
}

}  // namespace kvr
