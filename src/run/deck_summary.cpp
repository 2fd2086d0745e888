#include "run/deck_summary.hpp"

#include "report/component_balance.hpp"
#include "report/material_balance.hpp"
#include "report/run_vectors.hpp"
#include "run/version.hpp"

#include <algorithm>
#include <omp.h>

namespace kvr {

namespace {

void row(const Simulation& s, std::string_view label, const std::string& text) {
    tell(s.console, fmt::format("{:<10}{}", label, text));
}

std::string fluidsText(const Simulation& s) {
    if (s.options.componentCount > 0)
        return fmt::format("{} components{}", s.options.componentCount, s.options.hasWater ? ", water" : "");
    std::string text;
    const auto add = [&text](std::string_view name) {
        text += (text.empty() ? "" : ", ") + std::string(name);
    };
    if (s.options.hasOil) add(s.options.hasGas && s.fluids.MaxRs > 0.0 ? "live oil" : "dead oil");
    if (s.options.hasWater) add("water");
    if (s.options.hasGas) add("gas");
    return text;
}

std::string gridText(const Simulation& s) {
    const GridModel& grid = s.grid;
    const auto cells = grid.Active.cells();
    const auto active = std::count_if(cells.begin(), cells.end(), [](auto value) { return value != 0; });
    return fmt::format("{} x {} x {} = {} cells, {} active, {}{}", grid.NX, grid.NY, grid.NZ, grid.NCELLS,
                       active, grid.blockInput ? "blocks" : "corner points",
                       grid.dual.isSet ? ", upper half matrix of the fractures in the lower half" : "");
}

std::string methodText(const Simulation& s) {
    const std::string method = s.options.method == "streamline" ? "streamlines"
                               : s.options.method == "FIM"      ? "fully implicit"
                                                                : s.options.method;
    return fmt::format("{}, {} thread{}", method, omp_get_max_threads(),
                       omp_get_max_threads() == 1 ? "" : "s");
}

std::string startText(const RunOptions& options) {
    return fmt::format("{:04}-{:02}-{:02}", options.startYear, options.startMonth, options.startDay);
}

std::string scheduleText(const Simulation& s) {
    return fmt::format("{} days from {}, {} reports, {} changes of wells", number(s.schedule.endTime),
                       startText(s.options), s.schedule.reportEnd.size(),
                       s.schedule.wellEventTime.empty() ? 0 : s.schedule.wellEventTime.size() - 1);
}

std::string wellsText(const Simulation& s) {
    const auto counted = [](std::size_t all, long injectors) {
        return fmt::format("{} producing, {} injecting", static_cast<long>(all) - injectors, injectors);
    };
    if (s.schedule.steps.empty()) {  // of a run that is only traced
        const std::vector<Well>& wells = s.wells.wells;
        if (wells.empty()) return "none";
        return counted(wells.size(), std::count_if(wells.begin(), wells.end(),
                                                   [](const Well& w) { return isInjector(w); }));
    }
    const SharedElements<ScheduleWell>& wells = s.schedule.steps.back().wells;
    return counted(wells.size(),
                   std::count_if(wells.begin(), wells.end(), [](const auto& w) { return w.isInjector; }));
}

std::string inPlaceText(Simulation& s) {
    InPlaceSums sums = sumInPlace(s.grid, s.state, s.options.hasGas);
    if (s.options.componentCount > 0) {
        sumComponents(s);
        takeComponentSums(s, sums);
    }
    const auto amount = [&](double reported, Quantity quantity) {
        const VectorUnit unit = deckUnit(s.units, quantity);
        return fmt::format("{} {}", number(reported * unit.factor, 6), unit.word);
    };
    std::string text = "oil " + amount(toBarrels(s.units, sums.oil), Quantity::LiquidTotal) + ", water " +
                       amount(toBarrels(s.units, sums.water), Quantity::LiquidTotal);
    if (s.options.hasGas)
        text += ", gas " + amount(toMscf(s.units, sums.freeGas + sums.dissolvedGas), Quantity::GasTotal);
    return text;
}

}  // namespace

void tellDeckSummary(Simulation& s) {
    if (!isNamed(s.command) && !s.command.check) return;
    tell(s.console, fmt::format("KVR {}   {}", Version,
                                s.options.deckFile.empty() ? s.options.headerName : s.options.deckFile));
    row(s, "Grid", gridText(s));
    row(s, "Fluids", fluidsText(s));
    row(s, "Units", s.units.deck == DeckUnits::Metric ? "METRIC" : "FIELD");
    row(s, "In place", inPlaceText(s));
    row(s, "Wells", wellsText(s));
    row(s, "Schedule", scheduleText(s));
    row(s, "Method", methodText(s));
    if (s.command.check) return;
    row(s, "Results", outputPath(s.outputs, "KVR_*"));
    const int warnings = warningCount(s.messages);
    if (warnings > 0) row(s, "Warnings", fmt::format("{} so far, listed behind the run", warnings));
}

}  // namespace kvr
