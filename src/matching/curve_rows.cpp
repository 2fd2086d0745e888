#include "matching/curve_rows.hpp"

#include "base/constants.hpp"
#include "eclipse/sensitivity_files.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// Weights of the report steps in one part of a curve, and the mean of what it lacks.
struct CurvePart {
    std::vector<double> weights;
    double mean = 0.0;
    std::size_t points = 0;
};

/// A point between two ends belongs to both by its nearness.
void giveToSteps(std::span<const double> ends, double time, std::vector<double>& weights) {
    const auto next = static_cast<std::size_t>(
        std::lower_bound(ends.begin(), ends.end(), time - TimeTolerance) - ends.begin());
    if (next >= ends.size()) {
        weights.back() += 1.0;
    } else if (next == 0) {
        weights.front() += 1.0;
    } else {
        const double share = std::min(1.0, (time - ends[next - 1]) / (ends[next] - ends[next - 1]));
        weights[next] += share;
        weights[next - 1] += 1.0 - share;
    }
}

std::vector<CurvePart> partsOf(const MisfitSettings& settings, std::span<const double> ends,
                               std::size_t parts, const WellMatch& well) {
    std::vector<CurvePart> found(parts);
    for (CurvePart& part : found) part.weights.assign(ends.size(), 0.0);
    if (well.obs.count() < 2 || well.slope <= 0.0) return found;
    const std::vector<double>& obs = matchedCurve(settings, well.obs);
    const std::vector<double>& cal = matchedCurve(settings, well.cal);
    for (std::size_t i = 0; i < obs.size(); ++i) {
        CurvePart& part = found[partOf(well.obs.time, i, parts)];
        giveToSteps(ends, well.obs.time[i], part.weights);
        part.mean += obs[i] - cal[i];
        part.points += 1;
    }
    for (CurvePart& part : found) {
        if (part.points == 0) continue;
        const double scale = 1.0 / (static_cast<double>(part.points) * well.slope);
        for (double& weight : part.weights) weight *= scale;
        part.mean /= static_cast<double>(part.points);
        part.mean = std::abs(part.mean) < MatchedMean ? 0.0 : part.mean / well.slope;
    }
    return found;
}

void addStep(const std::vector<CurvePart>& parts, std::size_t step, std::span<const double> values,
             std::span<CellArray<double>> sums) {
    for (std::size_t p = 0; p < parts.size(); ++p) {
        const double weight = parts[p].weights[step];
        if (weight == 0.0 || parts[p].mean == 0.0) continue;
        for (std::size_t n = 0; n < values.size(); ++n) sums[p].slots[n + 1] += weight * values[n];
    }
}

}  // namespace

std::size_t partOf(std::span<const double> times, std::size_t point, std::size_t parts) {
    const auto [first, last] = std::minmax_element(times.begin(), times.end());
    if (!(*last > *first)) return 0;
    const double share = (times[point] - *first) / (*last - *first);
    return std::min(parts - 1, static_cast<std::size_t>(share * static_cast<double>(parts)));
}

CurveData curveRows(const Console& console, const MisfitSettings& settings, const CurveFiles& files,
                    std::size_t parts, const CellArray<std::uint8_t>& Active,
                    std::span<const WellMatch> wells) {
    CurveData data;
    if (files.stepEnds.empty()) return data;
    std::vector<std::vector<CurvePart>> curves;
    std::vector<CellArray<double>> sums(wells.size() * parts);
    for (CellArray<double>& sum : sums) sum.assign(Active.count(), 0.0);
    for (const WellMatch& well : wells) curves.push_back(partsOf(settings, files.stepEnds, parts, well));
    for (std::size_t step = 0; step < files.stepEnds.size(); ++step) {
        SensitivityReader reader;
        const std::string path =
            files.folder + sensitivityFileName(SensitivityKind::TravelTime, static_cast<int>(step) + 1);
        if (!openSensitivities(console, path, files.wellNames.size(), Active.count(), reader)) continue;
        for (std::size_t n = 0; n < files.wellNames.size(); ++n) {
            const std::span<const double> values = readSensitivities(console, Active.count(), n, reader);
            for (std::size_t w = 0; w < wells.size(); ++w)
                if (wells[w].name == files.wellNames[n])
                    addStep(curves[w], step, values, std::span(sums).subspan(w * parts, parts));
        }
        closeSensitivities(reader);
    }
    for (std::size_t row = 0; row < sums.size(); ++row) {
        addRow(sums[row], Active, data.rows);
        data.misfit.push_back(curves[row / parts][row % parts].mean);
        data.well.push_back(row / parts);
    }
    return data;
}

}  // namespace kvr
