#include "report/run_information.hpp"

#include "base/constants.hpp"
#include "deck/options/option_echo.hpp"
#include "fluid/table_print.hpp"

#include <algorithm>
#include <array>
#include <span>

namespace kvr {

namespace {

constexpr double KilopascalsPerPsi = 6.894757;
constexpr std::size_t RuleLength = 60;
constexpr std::string_view IterationHead = " Iteration   Traveltime RMS error   Total RMS error";

/// Extent of the nodes along an axis, ft.
double extent(const std::vector<double>& nodes) {
    if (nodes.empty()) return 0.0;
    const auto [least, most] = std::minmax_element(nodes.begin(), nodes.end());
    return *most - *least;
}

void heading(const Console& out, std::string_view title) {
    const std::string rule(RuleLength, '-');
    lineToLog(out, rule);
    lineToLog(out, title);
    lineToLog(out, rule);
}

void line(const Console& out, std::string_view label, std::string_view value) {
    log(out, "{:<36} {}", label, value);
}

void inputSection(const Console& out, const Simulation& run) {
    heading(out, "Input Control Section");
    line(out, "File Name", run.options.dataFileBase);
}

void reservoirSection(const Console& out, const Simulation& run) {
    const GridModel& grid = run.grid;
    heading(out, "Reservoir Description Section");
    const int layers = grid.dual.isSet ? grid.NZ / 2 : grid.NZ;  // of one continuum, as maps have them
    line(out, "Number of Grid", fmt::format("{} {} {}", grid.NX, grid.NY, layers));
    line(out, "Total Length of Res. [m]",
         fmt::format("{} {} {}", number(metres(extent(grid.NodeX))), number(metres(extent(grid.NodeY))),
                     number(metres(extent(grid.NodeZ)))));
    line(out, "Pinit (Average) [kPa]", number(kilopascals(run.pressure.AveragePressure)));
    line(out, "Pinit (Average) [psi]", number(run.pressure.AveragePressure));
    line(out, "Rock Compressibility", number(run.fluids.rockCompressibility));
    line(out, "Reference pressure [kPa]", number(kilopascals(run.fluids.rockReferencePressure)));
}

void rockFluidSection(const Console& out, const FluidTables& fluids) {
    heading(out, "Rock-fluid Property Section");
    for (const SaturationTable& table : std::span(fluids.regions).first(ownRegions(fluids))) {
        line(out, "Number of Table Data (krw)", fmt::format("{}", table.SwAxis.size()));
        line(out, "Number of Table Data (krg)", fmt::format("{}", table.SgAxis.size()));
    }
    printRockTables(out, fluids);
}

void fluidSection(const Console& out, const Simulation& run) {
    heading(out, "Fluid(Component) Property Section");
    printFluidTables(out, run.units, run.fluids);
}

void simulationSection(const Console& out, const Simulation& run) {
    heading(out, "Simulation Data Section");
    line(out, "Number of Streamlines", fmt::format("{}", run.options.requestedLines));
    line(out, "End Time of Simulation", number(run.schedule.endTime));
    echoSummary(out, run.options, run.fluids);
}

}  // namespace

double metres(double feet) {
    return feet * MetresPerFoot;
}

double kilopascals(double psia) {
    return psia * KilopascalsPerPsi;
}

void writeRunInformation(const Simulation& simulation) {
    const Console out{nullptr, stream(simulation.outputs, OutputFile::InfoGeneral), nullptr};
    inputSection(out, simulation);
    reservoirSection(out, simulation);
    rockFluidSection(out, simulation.fluids);
    fluidSection(out, simulation);
    simulationSection(out, simulation);
    const Console aspect{nullptr, stream(simulation.outputs, OutputFile::InfoAspect), nullptr};
    lineToLog(aspect, IterationHead);
    lineToLog(aspect, std::string(IterationHead.size(), '-'));
    flushOutputs(simulation.outputs);
}

}  // namespace kvr
