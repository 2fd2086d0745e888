#include "matching/calculated_wells.hpp"

#include "base/written_files.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/well_data_layout.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double NoLiquid = 1e-10;  // keeps the cut of a shut well at 0

std::vector<double> valuesOf(const WellSeries& well, std::size_t point) {
    std::vector<double> values{well.time[point],     well.oil[point], well.water[point],      well.gas[point],
                               well.pressure[point], well.cut[point], well.gasOilRatio[point]};
    for (const std::vector<double>& fraction : well.fractions) values.push_back(fraction[point]);
    return values;
}

}  // namespace

double binTime(double end, int bins, int b) {
    return end / bins * b;
}

double surfaceCut(double water, double oil) {
    const double producedWater = std::max(0.0, water), producedOil = std::max(0.0, oil);
    return producedWater / (producedWater + NoLiquid + producedOil);
}

WellSeries calculatedSeries(const UnitSystem& units, std::string_view name, std::span<const WellBin> bins,
                            double Bo, double Bw) {
    WellSeries series;
    series.name = name;
    for (const WellBin& bin : bins) {
        const double oil = toBarrels(units, bin.oil / Bo), water = toBarrels(units, bin.water / Bw);
        const double gas = toMscf(units, bin.gas);
        series.time.push_back(bin.time);
        series.oil.push_back(oil);
        series.water.push_back(water);
        series.gas.push_back(gas);
        series.pressure.push_back(bin.pressure);
        series.cut.push_back(surfaceCut(water, oil));
        series.gasOilRatio.push_back(oil > 0.0 ? gas / oil : 0.0);
    }
    return series;
}

void writeCalculatedWells(const Console& console, const std::string& folder,
                          std::span<const WellSeries> wells) {
    NumberWriter writer;
    const std::string path = folder + "WELL_CALCULATED.DATA";
    writer.file = replaceTextOrStop(console, path);
    log(console, " File Created -> {}", path);
    putWellDataHead(wells.empty() ? 0 : static_cast<int>(wells.front().fractions.size()), writer);
    for (const WellSeries& well : wells)
        for (std::size_t point = 0; point < well.count(); ++point)
            putWellDataRow(well.name, valuesOf(well, point), writer);
    flush(writer);
    closeWhole(console, writer.file);
}

}  // namespace kvr
