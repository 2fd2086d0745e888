#include "streamline/diagnostics/diffusive_time.hpp"

#include "fluid/black_oil.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double PressureStep = 0.0001;        // psi, of the differences
constexpr double StepsPerPsi = 10000.0;        // inverse of it
constexpr double PermeabilityDivisor = 144.0;  // turns md into the diffusivity's unit
constexpr double HalfSquare = 0.5;

/// Relative change per psi of a factor that has the values `here` and, a step further, `there`.
double relativeSlope(double here, double there) {
    return here == 0.0 ? 0.0 : (there - here) * StepsPerPsi / here;
}

double totalCompressibility(const FluidTables& all, const CellState& state, CellId cell) {
    const FluidTables& fluids = pvtAt(all, cell);
    const double p = state.Pressure[cell];
    const double q = p + PressureStep;
    const double pb = state.Pb[cell];
    const double rock = relativeSlope(PoreFactor(fluids, p), PoreFactor(fluids, q));
    const double oil = -relativeSlope(OilFvf(fluids, p, pb), OilFvf(fluids, q, pb));
    const double water = -relativeSlope(WaterFvf(fluids, p), WaterFvf(fluids, q));
    const double gas = fluids.hasGas ? -relativeSlope(GasFvf(fluids, p), GasFvf(fluids, q)) : 0.0;
    return rock + state.So[cell] * oil + state.Sw[cell] * water + state.Sg[cell] * gas;
}

}  // namespace

int diffusiveDimensions(std::string_view gridDimensionality) {
    if (gridDimensionality == "xyz_3d") return 3;
    return gridDimensionality == "x_1d" ? 1 : 2;
}

double diffusiveStep(double length, double permeability, double resistance, int dimensions) {
    if (resistance <= 0.0) return 0.0;
    const double t = length / std::sqrt((permeability / PermeabilityDivisor) / resistance);
    return t * t * HalfSquare / dimensions;
}

double diffusiveResistance(const FluidTables& fluids, const CellState& state, CellId cell, double porosity) {
    const double ct = std::max(0.0, totalCompressibility(fluids, state, cell));
    const double viscosity = state.So[cell] * state.MuO[cell] + state.Sw[cell] * state.MuW[cell];
    return porosity * ct * viscosity * PoreFactor(pvtAt(fluids, cell), state.Pressure[cell]);
}

}  // namespace kvr
