#pragma once

#include "base/deck_place.hpp"
#include "base/shared_list.hpp"
#include "deck/group_schedule.hpp"
#include "deck/lift_table.hpp"
#include "model/grid.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace kvr {

/// Control limits of a well that the deck does not limit.
inline constexpr double DefaultProducerBhp = 14.6;      // psia
inline constexpr double DefaultInjectorBhp = 100000.0;  // psia

/// Depth of a well whose bottom-hole pressure stands at its first connection; any below 0 does.
inline constexpr double NoDatum = -1.0;

/// What a well injects of one tracer.
struct InjectedTracer {
    std::string name;  // first four characters count
    double concentration = 0.0;
};

/// What becomes of a producer that has passed an economic limit.
enum class Workover : std::uint8_t { None, Connection, ConnectionsBelow, Well };

/// WECON: economic limits of a producer; 0: no limit. Rates a day and ratios of surface volumes, internal
/// units.
struct EconomicLimits {
    double leastOil = 0.0;
    double leastGas = 0.0;
    double leastLiquid = 0.0;
    double mostWaterCut = 0.0;       // water / (water + oil)
    double mostGasOilRatio = 0.0;    // gas / oil
    double mostWaterGasRatio = 0.0;  // water / gas
    Workover workover = Workover::None;
    bool endsRun = false;
};

/// Well data of one step. Merged by name while the deck is read: one element per well and step.
/// Rates in internal volume a day (stb or surface barrels of gas), positive as the deck gives them.
struct ScheduleWell {
    std::string name;  // up to 8 characters
    std::string group;
    int headI = 0;
    int headJ = 0;
    double refDepth = NoDatum;  // ft, of bottom-hole pressures
    std::string preferredPhase;
    DeckPlace place;  // of the row that introduced the well
    std::string status = "OPEN";
    std::string control;  // as in the deck; blank: no control given yet
    bool isInjector = false;
    bool hasControl = false;   // a control keyword has named this well
    bool holdsLimits = false;  // rates beside the control are limits; those of history keywords are not

    double histOil = 0.0;
    double histWater = 0.0;
    double histGas = 0.0;
    double histThp = 0.0;
    double histBhp = 0.0;

    std::string injType;
    double injRate = 0.0;
    double injResv = 0.0;                // rb/day
    bool injByReservoirRate = false;     // RESV is a control of injectors, too
    double injBhp = DefaultInjectorBhp;  // psia
    double injThp = 0.0;

    double prodOil = 0.0;
    double prodWater = 0.0;
    double prodGas = 0.0;
    double prodLiquid = 0.0;
    double prodResv = 0.0;                // rb/day
    double prodBhp = DefaultProducerBhp;  // psia
    double prodThp = 0.0;

    int liftTable = 0;            // of VFPPROD or VFPINJ; 0: none
    double artificialLift = 0.0;  // as the axis of its table has it

    double histInjRate = 0.0;
    double histInjBhp = 0.0;
    double histInjThp = 0.0;

    double tracerConcentration = 0.0;             // of the last WTRACER row
    std::vector<InjectedTracer> injectedTracers;  // of every tracer that WTRACER named
    std::string injectionStream;                  // WINJGAS: name of a WELLSTRE stream
    double efficiency = 1.0;                      // WEFAC: share of the time that the well is on
    bool underGroups = true;                      // WGRUPCON: rates of groups are shared over it
    bool waitsForGroup = false;                   // its control is that of its group alone
    GuideRate guide;                              // WGRUPCON
    EconomicLimits limits;
    int openings = 0;  // how often the deck has set the status: a well that was shut by a limit opens anew
    int connectionOpenings = 0;  // the same of single connections
};

/// One COMPDAT or WELSPEC row.
struct ScheduleCompletion {
    std::string wellName;
    DeckPlace place;
    int i = 0;  // 0: the well head's
    int j = 0;
    int k1 = 0;
    int k2 = 0;
    std::string status = "OPEN";
    int satTable = 0;
    double transFactor = -1.0;  // rb cp/(day psi); negative: compute
    double multiplier = 1.0;    // WPIMULT: of that factor
    double diameter = 0.0;      // ft
    float kh = -1.0F;
    float skin = 0.0F;
    double dFactor = 0.0;
    char direction = 'Z';
};

/// Wells and completions in force from one well event to the next.
struct ScheduleStep {
    SharedElements<ScheduleWell> wells;  // what an event leaves as it was is held once
    SharedList<ScheduleCompletion> completions;
    SharedList<GroupControl> groups;
    int wellCount = 0;        // WELSPECS rows, as the messages count them
    int completionCount = 0;  // COMPDAT rows
    int producerCount = 0;    // WCONPROD and WCONHIST rows
    int injectorCount = 0;    // WCONINJE and WCONINJH rows
    int stepCount = 0;
    double period = 0.0;  // days
    int cumulativeSteps = 0;
    std::size_t searchFrom = 0;  // place in wells behind the one that a row named last
    double mostRsRise = std::numeric_limits<double>::infinity();  // DRSDT: of Rs a day
    std::vector<FaultMultiplier> faultMultipliers;                // MULTFLT of this step alone
    std::string source;          // keywords of this step alone as the deck has them, times and WELSPEC aside
    bool sourceHasWells = true;  // they define all wells: none stands in WELSPEC
};

/// The wells, completions and limits of a step are those of the step before, and no fault changes: shared
/// lists tell by their places, so that a row that repeats what holds counts as a change.
inline bool hasWellsOf(const ScheduleStep& step, const ScheduleStep& before) {
    return step.wells.held == before.wells.held && step.completions.held == before.completions.held &&
           step.groups.held == before.groups.held && step.mostRsRise == before.mostRsRise &&
           step.faultMultipliers.empty();
}

/// Composition of an injected stream, WELLSTRE.
struct InjectionStream {
    std::string name;
    std::vector<double> moleFraction;
};

/// The well events of a deck and the time tables that the main loop walks. Tables hold entry n of the
/// description at [n - 1]; past their end a table reads as "never" (+infinity), see run/clock.
struct Schedule {
    std::vector<ScheduleStep> steps;
    std::vector<InjectionStream> streams;
    std::vector<std::shared_ptr<const LiftTable>> liftTables;  // of VFPPROD and VFPINJ, one of a number
    std::vector<double> stepLength;                            // days, one per time step as given
    std::vector<double> stepEnd;                               // days, [0] is 0, one more than stepLength
    std::vector<double> reportEnd;                             // days, end of each report step
    std::vector<double> wellEventTime;                         // days, start of each ScheduleStep, [0] is 0
    double endTime = 0.0;                                      // days
    bool endTimeGiven = false;                                 // SIMEND set endTime
    std::size_t heldRows = 0;  // well and completion rows that the closed steps have of their own
};

}  // namespace kvr
