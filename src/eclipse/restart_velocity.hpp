#pragma once

#include "eclipse/records.hpp"
#include "run/records/simulation.hpp"

#include <string_view>

namespace kvr {

/// What the reading of a restart has found. A restart that is not there leaves the run as it was.
struct RestartReading {
    bool found = false;       // the file stands and has been read
    bool hasFluxes = false;   // a face flux keyword was in it; else the field was made from its pressures
    bool hasFactors = false;  // formation volume factors of every phase of the run were in it
    double time = 0.0;        // days, of the restart; that of the clock where the file has none
};

/// Turns step `step` of an outside run into the run's own state: the file is the working folder's
/// `header`.Xnnnn. Cell arrays of the active cells are taken as far as the file has them (pressures,
/// saturations, ratios, properties); fluxes through the faces come from its flux keywords, or from its
/// pressures by the transmissibilities of the run. Then wells, connection rates and cell tags are those of
/// the restart, so that lines can be launched at once. clock.dt becomes the gap to the restart's time where
/// that lies ahead (not with useEclipsePressure); nothing else of the clock is touched. Wells that the deck
/// does not have come from the file. A broken file ends the run with the report on it; what does not fit is
/// told.
RestartReading input_RST2Velocity(Simulation& simulation, std::string_view header, int step);

}  // namespace kvr
