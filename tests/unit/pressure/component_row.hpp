#pragma once

#include "base/constants.hpp"
#include "fluid/table_checks.hpp"
#include "pressure/component_properties.hpp"
#include "pressure/component_step.hpp"
#include "pressure/velocity.hpp"
#include "unit/fluid/components/component_samples.hpp"

#include <algorithm>
#include <vector>

namespace kvr {

inline constexpr double Area = 1000.0;  // ft2
inline constexpr double Porosity = 0.2;
inline constexpr double Permeability = 100.0;  // md
inline constexpr double Tolerance = 1e-8;      // psi

/// A row of equal cells, level or falling, with one mixture.
struct Row {
    Simulation run;
    GridModel& grid = run.grid;
    ConnectionTable& connections = run.connections;
    FluidTables& tables = run.fluids;
    CellState& state = run.state;
    ComponentStage& stage = run.components.stage;
    double given = 0.0;  // lb-mole a day that the injector is asked for

    Row(const FluidTables& mixture, CellId cells, double length, double fall) {
        run.console = Console{nullptr, nullptr, nullptr};
        run.options.pressureSolver = "dgesv";
        run.options.PressureTolerance = Tolerance;
        run.options.MaxPressureIterations = 30;
        tables = mixture;
        fillTables();
        grid.NX = grid.NCELLS = cells;
        grid.NY = grid.NZ = 1;
        grid.Active.assign(cells, 1);
        grid.SATNUM.assign(cells, 1);
        for (CellArray<int>* places : {&grid.CellI, &grid.CellJ, &grid.CellK}) places->assign(cells, 1);
        for (CellArray<double>* ones : {&grid.JFactor, &grid.NTG}) ones->assign(cells, 1.0);
        grid.PORO.assign(cells, Porosity);
        const double step = length / cells;
        grid.BulkVolume.assign(cells, Area * step / CubicFeetPerBarrel);
        connections.Neighbour.assign(cells, FaceCount, 0);
        connections.Trans.assign(cells, FaceCount, 0.0);
        connections.DepthDiff.assign(cells, FaceCount, 0.0);
        for (CellId c = 1; c < cells; ++c) {
            connections.Neighbour(c, 2) = c + 1;
            connections.Neighbour(c + 1, 1) = c;
            connections.Trans(c, 2) = connections.Trans(c + 1, 1) =
                DarcyConstant * Permeability * Area / step;
            connections.DepthDiff(c, 2) = fall / cells;
            connections.DepthDiff(c + 1, 1) = -fall / cells;
        }
        allocateCellState(cells, 0, state);
        AllocateVelocity(run.console, cells, FaceCount, false, run.velocity);
        stage.set = componentSet(tables, Fahrenheit160);
        tables.reservoirTemperature = Fahrenheit160;
    }
    void fillTables() {
        SaturationTable table;
        table.SwAxis = {0.0, 1.0};
        table.Krw = {0.0, 1.0};
        table.Krow = {1.0, 0.0};
        table.Pcow = {0.0, 0.0};
        for (int r = 0; r <= 20; ++r) {
            const double s = r / 20.0;
            table.SgAxis.push_back(s);
            table.Krg.push_back(s * s);
            table.Krog.push_back((1.0 - s) * (1.0 - s));
            table.Pcog.push_back(0.0);
        }
        tables.regions = {table};
        tables.hasGas = true;
        tables.waterFvf = tables.waterViscosity = 1.0;
        tables.waterDensity = 62.4;
        tables.rockReferencePressure = 1000.0;
        tables.rockCompressibility = 3e-6;
        finishTables(tables);
    }
    void fill(const Composition& z, double pressure) {
        const int count = stage.cells.count = stage.set.count;
        stage.cells.z.assign(grid.NCELLS, count, 0.0);
        stage.cells.flash.assign(static_cast<std::size_t>(grid.NCELLS) + 1, FlashState{});
        for (CellId c = 1; c <= grid.NCELLS; ++c) {
            state.Pressure[c] = pressure;
            std::copy_n(z.begin(), count, stage.cells.z.row(c));
        }
        startComponents(run);
    }
    static Well wellAt(CellId cell, const char* kind, const char* control) {
        Well well;
        well.WellName = well.WellKind = kind;
        well.WellControl = well.deckControl = well.givenControl = control;
        WellConnection connection;
        connection.ConnCell = cell;
        connection.ConnWI = 1000.0;
        well.connections.push_back(connection);
        return well;
    }
    /// A stream that takes so many pore volumes a day at a pressure, into cell 1, and a well at that pressure
    /// in the last cell.
    void drive(const Composition& stream, double poresPerDay, double pressure) {
        FlashState flash, surface;
        FlashPT(stage.set, stream, pressure, flash);
        const PhaseVolumes volumes = phaseVolumes(stage.set, pressure, flash);
        const double pores = grid.NCELLS * grid.BulkVolume[1] * Porosity * run.units.VolumeFactor;
        given = poresPerDay * pores / (volumes.liquid + volumes.vapour);
        run.schedule.streams.push_back({"STREAM", {stream.begin(), stream.begin() + stage.set.count}});
        Well injector = wellAt(1, "inj", "rate"), producer = wellAt(grid.NCELLS, "prd", "bhp");
        injector.InjectFluid = "gas";
        injector.injectionStream = "STREAM";
        injector.BhpLimit = 1e5;
        injector.Bhp = pressure;
        const PhaseVolumes onTop = surfaceVolumes(run.components.surface, stream, surface);
        injector.TargetRate = injector.targetGas = given * onTop.vapour / run.units.VolumeFactor;
        producer.BhpLimit = producer.Bhp = pressure;
        run.wells.wells = {injector, producer};
        run.wells.RateWellCount = 1;
        takeComponentWells(run);
    }
    bool step(double dt) {
        run.clock.dt = dt;
        if (stage.leftOver.empty()) stage.leftOver.assign(grid.NCELLS, 0.0);
        return componentStep(run);
    }
    [[nodiscard]] double molesOf(int i) const {
        double sum = 0.0;
        for (CellId c = 1; c <= grid.NCELLS; ++c) sum += stage.amounts.moles(c, i + 1);
        return sum;
    }
    /// Through both wells in the last step.
    [[nodiscard]] double brought(std::size_t i) const {
        double sum = 0.0;
        for (const WellMixture& well : run.components.wells) sum += well.step.moles[i];
        return sum;
    }
};

inline FluidTables threeComponents() {
    FluidTables tables;
    tables.TCRIT = {343.0, 765.4, 1111.8};
    tables.PCRIT = {667.8, 550.7, 304.0};
    tables.ACF = {0.0104, 0.201, 0.4885};
    tables.MW = {16.043, 58.12, 142.285};
    tables.VCRIT = {1.59, 4.08, 9.66};
    tables.BIC.assign(9, 0.0);
    return tables;
}

}  // namespace kvr
