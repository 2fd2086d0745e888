#pragma once

#include "base/units.hpp"
#include "fluid/tables.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/wells/wells.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace kvr::sample {

/// A column of `layers` cells, one below the other, all properties alike.
inline GridModel column(int layers) {
    GridModel grid;
    grid.NX = grid.NY = 1;
    grid.NZ = layers;
    grid.NCELLS = layers;
    for (CellArray<int>* array : {&grid.CellI, &grid.CellJ, &grid.CellK}) array->assign(layers, 1);
    for (CellId cell = 1; cell <= layers; ++cell) grid.CellK[cell] = cell;
    grid.Active.assign(layers, 1);
    grid.CellCentre.assign(layers, 3, 0.0);
    for (CellArray<double>* array : {&grid.DX, &grid.DY}) array->assign(layers, 1000.0);
    grid.DZ.assign(layers, 20.0);
    grid.BulkVolume.assign(layers, 1.0);
    for (CellArray<double>* array : {&grid.PERMX, &grid.PERMY, &grid.PERMZ}) array->assign(layers, 500.0);
    return grid;
}

/// The vertical connections of a column whose centres lie `distance` apart.
inline ConnectionTable columnConnections(int layers, double distance) {
    ConnectionTable connections;
    connections.Neighbour.assign(layers, 6, 0);
    connections.DepthDiff.assign(layers, 6, 0.0);
    for (CellId cell = 1; cell < layers; ++cell) {
        connections.Neighbour(cell, 6) = cell + 1;
        connections.DepthDiff(cell, 6) = distance;
        connections.Neighbour(cell + 1, 5) = cell;
        connections.DepthDiff(cell + 1, 5) = -distance;
    }
    return connections;
}

/// All pressures 3000 psia, oil of mobility 1, formation factors 1.
inline CellState state(CellId cells) {
    CellState state;
    allocateCellState(cells, 0, state);
    state.Pressure.assign(cells, 3000.0);
    state.LambdaO.assign(cells, 1.0);
    return state;
}

/// A well with one connection of Well Index 1 in each of the cells 1..count.
inline Well well(const std::string& kind, const std::string& control, int count) {
    Well well;
    well.WellName = kind == "inj" ? "INJ" : "PROD";
    well.WellKind = kind;
    well.WellControl = well.deckControl = control;
    if (kind == "inj") well.InjectFluid = "wat";
    for (int n = 1; n <= count; ++n) {
        WellConnection connection;
        connection.ConnCell = n;
        connection.completion = n;
        connection.ConnWI = 1.0;
        well.connections.push_back(connection);
    }
    return well;
}

/// A well in a column of cells, with all that its rates and heads follow from.
struct OneWell {
    GridModel grid;
    CellState state;
    FluidTables tables;
    UnitSystem units;
    WellRecord wells;
    PressureStage stage;

    OneWell(Well made, int layers) : grid(column(layers)), state(sample::state(layers)) {
        wells.wells.push_back(std::move(made));
    }
    Well& well() { return wells.wells[0]; }
};

/// To eight digits.
inline void expectNear(double value, double expected) {
    EXPECT_NEAR(value, expected, std::abs(expected) * 1e-8);
}

}  // namespace kvr::sample
