#pragma once

#include "base/cell_array.hpp"
#include "fluid/tables.hpp"

#include <vector>

namespace kvr {

/// One position of a line: its state, and the factors held over a step. Amounts C are surface volume per
/// pore volume, fluxes F surface volume per reservoir volume.
struct FlowNode {
    double Sw = 0.0, So = 0.0;
    double Cw = 0.0, Co = 0.0;
    double Fw = 0.0, Fo = 0.0;
    double passedW = 0.0, passedO = 0.0, passedG = 0.0;  // over the step, of fluxes and gravity exchange
    double Bw = 1.0, Bo = 1.0, inverseBw = 1.0, inverseBo = 1.0;
    double inverseMuW = 1.0, inverseMuO = 1.0;      // 1/cp
    double inverseDeltaTof = 0.0;                   // 1/day
    double inflowRate = 0.0, outflowRate = 0.0;     // 1/day, what F of the node before brings, F here takes
    const SaturationTable* table = nullptr;         // of the node's region
    double Sg = 0.0, Cg = 0.0, Fg = 0.0, Rs = 0.0;  // from here on only in runs with gas
    double Bg = 1.0, inverseBg = 1.0, inverseMuG = 1.0;
    double pressure = 0.0, saturatedRs = 0.0;  // psia; Rs at saturation there
    double bubblePoint = 0.0;                  // psia
    const FluidTables* pvt = nullptr;          // of the node's fluids; null: those of the run
    bool limitsRs = false;                     // of RecoveryFactors
    bool keepsAmounts = false;                 // amounts are not set anew from the scaled saturations
    double expansion = 0.0;                    // 1/day, net outflow of the cell over its pore volume
};

/// Surface amounts that gravity moves from a node to the next one, per unit of total flow.
struct GravityExchange {
    double water = 0.0, oil = 0.0, gas = 0.0;
};

/// One-dimensional problem on a line, marched from the injector end. Positions 0..N, position 0 the inlet.
struct SolverLine {
    int nodeCount = 0;        // N
    int tracedNodeCount = 0;  // M, nodes of the traced line
    int injector = 0;         // 1-based wells at the two ends, 0 for none
    int producer = 0;
    bool hasGravity = false;  // the gravity sources are in use
    bool regridded = false;   // a group mark is not 0: the solution goes back through the remap

    // The line as traced, turned to run from the inlet: [0..M], residence times in days.
    std::vector<CellId> tracedCell;
    std::vector<double> tracedTof, tracedDeltaTof;
    std::vector<double> tracedStepLength;  // ft
    std::vector<double> tracedDepth;       // ft, of the point where the node's traverse ended

    // Solver nodes, [0..N].
    std::vector<FlowNode> nodes;
    std::vector<double> Tof, DeltaTof;  // days
    std::vector<int> groupMark;         // 0: a node of the traced line
    std::vector<int> tracedNode;        // traced node whose cell the node took
    std::vector<double> limitedFw, limitedFo, limitedFg;
    std::vector<double> RhoW, RhoO, RhoG;  // lb/ft3, loaded where gravity is in use
    std::vector<double>
        gravityFace;  // [i] between i and i+1: share of the total flow per mobility and lb/ft3
    std::vector<GravityExchange> exchange;             // [i] between i and i+1, of explicit substeps
    std::vector<double> gravityW, gravityO, gravityG;  // 1/day, along-line gravity source
    std::vector<std::vector<double>> tracer;           // [tracer][node] concentration

    // What the last node let out, mean over the step, surface volume per reservoir volume.
    double outletWater = 0.0, outletOil = 0.0, outletGas = 0.0;
    int substeps = 0;
};

}  // namespace kvr
