#include "report/region_balance.hpp"

#include "base/written_files.hpp"
#include "report/text_table.hpp"
#include "run/records/output_streams.hpp"

#include <algorithm>

namespace kvr {

namespace {

void addCell(const CellState& state, CellId cell, bool hasGas, RegionInPlace& region) {
    const double volume = state.PoreVolume[cell];
    const double oil = volume * state.So[cell] / state.Bo[cell];
    InPlaceSums& sums = region.sums;
    sums.poreVolume += volume;
    sums.oilPore += volume * state.So[cell];
    sums.waterPore += volume * state.Sw[cell];
    sums.oil += oil;
    sums.water += volume * state.Sw[cell] / state.Bw[cell];
    addPressure(state, cell, region.pressure);
    if (!hasGas) return;
    sums.gasPore += volume * state.Sg[cell];
    sums.freeGas += volume * state.Sg[cell] / state.Bg[cell];
    sums.dissolvedGas += oil * state.Rs[cell];
}

void addCarried(const CellAmounts& carried, CellId cell, InPlaceSums& sums) {
    if (carried.water.empty()) return;
    sums.water += carried.water[cell];
    sums.oil += carried.oil[cell];
    sums.freeGas += carried.gas[cell];
}

constexpr std::string_view Head =
    "            TIME          REGION             FPR             PVT            FOIP            FWIP"
    "            FGIP             FOE\n";

std::string rowOf(const Simulation& run, std::size_t index, const RegionInPlace& region, double firstOil) {
    const InPlaceSums& sums = region.sums;
    const double recovered = firstOil > 0.0 ? (firstOil - sums.oil) / firstOil : 0.0;
    std::string row = fmt::format("{:>16}{:>16}", number(run.clock.time), index + 1);
    for (const double value :
         {meanOf(region.pressure), toBarrels(run.units, sums.poreVolume), toBarrels(run.units, sums.oil),
          toBarrels(run.units, sums.water), toMscf(run.units, sums.freeGas + sums.dissolvedGas), recovered})
        row += fmt::format("{:>16}", number(value));
    return row + "\n";
}

}  // namespace

std::vector<RegionInPlace> sumRegions(const GridModel& grid, const CellState& state,
                                      const CellAmounts& carried, bool hasGas) {
    std::vector<RegionInPlace> regions;
    for (CellId cell = 1; cell <= grid.FIPNUM.count(); ++cell) {
        const auto number = static_cast<std::size_t>(grid.FIPNUM[cell]);
        if (regions.size() < number) regions.resize(number);
        if (grid.Active[cell] == 0) continue;
        addCell(state, cell, hasGas, regions[number - 1]);
        addCarried(carried, cell, regions[number - 1].sums);
    }
    return regions;
}

namespace {

/// What cells of components give at the surface, in place of what formation volume factors say.
void takeComponents(const Simulation& run, std::vector<RegionInPlace>& regions) {
    if (run.options.componentCount <= 0) return;
    const ComponentBalance& balance = run.components.balance;
    for (RegionInPlace& region : regions)
        region.sums.oil = region.sums.water = region.sums.freeGas = region.sums.dissolvedGas = 0.0;
    for (CellId cell = 1; cell <= run.grid.FIPNUM.count(); ++cell) {
        if (run.grid.Active[cell] == 0) continue;
        InPlaceSums& sums = regions[static_cast<std::size_t>(run.grid.FIPNUM[cell]) - 1].sums;
        sums.oil += balance.cellOil[cell];
        sums.water += run.components.stage.amounts.water[cell];
        sums.freeGas += balance.cellFreeGas[cell];
        sums.dissolvedGas += balance.cellGas[cell] - balance.cellFreeGas[cell];
    }
}

std::vector<RegionInPlace> regionsOf(const Simulation& run) {
    std::vector<RegionInPlace> regions =
        sumRegions(run.grid, run.state, run.pressure.carried, run.options.hasGas);
    takeComponents(run, regions);
    return regions;
}

}  // namespace

std::vector<PhaseAmounts> regionAmounts(const Simulation& simulation) {
    std::vector<PhaseAmounts> amounts;
    for (const RegionInPlace& region : regionsOf(simulation))
        amounts.push_back(
            {region.sums.oil, region.sums.water, region.sums.freeGas + region.sums.dissolvedGas});
    return amounts;
}

void reportRegions(Simulation& simulation) {
    BalanceRecord& record = simulation.balance;
    const std::vector<RegionInPlace> regions = regionsOf(simulation);
    if (regions.empty()) return;
    const bool first = record.firstOfRegion.empty();
    if (first) record.firstOfRegion = regionAmounts(simulation);
    const std::string path = outputPath(simulation.outputs, outputName(OutputFile::RunRegions));
    std::FILE* file =
        first ? openForReplace(simulation.console, path) : openForAppend(simulation.console, path);
    const long before = lengthOf(file);
    if (first) std::fputs(std::string(Head).c_str(), file);
    for (std::size_t r = 0; r < regions.size(); ++r)
        std::fputs(rowOf(simulation, r, regions[r], record.firstOfRegion[r].oil).c_str(), file);
    closeAppended(simulation.console, file, before);
}

}  // namespace kvr
