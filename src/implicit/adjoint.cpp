#include "implicit/adjoint.hpp"

#include "base/constants.hpp"
#include "implicit/jacobian.hpp"
#include "implicit/newton_update.hpp"
#include "implicit/residual_ramp.hpp"
#include "implicit/well_borders.hpp"
#include "pressure/properties.hpp"
#include "pressure/wells/well_index.hpp"
#include "pressure/wells/well_rates.hpp"
#include "streamline/sensitivities/line_sensitivity.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

namespace {

constexpr double AdjointTolerance = 1e-7;  // of the residual of a solve
constexpr int AdjointIterations = 400;

/// The balances of one step, linear about its end.
struct LinearStep {
    CellState state;
    WellRecord wells;
    ImplicitWork work;
    BlockSystem transposed;
    std::vector<std::vector<ConnectionSlopes>> flows;  // by well
};

/// One backward pass.
struct BackwardPass {
    std::vector<double> cells, wells;  // l of the level behind
    std::vector<double> right;         // (dR_n+1/dx_n)' l_n+1, of the other sign
    bool begun = false;
};

void takeLevel(const Simulation& s, const RunLevel& level, const RunLevel* before, LinearStep& step) {
    CellState& state = step.state;
    state.Pressure = level.Pressure;
    state.Sw = level.Sw;
    state.Sg = level.Sg;
    state.Rs = level.Rs;
    state.Pb = level.Pb;
    state.RsRise = level.RsRise;
    if (!state.RsStart.empty() && before != nullptr) state.RsStart = before->Rs;
    for (CellId c = 1; c <= state.So.count(); ++c) state.So[c] = 1.0 - state.Sw[c] - state.Sg[c];
    step.wells = level.wells;
    chooseUnknowns(s.fluids, state, step.work);
    refreshProperties(s.grid, s.fluids, state);
    if (s.fluids.hasGas) rampOil(s.grid, s.fluids, state);
}

/// `there` becomes the transpose of a block.
void transposeBlock(std::span<const double> from, std::size_t size, std::span<double> there) {
    for (std::size_t e = 0; e < size; ++e)
        for (std::size_t u = 0; u < size; ++u) there[u * size + e] = from[e * size + u];
}

void transposeSystem(LinearStep& step) {
    BlockSystem& from = step.work.system;
    BlockSystem& to = step.transposed;
    const auto size = static_cast<std::size_t>(from.blockSize);
    for (const int place : from.diagonal) transposeBlock(from.block(place), size, to.block(place));
    for (const ImplicitConnection& connection : step.work.connections) {
        transposeBlock(from.block(connection.places.forward), size, to.block(connection.places.backward));
        transposeBlock(from.block(connection.places.backward), size, to.block(connection.places.forward));
    }
    to.wells = from.wells;
    for (WellBorder& well : to.wells) std::swap(well.rowBlocks, well.columnBlocks);
}

void linearise(const Simulation& s, const RunLevel& level, const RunLevel* before, LinearStep& step) {
    buildWellBorders(level.wells, step.work);
    takeLevel(s, level, before, step);
    assembleCells(level.dt, s.grid, s.fluids, step.state, step.work);
    addWells(s.units, s.grid, s.fluids, step.state, level.averagePressure, step.wells, step.work);
    transposeSystem(step);
    step.flows.clear();
    for (const Well& well : step.wells.wells)
        step.flows.push_back(
            connectionSlopes(s.units, s.grid, s.fluids, step.state, level.averagePressure, well, step.work));
}

std::size_t placeOf(const WellRecord& wells, const std::string& name) {
    return static_cast<std::size_t>(std::find_if(wells.wells.begin(), wells.wells.end(),
                                                 [&](const Well& w) { return w.WellName == name; }) -
                                    wells.wells.begin());
}

/// d quantity / d rate of each component of the well, 0 for a well that gives nothing.
std::array<double, 3> gainsOf(WellQuantity quantity, const std::vector<ConnectionSlopes>& flows) {
    std::array<double, 3> rate{};
    for (const ConnectionSlopes& flow : flows)
        for (std::size_t c = 0; c < 3; ++c) rate[c] += flow.rate[c];
    const double water = rate[WaterPhase], oil = rate[OilPhase], gas = rate[GasPhase];
    if (quantity == WellQuantity::Cut && water + oil != 0.0) {
        const double square = (water + oil) * (water + oil);
        return {oil / square, -water / square, 0.0};
    }
    if (quantity == WellQuantity::GasOilRatio && oil != 0.0)
        return {0.0, -GasRatioFactor * gas / (oil * oil), GasRatioFactor / oil};
    return {};
}

/// Takes dg/dx of a level from the right side; gives the part of the wells' own indices to the cells.
void subtractQuantity(const WellFunctional& functional, double weight, const LinearStep& step,
                      std::vector<double>& rightCells, std::vector<double>& rightWells,
                      CellArray<double>& derivative) {
    const std::size_t w = placeOf(step.wells, functional.well);
    if (w == step.wells.wells.size()) return;
    if (functional.quantity == WellQuantity::Pressure) {
        rightWells[w] -= weight;
        return;
    }
    const auto size = static_cast<std::size_t>(step.work.system.blockSize);
    const std::array<double, 3> gain = gainsOf(functional.quantity, step.flows[w]);
    for (const ConnectionSlopes& flow : step.flows[w]) {
        const WellConnection& connection = step.wells.wells[w].connections[flow.connection];
        for (std::size_t c = 0; c < 3; ++c) {
            const double each = weight * gain[c];
            rightWells[w] -= each * flow.byBhp[c];
            for (std::size_t u = 0; u < size; ++u)
                rightCells[static_cast<std::size_t>(flow.row) * size + u] -= each * flow.byUnknown[c][u];
            if (followsPermeability(connection)) derivative[connection.ConnCell] += each * flow.rate[c];
        }
    }
}

/// Adds l' dR/d ln k of a step.
void addResiduals(const GridModel& grid, const LinearStep& step, const BackwardPass& pass,
                  CellArray<double>& derivative) {
    const auto size = static_cast<std::size_t>(step.work.system.blockSize);
    for (const ImplicitConnection& connection : step.work.connections) {
        const std::array<double, 3> flow = connectionFlows(connection, step.work);
        const auto first = static_cast<std::size_t>(connection.first);
        const auto second = static_cast<std::size_t>(connection.second);
        double gain = 0.0;
        for (std::size_t c = 0; c < size; ++c)
            gain += flow[c] * (pass.cells[second * size + c] - pass.cells[first * size + c]);
        const CellId a = step.work.cellOfRow[first], b = step.work.cellOfRow[second];
        const double share = resistanceShare(grid, a, b);
        derivative[a] += share * gain;
        derivative[b] += (1.0 - share) * gain;
    }
    for (std::size_t w = 0; w < step.flows.size(); ++w)
        for (const ConnectionSlopes& flow : step.flows[w]) {
            const WellConnection& connection = step.wells.wells[w].connections[flow.connection];
            if (!followsPermeability(connection)) continue;
            double gain = pass.wells[w] * flow.controlled;
            for (std::size_t c = 0; c < size; ++c)
                gain -= flow.rate[c] * pass.cells[static_cast<std::size_t>(flow.row) * size + c];
            derivative[connection.ConnCell] += gain;
        }
}

/// (dR_n/dx_n-1)' l_n needs the storage at the end of the step before: that of the present step by l, for the
/// length of the step behind it.
void carryStorage(const LinearStep& step, double dt, double dtBehind, const std::vector<double>& cells,
                  std::vector<double>& right) {
    const auto size = static_cast<std::size_t>(step.work.system.blockSize);
    const std::vector<double>& storage = step.work.system.accumulation;
    for (std::size_t row = 0; row < step.work.cellOfRow.size(); ++row)
        for (std::size_t u = 0; u < size; ++u) {
            double sum = 0.0;
            for (std::size_t e = 0; e < size; ++e)
                sum += storage[(row * size + e) * size + u] * cells[row * size + e];
            right[row * size + u] = sum * dt / dtBehind;
        }
}

bool solve(LinearStep& step, BlockSolverMemory& memory, BackwardPass& pass) {
    const std::vector<double>& right = step.transposed.rhs;
    const bool nothing = std::all_of(right.begin(), right.end(), [](double v) { return v == 0.0; }) &&
                         std::all_of(step.transposed.wells.begin(), step.transposed.wells.end(),
                                     [](const WellBorder& w) { return w.rhs == 0.0; });
    pass.cells.assign(right.size(), 0.0);
    pass.wells.assign(step.transposed.wells.size(), 0.0);
    if (nothing) return true;
    const BlockSolveLimits limits{AdjointTolerance, AdjointIterations, BlockPreconditioner::BlockIlu};
    return solveBlockSystem(step.transposed, limits, pass.cells, pass.wells, memory).failure ==
           SolveFailure::None;
}

bool passLevel(const Simulation& s, std::size_t n, std::span<const RunLevel> levels,
               const WellFunctional& functional, LinearStep& step, BlockSolverMemory& memory,
               BackwardPass& pass, CellArray<double>& derivative) {
    const double weight = functional.weights[n];
    if (weight == 0.0 && !pass.begun) return true;
    std::vector<double>& right = step.transposed.rhs;
    std::vector<double> rightWells(step.wells.wells.size(), 0.0);
    right.assign(right.size(), 0.0);
    if (pass.begun) carryStorage(step, levels[n].dt, levels[n + 1].dt, pass.cells, right);
    pass.begun = true;
    if (weight != 0.0) subtractQuantity(functional, weight, step, right, rightWells, derivative);
    for (std::size_t w = 0; w < rightWells.size(); ++w) step.transposed.wells[w].rhs = rightWells[w];
    if (!solve(step, memory, pass)) return false;
    addResiduals(s.grid, step, pass, derivative);
    return true;
}

}  // namespace

RunLevel levelOf(const Simulation& s, double dt) {
    const CellState& state = s.state;
    return {s.clock.time, dt,       state.Pressure, state.Sw,
            state.Sg,     state.Rs, state.Pb,       s.pressure.AveragePressure,
            state.RsRise, s.wells};
}

bool adjointDerivatives(const Simulation& s, std::span<const RunLevel> levels,
                        std::span<const WellFunctional> functionals,
                        std::vector<CellArray<double>>& derivatives) {
    derivatives.assign(functionals.size(), {});
    for (CellArray<double>& derivative : derivatives) derivative.assign(s.grid.NCELLS, 0.0);
    LinearStep step;
    step.state = s.state;
    buildImplicitPattern(s.grid, s.connections, s.fluids.hasGas, step.work);
    setConnectionTrans(s.units, s.connections, step.work);
    for (CellArray<double>* amounts :
         {&step.work.oldAmounts.water, &step.work.oldAmounts.oil, &step.work.oldAmounts.gas})
        amounts->assign(s.grid.NCELLS, 0.0);
    step.transposed = step.work.system;
    step.transposed.accumulation.clear();
    const BlockSolverMemoryPointer memory = makeBlockSolverMemory();
    std::vector<BackwardPass> passes(functionals.size());
    for (std::size_t n = levels.size(); n-- > 0;) {
        linearise(s, levels[n], n > 0 ? &levels[n - 1] : nullptr, step);
        for (std::size_t f = 0; f < functionals.size(); ++f)
            if (!passLevel(s, n, levels, functionals[f], step, *memory, passes[f], derivatives[f]))
                return false;
    }
    return true;
}

}  // namespace kvr
