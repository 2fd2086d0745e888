#include "streamline/transport/fractional_flow.hpp"

#include "base/index.hpp"
#include "streamline/transport/line_kernels.hpp"

#include <cmath>

namespace kvr {

namespace {

double signOf(double value) {
    if (value > 0.0) return 1.0;
    return value < 0.0 ? -1.0 : 0.0;
}

/// The value of smaller size; the second on a tie.
double smaller(double a, double b) {
    return std::abs(a) < std::abs(b) ? a : b;
}

NodeFlow limitedFlow(bool hasGas, std::size_t i, const SolverLine& line) {
    const FlowNode& node = line.nodes[i];
    return {line.limitedFw[i], line.limitedFo[i], hasGas ? line.limitedFg[i] : 0.0,
            node.Cw,           node.Co,           node.Cg};
}

}  // namespace

double limitedFlux(bool leonard, double c, double before, double here, double after) {
    const double a = after - here;
    const double b = here - before;
    double slope = b;
    if (leonard) slope = b * (c + 1.0) / 3.0 + a * (2.0 - c) / 3.0;
    const double h = slope * 0.5;
    // On a tie b is taken before a, and the smaller of them before h.
    const double least = smaller(h, smaller(a, b));
    const double step = std::abs(least) * signOf(slope) * (signOf(a) * signOf(b) + 1.0);
    return here + step * (1.0 - c) * 0.5;
}

void evaluateFluxes(bool hasGas, int from, int to, SolverLine& line) {
    for (int n = from; n <= to; ++n) {
        if (hasGas)
            setFluxes<true>(line.nodes[at(n)]);
        else
            setFluxes<false>(line.nodes[at(n)]);
    }
}

void setAmounts(bool hasGas, FlowNode& node) {
    node.Cw = node.Sw * node.inverseBw;
    node.Co = node.So * node.inverseBo;
    if (hasGas) node.Cg = node.Sg * node.inverseBg + node.Rs * node.Co;
}

double largestWaveSpeed(bool hasGas, const SolverLine& line) {
    double speed = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i)
        speed = raisedSpeed(hasGas, speed, line.nodes[i - 1], line.nodes[i]);
    return speed;
}

double largestLimitedSpeed(bool hasGas, const SolverLine& line) {
    double speed = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const NodeFlow before = limitedFlow(hasGas, i - 1, line);
        const NodeFlow here = limitedFlow(hasGas, i, line);
        speed = raisedSpeed<false>(speed, before, here, line.nodes[i].inverseDeltaTof);
        if (hasGas)
            speed =
                raisedSpeed(speed, here.Fg - before.Fg, here.Cg - before.Cg, line.nodes[i].inverseDeltaTof);
    }
    return speed;
}

void limitFluxes(std::string_view scheme, bool hasGas, double dt, SolverLine& line) {
    const std::span<const FlowNode> nodes(line.nodes.data(), at(line.nodeCount) + 1);
    limitFlux(scheme, dt, nodes, &FlowNode::Fw, line.limitedFw);
    limitFlux(scheme, dt, nodes, &FlowNode::Fo, line.limitedFo);
    if (hasGas) limitFlux(scheme, dt, nodes, &FlowNode::Fg, line.limitedFg);
}

void limitFlux(std::string_view scheme, double dt, std::span<const FlowNode> nodes, double FlowNode::*flux,
               std::span<double> limited) {
    const std::size_t last = nodes.size() - 1;
    if (scheme == "SPU") {
        for (std::size_t i = 0; i <= last; ++i) limited[i] = nodes[i].*flux;
        return;
    }
    const bool leonard = scheme == "Leonard";
    limited[0] = nodes[0].*flux;
    limited[last] = nodes[last].*flux;
    for (std::size_t i = 1; i < last; ++i) {
        const double c = dt * nodes[i].inverseDeltaTof;
        limited[i] = limitedFlux(leonard, c, nodes[i - 1].*flux, nodes[i].*flux, nodes[i + 1].*flux);
    }
}

}  // namespace kvr
