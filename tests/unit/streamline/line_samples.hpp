#pragma once

#include "streamline/transport/fractional_flow.hpp"
#include "streamline/transport/line_grid.hpp"
#include "streamline/transport/solver_line.hpp"
#include "unit/fluid/table_samples.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace kvr::samples {

/// Two phases without volume change: Swc 0.2, Sor 0.2, water 0.5 cp, oil 2 cp, all B 1.
inline FluidTables plainFlood() {
    FluidTables tables = constantFluids();
    SaturationTable region;
    region.SwAxis = {0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
    region.Krw = {0.0, 0.01, 0.04, 0.09, 0.18, 0.3, 0.45};
    region.Krow = {1.0, 0.7, 0.45, 0.25, 0.1, 0.02, 0.0};
    region.Pcow.assign(7, 0.0);
    region.SgAxis = {0.0, 1.0};
    region.Krg = {0.0, 0.0};
    region.Krog = {1.0, 0.0};
    region.Pcog = {0.0, 0.0};
    tables.regions.push_back(region);
    finishTables(tables);
    return tables;
}

/// Fraction of water that flows in a `plainFlood`, written out plainly.
inline double plainFraction(double sw) {
    const double x[] = {0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8};
    const double w[] = {0.0, 0.01, 0.04, 0.09, 0.18, 0.3, 0.45};
    const double o[] = {1.0, 0.7, 0.45, 0.25, 0.1, 0.02, 0.0};
    int k = 0;
    while (k < 5 && sw >= x[k + 1]) ++k;
    const double share = (sw - x[k]) / (x[k + 1] - x[k]);
    const double lw = std::max(0.0, w[k] + share * (w[k + 1] - w[k])) / 0.5;
    const double lo = std::max(0.0, o[k] + share * (o[k + 1] - o[k])) / 2.0;
    return lw / (lw + lo);
}

/// A line of the given residence times, flooded with water from position 0 at Sw 0.8, oil at connate water
/// elsewhere; `tables` is a `plainFlood` that outlives it.
inline SolverLine floodedLine(const FluidTables& tables, const std::vector<double>& deltaTof) {
    SolverLine line;
    const auto count = static_cast<int>(deltaTof.size());
    sizeSolverLine(count, 1.0, 0, line);
    line.tracedNodeCount = count;
    for (std::size_t n = 1; n <= deltaTof.size(); ++n) {
        line.tracedDeltaTof[n] = deltaTof[n - 1];
        line.tracedTof[n] = line.tracedTof[n - 1] + deltaTof[n - 1];
    }
    layNodes(NodeControl::Irregular, 1.0, 1.0, line);
    for (std::size_t i = 0; i <= deltaTof.size(); ++i) {
        line.nodes[i].table = &tables.regions[0];
        line.nodes[i].pressure = 3000.0;
        line.nodes[i].Bw = line.nodes[i].Bo = line.nodes[i].inverseBw = line.nodes[i].inverseBo = 1.0;
        line.nodes[i].Bg = line.nodes[i].inverseBg = line.nodes[i].inverseMuG = 1.0;
        line.nodes[i].inverseMuW = 2.0;
        line.nodes[i].inverseMuO = 0.5;
        line.nodes[i].Sw = i == 0 ? 0.8 : 0.2;
        line.nodes[i].So = 1.0 - line.nodes[i].Sw;
        setAmounts(false, line.nodes[i]);
    }
    return line;
}

/// Water above connate along a line, as a residence time.
inline double waterGained(const SolverLine& line) {
    double sum = 0.0;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(line.nodeCount); ++i)
        sum += (line.nodes[i].Sw - 0.2) * line.DeltaTof[i];
    return sum;
}

}  // namespace kvr::samples
