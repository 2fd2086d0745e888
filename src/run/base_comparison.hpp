#pragma once

#include "run/records/simulation.hpp"

#include <array>
#include <map>
#include <optional>
#include <string>

namespace kvr {

/// Totals of a summary table at one time, by column name, in the units of its second line. Between two rows
/// they are taken to grow evenly; behind the last they are those of the last, whose time is then `time`.
struct BaseTotals {
    double time = 0.0;
    std::map<std::string, double> value, factor;  // factor: to stb and Mscf
};

/// Nothing where the file cannot be read as a summary table.
std::optional<BaseTotals> readBaseTotals(const std::string& path, double time);

/// What the run has produced and injected, and its value, beside the run whose table BASERUN names: rows of
/// the closing summary.
void tellBaseComparison(const Simulation& simulation);

}  // namespace kvr
