#pragma once

#include "base/cell_array.hpp"
#include "deck/matched_curve.hpp"
#include "deck/options.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

/// What lines of one well say of one cell; sums over lines, each by its share of the flow of one launched
/// line.
struct CellSensitivity {
    CellId cell = 0;
    double top = 0.0;       // of the ratio that is matched: change of what stands above, per unit of ln k.
                            // Classic form: days over saturation
    double base = 0.0;      // what stands below, likewise
    double pressure = 0.0;  // psi per unit of ln k, by line; the well's rate is not yet divided by
};

/// Sums of one well over its lines. Cells up to `merged` rise and stand once each; behind them values follow
/// as lines bring them.
struct WellSensitivity {
    std::vector<CellSensitivity> cells;
    std::size_t merged = 0;
    double lines = 0.0;            // number of lines, by flow
    double top = 0.0, base = 0.0;  // what the lines let out: numerator and the other part of the ratio
};

/// Sensitivities of one step, of all wells. Held between the lines of a step that ends at a report time and
/// the writing of its files.
struct StepSensitivities {
    bool due = false;                    // lines of the present step bring them
    bool coupled = false;                // the pressure system that the lines' flow came from still stands
    std::vector<WellSensitivity> wells;  // [well - 1]; cells only, where lines have been
};

/// How the values of lines are formed.
struct SensitivitySettings {
    SensitivityForm travelTime = SensitivityForm::Coupled;
    SensitivityForm pressure = SensitivityForm::Coupled;
    bool gasOilRatio = false;  // gas over oil; otherwise water over liquid
};

inline SensitivitySettings sensitivitySettings(const RunOptions& options) {
    return {options.travelTimeForm, options.pressureForm, matchesGasOilRatio(options)};
}

/// Runs whose sensitivities all come from the balances of their steps.
inline bool needsNoLines(const RunOptions& options) {
    return options.travelTimeForm == SensitivityForm::Adjoint &&
           options.pressureForm == SensitivityForm::Adjoint;
}

/// Runs that keep sensitivities of lines: by OPTIONKVR 4 or for a match.
inline bool keepsSensitivities(const RunOptions& options) {
    return (options.outputSensitivity || options.historyMatch) && !needsNoLines(options);
}

}  // namespace kvr
