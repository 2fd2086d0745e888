#include "streamline/transport/explicit_transport.hpp"

#include "base/index.hpp"
#include "streamline/transport/line_gravity.hpp"
#include "streamline/transport/line_kernels.hpp"

namespace kvr {

namespace {

constexpr double LeastWaterCarrier = 1e-12;  // water amount below which a tracer has nothing to move in

template <bool Gas>
void moveTogether(const FluidTables& tables, bool keepEndPoints, double dt, SolverLine& line) {
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        const double out = dt * node.outflowRate;
        const double in = dt * node.inflowRate;
        ConservedAmounts loss{out * line.limitedFw[i] - in * line.limitedFw[i - 1],
                              out * line.limitedFo[i] - in * line.limitedFo[i - 1], 0.0};
        if constexpr (Gas) loss.gas = out * line.limitedFg[i] - in * line.limitedFg[i - 1];
        if (line.hasGravity) {
            loss.water += dt * line.gravityW[i];
            loss.oil += dt * line.gravityO[i];
            loss.gas += dt * line.gravityG[i];
        }
        recoverNode<Gas>(tables, keepEndPoints, loss, line.nodes[i - 1], node);
    }
}

/// Adds what the limited fluxes and gravity let through every position over dt.
void notePassed(bool hasGas, double dt, SolverLine& line) {
    for (std::size_t i = 0; i <= at(line.nodeCount); ++i) {
        line.nodes[i].passedW += dt * line.limitedFw[i];
        line.nodes[i].passedO += dt * line.limitedFo[i];
        if (hasGas) line.nodes[i].passedG += dt * line.limitedFg[i];
    }
    if (!line.hasGravity) return;
    for (std::size_t i = 1; i < at(line.nodeCount); ++i) {
        line.nodes[i].passedW += dt * line.exchange[i].water;
        line.nodes[i].passedO += dt * line.exchange[i].oil;
        line.nodes[i].passedG += dt * line.exchange[i].gas;
    }
}

/// Water-borne tracers over dt on the water fluxes of the substep, upstream, in steps of their own limit. The
/// water of a node goes evenly from its old to its new amount, so that none of a tracer is lost.
void moveTracers(const ExplicitControl& control, double dt, SolverLine& line) {
    const std::vector<double>& flux = line.limitedFw;
    const auto inflow = [&](std::size_t i) { return flux[i - 1] * line.nodes[i].inflowRate; };
    const auto outflow = [&](std::size_t i) { return flux[i] * line.nodes[i].outflowRate; };
    double fastest = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i)
        if (line.nodes[i].Cw > LeastWaterCarrier) fastest = std::max(fastest, inflow(i) / line.nodes[i].Cw);
    const double own = std::max(control.cfl / (fastest + SpeedGuard), control.minimumStep);
    for (double left = dt; left > 0.0;) {
        const double h = std::min(own, left);
        left = h < left ? left - h : 0.0;
        for (std::size_t i = at(line.nodeCount); i >= 1; --i) {
            const double carrier = line.nodes[i].Cw - left * (inflow(i) - outflow(i));
            if (carrier <= LeastWaterCarrier) continue;
            const double courant = std::min(1.0, h * inflow(i) / carrier);
            for (std::vector<double>& c : line.tracer) c[i] += courant * (c[i - 1] - c[i]);
        }
    }
}

/// Length of the substep at the present fluxes, which are limited on the way.
double substepLength(const ExplicitControl& control, bool hasGas, bool first, double left, SolverLine& line) {
    const double plain = std::min(stepOfSpeed(control, largestWaveSpeed(hasGas, line), first), left);
    limitFluxes(control.upwind, hasGas, plain, line);
    if (control.upwind == "SPU") return plain;
    return std::min(plain, stepOfSpeed(control, largestLimitedSpeed(hasGas, line), first));
}

}  // namespace

ExplicitControl explicitControl(const RunOptions& options, double time) {
    ExplicitControl control;
    control.cfl = options.cfl;
    control.minimumStep = options.minCflStep;
    control.maximumStep = options.maxDt;
    control.firstStep = time == 0.0;
    control.upwind = options.upwindWord;
    control.keepEndPoints = options.keepIrreducibleSaturation;
    return control;
}

void takeSubstep(const FluidTables& tables, const ExplicitControl& control, double dt, SolverLine& line) {
    const bool hasGas = tables.hasGas;
    const std::size_t last = at(line.nodeCount);
    addOutlet(
        {line.limitedFw[last], line.limitedFo[last], hasGas ? line.limitedFg[last] : 0.0, 0.0, 0.0, 0.0}, dt,
        line);
    notePassed(hasGas, dt, line);
    if (hasGas)
        moveTogether<true>(tables, control.keepEndPoints, dt, line);
    else
        moveTogether<false>(tables, control.keepEndPoints, dt, line);
    if (!line.tracer.empty()) moveTracers(control, dt, line);
    ++line.substeps;
}

void advanceTogether(const FluidTables& tables, const ExplicitControl& control, double step,
                     SolverLine& line) {
    const bool hasGas = tables.hasGas;
    setRates(line);
    startOutlet(line);
    double t = 0.0;
    do {
        const double left = step - t;
        evaluateFluxes(hasGas, t == 0.0 ? 0 : 1, line.nodeCount, line);
        if (line.hasGravity) setGravitySources(hasGas, line);
        const double dt = substepLength(control, hasGas, control.firstStep && t == 0.0, left, line);
        takeSubstep(tables, control, dt, line);
        t = dt >= left ? step : t + dt;
    } while (t < step);
    meanOutlet(step, line);
}

void advanceExplicit(const FluidTables& tables, const ExplicitControl& control, double step,
                     ExplicitScratch& scratch, SolverLine& line) {
    const bool inOnePiece = control.upwind != "SPU" || !line.tracer.empty() || line.hasGravity;
    if (inOnePiece) return advanceTogether(tables, control, step, line);
    advanceInStretches(tables, control, step, scratch, line);
}

}  // namespace kvr
