#pragma once

#include "fluid/components/peng_robinson.hpp"

#include <cstdint>

namespace kvr {

enum class FluidPhases : std::uint8_t { Unknown, Liquid, Vapour, Both };

/// Outcome of a flash, and what the next flash of the same place starts from.
struct FlashState {
    FluidPhases phases = FluidPhases::Unknown;
    bool hasK = false;            // lnK solves a (negative) flash
    bool isSolved = true;         // false: the phases' fugacities differ by more than 1e-9
    double vapourFraction = 0.0;  // moles; 0 or 1 of one phase
    Composition lnK{};
    Composition liquid{}, vapour{};       // mole fractions; the feed in both of one phase
    double zLiquid = 1.0, zVapour = 1.0;  // compressibility factors; the same of one phase
};

/// Splits a feed at a pressure (psia) and the temperature of the set. `state` comes with what the last flash
/// of the place left; a state made anew starts from nothing.
///
/// From nothing: successive substitution from Wilson's K, then Newton on ln K; where that ends in one phase
/// or does not end, the tangent plane decides (stabilityTest), and an unstable feed is taken down to its
/// minimum of Gibbs energy. From a last state with K: Newton at once, in which V may leave 0..1: one phase.
/// From a last state without: the tangent plane at once, unless its feed was stable and near this one.
///
/// One phase is named by the last tie line where there is one, else by how densely its molecules are packed
/// (B/Z, of the feed against its stationary point of the tangent plane, or by itself); between the two the
/// last name stays, so that names do not flicker.
void FlashPT(const ComponentSet& set, const Composition& feed, double pressure, FlashState& state);

/// ft3 of each phase from a lb-mole of feed.
struct PhaseVolumes {
    double liquid = 0.0, vapour = 0.0;
};
PhaseVolumes phaseVolumes(const ComponentSet& set, double pressure, const FlashState& state);

}  // namespace kvr
