#include "streamline/sensitivities/flow_coupling.hpp"

#include "base/index.hpp"
#include "pressure/wells/well_index.hpp"
#include "streamline/sensitivities/line_sensitivity.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

constexpr double CouplingTolerance = 1e-6;  // of the residual of a solve

/// Volume a day per psi between a cell and its neighbour across a face.
double conductance(const FlowCoupling& flow, CellId cell, int face) {
    const auto start = flow.matrix.system.rowStart[at(cell) - 1];
    return -flow.matrix.system.value[static_cast<std::size_t>(start) + flow.matrix.offPlace(cell, face)];
}

template <class Use>
void forEachFace(const FlowCoupling& flow, Use use) {
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
        for (int axis = 1; axis <= AxisCount; ++axis) {
            const CellId next = flow.connections.Neighbour(cell, 2 * axis);
            if (next > 0) use(cell, next, axis);
        }
}

/// What J gains by a volume a day more through each face, by low cell and axis. The relative speed in a cell
/// is the factor that comes closest to the changes of its face fluxes, sum(F dF) / sum(F^2) over the six
/// faces. The mean flux along an axis would not do: it is next to nothing in the cell of a well, whose faces
/// flow apart.
DirectionArray<double> faceGains(const FlowCoupling& flow, const CellArray<double>& row) {
    DirectionArray<double> gain;
    gain.assign(flow.grid.NCELLS, AxisCount, 0.0);
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell) {
        if (row[cell] == 0.0) continue;
        double square = 0.0;
        for (int face = 1; face <= 2 * AxisCount; ++face) {
            const double flux = flow.velocity.CellFaceFlux(cell, face);
            square += flux * flux;
        }
        if (square <= 0.0) continue;
        const double share = row[cell] / square;
        for (int axis = 1; axis <= AxisCount; ++axis) {
            const CellId before = flow.connections.Neighbour(cell, 2 * axis - 1);
            if (before > 0) gain(before, axis) += share * flow.velocity.CellFaceFlux(cell, 2 * axis - 1);
            if (flow.connections.Neighbour(cell, 2 * axis) > 0)
                gain(cell, axis) += share * flow.velocity.CellFaceFlux(cell, 2 * axis);
        }
    }
    return gain;
}

/// Rest of the storage of the cells that no well is connected to, when it is spread over more days; taken off
/// the diagonals, which `kept` takes.
void spreadStorage(FlowCoupling& flow, std::vector<double>& kept) {
    LinearSystem& system = flow.matrix.system;
    const double rest = flow.elapsed > flow.step ? 1.0 - flow.step / flow.elapsed : 0.0;
    std::vector<bool> holdsWell(at(flow.grid.NCELLS) + 1, false);
    for (const Well& well : flow.wells.wells)
        for (const WellConnection& connection : well.connections) holdsWell[at(connection.ConnCell)] = true;
    kept.resize(at(flow.grid.NCELLS));
    for (std::size_t row = 0; row < kept.size(); ++row) {
        const auto first = static_cast<std::size_t>(system.rowStart[row]);
        const auto end = static_cast<std::size_t>(system.rowStart[row + 1]);
        kept[row] = system.value[first];
        if (holdsWell[row + 1] || flow.grid.Active[static_cast<CellId>(row) + 1] == 0) continue;
        double storage = 0.0;
        for (std::size_t n = first; n < end; ++n) storage += system.value[n];
        system.value[first] -= rest * std::max(0.0, storage);
    }
}

/// A psi = r; nothing of the system or its solver but their scratch is left changed.
bool solveAdjoint(const FlowCoupling& given, std::vector<double> right, std::vector<double>& psi) {
    FlowCoupling flow = given;
    LinearSystem& system = flow.matrix.system;
    const SolverRow* const row = findSolver(flow.solverWord);
    if (row == nullptr || flow.solver.memory == nullptr) return false;
    const double tolerance = std::exchange(system.tolerance, CouplingTolerance);
    const double reference = std::exchange(system.reference, 0.0);
    std::vector<double> diagonals;
    spreadStorage(flow, diagonals);
    system.rhs.swap(right);
    psi.assign(at(system.size), 0.0);
    const SolveResult result = row->route(system, psi, *flow.solver.memory);
    system.rhs.swap(right);
    for (std::size_t n = 0; n < diagonals.size(); ++n)
        system.value[static_cast<std::size_t>(system.rowStart[n])] = diagonals[n];
    system.tolerance = tolerance;
    system.reference = reference;
    return result.failure == SolveFailure::None;
}

/// psi . dR / d ln k of the cells, on top of what they hold. Where `gain` has faces, the flux that a higher
/// transmissibility brings counts by it as well.
void addResidualChanges(const FlowCoupling& flow, const std::vector<double>& psi,
                        const DirectionArray<double>* gain, CellArray<double>& row) {
    forEachFace(flow, [&](CellId cell, CellId next, int axis) {
        const double flux = flow.velocity.CellFaceFlux(cell, 2 * axis);
        const double direct = gain == nullptr ? 0.0 : (*gain)(cell, axis);
        const double change = flux * (direct - psi[at(cell) - 1] + psi[at(next) - 1]);
        const double share = resistanceShare(flow.grid, cell, next);
        row[cell] += share * change;
        row[next] += (1.0 - share) * change;
    });
    for (const Well& well : flow.wells.wells) {
        const auto found = std::find_if(flow.matrix.wellRows.begin(), flow.matrix.wellRows.end(),
                                        [&](const WellRow& r) { return &flow.wells.wells[r.well] == &well; });
        const bool hasRow = found != flow.matrix.wellRows.end();
        for (const WellConnection& connection : well.connections) {
            if (!followsPermeability(connection)) continue;
            const double there = hasRow ? psi[at(found->row)] : 0.0;
            row[connection.ConnCell] += connection.reservoirRate * (psi[at(connection.ConnCell) - 1] - there);
        }
    }
}

}  // namespace

bool coupleSpeeds(const FlowCoupling& flow, CellArray<double>& row) {
    if (flow.matrix.offPlace.slots.empty()) return false;
    const DirectionArray<double> gain = faceGains(flow, row);
    std::vector<double> right(at(flow.matrix.system.size), 0.0);
    forEachFace(flow, [&](CellId cell, CellId next, int axis) {
        const double change = gain(cell, axis) * conductance(flow, cell, 2 * axis);
        right[at(cell) - 1] += change;
        right[at(next) - 1] -= change;
    });
    std::vector<double> psi;
    if (!solveAdjoint(flow, std::move(right), psi)) return false;
    std::fill(row.slots.begin(), row.slots.end(), 0.0);
    addResidualChanges(flow, psi, &gain, row);
    return true;
}

bool pressureOfWell(const FlowCoupling& flow, std::size_t well, CellArray<double>& row) {
    std::fill(row.slots.begin(), row.slots.end(), 0.0);
    const auto found = std::find_if(flow.matrix.wellRows.begin(), flow.matrix.wellRows.end(),
                                    [&](const WellRow& r) { return r.well == well; });
    if (found == flow.matrix.wellRows.end()) return true;
    std::vector<double> right(at(flow.matrix.system.size), 0.0);
    right[at(found->row)] = 1.0;
    std::vector<double> psi;
    if (!solveAdjoint(flow, std::move(right), psi)) return false;
    addResidualChanges(flow, psi, nullptr, row);
    return true;
}

}  // namespace kvr
