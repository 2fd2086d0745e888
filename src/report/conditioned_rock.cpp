#include "report/conditioned_rock.hpp"

#include "base/number_writer.hpp"
#include "base/text.hpp"
#include "base/written_files.hpp"
#include "model/rock_properties.hpp"
#include "report/block_zone.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int ValuesPerLine = 6;
constexpr int ValueDigits = 12;
constexpr std::string_view UpscaledTitle = " PowerLawUpscale ";
constexpr std::string_view UpscaledVariable = ",Perm";

struct SmoothedRow {
    RockProperty property;
    OutputFile file;
};
constexpr SmoothedRow SmoothedRows[] = {{RockPERMX, OutputFile::SmoothedKx},
                                        {RockPERMY, OutputFile::SmoothedKy},
                                        {RockPERMZ, OutputFile::SmoothedKz},
                                        {RockPORO, OutputFile::SmoothedPoro}};

struct PermeabilityRow {
    RockProperty property;
    OutputFile map, logarithm;
};
constexpr PermeabilityRow PermeabilityRows[] = {
    {RockPERMX, OutputFile::UpscaledPermX, OutputFile::UpscaledPermXLog},
    {RockPERMY, OutputFile::UpscaledPermY, OutputFile::UpscaledPermYLog},
    {RockPERMZ, OutputFile::UpscaledPermZ, OutputFile::UpscaledPermZLog},
};

void writeSmoothed(const Simulation& run) {
    const ZoneNodes nodes = zoneNodes(run.options);
    const std::vector<ConditioningRow>& asked = run.options.smoothingRows;
    for (const SmoothedRow& row : SmoothedRows) {
        if (std::none_of(asked.begin(), asked.end(),
                         [&row](const ConditioningRow& r) { return trim(r.name) == row.property.name; }))
            continue;
        std::FILE* file = openBeside(run.console, run.outputs, row.file);
        writeBlockZone(file, run.grid, nodes, run.grid.*row.property.array, run.clock.time,
                       rowOf(row.file).title);
        closeWhole(run.console, file);
    }
}

void writeMap(const Simulation& run, OutputFile name, const CellValue& value) {
    std::FILE* file = openBeside(run.console, run.outputs, name);
    writeZone(file, run.grid, ZoneNodes::Shared, value, {UpscaledTitle, UpscaledVariable, nullptr});
    closeWhole(run.console, file);
}

void putKeyword(NumberWriter& writer, std::string_view keyword, const CellArray<double>& values) {
    put(writer, keyword);
    for (CellId cell = 1; cell <= values.count(); ++cell) {
        put(writer, (cell - 1) % ValuesPerLine == 0 ? "\n" : " ");
        putNumber(writer, values[cell], ValueDigits);
    }
    put(writer, "\n/\n");
}

void writePorosity(const Simulation& run) {
    const CellArray<double>& porosity = run.grid.upscaled.PORO;
    writeMap(run, OutputFile::UpscaledPorosity, [&](CellId cell) { return porosity[cell]; });
    NumberWriter writer;
    writer.file = openBeside(run.console, run.outputs, OutputFile::UpscaledPorosityData);
    putKeyword(writer, "PORO", porosity);
    flush(writer);
    closeWhole(run.console, writer.file);
}

void writePermeabilities(const Simulation& run) {
    for (const PermeabilityRow& row : PermeabilityRows) {
        const CellArray<double>& values = run.grid.upscaled.*row.property.upscaled;
        writeMap(run, row.map, [&](CellId cell) { return values[cell]; });
        writeMap(run, row.logarithm, [&](CellId cell) { return plottedLog10(values[cell]); });
    }
    NumberWriter writer;
    writer.file = openBeside(run.console, run.outputs, OutputFile::UpscaledPermData);
    for (const PermeabilityRow& row : PermeabilityRows)
        putKeyword(writer, row.property.name, run.grid.upscaled.*row.property.upscaled);
    flush(writer);
    closeWhole(run.console, writer.file);
}

}  // namespace

void writeConditionedRock(const Simulation& simulation) {
    if (isOn(simulation.options, OutputSwitch::Smoothing)) writeSmoothed(simulation);
    if (!isOn(simulation.options, OutputSwitch::Upscaling)) return;
    writePorosity(simulation);
    writePermeabilities(simulation);
}

}  // namespace kvr
