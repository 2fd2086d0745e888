#include "eclipse/summary_files.hpp"

#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "run/records/output_table.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr std::array<std::string_view, 9> BlankRestart = {};
constexpr std::string_view NoWell = ":+:+:+:+";  // in place of a name for what belongs to no well
constexpr auto VectorCount = static_cast<std::int32_t>(SummaryVectorCount);

struct ReportedRates {
    double oil = 0.0, water = 0.0, gas = 0.0;  // stb, stb, Mscf a day, positive
};

ReportedRates reported(const UnitSystem& units, double oil, double water, double gas) {
    return {toBarrels(units, std::abs(oil)), toBarrels(units, std::abs(water)), toMscf(units, std::abs(gas))};
}

void takeHistory(const UnitSystem& units, const ScheduleWell& well, SummaryFigures& figures) {
    const ReportedRates rates = reported(units, well.histOil, well.histWater, well.histGas);
    figures.historyOil = rates.oil;
    figures.historyWater = rates.water;
    figures.historyGas = rates.gas;
    figures.historyBhp = well.isInjector ? well.histInjBhp : well.histBhp;
}

void takePresent(const UnitSystem& units, const Well& well, SummaryFigures& figures) {
    const ReportedRates rates = reported(units, well.WellQo, well.WellQw, well.WellQg);
    figures.producer = well.WellKind == "prd";
    figures.oil = rates.oil;
    figures.water = rates.water;
    figures.gas = rates.gas;
    figures.bhp = well.Bhp;
}

/// A well's rates are means over time, and are told as those of the share of it in which it is on (WEFAC).
void showRatesWhileOn(double efficiency, SummaryFigures& figures) {
    for (double* rate : {&figures.oil, &figures.water, &figures.gas}) *rate /= efficiency;
}

void growTo(std::size_t count, std::vector<double>& sums) {
    if (sums.size() < count) sums.resize(count, 0.0);
}

void addToTotals(std::size_t well, double dt, SummaryFigures& figures, SummaryTotals& totals) {
    figures.oilTotal = totals.oil[well] += dt * figures.oil;
    figures.waterTotal = totals.water[well] += dt * figures.water;
    figures.historyOilTotal = totals.historyOil[well] += dt * figures.historyOil;
    figures.historyWaterTotal = totals.historyWater[well] += dt * figures.historyWater;
}

}  // namespace

void writeSummarySpec(const Console& console, const RunOptions& options, const GridModel& grid,
                      const std::vector<std::string>& wellNames, const std::vector<AskedVector>& asked) {
    if (!isOn(options, OutputSwitch::Eclipse) || wellNames.empty()) return;
    const auto& vectors = summaryVectors();
    const std::size_t wells = wellNames.size();
    const std::size_t fixed = vectors.size() * wells;
    const auto entries = static_cast<std::int32_t>(fixed + asked.size());
    // The first word is the number of vectors of one well, not of all of them.
    const std::array<std::int32_t, 6> dimensions = {VectorCount, grid.NX, grid.NY, grid.NZ, 0, 0};
    const std::array<std::int32_t, 3> start = {options.startDay, options.startMonth, options.startYear};
    RecordWriter writer;
    openOrStop(console, runFile(options, ".SMSPEC"), writer);
    writeWords(writer, "RESTART", BlankRestart);
    write_keyword(writer, "DIMENS", std::span<const std::int32_t>(dimensions), Cut::OneRecord);
    write_keyword<Text8>(writer, "KEYWORDS", entries, [&](std::size_t n) {
        return text8(n < fixed ? vectors[n / wells].mnemonic : asked[n - fixed].mnemonic);
    });
    write_keyword<Text8>(writer, "WGNAMES", entries, [&](std::size_t n) {
        if (n < fixed) return text8(wellNames[n % wells]);
        return text8(asked[n - fixed].well.empty() ? NoWell : asked[n - fixed].well);
    });
    write_keyword(writer, "STARTDAT", std::span<const std::int32_t>(start), Cut::OneRecord);
    write_keyword<std::int32_t>(writer, "NUMS", entries, [&](std::size_t n) { return n < fixed ? 1 : 0; });
    write_keyword<Text8>(writer, "UNITS", entries, [&](std::size_t n) {
        return text8(n < fixed ? vectors[n / wells].unit : asked[n - fixed].unit);
    });
    closeOrStop(console, writer);
    tellGenerated(console, writer.path);
}

std::vector<SummaryFigures> summaryFigures(const UnitSystem& units, const RunClock& clock,
                                           const ScheduleStep& entry, const WellRecord& wells,
                                           std::size_t wellCount, SummaryTotals& totals) {
    const double dt = std::abs(clock.time - totals.previousTime);
    totals.previousTime = clock.time;
    for (std::vector<double>* sums : {&totals.oil, &totals.water, &totals.historyOil, &totals.historyWater})
        growTo(wellCount, *sums);
    std::vector<SummaryFigures> all(wellCount);
    for (std::size_t w = 0; w < wellCount; ++w) {
        SummaryFigures& figures = all[w];
        figures.time = clock.time;
        if (w < entry.wells.size()) takeHistory(units, entry.wells[w], figures);
        if (w < wells.wells.size()) takePresent(units, wells.wells[w], figures);
        if (clock.reportIndex == 0) figures.historyBhp = figures.bhp;
        addToTotals(w, dt, figures, totals);
        if (w < wells.wells.size()) showRatesWhileOn(wells.wells[w].efficiency, figures);
    }
    return all;
}

std::vector<float> summaryValues(const std::vector<SummaryFigures>& figures,
                                 const std::vector<float>& asked) {
    std::vector<float> values;
    for (const SummaryVector& vector : summaryVectors())
        for (const SummaryFigures& well : figures) values.push_back(static_cast<float>(vector.value(well)));
    values.insert(values.end(), asked.begin(), asked.end());
    return values;
}

void writeSummaryStep(const Console& console, const RunOptions& options, const RunClock& clock,
                      const std::vector<SummaryFigures>& figures) {
    writeSummaryStep(console, options, clock, std::vector<std::vector<float>>{summaryValues(figures)});
}

void writeSummaryStep(const Console& console, const RunOptions& options, const RunClock& clock,
                      const std::vector<std::vector<float>>& steps) {
    if (!isOn(options, OutputSwitch::Eclipse)) return;
    RecordWriter writer;
    openOrStop(console, runFile(options, ".S", clock.reportIndex), writer);
    write_keyword<std::int32_t>(writer, "SEQHDR", 1, [](std::size_t) { return 0; });
    std::int32_t place = 0;
    for (const std::vector<float>& values : steps) {
        write_keyword<std::int32_t>(writer, "MINISTEP", 1, [&](std::size_t) { return place; });
        write_keyword(writer, "PARAMS", std::span<const float>(values));
        ++place;
    }
    closeOrStop(console, writer);
    tellGenerated(console, writer.path);
}

}  // namespace kvr
