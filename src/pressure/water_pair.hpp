#pragma once

#include "pressure/pair_stage.hpp"

namespace kvr {

/// solveStage of a run without gas: the water of both sides is unknown, x[0] and x[1], by the slopes of the
/// tables. With fw = lw/(lw + lo) and the difference h of what capillarity and gravity add to the pressure of
/// water, matrix less fracture, the exchange at the total flow Q takes fw (Q + Vk lo h) of water, each
/// mobility from the side that its phase comes from (see transferRate).
bool solveWaterStage(const PairBalance& balance, double h, PairUnknowns& x, PairFlow& flow);

}  // namespace kvr
