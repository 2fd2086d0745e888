#include "optimization/rate_files.hpp"

#include "base/index.hpp"
#include "base/number_writer.hpp"
#include "base/text.hpp"
#include "base/written_files.hpp"
#include "report/run_vectors.hpp"
#include "report/text_table.hpp"

#include <algorithm>
#include <cmath>
#include <map>

namespace kvr {

namespace {

constexpr std::string_view AllHead =
    "  ---TIME---    ---RcvFac---   ---  NPV  ---  ---TTMsft---  ---RecvMsft--- ---T*R Msft--- ";
constexpr int Digits = 10;
constexpr int MapPoints = 50;

std::string optimizationPath(const Simulation& s, const std::string& rest) {
    return outputPath(s.outputs, "KVR_OPT_" + std::string(trim(s.options.headerName)) + rest);
}

std::string stepName(const Simulation& s, std::string_view kind, std::string_view extension) {
    return optimizationPath(
        s, fmt::format("{}{:04d}_ITE_{:02d}{}", kind, s.clock.stepCount, s.clock.iteration, extension));
}

const Well& wellOf(const Simulation& s, int well) {
    return s.wells.wells[at(well) - 1];
}

/// The figures of the step, a label and a value each.
std::vector<std::string> figureLines(const RateReport& report, const Simulation& s) {
    const auto rate = [&s](double value) {
        return number(value * deckUnit(s.units, Quantity::LiquidRate).factor * toBarrels(s.units, 1.0),
                      Digits);
    };
    return {fmt::format(" Simulation Time = {}", number(s.clock.time, Digits)),
            fmt::format(" Total Norm Fact = {}", number(report.norm, Digits)),
            fmt::format(" Qw Prd Total    = {}", rate(report.waterProduced)),
            fmt::format(" Qo Prd Total    = {}", rate(report.oilProduced)),
            fmt::format(" Qw Inj Total    = {}", rate(report.waterInjected)),
            fmt::format(" NPV Time Step   = {}", number(report.value, RoundTripDigits))};
}

void putPairs(const RateReport& report, const Simulation& s, NumberWriter& file) {
    put(file,
        " Injector Producer        Flux         Oil  Efficiency        Time  PoreVolume Lines      Change\n");
    for (const ToldPair& told : report.pairs)
        put(file, fmt::format(" {:<8} {:<8} {:>11} {:>11} {:>11} {:>11} {:>11} {:>5} {:>11}\n",
                              wellOf(s, told.pair.injector).WellName, wellOf(s, told.pair.producer).WellName,
                              number(told.pair.flux, 6), number(told.pair.oil, 6), number(told.efficiency, 6),
                              number(told.pair.time, 6), number(told.pair.poreVolume, 6), told.pair.lines,
                              number(told.change, 6)));
}

void putWells(const RateReport& report, const Simulation& s, NumberWriter& file) {
    put(file, " Well          Deck      Before       After Bound\n");
    for (const ToldWell& told : report.wells)
        put(file,
            fmt::format(" {:<6} {:>11} {:>11} {:>11} {}\n", wellOf(s, told.well).WellName,
                        number(told.deckRate, 6), number(told.before, 6), number(told.after, 6), told.bound));
}

void writeStepFile(const RateReport& report, const Simulation& s) {
    NumberWriter file;
    file.file = openForReplace(s.console, stepName(s, "WFLD_REALOC", ".out"));
    for (const std::string& line : figureLines(report, s)) {
        put(file, line + "\n");
        lineToLog(s.console, line);
    }
    putPairs(report, s, file);
    putWells(report, s, file);
    flush(file);
    closeWhole(s.console, file.file);
}

void addToAll(const RateReport& report, const Simulation& s) {
    const std::string path = optimizationPath(s, "WFLD_REALOC_ALL.out");
    const bool first = s.optimization.steps <= 1;
    std::FILE* file = first ? openForReplace(s.console, path) : openForAppend(s.console, path);
    const long before = lengthOf(file);
    if (first) std::fputs(fmt::format("{}\n", AllHead).c_str(), file);
    const bool hasRow = !s.balance.rows.empty();
    const double recovery = hasRow ? s.balance.rows.back().recoveryOil : 0.0;
    const double npv = hasRow ? s.balance.rows.back().npv : 0.0;
    std::string row;
    for (const double value : {s.clock.time, recovery, npv, report.timeMisfit, report.recoveryMisfit,
                               report.timeMisfit * report.recoveryMisfit})
        row += fmt::format(" {:>14}", number(value, Digits));
    std::fputs((row + "\n").c_str(), file);
    closeAppended(s.console, file, before);
    if (first) lineToLog(s.console, " File Generated : WFLOOD_REALOC_ALL.out");
}

/// Drawdown between the wells over what the lines of the pair carry, psi days per rb; 0 where nothing flows.
/// A pair that counts as too thin has lost its flux, not its lines.
double resistance(const Simulation& s, const WellPair& pair) {
    const double drawdown = wellOf(s, pair.injector).Bhp - wellOf(s, pair.producer).Bhp;
    const double flux = std::max(pair.flux, pair.counted);
    return flux > 0.0 && pair.lines > 0 ? drawdown / flux : 0.0;
}

void writePairMap(const RateReport& report, const Simulation& s) {
    NumberWriter file;
    file.file = openForReplace(s.console, stepName(s, "_PTNMAP", ".plt"));
    put(file, "Variables= IDW1,IDW2,LoWX,LocWY,TotVal,RcvVal,ie_recov,ie,WelTOF,ConeTOF,ie_resis\n");
    std::map<int, std::array<double, 2>> ofInjector;  // flux and volume
    for (const ToldPair& told : report.pairs) {
        ofInjector[told.pair.injector][0] += told.pair.flux;
        ofInjector[told.pair.injector][1] += told.pair.flux * told.pair.time;
    }
    for (const ToldPair& told : report.pairs) {
        const auto from = headOf(s.grid, wellOf(s, told.pair.injector));
        const auto to = headOf(s.grid, wellOf(s, told.pair.producer));
        const auto& sums = ofInjector[told.pair.injector];
        const double relative = report.meanEfficiency > 0.0 ? told.efficiency / report.meanEfficiency : 0.0;
        put(file, "Zone i=1, F=point\n");
        put(file, fmt::format("{} {}", told.pair.injector, told.pair.producer));
        for (const double value :
             {0.5 * (from[0] + to[0]), 0.5 * (from[1] + to[1]), told.pair.flux, told.pair.oil, relative,
              told.efficiency, sums[0] > 0.0 ? sums[1] / sums[0] : 0.0, told.pair.time,
              resistance(s, told.pair)}) {
            put(file, " ");
            putNumber(file, value, Digits);
        }
        put(file, "\n");
    }
    flush(file);
    closeWhole(s.console, file.file);
}

/// Unit of a rate of the well under its own control, and its factor from internal volume.
struct ToldUnit {
    std::string_view word;
    double factor = 1.0;
};

ToldUnit unitOf(const Simulation& s, const Well& well) {
    const bool gas = isInjector(well) ? well.InjectFluid == "gas" : well.givenControl == "grat";
    const Quantity quantity = gas                           ? Quantity::GasRate
                              : well.givenControl == "resv" ? Quantity::ReservoirRate
                                                            : Quantity::LiquidRate;
    return {deckUnit(s.units, quantity).word, 1.0 / (gas ? s.units.gasRate : s.units.liquidRate)};
}

}  // namespace

std::array<double, 2> headOf(const GridModel& grid, const Well& well) {
    if (well.connections.empty()) return {0.0, 0.0};
    const auto centre = centreOf(grid, well.connections.front().ConnCell);
    return {centre[0], centre[1]};
}

void writeRateStep(const RateReport& report, Simulation& s) {
    writeStepFile(report, s);
    addToAll(report, s);
    writePairMap(report, s);
}

void tellRateChanges(const RateReport& report, Simulation& s) {
    const std::string path = outputPath(s.outputs, outputName(OutputFile::RateChanges));
    const bool first = s.optimization.changes <= 1;
    std::FILE* file = first ? openForReplace(s.console, path) : openForAppend(s.console, path);
    const long before = lengthOf(file);
    NumberWriter rows;
    rows.file = file;
    if (first) put(rows, "TIME,STEP,WELL,KIND,CONTROL,UNIT,DECK,OLD,NEW,BOUND\n");
    for (const ToldWell& told : report.wells) {
        const Well& well = wellOf(s, told.well);
        const ToldUnit unit = unitOf(s, well);
        const double perDay = well.efficiency > 0.0 ? unit.factor / well.efficiency : unit.factor;
        put(rows,
            fmt::format("{},{},{},{},{},{}", number(s.clock.time, Digits), s.clock.stepCount,
                        withoutBlanks(well.WellName), well.WellKind, toUpper(well.givenControl), unit.word));
        for (const double rate : {told.deckRate, told.before, told.after}) {
            put(rows, ",");
            putNumber(rows, rate * perDay, RoundTripDigits);
        }
        put(rows, fmt::format(",{}\n", told.bound));
        log(s.console, "RATE CHANGE :: {} {} --> {} {}{}{}", well.WellName, number(told.before * perDay),
            number(told.after * perDay), unit.word, told.bound.empty() ? "" : ", bound by ", told.bound);
    }
    flush(rows);
    closeAppended(s.console, file, before);
}

void writePressureMap(const Simulation& s, double average) {
    const GridModel& grid = s.grid;
    NumberWriter file;
    file.file = openForReplace(s.console, optimizationPath(s, "WFLD_MMP.plt"));
    const auto putPoint = [&file](const std::array<double, 3>& centre, double value) {
        for (const double number : {centre[0], centre[1], value}) {
            putNumber(file, number);
            put(file, " ");
        }
        put(file, "\n");
    };
    put(file, fmt::format("TITLE= \"Average pressure, target {} psia, time {} days\"\n",
                          number(s.options.miscibilityTarget), number(s.clock.time)));
    put(file, "VARIABLES= X,Y,XMF\n");
    put(file, "Zone I = 1 ,J= 1 ,F = Point\n");
    putPoint(centreOf(grid, cellIndex(grid, (grid.NX + 1) / 2, (grid.NY + 1) / 2, 1)), average);
    put(file, "Zone I = 50 ,J= 50 ,F = Point\n");
    for (int b = 0; b < MapPoints; ++b)
        for (int a = 0; a < MapPoints; ++a) {
            const int i = 1 + (2 * a + 1) * grid.NX / (2 * MapPoints);
            const int j = 1 + (2 * b + 1) * grid.NY / (2 * MapPoints);
            double volume = 0.0, sum = 0.0;
            for (int k = 1; k <= grid.NZ; ++k) {
                const CellId cell = cellIndex(grid, i, j, k);
                if (grid.Active[cell] == 0) continue;
                volume += s.state.PoreVolume[cell];
                sum += s.state.PoreVolume[cell] * s.state.Pressure[cell];
            }
            putPoint(centreOf(grid, cellIndex(grid, i, j, 1)), volume > 0.0 ? sum / volume : 0.0);
        }
    flush(file);
    closeWhole(s.console, file.file);
}

}  // namespace kvr
