#include "matching/sensitivities.hpp"

#include "base/index.hpp"
#include "base/messages.hpp"
#include "base/written_files.hpp"
#include "eclipse/sensitivity_files.hpp"
#include "report/block_zone.hpp"
#include "run/records/output_streams.hpp"

#include <algorithm>
#include <fmt/format.h>
#include <string_view>

namespace kvr {

namespace {

constexpr std::string_view PlotTitle = "Sensitivity";

/// Slope of a curve at its points: from neighbour to neighbour, at the ends of the one interval there.
std::vector<double> slopesOf(std::span<const double> times, std::span<const double> values) {
    const std::size_t count = std::min(times.size(), values.size());
    std::vector<double> slopes(count, 0.0);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t low = i > 0 ? i - 1 : i;
        const std::size_t high = i + 1 < count ? i + 1 : i;
        const double span = times[high] - times[low];
        if (span > 0.0) slopes[i] = (values[high] - values[low]) / span;
    }
    return slopes;
}

/// Gives `amount` at a time to the steps around it.
void giveToSteps(std::span<const double> stepEnds, double time, double amount, std::vector<double>& weights) {
    if (stepEnds.empty()) return;
    const auto next = std::lower_bound(stepEnds.begin(), stepEnds.end(), time);
    if (next == stepEnds.end()) {
        weights.back() += amount;
        return;
    }
    const auto n = static_cast<std::size_t>(next - stepEnds.begin());
    const double before = n > 0 ? stepEnds[n - 1] : 0.0;
    const double length = stepEnds[n] - before;
    const double share = length > 0.0 ? std::clamp((time - before) / length, 0.0, 1.0) : 1.0;
    weights[n] += share * amount;
    if (n > 0) weights[n - 1] += (1.0 - share) * amount;
}

const std::vector<double>& matchedCurve(const WellSeries& series, MatchedQuantity quantity) {
    return quantity == MatchedQuantity::GasOilRatio ? series.gasOilRatio : series.cut;
}

std::string_view kindName(SensitivityKind kind) {
    return kind == SensitivityKind::TravelTime ? "GTTI" : "GBHP";
}

std::string pathOf(const SensitivityReading& reading, SensitivityKind kind, int step) {
    return reading.folder + sensitivityFileName(kind, step);
}

int stepCount(const SensitivityReading& reading) {
    return static_cast<int>(reading.stepEnds.size());
}

/// One line for each step that is read; those without a file are told.
void tellSteps(const Console& console, const SensitivityReading& reading, SensitivityKind kind,
               CellId cells) {
    for (int step = 1; step <= stepCount(reading); ++step) {
        SensitivityReader reader;
        if (!openSensitivities(console, pathOf(reading, kind, step), reading.wellNames.size(), cells,
                               reader)) {
            warn(console, "WARNING :: NO SENSITIVITIES OF REPORT STEP {}: {} IS MISSING", step,
                 sensitivityFileName(kind, step));
            continue;
        }
        closeSensitivities(reader);
        both(console, "{} Sensitivity reconstructed Tstep: {}", kindName(kind), step);
        both(console, "File : {}", sensitivityFileName(kind, step));
    }
}

/// Adds the values of a well, each step by its weight.
void addSteps(const Console& console, const SensitivityReading& reading, SensitivityKind kind,
              std::size_t well, const std::vector<double>& weights, CellArray<double>& sum) {
    SensitivityReader reader;
    for (int step = 1; step <= stepCount(reading); ++step) {
        const double weight = weights[at(step) - 1];
        if (weight == 0.0) continue;
        if (!openSensitivities(console, pathOf(reading, kind, step), reading.wellNames.size(), sum.count(),
                               reader))
            continue;
        const std::span<const double> values = readSensitivities(console, sum.count(), well, reader);
        for (std::size_t n = 0; n < values.size(); ++n) sum.slots[n + 1] += weight * values[n];
        closeSensitivities(reader);
        reader.records = {};
    }
}

std::vector<double> weightsOf(const RunOptions& options, const SensitivityReading& reading,
                              SensitivityKind kind, const WellMatch& well) {
    std::vector<double> weights;
    if (kind == SensitivityKind::Pressure) {
        weights = pressureWeights(reading.stepEnds, well, options.sensitivityTimeWeightBhp);
        return smoothedWeights(std::move(weights), options.smoothingBhp);
    }
    if (options.travelTimeForm == SensitivityForm::Classic)
        weights.assign(reading.stepEnds.size(), 1.0);
    else
        weights = travelTimeWeights(reading.stepEnds, well, misfitSettings(options).quantity);
    for (double& weight : weights) weight *= options.sensitivityTimeWeightWct;
    return smoothedWeights(std::move(weights), options.smoothingWct);
}

SensitivityRows rowsOf(const Console& console, const RunOptions& options, const SensitivityReading& reading,
                       SensitivityKind kind, const CellArray<std::uint8_t>& Active,
                       std::span<const WellMatch> wells) {
    SensitivityRows rows;
    tellSteps(console, reading, kind, Active.count());
    CellArray<double> sum;
    for (const WellMatch& well : wells) {
        sum.assign(Active.count(), 0.0);
        const auto found = std::find(reading.wellNames.begin(), reading.wellNames.end(), well.name);
        if (found != reading.wellNames.end())
            addSteps(console, reading, kind, at(static_cast<int>(found - reading.wellNames.begin())),
                     weightsOf(options, reading, kind, well), sum);
        addRow(sum, Active, rows);
    }
    return rows;
}

SensitivityRows emptyRows(std::size_t count) {
    SensitivityRows rows;
    rows.start.assign(count + 1, 0);
    return rows;
}

void plotKind(const Console& console, const RunOptions& options, const SensitivityReading& reading,
              SensitivityKind kind, const GridModel& grid) {
    const auto wellCount = static_cast<int>(reading.wellNames.size());
    if (wellCount == 0) return;
    const std::string name =
        fmt::format("HM_SENSITIVITY_{}_Ite{}.plt", kind == SensitivityKind::TravelTime ? "GTTI" : "GBHPI",
                    reading.iteration);
    std::FILE* file = openForReplace(console, reading.folder + name);
    DirectionArray<double> values;
    for (int step = 1; step <= stepCount(reading); ++step) {
        SensitivityReader reader;
        if (!openSensitivities(console, pathOf(reading, kind, step), reading.wellNames.size(), grid.NCELLS,
                               reader))
            continue;
        values.assign(grid.NCELLS, wellCount, 0.0);
        for (int well = 1; well <= wellCount; ++well) {
            const auto ofWell = readSensitivities(console, grid.NCELLS, at(well) - 1, reader);
            for (CellId cell = 1; cell <= grid.NCELLS; ++cell) values(cell, well) = ofWell[at(cell) - 1];
        }
        closeSensitivities(reader);
        writeBlockZoneMulti(file, grid, zoneNodes(options), values, wellCount, reading.stepEnds[at(step) - 1],
                            PlotTitle);
    }
    closeWhole(console, file);
}

}  // namespace

MatchSensitivities reconstructSensitivities(const Console& console, const RunOptions& options,
                                            const SensitivityReading& reading,
                                            const CellArray<std::uint8_t>& Active,
                                            std::span<const WellMatch> wells) {
    const auto of = [&](bool wanted, SensitivityKind kind) {
        return wanted ? rowsOf(console, options, reading, kind, Active, wells) : emptyRows(wells.size());
    };
    MatchSensitivities rows;
    rows.travelTime = of(reading.travelTime, SensitivityKind::TravelTime);
    rows.pressure = of(reading.pressure, SensitivityKind::Pressure);
    return rows;
}

std::vector<double> travelTimeWeights(std::span<const double> stepEnds, const WellMatch& well,
                                      MatchedQuantity quantity) {
    std::vector<double> weights(stepEnds.size(), 0.0);
    const std::vector<double> slopes = slopesOf(well.cal.time, matchedCurve(well.cal, quantity));
    double squares = 0.0;
    for (const double slope : slopes) squares += slope * slope;
    if (squares <= 0.0) return weights;
    for (std::size_t i = 0; i < slopes.size(); ++i)
        giveToSteps(stepEnds, well.cal.time[i], slopes[i] / squares, weights);
    return weights;
}

std::vector<double> pressureWeights(std::span<const double> stepEnds, const WellMatch& well, double after) {
    std::vector<double> weights(stepEnds.size(), 0.0);
    const std::vector<double>& times = well.obs.time;
    const std::size_t count = std::min({times.size(), well.obs.pressure.size(), well.cal.pressure.size()});
    const double end = times.empty() ? 0.0 : *std::max_element(times.begin(), times.end());
    const auto counts = [&](std::size_t i) {
        return well.obs.pressure[i] > 0.0 && well.cal.pressure[i] > 0.0 && times[i] > after * end;
    };
    std::size_t points = 0;
    for (std::size_t i = 0; i < count; ++i) points += counts(i) ? 1 : 0;
    for (std::size_t i = 0; i < count; ++i)
        if (counts(i)) giveToSteps(stepEnds, times[i], 1.0 / static_cast<double>(points), weights);
    return weights;
}

std::vector<double> smoothedWeights(std::vector<double> weights, int sweeps) {
    const std::size_t count = weights.size();
    if (count < 2) return weights;
    std::vector<double> next(count);
    for (int sweep = 0; sweep < sweeps; ++sweep) {
        std::fill(next.begin(), next.end(), 0.0);
        for (std::size_t n = 0; n < count; ++n) {
            const std::size_t low = n > 0 ? n - 1 : n;
            const std::size_t high = n + 1 < count ? n + 1 : n;
            const double share = weights[n] / static_cast<double>(high - low + 1);
            for (std::size_t m = low; m <= high; ++m) next[m] += share;
        }
        weights.swap(next);
    }
    return weights;
}

void plotSensitivities(const Console& console, const RunOptions& options, const SensitivityReading& reading,
                       const GridModel& grid) {
    if (!options.outputSensitivity) return;
    both(console, " -> Debugging Purpose, Make sure this option is off for faster inversion.");
    if (reading.travelTime) plotKind(console, options, reading, SensitivityKind::TravelTime, grid);
    if (reading.pressure) plotKind(console, options, reading, SensitivityKind::Pressure, grid);
}

}  // namespace kvr
