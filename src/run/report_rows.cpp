#include "run/report_rows.hpp"

#include "base/constants.hpp"
#include "report/material_balance.hpp"
#include "report/run_vectors.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double NegligibleShare = 1e-3;  // of the pore volume: what a phase with less is judged against

struct TableColumn {
    std::string_view name;
    std::string_view mnemonic;  // of the vector that it shows
    int width;
    int decimals;
    bool ofGas;
};

constexpr TableColumn Columns[] = {{"Oil rate", "FOPR", 11, 1, false}, {"Water rate", "FWPR", 11, 1, false},
                                   {"Gas rate", "FGPR", 11, 1, true},  {"Water cut", "FWCT", 10, 3, false},
                                   {"Gas/oil", "FGOR", 9, 3, true},    {"Pressure", "FPR", 10, 1, false}};

bool isShown(const TableColumn& column, const Simulation& s) {
    return !column.ofGas || s.options.hasGas;
}

void tellHead(const Simulation& s) {
    std::string names = fmt::format("{:<10}{:>10}{:>7}{:>6}", "Date", "Days", "Steps", "Cuts");
    std::string units = fmt::format("{:<33}", "");
    for (const TableColumn& column : Columns) {
        if (!isShown(column, s)) continue;
        names += fmt::format("{:>{}}", column.name, column.width);
        units +=
            fmt::format("{:>{}}", deckUnit(s.units, vectorOf(column.mnemonic)->quantity).word, column.width);
    }
    tell(s.console, "");
    tell(s.console, names + fmt::format("{:>10}", "Balance"));
    tell(s.console, units + fmt::format("{:>10}", "%"));
}

}  // namespace

std::string dateText(const RunClock& clock) {
    return fmt::format("{:04}-{:02}-{:02}", clock.year, clock.month, clock.day);
}

long cutsSoFar(const Simulation& simulation) {
    return simulation.control.rejected + simulation.implicit.counts.cuts;
}

PhaseAmounts judgedErrors(const BalanceRecord& balance) {
    if (balance.rows.empty()) return {};
    const BalanceRow& row = balance.rows.back();
    const double least = NegligibleShare * row.poreVolume;
    const auto judged = [&](double PhaseAmounts::*phase, double error) {
        const double first = balance.initial.*phase, now = row.inPlace.*phase;
        if (first >= least) return error;
        const double base = first >= LeastInPlace ? first : now;  // what balanceError has divided by
        const double against =
            std::max({first, now, balance.field.produced.*phase, balance.field.injected.*phase, least});
        return against > 0.0 ? error * base / against : error;
    };
    return {judged(&PhaseAmounts::oil, row.errorOil), judged(&PhaseAmounts::water, row.errorWater),
            judged(&PhaseAmounts::gas, row.errorGas)};
}

double largestBalanceError(const BalanceRecord& balance) {
    const PhaseAmounts errors = judgedErrors(balance);
    return Percent * std::max({std::abs(errors.oil), std::abs(errors.water), std::abs(errors.gas)});
}

void addReportRow(Simulation& simulation) {
    if (!isNamed(simulation.command)) return;
    RunCourse& course = simulation.course;
    if (!course.tableBegun) tellHead(simulation);
    course.tableBegun = true;
    const StepFigures figures = stepFigures(simulation);
    const RunClock& clock = simulation.clock;
    std::string row =
        fmt::format("{:<10}{:>10}{:>7}{:>6}", dateText(clock), number(clock.time, 6),
                    clock.stepCount - course.stepsAtReport, cutsSoFar(simulation) - course.cutsAtReport);
    for (const TableColumn& column : Columns) {
        if (!isShown(column, simulation)) continue;
        const RunVector& vector = *vectorOf(column.mnemonic);
        const double value = vector.value(figures, figures.field);
        row += fmt::format("{:>{}.{}f}", value * deckUnit(simulation.units, vector.quantity).factor,
                           column.width, column.decimals);
    }
    tell(simulation.console, row + fmt::format("{:>10.4f}", largestBalanceError(simulation.balance)));
    course.stepsAtReport = clock.stepCount;
    course.cutsAtReport = cutsSoFar(simulation);
}

}  // namespace kvr
