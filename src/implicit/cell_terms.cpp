#include "implicit/cell_terms.hpp"

#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"
#include "implicit/residual_ramp.hpp"

namespace kvr {

namespace {

/// Slopes of Rs and of the oil properties by the unknowns.
template <std::size_t N>
struct OilJets {
    Jet<N> Rs, Bo, MuO;
};

/// Oil beside free gas that may not take up what the pressure would let it: its Rs stands.
bool limitsRs(const FluidTables& tables, const CellState& s, CellId c) {
    if (s.RsStart.empty()) return false;
    const double saturated = SolutionRs(tables, s.Pressure[c]);
    return allowedRs(s, c, saturated) < saturated;
}

template <std::size_t N>
OilJets<N> constantBubblePoint(const FluidTables& tables, const CellState& s, CellId c, const Jet<N>& p) {
    const OilSlopes slopes = oilSlopes(tables, s.Pressure[c], s.Pb[c], {s.Bo[c], s.MuO[c]});
    return {{s.Rs[c], {}}, chained(s.Bo[c], slopes.BoByP, p), chained(s.MuO[c], slopes.MuOByP, p)};
}

OilJets<3> saturatedOil(const FluidTables& tables, const CellState& s, CellId c, const Jet<3>& p) {
    const OilSlopes slopes = saturatedOilSlopes(tables, s.Pressure[c], {s.Bo[c], s.MuO[c]});
    return {chained(s.Rs[c], SolutionRsSlope(tables, s.Pressure[c]), p), chained(s.Bo[c], slopes.BoByP, p),
            chained(s.MuO[c], slopes.MuOByP, p)};
}

/// Rs is the unknown and moves the bubble point.
OilJets<3> underSaturatedOil(const FluidTables& tables, const CellState& s, CellId c, const Jet<3>& p) {
    const OilSlopes slopes = oilSlopes(tables, s.Pressure[c], s.Pb[c], {s.Bo[c], s.MuO[c]});
    const Jet<3> Rs = variable<3>(s.Rs[c], GasPlace);
    const double RsByPb = SolutionRsSlope(tables, s.Pb[c]);
    const Jet<3> Pb = chained(s.Pb[c], RsByPb > 0.0 ? 1.0 / RsByPb : 0.0, Rs);
    return {Rs, chained(s.Bo[c], slopes.BoByP, p) + chained(0.0, slopes.BoByPb, Pb),
            chained(s.MuO[c], slopes.MuOByP, p) + chained(0.0, slopes.MuOByPb, Pb)};
}

template <std::size_t N>
OilJets<N> oilJets(const FluidTables& tables, const CellState& s, CellId c, const Jet<N>& p,
                   ThirdUnknown unknown) {
    if constexpr (N == 3) {
        if (unknown == ThirdUnknown::FreeGas && !limitsRs(tables, s, c)) return saturatedOil(tables, s, c, p);
        if (unknown == ThirdUnknown::SolutionGas) return underSaturatedOil(tables, s, c, p);
    }
    return constantBubblePoint(tables, s, c, p);
}

template <std::size_t N>
void setHeld(const FluidTables& tables, const CellState& s, CellId c, ThirdUnknown unknown, const Jet<N>& p,
             CellFluid<N>& fluid) {
    fluid.held.Sw = variable<N>(s.Sw[c], WaterPlace);
    fluid.held.Sg = {s.Sg[c], {}};
    if constexpr (N == 3)
        if (unknown != ThirdUnknown::SolutionGas) fluid.held.Sg = variable<N>(s.Sg[c], GasPlace);
    fluid.held.So = chained(s.So[c], -1.0, fluid.held.Sw) + chained(0.0, -1.0, fluid.held.Sg);
    fluid.held.Bw = chained(s.Bw[c], WaterFvfSlope(tables, s.Pressure[c]), p);
}

template <std::size_t N>
void setMobilities(const FluidTables& tables, int region, const CellState& s, CellId c, const OilJets<N>& oil,
                   const GasProperties& gasSlope, const Jet<N>& p, CellFluid<N>& fluid) {
    RelPermSlopes kr = relPermSlopesAtCell(tables, c, region, s.Sw[c], s.Sg[c]);
    if constexpr (N == 3)
        kr = rampedSlopes(kr, rampShare(regionTable(tables, region), s.Sw[c], s.Sg[c]), s.KroCell[c]);
    const Jet<N> muW = chained(s.MuW[c], WaterViscositySlope(pvtAt(tables, c), s.Pressure[c]), p);
    const Jet<N> krw = chained(s.KrwCell[c], kr.wBySw, fluid.held.Sw);
    const Jet<N> kro = chained(s.KroCell[c], kr.oBySw, fluid.held.Sw) + chained(0.0, kr.oBySg, fluid.held.Sg);
    fluid.mobile = {krw / muW, kro / oil.MuO, {}, fluid.held.Bw, fluid.held.Bo, fluid.held.Bg, fluid.held.Rs};
    if constexpr (N == 3)
        fluid.mobile.LambdaG =
            chained(s.KrgCell[c], kr.gBySg, fluid.held.Sg) / chained(s.MuG[c], gasSlope.MuG, p);
}

}  // namespace

template <std::size_t N>
CellFluid<N> cellFluid(const GridModel& grid, const FluidTables& tables, const CellState& s, CellId c,
                       ThirdUnknown unknown) {
    const int region = grid.SATNUM[c];
    const Jet<N> p = variable<N>(s.Pressure[c], PressurePlace);
    const FluidTables& pvt = pvtAt(tables, c);
    const OilJets<N> oil = oilJets(pvt, s, c, p, unknown);
    GasProperties gasSlope{0.0, 0.0};
    if constexpr (N == 3) gasSlope = gasSlopes(pvt, s.Pressure[c], {s.Bg[c], s.MuG[c]});

    CellFluid<N> fluid;
    const double storage = grid.BulkVolume[c] * grid.NTG[c] * grid.PORO[c];
    fluid.poreVolume = chained(s.PoreVolume[c], storage * PoreFactorSlope(pvt, s.Pressure[c]), p);
    setHeld(pvt, s, c, unknown, p, fluid);
    fluid.held.Rs = oil.Rs;
    fluid.held.Bo = oil.Bo;
    fluid.held.Bg = chained(s.Bg[c], gasSlope.Bg, p);
    fluid.pressureO = p;
    fluid.pressureW = p + chained(s.PressureW[c] - s.Pressure[c],
                                  -grid.JFactor[c] * PcowSlope(tables, s.Sw[c], region), fluid.held.Sw);
    fluid.pressureG = p + chained(s.PressureG[c] - s.Pressure[c],
                                  grid.JFactor[c] * PcogSlope(tables, s.Sg[c], region), fluid.held.Sg);
    setMobilities(tables, region, s, c, oil, gasSlope, p, fluid);
    return fluid;
}

template <std::size_t N>
CellTerms<N> cellTerms(const FluidTables& tables, const CellFluid<N>& fluid) {
    CellTerms<N> terms;
    const HeldFluid<Jet<N>>& held = fluid.held;
    const SurfaceVolumes<Jet<N>> amounts = surfaceVolumes(held);
    terms.amount[WaterPhase] = fluid.poreVolume * amounts.water;
    terms.amount[OilPhase] = fluid.poreVolume * amounts.oil;
    terms.pressure[WaterPhase] = fluid.pressureW;
    terms.pressure[OilPhase] = fluid.pressureO;
    terms.density[WaterPhase] = waterDensityAt(tables, held.Bw);
    terms.density[OilPhase] = oilDensityAt(tables, held.Rs, held.Bo);
    terms.flow[WaterPhase] = fluid.mobile.LambdaW / held.Bw;
    terms.flow[OilPhase] = fluid.mobile.LambdaO / held.Bo;
    if constexpr (N == 3) {
        terms.amount[GasPhase] = fluid.poreVolume * amounts.gas;
        terms.pressure[GasPhase] = fluid.pressureG;
        terms.density[GasPhase] = gasDensityAt(tables, held.Bg);
        terms.flow[GasPhase] = fluid.mobile.LambdaG / held.Bg;
    }
    terms.Rs = held.Rs;
    return terms;
}

template CellFluid<2> cellFluid<2>(const GridModel&, const FluidTables&, const CellState&, CellId,
                                   ThirdUnknown);
template CellFluid<3> cellFluid<3>(const GridModel&, const FluidTables&, const CellState&, CellId,
                                   ThirdUnknown);
template CellTerms<2> cellTerms<2>(const FluidTables&, const CellFluid<2>&);
template CellTerms<3> cellTerms<3>(const FluidTables&, const CellFluid<3>&);

}  // namespace kvr
