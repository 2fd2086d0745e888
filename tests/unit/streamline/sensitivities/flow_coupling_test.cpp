#include "streamline/sensitivities/flow_coupling.hpp"

#include "pressure/pressure_matrix.hpp"
#include "unit/streamline/flow_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>

using namespace kvr;

namespace {

constexpr double InjectedRate = 100.0;  // rb/day
constexpr double ProducerBhp = 1000.0;  // psi
constexpr double WellIndexPerMd = 0.02;

/// A field of unequal permeabilities with a rate injector and producers of both controls, solved from scratch
/// for any permeabilities.
struct SmallField {
    samples::Flow flow = samples::emptyFlow(5, 4, 1, 30.0, 50.0, 10.0);
    PressureMatrix matrix;
    PressureSolver solver;
    std::vector<double> unknowns;  // pressures of cells, then bottom-hole pressures of the rate wells

    SmallField() {
        for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
            setPermeability(cell, 50.0 + 37.0 * (cell * 7 % 11));
        samples::addWell(flow, "I", "inj", 1, InjectedRate);
        samples::addWell(flow, "P1", "prd", 20, -InjectedRate);
        samples::addWell(flow, "P2", "prd", 16, -0.3 * InjectedRate);
        flow.wells.wells[1].WellControl = "bhp";
        flow.wells.wells[1].Bhp = ProducerBhp;
        solver.memory = makeSolverMemory();
        solve();
    }
    void setPermeability(CellId cell, double k) {
        flow.grid.PERMX[cell] = flow.grid.PERMY[cell] = flow.grid.PERMZ[cell] = k;
    }
    [[nodiscard]] double index(const Well& well) const {
        return WellIndexPerMd * flow.grid.PERMX[well.connections[0].ConnCell];
    }
    void solve() {
        const GridModel& grid = flow.grid;
        buildPattern(grid, flow.connections, flow.wells, matrix);
        LinearSystem& system = matrix.system;
        std::fill(system.value.begin(), system.value.end(), 0.0);
        std::fill(system.rhs.begin(), system.rhs.end(), 0.0);
        const auto diagonal = [&](int row) -> double& {
            return system.value[static_cast<std::size_t>(system.rowStart[static_cast<std::size_t>(row)])];
        };
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
            for (int face = 1; face <= 6; ++face) {
                const CellId next = flow.connections.Neighbour(cell, face);
                if (next <= 0) continue;
                const double t = samples::conductance(grid, cell, next, face);
                const auto start = system.rowStart[static_cast<std::size_t>(cell) - 1];
                system.value[static_cast<std::size_t>(start) + matrix.offPlace(cell, face)] -= t;
                diagonal(cell - 1) += t;
            }
        for (const Well& well : flow.wells.wells) diagonal(well.connections[0].ConnCell - 1) += index(well);
        for (const WellRow& row : matrix.wellRows) {
            const Well& well = flow.wells.wells[row.well];
            diagonal(row.row) = index(well);
            system.value[static_cast<std::size_t>(row.entries[0].inCellRow)] = -index(well);
            system.value[static_cast<std::size_t>(row.entries[0].inWellRow)] = -index(well);
            system.rhs[static_cast<std::size_t>(row.row)] = well.TargetRate;
        }
        Well& held = flow.wells.wells[1];
        system.rhs[static_cast<std::size_t>(held.connections[0].ConnCell) - 1] = index(held) * ProducerBhp;
        unknowns.assign(static_cast<std::size_t>(system.size), 0.0);
        EXPECT_EQ(findSolver("dgesv")->route(system, unknowns, *solver.memory).failure, SolveFailure::None);
        held.connections[0].reservoirRate =
            index(held) * (ProducerBhp - pressure(held.connections[0].ConnCell));
        for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
            for (int face = 1; face <= 6; ++face) {
                const CellId next = flow.connections.Neighbour(cell, face);
                if (next > 0)
                    flow.velocity.CellFaceFlux(cell, face) = FaceSign[static_cast<std::size_t>(face) - 1] *
                                                             samples::conductance(grid, cell, next, face) *
                                                             (pressure(cell) - pressure(next));
            }
    }
    [[nodiscard]] double pressure(CellId cell) const { return unknowns[static_cast<std::size_t>(cell) - 1]; }
    [[nodiscard]] double bhp(std::size_t rateWell) const {
        return unknowns[static_cast<std::size_t>(flow.grid.NCELLS) + rateWell];
    }
    FlowCoupling coupling() {
        return {flow.grid, flow.connections, flow.velocity, flow.state, flow.wells,
                matrix,    solver,           "dgesv",       100.0,      100.0};
    }
};

/// Derivative of what `measure` gives by ln k of a cell, by two solves.
template <class Measure>
double perturbed(CellId cell, Measure measure) {
    constexpr double Step = 1e-4;
    SmallField up, down;
    up.setPermeability(cell, up.flow.grid.PERMX[cell] * std::exp(Step));
    down.setPermeability(cell, down.flow.grid.PERMX[cell] * std::exp(-Step));
    up.solve();
    down.solve();
    return (measure(up) - measure(down)) / (2.0 * Step);
}

/// Relative speed that the cells' weights count: sum of weight * ln |face fluxes of the cell|, also where a
/// well makes them flow apart.
double weighedSpeeds(const SmallField& field) {
    double sum = 0.0;
    for (CellId cell = 1; cell <= field.flow.grid.NCELLS; ++cell) {
        double square = 0.0;
        for (int face = 1; face <= 6; ++face) {
            const double flux = field.flow.velocity.CellFaceFlux(cell, face);
            square += flux * flux;
        }
        sum += 0.5 * (cell % 3 + 1) * std::log(square);
    }
    return sum;
}

}  // namespace

TEST(FlowCoupling, GivesTheBottomHolePressureThatPerturbedFieldsHave) {
    SmallField field;
    CellArray<double> row;
    row.assign(field.flow.grid.NCELLS, 0.0);
    for (const auto& [well, rateWell] : {std::pair<std::size_t, std::size_t>{0, 0}, {2, 1}}) {
        ASSERT_TRUE(pressureOfWell(field.coupling(), well, row));
        for (CellId cell = 1; cell <= field.flow.grid.NCELLS; ++cell)
            EXPECT_NEAR(row[cell],
                        perturbed(cell, [rate = rateWell](const SmallField& f) { return f.bhp(rate); }), 1e-4)
                << cell;
    }
}

TEST(FlowCoupling, LeavesAWellUnderPressureControlWithoutOne) {
    SmallField field;
    CellArray<double> row;
    row.assign(field.flow.grid.NCELLS, 1.0);
    ASSERT_TRUE(pressureOfWell(field.coupling(), 1, row));
    for (const double value : row.cells()) EXPECT_EQ(value, 0.0);
}

TEST(FlowCoupling, GivesTheSpeedsThatPerturbedFieldsHave) {
    SmallField field;
    CellArray<double> row;
    row.assign(field.flow.grid.NCELLS, 0.0);
    for (CellId cell = 1; cell <= field.flow.grid.NCELLS; ++cell) row[cell] = cell % 3 + 1;
    ASSERT_TRUE(coupleSpeeds(field.coupling(), row));
    for (CellId cell = 1; cell <= field.flow.grid.NCELLS; ++cell)
        EXPECT_NEAR(row[cell], perturbed(cell, weighedSpeeds), 1e-5) << cell;
}

TEST(FlowCoupling, LeavesTheSystemAsItWas) {
    SmallField field;
    const LinearSystem before = field.matrix.system;
    CellArray<double> row;
    row.assign(field.flow.grid.NCELLS, 1.0);
    FlowCoupling coupling = field.coupling();
    coupling.elapsed = 1e4;
    ASSERT_TRUE(coupleSpeeds(coupling, row));
    EXPECT_EQ(field.matrix.system.value, before.value);
    EXPECT_EQ(field.matrix.system.rhs, before.rhs);
    EXPECT_EQ(field.matrix.system.tolerance, before.tolerance);
}
