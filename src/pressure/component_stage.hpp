#pragma once

#include "base/cell_array.hpp"
#include "fluid/components/component_state.hpp"
#include "fluid/components/surface.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <vector>

namespace kvr {

/// What the cells hold, conserved by all that moves it.
struct ComponentAmounts {
    DirectionArray<double> moles;  // (cell, component), lb-mole
    CellArray<double> water;       // surface volume, internal volume units
};

/// Mobilities of the phases by cell, 1/cp.
struct PhaseMobilities {
    CellArray<double> oil, water, gas;
};

/// What the pressure equation and the transport of components read of the cells; internal volume units.
struct ComponentStage {
    ComponentSet set;  // at the temperature of the reservoir
    ComponentAmounts amounts;
    ComponentState cells;
    CellArray<double> FluidVolume;   // of all that a cell holds, at its pressure
    CellArray<double> FluidSlope;    // its change a psi, at fixed amounts
    DirectionArray<double> Partial;  // (cell, component): its change a lb-mole
    CellArray<double> leftOver;      // volume by which the passes before over the same step missed the pores
    PhaseMobilities mean;            // over the step, as its last transport found them
    bool takesMean = false;          // the pressure is solved with them, not with those of the step's start
    CellArray<double> solvedMobility;  // of all phases, that the last pressure was solved with
};

/// What a connection of a well takes or brings while amounts move on the flow of a pressure.
struct ComponentSource {
    CellId cell = 0;
    std::size_t well = 0;      // 0-based
    std::size_t place = 0;     // 0-based, of the connection in its well
    double produced = 0.0;     // internal volume a day that it takes, shared by mobilities
    Composition stream{};      // lb-mole a day that it brings
    double waterStream = 0.0;  // surface volume a day that it brings
};

/// Through a source in a step, lb-mole and surface volume of water; into the reservoir positive.
struct SourceTotals {
    Composition moles{};
    double water = 0.0;
};

/// What a well of a run with components brings up or takes.
struct WellMixture {
    Composition stream{};             // of an injector: its fractions; of a producer: those of the last step
    bool hasStream = false;           // injects components
    double perSurface = 0.0;          // lb-mole that a surface volume of the stream has
    FlashState surface;               // last flash of its stream at the surface
    FlashState bore;                  // last flash of an injected stream in the reservoir
    SourceTotals step;                // through the well in the last step
    SourceTotals produced, injected;  // since the start, both positive
};

/// What a producer drew in the pass before over the same step, mean over it.
struct DrawnMixture {
    Composition stream{};  // fractions
    std::vector<double>
        perVolume;  // by connection, lb-mole in a reservoir volume that it drew; empty: unknown
};

/// Where a step with components starts from, for a return to it.
struct ComponentLevel {
    ComponentAmounts amounts;
    std::vector<FlashState> flash;
    CellArray<double> pressure;
    std::vector<WellMixture> wells;
};

/// What the balance of components keeps.
struct ComponentBalance {
    bool started = false;
    Composition initial{}, now{};  // lb-mole in place
    Composition produced{}, injected{};
    double surfaceOil = 0.0, surfaceGas = 0.0;        // in place by a flash at the surface, internal volume
    CellArray<double> cellOil, cellGas, cellFreeGas;  // the same by cell; free: of the vapour
};

/// What runs with components keep beside the records of all runs; empty in others.
struct ComponentRun {
    ComponentStage stage;
    SurfaceFluid surface;
    std::vector<FlashState> surfaceFlash;  // [cell], of the last sum in place
    std::vector<WellMixture> wells;        // as in WellRecord
    std::vector<ComponentSource> sources;
    std::vector<SourceTotals> moved;  // by source
    std::vector<DrawnMixture> drawn;  // as in WellRecord; empty in a first pass over a step
    ComponentLevel level;
    ComponentBalance balance;
    double largestChange = 0.0;  // of an overall fraction of a cell in the last step
    long failedFlashes = 0;      // at the end of the last step
};

/// lb-mole of a phase in an internal volume, `volumeFactor` ft3 in it.
inline double phaseMoles(const ComponentSet& set, double volumeFactor, double pressure, double Z) {
    return volumeFactor * molarDensity(set, pressure, Z);
}

/// lb-mole of liquid or vapour in a reservoir volume of it in a cell.
inline double phaseMolesIn(const ComponentStage& stage, double volumeFactor, const CellState& state,
                           CellId cell, bool isLiquid) {
    const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(cell)];
    return phaseMoles(stage.set, volumeFactor, state.Pressure[cell],
                      isLiquid ? flash.zLiquid : flash.zVapour);
}

}  // namespace kvr
