#include "streamline/transport/implicit_transport.hpp"

#include "streamline/transport/cut_steps.hpp"
#include "streamline/transport/explicit_transport.hpp"
#include "streamline/transport/line_gravity.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double FirstShare = 0.1;  // of the step
constexpr int FewIterations = 4;    // fewer let the step grow
constexpr double Growth = 1.15;
constexpr double LeastShare = 1e-9;           // of the step: where a shorter one does not converge, none does
constexpr double ExplicitShare = 0.1;         // of the time left, above which a substep is worth taking
constexpr double LeastSaturationStep = 1e-8;  // difference that carries a wave speed in the hybrid

/// `days` pass with the nodes as they are: what they let out tells the make-up of the flow.
void passAsItStands(bool hasGas, double days, SolverLine& line) {
    evaluateFluxes(hasGas, 0, line.nodeCount, line);
    for (std::size_t i = 0; i <= static_cast<std::size_t>(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        node.passedW += days * node.Fw;
        node.passedO += days * node.Fo;
        if (hasGas) node.passedG += days * node.Fg;
    }
    const FlowNode& last = line.nodes[static_cast<std::size_t>(line.nodeCount)];
    addOutlet({last.Fw, last.Fo, hasGas ? last.Fg : 0.0, 0.0, 0.0, 0.0}, days, line);
}

/// Newton steps from `elapsed` to the end of the step, the first of `dt` days.
void march(const FluidTables& tables, const ImplicitControl& control, double elapsed, double step, double dt,
           LineNewton& newton, NewtonCounts& counts, SolverLine& line) {
    beginNewton(tables.hasGas, newton, line);
    CutSteps cuts;
    while (elapsed < step) {
        const double left = step - elapsed;
        dt = std::min(dt, left);
        const int iterations = newtonStep(tables, control.newton, elapsed, dt, newton, line);
        if (iterations == 0) {
            counts.iterations += control.newton.maximumIterations;
            counts.halvings += 1;
            dt = cutStep(dt, cuts);
            if (dt < LeastShare * step) return passAsItStands(tables.hasGas, left, line);
            continue;
        }
        counts.iterations += iterations;
        counts.steps += 1;
        ++line.substeps;
        elapsed = dt >= left ? step : elapsed + dt;
        dt = stepBehind(dt, iterations, cuts);
    }
}

double saturationStep(const FlowNode& a, const FlowNode& b) {
    return std::max({std::abs(a.Sw - b.Sw), std::abs(a.So - b.So), std::abs(a.Sg - b.Sg)});
}

/// Largest wave speed, 1/day; positions that hardly differ in saturation carry none.
double hybridSpeed(bool hasGas, const SolverLine& line) {
    double speed = 0.0;
    for (std::size_t i = 1; i <= static_cast<std::size_t>(line.nodeCount); ++i) {
        const FlowNode& before = line.nodes[i - 1];
        const FlowNode& here = line.nodes[i];
        if (saturationStep(before, here) <= LeastSaturationStep) continue;
        speed = raisedSpeed(hasGas, speed, before, here);
    }
    return speed;
}

}  // namespace

ImplicitControl implicitControl(const RunOptions& options) {
    ImplicitControl control;
    control.newton.tolerance = options.SaturationTolerance;
    control.newton.maximumIterations = options.maxSaturationIterations;
    control.newton.keepEndPoints = options.keepIrreducibleSaturation;
    control.newton.route = lineRouteOf(options.saturationSolver);
    control.maximumStep = options.maxDt;
    return control;
}

double firstImplicitStep(const ImplicitControl& control, double step) {
    return std::min(control.maximumStep, FirstShare * step);
}

double nextImplicitStep(double dt, int iterations) {
    return iterations < FewIterations ? dt * Growth : dt;
}

void advanceImplicit(const FluidTables& tables, const ImplicitControl& control, double step,
                     LineNewton& newton, NewtonCounts& counts, SolverLine& line) {
    setRates(line);
    startOutlet(line);
    march(tables, control, 0.0, step, firstImplicitStep(control, step), newton, counts, line);
    meanOutlet(step, line);
}

void advanceHybrid(const FluidTables& tables, const ExplicitControl& explicitly,
                   const ImplicitControl& implicitly, double step, LineNewton& newton, NewtonCounts& counts,
                   SolverLine& line) {
    setRates(line);
    startOutlet(line);
    double elapsed = 0.0;
    while (elapsed < step) {
        const double left = step - elapsed;
        evaluateFluxes(tables.hasGas, elapsed == 0.0 ? 0 : 1, line.nodeCount, line);
        if (line.hasGravity) setGravitySources(tables.hasGas, line);
        const double dt = explicitly.cfl / (hybridSpeed(tables.hasGas, line) + SpeedGuard);
        if (!(dt > ExplicitShare * left)) break;
        limitFluxes("SPU", tables.hasGas, dt, line);
        takeSubstep(tables, explicitly, std::min(dt, left), line);
        elapsed = dt >= left ? step : elapsed + dt;
    }
    if (elapsed < step)
        march(tables, implicitly, elapsed, step, std::min(implicitly.maximumStep, step - elapsed), newton,
              counts, line);
    meanOutlet(step, line);
}

}  // namespace kvr
