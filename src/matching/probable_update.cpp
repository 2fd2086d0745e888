#include "matching/probable_update.hpp"

#include "base/messages.hpp"
#include "matching/adjoint_rows.hpp"
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

/// Kinds that a match has, whatever its stage.
std::vector<Kind> kindsOf(const RunOptions& options, const MisfitSettings& settings) {
    const bool ofGas = settings.quantity == MatchedQuantity::GasOilRatio;
    const int parts = options.curveParts > 0 ? options.curveParts : PartsUnlessGiven;
    std::vector<Kind> kinds;
    if (options.objectiveWeightWct > 0.0)
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

void addRows(const Simulation& s, const CurveFiles& files, const Kind& kind,
             std::span<const HistoryDatum> data, std::size_t before, ErrorData& to) {
    const bool ofPressure = kind.files == SensitivityKind::Pressure;
    if ((ofPressure ? s.options.pressureForm : s.options.travelTimeForm) != SensitivityForm::Adjoint)
        return addHistoryRows(s.console, kind.files, files, s.grid.Active, s.match.wells, data, before, to);
    const WellQuantity quantity = ofPressure           ? WellQuantity::Pressure
                                  : kind.name == "GOR" ? WellQuantity::GasOilRatio
                                                       : WellQuantity::Cut;
    addAdjointRows(s, quantity, data, before, to);
}

}  // namespace

double dampingOf(std::span<const RunMisfit> kept, int refused) {
    double damping = MostDamping;
    for (std::size_t run = 1; run < kept.size(); ++run)
        damping = std::clamp(std::ldexp(damping, kept[run].halvings - 1), LeastDamping, MostDamping);
    return std::ldexp(damping, refused);
}

double dampErrors(std::size_t from, std::size_t to, double damping, std::span<const double> misfit,
                  std::vector<double>& error) {
    if (to <= from) return 0.0;
    double sum = 0.0;
    for (std::size_t n = from; n < to; ++n) sum += std::pow(misfit[n] / error[n], 2);
    const double root = std::sqrt(sum / static_cast<double>(to - from));
    for (std::size_t n = from; n < to; ++n) error[n] *= std::hypot(1.0, damping * root);
    return root;
}

void rememberTried(Simulation& s) {
    const MisfitSettings settings = misfitSettings(s.options);
    TriedField field{logarithms(s.grid.PERMX), {}};
    for (const Kind& kind : kindsOf(s.options, settings))
        for (const HistoryDatum& datum :
             historyData(settings, kind.parts, s.schedule.reportEnd, s.match.wells))
            field.misfit.push_back(datum.misfit);
    std::vector<TriedField>& tried = s.match.probable.tried;
    if (tried.size() == MostTried) tried.erase(tried.begin());
    tried.push_back(std::move(field));
}

void takeProbableData(Simulation& s, MatchStage stage) {
    const MisfitSettings settings = misfitSettings(s.options);
    const double mostWeight = std::max(s.options.objectiveWeightWct, s.options.objectiveWeightBhp);
    CurveFiles files{outputPath(s.outputs, ""), {}, s.schedule.reportEnd};
    for (const Well& well : s.wells.wells) files.wellNames.push_back(well.WellName);
    ProbableRecord& kept = s.match.probable;
    kept.present = kept.tried.back();
    kept.data = {};
    kept.kindEnds.clear();
    kept.kindNames.clear();
    const std::vector<Kind> kinds = kindsOf(s.options, settings);
    std::vector<std::vector<HistoryDatum>> lists;
    std::size_t before = 0;
    for (const Kind& kind : kinds) {
        lists.push_back(historyData(settings, kind.parts, files.stepEnds, s.match.wells));
        before += lists.back().size();
    }
    reserveRows(before, s.grid.NCELLS, kept.data.rows);
    before = 0;
    for (std::size_t n = 0; n < kinds.size(); ++n) {
        const Kind& kind = kinds[n];
        const std::vector<HistoryDatum>& data = lists[n];
        const std::size_t first = kept.data.error.size();
        if (stage != MatchStage::GlobalPressure || kind.files == SensitivityKind::Pressure)
            addRows(s, files, kind, data, before, kept.data);
        for (std::size_t row = first; row < kept.data.error.size(); ++row)
            kept.data.error[row] *= mostWeight / kind.weight;
        before += data.size();
        kept.kindEnds.push_back(kept.data.error.size());
        kept.kindNames.emplace_back(kind.name);
    }
}

CellArray<double> probableUpdate(const Simulation& s, const CellArray<std::uint8_t>& region) {
    const ProbableRecord& kept = s.match.probable;
    ProbableStep step;
    step.error = kept.data.error;
    const double damping = dampingOf(s.match.accepted, s.match.halvings);
    double mostRoot = 0.0;
    std::size_t first = 0;
    for (std::size_t kind = 0; kind < kept.kindEnds.size(); ++kind) {
        const double root = dampErrors(first, kept.kindEnds[kind], damping, kept.data.misfit, step.error);
        both(s.console, " Misfit over error, {} : {} ({} data)", kept.kindNames[kind], number(root),
             kept.kindEnds[kind] - first);
        mostRoot = std::max(mostRoot, root);
        first = kept.kindEnds[kind];
    }
    step.shown = secantTerms(kept.data.rows, kept.data.datum, kept.present, kept.tried);
    CellArray<double> present = kept.present.lnk, change;
    const CellArray<double> start = logarithms(s.match.prior);
    for (CellId cell = 1; cell <= present.count(); ++cell) present[cell] -= start[cell];
    const PriorCovariance prior =
        buildPriorCovariance(s.grid,
                             {s.options.priorDeviation,
                              {s.options.priorLength, s.options.priorLength, s.options.priorHeight},
                              s.options.priorLevel},
                             region);
    step.pull = 1.0 / (1.0 + std::pow(damping * mostRoot, 2));
    if (!mostProbableChange(prior, kept.data, step, present, change))
        warn(s.console, "WARNING :: THE MATRIX OF THE DATA CANNOT BE FACTORISED, THE FIELD STAYS");
    for (CellId cell = 1; cell <= change.count(); ++cell) change[cell] -= present[cell];
    return change;
}

}  // namespace kvr
