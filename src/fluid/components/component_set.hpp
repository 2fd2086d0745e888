#pragma once

#include "fluid/tables.hpp"

#include <array>

namespace kvr {

/// Components of one mixture, at most; arrays of this length stand on the stack.
inline constexpr int MaxComponents = 12;

/// One value per component at [0..count); what lies behind is not read.
using Composition = std::array<double, MaxComponents>;
using ComponentMatrix = std::array<Composition, MaxComponents>;

/// psia ft3 / (lb-mole Rankine).
inline constexpr double GasConstant = 10.73159;

/// A mixture's components at one temperature, ready for the Peng-Robinson equation of state (Peng and
/// Robinson 1976).
struct ComponentSet {
    int count = 0;
    double temperature = 0.0;             // Rankine
    Composition Tc{}, Pc{}, Mw{}, Acf{};  // Rankine, psia, lb/lb-mole, dimensionless
    Composition Vc{};                     // ft3/lb-mole
    Composition rootMw{};                 // sqrt(Mw)
    Composition dilute{};                 // cp, of each component as a dilute gas
    Composition a{};                      // psia ft6/lb-mole2, the attraction with its temperature term
    Composition b{};                      // ft3/lb-mole, the co-volume
    ComponentMatrix cross{};              // (1 - BIC) sqrt(a_i a_j)
};

/// Inverse viscosity 1/cp of the corresponding states, (T/1.8)^(1/6) / (sqrt(M) (P/14.696)^(2/3)): T in
/// Rankine, P in psia, M in lb/lb-mole.
double inverseViscosity(double T, double P, double M);

/// Stiel and Thodos' viscosity of component i as a dilute gas, cp; Tr of at most 1.5 takes the first branch.
double diluteViscosity(const ComponentSet& set, int i);

/// The components of the deck at a temperature in Rankine; columns that are too short count as 0. T/Tc is
/// held at 1e-10 or above.
ComponentSet componentSet(const FluidTables& tables, double temperature);

}  // namespace kvr
