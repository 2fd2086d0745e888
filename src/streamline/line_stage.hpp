#pragma once

#include "streamline/diagnostics/diagnostic_maps.hpp"
#include "streamline/diagnostics/line_plot.hpp"
#include "streamline/diagnostics/pair_table.hpp"
#include "streamline/line_worker.hpp"
#include "streamline/sensitivities/step_sensitivities.hpp"
#include "streamline/tracing/cell_line.hpp"

#include <vector>

namespace kvr {

/// Lines from missed cells that are traced but not solved yet.
struct TracedBlock {
    int count = 0;
    std::vector<StreamlineRecord> records;
    std::vector<double> fresh;  // rb first entered by each line
};

/// Memory of the streamline stage: sized once, reused by every step.
struct LineStage {
    int nodeCapacity = 0;  // traced nodes a line may have
    LineField field;
    std::vector<LineWorker> workers;  // one a thread
    std::vector<LineResult> results;  // one a line of the block being worked
    std::vector<LineResult> worked;   // the block before, being taken over
    CellLineLegs legs;                // sized where lines start from cells
    TracedBlock ahead;                // the same
    FaceTransfer transfer;            // in runs that carry amounts
    PairTable pairs;                  // of the present step
    LinePlot plot;
    DiagnosticMaps diagnostics;
    StepSensitivities sensitivities;
    OutletTable outlets;     // since the pressure step, over its mapping sub-steps
    long long substeps = 0;  // transport substeps of all lines of the run
    long long solvedLines = 0;
    NewtonCounts newton;  // of the implicit lines of the run
    LineDump dump;        // of their matrices
};

}  // namespace kvr
