#pragma once

#include "base/cell_array.hpp"
#include "fluid/phase_state.hpp"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace kvr {

/// The dynamic cell arrays. One instance is the present state; others of the same type are the old
/// time level, the saved start of the run, and the start of a global iteration.
struct CellState {
    CellArray<double> Pressure;  // oil phase, psia
    CellArray<double> Sw, So, Sg;
    CellArray<double> Rs;            // dimensionless
    CellArray<double> Pb;            // psia
    CellArray<double> PoreFraction;  // porosity at the current pressure
    CellArray<double> PoreVolume;    // BulkVolume * NTG * PoreFraction, internal volume units
    CellArray<double> Bo, Bw, Bg;
    CellArray<double> MuO, MuW, MuG;     // cp
    CellArray<double> RhoO, RhoW, RhoG;  // lb/ft3
    // Runs with components: the phase that a cell has none of, OilSide or GasSide of PhaseSide, 0 where it
    // has both; its density and viscosity are those of the other one. Empty: tables give every phase its own.
    CellArray<std::uint8_t> lacking;
    CellArray<double> KroCell, KrwCell, KrgCell;
    CellArray<double> LambdaO, LambdaW, LambdaG;  // 1/cp
    CellArray<double> PressureW, PressureG;       // psia
    CellArray<double> HeadW, HeadG;  // psi, of segregated phases over the transfer between matrix
                                     // and fractures; empty without gravity drainage
    DirectionArray<double> tracer;   // (cell, tracer) concentration; width 0 without tracers
    // CO2 that has turned into minerals, surface volume of gas in internal units; empty: the run has no such
    // store.
    CellArray<double> SolidGas;
    // DRSDT: Rs at the start of the step, and how far the step may raise it; empty: no limit.
    CellArray<double> RsStart;
    double RsRise = 0.0;
};

/// Rs of oil with free gas beside it, where `saturated` is that of the pressure.
inline double allowedRs(const CellState& state, CellId cell, double saturated) {
    return state.RsStart.empty() ? saturated : std::min(saturated, state.RsStart[cell] + state.RsRise);
}

/// The saturations of a cell with its solution gas, and their way back.
inline PhaseState phasesOf(const CellState& state, CellId cell) {
    return {state.Sw[cell], state.So[cell], state.Sg[cell], state.Rs[cell], state.Pb[cell]};
}
inline void storePhases(const PhaseState& phases, CellId cell, CellState& state) {
    state.Sw[cell] = phases.Sw;
    state.So[cell] = phases.So;
    state.Sg[cell] = phases.Sg;
    state.Rs[cell] = phases.Rs;
    state.Pb[cell] = phases.Pb;
}

/// Sizes every array for `count` cells, all values 0 (formation factors and viscosities 1).
void allocateCellState(CellId count, int tracerCount, CellState& state);

/// Keeps of a state what an old time level is read for and what the rest follows from: pressure, saturations,
/// Rs, bubble points, pore space, formation factors, tracers, and the gas pressure of runs with gas. The
/// other arrays of `level` are left empty.
void keepLevel(bool hasGas, const CellState& state, CellState& level);

/// Puts a kept level back. What it does not hold stands as it is: refreshProperties makes it anew.
void returnToLevel(const CellState& level, CellState& state);

/// Surface amounts that the cells hold, internal volume units (or the same per pore volume where said).
struct CellAmounts {
    CellArray<double> water, oil;
    CellArray<double> gas;  // free and dissolved
};

/// Surface amounts that connections have brought into the reservoir, [well - 1][connection], over so many
/// days.
struct WellMovement {
    double days = 0.0;
    std::vector<std::vector<ConservedAmounts>> amounts;
};

/// What the pressure stage keeps beside CellState.
struct PressureStage {
    CellArray<double>
        mobilityRatio;               // total mobility of the last solve over that of its time level, empty: 1
    bool forecasts = true;           // pressures are solved with mobilities forecast for the mean of the step
    CellArray<double> pressureRise;  // psi a day, of the last step
    bool riseGoesOn = false;         // that step could have been foretold by the one before it
    DirectionArray<double> waterMoved;  // volume a day by low cell and axis 1..3, toward the high side, of
                                        // the last transport; until gravity and capillarity act
    CellArray<std::uint8_t> gasCells;   // with free gas when it began; empty in runs without a gas phase
    CellAmounts exchanged;  // a day, what gravity and capillarity brought into cells in the step before
    double AveragePressure = 0.0;   // psia, bulk-volume mean over active cells
    double leftByFirst = 0.0;       // share of a step's equations that its first solve left ...
    double shareLeftByFirst = 0.0;  // ... and of what may be handed on
    bool failed = false;            // set by PressureStep under step control: no pressure was found
    bool stepCut = false;           // set by PressureStep: it shortened the step
    int hopelessSteps = 0;          // steps in a row that were cut to next to nothing
    bool relPermsHeld = false;      // a step with gas has been cut: relative permeabilities of the time level
                                    // stand over every pressure step from then on
    double largestDeltaP = 0.0;     // psi, largest |DeltaP| of the last converged step over the whole step
    CellArray<double> DeltaP;       // psi, last solver result of the cells
    double processorSeconds = 0.0;

    // Saturations are scaled to sum 1, so after a change of pressure they no longer show the whole amounts.
    CellAmounts timeLevelAmounts;  // held at the time level; accumulation starts here
    CellAmounts flashAmounts;      // per pore volume: what the update between iterations flashes (with gas)
    bool fieldStands = false;  // the flow field and the rates of the present wells are those of a step before
    WellMovement moved;        // by wells since the pressure step
    double deficit =
        0.0;  // reservoir volume since the pressure step that cells were asked for and did not hold
    CellAmounts carried;  // amounts beyond those that the saturations show; carriesAmounts tells which runs
                          // hand them from step to step, empty: none
};

}  // namespace kvr
