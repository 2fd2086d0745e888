#include "run/unbuilt_features.hpp"

#include "base/hard_stop.hpp"

#include <string_view>

namespace kvr {

namespace {

struct FeatureRow {
    bool (*asked)(const RunOptions&);
    std::string_view what;
};

constexpr FeatureRow Features[] = {
    {[](const RunOptions& o) { return o.componentCount > 0; }, "compositional runs (COMPS)"},
    {[](const RunOptions& o) { return isDualPorosity(o); }, "dual porosity"},
    {[](const RunOptions& o) { return o.historyMatch && o.method != "streamline" && !o.traceFromRestart; },
     "history matching (DOINV) without streamlines (FDMETHOD)"},
    {[](const RunOptions& o) { return o.historyMatch && optimizesRates(o); },
     "history matching (DOINV) with rate optimisation (OPTIMIZE, NPVOPT, EQWAFS, EQARRIVE, OPTMMP)"},
    {[](const RunOptions& o) { return o.outputSensitivity && o.method != "streamline"; },
     "sensitivity output (OPTIONKVR 4) without streamlines (FDMETHOD)"},
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
