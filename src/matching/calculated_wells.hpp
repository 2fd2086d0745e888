#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "matching/well_series.hpp"

#include <span>
#include <string>
#include <string_view>

namespace kvr {

/// What the lines bring to a producer in one time bin.
struct WellBin {
    double time = 0.0;              // days, end of the bin
    double oil = 0.0, water = 0.0;  // reservoir volume a day, internal units; 0 without lines
    double gas = 0.0;               // surface volume a day, internal units
    double pressure = 0.0;          // psi
};

/// Number of bins is that of the report steps: bin b = 1 .. bins of a run that ends at `end` ends at
/// b end / bins, days.
double binTime(double end, int bins, int b);

/// Cut of the liquid, w / (w + 1e-10 + o): 0 for a shut well; a phase that goes back counts as none. Surface
/// rates in barrels a day.
double surfaceCut(double water, double oil);

/// A producer's history from its bins: oil qo/Bo and water qw/Bw in stb/d, gas in Mscf/d, their cut and their
/// ratio in Mscf/stb, 0 without oil. `Bo`, `Bw`: at the well's head cell.
WellSeries calculatedSeries(const UnitSystem& units, std::string_view name, std::span<const WellBin> bins,
                            double Bo, double Bw);

/// Replaces WELL_CALCULATED.DATA in a folder (blank, or ended by its separator): well after well, one row for
/// each time. `wells` are the producers. Stops where the file cannot be written.
void writeCalculatedWells(const Console& console, const std::string& folder,
                          std::span<const WellSeries> wells);

}  // namespace kvr
