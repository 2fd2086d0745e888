#pragma once

#include <vector>

namespace kvr {

/// Surface amounts of the three phases in internal volume units.
struct PhaseAmounts {
    double oil = 0.0, water = 0.0, gas = 0.0;
};

/// Cumulative production and injection of one well (both positive), surface and reservoir volume.
struct WellTotals {
    PhaseAmounts produced, injected;
    double producedReservoir = 0.0, injectedReservoir = 0.0;  // rb
    PhaseAmounts observedProduced, observedInjected;          // of the rates that WCONHIST, WCONINJH give
};

/// Fluids in place, sums over the active cells in internal volume units.
struct InPlaceSums {
    double poreVolume = 0.0;
    double oilPore = 0.0, waterPore = 0.0, gasPore = 0.0;  // reservoir volume of each phase
    double oil = 0.0, water = 0.0;                         // surface volumes
    double freeGas = 0.0, dissolvedGas = 0.0;              // surface volumes
    double solidGas = 0.0;  // CO2 in minerals, the surface volume that it had as gas
};

/// Totals of one finished step, one row of the material balance table.
struct BalanceRow {
    double time = 0.0;
    double poreVolume = 0.0, poreVolumesInjected = 0.0, averagePressure = 0.0;
    double errorOil = 0.0, errorWater = 0.0, errorGas = 0.0;  // fractions
    PhaseAmounts inPlace;
    PhaseAmounts injectionRate, productionRate;     // a day, both positive
    double recoveryOil = 0.0, recoveryWater = 0.0;  // FOE, FOEW
    double deltaRecovery = 0.0;                     // increase of FOE in this step
    double deltaNpv = 0.0, npv = 0.0;               // $, in this step and so far, not discounted
    int flowingWells = 0;
};

/// What the material balance and the well tables keep from step to step.
struct BalanceRecord {
    bool started = false;
    PhaseAmounts initial;           // in place at the first call
    PhaseAmounts netInflow;         // cumulative, through the wells
    std::vector<WellTotals> wells;  // in the order of WellRecord::wells
    WellTotals field;
    InPlaceSums now;                          // behind the last row
    std::vector<PhaseAmounts> firstOfRegion;  // in place at the first call, by FIPNUM region less 1
    std::vector<BalanceRow> rows;             // [0] is the start of the run
    double previousSumSo = 0.0, previousSumSw = 0.0, previousSumPressure = 0.0;  // global iteration report
};

}  // namespace kvr
