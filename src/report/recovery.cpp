#include "report/recovery.hpp"

#include "report/text_table.hpp"

#include <array>

namespace kvr {

namespace {

constexpr std::array<FieldColumn, 15> FieldColumns = {{
    {"TIME", [](const StepFigures& f) { return f.time; }},
    {"FOPR", [](const StepFigures& f) { return f.field.production.oil; }},
    {"FWPR", [](const StepFigures& f) { return f.field.production.water; }},
    {"FGPR", [](const StepFigures& f) { return f.field.production.gas; }},
    {"FGOR", [](const StepFigures& f) { return gasOilRatio(f.field.production); }},
    {"FWCT", [](const StepFigures& f) { return waterCut(f.field.production); }},
    {"FWIR", [](const StepFigures& f) { return f.field.injection.water; }},
    {"FGIR", [](const StepFigures& f) { return f.field.injection.gas; }},
    {"FOPT", [](const StepFigures& f) { return f.field.produced.oil; }},
    {"FWPT", [](const StepFigures& f) { return f.field.produced.water; }},
    {"FGPT", [](const StepFigures& f) { return f.field.produced.gas; }},
    {"FWIT", [](const StepFigures& f) { return f.field.injected.water; }},
    {"FGIT", [](const StepFigures& f) { return f.field.injected.gas; }},
    {"FPR", [](const StepFigures& f) { return f.averagePressure; }},
    {"FOE", [](const StepFigures& f) { return f.recovery; }},
}};

constexpr std::array<WellColumn, 6> WellColumns = {{
    {"WBHP", [](const WellFigures& w) { return w.bhp; }},
    {"WOPR", [](const WellFigures& w) { return w.production.oil; }},
    {"WWPR", [](const WellFigures& w) { return w.production.water; }},
    {"WGPR", [](const WellFigures& w) { return w.production.gas; }},
    {"WWIR", [](const WellFigures& w) { return w.injection.water; }},
    {"WGIR", [](const WellFigures& w) { return w.injection.gas; }},
}};

void putHead(std::span<const std::string> wellNames, NumberWriter& table) {
    for (const FieldColumn& column : FieldColumns) putHeading(table, column.name);
    for (const std::string& name : wellNames)
        for (const WellColumn& column : WellColumns)
            putHeading(table, fmt::format("{}:{}", column.name, withoutBlanks(name)));
    put(table, "\n");
}

}  // namespace

void addRecoveryRow(const StepFigures& figures, std::span<const std::string> wellNames, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    if (isEmptyFile(file)) putHead(wellNames, table);
    for (const FieldColumn& column : FieldColumns) putColumn(table, column.value(figures));
    for (const WellFigures& well : figures.wells)
        for (const WellColumn& column : WellColumns) putColumn(table, column.value(well));
    put(table, "\n");
    flush(table);
}

}  // namespace kvr
