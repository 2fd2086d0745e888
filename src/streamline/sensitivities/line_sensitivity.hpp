#pragma once

#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"
#include "streamline/sensitivities/step_sensitivities.hpp"
#include "streamline/transport/solver_line.hpp"

#include <vector>

namespace kvr {

/// What one line says of the cells it crosses, from its inlet, [1..count] in each list.
struct LineSensitivity {
    int count = 0;                   // 0: a line that reached no producer
    int injector = 0, producer = 0;  // 1-based wells, 0 for none
    double outletTop = 0.0, outletBase = 0.0;
    std::vector<CellId> cell;
    std::vector<double> top, base;       // at the producer, see CellSensitivity
    std::vector<double> atBegin, atEnd;  // psi per unit of ln k: of the injector, of the producer
};

/// Forms the sensitivities of a line whose transport of the step is done. It needs its fluxes F anew and
/// leaves them in the nodes.
///
/// Travel time, F the flux of a phase at the end of the line, T its time of flight: what a change of ln k of
/// a cell does to the time of flight is -DeltaTof there (speed follows permeability, pressure gradient and
/// path stay), and at the producer the line shows F(T), so that
///   dF / d ln k = -(dF / d tof) DeltaTof.
/// The slope is taken over the last tenth of the line, which also spans a front. For a saturation of speed
/// f'(S) it is the same as a shift of its arrival by DeltaTof / f'(S), and holds at a front too.
///
/// Pressure: the potential drop between two cells belongs to each by its share of the resistance,
/// l / k of the half length l toward the other; the drop from a well cell into the well to that cell, where
/// the well index follows the permeability. A higher k takes its part of the drop away: from the injector's
/// pressure, and less is drawn at the producer. Between two rate wells each takes the share of the pore
/// volume that lies on the other side of the cell, since the mean pressure stays; opposite a "bhp" well all.
/// The classic forms are those of classic_form.hpp.
void takeSensitivity(const SensitivitySettings& settings, const GridModel& grid, const CellState& state,
                     const WellRecord& wells, bool hasGas, double lineFlux, SolverLine& line,
                     LineSensitivity& result);

/// Share of the resistance between the centres of two neighbours that lies in `cell`: l / k of its half
/// length along the axis that they differ on.
double resistanceShare(const GridModel& grid, CellId cell, CellId neighbour);

/// Adds a line to the sums of its two wells. `weight`: its flow over that of a launched line.
void addSensitivity(const LineSensitivity& line, double weight, StepSensitivities& step);

/// Brings the cells of a well together.
void mergeCells(WellSensitivity& well);

/// One value a cell of a finished step: change of the matched ratio per unit of ln k (classic: days), and psi
/// per unit of ln k. `values` is cleared first.
void fillTravelTime(const SensitivitySettings& settings, const Well& well, double lineFlux,
                    WellSensitivity& sums, CellArray<double>& values);
void fillPressure(const Well& well, double lineFlux, WellSensitivity& sums, CellArray<double>& values);

}  // namespace kvr
