#include "streamline/transport/stretch_transport.hpp"

#include "base/index.hpp"
#include "streamline/transport/phase_pair.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr double EvenRatio = 4.0;     // of residence times, up to which a line goes as one
constexpr double QuietChange = 1e-4;  // amount that a quiet stretch may move by in one substep
constexpr double NoLimit = 1e30;      // days
constexpr double SubstepStart = 1.5;  // work of a substep beside its nodes, in nodes; measured

/// Work over a step: substeps go with 1/least, each costs its start and its nodes.
double costOf(const Stretch& stretch) {
    return (SubstepStart + stretch.length) / stretch.least;
}

Stretch joined(const Stretch& a, const Stretch& b) {
    return {b.last, a.length + b.length, std::min(a.least, b.least)};
}

/// Joins the last `count` stretches of the list if that saves work.
bool joinLast(std::size_t count, std::vector<Stretch>& stretches) {
    if (stretches.size() < count) return false;
    const std::size_t first = stretches.size() - count;
    Stretch all = stretches[first];
    double apart = costOf(all);
    for (std::size_t k = first + 1; k < stretches.size(); ++k) {
        all = joined(all, stretches[k]);
        apart += costOf(stretches[k]);
    }
    if (costOf(all) > apart) return false;
    stretches.resize(first + 1);
    stretches.back() = all;
    return true;
}

/// Cuts a line into stretches, one if it is even. Long nodes between two short ones are cheaper taken
/// along, hence the look at three.
void cutStretches(const SolverLine& line, std::vector<Stretch>& stretches) {
    const auto [least, most] =
        std::minmax_element(line.DeltaTof.begin() + 1, line.DeltaTof.begin() + 1 + line.nodeCount);
    stretches.clear();
    if (*most <= EvenRatio * *least || *least <= 0.0) {
        stretches.push_back({line.nodeCount, line.nodeCount, *least});
        return;
    }
    for (int n = 1; n <= line.nodeCount; ++n) {
        stretches.push_back({n, 1, line.DeltaTof[at(n)]});
        while (joinLast(2, stretches) || joinLast(3, stretches)) {
        }
    }
}

bool sameFlow(const NodeFlow& a, const NodeFlow& b) {
    return a.Fw == b.Fw && a.Fo == b.Fo && a.Fg == b.Fg && a.Cw == b.Cw && a.Co == b.Co && a.Cg == b.Cg;
}

/// Appends what flowed out until `until`; a flow that has not changed prolongs the record before.
void addRecord(const NodeFlow& flow, double until, std::vector<FlowRecord>& records) {
    if (!records.empty() && sameFlow(records.back().flow, flow))
        records.back().until = until;
    else
        records.push_back({until, flow});
}

/// The inflow of a stretch as its time goes on.
struct InflowCursor {
    const std::vector<FlowRecord>& records;
    std::size_t now = 0;  // record that holds at the present time
};

/// The largest step that inflow which begins at some moment leaves to the first node, days; what leaves
/// `room` days or more is not worked out.
template <bool Gas>
double stepOfInflow(const ExplicitControl& control, const NodeFlow& inflow, const FlowNode& node,
                    double room) {
    const auto binds = [&](double dF, double dC) {
        const double step = std::abs(dC);
        return step > QuietChange && std::abs(dF) * node.inverseDeltaTof * room > control.cfl * step;
    };
    bool bound =
        binds(node.Fw - inflow.Fw, node.Cw - inflow.Cw) || binds(node.Fo - inflow.Fo, node.Co - inflow.Co);
    if constexpr (Gas) bound = bound || binds(node.Fg - inflow.Fg, node.Cg - inflow.Cg);
    if (!bound) return room;
    const double speed = raisedSpeed<Gas>(0.0, inflow, flowAt<Gas>(node), node.inverseDeltaTof);
    return stepOfSpeed(control, speed, false);
}

/// Inflow integrated from t to `end`; `end` comes back earlier where inflow that begins in between would
/// move faster than the substep allows, by the same rule from that moment on. Moves the cursor there.
template <bool Gas>
NodeFlow integrateInflow(const ExplicitControl& control, const FlowNode& firstNode, double t,
                         InflowCursor& cursor, double& end) {
    NodeFlow integral;
    double from = t;
    for (;;) {
        const FlowRecord& record = cursor.records[cursor.now];
        const bool last = cursor.now + 1 >= cursor.records.size();
        const double to = last ? end : std::min(record.until, end);
        integral.Fw += (to - from) * record.flow.Fw;
        integral.Fo += (to - from) * record.flow.Fo;
        if constexpr (Gas) integral.Fg += (to - from) * record.flow.Fg;
        if (last || record.until > end) return integral;
        ++cursor.now;
        if (to >= end) return integral;
        from = to;
        end = std::min(end,
                       to + stepOfInflow<Gas>(control, cursor.records[cursor.now].flow, firstNode, end - to));
    }
}

/// What a substep leaves to decide the next one.
struct Motion {
    double speed = 0.0;   // 1/day, largest wave speed of the new state, coming inflow included
    double change = 0.0;  // largest change of an amount
};

double largestChange(double largest, const NodeFlow& a, const NodeFlow& b) {
    largest = std::max(largest, std::abs(a.Cw - b.Cw));
    largest = std::max(largest, std::abs(a.Co - b.Co));
    return std::max(largest, std::abs(a.Cg - b.Cg));
}

/// One substep of nodes a..b: `integral` flows into node a over dt, `fluxOf` tells what leaves a node a day.
template <bool Gas, class FluxOf>
Motion moveNodes(const FluidTables& tables, const ExplicitControl& control, double dt,
                 const NodeFlow& integral, const NodeFlow& coming, std::size_t a, std::size_t b,
                 FluxOf fluxOf, FlowNode* nodes) {
    Motion motion;
    NodeFlow before = coming;
    NodeFlow in = integral;
    for (std::size_t i = a; i <= b; ++i) {
        FlowNode& node = nodes[i];
        const ConservedAmounts flux = fluxOf(i);
        const NodeFlow out{dt * flux.water, dt * flux.oil, dt * flux.gas, 0.0, 0.0, 0.0};
        const ConservedAmounts loss{node.outflowRate * out.Fw - node.inflowRate * in.Fw,
                                    node.outflowRate * out.Fo - node.inflowRate * in.Fo,
                                    node.outflowRate * out.Fg - node.inflowRate * in.Fg};
        in = out;
        node.passedW += out.Fw;
        node.passedO += out.Fo;
        node.passedG += out.Fg;
        const NodeFlow old = flowAt<Gas>(node);
        if constexpr (Gas)
            recoverThreePhase<true>(tables, control.keepEndPoints, loss, nodes[i - 1], node);
        else
            recoverTwoPhase(loss, nodes[i - 1], node);
        setFluxes<Gas>(node);
        const NodeFlow here = flowAt<Gas>(node);
        motion.speed = raisedSpeed<Gas>(motion.speed, before, here, node.inverseDeltaTof);
        motion.change = largestChange(motion.change, here, old);
        before = here;
    }
    return motion;
}

/// By the nodes' own fluxes, with gas.
Motion moveWithGas(const FluidTables& tables, const ExplicitControl& control, double dt,
                   const NodeFlow& integral, const NodeFlow& coming, std::size_t a, std::size_t b,
                   FlowNode* nodes) {
    const auto own = [&](std::size_t i) { return ConservedAmounts{nodes[i].Fw, nodes[i].Fo, nodes[i].Fg}; };
    return moveNodes<true>(tables, control, dt, integral, coming, a, b, own, nodes);
}

/// By the nodes' own fluxes without gas, water and oil as pairs. Three short loops: the processor then has
/// several nodes in work at once, where one long loop would wait for each node's divisions.
Motion moveWithoutGas(double dt, const NodeFlow& integral, const NodeFlow& coming, std::size_t a,
                      std::size_t b, FlowNode* nodes) {
    PhasePair change = {0.0, 0.0};
    PhasePair in = {integral.Fw, integral.Fo};
    for (std::size_t i = a; i <= b; ++i) {
        FlowNode& node = nodes[i];
        const PhasePair out = dt * pairAt(node.Fw);
        const PhasePair old = pairAt(node.Cw);
        const PhasePair amount =
            recoverPair(node.outflowRate * out - node.inflowRate * in, nodes[i - 1], node);
        change = larger(sizeOf(amount - old), change);
        storePair(pairAt(node.passedW) + out, node.passedW);
        in = out;
    }
    for (std::size_t i = a; i <= b; ++i) setPairFluxes(nodes[i]);
    PhasePair speed = {0.0, 0.0};
    PhasePair fluxBefore = {coming.Fw, coming.Fo};
    PhasePair amountBefore = {coming.Cw, coming.Co};
    for (std::size_t i = a; i <= b; ++i) {
        const PhasePair flux = pairAt(nodes[i].Fw);
        const PhasePair amount = pairAt(nodes[i].Cw);
        speed = larger(pairSpeeds(flux - fluxBefore, amount - amountBefore, nodes[i].inverseDeltaTof), speed);
        fluxBefore = flux;
        amountBefore = amount;
    }
    return {std::max(speed[0], speed[1]), std::max(change[0], change[1])};
}

/// Limits the fluxes of nodes a..b, into which `coming` flows, over a substep of dt; returns the largest wave
/// speed of the limited ones. The last node does not see the stretch behind it and keeps its own flux, as the
/// last one of a line does: behind a long node short ones flow as it does, and the limiter would leave its
/// flux as well. A substep beyond the limit of a node (`cut` lines take such where they are quiet) is not
/// corrected there.
template <bool Gas>
double limitStretch(const ExplicitControl& control, bool cut, double dt, const NodeFlow& coming,
                    std::size_t a, std::size_t b, SolverLine& line) {
    const bool leonard = control.upwind == "Leonard";
    double speed = 0.0;
    NodeFlow before = coming, limitedBefore = coming;
    for (std::size_t i = a; i <= b; ++i) {
        const FlowNode& node = line.nodes[i];
        const NodeFlow here = flowAt<Gas>(node);
        NodeFlow limited = here;
        if (i < b) {
            const FlowNode& next = line.nodes[i + 1];
            const double c = cut ? std::min(1.0, dt * node.inverseDeltaTof) : dt * node.inverseDeltaTof;
            limited.Fw = limitedFlux(leonard, c, before.Fw, here.Fw, next.Fw);
            limited.Fo = limitedFlux(leonard, c, before.Fo, here.Fo, next.Fo);
            if constexpr (Gas) limited.Fg = limitedFlux(leonard, c, before.Fg, here.Fg, next.Fg);
        }
        line.limitedFw[i] = limited.Fw;
        line.limitedFo[i] = limited.Fo;
        line.limitedFg[i] = limited.Fg;
        speed = raisedSpeed<Gas>(speed, limitedBefore, limited, node.inverseDeltaTof);
        before = here;
        limitedBefore = limited;
    }
    return speed;
}

/// By the limited fluxes of the nodes.
template <bool Gas>
Motion moveLimited(const FluidTables& tables, const ExplicitControl& control, double dt,
                   const NodeFlow& integral, const NodeFlow& coming, std::size_t a, std::size_t b,
                   SolverLine& line) {
    const auto limited = [&](std::size_t i) {
        return ConservedAmounts{line.limitedFw[i], line.limitedFo[i], line.limitedFg[i]};
    };
    return moveNodes<Gas>(tables, control, dt, integral, coming, a, b, limited, line.nodes.data());
}

template <bool Gas>
double speedOf(const NodeFlow& inflow, std::size_t a, std::size_t b, const FlowNode* nodes) {
    double speed = 0.0;
    NodeFlow before = inflow;
    for (std::size_t i = a; i <= b; ++i) {
        const NodeFlow here = flowAt<Gas>(nodes[i]);
        speed = raisedSpeed<Gas>(speed, before, here, nodes[i].inverseDeltaTof);
        before = here;
    }
    return speed;
}

/// How long a substep a stretch that moved by `change` over dt may take until it moves by QuietChange. Short
/// nodes follow the long one before them within few substeps and then hardly move, while differences of
/// their volume factors keep the wave speeds up.
double quietStep(double change, double dt) {
    return change > 0.0 ? dt * (QuietChange / change) : NoLimit;
}

/// Takes nodes a..b over the whole step, fed by `inflow`; what they let out goes into `outflow`.
template <bool Gas, bool Limited>
void advanceStretch(const FluidTables& tables, const ExplicitControl& control, double step, bool cut,
                    std::size_t a, std::size_t b, const std::vector<FlowRecord>& inflow,
                    std::vector<FlowRecord>& outflow, SolverLine& line) {
    FlowNode* nodes = line.nodes.data();
    outflow.clear();
    InflowCursor cursor{inflow};
    Motion motion{speedOf<Gas>(inflow.front().flow, a, b, nodes), 0.0};
    double quiet = 0.0;
    bool first = control.firstStep;
    double t = 0.0;
    do {
        double dt = stepOfSpeed(control, motion.speed, first);
        const bool lengthened = quiet > dt;
        if (lengthened) dt = std::min(quiet, control.maximumStep);
        if constexpr (Limited) {
            dt = std::min(dt, step - t);
            const NodeFlow& now = inflow[cursor.now].flow;
            const double speed = limitStretch<Gas>(control, cut, dt, now, a, b, line);
            const double own = lengthened ? dt : stepOfSpeed(control, speed, first);
            if (own < dt) {
                dt = own;
                limitStretch<Gas>(control, cut, dt, now, a, b, line);
            }
        }
        double end = std::min(t + dt, step);
        const NodeFlow integral = integrateInflow<Gas>(control, nodes[a], t, cursor, end);
        addRecord(flowAt<Gas>(nodes[b]), end, outflow);
        const NodeFlow& coming = inflow[cursor.now].flow;
        if constexpr (Limited)
            motion = moveLimited<Gas>(tables, control, end - t, integral, coming, a, b, line);
        else if constexpr (Gas)
            motion = moveWithGas(tables, control, end - t, integral, coming, a, b, nodes);
        else
            motion = moveWithoutGas(end - t, integral, coming, a, b, nodes);
        quiet = cut ? quietStep(motion.change, end - t) : 0.0;
        ++line.substeps;
        first = false;
        t = end;
    } while (t < step);
    if constexpr (Gas)
        for (std::size_t i = a; i <= b; ++i)
            completeBubblePoint(pvtOf(tables, nodes[i]), nodes[i].pressure, nodes[i].Rs,
                                nodes[i].bubblePoint);
}

template <bool Gas, bool Limited>
void advanceLine(const FluidTables& tables, const ExplicitControl& control, double step,
                 ExplicitScratch& scratch, SolverLine& line) {
    startOutlet(line);
    cutStretches(line, scratch.stretches);
    evaluateFluxes(Gas, 0, line.nodeCount, line);
    scratch.inflow.clear();
    addRecord(flowAt<Gas>(line.nodes[0]), step, scratch.inflow);
    FlowNode& inlet = line.nodes[0];
    inlet.passedW = step * inlet.Fw;
    inlet.passedO = step * inlet.Fo;
    if constexpr (Gas) inlet.passedG = step * inlet.Fg;
    int first = 1;
    for (const Stretch& stretch : scratch.stretches) {
        advanceStretch<Gas, Limited>(tables, control, step, scratch.stretches.size() > 1, at(first),
                                     at(stretch.last), scratch.inflow, scratch.outflow, line);
        scratch.inflow.swap(scratch.outflow);
        first = stretch.last + 1;
    }
    double from = 0.0;
    for (const FlowRecord& record : scratch.inflow) {
        addOutlet(record.flow, record.until - from, line);
        from = record.until;
    }
    meanOutlet(step, line);
}

}  // namespace

void advanceInStretches(const FluidTables& tables, const ExplicitControl& control, double step,
                        ExplicitScratch& scratch, SolverLine& line) {
    setRates(line);
    const bool limited = control.upwind != "SPU";
    if (tables.hasGas)
        limited ? advanceLine<true, true>(tables, control, step, scratch, line)
                : advanceLine<true, false>(tables, control, step, scratch, line);
    else
        limited ? advanceLine<false, true>(tables, control, step, scratch, line)
                : advanceLine<false, false>(tables, control, step, scratch, line);
}

}  // namespace kvr
