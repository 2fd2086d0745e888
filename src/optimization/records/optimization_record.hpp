#pragma once

#include <map>
#include <string>
#include <vector>

namespace kvr {

/// What the schedule asks of a well and what the optimisation has made of it. Rates are those of the control
/// that the schedule gave, positive, internal volume a day.
struct OptimizedWell {
    std::string name;
    std::string control;    // of the schedule
    double deckRate = 0.0;  // of the schedule
    double rate = 0.0;      // in force
};

/// The wells of a run from one change of rates to the next, as deck text.
struct ControlSpan {
    double start = 0.0;                             // days
    int entry = 0;                                  // 1-based place in the schedule; 0: as before
    std::vector<std::string> injectors, producers;  // rows of the wells that have changed
    std::vector<std::string> efficiencies;
};

/// What the rate optimisation keeps from step to step.
struct OptimizationRecord {
    std::vector<OptimizedWell> wells;    // by well number
    std::map<std::string, double> left;  // of the totals, by wells at their bounds, volume a day: by fluid
                                         // injected, and of production
    double lastChange = -1.0;            // days; below 0: rates have not been changed yet
    int changes = 0;                     // steps behind which rates were changed
    int steps = 0;                       // steps looked at
    bool toldWithoutLines = false;
    bool toldInjectionShort = false, toldProductionShort = false;
    bool toldPressure = false;
    double npv = 0.0;                // $ up to the last look
    int entry = 0;                   // of the schedule, 1-based: the last one in the spans
    std::vector<ControlSpan> spans;  // of the schedule that the run leaves
    std::vector<std::string> injectorRows, producerRows, efficiencyRows;  // in force, by their wells
};

}  // namespace kvr
