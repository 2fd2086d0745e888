#pragma once

#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/diagnostics/line_path.hpp"
#include "streamline/mapping/face_transfer.hpp"
#include "streamline/mapping/mapping.hpp"
#include "streamline/mapping/producer_rates.hpp"
#include "streamline/sensitivities/line_sensitivity.hpp"
#include "streamline/tracing/launch_plan.hpp"
#include "streamline/tracing/streamline_record.hpp"
#include "streamline/tracing/trace.hpp"
#include "streamline/transport/analytic_transport.hpp"
#include "streamline/transport/component_line.hpp"
#include "streamline/transport/explicit_transport.hpp"
#include "streamline/transport/implicit_transport.hpp"
#include "streamline/transport/line_grid.hpp"
#include "streamline/transport/node_data.hpp"
#include "streamline/transport/solver_line.hpp"

#include <vector>

namespace kvr {

/// Transport on a line by the solver word of the phase.
enum class LineSolver {
    None,      // a word that matches nothing solves nothing
    Analytic,  // "btf"
    Explicit,  // "mas"
    Implicit,  // "imp"
    Hybrid,    // "hyb"
    Still      // no word: lines that show the cells as they stand
};

LineSolver lineSolverOf(std::string_view word);

/// Working records of one thread; the next line overwrites them.
struct LineWorker {
    SolverLine line;
    ExplicitScratch scratch;
    LineNewton newton;
    ComponentLine components;
};

/// What one line leaves behind, taken before its worker goes on to the next one.
struct LineResult {
    StreamlineRecord record;
    bool solved = false;
    bool isNumber = true;  // false: a front of components was not a number
    int enteredCount = 0;
    std::vector<CellId> entered;  // [0..enteredCount - 1] cells that the line lies in, with a reached well
                                  // the launching one too
    LineContribution contribution;
    LinePassage passage;  // where nodes keep their amounts
    LineEnd end;
    int substeps = 0;
    LinePath path;                // where courses are wanted
    LineSensitivity sensitivity;  // where sensitivities are due
    NewtonCounts newton;
};

/// What every line of a step reads and none writes.
struct LineField {
    TraceField trace;
    std::vector<NodeData> nodes;  // by CellId
    AnalyticTable analytic;
    AnalyticProfile profile;
    LineSolver solver = LineSolver::None;
    NodeControl nodeControl = NodeControl::Irregular;
    double nodeFactor = 1.0, mergeFactor = 1.0;
    ExplicitControl control;
    ImplicitControl implicitControl;
    bool passes = false;   // lines tell what faces pass; otherwise cells take the mean of their lines
    double step = 0.0;     // days
    double endTime = 0.0;  // simulated days at the end of the step
    bool fromInjector = true;
    bool keepPaths = false;      // lines keep their courses for the line files
    bool sensitivities = false;  // lines tell what they say of permeability
    SensitivitySettings sensitivityForms;
    double lineFlux = 1.0;  // rb/day of a launched line
    ComponentField components;
    bool gravity = false;  // along-line gravity: the orthogonal projection leaves it to the lines
};

void sizeWorker(const RunOptions& options, int tracedNodes, LineWorker& worker);
/// Tells of a front of components that was not a number.
void tellFronts(const Console& console, const LineResult& result);
/// Adds the course of a line to those of the step, where they are wanted; an unsolved line stands as one
/// node.
void keepPath(const Console& console, const GridModel& grid, LineResult& result, LinePaths& paths);

void sizeResult(int tracedNodes, int tracerCount, LineResult& result);

/// Transport on the line that stands in `result.record`, by the solver of the field.
void solveLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
               const WellRecord& wells, const LineField& field, LineWorker& worker, LineResult& result);

/// Traces and solves one line. Reads shared records only, writes its own worker and result only, so that
/// lines may be worked by several threads at once.
void workLine(const GridModel& grid, const FluidTables& fluids, const CellState& state,
              const WellRecord& wells, const LineField& field, const LineStart& start, LineWorker& worker,
              LineResult& result);

}  // namespace kvr
