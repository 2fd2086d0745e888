#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Traces the results of a run that an .afi file describes; nothing is simulated. The grid and .INIT give the
/// model, the first restart the field and the wells, and one step of a thousand lines from the injectors is
/// drawn at its time, with static plots, a first report and the amounts in place. The outputs are open and
/// the options hold where the input is. Stops where the .afi file, the grid or the restart is missing.
void traceIxRun(Simulation& simulation);

/// The input is an .afi file whose results are to be traced, not converted.
inline bool tracesIxRun(const RunOptions& options) {
    return options.inputMode == input_mode::IxDeck && !options.ixExtract;
}

}  // namespace kvr
