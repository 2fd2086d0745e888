#include "streamline/explicit_transport.hpp"

#include "streamline/line_gravity.hpp"
#include "streamline/line_kernels.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double SpeedGuard = 1e-10;         // 1/day, keeps CFL/v finite where nothing moves
constexpr double FirstSubstepCut = 5.0;      // of the very first substep of a run
constexpr double LeastWaterCarrier = 1e-12;  // water amount below which a tracer has nothing to move in
constexpr double StretchRatio = 4.0;         // largest ratio of residence times within a stretch

std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

/// F(i-1) brings DeltaTof^-1 plus what the cell takes up, F(i) takes DeltaTof^-1 plus what it lets out.
void setRates(SolverLine& line) {
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        line.outflowRate[i] = line.inverseDeltaTof[i] + std::max(0.0, line.expansion[i]);
        line.inflowRate[i] = line.inverseDeltaTof[i] - std::min(0.0, line.expansion[i]);
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

void cutStretches(const SolverLine& line, std::vector<int>& ends) {
    ends.clear();
    double least = line.DeltaTof[1];
    double most = least;
    for (int n = 2; n <= line.nodeCount; ++n) {
        const double here = line.DeltaTof[at(n)];
        least = std::min(least, here);
        most = std::max(most, here);
        if (most <= StretchRatio * least) continue;
        ends.push_back(n - 1);
        least = most = here;
    }
    ends.push_back(line.nodeCount);
}

NodeFlow flowOf(const FlowRecord& record) {
    return {record.Fw, record.Fo, record.Fg, record.Cw, record.Co, record.Cg};
}

/// Appends what flowed out until `until`; a flow that has not changed prolongs the record before.
void addRecord(const NodeFlow& flow, double until, std::vector<FlowRecord>& records) {
    if (!records.empty()) {
        FlowRecord& last = records.back();
        if (last.Fw == flow.Fw && last.Fo == flow.Fo && last.Fg == flow.Fg && last.Cw == flow.Cw &&
            last.Co == flow.Co && last.Cg == flow.Cg) {
            last.until = until;
            return;
        }
    }
    records.push_back({until, flow.Fw, flow.Fo, flow.Fg, flow.Cw, flow.Co, flow.Cg});
}

/// The inflow of a stretch as its time goes on.
struct InflowCursor {
    const std::vector<FlowRecord>& records;
    std::size_t now = 0;  // record that holds at the present time
};

/// Cuts the substep [t, end] where inflow that begins within it would move faster, by the same rule from
/// that moment on; gives the inflow integrated up to the end reached and moves the cursor there.
template <bool Gas>
double integrateInflow(const ExplicitControl& control, const NodeFlow& firstNode, double inverseDeltaTof,
                       double t, double end, InflowCursor& cursor, NodeFlow& integral) {
    integral = {};
    double from = t;
    for (;;) {
        const FlowRecord& record = cursor.records[cursor.now];
        const bool last = cursor.now + 1 >= cursor.records.size();
        const double to = last ? end : std::min(record.until, end);
        integral.Fw += (to - from) * record.Fw;
        integral.Fo += (to - from) * record.Fo;
        if constexpr (Gas) integral.Fg += (to - from) * record.Fg;
        from = to;
        if (last || record.until > end) return end;
        ++cursor.now;
        if (to >= end) return end;
        const double speed =
            raisedSpeed<Gas>(0.0, flowOf(cursor.records[cursor.now]), firstNode, inverseDeltaTof);
        end = std::min(end, to + stepOfSpeed(control, speed, false));
    }
}

/// One substep of nodes a..b: `integral` flows into node a over dt. Returns the largest wave speed of the
/// new state, that between the coming inflow and node a included.
template <bool Gas>
double moveStretch(const FluidTables& tables, const ExplicitControl& control, double dt,
                   const NodeFlow& integral, const NodeFlow& coming, std::size_t a, std::size_t b,
                   SolverLine& line) {
    double speed = 0.0;
    NodeFlow before = coming;
    ConservedAmounts in{integral.Fw * line.inflowRate[a], integral.Fo * line.inflowRate[a],
                        integral.Fg * line.inflowRate[a]};
    for (std::size_t i = a; i <= b; ++i) {
        const double out = dt * line.outflowRate[i];
        const ConservedAmounts loss{out * line.Fw[i] - in.water, out * line.Fo[i] - in.oil,
                                    Gas ? out * line.Fg[i] - in.gas : 0.0};
        if (i < b) {
            const double rate = dt * line.inflowRate[i + 1];
            in = {rate * line.Fw[i], rate * line.Fo[i], Gas ? rate * line.Fg[i] : 0.0};
        }
        const SaturationTable& table = regionTable(tables, line.region[i]);
        recoverNode<Gas>(tables, table, control.keepEndPoints, loss, i, line);
        setFluxes<Gas>(table, i, line);
        const NodeFlow here = flowAt<Gas>(line, i);
        speed = raisedSpeed<Gas>(speed, before, here, line.inverseDeltaTof[i]);
        before = here;
    }
    return speed;
}

template <bool Gas>
double speedOf(const NodeFlow& inflow, std::size_t a, std::size_t b, const SolverLine& line) {
    double speed = 0.0;
    NodeFlow before = inflow;
    for (std::size_t i = a; i <= b; ++i) {
        const NodeFlow here = flowAt<Gas>(line, i);
        speed = raisedSpeed<Gas>(speed, before, here, line.inverseDeltaTof[i]);
        before = here;
    }
    return speed;
}

/// Takes nodes a..b over the whole step, fed by `inflow`; what they let out goes into `outflow`.
template <bool Gas>
void advanceStretch(const FluidTables& tables, const ExplicitControl& control, double step, std::size_t a,
                    std::size_t b, const std::vector<FlowRecord>& inflow, std::vector<FlowRecord>& outflow,
                    SolverLine& line) {
    outflow.clear();
    InflowCursor cursor{inflow};
    double speed = speedOf<Gas>(flowOf(inflow.front()), a, b, line);
    bool first = control.firstStep;
    double t = 0.0;
    do {
        double end = t + stepOfSpeed(control, speed, first);
        if (end > step) end = step;
        NodeFlow integral;
        end = integrateInflow<Gas>(control, flowAt<Gas>(line, a), line.inverseDeltaTof[a], t, end, cursor,
                                   integral);
        addRecord(flowAt<Gas>(line, b), end, outflow);
        speed = moveStretch<Gas>(tables, control, end - t, integral, flowOf(inflow[cursor.now]), a, b, line);
        ++line.substeps;
        first = false;
        t = end;
    } while (t < step);
}

template <bool Gas>
void advanceInStretches(const FluidTables& tables, const ExplicitControl& control, double step,
                        ExplicitScratch& scratch, SolverLine& line) {
    startOutlet(line);
    cutStretches(line, scratch.stretchEnds);
    evaluateFluxes(tables, 0, line.nodeCount, line);
    scratch.inflow.clear();
    addRecord(flowAt<Gas>(line, 0), step, scratch.inflow);
    int first = 1;
    for (const int last : scratch.stretchEnds) {
        advanceStretch<Gas>(tables, control, step, at(first), at(last), scratch.inflow, scratch.outflow,
                            line);
        scratch.inflow.swap(scratch.outflow);
        first = last + 1;
    }
    double from = 0.0;
    for (const FlowRecord& record : scratch.inflow) {
        addOutlet(flowOf(record), record.until - from, line);
        from = record.until;
    }
    meanOutlet(step, line);
}

// --- the line in one piece --------------------------------------------------------------------------

template <bool Gas>
void moveTogether(const FluidTables& tables, bool keepEndPoints, const FluxView& flux, double dt,
                  SolverLine& line) {
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i) {
        const double out = dt * line.outflowRate[i];
        const double in = dt * line.inflowRate[i];
        ConservedAmounts loss{out * flux.w[i] - in * flux.w[i - 1], out * flux.o[i] - in * flux.o[i - 1],
                              0.0};
        if constexpr (Gas) loss.gas = out * flux.g[i] - in * flux.g[i - 1];
        if (line.hasGravity) {
            loss.water += dt * line.gravityW[i];
            loss.oil += dt * line.gravityO[i];
            loss.gas += dt * line.gravityG[i];
        }
        recoverNode<Gas>(tables, regionTable(tables, line.region[i]), keepEndPoints, loss, i, line);
    }
}

void limitAll(const ExplicitControl& control, bool hasGas, double dt, SolverLine& line) {
    const int count = line.nodeCount;
    limitFlux(control.upwind, dt, count, line.inverseDeltaTof, line.Fw, line.limitedFw);
    limitFlux(control.upwind, dt, count, line.inverseDeltaTof, line.Fo, line.limitedFo);
    if (hasGas) limitFlux(control.upwind, dt, count, line.inverseDeltaTof, line.Fg, line.limitedFg);
}

/// Water-borne tracers over dt on the water fluxes of the substep, upstream, in steps of their own limit.
void moveTracers(const ExplicitControl& control, const FluxView& flux, double dt, SolverLine& line) {
    double fastest = 0.0;
    for (std::size_t i = 1; i <= at(line.nodeCount); ++i)
        if (line.Cw[i] > LeastWaterCarrier)
            fastest = std::max(fastest, flux.w[i - 1] * line.inverseDeltaTof[i] / line.Cw[i]);
    const double own = std::max(control.cfl / (fastest + SpeedGuard), control.minimumStep);
    for (double left = dt; left > 0.0;) {
        const double h = std::min(own, left);
        left = h < left ? left - h : 0.0;
        for (std::size_t i = at(line.nodeCount); i >= 1; --i) {
            if (line.Cw[i] <= LeastWaterCarrier) continue;
            const double courant = std::min(1.0, h * flux.w[i - 1] * line.inverseDeltaTof[i] / line.Cw[i]);
            for (std::vector<double>& c : line.tracer) c[i] += courant * (c[i - 1] - c[i]);
        }
    }
}

/// Length of the substep at the present fluxes; limits them where the scheme asks for it.
double substepLength(const ExplicitControl& control, bool hasGas, bool limited, bool first, double left,
                     SolverLine& line) {
    const double plain = stepOfSpeed(control, largestWaveSpeed(plainFluxes(line), hasGas, line), first);
    if (!limited) return std::min(plain, left);
    limitAll(control, hasGas, std::min(plain, left), line);
    const double second = stepOfSpeed(control, largestWaveSpeed(limitedFluxes(line), hasGas, line), first);
    return std::min({plain, second, left});
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
    const bool limited = control.upwind != "SPU";
    const FluxView flux = limited ? limitedFluxes(line) : plainFluxes(line);
    const std::size_t last = at(line.nodeCount);
    setRates(line);
    startOutlet(line);
    double t = 0.0;
    do {
        const double left = step - t;
        evaluateFluxes(tables, t == 0.0 ? 0 : 1, line.nodeCount, line);
        if (line.hasGravity) setGravitySources(tables, line);
        const double dt = substepLength(control, hasGas, limited, control.firstStep && t == 0.0, left, line);
        addOutlet({flux.w[last], flux.o[last], hasGas ? flux.g[last] : 0.0, 0.0, 0.0, 0.0}, dt, line);
        if (hasGas)
            moveTogether<true>(tables, control.keepEndPoints, flux, dt, line);
        else
            moveTogether<false>(tables, control.keepEndPoints, flux, dt, line);
        if (!line.tracer.empty()) moveTracers(control, flux, dt, line);
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
