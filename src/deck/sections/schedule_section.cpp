#include "deck/sections/schedule_section.hpp"

#include "deck/reading/keyword_table.hpp"
#include "deck/sections/schedule_streams.hpp"
#include "deck/sections/schedule_times.hpp"
#include "deck/sections/schedule_wells.hpp"

#include <array>

namespace kvr {

namespace {

using Row = KeywordRow<ScheduleRecords>;
constexpr std::array Keywords = {
    Row{"RPTSCHED", neglect<ScheduleRecords>, "neglected"},
    Row{"RPTRST", neglectRestartReports<ScheduleRecords>, "neglected"},
    Row{"WELSPEC", readWelspec, "a well in one row: name, I, J, K1, K2, diameter, skin, type, rate, control"},
    Row{"WELSPECS", readWelspecs, "name, group, I, J, reference depth, phase of a well"},
    Row{"COMPDAT", readCompdat, "completions of a well"},
    Row{"WCONPROD", readWconprod, "control and targets of a producer"},
    Row{"WCONINJE", readWconinje, "control and targets of an injector"},
    Row{"WCONHIST", readWconhist, "observed rates of a producer"},
    Row{"WCONINJH", readWconinjh, "observed rate of an injector"},
    Row{"WTRACER", readWtracer, "tracer concentration of a well"},
    Row{"WELLSTRE", readWellstre, "composition of an injection stream"},
    Row{"WINJGAS", readWinjgas, "injection stream of a well"},
    Row{"TSTEP", readTstep, "step lengths, days"},
    Row{"DATES", readDates, "report dates: day, month, year"},
    Row{"WNEXT", readWnext, "time of the next well change, days"},
    Row{"SIMEND", readSimend, "end of the run, days"},
};
constexpr IncludeTexts Texts{"ERROR: INCLUDE File Open Error at SCHEDULE section",
                             "File I/O Error, in SCHEDULE Section",
                             "INCLUDE FILE FINISHED, SCHEDULE SECTION"};

}  // namespace

void readScheduleSection(SectionReader& reader, ScheduleRecords& records) {
    openScheduleStep(records.schedule);
    dispatchSection<ScheduleRecords>(reader, records, Keywords, Texts);
    lineToBoth(consoleOf(reader), "-> Finished Reading SCHEDULE. Move to Next Section");
}

}  // namespace kvr
