#include "streamline/explicit_transport.hpp"

#include "streamline/line_gravity.hpp"
#include "streamline/line_kernels.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double SpeedGuard = 1e-10;         // 1/day, keeps CFL/v finite where nothing moves
constexpr double FirstSubstepCut = 5.0;      // of the very first substep of a run
constexpr double LeastWaterCarrier = 1e-12;  // water amount below which a tracer has nothing to move in
constexpr double EvenRatio = 4.0;            // of residence times, up to which a line goes as one
constexpr double SubstepStart = 6.0;         // work of a substep beside its nodes, in nodes; measured

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

/// F(i-1) brings DeltaTof^-1 plus what the cell takes up, F(i) takes DeltaTof^-1 plus what it lets out.
void setRates(SolverLine& line) {
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        FlowNode& node = line.nodes[i];
        node.outflowRate = node.inverseDeltaTof + std::max(0.0, node.expansion);
        node.inflowRate = node.inverseDeltaTof - std::min(0.0, node.expansion);
    }
}

double stepOfSpeed(const ExplicitControl& control, double speed, bool first) {
    double dt = control.cfl / (speed + SpeedGuard);
    if (first) dt /= FirstSubstepCut;
    return std::min(std::max(dt, control.minimumStep), control.maximumStep);
}

void startOutlet(SolverLine& line) {
    line.outletWater = line.outletOil = line.outletGas = 0.0;
    line.substeps = 0;
}

void addOutlet(const NodeFlow& flow, double dt, SolverLine& line) {
    line.outletWater += dt * flow.Fw;
    line.outletOil += dt * flow.Fo;
    line.outletGas += dt * flow.Fg;
}

void meanOutlet(double step, SolverLine& line) {
    const double perDay = step > 0.0 ? 1.0 / step : 0.0;
    line.outletWater *= perDay;
    line.outletOil *= perDay;
    line.outletGas *= perDay;
}

// --- stretches ------------------------------------------------------------------------------------

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
        return step > LeastAmountStep && std::abs(dF) * node.inverseDeltaTof * room > control.cfl * step;
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

/// One substep of nodes a..b: `integral` flows into node a over dt. Returns the largest wave speed of the
/// new state, that between the coming inflow and node a included.
template <bool Gas>
double moveStretch(const FluidTables& tables, const ExplicitControl& control, double dt,
                   const NodeFlow& integral, const NodeFlow& coming, std::size_t a, std::size_t b,
                   FlowNode* nodes) {
    double speed = 0.0;
    NodeFlow before = coming;
    NodeFlow in = integral;
    for (std::size_t i = a; i <= b; ++i) {
        FlowNode& node = nodes[i];
        const NodeFlow out{dt * node.Fw, dt * node.Fo, Gas ? dt * node.Fg : 0.0, 0.0, 0.0, 0.0};
        const ConservedAmounts loss{node.outflowRate * out.Fw - node.inflowRate * in.Fw,
                                    node.outflowRate * out.Fo - node.inflowRate * in.Fo,
                                    Gas ? node.outflowRate * out.Fg - node.inflowRate * in.Fg : 0.0};
        in = out;
        recoverNode<Gas>(tables, control.keepEndPoints, loss, nodes[i - 1], node);
        setFluxes<Gas>(node);
        const NodeFlow here = flowAt<Gas>(node);
        speed = raisedSpeed<Gas>(speed, before, here, node.inverseDeltaTof);
        before = here;
    }
    return speed;
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

/// Takes nodes a..b over the whole step, fed by `inflow`; what they let out goes into `outflow`.
template <bool Gas>
void advanceStretch(const FluidTables& tables, const ExplicitControl& control, double step, std::size_t a,
                    std::size_t b, const std::vector<FlowRecord>& inflow, std::vector<FlowRecord>& outflow,
                    SolverLine& line) {
    FlowNode* nodes = line.nodes.data();
    outflow.clear();
    InflowCursor cursor{inflow};
    double speed = speedOf<Gas>(inflow.front().flow, a, b, nodes);
    bool first = control.firstStep;
    double t = 0.0;
    do {
        double end = std::min(t + stepOfSpeed(control, speed, first), step);
        const NodeFlow integral = integrateInflow<Gas>(control, nodes[a], t, cursor, end);
        addRecord(flowAt<Gas>(nodes[b]), end, outflow);
        speed = moveStretch<Gas>(tables, control, end - t, integral, inflow[cursor.now].flow, a, b, nodes);
        ++line.substeps;
        first = false;
        t = end;
    } while (t < step);
}

template <bool Gas>
void advanceInStretches(const FluidTables& tables, const ExplicitControl& control, double step,
                        ExplicitScratch& scratch, SolverLine& line) {
    startOutlet(line);
    cutStretches(line, scratch.stretches);
    evaluateFluxes(Gas, 0, line.nodeCount, line);
    scratch.inflow.clear();
    addRecord(flowAt<Gas>(line.nodes[0]), step, scratch.inflow);
    int first = 1;
    for (const Stretch& stretch : scratch.stretches) {
        advanceStretch<Gas>(tables, control, step, at(first), at(stretch.last), scratch.inflow,
                            scratch.outflow, line);
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

// --- the line in one piece --------------------------------------------------------------------------

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

/// Water-borne tracers over dt on the water fluxes of the substep, upstream, in steps of their own limit.
void moveTracers(const ExplicitControl& control, double dt, SolverLine& line) {
    const std::vector<double>& flux = line.limitedFw;
    double fastest = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i)
        if (line.nodes[i].Cw > LeastWaterCarrier)
            fastest = std::max(fastest, flux[i - 1] * line.nodes[i].inverseDeltaTof / line.nodes[i].Cw);
    const double own = std::max(control.cfl / (fastest + SpeedGuard), control.minimumStep);
    for (double left = dt; left > 0.0;) {
        const double h = std::min(own, left);
        left = h < left ? left - h : 0.0;
        for (std::size_t i = at(line.nodeCount); i >= 1; --i) {
            if (line.nodes[i].Cw <= LeastWaterCarrier) continue;
            const double courant =
                std::min(1.0, h * flux[i - 1] * line.nodes[i].inverseDeltaTof / line.nodes[i].Cw);
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

void advanceTogether(const FluidTables& tables, const ExplicitControl& control, double step,
                     SolverLine& line) {
    const bool hasGas = tables.hasGas;
    const std::size_t last = at(line.nodeCount);
    setRates(line);
    startOutlet(line);
    double t = 0.0;
    do {
        const double left = step - t;
        evaluateFluxes(hasGas, t == 0.0 ? 0 : 1, line.nodeCount, line);
        if (line.hasGravity) setGravitySources(hasGas, line);
        const double dt = substepLength(control, hasGas, control.firstStep && t == 0.0, left, line);
        addOutlet(
            {line.limitedFw[last], line.limitedFo[last], hasGas ? line.limitedFg[last] : 0.0, 0.0, 0.0, 0.0},
            dt, line);
        if (hasGas)
            moveTogether<true>(tables, control.keepEndPoints, dt, line);
        else
            moveTogether<false>(tables, control.keepEndPoints, dt, line);
        if (!line.tracer.empty()) moveTracers(control, dt, line);
        ++line.substeps;
        t = dt >= left ? step : t + dt;
    } while (t < step);
    meanOutlet(step, line);
}

void advanceExplicit(const FluidTables& tables, const ExplicitControl& control, double step,
                     ExplicitScratch& scratch, SolverLine& line) {
    const bool inOnePiece = control.upwind != "SPU" || !line.tracer.empty() || line.hasGravity;
    if (inOnePiece) return advanceTogether(tables, control, step, line);
    setRates(line);
    if (tables.hasGas)
        advanceInStretches<true>(tables, control, step, scratch, line);
    else
        advanceInStretches<false>(tables, control, step, scratch, line);
}

}  // namespace kvr
