#include "eclipse/restart_cells.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// What a quantity can be, after conversion.
struct Range {
    double least, most;
};
constexpr Range PressureRange{1e-6, 1e7};       // psia
constexpr Range SaturationRange{-1e-3, 1.001};  // simulators leave rounding beyond the ends
constexpr Range RatioRange{0.0, 1e6};
constexpr Range FactorRange{1e-8, 1e6};
constexpr Range ViscosityRange{1e-8, 1e8};
constexpr Range DensityRange{1e-8, 1e5};
constexpr Range RelPermRange{0.0, 1e3};
constexpr Range CapillaryPressureRange{-1e7, 1e7};  // of a phase beside the oil, psia

struct CellRow {
    std::string_view keyword;
    std::string_view alternative;  // blank: none
    CellArray<double> CellState::*values;
    double FileUnits::*factor;  // null: as it is
    Range range;
    bool ofSaturation;  // goes with what the run moves itself
};

constexpr CellRow Rows[] = {
    {"PRESSURE", "POIL    ", &CellState::Pressure, &FileUnits::pressure, PressureRange, false},
    {"PGAS    ", "", &CellState::PressureG, &FileUnits::pressure, CapillaryPressureRange, true},
    {"PWAT    ", "", &CellState::PressureW, &FileUnits::pressure, CapillaryPressureRange, true},
    {"SOIL    ", "", &CellState::So, nullptr, SaturationRange, true},
    {"SWAT    ", "", &CellState::Sw, nullptr, SaturationRange, true},
    {"SGAS    ", "", &CellState::Sg, nullptr, SaturationRange, true},
    {"RS      ", "", &CellState::Rs, &FileUnits::gasRatio, RatioRange, true},
    {"VOIL    ", "OIL_VISC", &CellState::MuO, nullptr, ViscosityRange, false},
    {"VWAT    ", "WAT_VISC", &CellState::MuW, nullptr, ViscosityRange, false},
    {"VGAS    ", "GAS_VISC", &CellState::MuG, nullptr, ViscosityRange, false},
    {"DENO    ", "OIL_DEN ", &CellState::RhoO, &FileUnits::density, DensityRange, false},
    {"DENW    ", "WAT_DEN ", &CellState::RhoW, &FileUnits::density, DensityRange, false},
    {"DENG    ", "GAS_DEN ", &CellState::RhoG, &FileUnits::density, DensityRange, false},
    {"BO      ", "BOIL    ", &CellState::Bo, nullptr, FactorRange, false},
    {"BW      ", "BWAT    ", &CellState::Bw, nullptr, FactorRange, false},
    {"BG      ", "BGAS    ", &CellState::Bg, &FileUnits::gasFvf, FactorRange, false},
    {"KRO     ", "OILKR   ", &CellState::KroCell, nullptr, RelPermRange, true},
    {"KRW     ", "WATKR   ", &CellState::KrwCell, nullptr, RelPermRange, true},
    {"KRG     ", "GASKR   ", &CellState::KrgCell, nullptr, RelPermRange, true},
    {"PBUB    ", "", &CellState::Pb, &FileUnits::pressure, {0.0, PressureRange.most}, true},
};

constexpr std::string_view VaporisedOil = "RV      ";

/// Rounding beyond 0 and 1 is taken off.
double inside(const CellRow& row, double value) {
    const bool saturation = row.range.most == SaturationRange.most;
    return saturation ? std::clamp(value, 0.0, 1.0) : value;
}

void takeRow(const Console& console, const GridModel& grid, const FileUnits& units, const BlockHeader& header,
             const BlockData& data, const CellRow& row, CellState& state) {
    const double factor = row.factor == nullptr ? 1.0 : units.*row.factor;
    CellArray<double>& target = state.*row.values;
    long long leftOut = 0;
    spreadOverCells(console, grid, header, data, [&](CellId cell, double read) {
        const double value = read * factor;
        if (value >= row.range.least && value <= row.range.most)
            target[cell] = inside(row, value);
        else if (grid.Active[cell] != 0)
            ++leftOut;
    });
    tellLeftOut(console, header, leftOut);
}

void takeVaporisedOil(const Console& console, const GridModel& grid, const BlockHeader& header,
                      const BlockData& data, RestartCells& cells) {
    cells.vaporisedOil.assign(grid.NCELLS, 0.0);
    long long leftOut = 0;
    spreadOverCells(console, grid, header, data, [&](CellId cell, double value) {
        if (value >= RatioRange.least && value <= RatioRange.most)
            cells.vaporisedOil[cell] = value;
        else
            ++leftOut;
    });
    tellLeftOut(console, header, leftOut);
}

bool isIn(const RestartCells& cells, CellArray<double> CellState::*array) {
    return std::find(cells.given.begin(), cells.given.end(), array) != cells.given.end();
}

}  // namespace

void tellLeftOut(const Console& console, const BlockHeader& header, long long leftOut) {
    if (leftOut > 0)
        warn(console, " WARNING :: {} values of {} in the restart are beyond its range and left out", leftOut,
             trim(view(header.keyword)));
}

std::size_t realCount(const BlockData& data) {
    return data.reals.empty() ? data.doubles.size() : data.reals.size();
}

BlockSpread spreadOf(const Console& console, const GridModel& grid, const BlockHeader& header,
                     const BlockData& data) {
    const std::size_t values = realCount(data);
    const auto cells = static_cast<std::size_t>(grid.NCELLS);
    if (values == cells) return {cells, true};
    const auto active = static_cast<std::size_t>(activeCount(grid));
    if (values != active)
        warn(console, " WARNING :: {} of the restart has {} values, {} active cells are expected",
             trim(view(header.keyword)), values, active);
    return {std::min(values, active), false};
}

bool takeCellBlock(const Console& console, const GridModel& grid, const FileUnits& units,
                   const BlockHeader& header, const BlockData& data, RestartCells& cells, CellState& state) {
    if (realCount(data) == 0) return false;
    const std::string_view keyword = view(header.keyword);
    if (keyword == VaporisedOil) {
        takeVaporisedOil(console, grid, header, data, cells);
        return true;
    }
    for (const CellRow& row : Rows) {
        if (keyword != row.keyword && keyword != row.alternative) continue;
        if (cells.keepSaturations && row.ofSaturation) return false;
        takeRow(console, grid, units, header, data, row, state);
        if (!isIn(cells, row.values)) cells.given.push_back(row.values);
        return true;
    }
    return false;
}

void completeSaturations(const GridModel& grid, RestartCells& cells, CellState& state) {
    const bool others = isIn(cells, &CellState::Sw) || isIn(cells, &CellState::Sg);
    if (!others || isIn(cells, &CellState::So)) return;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (grid.Active[cell] != 0) state.So[cell] = std::max(0.0, 1.0 - state.Sw[cell] - state.Sg[cell]);
}

void neutralAbsentPhases(const GridModel& grid, CellState& state) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.Active[cell] == 0) continue;
        if (state.So[cell] <= MachineEpsilon) state.Bo[cell] = 1.0;
        if (state.Sw[cell] <= MachineEpsilon) state.Bw[cell] = 1.0;
        if (state.Sg[cell] <= MachineEpsilon) state.Bg[cell] = 1.0;
    }
}

}  // namespace kvr
