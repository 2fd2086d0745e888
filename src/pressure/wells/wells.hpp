#pragma once

#include "base/cell_array.hpp"
#include "deck/schedule.hpp"

#include <memory>
#include <string>
#include <vector>

namespace kvr {

/// What a connection of a run with components gives and takes. Surface volumes from a reservoir volume of the
/// liquid and of the vapour of its cell, by the flash of the whole stream of its well.
struct MixtureYield {
    bool isSet = false;  // false: formation volume factors of tables hold
    double oilOfLiquid = 0.0, gasOfLiquid = 0.0;
    double oilOfVapour = 0.0, gasOfVapour = 0.0;
    double injectedFactor = 0.0;  // reservoir volume that a surface volume of the injected stream takes
};

/// One connection of a well to a cell. Rates positive into the reservoir, surface volumes a day.
struct WellConnection {
    CellId ConnCell = 0;
    int completion = 0;        // 1-based place in the well's list
    char ConnDirection = 'Z';  // 'X', 'Y', 'Z'
    double WellRadius = 0.0;   // ft
    double Skin = 0.0;
    double ConnFactor = -1.0;                         // rb cp/(day psi); negative: computed
    double multiplier = 1.0;                          // of that factor
    double givenKh = -1.0;                            // md ft, of COMPDAT; not above 0: of the cell
    double ConnWI = 0.0;                              // rb cp/(day psi)
    double aquiferFlow = 0.0;                         // of an aquifer: surface volume a day and psi
    double ConnHead = 0.0;                            // psi over Bhp
    double effectiveRadius = 1.0;                     // ft, report only
    double effectivePermeability = 0.0;               // md, report only
    double ConnQo = 0.0, ConnQw = 0.0, ConnQg = 0.0;  // stb/day, stb/day, surface barrels of gas/day
    double reservoirRate = 0.0;                       // rb/day, total over phases; what launching uses
    MixtureYield mixture;
};

inline constexpr int NoGroup = -1;

/// What groups leave to a well: rates that it may not pass, without sign.
struct GroupShare {
    double oil = NoGroupLimit, water = NoGroupLimit, gas = NoGroupLimit, liquid = NoGroupLimit;
    double resv = NoGroupLimit;
    double injected = NoGroupLimit;  // surface volume of the injected phase
};

/// What a pressure at the tubing head means for a well.
struct TubingLimit {
    std::shared_ptr<const LiftTable> table;  // null: none
    double head = 0.0;                       // psia; 0: no limit
    double artificial = 0.0;
    double ownLimit = 0.0;  // psia, of the bottom-hole pressure by the deck
    double weight = 0.0;    // psi, of the fluid between the table's depth and that of Bhp
};

struct Well {
    std::string WellName;      // up to 8 characters
    std::string WellKind;      // "inj" or "prd"
    std::string WellControl;   // "bhp", "orat", "wrat", "grat", "lrat", "resv", "rate", "wlim"; that in force
    std::string deckControl;   // the rate control that holds where the pressure limit does not, or "bhp"
    std::string givenControl;  // the control that the schedule asked for
    std::string InjectFluid;   // "oil", "wat", "gas"; blank for producers
    int LocI = 0, LocJ = 0, TopK = 0, BottomK = 0;
    double datumDepth = NoDatum;  // ft, where Bhp and its limit stand; below 0: at the first connection
    double WellRadius = 0.0;      // ft
    double Skin = 0.0;
    double ConnFactor = -1.0;
    double TargetRate = 0.0;  // negative for producers; stb/day, surface barrels/day or rb/day by control
    // Targets of every phase for reports, with the sign of TargetRate.
    double targetOil = 0.0, targetWater = 0.0, targetGas = 0.0, targetLiquid = 0.0, targetResv = 0.0;
    double Bhp = 0.0;            // psia
    double BhpLimit = 0.0;       // psia
    TubingLimit lift;            // what else BhpLimit comes from
    bool aquifer = false;        // no well, but what an aquifer gives or takes
    bool shut = false;           // status SHUT or STOP, or a rate target of 0
    bool holdsLimits = false;    // targets of the other phases are limits
    bool controlChosen = false;  // for the pass over the step that comes; see holdMostRestrictive
    double efficiency = 1.0;     // share of the time that the well is on; targets and indices hold it
    int group = NoGroup;         // among WellRecord::groups
    bool underGroups = false;    // rates of groups are shared over it
    bool shutByGroup = false;    // for a step: nothing is left to it
    GuideRate guide;
    GroupShare share;
    EconomicLimits limits;
    int openings = 0;                             // of the schedule, when the well was closed by a limit
    int connectionOpenings = 0;                   // the same of its connections
    bool closedByLimit = false;                   // the whole well
    std::vector<CellId> closedCells;              // connections closed by a limit
    double tracerConcentration = 0.0;             // of the last WTRACER row
    std::vector<InjectedTracer> injectedTracers;  // by name
    std::string injectionStream;
    std::vector<WellConnection> connections;
    double WellQo = 0.0, WellQw = 0.0, WellQg = 0.0;  // sums over connections
    double reservoirRate = 0.0;                       // rb/day
    double rateAtDeckControl = 0.0;  // what deckControl names, as the last pressure solve gave it
    // Sums of the last pressure solve, by mobilities, before transport tells what the well really gave.
    double solvedQo = 0.0, solvedQw = 0.0, solvedQg = 0.0;
    double targetFactor = 1.0;    // of the target in the pressure solve, so that what the well gives meets it
    bool bhpReset = false;        // a bad Bhp has been replaced in the present pressure solve
    double mixtureDensity = 0.0;  // lb/ft3 in the bore, of runs with components; 0: by tables
};

/// A group of the schedule step.
struct WellGroup {
    GroupControl given;
    int parent = NoGroup;  // its place
};

/// The wells of the current schedule step.
struct WellRecord {
    std::vector<Well> wells;
    std::vector<WellGroup> groups;  // each before its parent; none where no group has a target
    int RateWellCount = 0;          // wells with a matrix row of their own
};

/// Bottom-hole pressures stand at a depth of their own.
inline bool hasDatum(const Well& well) {
    return well.datumDepth >= 0.0;
}
inline bool isInjector(const Well& well) {
    return well.WellKind == "inj";
}
/// Of the two wells of an aquifer each cell has one that flows; the other is none there.
inline bool startsOrEndsLines(const Well& well, const WellConnection& connection) {
    return !well.aquifer || connection.reservoirRate != 0.0;
}
/// Surface rate that the pressure solve aims at.
inline double aimedRate(const Well& well) {
    return well.TargetRate * well.targetFactor;
}
inline bool isRateControlled(const Well& well) {
    return well.WellControl != "bhp";
}

}  // namespace kvr
