#include "run/unbuilt_features.hpp"

#include "base/hard_stop.hpp"
#include "streamline/sensitivities/step_sensitivities.hpp"

#include <algorithm>
#include <string>
#include <string_view>

namespace kvr {

namespace {

struct FeatureRow {
    bool (*asked)(const RunOptions&);
    std::string_view what;
};

/// A flow, or a model, that comes from files.
bool standsOnAnotherRun(const RunOptions& o) {
    return o.traceFromRestart || o.useEclipsePressure || o.useEclipseTrans || o.eclipseToTecplot;
}

bool carriesMixturesOnLines(const RunOptions& o) {
    return o.componentCount > 0 && o.method == "streamline";
}

bool hasOtherLines(const RunOptions& o) {
    return std::any_of(o.solverPhaseName.begin(), o.solverPhaseName.end(),
                       [](const std::string& word) { return word != "mas" && word != "btf"; });
}

constexpr FeatureRow Features[] = {
    {[](const RunOptions& o) {
         return o.componentCount > 0 && o.method != "IMPES" && o.method != "streamline";
     },
     "components (COMPS) other than by streamlines or FDMETHOD IMPES"},
    {[](const RunOptions& o) { return carriesMixturesOnLines(o) && hasOtherLines(o); },
     "components (COMPS) on implicit or hybrid lines (SL1DCON)"},
    {[](const RunOptions& o) { return carriesMixturesOnLines(o) && o.orthogonalProjection; },
     "components (COMPS) on lines with the orthogonal projection (SL1DCON)"},
    {[](const RunOptions& o) { return carriesMixturesOnLines(o) && !o.conservativeMapping; },
     "components (COMPS) on lines with MAPPING AVERAGE"},
    {[](const RunOptions& o) { return o.componentCount > 0 && o.outputSensitivity; },
     "components (COMPS) with sensitivity output (OPTIONKVR 4)"},
    {[](const RunOptions& o) { return o.componentCount > 0 && standsOnAnotherRun(o); },
     "components (COMPS) with the files of an outside simulator"},
    {[](const RunOptions& o) { return o.componentCount > 0 && o.historyMatch; },
     "components (COMPS) with history matching (DOINV)"},
    {[](const RunOptions& o) { return o.componentCount > 0 && optimizesRates(o); },
     "components (COMPS) with rate optimisation (OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP)"},
    {[](const RunOptions& o) { return o.componentCount > 0 && o.tracerCount > 0; },
     "components (COMPS) with tracers (TRACER)"},
    {[](const RunOptions& o) { return o.componentCount > 0 && o.restartStep > 0; },
     "components (COMPS) from a restart (RESTART)"},
    {[](const RunOptions& o) { return o.componentCount > 0 && o.co2Model; },
     "components (COMPS) with the CO2 solubility model (CO2MBM)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && o.componentCount > 0; },
     "dual porosity (DUALPORO) with components (COMPS)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && o.co2Model; },
     "dual porosity (DUALPORO) with the CO2 solubility model (CO2MBM)"},
    {[](const RunOptions& o) {
         return isDualPorosity(o) && !o.conservativeMapping && o.method == "streamline";
     },
     "dual porosity (DUALPORO) with the average over lines (MAPPING AVERAGE)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && o.method == "EbFVM"; },
     "dual porosity (DUALPORO) by FDMETHOD EbFVM"},
    {[](const RunOptions& o) { return isDualPorosity(o) && (o.historyMatch || o.outputSensitivity); },
     "dual porosity (DUALPORO) with sensitivities (DOINV, OPTIONKVR 4)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && optimizesRates(o); },
     "dual porosity (DUALPORO) with rate optimisation (OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && o.ninePoint; },
     "dual porosity (DUALPORO) with nine points (NINEPOIN)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && (o.parameterSmoothing || o.flowUpscaling); },
     "dual porosity (DUALPORO) with smoothing or upscaling of rock (SMTHPRM, UPSCALE)"},
    {[](const RunOptions& o) { return isDualPorosity(o) && standsOnAnotherRun(o); },
     "dual porosity (DUALPORO) with runs of an outside simulator"},
    {[](const RunOptions& o) {
         return o.historyMatch && o.method != "streamline" && !o.traceFromRestart && !needsNoLines(o);
     },
     "history matching (DOINV) without streamlines (FDMETHOD) unless SNSFORM is ADJOINT ADJOINT"},
    {[](const RunOptions& o) { return o.historyMatch && optimizesRates(o); },
     "history matching (DOINV) with rate optimisation (OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP)"},
    {[](const RunOptions& o) { return o.outputSensitivity && o.method != "streamline" && !needsNoLines(o); },
     "sensitivity output (OPTIONKVR 4) without streamlines (FDMETHOD) unless SNSFORM is ADJOINT ADJOINT"},
};

}  // namespace

void refuseUnbuiltFeatures(const Console& console, const RunOptions& options) {
    for (const FeatureRow& feature : Features) {
        if (!feature.asked(options)) continue;
        both(console, "ERROR :: This version of KVR cannot do what the input asks for: {}.", feature.what);
        hardStop(console);
    }
}

}  // namespace kvr
