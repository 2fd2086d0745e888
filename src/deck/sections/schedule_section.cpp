#include "deck/sections/schedule_section.hpp"

#include "deck/reading/keyword_table.hpp"
#include "deck/sections/grid_barriers.hpp"
#include "deck/sections/lift_rows.hpp"
#include "deck/sections/schedule_changes.hpp"
#include "deck/sections/schedule_groups.hpp"
#include "deck/sections/schedule_streams.hpp"
#include "deck/sections/schedule_times.hpp"
#include "deck/sections/schedule_wells.hpp"

#include <array>

namespace kvr {

namespace {

void readNosim(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    lineToBoth(consoleOf(reader), "-> The deck is read and checked, nothing is run");
    records.options.noSimulation = true;
}

/// Factors that act from the begin of the present step on, on top of what stands there.
void readFaultFactors(SectionReader& reader, ScheduleRecords& records) {
    readFaultMultipliers(reader, FaultMeans::Multiply, records.grid,
                         records.schedule.steps.back().faultMultipliers);
}

void readSkiprest(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    records.options.restartInside = true;
}

using Row = KeywordRow<ScheduleRecords>;
constexpr std::array Keywords = {
    Row{"RPTSCHED", neglect<ScheduleRecords>, "neglected"},
    Row{"RPTRST", neglectRestartReports<ScheduleRecords>, "neglected"},
    Row{"WELSPEC", readWelspec, "a well in one row: name, I, J, K1, K2, diameter, skin, type, rate, control"},
    Row{"WELSPECS", readWelspecs, "name, group, I, J, reference depth, phase of a well"},
    Row{"COMPDAT", readCompdat, "completions of a well"},
    Row{"WCONPROD", readWconprod,
        "control and targets of a producer, pressure at the tubing head with its table among them"},
    Row{"WCONINJE", readWconinje, "control and targets of an injector"},
    Row{"WCONHIST", readWconhist, "observed rates of a producer"},
    Row{"WHISTCTL", readWhistctl, "control of the rows of `WCONHIST` behind it, NONE: their own"},
    Row{"WCONINJH", readWconinjh, "observed rate of an injector"},
    Row{"VFPPROD", readProducerLift,
        "table of bottom-hole pressures of producers: number, depth, OIL, LIQ or GAS, WOR, WCT or WGR, GOR, "
        "GLR "
        "or OGR, ..; rates, pressures at the tubing head, ratios of water and gas, lift; rows of four places "
        "and the pressures by rate"},
    Row{"VFPINJ", readInjectorLift,
        "the same of injectors: number, depth, OIL, WAT or GAS, ..; rates, pressures at the tubing head; "
        "rows "
        "of a place and the pressures by rate"},
    Row{"WTRACER", readWtracer, "tracer concentration of a well"},
    Row{"WELLSTRE", readWellstre, "composition of an injection stream"},
    Row{"WINJGAS", readWinjgas, "injection stream of a well"},
    Row{"WELOPEN", readWelopen,
        "rows of a well, OPEN, SHUT or STOP, and I, J, K, first and last connection: the status of a well, "
        "or of the connections named"},
    Row{"WPIMULT", readWpimult,
        "rows of a well, a factor, and I, J, K, first and last connection: multiplies the connection factors "
        "of the well, or of the connections named, until a new row of `COMPDAT`"},
    Row{"WELTARG", readWeltarg,
        "rows of a well, ORAT, WRAT, GRAT, LRAT, RESV, BHP or THP, and a value: a new target or limit"},
    Row{"WELCNTL", readWeltarg, "the same, and the target becomes the control of the well"},
    Row{"GEFAC", readGefac,
        "rows of a group and the share of the time that its wells are on, on top of their own"},
    Row{"WEFAC", readWefac,
        "rows of a well and the share of the time that it is on: rates of the well are those while it is on, "
        "those of "
        "the field and totals count the share"},
    Row{"WECON", readWecon,
        "economic limits of a producer: least oil and gas rates, largest water cut, gas-oil ratio and "
        "water-gas ratio, workover (NONE, CON, +CON, WELL), end of the run (YES, NO), ..., item 14: least "
        "liquid rate"},
    Row{"MULTFLT", readFaultFactors,
        "rows of a fault of `FAULTS` and a factor: from here on, on top of what stands there"},
    Row{"DRSDT", readDrsdt, "largest rise of the solution gas ratio a day, in all cells"},
    Row{"GRUPTREE", readGruptree, "rows of a group and the one above it, `FIELD` unless given"},
    Row{"GCONPROD", readGconprod,
        "what the producers of a group give together: group, NONE, ORAT, WRAT, GRAT, LRAT, RESV or FLD, oil, "
        "water, gas and liquid rates, RATE where those beside the control hold too, YES or NO to the rates "
        "of "
        "groups above, guide rate and its phase, RATE of water, gas, liquid, reservoir rate"},
    Row{"GCONINJE", readGconinje,
        "what the injectors of a group bring together: group, phase, NONE, RATE, RESV, REIN, VREP or FLD, "
        "surface and reservoir rates, share of the produced phase, share of the produced reservoir volume, "
        "YES "
        "or NO to the rates of groups above, guide rate and its phase, groups that these shares are of"},
    Row{"WGRUPCON", readWgrupcon,
        "rows of a well, YES or NO to the rates of its groups, guide rate, its phase, a factor of it"},
    Row{"SKIPREST", readSkiprest,
        "the schedule is that of the whole run, not of what is behind its `RESTART`"},
    Row{"NOSIM", readNosim, "the deck is read and checked, nothing is run"},
    Row{"TSTEP", readTstep, "step lengths, days"},
    Row{"DATES", readDates, "report dates: day, month, year"},
    Row{"WNEXT", readWnext, "time of the next well change, days"},
    Row{"SIMEND", readSimend, "end of the run, days"},
};
/// What a schedule of other times does not take over; WELSPEC is known to this program alone.
constexpr std::array<std::string_view, 8> NotKept = {"TSTEP",   "DATES",    "WNEXT", "SIMEND",
                                                     "WELSPEC", "SKIPREST", "NOSIM", "INCLUDE"};
constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at SCHEDULE section",
                             "File I/O Error, in SCHEDULE Section",
                             "INCLUDE FILE FINISHED, SCHEDULE SECTION"};

}  // namespace

void readScheduleSection(SectionReader& reader, ScheduleRecords& records) {
    openScheduleStep(records.schedule);
    KeptSource kept{NotKept, {}};
    reader.kept = &kept;
    dispatchSection<ScheduleRecords>(reader, records, Keywords, Texts);
    reader.kept = nullptr;
    lineToBoth(consoleOf(reader), "-> Finished Reading SCHEDULE. Move to Next Section");
}

}  // namespace kvr
