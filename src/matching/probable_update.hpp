#pragma once

#include "matching/most_probable.hpp"
#include "matching/sl_sensitivity.hpp"
#include "run/records/simulation.hpp"

#include <cstdint>
#include <span>

namespace kvr {

/// HMPRIOR: the increment of ln k that leads from the present field to the most probable one behind the
/// histories, those of curves and pressures in parts of their time, before its limits. `region`: cells that
/// may change.
CellArray<double> probableUpdate(const Simulation& simulation, MatchStage stage, const CellArray<double>& lnk,
                                 const CellArray<std::uint8_t>& region);

/// How far a step is held back: `MostDamping` at first, half as much behind each run that was kept as its
/// update was, twice as much behind one whose update had to be halved, within the bounds.
inline constexpr double MostDamping = 3.0, LeastDamping = 0.1;
double dampingOf(std::span<const RunMisfit> kept);

/// Errors of the data of one kind for the next step, [from, to) of the list: at least `damping` times the
/// root of the mean square of what is lacking over the error, so that a step far from the histories, where
/// rows that are linear about the present field say little, is short (a Levenberg-Marquardt step in the
/// metric of the prior: Hanke, Inverse Problems 13, 1997; Iglesias and Dawson, Comput. Geosci. 17, 2013).
/// Gives the root.
double dampErrors(std::size_t from, std::size_t to, double damping, ErrorData& data);

}  // namespace kvr
