#pragma once

#include "base/cell_array.hpp"

#include <algorithm>
#include <cstdint>

namespace kvr {

/// Gravity in the transport of water and oil by the total flow of faces.
struct Buoyancy {
    bool acts = false;
    double flowUnit = 1.0;   // of transmissibilities, see UnitSystem
    CellArray<double> pcow;  // psi, of the cells when the transport starts; empty without capillarity
    // Cells that hold free gas when it starts: no face of theirs is one of water and oil alone. Empty: none.
    CellArray<std::uint8_t> gasCells;
};

/// Whether gas may pass a face beside water and oil.
inline bool meetsFreeGas(const CellArray<std::uint8_t>& gasCells, CellId a, CellId b) {
    return !gasCells.empty() && (gasCells[a] != 0 || gasCells[b] != 0);
}

/// What drives water against oil in a flow by gravity, psi, as far as capillarity does not hold it up.
inline double lastingDrive(double gravity, double capillary) {
    const double both = gravity + capillary;
    return gravity > 0.0 ? std::clamp(both, 0.0, gravity) : std::clamp(both, gravity, 0.0);
}

/// Water that gravity puts in the place of oil in a flow q, per volume of the flow, negative where it holds
/// water back. With m = T d / q, d what drives water along the flow against oil, mobilities of the cell that
/// the flow comes from:
///   water q fw (1 - min(1, -m lo)) for m < 0,  oil q fo (1 - min(1, m lw)) for m > 0
/// which is phase-potential upstream (Brenier and Jaffre 1991) where both phases go along with the flow. A
/// phase that gravity turns against the flow stays; what it does beyond that is an exchange of the cells.
inline double buoyantShare(double pull, double lambdaW, double lambdaO) {
    const double sum = lambdaW + lambdaO;
    if (!(sum > 0.0)) return 0.0;
    if (pull < 0.0) return -std::min(1.0, -pull * lambdaO) * (lambdaW / sum);
    return std::min(1.0, pull * lambdaW) * (lambdaO / sum);
}

/// A flow out of a cell through a face on which gravity acts, and what it has made of it.
struct BuoyantFlow {
    CellId cell = 0;  // by its face 1..6
    int face = 0;
    double flow = 0.0;                        // reservoir volume a day
    double pull = 0.0;                        // m of buoyantShare, cp
    double followed = 0.0;                    // share of the flow that follows a known make-up ...
    double knownWater = 0.0, knownOil = 0.0;  // ... and what that is made of, volumes per volume
    // Water in the place of oil, volume per volume, means over the step: in what flows as the cell's own
    // mobilities make it, in that over the times when the known make-up was not followed, in what follows it.
    double own = 0.0, apart = 0.0, known = 0.0;
    double tilt = 0.0;  // by which `own` changes over the step
    // Rs times these: what that oil would have taken along, volumes of oil times surface gas per oil.
    double ownGas = 0.0, apartGas = 0.0, knownGas = 0.0;
};

}  // namespace kvr
