#include "run/closing_summary.hpp"

#include "base/constants.hpp"
#include "report/co2_stores.hpp"
#include "report/component_balance.hpp"
#include "report/run_vectors.hpp"
#include "report/text_table.hpp"
#include "run/base_comparison.hpp"
#include "run/last_wells.hpp"
#include "run/report_rows.hpp"
#include "run/step_control.hpp"
#include "run/step_measure.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double TolerableBalanceError = 1.0;  // per cent
constexpr double CoarseLag = 0.1;              // of mobilities in a fully implicit step, see step_control.hpp
constexpr double CoarseShare = 0.1;            // of the days of a run
constexpr double LeastShown = 0.005;           // of an amount; less is rounding
constexpr double LeastShownError = 5e-5;       // per cent
constexpr std::size_t RuleWidth = 72;
constexpr std::size_t MostNamed = 12;  // wells and keywords of one line; the log of the deck has all

bool flowsNow(const Well& well) {
    return well.WellQo != 0.0 || well.WellQw != 0.0 || well.WellQg != 0.0;
}

void row(const Simulation& s, std::string_view label, const std::string& text) {
    tell(s.console, fmt::format("{:<18}: {}", label, text));
}

/// "A, B, C and 5 more".
std::string listText(const std::vector<std::string>& items) {
    std::string text;
    for (std::size_t n = 0; n < std::min(items.size(), MostNamed); ++n)
        text += (n == 0 ? "" : ", ") + items[n];
    if (items.size() > MostNamed) text += fmt::format(" and {} more", items.size() - MostNamed);
    return text;
}

std::string amount(const Simulation& s, double reported, Quantity quantity) {
    const VectorUnit unit = deckUnit(s.units, quantity);
    const double value = reported * unit.factor;
    return fmt::format("{} {}", number(std::abs(value) < LeastShown ? 0.0 : value, 6), unit.word);
}

void tellPhase(const Simulation& s, std::string_view name, double produced, double injected, double error,
               Quantity quantity) {
    const double percent = Percent * error;
    row(s, name,
        fmt::format("produced {}, injected {}, balance error {:.4f} %{}", amount(s, produced, quantity),
                    amount(s, injected, quantity), std::abs(percent) < LeastShownError ? 0.0 : percent,
                    std::abs(percent) > TolerableBalanceError ? "  WARNING" : ""));
}

void tellTotals(const Simulation& s) {
    if (s.balance.rows.empty()) return;
    const StepFigures figures = stepFigures(s);
    const ReportedFlow& out = figures.field.produced;
    const ReportedFlow& in = figures.field.injected;
    const PhaseAmounts error = judgedErrors(s.balance);
    tellPhase(s, "Oil", out.oil, in.oil, error.oil, Quantity::LiquidTotal);
    tellPhase(s, "Water", out.water, in.water, error.water, Quantity::LiquidTotal);
    if (s.options.hasGas) tellPhase(s, "Gas", out.gas, in.gas, error.gas, Quantity::GasTotal);
}

/// Where the CO2 is at the end.
void tellStores(const Simulation& s) {
    if (!s.options.co2Model || !s.fluids.hasGas || s.balance.rows.empty()) return;
    const Co2Stores stores = sumStores(s);
    const double total = totalOf(stores);
    const auto share = [total](double part) { return total > 0.0 ? Percent * part / total : 0.0; };
    row(s, "CO2 stores",
        fmt::format("{}: mobile {:.2f} %, trapped {:.2f} %, dissolved {:.2f} %, solid {:.2f} %",
                    amount(s, toMscf(s.units, total), Quantity::GasTotal), share(stores.mobile),
                    share(stores.trapped), share(stores.dissolved), share(stores.solid)));
}

/// Components by moles: the amounts at the surface follow from them.
void tellComponents(const Simulation& s) {
    const ComponentRun& run = s.components;
    for (int i = 0; i < run.stage.set.count; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const double percent = Percent * componentError(run, i);
        row(s, s.fluids.CNAMES[n],
            fmt::format("produced {} lb-mole, injected {} lb-mole, balance error {:.4f} %{}",
                        number(run.balance.produced[n], 6), number(run.balance.injected[n], 6),
                        std::abs(percent) < LeastShownError ? 0.0 : percent,
                        std::abs(percent) > TolerableBalanceError ? "  WARNING" : ""));
    }
}

std::string limitText(const WellCourse& well, const std::string& name) {
    std::string text = fmt::format("{} from {}", name, well.limitDate);
    if (!well.atLimit) text += fmt::format(" until {}", well.releaseDate);
    return text;
}

void tellWells(const Simulation& s) {
    const std::vector<std::string> names = runWellNames(s.schedule, s.wells);
    std::vector<std::string> dry, limited, closed;
    for (std::size_t w = 0; w < names.size(); ++w) {
        const WellCourse well = w < s.course.wells.size() ? s.course.wells[w] : WellCourse{};
        if (!well.flowed) dry.push_back(names[w]);
        if (!well.closedDate.empty()) closed.push_back(fmt::format("{} on {}", names[w], well.closedDate));
        if (!well.limitDate.empty()) limited.push_back(limitText(well, names[w]));
    }
    if (!dry.empty()) row(s, "Never flowed", listText(dry));
    if (!closed.empty()) row(s, "Closed by WECON", listText(closed));
    if (!limited.empty()) row(s, "At their BHP limit", listText(limited));
}

std::string shortPlace(const Simulation& s, const DeckPlace& place) {
    if (place.lineNumber < 1) return "";
    const bool main = s.options.deckFile.empty() || place.fileName == s.options.deckFile;
    return main ? fmt::format("line {}", place.lineNumber)
                : fmt::format("{} line {}", place.fileName, place.lineNumber);
}

void tellUnused(const Simulation& s, KeywordEffect effect, std::string_view label) {
    std::vector<std::string> items;
    for (const UnusedKeyword& keyword : s.messages.unused)
        if (keyword.effect == effect)
            items.push_back(
                fmt::format("{} ({}{}{})", keyword.name, shortPlace(s, keyword.place),
                            keyword.count > 1 ? fmt::format(", {} times", keyword.count) : "",
                            keyword.meant.empty() ? "" : fmt::format(", is {} meant?", keyword.meant)));
    if (!items.empty()) row(s, label, listText(items));
}

std::string timeText(const Simulation& s) {
    return fmt::format("{} of {} days, {}, {} steps, {} cuts", number(s.clock.time), number(s.clock.endTime),
                       dateText(s.clock), s.clock.stepCount, cutsSoFar(s));
}

/// The first producer, as columns call it; empty where there is none.
std::string exampleWell(const Simulation& s) {
    const auto& wells = s.wells.wells;
    const auto producer =
        std::find_if(wells.begin(), wells.end(), [](const Well& well) { return !isInjector(well); });
    return producer == wells.end() ? "" : withoutBlanks(producer->WellName);
}

/// A command that shows a curve as it stands, from the present folder.
void tellCurve(const Simulation& s, const std::string& summary, const std::string& well) {
    tell(s.console, fmt::format("  a curve: gnuplot -p -e \"set datafile separator ','; plot '{}' using "
                                "'TIME':'{}' with lines\"",
                                s.outputs.folder + summary, well.empty() ? "FOPR" : "WWCT:" + well));
}

void tellFiles(const Simulation& s) {
    const std::string summary = outputFileName(s.outputs.prefix, outputName(OutputFile::RunSummary));
    const std::string log = outputFileName(s.outputs.prefix, outputName(OutputFile::DebugLog));
    const std::string index = outputFileName(s.outputs.prefix, outputName(OutputFile::FilesIndex));
    const std::string folder = s.outputs.folder.empty() ? "the present folder" : s.outputs.folder;
    const std::string well = exampleWell(s);
    const std::string columns =
        well.empty() ? "" : fmt::format(", WOPR:{0}, WWCT:{0} (water cut), WBHP:{0} .. of a well", well);
    row(s, "Open first", fmt::format("in {}", folder));
    tell(s.console, fmt::format("  {}: the curves, a row per step; columns FOPR, FWCT, FPR .. of the field{}",
                                summary, columns));
    tellCurve(s, summary, well);
    tell(s.console, fmt::format("  {}: what each of the other files holds", index));
    tell(s.console, fmt::format("  {}: everything that the run said", log));
}

/// Counts the fully implicit step that has just been taken where it was long for what happened in it.
void noteCoarseStep(Simulation& s) {
    const double lag = lagOfImplicitStep(s);
    if (!(lag > CoarseLag)) return;
    s.course.coarseDays += s.clock.dt;
    if (lag <= s.course.worstLag) return;
    s.course.worstLag = lag;
    s.course.servingLength = implicitLength(lag, s.clock.dt);
}

}  // namespace

void noteCourse(Simulation& simulation) {
    RunCourse& course = simulation.course;
    course.stepsBegun = true;
    if (simulation.options.method == "FIM") noteCoarseStep(simulation);
    const std::vector<Well>& wells = simulation.wells.wells;
    if (course.wells.size() < wells.size()) course.wells.resize(wells.size());
    for (std::size_t w = 0; w < wells.size(); ++w) {
        WellCourse& well = course.wells[w];
        well.flowed = well.flowed || flowsNow(wells[w]);
        const bool limited = isAtLimit(wells[w]);
        if (limited && well.limitDate.empty()) well.limitDate = dateText(simulation.clock);
        if (!limited && well.atLimit) well.releaseDate = dateText(simulation.clock);
        well.atLimit = limited;
    }
}

void noteClosedWells(Simulation& simulation) {
    const std::vector<Well>& wells = simulation.wells.wells;
    for (std::size_t w = 0; w < std::min(wells.size(), simulation.course.wells.size()); ++w) {
        std::string& date = simulation.course.wells[w].closedDate;
        if (wells[w].closedByLimit && date.empty()) date = dateText(simulation.clock);
    }
}

void warnOfBalance(const Simulation& simulation) {
    const double error = largestBalanceError(simulation.balance);
    if (error > TolerableBalanceError)
        warn(simulation.console, "WARNING :: BALANCE ERROR OF {} % AT THE END OF THE RUN", number(error, 4));
}

void warnOfCoarseSteps(const Simulation& s) {
    const RunCourse& course = s.course;
    if (course.coarseDays <= CoarseShare * s.clock.time) return;
    warn(s.console,
         "WARNING :: LONG STEPS FOR THE FULLY IMPLICIT METHOD IN {} OF {} DAYS: MOBILITIES CHANGED BY "
         "UP TO {} %, RATES MAY BE OFF BY SOME PER CENT. MAXDT {} WOULD SERVE",
         number(course.coarseDays, 4), number(s.clock.time, 6), number(Percent * course.worstLag, 2),
         number(course.servingLength, 2));
}

void tellMessages(const Simulation& s) {
    row(s, "Warnings", fmt::format("{}", warningCount(s.messages)));
    for (const WarningKind& kind : s.messages.warnings) {
        const std::string place =
            kind.place.lineNumber > 0 ? " (" + placeText(kind.place, kind.keyword) + ")" : "";
        tell(s.console, fmt::format("  {} x {}{}", kind.count, kind.first, place));
    }
    tellUnused(s, KeywordEffect::Answer, "NOT USED");
    tellUnused(s, KeywordEffect::Output, "Not needed");
}

void tellClosingSummary(const Simulation& s, std::string_view ending) {
    const std::string rule(RuleWidth, '-');
    tellLastWells(s);
    tell(s.console, "");
    tell(s.console, rule);
    row(s, "Run", std::string(ending));
    row(s, "Time", timeText(s));
    tellTotals(s);
    tellStores(s);
    tellComponents(s);
    tellBaseComparison(s);
    tellWells(s);
    tellMessages(s);
    tellFiles(s);
    tell(s.console, rule);
}

}  // namespace kvr
