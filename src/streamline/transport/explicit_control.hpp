#pragma once

#include "streamline/transport/line_kernels.hpp"
#include "streamline/transport/solver_line.hpp"

#include <algorithm>
#include <string_view>

namespace kvr {

/// How explicit transport steps.
struct ExplicitControl {
    double cfl = 0.8;
    double minimumStep = 0.01;        // days; goes before the CFL number, the remaining time goes before it
    double maximumStep = 1e7;         // days
    bool firstStep = false;           // simulated time is 0: the first substep is cut by five
    std::string_view upwind = "SPU";  // "SPU" upstream, anything else limited ("2PU", "3PU", "Leonard")
    bool keepEndPoints = false;
};

inline constexpr double SpeedGuard = 1e-10;     // 1/day, keeps CFL/v finite where nothing moves
inline constexpr double FirstSubstepCut = 5.0;  // of the very first substep of a run

/// F(i-1) brings DeltaTof^-1 plus what the cell takes up, F(i) takes DeltaTof^-1 plus what it lets out.
inline void setRates(SolverLine& line) {
    for (std::size_t i = 1; i <= static_cast<std::size_t>(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        node.outflowRate = node.inverseDeltaTof + std::max(0.0, node.expansion);
        node.inflowRate = node.inverseDeltaTof - std::min(0.0, node.expansion);
    }
}

inline double stepOfSpeed(const ExplicitControl& control, double speed, bool first) {
    double dt = control.cfl / (speed + SpeedGuard);
    if (first) dt /= FirstSubstepCut;
    return std::min(std::max(dt, control.minimumStep), control.maximumStep);
}

/// Clears what the positions have let through and what has left the line.
inline void startOutlet(SolverLine& line) {
    for (std::size_t i = 0; i <= static_cast<std::size_t>(line.nodeCount); ++i)
        line.nodes[i].passedW = line.nodes[i].passedO = line.nodes[i].passedG = 0.0;
    line.outletWater = line.outletOil = line.outletGas = 0.0;
    line.substeps = 0;
}

inline void addOutlet(const NodeFlow& flow, double dt, SolverLine& line) {
    line.outletWater += dt * flow.Fw;
    line.outletOil += dt * flow.Fo;
    line.outletGas += dt * flow.Fg;
}

inline void meanOutlet(double step, SolverLine& line) {
    const double perDay = step > 0.0 ? 1.0 / step : 0.0;
    line.outletWater *= perDay;
    line.outletOil *= perDay;
    line.outletGas *= perDay;
}

}  // namespace kvr
