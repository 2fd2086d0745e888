#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Lengths in m and pressures in kPa, as the summary gives them.
double metres(double feet);
double kilopascals(double psia);

/// The summary of the input in KVR_Info_general.out, under headings: input, reservoir, rock and fluid tables,
/// simulation, then a few options. Lengths are the extents of the grid; the initial pressure is the mean
/// over the bulk volume. KVR_Info_aspect.out gets the head of the table that iterations fill.
void writeRunInformation(const Simulation& simulation);

}  // namespace kvr
