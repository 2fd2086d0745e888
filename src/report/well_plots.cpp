#include "report/well_plots.hpp"

#include "base/constants.hpp"
#include "report/text_table.hpp"

#include <array>

namespace kvr {

namespace {

constexpr std::string_view Days = "DAYS", Factor = "FCTN", Stb = "STB", Mscf = "MSCF", Rb = "RB",
                           StbDay = "STB/D", MscfDay = "MSCF/D", RbDay = "RB/D", Psia = "PSIA", None = " - ";

struct UnitWellColumn {
    WellColumn column;
    std::string_view unit;
};
struct UnitFieldColumn {
    FieldColumn column;
    std::string_view unit;
};

constexpr std::array<UnitWellColumn, 15> WellColumns = {{
    {{",WWIT_", [](const WellFigures& w) { return w.injected.water; }}, Stb},
    {{",WWIR_", [](const WellFigures& w) { return w.injection.water; }}, StbDay},
    {{",WGIT_", [](const WellFigures& w) { return w.injected.gas; }}, Mscf},
    {{",WVIT_", [](const WellFigures& w) { return w.injected.reservoir; }}, Rb},
    {{",WGIR_", [](const WellFigures& w) { return w.injection.gas; }}, MscfDay},
    {{",WVIR_", [](const WellFigures& w) { return w.injection.reservoir; }}, RbDay},
    {{",WWPR_", [](const WellFigures& w) { return w.production.water; }}, StbDay},
    {{",WOPT_", [](const WellFigures& w) { return w.produced.oil; }}, Stb},
    {{",WWPT_", [](const WellFigures& w) { return w.produced.water; }}, Stb},
    {{",WGPT_", [](const WellFigures& w) { return w.produced.gas; }}, Mscf},
    {{",WVPT_", [](const WellFigures& w) { return w.produced.reservoir; }}, Rb},
    {{",WOPR_", [](const WellFigures& w) { return w.production.oil; }}, StbDay},
    {{",WGPR_", [](const WellFigures& w) { return w.production.gas; }}, MscfDay},
    {{",WVPR_", [](const WellFigures& w) { return w.production.reservoir; }}, RbDay},
    {{",WWCT_", [](const WellFigures& w) { return waterCut(w.production); }}, Factor},
}};

constexpr std::array<UnitFieldColumn, 21> FieldColumns = {{
    {{",FOIP", [](const StepFigures& f) { return f.inPlace.oil; }}, Stb},
    {{",FWIP", [](const StepFigures& f) { return f.inPlace.water; }}, Stb},
    {{",FGIP", [](const StepFigures& f) { return f.inPlace.gas; }}, Mscf},
    {{",FOPR", [](const StepFigures& f) { return f.field.production.oil; }}, StbDay},
    {{",FWPR", [](const StepFigures& f) { return f.field.production.water; }}, StbDay},
    {{",FGPR", [](const StepFigures& f) { return f.field.production.gas; }}, MscfDay},
    {{",FOPT", [](const StepFigures& f) { return f.field.produced.oil; }}, Stb},
    {{",FWPT", [](const StepFigures& f) { return f.field.produced.water; }}, Stb},
    {{",FGPT", [](const StepFigures& f) { return f.field.produced.gas; }}, Mscf},
    {{",FWCT", [](const StepFigures& f) { return waterCut(f.field.production); }}, Factor},
    {{",FGOR", [](const StepFigures& f) { return gasOilRatio(f.field.production); }}, "MSCF/STB"},
    {{",FPR", [](const StepFigures& f) { return f.averagePressure; }}, Psia},
    {{",FOIR", [](const StepFigures& f) { return f.field.injection.oil; }}, StbDay},
    {{",FWIR", [](const StepFigures& f) { return f.field.injection.water; }}, StbDay},
    {{",FGIR", [](const StepFigures& f) { return f.field.injection.gas; }}, MscfDay},
    {{",FOIT", [](const StepFigures& f) { return f.field.injected.oil; }}, Stb},
    {{",FWIT", [](const StepFigures& f) { return f.field.injected.water; }}, Stb},
    {{",FGIT", [](const StepFigures& f) { return f.field.injected.gas; }}, Mscf},
    {{",FOE", [](const StepFigures& f) { return f.recovery; }}, Factor},
    {{",NPV", [](const StepFigures& f) { return f.npv; }}, None},
    {{",dEUR", [](const StepFigures& f) { return f.deltaRecovery; }}, Factor},
}};

/// Cell arrays of the property table, in the order of their columns behind the bottom-hole pressure.
struct PropertyColumn {
    std::string_view name;
    CellArray<double> CellState::*array;
    double factor = 1.0;
};
constexpr std::string_view BhpColumn = ",WBHP_";
constexpr std::array<PropertyColumn, 12> PropertyColumns = {{
    {",POIL_", &CellState::Pressure},
    {",PBUB_", &CellState::Pb},
    {",SOIL_", &CellState::So},
    {",SWAT_", &CellState::Sw},
    {",SGAS_", &CellState::Sg},
    {",RS___", &CellState::Rs, GasRatioFactor},
    {",DENO_", &CellState::RhoO},
    {",DENW_", &CellState::RhoW},
    {",DENG_", &CellState::RhoG},
    {",VISO_", &CellState::MuO},
    {",VISW_", &CellState::MuW},
    {",VISG_", &CellState::MuG},
}};

/// Produced mole fractions of the field.
constexpr std::string_view ComponentColumn = ",FZMF";

void putUnits(std::size_t wellCount, int components, NumberWriter& table) {
    put(table, "# UNITS : ");
    put(table, Days);
    put(table, ",");
    put(table, None);
    const auto putUnit = [&table](std::string_view unit) {
        put(table, ",");
        put(table, unit);
    };
    for (std::size_t w = 0; w < wellCount; ++w)
        for (const UnitWellColumn& row : WellColumns) putUnit(row.unit);
    for (int c = 0; c < components; ++c) putUnit(None);
    for (const UnitFieldColumn& row : FieldColumns) putUnit(row.unit);
    put(table, "\n");
}

void putNamed(NumberWriter& table, std::string_view column, const std::string& name) {
    put(table, column);
    put(table, withoutBlanks(name));
}

}  // namespace

void putSinkSourceHead(std::span<const std::string> wellNames, int components, bool withUnits,
                       std::FILE* file) {
    NumberWriter table;
    table.file = file;
    put(table, fmt::format("TITLE={}\n", rowOf(OutputFile::TPlotWellRate).title));
    if (withUnits) putUnits(wellNames.size(), components, table);
    put(table, "VARIABLES = TIME, PVI");
    for (const std::string& name : wellNames)
        for (const UnitWellColumn& row : WellColumns) putNamed(table, row.column.name, name);
    for (int c = 1; c <= components; ++c) put(table, fmt::format("{}_{:04}", ComponentColumn, c));
    for (const UnitFieldColumn& row : FieldColumns) put(table, row.column.name);
    put(table, "\n");
    flush(table);
}

void addSinkSourceRow(const StepFigures& figures, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    putColumn(table, figures.time);
    putColumn(table, figures.poreVolumesInjected);
    for (const WellFigures& well : figures.wells)
        for (const UnitWellColumn& row : WellColumns) putColumn(table, row.column.value(well));
    for (const double fraction : figures.field.fractions) putColumn(table, fraction);
    for (const UnitFieldColumn& row : FieldColumns) putColumn(table, row.column.value(figures));
    put(table, "\n");
    flush(table);
}

void putWellPropertyHead(std::span<const std::string> wellNames, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    put(table, fmt::format("TITLE={}\nVARIABLES = TIME ", rowOf(OutputFile::TPlotWellBlk).title));
    for (const std::string& name : wellNames) {
        putNamed(table, BhpColumn, name);
        for (const PropertyColumn& column : PropertyColumns) putNamed(table, column.name, name);
    }
    put(table, "\n");
    flush(table);
}

void addWellPropertyRow(double time, std::size_t wellCount, const WellRecord& wells, const CellState& state,
                        std::FILE* file) {
    NumberWriter table;
    table.file = file;
    putColumn(table, time);
    for (std::size_t w = 0; w < wellCount; ++w) {
        const bool known = w < wells.wells.size();
        const bool completed = known && !wells.wells[w].connections.empty();
        const CellId cell = completed ? wells.wells[w].connections.front().ConnCell : 0;
        putColumn(table, known ? wells.wells[w].Bhp : 0.0);
        for (const PropertyColumn& column : PropertyColumns)
            putColumn(table, cell > 0 ? (state.*column.array)[cell] * column.factor : 0.0);
    }
    put(table, "\n");
    flush(table);
}

}  // namespace kvr
