#include "streamline/fractional_flow.hpp"

#include "streamline/line_kernels.hpp"

#include <cmath>

namespace kvr {

namespace {

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

double signOf(double value) {
    if (value > 0.0) return 1.0;
    return value < 0.0 ? -1.0 : 0.0;
}

/// The value of smaller size; the second on a tie.
double smaller(double a, double b) {
    return std::abs(a) < std::abs(b) ? a : b;
}

}  // namespace

void evaluateFluxes(const FluidTables& tables, int from, int to, SolverLine& line) {
    for (int n = from; n <= to; ++n) {
        const SaturationTable& table = regionTable(tables, line.region[at(n)]);
        if (tables.hasGas)
            setFluxes<true>(table, at(n), line);
        else
            setFluxes<false>(table, at(n), line);
    }
}

void setAmounts(bool hasGas, int n, SolverLine& line) {
    const std::size_t i = at(n);
    line.Cw[i] = line.Sw[i] * line.inverseBw[i];
    line.Co[i] = line.So[i] * line.inverseBo[i];
    if (hasGas) line.Cg[i] = line.Sg[i] * line.inverseBg[i] + line.Rs[i] * line.Co[i];
}

FluxView plainFluxes(const SolverLine& line) {
    return {line.Fw, line.Fo, line.Fg};
}

FluxView limitedFluxes(const SolverLine& line) {
    return {line.limitedFw, line.limitedFo, line.limitedFg};
}

double largestWaveSpeed(const FluxView& flux, bool hasGas, const SolverLine& line) {
    double speed = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const double inverse = line.inverseDeltaTof[i];
        speed = raisedSpeed(speed, flux.w[i] - flux.w[i - 1], line.Cw[i] - line.Cw[i - 1], inverse);
        speed = raisedSpeed(speed, flux.o[i] - flux.o[i - 1], line.Co[i] - line.Co[i - 1], inverse);
        if (hasGas)
            speed = raisedSpeed(speed, flux.g[i] - flux.g[i - 1], line.Cg[i] - line.Cg[i - 1], inverse);
    }
    return speed;
}

void limitFlux(std::string_view scheme, double dt, int nodeCount, std::span<const double> inverseDeltaTof,
               std::span<const double> flux, std::span<double> limited) {
    const bool leonard = scheme == "Leonard";
    limited[0] = flux[0];
    limited[at(nodeCount)] = flux[at(nodeCount)];
    for (std::size_t i = 1; i < at(nodeCount); ++i) {
        const double a = flux[i + 1] - flux[i];
        const double b = flux[i] - flux[i - 1];
        const double c = dt * inverseDeltaTof[i];
        double slope = b;
        if (leonard) slope = b * (c + 1.0) / 3.0 + a * (2.0 - c) / 3.0;
        const double h = slope * 0.5;
        // On a tie b is taken before a, and the smaller of them before h.
        const double least = smaller(h, smaller(a, b));
        const double step = std::abs(least) * signOf(slope) * (signOf(a) * signOf(b) + 1.0);
        limited[i] = flux[i] + step * (1.0 - c) * 0.5;
    }
}

}  // namespace kvr
