#pragma once

#include "base/units.hpp"
#include "fluid/components/surface.hpp"
#include "model/grid.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/transport/component_node.hpp"
#include "streamline/transport/explicit_control.hpp"
#include "streamline/transport/front_table.hpp"
#include "streamline/transport/solver_line.hpp"

#include <span>
#include <vector>

namespace kvr {

/// What lines of components read of the run; nothing where the run has none.
struct ComponentField {
    const ComponentStage* stage = nullptr;
    const SurfaceFluid* surface = nullptr;
    double volumeFactor = 1.0;  // ft3 in an internal volume
    CellArray<double>
        expansion;         // 1/day, net outflow through the faces over the pore volume; 0 in well cells
    CellArray<int> inlet;  // by cell: place in `inlets`, negative where no well injects
    std::vector<ComponentFlow> inlets;  // what injectors bring, per reservoir volume
    std::vector<double> through;        // [inlet] what leaves its cell through faces, of what comes in
    std::vector<double> age;            // [inlet] days since its well began, at its present rate, up to now
    // Of lines that track fronts only.
    std::vector<ComponentFronts> fronts;  // [inlet]
    ComponentFlow initial;                // what the cells held at the start of the run, per pore volume
    bool hasInitial = false;
};

void prepareComponentField(const UnitSystem& units, const GridModel& grid, const CellState& state,
                           const VelocityField& velocity, const WellRecord& wells, const ComponentRun& run,
                           ComponentField& field);

/// Working records of one thread.
struct ComponentLine {
    std::vector<ComponentNode> nodes;    // [0..N], 0 the inlet
    std::vector<double> solver, traced;  // work: one value by node
    FlashState surface;                  // last flash of a line's end at the surface
};

/// Joins solver nodes of a laid line, so that none is crossed in less than a tenth of the step: what is
/// shorter turns its content over so often that it says nothing of the cells which it covers.
void joinShortNodes(double step, SolverLine& line);

/// Loads positions 0..N: what cells hold, as sums of what a node covers, and at the inlet what the injector
/// of the first cell brings, or what the first node lets out.
void loadComponentLine(const GridModel& grid, const FluidTables& tables, const CellState& state,
                       const ComponentField& field, const SolverLine& line, ComponentLine& components);

/// Transport over a step by explicit substeps, upwind or limited: CFL / (largest wave speed + 1e-10), a wave
/// speed being |dF|/|dC| of a component between two positions, as far as |dC| is above 1e-6 lb-mole/ft3 and
/// no faster than twenty times the flow, or F/C of a node. Saturations are the shares of the phases in the
/// volume of what a node holds. A node that is not a number takes the one before it.
void advanceComponentLine(const FluidTables& tables, const ComponentField& field,
                          const ExplicitControl& control, double step, SolverLine& line,
                          ComponentLine& components);

}  // namespace kvr
