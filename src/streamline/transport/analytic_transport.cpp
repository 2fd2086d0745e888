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

/// The profile of the given time on the nodes of a line.
void setProfile(const FluidTables& fluids, const AnalyticProfile& profile, double time, SolverLine& line) {
    const SaturationTable& region = regionTable(fluids, 1);
    const double perDay = time > 0.0 ? 1.0 / time : 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        double sw =
            time > 0.0 ? saturationAt(profile, region.ConnateSw, line.Tof[i] * perDay) : region.ConnateSw;
        sw = std::min(std::max(sw, region.ConnateSw), 1.0 - region.ResidualSo);
        FlowNode& node = line.nodes[i];
        node.Sw = sw;
        node.So = 1.0 - sw;
        node.Sg = 0.0;
        setAmounts(fluids.hasGas, node);
    }
}

/// Water beyond connate that stands downstream of `position` in the profile at unit time.
double beyondAt(const AnalyticProfile& profile, double connate, double position) {
    if (profile.position.empty() || position >= profile.position.front()) return 0.0;
    std::size_t k = 1;
    while (k < profile.position.size() && position < profile.position[k]) ++k;
    const double behind = profile.position[k - 1] - position;
    const double here = saturationAt(profile, connate, position);
    return profile.beyond[k - 1] + behind * (0.5 * (profile.saturation[k - 1] + here) - connate);
}

/// Reservoir volume of water per unit of flow that has passed time of flight `tof` since the start of the
/// flood.
double passedSinceStart(const AnalyticProfile& profile, double connate, double tof, double time) {
    return time > 0.0 ? time * beyondAt(profile, connate, tof / time) : 0.0;
}

/// Sums up what passes every position from time - step to time; oil fills the flow.
void passProfile(const FluidTables& fluids, const AnalyticProfile& profile, double step, double time,
                 SolverLine& line) {
    const double connate = regionTable(fluids, 1).ConnateSw;
    FlowNode& inlet = line.nodes[0];
    evaluateFluxes(fluids.hasGas, 0, 0, line);
    inlet.passedW = step * inlet.Fw;
    inlet.passedO = step * inlet.Fo;
    inlet.passedG = fluids.hasGas ? step * inlet.Fg : 0.0;
    const double share = profile.content > 0.0 ? inlet.Fw * inlet.Bw / profile.content : 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        const double water = share * (passedSinceStart(profile, connate, line.Tof[i], time) -
                                      passedSinceStart(profile, connate, line.Tof[i], time - step));
        const double bounded = std::clamp(water, 0.0, step);
        node.passedW = bounded * node.inverseBw;
        node.passedO = (step - bounded) * node.inverseBo;
        node.passedG = fluids.hasGas ? node.Rs * node.passedO : 0.0;
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
    profile.beyond.assign(1, 0.0);
    const double front = table.saturation[at(table.front)];
    profile.saturation.push_back(front);
    profile.position.push_back(table.front > 0 ? table.flow[at(table.front)] / (front - region.ConnateSw)
                                               : table.slope[0]);
    for (const double s : region.SwAxis) {
        const double before = profile.saturation.back();
        if (s <= before) continue;
        const double ahead = profile.position.back();
        const double position =
            (analyticFlow(fluids, table, s) - analyticFlow(fluids, table, before)) / (s - before);
        profile.beyond.push_back(profile.beyond.back() +
                                 (ahead - position) * (0.5 * (before + s) - region.ConnateSw));
        profile.position.push_back(position);
        profile.saturation.push_back(s);
    }
    profile.content = beyondAt(profile, region.ConnateSw, 0.0);
}

void advanceAnalytic(const FluidTables& fluids, const AnalyticProfile& profile, double step, double time,
                     SolverLine& line) {
    startOutlet(line);
    passProfile(fluids, profile, step, time, line);
    setProfile(fluids, profile, time, line);
    evaluateFluxes(fluids.hasGas, 1, line.nodeCount, line);
    const FlowNode& last = line.nodes[at(line.nodeCount)];
    addOutlet({last.passedW, last.passedO, last.passedG, 0.0, 0.0, 0.0}, 1.0, line);
    meanOutlet(step, line);
    line.substeps = 1;
}

}  // namespace kvr
