#pragma once

#include "fluid/components/peng_robinson.hpp"

namespace kvr {

/// A feed divided in two phases by K-values, with both phases' equations of state.
struct PhaseSplit {
    double V = 0.5;  // mole fraction of vapour; outside 0..1 in a negative flash
    Composition lnK{}, K{};
    Composition x{}, y{};  // mole fractions of liquid and vapour
    EosMixture liquid, vapour;
    double zLiquid = 1.0, zVapour = 1.0;  // the roots in use
    Composition lnPhiLiquid{}, lnPhiVapour{};
    Composition residual{};  // ln K - ln phi_L + ln phi_V = ln(f_V/f_L)
    double worst = 0.0;      // largest |residual|
};

/// Which vapour fractions a split may take.
enum class SplitRange { Inside, Negative };

/// Compositions, roots and residual from lnK; V holds the start of its search. False, with the split
/// unfinished, where V does not lie in the range.
bool evaluateSplit(const ComponentSet& set, const Composition& feed, double pressure, SplitRange range,
                   PhaseSplit& split);

/// Gibbs energy of the split, a mole of feed, in RT, less what the feed as an ideal gas at this pressure has.
double splitEnergy(int count, const PhaseSplit& split);
/// The same of an undivided feed with its ln phi.
double feedEnergy(int count, const Composition& feed, const Composition& lnPhi);

/// Successive substitution from Wilson's K-values with the smallest root for liquid, the largest for vapour.
/// At most `mostPasses`; it ends where every |1 - f_L/f_V| is at most `tolerance`, where K stands for the
/// phases found, or where one phase is left: V is then 0 or 1. Returns the passes.
int substituteFromWilson(const ComponentSet& set, const Composition& feed, double pressure, int mostPasses,
                         double tolerance, PhaseSplit& split);

/// Newton on ln K from a split near the solution, where V may leave 0..1. False where it does not get there
/// or both phases become one.
bool convergeNear(const ComponentSet& set, const Composition& feed, double pressure, PhaseSplit& split);

/// Takes the Gibbs energy of a feed that is known to split down to its minimum: Newton on ln K where the
/// second derivatives allow it, else substitution, both shortened until the energy falls. False where it
/// stalls.
bool descendSplit(const ComponentSet& set, const Composition& feed, double pressure, PhaseSplit& split);

}  // namespace kvr
