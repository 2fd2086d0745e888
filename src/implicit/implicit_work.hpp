#pragma once

#include "implicit/cell_terms.hpp"
#include "implicit/damping.hpp"
#include "pressure/solvers/block_system.hpp"
#include "pressure/solvers/leaf_rows.hpp"
#include "pressure/wells/wells.hpp"

#include <cstdint>
#include <vector>

namespace kvr {

/// Two neighbours that exchange fluid.
struct ImplicitConnection {
    int first = 0, second = 0;  // rows, 0-based
    int direction = 0;          // of the second cell as seen from the first
    bool isTransfer = false;    // between a fracture cell and its matrix
    double trans = 0.0;         // rb cp/(day psi) * FlowUnit, one value for both sides
    double g = 0.0;             // ft * in2/ft2: depth of the second cell below the first, over 144
    ConnectionPlaces places;
};

/// How much work a run did.
struct ImplicitCounts {
    long steps = 0, cuts = 0;
    long newtonIterations = 0;  // those of attempts that failed included
    long linearIterations = 0;
};

/// Working records of the fully implicit method; sized at start-up, kept for the run.
struct ImplicitWork {
    std::vector<CellId> cellOfRow;  // active cells, rising
    std::vector<int> rowOfCell;     // by CellId; -1 for an inactive cell
    std::vector<ImplicitConnection> connections;

    std::vector<ThirdUnknown> unknown;         // by row; all FreeGas without a gas phase
    std::vector<std::uint8_t> switchesOfStep;  // by row: how often the third unknown changed in this attempt
    std::vector<CellTerms<2>> twoPhase;        // by row; one of the two is in use
    std::vector<CellTerms<3>> threePhase;
    std::vector<PhaseJets<2>> twoPhaseHeads;  // by row, of transfers; empty without gravity drainage
    std::vector<PhaseJets<3>> threePhaseHeads;

    NewtonDamping damping;  // of this attempt

    BlockSystem system;
    LeafRows matrixRows;  // of two continua: rows that the solve goes without
    BlockSolverMemoryPointer memory;
    std::vector<double> solution;  // change of the unknowns, row by row
    std::vector<double> bhpChange;

    CellAmounts oldAmounts;  // surface volumes in the cells at the start of the step
    CellAmounts nowAmounts;  // ... and at the present iterate
    CellState saved;         // state and wells at the start of the step
    WellRecord savedWells;
    std::vector<std::uint8_t> switchesOfWell;  // by well: changes of control within this attempt
    int sharings = 0;                          // of group rates within this attempt
    std::vector<std::uint8_t> switchesOfRate;  // by well: changes from one limit of rates to another

    double longestStep = 0.0;  // days; what the last failure allows the next step, 0: no bound
    ImplicitCounts counts;
};

}  // namespace kvr
