#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// What one attempt at a step of components was like.
struct ComponentFigures {
    bool pressureSolved = true;
    double volumeError = 0.0;         // sum over cells of |fluid volume - pore volume|, over the pore volume
    double largestVolumeError = 0.0;  // the same of the worst cell, over its pore volume
    double targetMiss = 0.0;          // of a rate-controlled well, relative, by what has really moved
    double gasMiss = 0.0;             // of a producer's gas from what its pressure was solved with
    double mobilityLag = 0.0;         // mean over the flow, of total mobility from the mean of the step
    double mobilityError = 0.0;       // the same of the total mobility that the pressure was solved with
    double correctedError = 0.0;      // the same of the first pass over the step, which later ones put right
    double compositionChange = 0.0;   // largest of an overall fraction of a cell
    double failedFlashes = 0.0;       // cells
};
ComponentFigures measureComponentStep(const Simulation& simulation);

/// The verdict on an attempt of `dt` days: what the figures say of it, how long it may be taken anew or the
/// next one may be.
struct ComponentJudgement {
    bool stands = false;
    std::string_view reason;
    double figure = 0.0, limit = 0.0;
    double length = 0.0;  // days
};
ComponentJudgement judgeComponentStep(const RunOptions& options, const ComponentFigures& figures, double dt);

/// One step of a run with components: attempts, shortened until one stands. At the shortest length whatever
/// finds a pressure stands, with a warning; a step without any stops the run.
void takeComponentStep(Simulation& simulation);

}  // namespace kvr
