#include "matching/sl_sensitivity.hpp"

#include "matching/adjoint_rows.hpp"
#include "matching/curve_rows.hpp"
#include "matching/inversion.hpp"
#include "matching/match_maps.hpp"
#include "matching/minimise.hpp"
#include "matching/probable_update.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double NoChange = 1e-8;  // of magnitude and of the largest change: the match is done

/// One kind of data: its rows, what they are to give, and the words of its lines.
struct DataKind {
    std::string_view name;   // WCT, BHP
    std::string_view shift;  // "WaterCutShift dt", ..
    SensitivityRows rows;
    std::vector<double> misfit;  // by row, unit of the datum
    double limit = 0.0;          // of the expected change
    double sign = 1.0;           // of the rows in the system
    double weight = 1.0;
    std::vector<std::size_t> well;  // of each row
};

struct KindTotals {
    double sum = 0.0, misfit = 0.0;
};

void tellRow(const Simulation& s, const DataKind& kind, std::size_t w, KindTotals& totals) {
    const RowFigures row = rowFigures(kind.rows, w);
    const std::string& name = s.match.wells[kind.well[w]].name;
    const auto line = [&](std::string_view label, double value) {
        both(s.console, " {} {} Sens Well {} : {}", label, kind.name, name, number(value));
    };
    line("NONZero", static_cast<double>(row.nonzeros));
    both(s.console, " {} Well {} : {}", kind.shift, name, number(kind.misfit[w]));
    line("TotSumm", row.sum);
    line("MeanVal", row.mean);
    line("MiniVal", row.least);
    line("MaxiVal", row.most);
    line("Varianc", row.variance);
    line("ExpecDk", expectedChange(kind.misfit[w], row.sumOfSizes));
    totals.sum += row.sum;
    totals.misfit += kind.misfit[w];
}

double share(double part, double whole) {
    return whole == 0.0 ? 0.0 : part / whole;
}

void tellTotals(const Console& console, const std::vector<DataKind>& kinds,
                const std::vector<KindTotals>& totals) {
    double sums = 0.0, misfits = 0.0;
    for (std::size_t n = 0; n < kinds.size(); ++n) {
        both(console, " TotSumm {} Sens ALL  : {}", kinds[n].name, number(totals[n].sum));
        sums += std::abs(totals[n].sum);
        misfits += std::abs(totals[n].misfit);
    }
    for (std::size_t n = 0; n < kinds.size(); ++n)
        both(console, " TotSift {} Sens ALL  : {}", kinds[n].name, number(totals[n].misfit));
    for (std::size_t n = 0; n < kinds.size(); ++n)
        both(console, " Change k of {} Ratio : {}", kinds[n].name,
             number(share(std::abs(totals[n].sum), sums)));
    for (std::size_t n = 0; n < kinds.size(); ++n)
        both(console, " Shift of {} Ratio    : {}", kinds[n].name,
             number(share(std::abs(totals[n].misfit), misfits)));
    for (std::size_t n = 0; n < kinds.size(); ++n)
        both(console, " Shift/Sens ratio: {} : {}", kinds[n].name,
             number(share(totals[n].misfit, totals[n].sum)));
}

void tellStatistics(const Simulation& s, const std::vector<DataKind>& kinds) {
    std::vector<KindTotals> totals(kinds.size());
    for (std::size_t n = 0; n < kinds.size(); ++n)
        for (std::size_t w = 0; w < kinds[n].misfit.size(); ++w) tellRow(s, kinds[n], w, totals[n]);
    tellTotals(s.console, kinds, totals);
}

/// Rows of wells that are matched already say nothing.
void clearMatchedRows(DataKind& kind) {
    for (std::size_t w = 0; w < kind.misfit.size(); ++w)
        if (kind.misfit[w] == 0.0) scaleRow(0.0, w, kind.rows);
}

void constrainRows(Simulation& s, DataKind& kind, double WellMatch::*multiplier) {
    for (std::size_t w = 0; w < kind.misfit.size(); ++w) {
        WellMatch& well = s.match.wells[kind.well[w]];
        const double expected = expectedChange(kind.misfit[w], rowFigures(kind.rows, w).sumOfSizes);
        well.*multiplier = constraintMultiplier(expected, kind.limit);
        if (well.*multiplier == 1.0) continue;
        both(s.console, " > Multi {} Sens Well {} : = {}", kind.name, well.name, number(well.*multiplier));
        scaleRow(well.*multiplier, w, kind.rows);
    }
}

std::size_t nonzeros(const DataKind& kind) {
    return static_cast<std::size_t>(std::count_if(kind.rows.value.begin(), kind.rows.value.end(),
                                                  [](double value) { return value != 0.0; }));
}

/// Amplitudes: a well's row of times becomes one of cuts by the slope of its curve, which rises where the
/// water comes earlier.
DataKind firstKind(const Simulation& s, SensitivityRows rows) {
    const bool amplitudes = s.options.amplitudeMatching;
    DataKind kind{
        "WCT", "WaterCutShift dt", std::move(rows), {}, s.options.lnkLimitWct, amplitudes ? 1.0 : -1.0, 1.0,
        {}};
    for (std::size_t w = 0; w < s.match.wells.size(); ++w) {
        const WellMatch& well = s.match.wells[w];
        if (amplitudes) scaleRow(well.slope, w, kind.rows);
        kind.misfit.push_back(amplitudes ? well.amplitude : well.shift);
        kind.well.push_back(w);
    }
    return kind;
}

DataKind secondKind(const Simulation& s, SensitivityRows rows) {
    DataKind kind{"BHP", "PressureShift dp", std::move(rows), {}, s.options.lnkLimitBhp, 1.0, 1.0, {}};
    for (std::size_t w = 0; w < s.match.wells.size(); ++w) {
        kind.misfit.push_back(s.match.wells[w].misfit_bhp);
        kind.well.push_back(w);
    }
    return kind;
}

/// Parts of the curves, where they are asked for and the files hold changes of curves (the classic form holds
/// times).
DataKind curveKind(const Simulation& s) {
    DataKind kind{"WCT", "CurveMean over slope", {}, {}, s.options.lnkLimitWct, 1.0, 1.0, {}};
    const bool due = s.options.curveParts > 0 && s.clock.hmIteration + 1 >= s.options.curveFrom;
    if (!due || s.options.travelTimeForm == SensitivityForm::Classic) return kind;
    CurveFiles files{outputPath(s.outputs, ""), {}, s.schedule.reportEnd};
    for (const Well& well : s.wells.wells) files.wellNames.push_back(well.WellName);
    CurveData data = curveRows(s.console, misfitSettings(s.options), files,
                               static_cast<std::size_t>(s.options.curveParts), s.grid.Active, s.match.wells);
    kind.rows = std::move(data.rows);
    kind.misfit = std::move(data.misfit);
    kind.well = std::move(data.well);
    return kind;
}

/// Weights of the objective relative to the larger one, so that a match of one kind alone does not feel them.
void weighKinds(const RunOptions& options, DataKind& first, DataKind& second) {
    const double most = std::max(options.objectiveWeightWct, options.objectiveWeightBhp);
    if (!(most > 0.0)) return;
    first.weight = options.objectiveWeightWct / most;
    second.weight = options.objectiveWeightBhp / most;
}

/// Rows and right sides of the kinds, less what the change up to `from` has given already.
WellData systemOf(const std::vector<const DataKind*>& kinds, const CellArray<double>& change) {
    WellData data;
    for (const DataKind* kind : kinds)
        for (std::size_t w = 0; w < kind->misfit.size(); ++w) {
            const double factor = kind->sign * kind->weight;
            double given = 0.0;
            for (std::size_t n = kind->rows.start[w]; n < kind->rows.start[w + 1]; ++n) {
                if (kind->rows.value[n] == 0.0) continue;
                data.rows.cell.push_back(kind->rows.cell[n]);
                data.rows.value.push_back(factor * kind->rows.value[n]);
                given += data.rows.value.back() * change[kind->rows.cell[n]];
            }
            const bool says = data.rows.cell.size() > data.rows.start.back();
            data.rows.start.push_back(data.rows.cell.size());
            data.rightSide.push_back(says ? kind->weight * kind->misfit[w] - given : 0.0);
        }
    return data;
}

/// Adds to `change` what the kinds ask for on top of it.
void addChange(const Simulation& s, const std::vector<const DataKind*>& kinds, const CellArray<double>& lnk,
               CellArray<double>& change) {
    const WellData data = systemOf(kinds, change);
    CellArray<double> from = lnk, to;
    for (CellId cell = 1; cell <= lnk.count(); ++cell) from[cell] += change[cell];
    minimise(s.console, minimisationSettings(s.options), s.grid, data, from, to);
    for (CellId cell = 1; cell <= lnk.count(); ++cell) change[cell] = to[cell] - lnk[cell];
}

std::vector<CellId> completedCells(const WellRecord& wells) {
    std::vector<CellId> cells;
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections) cells.push_back(connection.ConnCell);
    return cells;
}

/// The increment before its limits.
void invert(Simulation& s, MatchStage stage, const DataKind& first, const DataKind& curves,
            const DataKind& second, const CellArray<double>& lnk) {
    CellArray<double>& change = s.match.dlnk;
    change.assign(lnk.count(), 0.0);
    const CellArray<std::uint8_t> region =
        updateRegion(s.grid, s.options.updateWellGrid, completedCells(s.wells));
    if (s.options.mostProbable) {
        change = probableUpdate(s, region);
    } else if (stage == MatchStage::Whole) {
        addChange(s, {&first, &curves, &second}, lnk, change);
    } else {
        addChange(s, {&second}, lnk, change);
        if (stage == MatchStage::Twice) addChange(s, {&first, &curves}, lnk, change);
    }
    for (CellId cell = 1; cell <= change.count(); ++cell)
        if (region[cell] == 0) change[cell] = 0.0;
}

void tellUpdate(const Console& console, const UpdateFigures& figures) {
    both(console, " Range of Perm Changed : {} {}", number(figures.least), number(figures.most));
    both(console, " magnitude of Change_K : {}", number(figures.magnitude));
    both(console, " Num of Huge-diff Grid : {}", figures.huge);
}

void testForEnd(Simulation& s, const UpdateFigures& figures) {
    if (!(figures.magnitude < NoChange) || !(figures.largest < NoChange)) return;
    s.match.ended = true;
    lineToBoth(s.console, " History-Matched! ");
    lineToBoth(s.console, "History-Matched! - Press any key to terminate...");
}

double largestSlope(const std::vector<WellMatch>& wells) {
    double most = 0.0;
    for (const WellMatch& well : wells) most = std::max(most, well.slope);
    return most;
}

}  // namespace

MatchStage matchStage(const RunOptions& options, int iteration) {
    if (!options.localGlobalPressureMatch) return MatchStage::Whole;
    return iteration < options.bhpGlobalIterations ? MatchStage::GlobalPressure : MatchStage::Twice;
}

MatchSensitivities rebuildSensitivities(const Simulation& s, MatchStage stage) {
    SensitivityReading reading;
    reading.folder = outputPath(s.outputs, "");  // names of a deck of its own stand behind it
    for (const Well& well : s.wells.wells) reading.wellNames.push_back(well.WellName);
    reading.stepEnds = s.schedule.reportEnd;
    const auto hasFiles = [&](SensitivityForm form) {
        return form != SensitivityForm::Adjoint || leavesAdjoints(s.options);
    };
    reading.travelTime = stage != MatchStage::GlobalPressure && hasFiles(s.options.travelTimeForm);
    reading.pressure = hasFiles(s.options.pressureForm);
    reading.iteration = s.clock.hmIteration;
    if (s.options.outputSensitivity) plotSensitivities(s.console, s.options, reading, s.grid);
    return reconstructSensitivities(s.console, s.options, reading, s.grid.Active, s.match.wells);
}

void SL_SENSITIVITY(Simulation& s, MatchStage stage, MatchSensitivities sensitivities) {
    MatchRecord& match = s.match;
    DataKind first = firstKind(s, std::move(sensitivities.travelTime));
    DataKind second = secondKind(s, std::move(sensitivities.pressure));
    DataKind curves = s.options.mostProbable ? DataKind{} : curveKind(s);
    weighKinds(s.options, first, second);
    curves.weight = first.weight;
    tellStatistics(s, {first, second});
    for (DataKind* kind : {&first, &curves, &second}) clearMatchedRows(*kind);
    if (!s.options.mostProbable) {
        constrainRows(s, curves, &WellMatch::multiplier_wct);
        constrainRows(s, first, &WellMatch::multiplier_wct);
        constrainRows(s, second, &WellMatch::multiplier_bhp);
    }
    const CellArray<double> lnk = logarithms(s.grid.PERMX);
    match.base = {s.grid.PERMX, s.grid.PERMY, s.grid.PERMZ};
    match.halvings = 0;
    if (s.options.mostProbable) takeProbableData(s, stage);
    const std::size_t count = s.options.mostProbable ? match.probable.data.rows.value.size()
                                                     : nonzeros(first) + nonzeros(curves) + nonzeros(second);
    if (count == 0) {
        lineToBoth(s.console, "All the sensitivity becomes ZERO.");
        match.dlnk.assign(lnk.count(), 0.0);
    } else {
        both(s.console, " Total Nonzeros on sens : {}", count);
        both(s.console, " Scaling Facto for Amp  : {}",
             number(s.options.amplitudeMatching ? largestSlope(match.wells) : 1.0));
        invert(s, stage, first, curves, second, lnk);
        limitUpdate(s.console, updateLimits(s.options), lnk, match.dlnk);
    }
    applyUpdate(match.base, match.dlnk, 1.0, parameterBounds(s.options), s.grid);
    const UpdateFigures figures = updateFigures(s.grid.Active, lnk, match.dlnk);
    tellUpdate(s.console, figures);
    writeUpdateMaps(s);
    testForEnd(s, figures);
}

double updateShare(const Simulation& s) {
    return s.options.mostProbable ? 1.0 : std::ldexp(1.0, -s.match.halvings);
}

void takeUpdate(Simulation& s) {
    applyUpdate(s.match.base, s.match.dlnk, updateShare(s), parameterBounds(s.options), s.grid);
    writeUpdateMaps(s);
}

void askAgain(Simulation& s) {
    const CellArray<double> lnk = logarithms(s.match.base.x);
    const CellArray<std::uint8_t> region =
        updateRegion(s.grid, s.options.updateWellGrid, completedCells(s.wells));
    s.match.dlnk = probableUpdate(s, region);
    limitUpdate(s.console, updateLimits(s.options), lnk, s.match.dlnk);
    takeUpdate(s);
}

}  // namespace kvr
