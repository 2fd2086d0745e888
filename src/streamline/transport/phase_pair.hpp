#pragma once

#include "streamline/transport/line_kernels.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kvr {

/// Water and oil of one position side by side: without gas both go through the same arithmetic, so one
/// vector operation does for two, the costly divisions among them. Element 0 is water, 1 oil. The vector
/// type is an extension that GCC and Clang have on every machine.
using PhasePair = double __attribute__((vector_size(2 * sizeof(double))));

static_assert(offsetof(FlowNode, So) == offsetof(FlowNode, Sw) + sizeof(double));
static_assert(offsetof(FlowNode, Co) == offsetof(FlowNode, Cw) + sizeof(double));
static_assert(offsetof(FlowNode, Fo) == offsetof(FlowNode, Fw) + sizeof(double));
static_assert(offsetof(FlowNode, passedO) == offsetof(FlowNode, passedW) + sizeof(double));
static_assert(offsetof(FlowNode, Bo) == offsetof(FlowNode, Bw) + sizeof(double));
static_assert(offsetof(FlowNode, inverseBo) == offsetof(FlowNode, inverseBw) + sizeof(double));
static_assert(offsetof(FlowNode, inverseMuO) == offsetof(FlowNode, inverseMuW) + sizeof(double));

/// The pair whose water stands at `water`.
inline PhasePair pairAt(const double& water) {
    PhasePair pair;
    std::memcpy(&pair, &water, sizeof pair);
    return pair;
}

inline void storePair(PhasePair pair, double& water) {
    std::memcpy(&water, &pair, sizeof pair);
}

inline PhasePair sizeOf(PhasePair pair) {
    using Bits = std::int64_t __attribute__((vector_size(2 * sizeof(double))));
    Bits bits;
    std::memcpy(&bits, &pair, sizeof bits);
    bits &= INT64_MAX;
    std::memcpy(&pair, &bits, sizeof pair);
    return pair;
}

inline PhasePair larger(PhasePair a, PhasePair b) {
    return a > b ? a : b;
}

/// recoverTwoPhase and setFluxes on pairs: `loss` are the amounts that leave. Returns the new amounts.
inline PhasePair recoverPair(PhasePair loss, const FlowNode& before, FlowNode& node) {
    const PhasePair none = {0.0, 0.0};
    PhasePair s = pairAt(node.Bw) * (pairAt(node.Cw) - loss);
    s = s < none ? none : s;
    double sum = s[0] + s[1];
    if (std::isnan(sum)) {
        if (std::isnan(s[0])) s[0] = before.Sw;
        if (std::isnan(s[1])) s[1] = before.So;
        sum = s[0] + s[1];
    }
    s = s * (sum > MachineEpsilon ? 1.0 / sum : 1.0);
    storePair(s, node.Sw);
    const PhasePair amounts = s * pairAt(node.inverseBw);
    storePair(amounts, node.Cw);
    return amounts;
}

/// Sets and returns the fluxes of a position.
inline PhasePair setPairFluxes(FlowNode& node) {
    const PhasePair none = {0.0, 0.0};
    const SaturationTable& table = *node.table;
    const AxisPlace place = placeOnAxis(table.SwAxis, table.SwSearch, node.Sw);
    const PhasePair low = {table.Krw[place.low], table.Krow[place.low]};
    const PhasePair high = {table.Krw[place.low + 1], table.Krow[place.low + 1]};
    PhasePair kr = low + place.weight * (high - low);
    kr = kr > none ? kr : none;
    const PhasePair mobility = kr * pairAt(node.inverseMuW);
    const double share = 1.0 / (mobility[0] + mobility[1] + MobilityGuard);
    const PhasePair flux = mobility * share * pairAt(node.inverseBw);
    storePair(flux, node.Fw);
    return flux;
}

/// Wave speeds of the two phases between a position and the one before it, 1/day.
inline PhasePair pairSpeeds(PhasePair dF, PhasePair dC, double inverseDeltaTof) {
    const PhasePair none = {0.0, 0.0};
    const PhasePair least = {LeastAmountStep, LeastAmountStep};
    const PhasePair step = sizeOf(dC);
    const PhasePair quotient = sizeOf(dF) * inverseDeltaTof / step;
    return step > least ? quotient : none;
}

}  // namespace kvr
