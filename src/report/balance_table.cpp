#include "report/balance_table.hpp"

#include "base/console.hpp"
#include "base/constants.hpp"

#include <string_view>

namespace kvr {

namespace {

constexpr int ColumnWidth = 16;

/// A row with what its figures are made of.
struct Tabulated {
    const UnitSystem& units;
    const BalanceRecord& record;
    const BalanceRow& row;
    const ComponentSums& components;

    [[nodiscard]] double barrels(double volume) const { return toBarrels(units, volume); }
    [[nodiscard]] double mscf(double volume) const { return toMscf(units, volume); }
};

double cut(double part, double whole) {
    return part / (whole + MachineEpsilon);
}
double waterCut(const Tabulated& t) {
    const PhaseAmounts& rate = t.row.productionRate;
    return cut(rate.water, rate.water + rate.oil);
}
double gasOilRatio(const Tabulated& t) {
    const PhaseAmounts& rate = t.row.productionRate;
    return rate.oil > 0.0 ? t.mscf(rate.gas) / t.barrels(rate.oil) : 0.0;
}

struct TableColumn {
    std::string_view label;
    double (*value)(const Tabulated&);
};

// Two blocks one behind the other; several figures stand in both on purpose.
constexpr TableColumn TableColumns[] = {
    {"TIME", [](const Tabulated& t) { return t.row.time; }},
    {"PVT", [](const Tabulated& t) { return t.barrels(t.row.poreVolume); }},
    {"PVI", [](const Tabulated& t) { return t.row.poreVolumesInjected; }},
    {"FPR", [](const Tabulated& t) { return t.row.averagePressure; }},
    {"MBEO", [](const Tabulated& t) { return t.row.errorOil; }},
    {"MBEW", [](const Tabulated& t) { return t.row.errorWater; }},
    {"MBEG", [](const Tabulated& t) { return t.row.errorGas; }},
    {"FOIP_ORG", [](const Tabulated& t) { return t.barrels(t.record.initial.oil); }},
    {"FOIP_NOW", [](const Tabulated& t) { return t.barrels(t.row.inPlace.oil); }},
    {"FWIP_ORG", [](const Tabulated& t) { return t.barrels(t.record.initial.water); }},
    {"FWIP_NOW", [](const Tabulated& t) { return t.barrels(t.row.inPlace.water); }},
    {"FGIP_ORG", [](const Tabulated& t) { return t.mscf(t.record.initial.gas); }},
    {"FGIP_NOW", [](const Tabulated& t) { return t.mscf(t.row.inPlace.gas); }},
    {"dEUR", [](const Tabulated& t) { return t.row.deltaRecovery; }},
    {"dNPV", [](const Tabulated& t) { return t.row.deltaNpv; }},
    {"EUR", [](const Tabulated& t) { return t.row.recoveryOil; }},
    {"NPV", [](const Tabulated& t) { return t.row.npv; }},
    {"FWIR", [](const Tabulated& t) { return t.barrels(t.row.injectionRate.water); }},
    {"FWPR", [](const Tabulated& t) { return t.barrels(t.row.productionRate.water); }},
    {"FOPR", [](const Tabulated& t) { return t.barrels(t.row.productionRate.oil); }},
    {"FWCT", waterCut},

    {"OIP", [](const Tabulated& t) { return t.barrels(t.row.inPlace.oil); }},
    {"FOE", [](const Tabulated& t) { return t.row.recoveryOil; }},
    {"FOEW", [](const Tabulated& t) { return t.row.recoveryWater; }},
    {"FPR", [](const Tabulated& t) { return t.row.averagePressure; }},
    {"FOPR", [](const Tabulated& t) { return t.barrels(t.row.productionRate.oil); }},
    {"FGPR", [](const Tabulated& t) { return t.mscf(t.row.productionRate.gas); }},
    {"FWPR", [](const Tabulated& t) { return t.barrels(t.row.productionRate.water); }},
    {"FWCT", waterCut},
    {"FGOR", gasOilRatio},
    {"FWIR", [](const Tabulated& t) { return t.barrels(t.row.injectionRate.water); }},
    {"FGIR", [](const Tabulated& t) { return t.mscf(t.row.injectionRate.gas); }},
    {"dEUR", [](const Tabulated& t) { return t.row.deltaRecovery; }},
    {"dNPV", [](const Tabulated& t) { return t.row.deltaNpv; }},
    {"EUR", [](const Tabulated& t) { return t.row.recoveryOil; }},
    {"NPV", [](const Tabulated& t) { return t.row.npv; }},
    {"WRFLO", [](const Tabulated& t) { return static_cast<double>(t.row.flowingWells); }},
    {"CMP_MAS", [](const Tabulated& t) { return t.components.mass; }},
    {"CMP_MOL", [](const Tabulated& t) { return t.components.moles; }},
};

}  // namespace

std::string balanceTableHead() {
    std::string head;
    for (const TableColumn& column : TableColumns)
        head += fmt::format("{:>{}}", fmt::format("|{}|", column.label), ColumnWidth);
    return head + "\n";
}

std::string balanceTableRow(const UnitSystem& units, const BalanceRecord& record, const BalanceRow& row,
                            const ComponentSums& components) {
    const Tabulated tabulated{units, record, row, components};
    std::string line;
    for (const TableColumn& column : TableColumns)
        line += fmt::format("{:>{}}", number(column.value(tabulated)), ColumnWidth);
    return line + "\n";
}

std::string balanceSheetRow(const BalanceRow& row, double endTime) {
    const double done = endTime > 0.0 ? row.time / endTime : 1.0;
    return fmt::format("{}\t{}\t{}\t{}\t{}\t{}\n", number(row.time), number(row.poreVolumesInjected),
                       number(Percent * row.errorOil), number(Percent * row.errorWater),
                       number(Percent * row.errorGas), number(Percent * done));
}

}  // namespace kvr
