#include "matching/probable_update.hpp"

#include "base/messages.hpp"
#include "matching/history_rows.hpp"
#include "matching/inversion.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr int PartsUnlessGiven = 10;  // of each curve; HMCURVE

const std::vector<double>& pressures(const MisfitSettings&, const WellSeries& series) {
    return series.pressure;
}

struct Kind {
    SensitivityKind files;
    std::string_view name;
    HistoryParts parts;
    double weight = 1.0;  // of the objective
};

std::vector<Kind> kindsOf(const RunOptions& options, MatchStage stage, const MisfitSettings& settings) {
    const bool ofGas = settings.quantity == MatchedQuantity::GasOilRatio;
    const int parts = options.curveParts > 0 ? options.curveParts : PartsUnlessGiven;
    std::vector<Kind> kinds;
    if (stage != MatchStage::GlobalPressure && options.objectiveWeightWct > 0.0)
        kinds.push_back({SensitivityKind::TravelTime,
                         ofGas ? "GOR" : "WCT",
                         {matchedCurve, static_cast<std::size_t>(parts), 0.0, false,
                          ofGas ? options.errorGor : options.errorCut, ofGas},
                         options.objectiveWeightWct});
    // What pressures change by with time is the flood's, which their sensitivities leave out: one mean a
    // well.
    if (options.objectiveWeightBhp > 0.0 && settings.weightBhp < 1.0)
        kinds.push_back({SensitivityKind::Pressure,
                         "BHP",
                         {pressures, 1, settings.weightBhp, true, options.errorBhp, false},
                         options.objectiveWeightBhp});
    return kinds;
}

/// Change of ln k since the first run.
CellArray<double> changeSoFar(const CellArray<double>& prior, const CellArray<double>& lnk) {
    CellArray<double> change = lnk;
    const CellArray<double> start = logarithms(prior);
    for (CellId cell = 1; cell <= lnk.count(); ++cell) change[cell] -= start[cell];
    return change;
}

}  // namespace

double dampingOf(std::span<const RunMisfit> kept) {
    double damping = MostDamping;
    for (std::size_t run = 1; run < kept.size(); ++run)
        damping =
            std::clamp(kept[run].halvings == 0 ? 0.5 * damping : 2.0 * damping, LeastDamping, MostDamping);
    return damping;
}

double dampErrors(std::size_t from, std::size_t to, double damping, ErrorData& data) {
    if (to <= from) return 0.0;
    double sum = 0.0;
    for (std::size_t n = from; n < to; ++n) sum += std::pow(data.misfit[n] / data.error[n], 2);
    const double root = std::sqrt(sum / static_cast<double>(to - from));
    for (std::size_t n = from; n < to; ++n) data.error[n] *= std::hypot(1.0, damping * root);
    return root;
}

CellArray<double> probableUpdate(const Simulation& s, MatchStage stage, const CellArray<double>& lnk,
                                 const CellArray<std::uint8_t>& region) {
    const RunOptions& options = s.options;
    const MisfitSettings settings = misfitSettings(options);
    const double mostWeight = std::max(options.objectiveWeightWct, options.objectiveWeightBhp);
    CurveFiles files{outputPath(s.outputs, ""), {}, s.schedule.reportEnd};
    for (const Well& well : s.wells.wells) files.wellNames.push_back(well.WellName);
    const double damping = dampingOf(s.match.accepted);
    ErrorData data;
    for (const Kind& kind : kindsOf(options, stage, settings)) {
        const std::size_t first = data.misfit.size();
        addHistoryRows(s.console, kind.files, files, s.grid.Active, s.match.wells,
                       historyData(settings, kind.parts, files.stepEnds, s.match.wells), data);
        for (std::size_t n = first; n < data.error.size(); ++n) data.error[n] *= mostWeight / kind.weight;
        const double root = dampErrors(first, data.misfit.size(), damping, data);
        both(s.console, " Misfit over error, {} : {} ({} data)", kind.name, number(root),
             data.misfit.size() - first);
    }
    const CellArray<double> present = changeSoFar(s.match.prior, lnk);
    const PriorCovariance prior =
        buildPriorCovariance(s.grid,
                             {options.priorDeviation,
                              {options.priorLength, options.priorLength, options.priorHeight},
                              options.priorLevel},
                             region);
    CellArray<double> change;
    if (!mostProbableChange(prior, data, present, change))
        warn(s.console, "WARNING :: THE MATRIX OF THE DATA CANNOT BE FACTORISED, THE FIELD STAYS");
    for (CellId cell = 1; cell <= lnk.count(); ++cell) change[cell] -= present[cell];
    return change;
}

}  // namespace kvr
