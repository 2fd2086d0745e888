#include "streamline/mapping/component_mapping.hpp"

#include "base/threads.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double LeastShare = 0.25;  // of the lines' flow through a face that has to tell

void faceMakeUp(const Simulation& s, CellId cell, int axis, ComponentMakeUp& makeUp) {
    const FaceTransfer& lines = s.lines.transfer;
    const double flow = lines.flow(cell, axis), told = lines.told(cell, axis);
    const bool isAlong = flow * s.velocity.CellFaceFlux(cell, 2 * axis) > 0.0;
    if (!isAlong || !(told * flow > 0.0) || std::abs(told) < LeastShare * std::abs(flow)) return;
    const double* const passed = lines.mixture.row(cell) + makeUp.rowOf(axis);
    double* const face = makeUp.face.row(cell) + makeUp.rowOf(axis);
    const double perVolume = 1.0 / (told * s.lines.field.step);
    double sum = 0.0;
    for (int k = 0; k <= makeUp.count; ++k) sum += face[k] = perVolume * passed[k];
    if (std::isfinite(sum) && sum > 0.0)
        makeUp.faceKnown(cell, axis) = flow > 0.0 ? ToldUpward : ToldDownward;
}

void endOfCell(const MappingSums& sums, CellId cell, ComponentMakeUp& makeUp) {
    constexpr double Untold = -1.0;
    double* const end = makeUp.end.row(cell);
    const double* const held = sums.mixture.row(cell);
    double moles = 0.0;
    for (int i = 0; i < makeUp.count; ++i) moles += held[i];
    if (!(sums.weight[cell] > 0.0) || !(moles > 0.0)) {
        end[makeUp.count] = Untold;
        return;
    }
    for (int i = 0; i < makeUp.count; ++i) end[i] = held[i] / moles;
    end[makeUp.count] = sums.water[cell] / sums.weight[cell];
    if (makeUp.left.width == 0) return;
    for (int k = 0; k <= makeUp.count; ++k) makeUp.left(cell, k + 1) = held[k] / sums.weight[cell];
}

}  // namespace

ComponentMakeUp makeUpOfLines(const Simulation& simulation) {
    const Simulation& s = simulation;
    const CellId cells = s.grid.NCELLS;
    ComponentMakeUp makeUp;
    makeUp.count = s.components.stage.set.count;
    makeUp.faceKnown.assign(cells, AxisCount, 0);
    makeUp.face.assign(cells, AxisCount * (makeUp.count + 1), 0.0);
    makeUp.end.assign(cells, makeUp.count + 1, 0.0);
    // Fronts do not start from what cells hold: what those miss of them would add up.
    if (s.lines.field.solver == LineSolver::Analytic) makeUp.left.assign(cells, makeUp.count + 1, 0.0);
#pragma omp parallel for schedule(static) if (cells >= ParallelCells)
    for (CellId cell = 1; cell <= cells; ++cell) {
        if (s.grid.Active[cell] == 0) continue;
        for (int axis = 1; axis <= AxisCount; ++axis) faceMakeUp(s, cell, axis, makeUp);
        endOfCell(s.mapping, cell, makeUp);
    }
    return makeUp;
}

}  // namespace kvr
