#include "eclipse/restart_file.hpp"

#include "base/constants.hpp"
#include "eclipse/cell_arrays.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/init_file.hpp"
#include "pressure/velocity.hpp"
#include "run/records/output_table.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kvr {

namespace {

constexpr std::size_t IntegerSlots = 301;
constexpr std::int32_t LogicalSlots = 101;

struct StateRow {
    std::string_view keyword;
    CellArray<double> CellState::*values;
};

constexpr StateRow StateRows[] = {{"PRESSURE", &CellState::Pressure},
                                  {"SWAT", &CellState::Sw},
                                  {"SOIL", &CellState::So},
                                  {"SGAS", &CellState::Sg}};

struct WellMapRow {
    std::string_view keyword;
    CellArray<int> DiagnosticMaps::*values;
};
constexpr WellMapRow WellMapRows[] = {{"PRDID", &DiagnosticMaps::producer},
                                      {"INJID", &DiagnosticMaps::injector},
                                      {"CXNID", &DiagnosticMaps::connection}};

struct TimeMapRow {
    std::string_view keyword;
    CellArray<double> DiagnosticMaps::*values;
};
constexpr TimeMapRow TimeMapRows[] = {{"TOFI", &DiagnosticMaps::timeFromInjector},
                                      {"TOFP", &DiagnosticMaps::timeToProducer},
                                      {"TOFT", &DiagnosticMaps::timeSum}};

HeadList<IntegerSlots> integerHead(const RunClock& clock, const GridModel& grid, CellId active) {
    constexpr std::int32_t NoIdentifier = -1;
    const HourMinute time = hourMinute(clock.time);
    HeadList<IntegerSlots> head;
    head[inte_head::Units] = inte_head::FieldUnits;
    head[inte_head::NX] = grid.NX;
    head[inte_head::NY] = grid.NY;
    head[inte_head::NZ] = grid.NZ;
    head[inte_head::ActiveCells] = active;
    head[inte_head::Day] = clock.day;
    head[inte_head::Month] = clock.month;
    head[inte_head::Year] = clock.year;
    head[69] = clock.reportIndex;
    head[95] = NoIdentifier;
    head[207] = time.hour;
    head[208] = time.minute;
    return head;
}

/// Somewhere oil holds gas: dead oil has no RS.
bool hasDissolvedGas(const CellState& state) {
    const auto cells = state.Rs.cells();
    return std::any_of(cells.begin(), cells.end(), [](double rs) { return rs > 0.0; });
}

void writeMaps(RecordWriter& writer, const GridModel& grid, CellId active, const DiagnosticMaps& maps) {
    if (maps.timeSum.empty()) return;
    for (const WellMapRow& row : WellMapRows) {
        ActiveWalk walk{grid};
        write_keyword<std::int32_t>(writer, row.keyword, active,
                                    [&](std::size_t) { return (maps.*row.values)[walk.next()]; });
    }
    for (const TimeMapRow& row : TimeMapRows)
        writeActiveCells(writer, row.keyword, grid, active,
                         [&](CellId cell) { return (maps.*row.values)[cell]; });
}

struct FluxRow {
    std::string_view keyword;  // before the axis and "+"
    double PhaseFlux::*flux;
    bool RunOptions::*phase;
};
constexpr FluxRow FluxRows[] = {{"FLROIL", &PhaseFlux::oil, &RunOptions::hasOil},
                                {"FLRWAT", &PhaseFlux::water, &RunOptions::hasWater},
                                {"FLRGAS", &PhaseFlux::gas, &RunOptions::hasGas}};

void writeAxisFluxes(RecordWriter& writer, const RunOptions& options, const GridModel& grid, CellId active,
                     const CellState& state, const FluxSource& source, int axis) {
    constexpr std::string_view Axes = "IJK";
    const int face = 2 * axis;
    const auto shares = [&](CellId cell) {
        return phaseSharesThroughFace(source.units.FlowUnit, source.connections, state, cell, face,
                                      source.velocity.CellFaceFlux(cell, face));
    };
    for (const FluxRow& row : FluxRows) {
        if (!(options.*row.phase)) continue;
        const std::string keyword =
            fmt::format("{}{}+", row.keyword, Axes[static_cast<std::size_t>(axis) - 1]);
        writeActiveCells(writer, keyword, grid, active,
                         [&](CellId cell) { return toBarrels(source.units, shares(cell).*row.flux); });
    }
}

/// Nothing has flowed at time zero, nor in a run that solves no pressure.
void writeFluxes(RecordWriter& writer, const RunOptions& options, const RunClock& clock,
                 const GridModel& grid, CellId active, const CellState& state, const FluxSource& source) {
    if (clock.reportIndex < 1 || source.velocity.CellFaceFlux.slots.empty()) return;
    const std::array<int, 3> cells = {grid.NX, grid.NY, grid.NZ};
    for (int axis = 1; axis <= 3; ++axis)
        if (cells[static_cast<std::size_t>(axis) - 1] > 1)
            writeAxisFluxes(writer, options, grid, active, state, source, axis);
}

}  // namespace

HourMinute hourMinute(double days) {
    constexpr double HoursPerDay = 24.0, MinutesPerHour = 60.0;
    const double hours = HoursPerDay * (days - std::floor(days));
    const double whole = std::trunc(hours);
    return {static_cast<std::int32_t>(whole), static_cast<std::int32_t>((hours - whole) * MinutesPerHour)};
}

void writeRestartFile(const Console& console, const RunOptions& options, const RunClock& clock,
                      const GridModel& grid, const CellState& state, const FluxSource& source,
                      const DiagnosticMaps& maps, const ComponentState& components) {
    if (!isOn(options, OutputSwitch::Eclipse)) return;
    const CellId active = activeCount(grid);
    RecordWriter writer;
    openOrStop(console, runFile(options, ".X", clock.reportIndex), writer);
    writeHead(writer, "INTEHEAD", integerHead(clock, grid, active));
    write_keyword<bool>(
        writer, "LOGIHEAD", LogicalSlots, [](std::size_t) { return false; }, Cut::OneRecord);
    write_keyword<double>(writer, "DOUBHEAD", 1, [&](std::size_t) { return clock.time; });
    for (const StateRow& row : StateRows)
        writeActiveCells(writer, row.keyword, grid, active,
                         [&](CellId cell) { return (state.*row.values)[cell]; });
    if (hasDissolvedGas(state))
        writeActiveCells(writer, "RS", grid, active,
                         [&](CellId cell) { return state.Rs[cell] * GasRatioFactor; });
    for (int i = 1; i <= components.count; ++i)
        writeActiveCells(writer, fmt::format("ZMF{}", i), grid, active,
                         [&](CellId cell) { return components.z(cell, i); });
    writeFluxes(writer, options, clock, grid, active, state, source);
    writeMaps(writer, grid, active, maps);
    closeOrStop(console, writer);
    tellGenerated(console, writer.path);
}

}  // namespace kvr
