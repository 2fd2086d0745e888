#include "report/summary_table.hpp"

#include "base/written_files.hpp"
#include "report/run_vectors.hpp"
#include "report/text_table.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int Digits = 10;

/// A column behind the one before it; a name that a comma or a quote would take apart stands without them.
std::string columnName(char scope, std::string_view suffix, const std::string& well) {
    std::string name = fmt::format(",{}{}:{}", scope, suffix, withoutBlanks(well));
    std::replace_if(
        name.begin() + 1, name.end(), [](char c) { return c == ',' || c == '"'; }, '_');
    return name;
}

/// field(vector), then well(vector, place) for every well; observed vectors where the deck has any.
template <class Field, class OfWell>
void forColumns(const SummaryColumns& columns, std::size_t wellCount, const Field& field,
                const OfWell& well) {
    const auto shown = [&columns](const RunVector& row) {
        return (columns.observed || !row.observed) && (columns.tubing || !row.ofTubing);
    };
    for (const RunVector& row : runVectors())
        if (row.ofField && shown(row)) field(row);
    for (std::size_t w = 0; w < wellCount; ++w)
        for (const RunVector& row : runVectors())
            if (row.ofWells && shown(row)) well(row, w);
}

void putValue(NumberWriter& writer, const UnitSystem& units, const RunVector& row, double value) {
    put(writer, ",");
    putNumber(writer, value * deckUnit(units, row.quantity).factor, Digits);
}

void putUnit(NumberWriter& writer, const UnitSystem& units, const RunVector& row) {
    put(writer, ",");
    put(writer, deckUnit(units, row.quantity).word);
}

void putFractionNames(NumberWriter& writer, int components, const std::vector<std::string>& wellNames) {
    for (int i = 1; i <= components; ++i) put(writer, fmt::format(",FZMF_{:04}", i));
    for (const std::string& name : wellNames)
        for (int i = 1; i <= components; ++i) put(writer, columnName('W', fmt::format("ZMF_{:04}", i), name));
}

void putFractions(NumberWriter& writer, const std::vector<double>& fractions) {
    for (const double fraction : fractions) {
        put(writer, ",");
        putNumber(writer, fraction, Digits);
    }
}

SummaryColumns columnsOf(const Simulation& simulation) {
    return {&simulation.units, simulation.options.useHistoryControls, simulation.options.componentCount,
            !simulation.schedule.liftTables.empty()};
}

}  // namespace

void putSummaryHead(const SummaryColumns& columns, const std::vector<std::string>& wellNames,
                    std::FILE* file) {
    const UnitSystem& units = *columns.units;
    NumberWriter writer;
    writer.file = file;
    put(writer, "TIME,DATE");
    forColumns(
        columns, wellNames.size(),
        [&](const RunVector& row) { put(writer, fmt::format(",F{}", row.suffix)); },
        [&](const RunVector& row, std::size_t w) { put(writer, columnName('W', row.suffix, wellNames[w])); });
    putFractionNames(writer, columns.components, wellNames);
    put(writer, "\nDAYS,YYYY-MM-DD");
    forColumns(
        columns, wellNames.size(), [&](const RunVector& row) { putUnit(writer, units, row); },
        [&](const RunVector& row, std::size_t) { putUnit(writer, units, row); });
    const std::size_t fractions = static_cast<std::size_t>(columns.components) * (1 + wellNames.size());
    put(writer, std::string(fractions, ','));
    put(writer, "\n");
    flush(writer);
}

void addSummaryRow(const SummaryColumns& columns, const StepFigures& figures, const RunClock& clock,
                   std::FILE* file) {
    const UnitSystem& units = *columns.units;
    NumberWriter writer;
    writer.file = file;
    putNumber(writer, figures.time, Digits);
    put(writer, fmt::format(",{:04}-{:02}-{:02}", clock.year, clock.month, clock.day));
    forColumns(
        columns, figures.wells.size(),
        [&](const RunVector& row) { putValue(writer, units, row, row.value(figures, figures.field)); },
        [&](const RunVector& row, std::size_t w) {
            putValue(writer, units, row, row.value(figures, figures.wells[w]));
        });
    putFractions(writer, figures.field.fractions);
    for (const WellFigures& well : figures.wells) putFractions(writer, well.fractions);
    put(writer, "\n");
    flush(writer);
}

StepFigures vectorFigures(const Simulation& simulation) {
    StepFigures figures = stepFigures(simulation);
    if (simulation.balance.rows.size() > 1) return figures;
    figures.field.production = figures.field.injection = {};
    for (WellFigures& well : figures.wells) well.production = well.injection = {};
    return figures;
}

void startSummaryTable(Simulation& simulation) {
    OutputStreams& outputs = simulation.outputs;
    outputs.summary = openBeside(simulation.console, outputs, OutputFile::RunSummary);
    watchFile(simulation.console, outputs.summary, outputPath(outputs, outputName(OutputFile::RunSummary)));
    putSummaryHead(columnsOf(simulation), runWellNames(simulation.schedule, simulation.wells),
                   outputs.summary);
    addToSummaryTable(simulation);
}

void addToSummaryTable(const Simulation& simulation) {
    if (simulation.outputs.summary == nullptr) return;
    addSummaryRow(columnsOf(simulation), vectorFigures(simulation), simulation.clock,
                  simulation.outputs.summary);
}

void closeSummaryTable(Simulation& simulation) {
    if (simulation.outputs.summary == nullptr) return;
    unwatchFile(simulation.console, simulation.outputs.summary);
    closeWhole(simulation.console, simulation.outputs.summary);
    simulation.outputs.summary = nullptr;
}

}  // namespace kvr
