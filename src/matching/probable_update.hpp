#pragma once

#include "matching/most_probable.hpp"
#include "matching/sl_sensitivity.hpp"
#include "run/records/simulation.hpp"

#include <cstdint>
#include <span>

namespace kvr {

/// HMPRIOR: keeps the field of the run that has just ended and what it left of the data, histories of curves
/// and pressures in parts of their time, among the last `MostTried` ones.
inline constexpr std::size_t MostTried = 7;
void rememberTried(Simulation& simulation);

/// Keeps data and rows of that run, which has been accepted, in `match.probable`.
void takeProbableData(Simulation& simulation, MatchStage stage);

/// The increment of ln k, before its limits, that leads from the field of these data to the most probable
/// one, rows having taken up what the runs kept show. `region`: cells that may change.
CellArray<double> probableUpdate(const Simulation& simulation, const CellArray<std::uint8_t>& region);

/// How far a step is held back: `MostDamping` at first, half as much behind each run that was kept and twice
/// as much behind each that was not, within the bounds behind each that was. `refused`: runs since the last
/// kept one.
inline constexpr double MostDamping = 3.0, LeastDamping = 0.1;
double dampingOf(std::span<const RunMisfit> kept, int refused);

/// Errors of the data of one kind for the next step, [from, to) of the list: at least `damping` times the
/// root of the mean square of what is lacking over the error, so that a step far from the histories, where
/// rows that are linear about the present field say little, is short (a Levenberg-Marquardt step in the
/// metric of the prior: Hanke, Inverse Problems 13, 1997; Iglesias and Dawson, Comput. Geosci. 17, 2013).
/// Gives the root.
double dampErrors(std::size_t from, std::size_t to, double damping, std::span<const double> misfit,
                  std::vector<double>& error);

}  // namespace kvr
