#include "eclipse/schedule_files.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "base/written_files.hpp"
#include "eclipse/deck_text.hpp"
#include "eclipse/file_names.hpp"
#include "run/records/output_table.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

namespace {

/// A control of producers: its word in the deck, that of the wells in force, and its target; null: it has
/// none. The targets stand in this order in WCONPROD.
struct ProducerControl {
    std::string_view word;
    std::string_view control;
    double Well::*target;
    bool ofGas;
};
constexpr std::array<ProducerControl, 6> ProducerControls = {{{"ORAT", "orat", &Well::targetOil, false},
                                                              {"WRAT", "wrat", &Well::targetWater, false},
                                                              {"GRAT", "grat", &Well::targetGas, true},
                                                              {"LRAT", "lrat", &Well::targetLiquid, false},
                                                              {"RESV", "resv", &Well::targetResv, false},
                                                              {"BHP", "bhp", nullptr, false}}};
struct InjectedFluid {
    char letter;
    std::string_view word;
    int response;
};
constexpr std::array<InjectedFluid, 3> Fluids = {
    {{'W', "WATER", response::WWIR}, {'G', "GAS", response::WGIR}, {'O', "OIL", response::WOIR}}};

/// The words that end a run whose schedule cannot be written.
struct FailureWords {
    std::string_view first, second, third;
};
constexpr FailureWords HistoryOpen{"ERROR: SMSPEC file is not given. Cannot Check .SXXXX file.",
                                   "       File I/O Error, in Summary file", ""};
constexpr FailureWords HistoryWrite{"ERROR: Fatal Error during module Write_ECLSchedule_forHM",
                                    "ERROR: Fatal Error during module Write_ECLSchedule_forHM.",
                                    "       Extract of History-Calculation faild..."};
constexpr FailureWords StepWrite{"ERROR: Fatal Error during module Write_ECLSchedule_forOP",
                                 "ERROR: Fatal Error during module Write_ECLSchedule_forOP.",
                                 "       Writing of Optimization schedule faild..."};

[[noreturn]] void stopWith(const Console& console, const FailureWords& words, const std::string& path) {
    for (const std::string_view line : {words.first, words.second, words.third})
        if (!line.empty()) lineToBoth(console, line);
    lineToBoth(console, path);
    hardStop(console);
}

std::FILE* openOrStop(const Console& console, const std::string& path, const FailureWords& words) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr) stopWith(console, words, path);
    return file;
}

void closeWritten(const Console& console, std::FILE* file, const std::string& path,
                  const FailureWords& words) {
    const bool broken = std::ferror(file) != 0;
    if (std::fclose(file) != 0 || broken) stopWith(console, words, path);
}

const InjectedFluid& fluidOf(std::string_view text) {
    const std::string letters = toUpper(trim(text).substr(0, 1));
    for (const InjectedFluid& fluid : Fluids)
        if (!letters.empty() && letters.front() == fluid.letter) return fluid;
    return Fluids.front();
}

bool isGas(const InjectedFluid& fluid) {
    return fluid.letter == 'G';
}

double rateFactor(const UnitSystem& units, const InjectedFluid& fluid) {
    return isGas(fluid) ? units.gasRate : units.liquidRate;
}

// --- history ---------------------------------------------------------------------------------------------

/// What turns numbers of the response into numbers of the deck.
struct ResponseFactors {
    double liquid = 1.0, gas = 1.0, pressure = 1.0;
};

ResponseFactors responseFactors(const UnitSystem& deck, const SummaryResponse& response) {
    if (response.units == ResponseUnits::Unknown) return {};
    const UnitSystem file = response.units == ResponseUnits::Metric ? metricUnits() : fieldUnits();
    const double volume = file.VolumeFactor / deck.VolumeFactor;
    return {file.liquidRate / deck.liquidRate * volume, file.gasRate / deck.gasRate * volume,
            file.pressure / deck.pressure};
}

/// The response of one well at one step.
struct WellAtStep {
    const SummaryResponse& response;
    int slot = 0;  // 0: the response does not have the well
    ResponsePlace place;

    [[nodiscard]] double value(int id, double otherwise) const {
        return slot == 0 ? otherwise : responseAt(response, id, slot, place).value_or(otherwise);
    }
};

WellAtStep wellAt(const SummaryResponse& response, const std::string& name, const ResponsePlace& place) {
    const auto found = std::find(response.wellNames.begin(), response.wellNames.end(), name);
    const bool known = found != response.wellNames.end();
    return {response, known ? static_cast<int>(found - response.wellNames.begin()) + 1 : 0, place};
}

std::string_view statusOf(const ScheduleWell& well) {
    const std::string letters = toUpper(trim(well.status).substr(0, 2));
    return letters == "SH" ? "SHUT" : letters == "ST" ? "STOP" : "OPEN";
}

/// The word of a control of the deck, in full; ORAT for one that a history cannot hold.
std::string_view controlWord(std::string_view control) {
    const std::string letters = toUpper(trim(control).substr(0, 2));
    for (const ProducerControl& row : ProducerControls)
        if (letters == row.word.substr(0, 2)) return row.word;
    return ProducerControls.front().word;
}

/// Gas is held at the pressure of the run, which its rate follows; liquids at their rate.
bool heldAtPressure(const ScheduleWell& well, const WellAtStep& at) {
    return well.isInjector && isGas(fluidOf(well.injType)) && at.value(response::WBHP, 0.0) > 0.0;
}

std::string injectorRow(const UnitSystem& units, const ResponseFactors& factors, const ScheduleWell& well,
                        const WellAtStep& at) {
    const InjectedFluid& fluid = fluidOf(well.injType);
    const double factor = isGas(fluid) ? factors.gas : factors.liquid;
    const double given = well.injRate / rateFactor(units, fluid) / factor;
    const double rate = at.value(fluid.response, given) * factor;
    const double bhp = at.value(response::WBHP, 0.0) * factors.pressure;
    return fmt::format("{} {} {} {} {} 6* {}", inQuotes(well.name), fluid.word, statusOf(well),
                       deckNumber(rate), bhp > 0.0 ? deckNumber(bhp) : "1*",
                       heldAtPressure(well, at) ? "BHP" : "RATE");
}

std::string producerRow(const ResponseFactors& factors, const ScheduleWell& well, const WellAtStep& at) {
    const double bhp = at.value(response::WBHP, 0.0) * factors.pressure;
    return fmt::format("{} OPEN {} {} {} {} 3* {}", inQuotes(well.name), controlWord(well.control),
                       deckNumber(at.value(response::WOPR, 0.0) * factors.liquid),
                       deckNumber(at.value(response::WWPR, 0.0) * factors.liquid),
                       deckNumber(at.value(response::WGPR, 0.0) * factors.gas),
                       bhp > 0.0 ? deckNumber(bhp) : "1*");
}

/// The part of the schedule in force just before `time`.
const ScheduleStep* entryBefore(const Schedule& schedule, double time) {
    const ScheduleStep* entry = nullptr;
    for (std::size_t n = 0; n < schedule.steps.size(); ++n) {
        const bool started = n < schedule.wellEventTime.size() && schedule.wellEventTime[n] < time;
        if (n == 0 || started) entry = &schedule.steps[n];
    }
    return entry;
}

bool hasRates(const WellAtStep& at) {
    const std::array<int, 3> rates = {response::WOPR, response::WWPR, response::WGPR};
    return at.slot > 0 && std::any_of(rates.begin(), rates.end(), [&at](int id) {
               return responseOf(at.response, id, at.slot) != nullptr;
           });
}

void tellWithoutRates(const Console& console, const ScheduleWell& well, const ResponsePlace& place) {
    if (place.report > 0 || place.between != nullptr) return;  // told of the first report
    warn(console, "WARNING :: THE SUMMARY HAS NO RATES OF PRODUCER {}, WHICH GETS NO HISTORY", well.name);
}

void putHistoryOf(const Console& console, const UnitSystem& units, const ResponseFactors& factors,
                  const ScheduleStep& entry, const SummaryResponse& response, const ResponsePlace& place,
                  std::FILE* file) {
    std::vector<std::string> injectors, producers;
    for (const ScheduleWell& well : entry.wells) {
        if (!well.hasControl) continue;
        const WellAtStep at = wellAt(response, well.name, place);
        if (well.isInjector)
            injectors.push_back(injectorRow(units, factors, well, at));
        else if (hasRates(at))
            producers.push_back(producerRow(factors, well, at));
        else
            tellWithoutRates(console, well, place);
    }
    putKeyword("WCONINJH", injectors, file);
    putKeyword("WCONHIST", producers, file);
}

/// Whether the rate of a well follows its pressure: its history then needs every step that was taken.
bool anyHeldAtPressure(const ScheduleStep* entry, const SummaryResponse& response,
                       const ResponsePlace& place) {
    return entry != nullptr &&
           std::any_of(entry->wells.begin(), entry->wells.end(), [&](const ScheduleWell& well) {
               return well.hasControl && heldAtPressure(well, wellAt(response, well.name, place));
           });
}

double timeOf(const SummaryResponse& response, const ResponsePlace& place) {
    return place.between == nullptr ? response.time[place.report] : place.between->time;
}

/// The steps of a history: the reports, and those on the way to a report where they are needed.
std::vector<ResponsePlace> historySteps(const Schedule& schedule, const SummaryResponse& response) {
    std::vector<ResponsePlace> steps;
    auto between = response.between.begin();
    for (std::size_t report = 0; report < response.time.size(); ++report) {
        for (; between != response.between.end() && between->report == report; ++between) {
            const ResponsePlace place{report, &*between};
            if (!(between->time < response.time[report])) continue;
            if (anyHeldAtPressure(entryBefore(schedule, between->time), response, place))
                steps.push_back(place);
        }
        steps.push_back({report, nullptr});
    }
    return steps;
}

// --- one step --------------------------------------------------------------------------------------------

std::string integerOrDefault(int value) {
    return value > 0 ? fmt::format("{}", value) : "1*";
}

std::vector<std::string> definitionRows(const UnitSystem& units, const ScheduleStep& entry) {
    std::vector<std::string> rows;
    for (const ScheduleWell& well : entry.wells)
        rows.push_back(fmt::format("{} {} {} {} {} {}", inQuotes(well.name),
                                   inQuotes(well.group.empty() ? "G" : well.group), well.headI, well.headJ,
                                   well.refDepth >= 0.0 ? deckNumber(well.refDepth / units.length) : "1*",
                                   well.preferredPhase.empty() ? "OIL" : well.preferredPhase));
    return rows;
}

std::vector<std::string> connectionRows(const UnitSystem& units, const ScheduleStep& entry) {
    std::vector<std::string> rows;
    const auto given = [](double value, double factor) {
        return value >= 0.0 ? deckNumber(value / factor) : std::string("1*");
    };
    for (const ScheduleCompletion& row : entry.completions)
        rows.push_back(fmt::format("{} {} {} {} {} {} {} {} {} {} {} 1* {}", inQuotes(row.wellName),
                                   integerOrDefault(row.i), integerOrDefault(row.j), row.k1, row.k2,
                                   row.status, integerOrDefault(row.satTable),
                                   given(row.transFactor, units.connectionFactor),
                                   row.diameter > 0.0 ? deckNumber(row.diameter / units.length) : "1*",
                                   given(static_cast<double>(row.kh), units.length),
                                   deckNumber(static_cast<double>(row.skin)), row.direction));
    return rows;
}

std::vector<std::string> multiplierRows(const ScheduleStep& entry) {
    std::vector<std::string> rows;
    for (const ScheduleCompletion& row : entry.completions)
        for (int k = std::min(row.k1, row.k2); row.multiplier != 1.0 && k <= std::max(row.k1, row.k2); ++k)
            rows.push_back(fmt::format("{} {} {} {} {}", inQuotes(row.wellName), deckNumber(row.multiplier),
                                       integerOrDefault(row.i), integerOrDefault(row.j), k));
    return rows;
}

std::vector<std::string> efficiencyRows(const WellRecord& wells) {
    std::vector<std::string> rows;
    for (const Well& well : wells.wells)
        if (well.efficiency != 1.0)
            rows.push_back(fmt::format("{} {}", inQuotes(well.WellName), deckNumber(well.efficiency)));
    return rows;
}

/// A rate as the deck would give it, that of the time that the well is on, or a default for none.
std::string deckRate(const Well& well, double target, double factor) {
    if (target == 0.0 || well.efficiency <= 0.0) return "1*";
    return deckNumber(std::abs(target) / well.efficiency / factor);
}

std::string openOrShut(const Well& well) {
    return well.shut ? "SHUT" : "OPEN";
}

/// The control that was asked for; that in force where none is known.
const std::string& askedControl(const Well& well) {
    return well.givenControl.empty() ? well.deckControl : well.givenControl;
}

std::vector<std::string> injectorControls(const UnitSystem& units, const WellRecord& wells) {
    std::vector<std::string> rows;
    for (const Well& well : wells.wells) {
        if (!isInjector(well)) continue;
        const InjectedFluid& fluid = fluidOf(well.InjectFluid);
        const double rate = well.deckControl == "rate" ? well.TargetRate : 0.0;
        rows.push_back(fmt::format("{} {} {} {} {} {} {}", inQuotes(well.WellName), fluid.word,
                                   openOrShut(well), askedControl(well) == "bhp" ? "BHP" : "RATE",
                                   deckRate(well, rate, rateFactor(units, fluid)),
                                   deckRate(well, well.holdsLimits ? well.targetResv : 0.0, units.liquidRate),
                                   deckNumber(well.BhpLimit / units.pressure)));
    }
    return rows;
}

const ProducerControl* controlOf(const std::string& word) {
    const auto* const found =
        std::find_if(ProducerControls.begin(), ProducerControls.end(),
                     [&word](const ProducerControl& row) { return row.control == word; });
    return found == ProducerControls.end() ? nullptr : found;
}

/// What stands in the column of a rate: the target in force, and those of the other rates where they are
/// limits. A limit of water under another control has a word of its own.
double columnTarget(const Well& well, const ProducerControl& column) {
    const std::string_view inForce = well.deckControl == "wlim" ? "wrat" : std::string_view(well.deckControl);
    if (column.control == inForce) return well.TargetRate;
    return well.holdsLimits || column.control == well.givenControl ? well.*column.target : 0.0;
}

std::vector<std::string> producerControls(const Console& console, const UnitSystem& units,
                                          const WellRecord& wells) {
    std::vector<std::string> rows;
    for (const Well& well : wells.wells) {
        if (isInjector(well) || (well.shut && askedControl(well).empty())) continue;
        const ProducerControl* const control = controlOf(askedControl(well));
        if (control == nullptr) {
            tell(console, " Control Mode is not surpported for producer");
            tell(console, fmt::format("Well {}: control '{}'", well.WellName, askedControl(well)));
            continue;
        }
        std::string row = fmt::format("{} {} {}", inQuotes(well.WellName), openOrShut(well), control->word);
        for (const ProducerControl& column : ProducerControls) {
            if (column.target == nullptr) continue;
            const double factor = column.ofGas ? units.gasRate : units.liquidRate;
            row += fmt::format(" {}", deckRate(well, columnTarget(well, column), factor));
        }
        rows.push_back(fmt::format("{} {}", row, deckNumber(well.BhpLimit / units.pressure)));
    }
    return rows;
}

}  // namespace

void Write_ECLSchedule_forHM(const Console& console, const RunOptions& options, const UnitSystem& units,
                             const Schedule& schedule, const SummaryResponse& response) {
    const std::string path =
        options.workingFolder + outputFileName(options.outputPrefix, outputName(OutputFile::HistorySchedule));
    std::FILE* file = openOrStop(console, path, HistoryOpen);
    const ResponseFactors factors = responseFactors(units, response);
    double before = 0.0;
    for (const ResponsePlace& place : historySteps(schedule, response)) {
        const double time = timeOf(response, place);
        if (!(time > before)) continue;  // a report at time zero closes no step
        putTimeBanner(time, file);
        if (const ScheduleStep* entry = entryBefore(schedule, time); entry != nullptr)
            putHistoryOf(console, units, factors, *entry, response, place, file);
        putRecord("TSTEP", deckNumber(time - before), file);
        before = time;
    }
    closeWritten(console, file, path, HistoryWrite);
    log(console, " File Created -> {}", path);
}

ControlRows controlRows(const Console& console, const UnitSystem& units, const WellRecord& wells) {
    return {injectorControls(units, wells), producerControls(console, units, wells), efficiencyRows(wells)};
}

void putDefinitions(const UnitSystem& units, const ScheduleStep& entry, std::FILE* file) {
    if (std::isfinite(entry.mostRsRise))
        putRecord("DRSDT", deckNumber(entry.mostRsRise / units.gasRatio), file);
    putKeyword("WELSPECS", definitionRows(units, entry), file);
    putKeyword("COMPDAT", connectionRows(units, entry), file);
    putKeyword("WPIMULT", multiplierRows(entry), file);
}

std::string stepScheduleName(int step) {
    return fmt::format("SCHEDULE_STP{:04d}.DATA", step);
}

void Write_ECLSchedule_forOP(const Console& console, const RunOptions& options, const UnitSystem& units,
                             const ScheduleStep& entry, const WellRecord& wells, double time, int step,
                             double dt) {
    const std::string path = outsideFolder(options) + stepScheduleName(step);
    std::FILE* file = openOrStop(console, path, StepWrite);
    log(console, " -> File Generated for Schedule of Optimization    :: {}", path);
    putTimeBanner(time, file);
    putRecord("RPTRST", "BASIC=2", file);
    putDefinitions(units, entry, file);
    const ControlRows rows = controlRows(console, units, wells);
    putKeyword("WCONINJE", rows.injectors, file);
    putKeyword("WCONPROD", rows.producers, file);
    putKeyword("WEFAC", rows.efficiencies, file);
    putRecord("TSTEP", deckNumber(dt), file);
    closeWritten(console, file, path, StepWrite);
}

}  // namespace kvr
