#include "streamline/sensitivities/line_sensitivity.hpp"

#include "base/constants.hpp"
#include "base/index.hpp"
#include "pressure/wells/well_index.hpp"
#include "streamline/sensitivities/classic_form.hpp"
#include "streamline/transport/fractional_flow.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr double SlopeShare = 0.1;      // of the line: the stretch that its last slope is taken over
constexpr double SurfaceFloor = 1e-12;  // surface volume per reservoir volume that counts as none
constexpr std::size_t LeastOpenCells = 4096;
constexpr double PsiPerDensityFoot = 1.0 / SquareInchesPerSquareFoot;

double middle(const SolverLine& line, int n) {
    return 0.5 * (line.Tof[at(n) - 1] + line.Tof[at(n)]);
}

/// Fluxes at the end of a line and a stretch before it.
struct LastStretch {
    int node = 0;         // the place lies between the middles of this node and the next
    double share = 0.0;   // of the next node
    double length = 0.0;  // days to the middle of the last node
};

LastStretch lastStretch(const SolverLine& line) {
    const int last = line.nodeCount;
    if (last < 2) return {};
    const double end = middle(line, last);
    const double place = std::min((1.0 - SlopeShare) * line.Tof[at(last)], middle(line, last - 1));
    int n = last - 1;
    while (n > 1 && middle(line, n) > place) --n;
    const double from = middle(line, n);
    const double step = middle(line, n + 1) - from;
    const double share = step > 0.0 ? std::clamp((place - from) / step, 0.0, 1.0) : 0.0;
    return {n, share, end - (from + share * step)};
}

/// -dF / d tof at the end, 1/day; positive where more of the phase follows.
double lastSlope(const SolverLine& line, const LastStretch& stretch, double FlowNode::*flux) {
    if (stretch.length <= 0.0) return 0.0;
    const double before = line.nodes[at(stretch.node)].*flux;
    const double next = line.nodes[at(stretch.node) + 1].*flux;
    const double there = before + stretch.share * (next - before);
    return (there - line.nodes[at(line.nodeCount)].*flux) / stretch.length;
}

void takeTravelTime(const SensitivitySettings& settings, SolverLine& line, LineSensitivity& result) {
    double FlowNode::*const numerator = settings.gasOilRatio ? &FlowNode::Fg : &FlowNode::Fw;
    const LastStretch stretch = lastStretch(line);
    const double top = lastSlope(line, stretch, numerator);
    const double base = lastSlope(line, stretch, &FlowNode::Fo);
    for (int n = 1; n <= result.count; ++n) {
        result.top[at(n)] = top * line.tracedDeltaTof[at(n)];
        result.base[at(n)] = base * line.tracedDeltaTof[at(n)];
    }
}

/// Days over the saturation at the well, for a line that brings the phase.
void takeClassicTime(const SensitivitySettings& settings, const SolverLine& line, LineSensitivity& result) {
    const FlowNode& last = line.nodes[at(line.nodeCount)];
    const std::vector<double>* axis = last.table == nullptr  ? nullptr
                                      : settings.gasOilRatio ? &last.table->SgAxis
                                                             : &last.table->SwAxis;
    const double least = axis == nullptr || axis->empty() ? 0.0 : axis->front();
    const double saturation = std::max(settings.gasOilRatio ? last.Sg : last.Sw, least);
    const bool brings = (settings.gasOilRatio ? last.Fg : last.Fw) > 0.0 && saturation > 0.0;
    for (int n = 1; n <= result.count; ++n) {
        result.top[at(n)] = brings ? travelTimeTerm(line.tracedDeltaTof[at(n)], saturation, 1.0) : 0.0;
        result.base[at(n)] = 0.0;
    }
}

double totalMobility(const CellState& state, CellId cell) {
    return state.LambdaO[cell] + state.LambdaW[cell] + (state.LambdaG.empty() ? 0.0 : state.LambdaG[cell]);
}

/// Density of what flows, lb/ft3.
double flowingDensity(const CellState& state, CellId cell) {
    const double mobility = totalMobility(state, cell);
    if (mobility <= 0.0) return 0.0;
    const double gas = state.LambdaG.empty() ? 0.0 : state.LambdaG[cell] * state.RhoG[cell];
    return (state.LambdaO[cell] * state.RhoO[cell] + state.LambdaW[cell] * state.RhoW[cell] + gas) / mobility;
}

/// psi between two cells that does not come from the weight of what flows.
double potentialDrop(const GridModel& grid, const CellState& state, CellId from, CellId to) {
    const double density = 0.5 * (flowingDensity(state, from) + flowingDensity(state, to));
    const double depth = centreOf(grid, to)[2] - centreOf(grid, from)[2];
    return state.Pressure[from] - state.Pressure[to] + PsiPerDensityFoot * density * depth;
}

const Well* wellOf(const WellRecord& wells, int number) {
    return number >= 1 && at(number) <= wells.wells.size() ? &wells.wells[at(number) - 1] : nullptr;
}

/// psi between a well and a cell of it, where the well index follows the permeability; 0 otherwise.
double wellDrop(const CellState& state, const Well& well, CellId cell) {
    for (const WellConnection& connection : well.connections)
        if (connection.ConnCell == cell && followsPermeability(connection))
            return std::abs(well.Bhp + connection.ConnHead - state.Pressure[cell]);
    return 0.0;
}

/// The drop of the line in each of its cells, to `drop` [1..count].
void takeDrops(const GridModel& grid, const CellState& state, const Well& begin, const Well& end,
               const SolverLine& line, int count, std::vector<double>& drop) {
    std::fill_n(drop.begin(), at(count) + 1, 0.0);
    for (int n = 1; n < count; ++n) {
        const CellId here = line.tracedCell[at(n)];
        const CellId next = line.tracedCell[at(n) + 1];
        if (here == next) continue;
        const double whole = potentialDrop(grid, state, here, next);
        const double share = resistanceShare(grid, here, next);
        drop[at(n)] += share * whole;
        drop[at(n) + 1] += (1.0 - share) * whole;
    }
    drop[1] += wellDrop(state, begin, line.tracedCell[1]);
    drop[at(count)] += wellDrop(state, end, line.tracedCell[at(count)]);
}

/// Days of the line before the middle of node n.
double timeBefore(const SolverLine& line, int n) {
    return line.tracedTof[at(n)] - 0.5 * line.tracedDeltaTof[at(n)];
}

void takePressure(const GridModel& grid, const CellState& state, const Well& begin, const Well& end,
                  const SolverLine& line, LineSensitivity& result) {
    takeDrops(grid, state, begin, end, line, result.count, result.atEnd);
    const bool fixed = !isRateControlled(begin) || !isRateControlled(end);
    const double whole = line.tracedTof[at(result.count)];
    for (int n = 1; n <= result.count; ++n) {
        const double before = classicShare(fixed, timeBefore(line, n), whole);
        const double behind = fixed ? 1.0 : 1.0 - before;
        const double drop = result.atEnd[at(n)];
        result.atBegin[at(n)] = -behind * drop;
        result.atEnd[at(n)] = before * drop;
    }
}

/// Cross section of the line's tube in a segment, ft2: its pore volume over porosity and length.
double tubeArea(const GridModel& grid, const SolverLine& line, int n, double flux) {
    const double porosity = std::max(grid.PORO[line.tracedCell[at(n)]], MachineEpsilon);
    const double length = std::max(line.tracedStepLength[at(n)], MachineEpsilon);
    return std::max(flux * line.tracedDeltaTof[at(n)] * CubicFeetPerBarrel / (porosity * length),
                    MachineEpsilon);
}

SegmentNeighbourhood neighbourhood(const GridModel& grid, const SolverLine& line, int n, int count) {
    const auto half = [&](int m) { return 0.5 * std::max(line.tracedStepLength[at(m)], MachineEpsilon); };
    const auto permeability = [&](int m) {
        return std::max(grid.PERMX[line.tracedCell[at(m)]], MachineEpsilon);
    };
    SegmentNeighbourhood s;
    s.a = half(n);
    s.k = permeability(n);
    s.hasBefore = n > 1;
    s.hasNext = n < count;
    if (s.hasBefore) s.b = half(n - 1), s.kb = permeability(n - 1);
    if (s.hasNext) s.c = half(n + 1), s.kf = permeability(n + 1);
    return s;
}

void takeClassicPressure(const GridModel& grid, const CellState& state, const Well& begin, const Well& end,
                         double flux, const SolverLine& line, LineSensitivity& result) {
    const int count = result.count;
    const double M = 0.5 * (flux / tubeArea(grid, line, 1, flux) + flux / tubeArea(grid, line, count, flux));
    const double whole = line.tracedTof[at(count)];
    for (int n = 1; n <= count; ++n) {
        const double mobility = std::max(totalMobility(state, line.tracedCell[at(n)]), MachineEpsilon);
        const double area = tubeArea(grid, line, n, flux);
        SegmentNeighbourhood s = neighbourhood(grid, line, n, count);
        s.D = std::max(area * M / mobility * CubicFeetPerBarrel / (2.0 * s.a), MachineEpsilon);
        const double S = M * (-forwardTerm(s) - backwardTerm(s)) / mobility / flux / area;
        const double first = classicShare(!isRateControlled(begin), line.tracedTof[at(n) - 1], whole);
        const double second = classicShare(!isRateControlled(end), line.tracedTof[at(n)], whole);
        result.atBegin[at(n)] = first * S;
        result.atEnd[at(n)] = -second * S;
    }
}

void sizeLists(int count, LineSensitivity& result) {
    const std::size_t size = at(count) + 1;
    if (result.cell.size() >= size) return;
    result.cell.resize(size);
    for (std::vector<double>* list : {&result.top, &result.base, &result.atBegin, &result.atEnd})
        list->resize(size);
}

/// Merges the sums where the open end has grown beyond them.
void keepSmall(WellSensitivity& well) {
    if (well.cells.size() > 2 * well.merged + LeastOpenCells) mergeCells(well);
}

}  // namespace

double resistanceShare(const GridModel& grid, CellId cell, CellId neighbour) {
    const auto resistance = [&](CellId c) {
        double length = grid.DZ[c];
        double permeability = grid.PERMZ[c];
        if (grid.CellI[cell] != grid.CellI[neighbour]) {
            length = grid.DX[c];
            permeability = grid.PERMX[c];
        } else if (grid.CellJ[cell] != grid.CellJ[neighbour]) {
            length = grid.DY[c];
            permeability = grid.PERMY[c];
        }
        return length / std::max(permeability, MachineEpsilon);
    };
    const double here = resistance(cell);
    const double both = here + resistance(neighbour);
    return both > 0.0 && std::isfinite(both) ? here / both : 0.5;
}

void takeSensitivity(const SensitivitySettings& settings, const GridModel& grid, const CellState& state,
                     const WellRecord& wells, bool hasGas, double lineFlux, SolverLine& line,
                     LineSensitivity& result) {
    result.count = 0;
    const Well* const producer = wellOf(wells, line.producer);
    if (producer == nullptr || isInjector(*producer)) return;
    result.count = line.tracedNodeCount;
    result.injector = line.injector;
    result.producer = line.producer;
    sizeLists(result.count, result);
    std::copy_n(line.tracedCell.begin(), at(result.count) + 1, result.cell.begin());
    evaluateFluxes(hasGas, 1, line.nodeCount, line);
    const FlowNode& last = line.nodes[at(line.nodeCount)];
    result.outletTop = settings.gasOilRatio ? last.Fg : last.Fw;
    result.outletBase = last.Fo;
    if (settings.travelTime == SensitivityForm::Classic)
        takeClassicTime(settings, line, result);
    else
        takeTravelTime(settings, line, result);
    const Well* const injector = wellOf(wells, line.injector);
    if (injector == nullptr) {
        for (std::vector<double>* list : {&result.atBegin, &result.atEnd})
            std::fill_n(list->begin(), at(result.count) + 1, 0.0);
    } else if (settings.pressure == SensitivityForm::Classic) {
        takeClassicPressure(grid, state, *injector, *producer, lineFlux, line, result);
    } else {
        takePressure(grid, state, *injector, *producer, line, result);
    }
}

void addSensitivity(const LineSensitivity& line, double weight, StepSensitivities& step) {
    if (line.count < 1 || at(line.producer) > step.wells.size()) return;
    WellSensitivity& producer = step.wells[at(line.producer) - 1];
    producer.lines += weight;
    producer.top += weight * line.outletTop;
    producer.base += weight * line.outletBase;
    for (int n = 1; n <= line.count; ++n)
        producer.cells.push_back({line.cell[at(n)], weight * line.top[at(n)], weight * line.base[at(n)],
                                  weight * line.atEnd[at(n)]});
    keepSmall(producer);
    if (line.injector < 1 || at(line.injector) > step.wells.size()) return;
    WellSensitivity& injector = step.wells[at(line.injector) - 1];
    injector.lines += weight;
    for (int n = 1; n <= line.count; ++n)
        injector.cells.push_back({line.cell[at(n)], 0.0, 0.0, weight * line.atBegin[at(n)]});
    keepSmall(injector);
}

void mergeCells(WellSensitivity& well) {
    std::vector<CellSensitivity>& cells = well.cells;
    if (cells.size() <= well.merged) return;
    // Values of a cell are added in the order of the lines, so that sums do not depend on when they merge.
    std::stable_sort(cells.begin(), cells.end(),
                     [](const CellSensitivity& a, const CellSensitivity& b) { return a.cell < b.cell; });
    std::size_t last = 0;
    for (std::size_t n = 1; n < cells.size(); ++n) {
        if (cells[n].cell == cells[last].cell) {
            cells[last].top += cells[n].top;
            cells[last].base += cells[n].base;
            cells[last].pressure += cells[n].pressure;
        } else {
            cells[++last] = cells[n];
        }
    }
    cells.resize(last + 1);
    well.merged = cells.size();
}

void fillTravelTime(const SensitivitySettings& settings, const Well& well, double lineFlux,
                    WellSensitivity& sums, CellArray<double>& values) {
    std::fill(values.slots.begin(), values.slots.end(), 0.0);
    mergeCells(sums);
    if (sums.lines <= 0.0 || isInjector(well)) return;
    const double ratio = rateRatio(std::abs(well.reservoirRate), lineFlux, sums.lines);
    if (settings.travelTime == SensitivityForm::Classic) {
        for (const CellSensitivity& c : sums.cells) values[c.cell] = c.top / ratio;
        return;
    }
    // Cut: W / (W + O); gas-oil ratio: G / O. Flow that comes without lines does not move the well's ratio.
    const double whole = settings.gasOilRatio ? sums.base : sums.top + sums.base;
    if (whole <= SurfaceFloor * sums.lines) return;
    const double covered =
        well.reservoirRate != 0.0 ? std::min(1.0, sums.lines * lineFlux / std::abs(well.reservoirRate)) : 1.0;
    const double unit = settings.gasOilRatio ? GasRatioFactor : 1.0;
    for (const CellSensitivity& c : sums.cells)
        values[c.cell] = unit * covered * (sums.base * c.top - sums.top * c.base) / (whole * whole);
}

void fillPressure(const Well& well, double lineFlux, WellSensitivity& sums, CellArray<double>& values) {
    std::fill(values.slots.begin(), values.slots.end(), 0.0);
    mergeCells(sums);
    if (sums.lines <= 0.0) return;
    const double ratio = rateRatio(std::abs(well.reservoirRate), lineFlux, sums.lines);
    for (const CellSensitivity& c : sums.cells) values[c.cell] = c.pressure / ratio;
}

}  // namespace kvr
