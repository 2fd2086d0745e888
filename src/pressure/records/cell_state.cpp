#include "pressure/records/cell_state.hpp"

namespace kvr {

namespace {

constexpr CellArray<double> CellState::*KeptArrays[] = {
    &CellState::Pressure,     &CellState::Sw,         &CellState::So, &CellState::Sg,
    &CellState::Rs,           &CellState::Pb,         &CellState::Bo, &CellState::Bw,
    &CellState::PoreFraction, &CellState::PoreVolume, &CellState::Bg};

}  // namespace

void allocateCellState(CellId count, int tracerCount, CellState& state) {
    for (CellArray<double>* array :
         {&state.Pressure, &state.Sw, &state.So, &state.Sg, &state.Rs, &state.Pb, &state.PoreFraction,
          &state.PoreVolume, &state.RhoO, &state.RhoW, &state.RhoG, &state.KroCell, &state.KrwCell,
          &state.KrgCell, &state.LambdaO, &state.LambdaW, &state.LambdaG, &state.PressureW, &state.PressureG})
        array->assign(count, 0.0);
    for (CellArray<double>* array : {&state.Bo, &state.Bw, &state.Bg, &state.MuO, &state.MuW, &state.MuG})
        array->assign(count, 1.0);
    state.tracer.assign(count, tracerCount, 0.0);
}

void keepLevel(bool hasGas, const CellState& state, CellState& level) {
    for (const auto array : KeptArrays) level.*array = state.*array;
    if (hasGas) level.PressureG = state.PressureG;
    level.tracer = state.tracer;
    level.SolidGas = state.SolidGas;
}

void returnToLevel(const CellState& level, CellState& state) {
    for (const auto array : KeptArrays) state.*array = level.*array;
    state.tracer = level.tracer;
    state.SolidGas = level.SolidGas;
}

}  // namespace kvr
