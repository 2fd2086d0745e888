#pragma once

#include "optimization/pair_efficiency.hpp"
#include "run/records/simulation.hpp"

#include <span>
#include <string>
#include <vector>

namespace kvr {

/// One pair as the files tell it.
struct ToldPair {
    WellPair pair;
    double efficiency = 0.0;
    double change = 0.0;  // relative, of its flow
};

/// One well whose rate was looked at. Rates as the well's own control has them, internal volume a day.
struct ToldWell {
    int well = 0;  // 1-based
    double deckRate = 0.0, before = 0.0, after = 0.0;
    std::string bound;  // why it is not what the pairs asked for; empty: it is
};

/// What one step of the optimisation came to.
struct RateReport {
    double norm = 0.0;  // of the relative changes of the rates
    double waterProduced = 0.0, oilProduced = 0.0, waterInjected = 0.0;  // surface volume a day
    double value = 0.0;                                                  // $ of the step
    double meanEfficiency = 0.0, meanTime = 0.0;
    double timeMisfit = 0.0;      // variance of arrival times over the flux, of the squared mean
    double recoveryMisfit = 0.0;  // mean squared distance of efficiencies from the mean, over the flux
    bool changed = false;
    std::vector<ToldPair> pairs;
    std::vector<ToldWell> wells;
};

/// The file of the step, a row of the file of all steps, the pair map; the figures of the step to the log.
void writeRateStep(const RateReport& report, Simulation& simulation);

/// A row of KVR_RateChanges.csv and a line of the log for each well of a step that changed rates.
void tellRateChanges(const RateReport& report, Simulation& simulation);

/// Average pressure and a map of the means over depth, as seen from above, at 50 by 50 points.
void writePressureMap(const Simulation& simulation, double average);

/// Place of a well's head as seen from above, ft.
std::array<double, 2> headOf(const GridModel& grid, const Well& well);

}  // namespace kvr
