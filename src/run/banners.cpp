#include "run/banners.hpp"

#include <string>

namespace kvr {

namespace {

constexpr std::size_t BannerWidth = 72;
constexpr std::size_t WellBannerWidth = 40;
constexpr std::size_t EndStars = 12;

}  // namespace

void printProgramBanner(const Console& console) {
    const std::string dashes(BannerWidth, '-');
    lineToScreen(console, dashes);
    lineToScreen(console, "KVR SIMULATOR FOR BLACKOIL/COMPOSITIONAL SYSTEM");
    lineToScreen(console, dashes);
}

void printStepBanner(const Console& console, const Schedule& schedule, const RunClock& clock) {
    const std::string stars(BannerWidth, '*');
    const double reportEnd = tableTime(schedule.reportEnd, clock.reportIndex);
    double end = clock.time + clock.dt;
    if (sameTime(end, reportEnd)) end = reportEnd;  // as the step's end will be snapped
    lineToBoth(console, stars);
    both(console, "Step {} Time {} --> {} Stop Time: {}", clock.stepCount, number(clock.time), number(end),
         number(clock.endTime));
    if (end == reportEnd) {
        const double reportStart =
            clock.reportIndex > 1 ? tableTime(schedule.reportEnd, clock.reportIndex - 1) : 0.0;
        both(console, "Report {} Time {} --> {}", clock.reportIndex, number(reportStart), number(reportEnd));
    }
    lineToBoth(console, stars);
    lineToBoth(console, "");
    log(console, "Calender Time : year {} Mon : {} Day : {}", clock.year, clock.month, clock.day);
}

void printWellBanner(const Console& console) {
    const std::string dashes(WellBannerWidth, '-');
    lineToBoth(console, "");
    lineToBoth(console, dashes);
    lineToBoth(console, "-         UPDATE WELL SCHEDULE         -");
    lineToBoth(console, dashes);
    lineToBoth(console, "");
}

void printStageTimes(const Console& console, const StageTimes& times) {
    struct Row {
        const char* name;
        const StageTime& time;
    };
    const Row rows[] = {{"Deck reading", times.deck},        {"Initialisation", times.initialisation},
                        {"Pressure", times.pressure},        {"Streamlines", times.lines},
                        {"Gravity and Pc", times.splitting}, {"Reports", times.reports}};
    lineToBoth(console, "");
    lineToBoth(console, "Stage             Elapsed SEC     CPU SEC");
    for (const Row& row : rows)
        both(console, "{:<16}{:>13.3f}{:>12.3f}", row.name, row.time.wall, row.time.cpu);
}

void printLineNewton(const Console& console, const NewtonCounts& counts) {
    if (counts.steps == 0) return;
    lineToBoth(console, "");
    lineToBoth(console, "Implicit lines            Steps  Iterations    Halvings");
    both(console, "{:<19}{:>12}{:>12}{:>12}", "Newton", counts.steps, counts.iterations, counts.halvings);
}

void printImplicitCounts(const Console& console, const ImplicitCounts& counts) {
    struct Row {
        const char* name;
        long count;
    };
    const Row rows[] = {{"Implicit steps", counts.steps},
                        {"Step cuts", counts.cuts},
                        {"Newton iterations", counts.newtonIterations},
                        {"Linear iterations", counts.linearIterations}};
    for (const Row& row : rows) both(console, "{:<18}{:>11}", row.name, row.count);
}

void printEnd(const Console& console, float cpuSeconds) {
    const std::string stars(EndStars, '*');
    lineToLog(console, "");
    both(console, "{} END SIMULATION {}", stars, stars);
    both(console, "REQUIRED CPU TIME IS {:.3f} SEC", cpuSeconds);
}

}  // namespace kvr
