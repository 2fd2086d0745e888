#pragma once

#include "streamline/transport/line_kernels.hpp"
#include "streamline/transport/line_newton.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kvr {

// Kernels of implicit transport on one node of a line, without and with gas.

inline constexpr double SlopeStep = 1e-6;  // by which an unknown is raised for a slope
inline constexpr double PerSlopeStep = 1e6;

template <bool Gas>
inline Fluxes<Gas> amountsOf(const NodeStart& start) {
    if constexpr (Gas) return {start.Cw, start.Co, start.Cg};
    return {start.Cw, start.Co};
}

template <bool Gas>
inline Fluxes<Gas> volumeFactors(const FlowNode& node) {
    if constexpr (Gas) return {node.Bw, node.Bo, node.Bg};
    return {node.Bw, node.Bo};
}

/// Share of the pores that a node's phases fill at its held factors.
inline double fillOf(const FlowNode& node, const Unknowns<true>& u) {
    const double dissolved = node.saturatedRs * node.inverseBo * node.Bg * u[1];
    return u[0] + u[1] + std::max(0.0, u[2] - dissolved);
}

template <bool Gas>
inline Unknowns<Gas> unknownsOf(const FlowNode& node) {
    if constexpr (Gas) return {node.Bw * node.Cw, node.Bo * node.Co, node.Bg * node.Cg};
    return {node.Sw};
}

/// The state that fluxes are worked out at: without its bubble point where there is gas.
template <bool Gas>
inline PhaseState stateAt(const FluidTables& tables, bool keepEndPoints, const FlowNode& node,
                          const Unknowns<Gas>& u) {
    if constexpr (Gas)
        return openStateOfAmounts(tables, keepEndPoints, node,
                                  {u[0] * node.inverseBw, u[1] * node.inverseBo, u[2] * node.inverseBg});
    else
        return {u[0], 1.0 - u[0], 0.0, node.Rs, node.bubblePoint};
}

template <bool Gas>
inline Fluxes<Gas> fluxesAt(const FlowNode& node, const RelPerms& kr, double rs) {
    const PhaseFluxes flux = phaseFluxes<Gas>(node, kr, rs);
    if constexpr (Gas) return {flux.w, flux.o, flux.g};
    return {flux.w, flux.o};
}

/// flux += slopes * change.
template <bool Gas>
inline void addAlong(const FluxSlopes<Gas>& slopes, const Unknowns<Gas>& change, Fluxes<Gas>& flux) {
    for (std::size_t p = 0; p < flux.size(); ++p)
        for (std::size_t q = 0; q < change.size(); ++q) flux[p] += slopes[p][q] * change[q];
}

template <bool Gas>
inline double sizeOfChange(const Unknowns<Gas>& change) {
    if constexpr (!Gas) return std::abs(change[0]);
    double most = 0.0;
    for (const double value : change) {
        if (std::isnan(value)) return value;
        most = std::max(most, std::abs(value));
    }
    return most;
}

template <bool Gas>
inline Unknowns<Gas> difference(const Unknowns<Gas>& a, const Unknowns<Gas>& b) {
    Unknowns<Gas> result;
    for (std::size_t q = 0; q < result.size(); ++q) result[q] = a[q] - b[q];
    return result;
}

/// Limits of a lone water saturation: 0..1 or the end points.
struct WaterLimits {
    double low = 0.0, high = 1.0;
};

inline WaterLimits waterLimits(bool keepEndPoints, const FlowNode& node) {
    if (!keepEndPoints) return {};
    const SaturationTable& table = *node.table;
    return {table.ConnateSw, std::max(table.ConnateSw, 1.0 - table.ResidualSo - table.CriticalSg)};
}

/// Limits of an iterate: a node that holds more or less than its limits when the step starts, as water below
/// a contact beside end points that are kept, may stay where it is. Else no step, however short, would
/// close its balance.
inline WaterLimits iterateLimits(bool keepEndPoints, const FlowNode& node) {
    const WaterLimits limits = waterLimits(keepEndPoints, node);
    const double held = node.Bw * node.Cw;
    return {std::min(limits.low, held), std::max(limits.high, held)};
}

inline bool atLimit(bool keepEndPoints, const FlowNode& node, double sw) {
    const WaterLimits limits = iterateLimits(keepEndPoints, node);
    return sw <= limits.low || sw >= limits.high;
}

/// End points on a water saturation; oil fills the rest.
inline void limitWater(FlowNode& node) {
    const WaterLimits limits = waterLimits(true, node);
    node.Sw = std::clamp(node.Sw, limits.low, limits.high);
    node.So = 1.0 - node.Sw;
    setAmounts(false, node);
}

/// The iterate `u` after `change`, within its limits; amounts of a run with gas are only not negative. What
/// is not a number takes the value of the node before.
template <bool Gas>
inline Unknowns<Gas> changed(bool keepEndPoints, const FlowNode& node, const Unknowns<Gas>& before,
                             Unknowns<Gas> u, const Unknowns<Gas>& change) {
    for (std::size_t q = 0; q < u.size(); ++q) {
        u[q] += change[q];
        if (std::isnan(u[q])) u[q] = before[q];
        if constexpr (Gas) u[q] = std::max(u[q], 0.0);
    }
    if constexpr (!Gas) {
        const WaterLimits limits = iterateLimits(keepEndPoints, node);
        u[0] = std::clamp(u[0], limits.low, limits.high);
    }
    return u;
}

/// What the balance of a node alone needs: B u + out F(u) = B held.
template <bool Gas>
struct NodeBalance {
    Fluxes<Gas> factor{};  // volume factors
    Fluxes<Gas> held{};    // amounts at the start and all that comes in
    double out = 0.0;      // dt times the rate of outflow
};

/// Newton update of a node alone; false where its matrix is singular.
template <bool Gas>
inline bool nodeUpdate(const NodeBalance<Gas>& balance, const Unknowns<Gas>& u, const Fluxes<Gas>& flux,
                       const FluxSlopes<Gas>& slopes, Unknowns<Gas>& update) {
    constexpr std::size_t M = std::tuple_size_v<Unknowns<Gas>>;
    std::array<double, 9> block{};
    for (std::size_t p = 0; p < M; ++p) {
        const double share = balance.factor[p] * balance.out;
        update[p] = balance.factor[p] * balance.held[p] - u[p] - share * flux[p];
        for (std::size_t q = 0; q < M; ++q) block[p * M + q] = (p == q ? 1.0 : 0.0) + share * slopes[p][q];
    }
    if constexpr (Gas) return solveBlock(static_cast<int>(M), block, update.data());
    if (!(std::abs(block[0]) > 0.0)) return false;
    update[0] /= block[0];
    return true;
}

/// Shortens an update so that no unknown changes by more than `most`.
template <bool Gas>
inline void shorten(double most, Unknowns<Gas>& update) {
    const double size = sizeOfChange<Gas>(update);
    if (size <= most) return;
    for (double& value : update) value *= most / size;
}

template <bool Gas>
inline bool turnsBack(const Unknowns<Gas>& a, const Unknowns<Gas>& b) {
    double product = 0.0;
    for (std::size_t q = 0; q < a.size(); ++q) product += a[q] * b[q];
    return product < 0.0;
}

/// Whether what a node lets out can make up its balance. A water saturation at its limit cannot take what
/// comes in: it lets out its own fluxes, and the recovery scales the rest away.
template <bool Gas>
inline bool leavesBalance(bool keepEndPoints, const FlowNode& node, const NodeBalance<Gas>& balance,
                          const Unknowns<Gas>& u) {
    return balance.out > 0.0 && (Gas || !atLimit(keepEndPoints, node, u[0]));
}

/// Outflow that leaves a node exactly what its iterate says; without gas oil fills the flow.
template <bool Gas>
inline Fluxes<Gas> balancedFluxes(const NodeBalance<Gas>& balance, const Unknowns<Gas>& u) {
    Fluxes<Gas> flux{};
    for (std::size_t p = 0; p < u.size(); ++p)
        flux[p] = (balance.held[p] - u[p] / balance.factor[p]) / balance.out;
    if (!Gas) flux[1] = (1.0 - balance.factor[0] * flux[0]) / balance.factor[1];
    return flux;
}

/// Tracers of node i, with a water amount of `oldWater`, take what comes in with `in` of water from the node
/// before; implicit upstream, so a mean of the two however much comes in.
inline void carryTracers(double in, double oldWater, std::size_t i, SolverLine& line) {
    constexpr double LeastCarrier = 1e-12;  // water amount below which a tracer has nothing to move in
    if (!(oldWater + in > LeastCarrier)) return;
    const double share = in / (oldWater + in);
    for (std::vector<double>& c : line.tracer) c[i] += share * (c[i - 1] - c[i]);
}

}  // namespace kvr
