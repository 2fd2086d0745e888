#pragma once

#include "run/records/simulation.hpp"

#include <string>
#include <vector>

namespace kvr {

/// Oil and water stb, gas Mscf, reservoir volume rb; rates are the same a day.
struct ReportedFlow {
    double oil = 0.0, water = 0.0, gas = 0.0, reservoir = 0.0;
};

/// What the deck says that wells have done, without reservoir volumes.
struct ObservedFigures {
    ReportedFlow production, injection;  // rates in force
    ReportedFlow produced, injected;     // up to now
    double bhp = 0.0;                    // psia
};

/// What the tables say of one well, or of the field. Production and injection are both positive.
struct WellFigures {
    ReportedFlow production, injection;  // present rates
    ReportedFlow produced, injected;     // up to now
    double bhp = 0.0;                    // psia
    double thp = 0.0;                    // psia; 0 without a table of lift
    ObservedFigures observed;            // stays 0 in decks without observed rates
    std::vector<double> fractions;       // produced, mole fraction of each component; empty without any
};

struct StepFigures {
    double time = 0.0;  // days
    WellFigures field;
    ReportedFlow inPlace;
    double averagePressure = 0.0;      // psia, by the volume of oil and gas (MeanPressure)
    double recovery = 0.0;             // FOE
    double deltaRecovery = 0.0;        // of the step
    double npv = 0.0;                  // $
    double poreVolumesInjected = 0.0;  // fraction
    std::vector<WellFigures> wells;    // by well number, one for each of runWellNames
};

/// Water over liquid rate, 0 without liquid.
double waterCut(const ReportedFlow& production);
/// Gas over oil rate, Mscf/stb, 0 without oil.
double gasOilRatio(const ReportedFlow& production);

/// Observed rates of a well in internal volume a day, positive.
struct ObservedRates {
    PhaseAmounts production, injection;
};
ObservedRates observedRates(const ScheduleWell& well);

/// The part of the schedule in force at the clock's time; null before the schedule has any.
const ScheduleStep* scheduleInForce(const Schedule& schedule, const RunClock& clock);

/// Names of all wells of the run, in the order of their numbers: those of the last schedule step.
std::vector<std::string> runWellNames(const Schedule& schedule, const WellRecord& wells);

/// The figures at the clock's time, totals and field values from the last row of the balance. Before the
/// first row nothing has flowed: rates and totals are 0.
StepFigures stepFigures(const Simulation& run);

}  // namespace kvr
