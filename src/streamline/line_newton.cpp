#include "streamline/line_newton.hpp"

#include "streamline/explicit_control.hpp"
#include "streamline/line_kernels.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kvr {

namespace {

constexpr double LargestNodeStep = 0.2;       // change of an unknown in one iteration on a node alone
constexpr int NodeIterations = 60;            // halvings included
constexpr double NodeTolerance = 0.1;         // of the tolerance of the line
constexpr double LeastInflowChange = 0.01;    // of the tolerance: less leaves the linear update standing
constexpr double LeastWaterCarrier = 1e-12;   // water amount below which a tracer has nothing to move in

using Amounts = std::array<double, 3>;

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

/// Unknowns of a node, and phases that flow. Without gas water alone is unknown.
template <bool Gas>
struct Form {
    static constexpr std::size_t Unknowns = Gas ? 3 : 1;
    static constexpr std::size_t Phases = Gas ? 3 : 2;
};

Amounts fluxesOf(const FlowNode& node) {
    return {node.Fw, node.Fo, node.Fg};
}

Amounts volumeFactors(const FlowNode& node) {
    return {node.Bw, node.Bo, node.Bg};
}

Amounts amountsOf(const NodeStart& start) {
    return {start.Cw, start.Co, start.Cg};
}

// --- one node --------------------------------------------------------------------------------------

template <bool Gas>
PhaseState stateAt(const FluidTables& tables, bool keepEndPoints, const FlowNode& node,
                   const NodeUnknowns& u) {
    if constexpr (Gas)
        return stateOfAmounts(tables, keepEndPoints, node,
                              {u[0] * node.inverseBw, u[1] * node.inverseBo, u[2] * node.inverseBg});
    else
        return {u[0], 1.0 - u[0], 0.0, node.Rs, node.bubblePoint};
}

template <bool Gas>
Amounts fluxesAt(const FlowNode& node, const PhaseState& state) {
    const PhaseFluxes flux = phaseFluxes<Gas>(node, state.Sw, state.Sg, state.Rs);
    return {flux.w, flux.o, flux.g};
}

/// Fluxes and slopes of a node at its iterate; a node that stands where they were worked out keeps them.
template <bool Gas>
void evaluate(const FluidTables& tables, bool keepEndPoints, std::size_t i, LineNewton& newton,
              SolverLine& line) {
    const NodeUnknowns& u = newton.unknowns[i];
    if (newton.evaluated[i] == u) return;
    FlowNode& node = line.nodes[i];
    const PhaseState base = stateAt<Gas>(tables, keepEndPoints, node, u);
    const Amounts flux = fluxesAt<Gas>(node, base);
    node.Fw = flux[0];
    node.Fo = flux[1];
    if constexpr (Gas) node.Fg = flux[2];
    if (line.hasGravity) newton.gravity[i][0] = gravityNode(Gas, node, base.Sw, base.Sg, base.Rs);
    for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) {
        NodeUnknowns raised = u;
        raised[q] += SlopeStep;
        const PhaseState state = stateAt<Gas>(tables, keepEndPoints, node, raised);
        const Amounts there = fluxesAt<Gas>(node, state);
        for (std::size_t p = 0; p < Form<Gas>::Phases; ++p)
            newton.slopes[i][p][q] = (there[p] - flux[p]) / SlopeStep;
        if (line.hasGravity) newton.gravity[i][q + 1] = gravityNode(Gas, node, state.Sw, state.Sg, state.Rs);
    }
    newton.evaluated[i] = u;
}

/// Limits of a lone water saturation: 0..1 or the end points.
struct WaterLimits {
    double low = 0.0, high = 1.0;
};

WaterLimits waterLimits(bool keepEndPoints, const FlowNode& node) {
    if (!keepEndPoints) return {};
    const SaturationTable& table = *node.table;
    return {table.ConnateSw, 1.0 - table.ResidualSo - table.CriticalSg};
}

bool atLimit(bool keepEndPoints, const FlowNode& node, double sw) {
    const WaterLimits limits = waterLimits(keepEndPoints, node);
    return sw <= limits.low || sw >= limits.high;
}

/// An iterate within its limits; amounts of a run with gas are only not negative. What is not a number takes
/// the value of the node before.
template <bool Gas>
NodeUnknowns limited(bool keepEndPoints, const FlowNode& node, const NodeUnknowns& before, NodeUnknowns u) {
    for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) {
        if (std::isnan(u[q])) u[q] = before[q];
        if constexpr (Gas) u[q] = std::max(u[q], 0.0);
    }
    if constexpr (!Gas) {
        const WaterLimits limits = waterLimits(keepEndPoints, node);
        u[0] = std::clamp(u[0], limits.low, limits.high);
    }
    return u;
}

template <bool Gas>
double largestOf(const NodeUnknowns& a, const NodeUnknowns& b) {
    double most = 0.0;
    for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) most = std::max(most, std::abs(a[q] - b[q]));
    return most;
}

// --- gravity ---------------------------------------------------------------------------------------

Amounts asAmounts(const GravityExchange& exchange) {
    return {exchange.water, exchange.oil, exchange.gas};
}

template <bool Gas>
void evaluateFaces(LineNewton& newton, const SolverLine& line) {
    for (std::size_t i = 1; i < at(line.nodeCount); ++i) {
        FaceSlopes& face = newton.faces[i];
        const std::array<GravityNode, 4>& here = newton.gravity[i];
        const std::array<GravityNode, 4>& next = newton.gravity[i + 1];
        face.rate = asAmounts(exchangeAt(Gas, line, i, here[0], next[0]));
        for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) {
            const Amounts a = asAmounts(exchangeAt(Gas, line, i, here[q + 1], next[0]));
            const Amounts b = asAmounts(exchangeAt(Gas, line, i, here[0], next[q + 1]));
            for (std::size_t p = 0; p < Form<Gas>::Phases; ++p) {
                face.here[p][q] = (a[p] - face.rate[p]) / SlopeStep;
                face.next[p][q] = (b[p] - face.rate[p]) / SlopeStep;
            }
        }
    }
    newton.faces[0] = {};
    newton.faces[at(line.nodeCount)] = {};
}

/// Amount of phase p that gravity takes out of node i over dt, at the iterate.
double gravityLoss(const LineNewton& newton, const SolverLine& line, double dt, std::size_t i, std::size_t p) {
    if (!line.hasGravity) return 0.0;
    return dt * line.nodes[i].inverseDeltaTof * (newton.faces[i].rate[p] - newton.faces[i - 1].rate[p]);
}

// --- the system ------------------------------------------------------------------------------------

template <bool Gas>
void assembleNode(double dt, std::size_t i, const SolverLine& line, LineNewton& newton) {
    constexpr std::size_t M = Form<Gas>::Unknowns;
    const FlowNode& node = line.nodes[i];
    const Amounts factor = volumeFactors(node);
    const Amounts old = amountsOf(newton.start[i]);
    const Amounts out = fluxesOf(node);
    const Amounts in = fluxesOf(line.nodes[i - 1]);
    LineMatrix& matrix = newton.matrix;
    for (std::size_t p = 0; p < M; ++p) {
        const double share = dt * factor[p];
        matrix.rhs[(i - 1) * M + p] =
            factor[p] * (old[p] - gravityLoss(newton, line, dt, i, p)) - newton.unknowns[i][p] -
            share * (node.outflowRate * out[p] - node.inflowRate * in[p]);
        for (std::size_t q = 0; q < M; ++q) {
            const std::size_t place = ((i - 1) * M + p) * M + q;
            matrix.diagonal[place] = (p == q ? 1.0 : 0.0) + share * node.outflowRate * newton.slopes[i][p][q];
            matrix.lower[place] = -share * node.inflowRate * newton.slopes[i - 1][p][q];
            if (!line.hasGravity) continue;
            const double gravity = share * node.inverseDeltaTof;
            matrix.diagonal[place] += gravity * (newton.faces[i].here[p][q] - newton.faces[i - 1].next[p][q]);
            matrix.lower[place] -= gravity * newton.faces[i - 1].here[p][q];
            matrix.upper[place] = gravity * newton.faces[i].next[p][q];
        }
    }
}

template <bool Gas>
void assemble(const FluidTables& tables, bool keepEndPoints, double dt, LineNewton& newton,
              SolverLine& line) {
    const std::size_t last = at(line.nodeCount);
    for (std::size_t i = 1; i <= last; ++i) evaluate<Gas>(tables, keepEndPoints, i, newton, line);
    if (line.hasGravity) evaluateFaces<Gas>(newton, line);
    for (std::size_t i = 1; i <= last; ++i) assembleNode<Gas>(dt, i, line, newton);
}

// --- the update ------------------------------------------------------------------------------------

/// Fluxes of a position after the linear update.
template <bool Gas>
Amounts linearFluxes(const LineNewton& newton, const SolverLine& line, std::size_t i) {
    Amounts flux = fluxesOf(line.nodes[i]);
    for (std::size_t p = 0; p < Form<Gas>::Phases; ++p)
        for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q)
            flux[p] += newton.slopes[i][p][q] * newton.update[i][q];
    return flux;
}

/// Newton update of a node alone; false where its matrix is singular.
template <bool Gas>
bool nodeUpdate(double dt, const Amounts& held, const FlowNode& node, const NodeUnknowns& u,
                const NodeSlopes& slopes, NodeUnknowns& update) {
    constexpr std::size_t M = Form<Gas>::Unknowns;
    const Amounts factor = volumeFactors(node);
    const Amounts out = fluxesOf(node);
    std::array<double, 9> block{};
    for (std::size_t p = 0; p < M; ++p) {
        const double share = dt * factor[p] * node.outflowRate;
        update[p] = factor[p] * held[p] - u[p] - share * out[p];
        for (std::size_t q = 0; q < M; ++q) block[p * M + q] = (p == q ? 1.0 : 0.0) + share * slopes[p][q];
    }
    return solveBlock(static_cast<int>(M), block, update.data());
}

/// Shortens an update so that no unknown changes by more than `most`.
template <bool Gas>
void shorten(double most, NodeUnknowns& update) {
    const double size = largestOf<Gas>(update, NodeUnknowns{});
    if (size <= most) return;
    for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) update[q] *= most / size;
}

template <bool Gas>
bool turnsBack(const NodeUnknowns& a, const NodeUnknowns& b) {
    double product = 0.0;
    for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) product += a[q] * b[q];
    return product < 0.0;
}

/// Solves the balance of node i alone, B u + dt out F(u) = B held, from its present iterate.
template <bool Gas>
void solveNode(const FluidTables& tables, const NewtonControl& control, double dt, const Amounts& held,
               std::size_t i, LineNewton& newton, SolverLine& line) {
    const FlowNode& node = line.nodes[i];
    NodeUnknowns& u = newton.unknowns[i];
    NodeUnknowns before{};
    double most = LargestNodeStep;
    for (int k = 0; k < NodeIterations; ++k) {
        NodeUnknowns update{};
        if (!nodeUpdate<Gas>(dt, held, node, u, newton.slopes[i], update)) return;
        if (turnsBack<Gas>(update, before)) most *= 0.5;
        shorten<Gas>(most, update);
        before = update;
        NodeUnknowns next = u;
        for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q) next[q] += update[q];
        next = limited<Gas>(control.keepEndPoints, node, newton.unknowns[i - 1], next);
        const double change = largestOf<Gas>(next, u);
        u = next;
        evaluate<Gas>(tables, control.keepEndPoints, i, newton, line);
        if (change < NodeTolerance * control.tolerance) return;
    }
}

/// What the walk in flow order hands from node to node: fluxes that the linear update counted on, and those
/// that close the balance of the node before.
struct Inflow {
    Amounts linear{};
    Amounts actual{};
};

/// Whether what really flows in matters to the node.
template <bool Gas>
bool differs(const NewtonControl& control, double dt, const Inflow& inflow, const FlowNode& node) {
    const Amounts factor = volumeFactors(node);
    double most = 0.0;
    for (std::size_t p = 0; p < Form<Gas>::Unknowns; ++p)
        most = std::max(most, factor[p] * std::abs(inflow.actual[p] - inflow.linear[p]));
    return most * dt * node.inflowRate > LeastInflowChange * control.tolerance;
}

/// Outflow that leaves node i exactly what its iterate says, `held` being all it has to give away. A water
/// saturation at its limit cannot take what comes in: it keeps its own fluxes, the recovery scales the rest.
template <bool Gas>
Amounts balancedFluxes(const NewtonControl& control, double dt, const Amounts& held, std::size_t i,
                       const LineNewton& newton, const SolverLine& line) {
    const FlowNode& node = line.nodes[i];
    const double out = dt * node.outflowRate;
    Amounts flux = fluxesOf(node);
    if (!(out > 0.0) || (!Gas && atLimit(control.keepEndPoints, node, newton.unknowns[i][0]))) return flux;
    const Amounts factor = volumeFactors(node);
    for (std::size_t p = 0; p < Form<Gas>::Unknowns; ++p)
        flux[p] = (held[p] - newton.unknowns[i][p] / factor[p]) / out;
    if (!Gas) flux[1] = (1.0 - factor[0] * flux[0]) / factor[1];
    return flux;
}

/// Takes the linear updates, limited in flow order, and the fluxes that close the balances. Returns the
/// largest change of an unknown.
template <bool Gas>
double takeUpdates(const FluidTables& tables, const NewtonControl& control, double dt, LineNewton& newton,
                   SolverLine& line) {
    constexpr std::size_t M = Form<Gas>::Unknowns;
    newton.flux[0] = fluxesOf(line.nodes[0]);
    Inflow inflow{newton.flux[0], newton.flux[0]};
    double change = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const FlowNode& node = line.nodes[i];
        NodeUnknowns& u = newton.unknowns[i];
        const NodeUnknowns old = u;
        NodeUnknowns& update = newton.update[i];
        for (std::size_t q = 0; q < M; ++q) update[q] = newton.matrix.rhs[(i - 1) * M + q];
        const Amounts linear = linearFluxes<Gas>(newton, line, i);
        const double size = largestOf<Gas>(update, NodeUnknowns{});
        if (!(size <= LargestLinearStep) || differs<Gas>(control, dt, inflow, node)) {
            Amounts held = amountsOf(newton.start[i]);
            for (std::size_t p = 0; p < M; ++p)
                held[p] += dt * node.inflowRate * inflow.actual[p] - gravityLoss(newton, line, dt, i, p);
            solveNode<Gas>(tables, control, dt, held, i, newton, line);
            newton.flux[i] = balancedFluxes<Gas>(control, dt, held, i, newton, line);
        } else {
            for (std::size_t q = 0; q < M; ++q) u[q] += update[q];
            u = limited<Gas>(control.keepEndPoints, node, newton.unknowns[i - 1], u);
            newton.flux[i] = linear;
        }
        inflow = {linear, newton.flux[i]};
        change = std::max(change, largestOf<Gas>(u, old));
    }
    return change;
}

// --- the step --------------------------------------------------------------------------------------

bool isBad(const FlowNode& node) {
    return std::isnan(node.Cw) || std::isnan(node.Co) || std::isnan(node.Cg) || std::isnan(node.Sw);
}

template <bool Gas>
void startStep(LineNewton& newton, SolverLine& line) {
    for (std::size_t i = 0; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        if (i > 0 && isBad(node)) {
            const FlowNode& before = line.nodes[i - 1];
            node.Sw = before.Sw;
            node.So = before.So;
            node.Cw = before.Cw;
            node.Co = before.Co;
            node.Sg = before.Sg;
            node.Cg = before.Cg;
            node.Rs = before.Rs;
        }
        newton.start[i] = {node.Sw, node.So, node.Sg, node.Rs, node.bubblePoint, node.Cw, node.Co, node.Cg};
        if constexpr (Gas)
            newton.unknowns[i] = {node.Bw * node.Cw, node.Bo * node.Co, node.Bg * node.Cg};
        else
            newton.unknowns[i] = {node.Sw, 0.0, 0.0};
    }
}

void storeStart(const NodeStart& start, FlowNode& node) {
    node.Sw = start.Sw;
    node.So = start.So;
    node.Sg = start.Sg;
    node.Rs = start.Rs;
    node.bubblePoint = start.bubblePoint;
    node.Cw = start.Cw;
    node.Co = start.Co;
    node.Cg = start.Cg;
}

/// End points on a water saturation; oil fills the rest.
void limitWater(FlowNode& node) {
    const WaterLimits limits = waterLimits(true, node);
    node.Sw = std::clamp(node.Sw, limits.low, limits.high);
    node.So = 1.0 - node.Sw;
    setAmounts(false, node);
}

/// Tracers of a node with the water that flows in over dt.
void carryTracers(double dt, double inflowOfWater, double oldWater, std::size_t i, SolverLine& line) {
    const double in = dt * line.nodes[i].inflowRate * inflowOfWater;
    if (!(oldWater + in > LeastWaterCarrier)) return;
    const double share = in / (oldWater + in);
    for (std::vector<double>& c : line.tracer) c[i] += share * (c[i - 1] - c[i]);
}

/// Exchange over face i after the linear update.
template <bool Gas>
Amounts linearExchange(const LineNewton& newton, const SolverLine& line, std::size_t i) {
    const FaceSlopes& face = newton.faces[i];
    Amounts rate = face.rate;
    if (i == 0 || i == at(line.nodeCount)) return rate;
    for (std::size_t p = 0; p < Form<Gas>::Phases; ++p)
        for (std::size_t q = 0; q < Form<Gas>::Unknowns; ++q)
            rate[p] += face.here[p][q] * newton.update[i][q] + face.next[p][q] * newton.update[i + 1][q];
    return rate;
}

/// New amounts and states from the fluxes of the last linearisation.
template <bool Gas>
void closeStep(const FluidTables& tables, const NewtonControl& control, double dt, const LineNewton& newton,
               SolverLine& line) {
    Amounts before = newton.flux[0];
    Amounts exchangeBefore{};
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        const Amounts& flux = newton.flux[i];
        Amounts loss{};
        for (std::size_t p = 0; p < Form<Gas>::Phases; ++p)
            loss[p] = dt * (node.outflowRate * flux[p] - node.inflowRate * before[p]);
        if (line.hasGravity) {
            const Amounts exchange = linearExchange<Gas>(newton, line, i);
            for (std::size_t p = 0; p < Form<Gas>::Phases; ++p)
                loss[p] += dt * node.inverseDeltaTof * (exchange[p] - exchangeBefore[p]);
            exchangeBefore = exchange;
        }
        storeStart(newton.start[i], node);
        if (!line.tracer.empty()) carryTracers(dt, before[0], node.Cw, i, line);
        recoverNode<Gas>(tables, control.keepEndPoints, {loss[0], loss[1], loss[2]}, line.nodes[i - 1], node);
        if (!Gas && control.keepEndPoints) limitWater(node);
        before = flux;
    }
    addOutlet({before[0], before[1], before[2], 0.0, 0.0, 0.0}, dt, line);
}

template <bool Gas>
int stepOf(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
           LineNewton& newton, SolverLine& line) {
    startStep<Gas>(newton, line);
    const double tolerance = std::min(control.tolerance, LargestLinearStep);
    newton.matrix.nodes = line.nodeCount;
    newton.matrix.upstreamOnly = !line.hasGravity;
    for (int iteration = 1; iteration <= control.maximumIterations; ++iteration) {
        assemble<Gas>(tables, control.keepEndPoints, dt, newton, line);
        if (control.dump != nullptr) dumpLineMatrix(*control.dump, elapsed, dt, iteration, newton.matrix);
        if (!solveLine(control.route, newton.matrix)) break;
        if (takeUpdates<Gas>(tables, control, dt, newton, line) < tolerance) {
            closeStep<Gas>(tables, control, dt, newton, line);
            return iteration;
        }
    }
    for (std::size_t i = 0; i <= at(line.nodeCount); ++i) storeStart(newton.start[i], line.nodes[i]);
    return 0;
}

}  // namespace

NewtonCounts& operator+=(NewtonCounts& sum, const NewtonCounts& more) {
    sum.steps += more.steps;
    sum.iterations += more.iterations;
    sum.halvings += more.halvings;
    return sum;
}

void beginNewton(bool hasGas, LineNewton& newton, SolverLine& line) {
    const std::size_t size = at(line.nodeCount) + 1;
    if (newton.start.size() < size) {
        newton.start.resize(size);
        newton.unknowns.resize(size);
        newton.evaluated.resize(size);
        newton.update.resize(size);
        newton.slopes.resize(size);
        newton.gravity.resize(size);
        newton.faces.resize(size);
        newton.flux.resize(size);
    }
    sizeLineMatrix(hasGas ? 3 : 1, line.nodeCount, newton.matrix);
    constexpr double Never = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t i = 0; i < size; ++i) newton.evaluated[i] = {Never, Never, Never};
    newton.slopes[0] = {};
    newton.update[0] = {};
    if (hasGas)
        setFluxes<true>(line.nodes[0]);
    else
        setFluxes<false>(line.nodes[0]);
}

int newtonStep(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
               LineNewton& newton, SolverLine& line) {
    return tables.hasGas ? stepOf<true>(tables, control, elapsed, dt, newton, line)
                         : stepOf<false>(tables, control, elapsed, dt, newton, line);
}

}  // namespace kvr
