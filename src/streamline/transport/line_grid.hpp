#pragma once

#include "deck/options.hpp"
#include "model/grid.hpp"
#include "streamline/tracing/streamline_record.hpp"
#include "streamline/transport/solver_line.hpp"

#include <span>

namespace kvr {

/// How solver nodes are laid on a traced line.
enum class NodeControl {
    Irregular,  // the traced nodes
    Regular,    // ceiling(M * node factor) equal nodes
    Auto        // short traced nodes averaged in groups
};

NodeControl nodeControlOf(const RunOptions& options);

/// Sizes every array of a line for `tracedNodes` traced nodes and the node factor.
void sizeSolverLine(int tracedNodes, double nodeFactor, int tracerCount, SolverLine& line);

/// Copies a traced line so that it runs from the inlet: one traced against the flow is reversed, its times
/// summed anew. The two ends move to their cell centres, and the steps from and to them are measured again.
void takeTracedLine(const GridModel& grid, const StreamlineRecord& record, bool againstFlow,
                    bool referenceCube, SolverLine& line);

/// Lays the solver nodes. Regular: equal residence times, all marked 2. Auto: from a node below
/// mergeFactor * DeltaTof(1) / 2 on, nodes are gathered until their mean reaches that threshold or the line
/// ends; all of a group get the mean and the group's number.
void layNodes(NodeControl control, double nodeFactor, double mergeFactor, SolverLine& line);

/// Values of the traced nodes from those of the solver nodes ([0..N] each, 0 unused): the mean over the
/// solver nodes that overlap [tracedTof(n-1), tracedTof(n)], weighted by overlap. The two are equal where
/// the line was not regridded.
void remapToTraced(const SolverLine& line, double FlowNode::*value, std::span<double> traced);
void remapToTraced(const SolverLine& line, std::span<const double> solver, std::span<double> traced);

}  // namespace kvr
