#pragma once

#include "base/cell_array.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace kvr {

/// One-dimensional problem on a line, marched from the injector end. Positions 0..N, position 0 the
/// inlet. Amounts C are surface volume per pore volume, fluxes F surface volume per reservoir volume.
struct SolverLine {
    int lineNumber = 0;
    int nodeCount = 0;        // N
    int tracedNodeCount = 0;  // M, nodes of the traced line
    bool startsInInjector = false;

    // The line as traced, marched from the inlet: cells and residence times, [1..M].
    std::vector<CellId> tracedCell;
    std::vector<double> tracedTof, tracedDeltaTof;  // days; tracedTof[0] is 0
    std::vector<double> tracedStepLength;           // ft
    std::vector<double> tracedDepth;                // ft, [0..M] depth of the node position

    std::vector<double> Tof, DeltaTof;  // days, [0..N]
    std::vector<int> groupMark;         // 0: a node of the traced line
    std::vector<CellId> cell;           // cell whose data the node took
    std::vector<int> region;
    std::vector<double> fluxPressure, storagePressure, bubblePoint;  // psia
    std::vector<double> poreFractionRatio;  // time-level porosity over the present one, scales storage
    std::vector<double> Sw, So, Sg, Rs;
    std::vector<double> Bw, Bo, Bg, MuW, MuO, MuG;        // at fluxPressure, for F
    std::vector<double> BwStorage, BoStorage, BgStorage;  // at storagePressure, for C
    std::vector<double> Cw, Co, Cg;
    std::vector<double> Fw, Fo, Fg;
    std::vector<double> dFw, dFo, dFg;              // [i] = F(i+1) - F(i)
    std::vector<double> sourceW, sourceO, sourceG;  // 1/day
    DirectionArray<double> tracer;                  // (node, tracer)

    // End-node fluxes, mean over the step: what the outlet carried, surface volume per reservoir volume.
    double outletWater = 0.0, outletOil = 0.0, outletGas = 0.0;
    int substeps = 0;
};

/// Sums of the mapping, cleared at the end of each streamline step. Weight is residence time, days.
struct MappingSums {
    CellArray<double> weight, water, oil, gas, bubblePoint;
    DirectionArray<double> tracer;
    CellArray<std::uint8_t> CellVisited;
    CellArray<std::uint8_t> visitedSnapshot;  // CellVisited when the missed-block stage starts
};

/// What the lines of one step carried out of each producing connection, weighted by LineFlux.
struct OutletRates {
    double reservoir = 0.0;                    // rb/day reached by lines
    double oil = 0.0, water = 0.0, gas = 0.0;  // surface volume a day
};

}  // namespace kvr
