#pragma once

#include "base/cell_array.hpp"
#include "deck/options.hpp"
#include "fluid/tables.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/transport/solver_line.hpp"

#include <vector>

namespace kvr {

/// What the solver nodes of a cell hold over a step, gathered once per step: many lines cross a cell.
struct NodeData {
    double Sw = 0.0, So = 0.0, Sg = 0.0, Rs = 0.0, Pb = 0.0;
    double pressure = 0.0, saturatedRs = 0.0;
    double Bw = 1.0, Bo = 1.0, Bg = 1.0;
    double MuW = 1.0, MuO = 1.0, MuG = 1.0;
    double Cw = 0.0, Co = 0.0, Cg = 0.0;  // amounts at the start of the step, per present pore volume
    double expansion = 0.0;  // 1/day, net outflow through the faces over the pore volume; 0 in well cells
    const FluidTables* pvt = nullptr;  // of the cell's fluids
    int region = 1;
    bool limitsRs = false;      // of RecoveryFactors
    bool keepsAmounts = false;  // Storage::Whole
};

/// Where the amounts at the start of a step come from.
enum class Storage {
    Present,    // present saturations and factors: no compressibility on lines
    Whole,      // what cells hold, shown by their saturations or carried beyond these
    TimeLevel,  // amounts of the old time level, per present pore volume
    Expanded    // present amounts times 1 + expansion * step: the same balance where the old level does not
                // fit the step (several mapping sub-steps, pressure kept from an earlier step)
};

Storage storageOf(const RunOptions& options, const FluidTables& fluids);

/// Fills one NodeData per cell; Storage::Present leaves every expansion 0. `step` is the length of the
/// sub-step, days.
void gatherNodeData(const FluidTables& fluids, const GridModel& grid, const CellState& state,
                    const CellState& timeLevel, const VelocityField& velocity, const WellRecord& wells,
                    Storage storage, double step, std::vector<NodeData>& nodes);

/// Storage::Whole: adds what cells hold beyond their saturations; nothing where `carried` is empty. The
/// lines then keep their amounts through the step.
void addCarriedAmounts(const CellState& state, const CellAmounts& carried, std::vector<NodeData>& nodes);

/// Loads the data of positions 1..N, and the tracers of the cells, from the cells of their traced nodes. With
/// `means` a node of a regridded line holds what it covers of every cell, not the state of the one at its
/// centre: what it passes on then is what those cells hold.
void loadNodes(const std::vector<NodeData>& nodes, const FluidTables& fluids,
               const DirectionArray<double>& tracers, bool means, SolverLine& line);

/// What enters the line at position 0: the injected phase at the end points of the region where the line
/// starts in a cell tagged "inj", otherwise the cell's own state.
void loadInlet(const std::vector<NodeData>& nodes, const FluidTables& fluids, const WellRecord& wells,
               bool firstCellInjects, SolverLine& line);

}  // namespace kvr
