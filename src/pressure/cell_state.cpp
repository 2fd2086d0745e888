#include "pressure/cell_state.hpp"

namespace kvr {

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

}  // namespace kvr
