#pragma once

#include "base/constants.hpp"
#include "fluid/table_checks.hpp"

#include <utility>

namespace kvr::samples {

/// Columns of a light oil (Odeh's first comparative problem): Mscf/stb, psia, rb/stb, cp; last row
/// under-saturated; gas psia, rb/Mscf, cp.
inline void fillOdehPvt(FluidTables& tables) {
    tables.hasGas = true;
    tables.OilRs = {0.001, 0.0905, 0.18, 0.371, 0.636, 0.775, 0.93, 1.27, 1.618, 1.618};
    for (double& rs : tables.OilRs) rs /= GasRatioFactor;
    tables.OilPressure = {14.7, 264.7, 514.7, 1014.7, 2014.7, 2514.7, 3014.7, 4014.7, 5014.7, 9014.7};
    tables.OilFvf = {1.062, 1.15, 1.207, 1.295, 1.435, 1.5, 1.565, 1.695, 1.827, 1.737};
    tables.OilViscosity = {1.04, 0.975, 0.91, 0.83, 0.695, 0.641, 0.594, 0.51, 0.449, 0.631};
    tables.UnderRows = 1;
    tables.GasPressure = {14.7, 264.7, 514.7, 1014.7, 2014.7, 2514.7, 3014.7, 4014.7, 5014.7, 9014.7};
    tables.GasFvf = {166.666, 12.093, 6.274, 3.197, 1.614, 1.294, 1.08, 0.811, 0.649, 0.386};
    for (double& bg : tables.GasFvf) bg *= GasRatioFactor;
    tables.GasViscosity = {0.008, 0.0096, 0.0112, 0.014, 0.0189, 0.0208, 0.0228, 0.0268, 0.0309, 0.047};
    tables.oilDensity = 49.1;
    tables.waterDensity = 64.49;
    tables.gasDensity = 0.0533;
    tables.referencePressureWater = 4017.55;
    tables.waterFvf = 1.038;
    tables.waterCompressibility = 3.22e-6;
    tables.waterViscosity = 0.318;
    tables.rockReferencePressure = 14.7;
    tables.rockCompressibility = 3e-6;
}

/// Water, dead oil and gas whose factors are 1 at any pressure, of 0.5, 2 and 1 cp; no regions yet.
inline FluidTables constantFluids() {
    FluidTables tables;
    tables.OilPressure = tables.GasPressure = {10.0, 100000.0};
    tables.OilFvf = tables.GasFvf = {1.0, 1.0};
    tables.OilViscosity = {2.0, 2.0};
    tables.GasViscosity = {1.0, 1.0};
    tables.referencePressureWater = 3000.0;
    tables.waterFvf = 1.0;
    tables.waterViscosity = 0.5;
    tables.rockReferencePressure = 3000.0;
    return tables;
}

/// One region of four rows each.
inline SaturationTable fourRowRegion() {
    SaturationTable table;
    table.SwAxis = {0.2, 0.4, 0.6, 0.8};
    table.Krw = {0.0, 0.05, 0.2, 0.45};
    table.Krow = {0.9, 0.5, 0.2, 0.0};
    table.Pcow = {0.0, 0.0, 0.0, 0.0};
    table.SgAxis = {0.0, 0.1, 0.3, 0.6};
    table.Krg = {0.0, 0.02, 0.2, 0.6};
    table.Krog = {0.9, 0.6, 0.2, 0.0};
    table.Pcog = {0.0, 0.0, 0.0, 0.0};
    return table;
}

/// The light oil with the four-row region, finished.
inline FluidTables lightOil() {
    FluidTables tables;
    fillOdehPvt(tables);
    tables.regions.push_back(fourRowRegion());
    finishTables(tables);
    return tables;
}

/// Water and oil of 1 cp whose fraction of the flow is their saturation; all factors 1.
inline FluidTables sharesFlow() {
    FluidTables tables = constantFluids();
    tables.OilViscosity = {1.0, 1.0};
    tables.waterViscosity = 1.0;
    SaturationTable region = fourRowRegion();
    region.SwAxis = {0.0, 0.25, 0.5, 1.0};
    region.Krw = {0.0, 0.25, 0.5, 1.0};
    region.Krow = {1.0, 0.75, 0.5, 0.0};
    tables.regions.push_back(region);
    finishTables(tables);
    return tables;
}

}  // namespace kvr::samples
