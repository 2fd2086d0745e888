#include "streamline/transport/analytic_transport.hpp"

#include "base/constants.hpp"
#include "base/index.hpp"
#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"
#include "streamline/transport/explicit_control.hpp"
#include "streamline/transport/fractional_flow.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double SlopeStep = 1e-6;  // of the one-sided slope at connate water
constexpr double PerSlopeStep = 1e6;

double saturationAt(const AnalyticProfile& profile, double connate, double position) {
    if (profile.position.empty() || position > profile.position.front()) return connate;
    std::size_t k = 1;
    while (k < profile.position.size() && position < profile.position[k]) ++k;
    if (k >= profile.position.size()) return profile.saturation.back();
    const double width = profile.position[k - 1] - profile.position[k];
    if (width <= 0.0) return profile.saturation[k];
    const double share = (profile.position[k - 1] - position) / width;
    return profile.saturation[k - 1] + share * (profile.saturation[k] - profile.saturation[k - 1]);
}

void setSaturation(const FluidTables& fluids, double sw, FlowNode& node) {
    const SaturationTable& region = regionTable(fluids, 1);
    node.Sw = std::min(std::max(sw, region.ConnateSw), 1.0 - region.ResidualSo);
    node.So = 1.0 - node.Sw;
    node.Sg = 0.0;
    setAmounts(fluids.hasGas, node);
}

/// The profile of the given time on the nodes of a line.
void setProfile(const FluidTables& fluids, const AnalyticProfile& profile, double time, SolverLine& line) {
    const double connate = regionTable(fluids, 1).ConnateSw;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const double sw = time > 0.0 ? saturationAt(profile, connate, line.Tof[i] / time) : connate;
        setSaturation(fluids, sw, line.nodes[i]);
    }
}

constexpr int PassageIntervals = 4;  // of Simpson's rule behind the front

/// What passes node i from `begin` to `end`: connate water and oil until the front arrives, then the fluxes
/// of the profile by Simpson's rule. The jump at the front is no place for a rule of smooth functions: a
/// third of a long step would count as flooded or dry.
void sumPassage(const FluidTables& fluids, const AnalyticProfile& profile, double begin, double end, int i,
                SolverLine& line) {
    FlowNode& node = line.nodes[at(i)];
    const SaturationTable& region = regionTable(fluids, 1);
    const double front = profile.position.empty() ? 0.0 : profile.position.front();
    const double arrival = front > 0.0 ? std::clamp(line.Tof[at(i)] / front, begin, end) : end;
    const auto add = [&](double sw, double weight) {
        setSaturation(fluids, sw, node);
        evaluateFluxes(fluids.hasGas, i, i, line);
        node.passedW += weight * node.Fw;
        node.passedO += weight * node.Fo;
    };
    if (arrival > begin) add(region.ConnateSw, arrival - begin);
    const double length = (end - arrival) / PassageIntervals;
    if (!(length > 0.0)) return;
    for (int n = 0; n <= 2 * PassageIntervals; ++n) {
        const double time = arrival + 0.5 * n * length;
        const bool outer = n == 0 || n == 2 * PassageIntervals;
        const double weight = outer ? 1.0 / 6.0 : (n % 2 == 1 ? 4.0 / 6.0 : 2.0 / 6.0);
        if (time > 0.0)
            add(saturationAt(profile, region.ConnateSw, std::min(front, line.Tof[at(i)] / time)),
                weight * length);
    }
}

}  // namespace

double analyticFlow(const FluidTables& fluids, const AnalyticTable& table, double sw) {
    const SaturationTable& region = regionTable(fluids, 1);
    if (sw <= region.ConnateSw) return 0.0;
    if (sw >= 1.0 - region.ResidualSo - region.CriticalSg) return 1.0;
    const RelPerms kr = relPerms(region, false, sw, 0.0);
    const double water = kr.w / table.waterViscosity;
    return water / (water + kr.o / table.oilViscosity + MobilityGuard);
}

void buildAnalyticTable(const FluidTables& fluids, int points, double oilViscosity, AnalyticTable& table) {
    const SaturationTable& region = regionTable(fluids, 1);
    const double swc = region.ConnateSw;
    const double width = (1.0 - swc - region.ResidualSo) / points;
    for (std::vector<double>* column : {&table.saturation, &table.flow, &table.slope, &table.tangency})
        column->assign(at(points) + 1, 0.0);
    table.waterViscosity = fluids.waterViscosity;
    table.oilViscosity = oilViscosity;
    table.saturation[0] = swc;
    table.slope[0] =
        (analyticFlow(fluids, table, swc + SlopeStep) - analyticFlow(fluids, table, swc)) * PerSlopeStep;
    for (std::size_t k = 1; k <= at(points); ++k) {
        table.saturation[k] = static_cast<double>(k) * width + swc;
        table.flow[k] = analyticFlow(fluids, table, table.saturation[k]);
        table.slope[k] =
            (table.flow[k] - table.flow[k - 1]) / (table.saturation[k] - table.saturation[k - 1]);
        table.tangency[k] = table.slope[k] - table.flow[k] / (table.saturation[k] - swc);
    }
    table.front = points;
    while (table.front > 0 && !(table.tangency[at(table.front)] >= MachineEpsilon)) --table.front;
}

void buildProfile(const FluidTables& fluids, const AnalyticTable& table, AnalyticProfile& profile) {
    const SaturationTable& region = regionTable(fluids, 1);
    profile.saturation.clear();
    profile.position.clear();
    const double front = table.saturation[at(table.front)];
    profile.saturation.push_back(front);
    profile.position.push_back(table.front > 0 ? table.flow[at(table.front)] / (front - region.ConnateSw)
                                               : table.slope[0]);
    for (const double s : region.SwAxis) {
        const double before = profile.saturation.back();
        if (s <= before) continue;
        profile.position.push_back((analyticFlow(fluids, table, s) - analyticFlow(fluids, table, before)) /
                                   (s - before));
        profile.saturation.push_back(s);
    }
}

void advanceAnalytic(const FluidTables& fluids, const AnalyticProfile& profile, double step, double time,
                     SolverLine& line) {
    startOutlet(line);
    FlowNode& inlet = line.nodes[0];
    evaluateFluxes(fluids.hasGas, 0, 0, line);
    inlet.passedW = step * inlet.Fw;
    inlet.passedO = step * inlet.Fo;
    for (int i = 1; i <= line.nodeCount; ++i) sumPassage(fluids, profile, time - step, time, i, line);
    setProfile(fluids, profile, time, line);
    evaluateFluxes(fluids.hasGas, 1, line.nodeCount, line);
    FlowNode& last = line.nodes[at(line.nodeCount)];
    line.outletWater = last.Fw;
    line.outletOil = last.Fo;
    line.outletGas = fluids.hasGas ? last.Fg : 0.0;
    line.substeps = 1;
}

}  // namespace kvr
