#pragma once

#include "fluid/black_oil.hpp"
#include "implicit/jacobian.hpp"
#include "implicit/newton_update.hpp"
#include "implicit/well_borders.hpp"
#include "pressure/wells/well_heads.hpp"
#include "unit/pressure/small_run.hpp"

#include <cmath>
#include <random>
#include <vector>

namespace kvr::sample {

/// The light oil or water and oil, compressible, with capillary pressures.
inline FluidTables withCapillarity(FluidTables tables) {
    tables.regions[0].Pcow = {12.0, 6.0, 2.0, 0.0};
    tables.regions[0].Pcog = {0.0, 0.5, 2.0, 6.0};
    tables.PcowSpan = 12.0;
    tables.PcogSpan = 6.0;
    return tables;
}

/// Water and dead oil, both compressible, the oil viscosity not constant.
inline FluidTables compressibleWaterAndOil() {
    FluidTables tables = waterAndOil(4e-6);
    tables.OilFvf = {1.2, 1.1};
    tables.OilViscosity = {2.0, 2.6};
    tables.waterCompressibility = 3e-6;
    tables.waterViscosibility = 1e-5;
    finishTables(tables);
    return withCapillarity(tables);
}

inline FluidTables liveOil() {
    return withCapillarity(samples::lightOil());
}

enum class Oil { Saturated, UnderSaturated, Mixed };

/// Scattered pressures and saturations, away from the rows of the tables, and the unknowns that go with them.
inline void scatter(Oil oil, unsigned seed, Simulation& s) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (CellId c = 1; c <= s.grid.NCELLS; ++c) {
        s.state.Pressure[c] = 3100.0 + 700.0 * unit(random);
        s.state.Sw[c] = 0.22 + 0.1 * unit(random);
        const bool free = oil == Oil::Saturated || (oil == Oil::Mixed && c % 2 == 0);
        s.state.Sg[c] = s.fluids.hasGas && free ? 0.12 + 0.1 * unit(random) : 0.0;
        s.state.So[c] = 1.0 - s.state.Sw[c] - s.state.Sg[c];
        s.state.Pb[c] = free ? s.state.Pressure[c] : 2550.0 + 400.0 * unit(random);
        s.state.Rs[c] = SolutionRs(s.fluids, s.state.Pb[c]);
    }
}

/// Pattern, unknowns, heads and old amounts for the present state and wells.
inline void prepare(Simulation& s) {
    buildImplicitPattern(s.grid, s.connections, s.fluids.hasGas, s.implicit);
    setConnectionTrans(s.units, s.connections, s.implicit);
    buildWellBorders(s.wells, s.implicit);
    chooseUnknowns(s.fluids, s.state, s.implicit);
    refreshProperties(s.grid, s.fluids, s.state);
    WellHead(s.grid, s.connections, s.fluids, s.state, s.wells);
    measureAmounts(s.grid, s.state, s.implicit.oldAmounts);
}

/// Residuals of the cells, then of the wells, at the present state.
inline std::vector<double> residuals(Simulation& s) {
    refreshProperties(s.grid, s.fluids, s.state);
    UpdateWellRates(s.units, s.grid, s.fluids, s.state, s.wells, s.pressure);
    assembleCells(s.clock.dt, s.grid, s.fluids, s.state, s.implicit);
    addWells(s.units, s.grid, s.fluids, s.state, s.pressure.AveragePressure, s.wells, s.implicit);
    std::vector<double> result;
    for (const double value : s.implicit.system.rhs) result.push_back(-value);
    for (const WellBorder& well : s.implicit.system.wells) result.push_back(-well.rhs);
    return result;
}

/// The assembled system as a full matrix, row by row.
inline std::vector<std::vector<double>> fullMatrix(const BlockSystem& system) {
    const auto size = static_cast<std::size_t>(system.blockSize);
    const auto cells = static_cast<std::size_t>(system.rows) * size;
    std::vector<std::vector<double>> full(cells + system.wells.size(),
                                          std::vector<double>(cells + system.wells.size(), 0.0));
    for (std::size_t row = 0; row < static_cast<std::size_t>(system.rows); ++row)
        for (int place = system.rowStart[row]; place < system.rowStart[row + 1]; ++place)
            for (std::size_t e = 0; e < size; ++e)
                for (std::size_t u = 0; u < size; ++u)
                    full[row * size + e]
                        [static_cast<std::size_t>(system.column[static_cast<std::size_t>(place)]) * size +
                         u] = system.value[(static_cast<std::size_t>(place) * size + e) * size + u];
    for (std::size_t w = 0; w < system.wells.size(); ++w) {
        const WellBorder& well = system.wells[w];
        full[cells + w][cells + w] = well.diagonal;
        for (std::size_t n = 0; n < well.cells.size(); ++n)
            for (std::size_t k = 0; k < size; ++k) {
                const std::size_t at = static_cast<std::size_t>(well.cells[n]) * size + k;
                full[at][cells + w] = well.columnBlocks[n * size + k];
                full[cells + w][at] = well.rowBlocks[n * size + k];
            }
    }
    return full;
}

/// Moves one unknown of a cell, everything that hangs on it with it.
inline void moveUnknown(std::size_t row, std::size_t place, double by, Simulation& s) {
    const CellId c = s.implicit.cellOfRow[row];
    const bool free = s.implicit.unknown[row] == ThirdUnknown::FreeGas;
    if (place == PressurePlace) {
        s.state.Pressure[c] += by;
        if (s.fluids.hasGas && free) {
            s.state.Pb[c] = s.state.Pressure[c];
            s.state.Rs[c] = SolutionRs(s.fluids, s.state.Pressure[c]);
        }
    } else if (place == WaterPlace) {
        s.state.Sw[c] += by;
        s.state.So[c] -= by;
    } else if (s.implicit.unknown[row] != ThirdUnknown::SolutionGas) {
        s.state.Sg[c] += by;
        s.state.So[c] -= by;
    } else {
        s.state.Rs[c] += by;
        s.state.Pb[c] = BubblePoint(s.fluids, s.state.Rs[c]);
    }
}

/// Step of the differences by place: psi, saturation, saturation or surface barrels per stb.
inline double stepOf(std::size_t row, std::size_t place, const Simulation& s) {
    if (place == PressurePlace) return 0.05;
    if (place == WaterPlace || s.implicit.unknown[row] != ThirdUnknown::SolutionGas) return 1e-5;
    return 1e-2;
}

/// Column of an unknown by central differences of the residuals.
inline std::vector<double> differences(std::size_t column, Simulation& s) {
    const auto size = static_cast<std::size_t>(s.implicit.system.blockSize);
    const std::size_t cells = s.implicit.cellOfRow.size() * size;
    const CellState before = s.state;
    const WellRecord wellsBefore = s.wells;
    const bool ofCell = column < cells;
    const double step = ofCell ? stepOf(column / size, column % size, s) : 0.05;
    std::vector<double> result[2];
    for (const int side : {0, 1}) {
        const double by = side == 0 ? -step : step;
        if (ofCell)
            moveUnknown(column / size, column % size, by, s);
        else
            s.wells.wells[column - cells].Bhp += by;
        result[side] = residuals(s);
        s.state = before;
        s.wells = wellsBefore;
    }
    for (std::size_t row = 0; row < result[1].size(); ++row)
        result[1][row] = (result[1][row] - result[0][row]) / (2.0 * step);
    return result[1];
}

}  // namespace kvr::sample
