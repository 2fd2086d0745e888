#include "streamline/diagnostics/line_output.hpp"

#include "base/index.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double ReportSlack = 1e-8;  // days to a report time that count as none
constexpr int LongLineParts = 100;    // of the most nodes that a line may have: more make it a long one

/// Somebody looks at the pair table.
bool tablesPairs(const RunOptions& o) {
    return isOn(o, OutputSwitch::View) || o.outputSensitivity || o.historyMatch || weighsPairs(o);
}

/// The line for those who move rates between pairs.
void keepJoining(const LineResult& result, double flow, PairTable& pairs) {
    const StreamlineRecord& record = result.record;
    if (record.injector == 0 || record.producer == 0) return;
    pairs.joining.push_back({record.injector, record.producer, flow, record.NodeTof[at(record.nodeCount)],
                             result.end.oilFraction, result.end.oil, result.end.water, result.end.gas});
}

PlottedLine plotted(const LineResult& result, const Simulation& s) {
    const PairTable& pairs = s.lines.pairs;
    PlottedLine line{result.record, !s.lines.field.fromInjector, {}};
    if (result.solved) line.Sw = result.contribution.Sw;
    line.injector = injectorIndex(s.wells, pairs, result.record.injector);
    line.producer = producerIndex(s.wells, pairs, result.record.producer);
    line.connection = connectionNumber(pairs, line.injector, line.producer);
    return line;
}

void plot(const LineResult& result, int iterationsLeft, Simulation& s) {
    if (!isOpen(s.lines.plot) || iterationsLeft >= 1) return;
    writePlotLine(s.options, s.grid, s.fluids, s.state, plotted(result, s), s.lines.plot);
}

}  // namespace

void openLineOutput(double remainingToReport, Simulation& simulation) {
    Simulation& s = simulation;
    if (remainingToReport >= ReportSlack) return;
    if (isOn(s.options, OutputSwitch::ViewOrLines)) restartLineGeometry(s.console, s.grid, s.outputs);
    if (!isOn(s.options, OutputSwitch::Lines)) return;
    openLinePlot(s.console, s.outputs, s.grid, s.state, s.clock.time + s.clock.dt, s.lines.plot);
}

void putLaunchedLine(const LineResult& result, int iterationsLeft, Simulation& simulation) {
    Simulation& s = simulation;
    const StreamlineRecord& record = result.record;
    if (record.status == TraceStatus::Rejected) return;
    if (record.status == TraceStatus::ReachedWell && tablesPairs(s.options)) {
        addToPair(s.wells, {record.injector, record.producer, s.launch.LineFlux, result.end.waterFraction},
                  s.lines.pairs);
        if (weighsPairs(s.options)) keepJoining(result, s.launch.LineFlux, s.lines.pairs);
        keepFastest(s.wells, s.grid, record, !s.lines.field.fromInjector, s.lines.pairs);
    }
    plot(result, iterationsLeft, s);
}

void putMissedLine(const LineResult& result, int iterationsLeft, Simulation& simulation) {
    Simulation& s = simulation;
    const bool joins = result.record.status == TraceStatus::ReachedWell;
    const bool oneSide = s.lines.pairs.injectors == 0 || s.lines.pairs.producers == 0;
    if (onlyTraces(s.options)) {
        const bool isLong = result.record.nodeCount > s.lines.nodeCapacity / LongLineParts;
        if (joins || (oneSide && isLong)) plot(result, iterationsLeft, s);
        return;
    }
    plot(result, iterationsLeft, s);
    const bool shown = joins || oneSide;
    if (isOn(s.options, OutputSwitch::Lines) && shown && !isOn(s.options, OutputSwitch::View))
        writeLineGeometry(s.grid, plotted(result, s), stream(s.outputs, OutputFile::RunStreamline));
}

void closeLineOutput(Simulation& simulation) {
    closeLinePlot(simulation.console, simulation.lines.plot);
}

void tellFinished(const Console& console, int number, int activeLines) {
    constexpr int ProgressParts = 10;
    constexpr int LeastProgressStep = 5;
    if (number % std::max(LeastProgressStep, activeLines / ProgressParts) == 0)
        both(console, " Calculation Finished : {}", number);
}

}  // namespace kvr
