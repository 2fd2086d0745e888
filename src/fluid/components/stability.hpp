#pragma once

#include "fluid/components/peng_robinson.hpp"

namespace kvr {

/// What the tangent plane of a feed tells.
struct Stability {
    bool isStable = true;
    bool hasShadow = false;      // a second composition was found at which the distance is stationary
    double distance = 0.0;       // of the lowest point found, in RT: below 0 the feed splits
    double shadowPacking = 0.0;  // B/Z of that composition
    Composition shadow{};        // mole fractions of that composition
};

/// Michelsen's test (1982): the tangent plane distance
///   tm(W) = 1 + sum W_i (ln W_i + ln phi_i(W) - ln z_i - ln phi_i(z) - 1)
/// is taken down from a vapour-like and a liquid-like trial, by substitution and then by Newton in 2 sqrt(W);
/// with `thorough` also from each pure component and from trials with the cube roots of K. The feed is
/// unstable where tm falls below 0. `lnPhi` is that of the feed at its stable root.
Stability stabilityTest(const ComponentSet& set, const Composition& feed, double pressure,
                        const Composition& lnPhi, bool thorough);

/// Whether the second derivatives of the Gibbs energy at a feed, sqrt(z_i z_j) d(ln f_i)/dn_j, are above
/// those at its limit of stability by a tenth of an ideal mixture's.
bool isFarFromLimit(const ComponentSet& set, const EosMixture& mixture, const Composition& feed, double Z);

/// ln of Wilson's K-values, 5.37 (1 + w)(1 - Tc/T) + ln(Pc/P); K is held at 1e-20 or above.
void wilsonLnK(const ComponentSet& set, double pressure, Composition& lnK);

}  // namespace kvr
