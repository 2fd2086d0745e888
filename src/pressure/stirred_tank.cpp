#include "pressure/stirred_tank.hpp"

#include "pressure/tank_arithmetic.hpp"

#include <algorithm>

namespace kvr {

namespace {

double givenShare(double missing, double asked) {
    return missing > 0.0 && asked > 0.0 ? std::max(0.0, 1.0 - missing / asked) : 1.0;
}

}  // namespace

PhaseState tankState(const FluidTables& tables, const SaturationTable& table, const TankFluid& fluid,
                     const ConservedAmounts& held) {
    if (tables.hasGas) {
        const double inverse = 1.0 / fluid.poreVolume;
        return recoverButBubblePoint(pvtAt(tables, fluid.cell), table, false, fluid.factors,
                                     fluid.saturatedRs,
                                     {held.water * inverse, held.oil * inverse, held.gas * inverse});
    }
    return waterOilState(fluid, held);
}

ConservedAmounts makeUpAt(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state) {
    const RelPerms kr = relPermsAtCell(tables, fluid.cell, fluid.region, state.Sw, state.Sg);
    return makeUpOf(fluid, state, tables.hasGas,
                    {kr.w / fluid.MuW, kr.o / fluid.MuO, tables.hasGas ? kr.g / fluid.MuG : 0.0});
}

OwnExchange turnedOwn(const FluidTables& tables, const TankFluid& fluid, const PhaseState& state,
                      std::span<const BuoyantFlow> buoyant) {
    if (buoyant.empty()) return {};
    return turnedBy(pairMobility(tables, fluid, state.Sw), fluid, tables.hasGas ? state.Rs : 0.0, buoyant);
}

void accountForMissing(const TankFluid& fluid, const TankFlows& flows, const ConservedAmounts& request,
                       double dt, const ConservedAmounts& missing, std::span<const BuoyantFlow> buoyant,
                       TankOutflow& out) {
    if (!(missing.water + missing.oil + missing.gas > 0.0)) return;
    ConservedAmounts asked;
    add(dt * flows.rest, out.own, asked);
    add(dt * flows.asked, out.apart, asked);
    add(dt * out.followed, request, asked);
    for (const BuoyantFlow& face : buoyant)
        exchange(fluid, dt * face.flow * ((1.0 - face.followed) * face.own + face.followed * face.apart),
                 dt * face.flow * ((1.0 - face.followed) * face.ownGas + face.followed * face.apartGas),
                 asked);
    out.given = {givenShare(missing.water, asked.water), givenShare(missing.oil, asked.oil),
                 givenShare(missing.gas, asked.gas)};
    const double freeGas = std::max(0.0, missing.gas - fluid.saturatedRs * missing.oil);
    out.deficit =
        fluid.factors.Bw * missing.water + fluid.factors.Bo * missing.oil + fluid.factors.Bg * freeGas;
}

double volumeOf(const TankFluid& fluid, const ConservedAmounts& amounts) {
    const double dissolved = std::min(amounts.gas, fluid.saturatedRs * amounts.oil);
    return fluid.factors.Bw * amounts.water + fluid.factors.Bo * amounts.oil +
           fluid.factors.Bg * (amounts.gas - dissolved);
}

ConservedAmounts ownMakeUp(const FluidTables& tables, const TankFluid& fluid, const ConservedAmounts& held) {
    return makeUpAt(tables, fluid, tankState(tables, regionTable(tables, fluid.region), fluid, held));
}

}  // namespace kvr
