#pragma once

#include "fluid/depth_table.hpp"
#include "fluid/equilibrium.hpp"
#include "unit/fluid/table_samples.hpp"

#include <cstdio>
#include <vector>

namespace kvr {

/// A stack of layers, one column of cells or several side by side, with a dead oil of constant density
/// unless the test changes it.
struct ColumnBench {
    Console console;
    GridModel grid;
    FluidTables tables;
    InitialConditions initial;
    RunOptions options;
    CellState state;

    explicit ColumnBench(double top, const std::vector<double>& thickness, int columns = 1) {
        console = {std::tmpfile(), std::tmpfile(), nullptr};
        grid.NX = columns;
        grid.NY = 1;
        grid.NZ = static_cast<int>(thickness.size());
        grid.NCELLS = columns * grid.NZ;
        grid.xyz_3d.assign(24 * (static_cast<std::size_t>(grid.NCELLS) + 1), 0.0F);
        grid.CellCentre.assign(grid.NCELLS, 3, 0.0);
        grid.Active.assign(grid.NCELLS, 1);
        grid.SATNUM.assign(grid.NCELLS, 1);
        grid.JFactor.assign(grid.NCELLS, 1.0);
        for (CellArray<int>* index : {&grid.CellI, &grid.CellJ, &grid.CellK}) index->assign(grid.NCELLS, 1);
        allocateCellState(grid.NCELLS, 0, state);
        for (int k = 1; k <= grid.NZ; ++k) {
            const double bottom = top + thickness[static_cast<std::size_t>(k) - 1];
            for (int i = 1; i <= columns; ++i) placeCell(cellIndex(grid, i, 1, k), top, bottom);
            top = bottom;
        }
        options.hasOil = options.hasWater = true;
        initial.equilibrationMode = true;
        initial.regions[0].isGiven = true;
        fillConstantFluid();
    }
    ColumnBench(const ColumnBench&) = delete;
    ColumnBench& operator=(const ColumnBench&) = delete;
    ~ColumnBench() {
        if (console.screen != stderr) std::fclose(console.screen);
        std::fclose(console.log);
    }

    void placeCell(CellId cell, double top, double bottom) {
        for (int n = 1; n <= 8; ++n) cornerOf(grid, cell, n)[2] = static_cast<float>(n <= 4 ? top : bottom);
        grid.CellCentre(cell, 3) = 0.5 * (top + bottom);
    }
    /// Oil 45, water 62.4, gas 5 lb/ft3, none compressible.
    void fillConstantFluid() {
        tables.OilPressure = tables.GasPressure = {0.0, 10000.0};
        tables.OilFvf = tables.GasFvf = {1.0, 1.0};
        tables.OilViscosity = tables.GasViscosity = {1.0, 1.0};
        tables.oilDensity = 45.0;
        tables.waterDensity = 62.4;
        tables.gasDensity = 5.0;
        tables.waterFvf = 1.0;
        tables.regions = {samples::fourRowRegion()};
        tables.regions.front().SwAxis = {0.2, 0.4, 0.6, 1.0};
        finishTables(tables);
    }
    void contacts(double datum, double pressure, double woc, double goc) {
        initial.regions[0].datumDepth = datum;
        initial.regions[0].datumPressure = pressure;
        initial.regions[0].wocDepth = woc;
        initial.regions[0].gocDepth = goc;
    }
    void useGas() { tables.hasGas = options.hasGas = true; }
    void run() { initialiseBlackOil(console, grid, tables, initial, options, state); }
    [[nodiscard]] InitDepthTable rows() const {
        return buildDepthTable(console, grid, tables, initial.regions[0], options.hasWater);
    }
    [[nodiscard]] static int timesIn(std::FILE* file, const std::string& text) {
        std::rewind(file);
        int count = 0;
        char line[512];
        while (std::fgets(line, sizeof line, file) != nullptr)
            if (std::string(line).find(text) != std::string::npos) ++count;
        return count;
    }
};

}  // namespace kvr
