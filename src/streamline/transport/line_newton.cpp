#include "streamline/transport/line_newton.hpp"

#include "base/index.hpp"
#include "streamline/transport/explicit_control.hpp"
#include "streamline/transport/newton_node.hpp"

#include <limits>

namespace kvr {

namespace {

constexpr double LargestNodeStep = 0.2;     // change of an unknown in one iteration on a node alone
constexpr double MoveRegrowth = 1.5;        // of the same on a line with gravity, where moves go on
constexpr int NodeIterations = 60;          // halvings included
constexpr double NodeTolerance = 0.5;       // of the tolerance of the line
constexpr double FrozenShare = 0.1;         // of the tolerance: so close, slopes are not worked out anew
constexpr double MostFilling = 2.0;         // of a node in a step with gravity, and its inverse
constexpr double LeastInflowChange = 0.01;  // of the tolerance: less leaves the linear update standing

template <bool Gas>
NewtonWork<Gas>& workOf(LineNewton& newton) {
    if constexpr (Gas)
        return newton.three;
    else
        return newton.water;
}

template <bool Gas>
Fluxes<Gas> asFluxes(const GravityExchange& exchange) {
    if constexpr (Gas) return {exchange.water, exchange.oil, exchange.gas};
    return {exchange.water, exchange.oil};
}

// --- fluxes and slopes -----------------------------------------------------------------------------

/// Fluxes and slopes of node i at its iterate.
template <bool Gas>
void evaluate(const FluidTables& tables, bool keepEndPoints, std::size_t i, LineNewton& newton,
              const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    const Unknowns<Gas>& u = work.unknowns[i];
    const FlowNode& node = line.nodes[i];
    const PhaseState base = stateAt<Gas>(tables, keepEndPoints, node, u);
    const RelPerms kr = relPermsOf<Gas>(node, base.Sw, base.Sg);
    const Fluxes<Gas> flux = fluxesAt<Gas>(node, kr, base.Rs);
    work.iterateFlux[i] = work.evaluatedFlux[i] = flux;
    work.evaluated[i] = u;
    if (line.hasGravity) newton.gravity[i][0] = gravityNode(Gas, node, kr, base.Rs);
    for (std::size_t q = 0; q < u.size(); ++q) {
        Unknowns<Gas> raised = u;
        raised[q] += SlopeStep;
        const PhaseState state = stateAt<Gas>(tables, keepEndPoints, node, raised);
        const RelPerms raisedKr = relPermsOf<Gas>(node, state.Sw, state.Sg);
        const Fluxes<Gas> there = fluxesAt<Gas>(node, raisedKr, state.Rs);
        for (std::size_t p = 0; p < flux.size(); ++p)
            work.slopes[i][p][q] = (there[p] - flux[p]) * PerSlopeStep;
        if (line.hasGravity) newton.gravity[i][q + 1] = gravityNode(Gas, node, raisedKr, state.Rs);
    }
}

/// Fluxes of every node at its iterate. A node that stands close to where its slopes were worked out goes
/// on along them; gravity has no such memory.
template <bool Gas>
void evaluateNodes(const FluidTables& tables, const NewtonControl& control, LineNewton& newton,
                   const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    const double close = line.hasGravity ? 0.0 : FrozenShare * control.tolerance;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const Unknowns<Gas> apart = difference<Gas>(work.unknowns[i], work.evaluated[i]);
        if (sizeOfChange<Gas>(apart) <= close) {
            work.iterateFlux[i] = work.evaluatedFlux[i];
            addAlong<Gas>(work.slopes[i], apart, work.iterateFlux[i]);
        } else {
            evaluate<Gas>(tables, control.keepEndPoints, i, newton, line);
        }
    }
}

template <bool Gas>
void evaluateFaces(LineNewton& newton, const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    for (std::size_t i = 1; i < at(line.nodeCount); ++i) {
        FaceSlopes<Gas>& face = work.faces[i];
        const std::array<GravityNode, 4>& here = newton.gravity[i];
        const std::array<GravityNode, 4>& next = newton.gravity[i + 1];
        face.rate = asFluxes<Gas>(exchangeAt(Gas, line, i, here[0], next[0]));
        for (std::size_t q = 0; q < std::tuple_size_v<Unknowns<Gas>>; ++q) {
            const Fluxes<Gas> a = asFluxes<Gas>(exchangeAt(Gas, line, i, here[q + 1], next[0]));
            const Fluxes<Gas> b = asFluxes<Gas>(exchangeAt(Gas, line, i, here[0], next[q + 1]));
            for (std::size_t p = 0; p < a.size(); ++p) {
                face.here[p][q] = (a[p] - face.rate[p]) * PerSlopeStep;
                face.next[p][q] = (b[p] - face.rate[p]) * PerSlopeStep;
            }
        }
    }
    work.faces[0] = {};
    work.faces[at(line.nodeCount)] = {};
}

// --- the system ------------------------------------------------------------------------------------

template <bool Gas>
void assembleNode(double dt, std::size_t i, const SolverLine& line, LineNewton& newton) {
    constexpr std::size_t M = std::tuple_size_v<Unknowns<Gas>>;
    const NewtonWork<Gas>& work = workOf<Gas>(newton);
    const FlowNode& node = line.nodes[i];
    const Fluxes<Gas> factor = volumeFactors<Gas>(node);
    const Fluxes<Gas> old = amountsOf<Gas>(newton.start[i]);
    const double out = dt * node.outflowRate;
    const double in = dt * node.inflowRate;
    LineMatrix& matrix = newton.matrix;
    for (std::size_t p = 0; p < M; ++p) {
        matrix.rhs[(i - 1) * M + p] =
            factor[p] * (old[p] - out * work.iterateFlux[i][p] + in * work.iterateFlux[i - 1][p]) -
            work.unknowns[i][p];
        for (std::size_t q = 0; q < M; ++q) {
            const std::size_t place = ((i - 1) * M + p) * M + q;
            matrix.diagonal[place] = (p == q ? 1.0 : 0.0) + factor[p] * out * work.slopes[i][p][q];
            matrix.lower[place] = -factor[p] * in * work.slopes[i - 1][p][q];
        }
    }
}

/// Amounts that gravity takes out of node i over dt, at the iterate.
template <bool Gas>
Fluxes<Gas> gravityLoss(const NewtonWork<Gas>& work, const SolverLine& line, double dt, std::size_t i) {
    Fluxes<Gas> loss{};
    if (!line.hasGravity) return loss;
    const double share = dt * line.nodes[i].inverseDeltaTof;
    for (std::size_t p = 0; p < loss.size(); ++p)
        loss[p] = share * (work.faces[i].rate[p] - work.faces[i - 1].rate[p]);
    return loss;
}

template <bool Gas>
void addGravity(double dt, std::size_t i, const SolverLine& line, LineNewton& newton) {
    constexpr std::size_t M = std::tuple_size_v<Unknowns<Gas>>;
    const NewtonWork<Gas>& work = workOf<Gas>(newton);
    const FlowNode& node = line.nodes[i];
    const Fluxes<Gas> factor = volumeFactors<Gas>(node);
    const Fluxes<Gas> loss = gravityLoss<Gas>(work, line, dt, i);
    LineMatrix& matrix = newton.matrix;
    for (std::size_t p = 0; p < M; ++p) {
        matrix.rhs[(i - 1) * M + p] -= factor[p] * loss[p];
        const double share = dt * factor[p] * node.inverseDeltaTof;
        for (std::size_t q = 0; q < M; ++q) {
            const std::size_t place = ((i - 1) * M + p) * M + q;
            matrix.diagonal[place] += share * (work.faces[i].here[p][q] - work.faces[i - 1].next[p][q]);
            matrix.lower[place] -= share * work.faces[i - 1].here[p][q];
            matrix.upper[place] = share * work.faces[i].next[p][q];
        }
    }
}

template <bool Gas>
void assemble(const FluidTables& tables, const NewtonControl& control, double dt, LineNewton& newton,
              const SolverLine& line) {
    evaluateNodes<Gas>(tables, control, newton, line);
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) assembleNode<Gas>(dt, i, line, newton);
    if (!line.hasGravity) return;
    evaluateFaces<Gas>(newton, line);
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) addGravity<Gas>(dt, i, line, newton);
}

// --- the update ------------------------------------------------------------------------------------

/// Solves the balance of node i alone, from its present iterate; fluxes there are not worked out.
template <bool Gas>
void solveNode(const FluidTables& tables, const NewtonControl& control, const NodeBalance<Gas>& balance,
               std::size_t i, LineNewton& newton, const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    Unknowns<Gas>& u = work.unknowns[i];
    Unknowns<Gas> last{};
    double most = LargestNodeStep;
    for (int k = 0; k < NodeIterations; ++k) {
        Unknowns<Gas> update{};
        if (!nodeUpdate<Gas>(balance, u, work.iterateFlux[i], work.slopes[i], update)) return;
        if (turnsBack<Gas>(update, last)) most *= 0.5;
        shorten<Gas>(most, update);
        last = update;
        const Unknowns<Gas> next =
            changed<Gas>(control.keepEndPoints, line.nodes[i], work.unknowns[i - 1], u, update);
        const double change = sizeOfChange<Gas>(difference<Gas>(next, u));
        u = next;
        if (change < NodeTolerance * control.tolerance) return;
        evaluate<Gas>(tables, control.keepEndPoints, i, newton, line);
    }
}

/// What the walk in flow order hands from node to node: fluxes that the linear update counted on, and those
/// that close the balance of the node before.
template <bool Gas>
struct Inflow {
    Fluxes<Gas> linear{};
    Fluxes<Gas> actual{};
};

/// Whether what really flows in matters to the node.
template <bool Gas>
bool differs(double tolerance, double dt, const Inflow<Gas>& inflow, const FlowNode& node) {
    const Fluxes<Gas> factor = volumeFactors<Gas>(node);
    double most = 0.0;
    for (std::size_t p = 0; p < std::tuple_size_v<Unknowns<Gas>>; ++p)
        most = std::max(most, factor[p] * std::abs(inflow.actual[p] - inflow.linear[p]));
    return most * dt * node.inflowRate > LeastInflowChange * tolerance;
}

/// Node i by its own balance with what flows in, and the fluxes that close it.
template <bool Gas>
void limitNode(const FluidTables& tables, const NewtonControl& control, double dt, const Fluxes<Gas>& inflow,
               std::size_t i, LineNewton& newton, const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    const FlowNode& node = line.nodes[i];
    NodeBalance<Gas> balance{volumeFactors<Gas>(node), amountsOf<Gas>(newton.start[i]),
                             dt * node.outflowRate};
    const Fluxes<Gas> loss = gravityLoss<Gas>(work, line, dt, i);
    for (std::size_t p = 0; p < loss.size(); ++p)
        balance.held[p] += dt * node.inflowRate * inflow[p] - loss[p];
    solveNode<Gas>(tables, control, balance, i, newton, line);
    if (leavesBalance<Gas>(control.keepEndPoints, node, balance, work.unknowns[i])) {
        work.closingFlux[i] = balancedFluxes<Gas>(balance, work.unknowns[i]);
    } else {
        evaluate<Gas>(tables, control.keepEndPoints, i, newton, line);
        work.closingFlux[i] = work.iterateFlux[i];
    }
}

/// Update of node i on a line with gravity, where a node sees both its neighbours and cannot be solved alone:
/// moves of at most 0.2, halved whenever they turn back and half as long again where they go on.
template <bool Gas>
Unknowns<Gas> dampedUpdate(std::size_t i, NewtonWork<Gas>& work) {
    Unknowns<Gas> part = work.update[i];
    work.mostMove[i] = turnsBack<Gas>(part, work.lastMove[i])
                           ? 0.5 * work.mostMove[i]
                           : std::min(LargestNodeStep, MoveRegrowth * work.mostMove[i]);
    shorten<Gas>(work.mostMove[i], part);
    work.lastMove[i] = part;
    return part;
}

/// Holds the volume that an iterate fills within twice and half of what the node held at the start; true
/// where it had to. Fluxes know the make-up of a node, not how full it is: factors of its own pressure give
/// what comes in another volume than it had in the node before, and where a node's content is passed
/// thousands of times in a step that empties or overfills it without bound. What flows on is right all the
/// same.
template <bool Gas>
bool keepFill(double start, const FlowNode& node, Unknowns<Gas>& u) {
    if constexpr (Gas) {
        const double fill = fillOf(node, u);
        const double held = std::clamp(fill, start / MostFilling, start * MostFilling);
        if (held == fill || !(fill > 0.0)) return false;
        for (double& value : u) value *= held / fill;
        return true;
    }
    return false;
}

/// Takes the linear updates, limited in flow order, and the fluxes that close the balances. Returns the
/// largest change of an unknown.
template <bool Gas>
double takeUpdates(const FluidTables& tables, const NewtonControl& control, double dt, LineNewton& newton,
                   const SolverLine& line) {
    constexpr std::size_t M = std::tuple_size_v<Unknowns<Gas>>;
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    work.closingFlux[0] = work.iterateFlux[0];
    Inflow<Gas> inflow{work.iterateFlux[0], work.iterateFlux[0]};
    double change = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const FlowNode& node = line.nodes[i];
        Unknowns<Gas>& u = work.unknowns[i];
        const Unknowns<Gas> old = u;
        Unknowns<Gas>& update = work.update[i];
        for (std::size_t q = 0; q < M; ++q) update[q] = newton.matrix.rhs[(i - 1) * M + q];
        Fluxes<Gas> linear = work.iterateFlux[i];
        addAlong<Gas>(work.slopes[i], update, linear);
        if (line.hasGravity) {
            const Unknowns<Gas> part = dampedUpdate<Gas>(i, work);
            u = changed<Gas>(control.keepEndPoints, node, work.unknowns[i - 1], u, part);
            work.closingFlux[i] = linear;
            if (!keepFill<Gas>(newton.start[i].fill, node, u))
                change = std::max(change, sizeOfChange<Gas>(part));
        } else if (sizeOfChange<Gas>(update) <= LargestLinearStep &&
                   !differs<Gas>(control.tolerance, dt, inflow, node)) {
            u = changed<Gas>(control.keepEndPoints, node, work.unknowns[i - 1], u, update);
            work.closingFlux[i] = linear;
        } else {
            limitNode<Gas>(tables, control, dt, inflow.actual, i, newton, line);
        }
        inflow = {linear, work.closingFlux[i]};
        change = std::max(change, sizeOfChange<Gas>(difference<Gas>(u, old)));
    }
    return change;
}

// --- the step --------------------------------------------------------------------------------------

bool isBad(const FlowNode& node) {
    return std::isnan(node.Cw) || std::isnan(node.Co) || std::isnan(node.Cg) || std::isnan(node.Sw);
}

NodeStart startOf(const FlowNode& node) {
    return {node.Sw, node.So, node.Sg, node.Rs, node.bubblePoint, node.Cw, node.Co, node.Cg};
}

void restore(const NodeStart& start, FlowNode& node) {
    node.Sw = start.Sw;
    node.So = start.So;
    node.Sg = start.Sg;
    node.Rs = start.Rs;
    node.bubblePoint = start.bubblePoint;
    node.Cw = start.Cw;
    node.Co = start.Co;
    node.Cg = start.Cg;
}

template <bool Gas>
void startStep(LineNewton& newton, SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    for (std::size_t i = 0; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        if (i > 0 && isBad(node)) restore(startOf(line.nodes[i - 1]), node);
        newton.start[i] = startOf(node);
        work.unknowns[i] = unknownsOf<Gas>(node);
        if constexpr (Gas) newton.start[i].fill = fillOf(node, work.unknowns[i]);
        work.lastMove[i] = {};
        work.mostMove[i] = LargestNodeStep;
    }
}

/// Exchange over face i after the linear update.
template <bool Gas>
Fluxes<Gas> linearExchange(const NewtonWork<Gas>& work, const SolverLine& line, std::size_t i) {
    Fluxes<Gas> rate = work.faces[i].rate;
    if (i == 0 || i == at(line.nodeCount)) return rate;
    addAlong<Gas>(work.faces[i].here, work.update[i], rate);
    addAlong<Gas>(work.faces[i].next, work.update[i + 1], rate);
    return rate;
}

/// Adds what a flux or an exchange lets out of a node over dt.
template <bool Gas>
void notePassed(double dt, const Fluxes<Gas>& flux, FlowNode& node) {
    node.passedW += dt * flux[0];
    node.passedO += dt * flux[1];
    if constexpr (Gas) node.passedG += dt * flux[2];
}

/// Replaces what a node loses where it would be left empty or overfilled: then it keeps what its iterate
/// says, see keepFill.
void holdFilling(double start, const Unknowns<true>& iterate, const FlowNode& node, ConservedAmounts& loss) {
    Unknowns<true> left{std::max(0.0, node.Bw * (node.Cw - loss.water)),
                        std::max(0.0, node.Bo * (node.Co - loss.oil)),
                        std::max(0.0, node.Bg * (node.Cg - loss.gas))};
    if (fillOf(node, left) > 0.0 && !keepFill<true>(start, node, left)) return;
    loss = {node.Cw - iterate[0] * node.inverseBw, node.Co - iterate[1] * node.inverseBo,
            node.Cg - iterate[2] * node.inverseBg};
}

/// New amounts and states from the closing fluxes.
template <bool Gas>
void closeStep(const FluidTables& tables, const NewtonControl& control, double dt, LineNewton& newton,
               SolverLine& line) {
    const NewtonWork<Gas>& work = workOf<Gas>(newton);
    Fluxes<Gas> exchangeBefore{};
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        const Fluxes<Gas>& before = work.closingFlux[i - 1];
        Fluxes<Gas> loss = work.closingFlux[i];
        for (std::size_t p = 0; p < loss.size(); ++p)
            loss[p] = dt * (node.outflowRate * loss[p] - node.inflowRate * before[p]);
        if (line.hasGravity) {
            const Fluxes<Gas> exchange = linearExchange<Gas>(work, line, i);
            for (std::size_t p = 0; p < loss.size(); ++p)
                loss[p] += dt * node.inverseDeltaTof * (exchange[p] - exchangeBefore[p]);
            exchangeBefore = exchange;
            notePassed<Gas>(dt, exchange, node);
        }
        if (!line.tracer.empty()) carryTracers(dt * node.inflowRate * before[0], node.Cw, i, line);
        ConservedAmounts amounts{loss[0], loss[1], 0.0};
        if constexpr (Gas) {
            amounts.gas = loss[2];
            if (line.hasGravity) holdFilling(newton.start[i].fill, work.unknowns[i], node, amounts);
        }
        recoverNode<Gas>(tables, control.keepEndPoints, amounts, line.nodes[i - 1], node);
        if (!Gas && control.keepEndPoints) limitWater(node);
    }
    for (std::size_t i = 0; i <= at(line.nodeCount); ++i)
        notePassed<Gas>(dt, work.closingFlux[i], line.nodes[i]);
    const Fluxes<Gas>& outlet = work.closingFlux[at(line.nodeCount)];
    NodeFlow flow{outlet[0], outlet[1]};
    if constexpr (Gas) flow.Fg = outlet[2];
    addOutlet(flow, dt, line);
}

template <bool Gas>
int stepOf(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
           LineNewton& newton, SolverLine& line) {
    startStep<Gas>(newton, line);
    newton.matrix.upstreamOnly = !line.hasGravity;
    const double tolerance = std::min(control.tolerance, LargestLinearStep);
    for (int iteration = 1; iteration <= control.maximumIterations; ++iteration) {
        assemble<Gas>(tables, control, dt, newton, line);
        if (control.dump != nullptr) dumpLineMatrix(*control.dump, elapsed, dt, iteration, newton.matrix);
        if (!solveLineMatrix(control.route, newton.matrix)) break;
        if (takeUpdates<Gas>(tables, control, dt, newton, line) < tolerance) {
            closeStep<Gas>(tables, control, dt, newton, line);
            return iteration;
        }
    }
    return 0;  // nothing has been written to the nodes yet
}

template <bool Gas>
void sizeWork(std::size_t size, NewtonWork<Gas>& work) {
    if (work.unknowns.size() >= size) return;
    work.unknowns.resize(size);
    work.evaluated.resize(size);
    work.update.resize(size);
    work.lastMove.resize(size);
    work.mostMove.resize(size);
    work.evaluatedFlux.resize(size);
    work.iterateFlux.resize(size);
    work.closingFlux.resize(size);
    work.slopes.resize(size);
    work.faces.resize(size);
}

template <bool Gas>
void beginWork(LineNewton& newton, const SolverLine& line) {
    NewtonWork<Gas>& work = workOf<Gas>(newton);
    const std::size_t size = at(line.nodeCount) + 1;
    sizeWork<Gas>(size, work);
    Unknowns<Gas> never;
    never.fill(std::numeric_limits<double>::quiet_NaN());
    std::fill_n(work.evaluated.begin(), size, never);
    const FlowNode& inlet = line.nodes[0];
    work.slopes[0] = {};
    work.iterateFlux[0] = fluxesAt<Gas>(inlet, relPermsOf<Gas>(inlet, inlet.Sw, inlet.Sg), inlet.Rs);
}

}  // namespace

NewtonCounts& operator+=(NewtonCounts& sum, const NewtonCounts& more) {
    sum.steps += more.steps;
    sum.iterations += more.iterations;
    sum.halvings += more.halvings;
    return sum;
}

void beginNewton(bool hasGas, LineNewton& newton, const SolverLine& line) {
    const std::size_t size = at(line.nodeCount) + 1;
    if (newton.start.size() < size) newton.start.resize(size);
    if (line.hasGravity && newton.gravity.size() < size) newton.gravity.resize(size);
    sizeLineMatrix(hasGas ? 3 : 1, line.nodeCount, newton.matrix);
    if (hasGas)
        beginWork<true>(newton, line);
    else
        beginWork<false>(newton, line);
}

int newtonStep(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
               LineNewton& newton, SolverLine& line) {
    return tables.hasGas ? stepOf<true>(tables, control, elapsed, dt, newton, line)
                         : stepOf<false>(tables, control, elapsed, dt, newton, line);
}

}  // namespace kvr
