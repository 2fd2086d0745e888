#include "matching/history_rows.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastShare = 0.1;  // of the largest observed value, that relative errors go by at least

/// Gives `amount` at a time to the steps whose ends enclose it, by nearness; time 0 has no sensitivity.
void giveToSteps(std::span<const double> ends, double time, double amount, std::vector<double>& weights) {
    const auto next =
        static_cast<std::size_t>(std::lower_bound(ends.begin(), ends.end(), time) - ends.begin());
    if (next == ends.size()) {
        weights.back() += amount;
        return;
    }
    const double before = next > 0 ? ends[next - 1] : 0.0, length = ends[next] - before;
    const double share = length > 0.0 ? std::clamp((time - before) / length, 0.0, 1.0) : 1.0;
    weights[next] += share * amount;
    if (next > 0) weights[next - 1] += (1.0 - share) * amount;
}

void addWell(const MisfitSettings& settings, const HistoryParts& parts, std::span<const double> ends,
             std::size_t w, const WellMatch& well, std::vector<HistoryDatum>& data) {
    const std::vector<double>&obs = parts.values(settings, well.obs), &cal = parts.values(settings, well.cal),
          &times = well.obs.time;
    const double end = *std::max_element(times.begin(), times.end());
    const double most = *std::max_element(obs.begin(), obs.end());
    std::vector<std::vector<std::size_t>> points(parts.parts);
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (parts.after > 0.0 && !(times[i] > parts.after * end)) continue;
        if (parts.measuredOnly && !(obs[i] > 0.0 && cal[i] > 0.0)) continue;
        points[partOf(times, i, parts.parts)].push_back(i);
    }
    for (const std::vector<std::size_t>& part : points) {
        if (part.empty()) continue;
        HistoryDatum datum{w, std::vector<double>(ends.size(), 0.0), 0.0, parts.error};
        const double share = 1.0 / static_cast<double>(part.size());
        double mean = 0.0;
        for (const std::size_t i : part) {
            giveToSteps(ends, times[i], share, datum.weights);
            datum.misfit += share * (obs[i] - cal[i]);
            mean += share * obs[i];
        }
        if (parts.relative) datum.error *= std::max(mean, LeastShare * most);
        if (datum.error > 0.0) data.push_back(std::move(datum));
    }
}

void addStep(std::string_view name, std::size_t step, std::span<const WellMatch> wells,
             std::span<const HistoryDatum> data, std::span<const double> values,
             std::span<CellArray<double>> sums) {
    for (std::size_t row = 0; row < data.size(); ++row) {
        const double weight = data[row].weights[step];
        if (weight == 0.0 || wells[data[row].well].name != name) continue;
        for (std::size_t n = 0; n < values.size(); ++n) sums[row].slots[n + 1] += weight * values[n];
    }
}

}  // namespace

std::vector<HistoryDatum> historyData(const MisfitSettings& settings, const HistoryParts& parts,
                                      std::span<const double> stepEnds, std::span<const WellMatch> wells) {
    std::vector<HistoryDatum> data;
    if (stepEnds.empty()) return data;
    for (std::size_t w = 0; w < wells.size(); ++w)
        if (wells[w].obs.count() > 1) addWell(settings, parts, stepEnds, w, wells[w], data);
    return data;
}

void appendRows(std::vector<CellArray<double>> sums, const CellArray<std::uint8_t>& Active,
                std::span<const HistoryDatum> data, std::size_t before, ErrorData& to) {
    for (std::size_t row = 0; row < sums.size(); ++row) {
        const std::size_t values = to.rows.value.size();
        addRow(sums[row], Active, to.rows);
        sums[row] = {};
        if (to.rows.value.size() == values) {
            to.rows.start.pop_back();
            continue;
        }
        to.misfit.push_back(data[row].misfit);
        to.error.push_back(data[row].error);
        to.datum.push_back(before + row);
    }
}

void addHistoryRows(const Console& console, SensitivityKind kind, const CurveFiles& files,
                    const CellArray<std::uint8_t>& Active, std::span<const WellMatch> wells,
                    std::span<const HistoryDatum> data, std::size_t before, ErrorData& to) {
    std::vector<CellArray<double>> sums(data.size());
    for (CellArray<double>& sum : sums) sum.assign(Active.count(), 0.0);
    for (std::size_t step = 0; step < files.stepEnds.size() && !data.empty(); ++step) {
        SensitivityReader reader;
        const std::string path = files.folder + sensitivityFileName(kind, static_cast<int>(step) + 1);
        if (!openSensitivities(console, path, files.wellNames.size(), Active.count(), reader)) continue;
        for (std::size_t n = 0; n < files.wellNames.size(); ++n)
            addStep(files.wellNames[n], step, wells, data,
                    readSensitivities(console, Active.count(), n, reader), sums);
        closeSensitivities(reader);
    }
    appendRows(std::move(sums), Active, data, before, to);
}

}  // namespace kvr
