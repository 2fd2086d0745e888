#pragma once

#include "fluid/table_checks.hpp"
#include "streamline/fractional_flow.hpp"
#include "streamline/line_grid.hpp"
#include "streamline/solver_line.hpp"

#include <string>
#include <vector>

namespace kvr::samples {

/// Two phases without volume change: Swc 0.2, Sor 0.2, water 0.5 cp, oil 2 cp, all B 1.
inline FluidTables plainFlood() {
    FluidTables tables;
    tables.OilPressure = {10.0, 100000.0};
    tables.OilFvf = {1.0, 1.0};
    tables.OilViscosity = {2.0, 2.0};
    tables.GasPressure = {10.0, 100000.0};
    tables.GasFvf = {1.0, 1.0};
    tables.GasViscosity = {1.0, 1.0};
    tables.referencePressureWater = 3000.0;
    tables.waterFvf = 1.0;
    tables.waterViscosity = 0.5;
    tables.rockReferencePressure = 3000.0;
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

/// A line of the given residence times, flooded with water from position 0 at Sw 0.8, oil at connate water
/// elsewhere; loaded for `plainFlood`.
inline SolverLine floodedLine(const std::vector<double>& deltaTof) {
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
        line.region[i] = 1;
        line.pressure[i] = 3000.0;
        line.Bw[i] = line.Bo[i] = line.inverseBw[i] = line.inverseBo[i] = 1.0;
        line.Bg[i] = line.inverseBg[i] = line.inverseMuG[i] = 1.0;
        line.inverseMuW[i] = 2.0;
        line.inverseMuO[i] = 0.5;
        line.Sw[i] = i == 0 ? 0.8 : 0.2;
        line.So[i] = 1.0 - line.Sw[i];
        setAmounts(false, static_cast<int>(i), line);
    }
    return line;
}

}  // namespace kvr::samples
