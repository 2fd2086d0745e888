#include "fluid/table_print.hpp"

#include "fluid/black_oil.hpp"
#include "fluid/saturation_functions.hpp"

namespace kvr {

namespace {

constexpr int InterpolatedRows = 20;  // of the interpolated gas table

/// One row of numbers in columns of equal width.
void printRow(const Console& console, std::initializer_list<double> values) {
    std::string line;
    for (const double value : values) line += fmt::format("{:>15}", number(value, 7));
    lineToLog(console, line);
}

void printHead(const Console& console, std::string_view title,
               std::initializer_list<std::string_view> names) {
    lineToLog(console, "");
    lineToLog(console, title);
    std::string line;
    for (const std::string_view name : names) line += fmt::format("{:>15}", name);
    lineToLog(console, line);
}

void printScalars(const Console& console, const FluidTables& tables) {
    log(console, "");
    log(console, "Water reference pressure [psia]      {}", number(tables.referencePressureWater));
    log(console, "Water formation volume factor        {}", number(tables.waterFvf));
    log(console, "Water compressibility [1/psi]        {}", number(tables.waterCompressibility));
    log(console, "Water viscosity [cp]                 {}", number(tables.waterViscosity));
    log(console, "Water viscosibility [1/psi]          {}", number(tables.waterViscosibility));
    log(console, "Rock reference pressure [psia]       {}", number(tables.rockReferencePressure));
    log(console, "Rock compressibility [1/psi]         {}", number(tables.rockCompressibility));
    log(console, "Oil density @ ref. conditions        {}", number(tables.oilDensity));
    log(console, "Water densit @ ref. conditions       {}", number(tables.waterDensity));
    log(console, "Gas densit @ ref. conditions         {}", number(tables.gasDensity));
}

/// Saturated rows at their pressure as bubble point, the rows behind at the last bubble point.
void printOil(const Console& console, const UnitSystem& units, const FluidTables& tables) {
    printHead(console, "OIL PROPERTY TABLE", {"pressure", "Rs", "Bo", "viscosity", "density"});
    const auto last = static_cast<std::size_t>(tables.SatRows - 1);
    for (std::size_t r = 0; r < tables.OilPressure.size(); ++r) {
        const double p = tables.OilPressure[r];
        const double pb = r > last ? tables.OilPressure[last] : p;
        const double rs = SolutionRs(tables, pb);
        const OilProperties oil = oilProperties(tables, p, pb);
        printRow(console, {p, rs / units.gasRatio, oil.Bo, oil.MuO, oilDensityAt(tables, rs, oil.Bo)});
    }
}

void printGasRow(const Console& console, const UnitSystem& units, const FluidTables& tables, double p) {
    const GasProperties gas = gasProperties(tables, p);
    printRow(console, {p, gas.Bg / units.gasFvf, gas.MuG, gasDensityAt(tables, gas.Bg)});
}

void printGas(const Console& console, const UnitSystem& units, const FluidTables& tables) {
    printHead(console, "GAS PROPERTY TABLE", {"pressure", "Bg", "viscosity", "density"});
    for (const double p : tables.GasPressure) printGasRow(console, units, tables, p);
    printHead(console, "GAS PROPERTY TABLE - INTERPOLATED", {"pressure", "Bg", "viscosity", "density"});
    const double low = tables.GasPressure.front();
    const double step = (tables.GasPressure.back() - low) / InterpolatedRows;
    for (int r = 0; r <= InterpolatedRows; ++r) printGasRow(console, units, tables, low + r * step);
}

void printWaterOilTable(const Console& console, const FluidTables& tables, int region) {
    const SaturationTable& table = regionTable(tables, region);
    printHead(console, "Rock Fluid Table - SWOF", {"Sw", "krw", "krow", "Pcow"});
    for (const double sw : table.SwAxis)
        printRow(console,
                 {sw, KrwFn(tables, sw, region), KrowFn(tables, sw, region), PcowFn(tables, sw, region)});
    printHead(console, "Derivative of Rock Table - SWOF", {"Sw", "dkrwSw", "dkrowSw", "dPcwdw"});
    for (const double sw : table.SwAxis)
        printRow(console, {sw, KrwSlope(tables, sw, region), KrowSlope(tables, sw, region),
                           PcowSlope(tables, sw, region)});
}

void printGasOilTable(const Console& console, const FluidTables& tables, int region) {
    const SaturationTable& table = regionTable(tables, region);
    printHead(console, "Rock Fluid Table - SGOF", {"Sg", "krg", "krog", "Pcog"});
    for (const double sg : table.SgAxis)
        printRow(console,
                 {sg, KrgFn(tables, sg, region), KrogFn(tables, sg, region), PcogFn(tables, sg, region)});
    printHead(console, "Derivative of Rock Table - SGOF", {"Sg", "dkrgSg", "dkrogSg", "dPcgdSg"});
    for (const double sg : table.SgAxis)
        printRow(console, {sg, KrgSlope(tables, sg, region), KrogSlope(tables, sg, region),
                           PcogSlope(tables, sg, region)});
}

void printEndPoints(const Console& console, const SaturationTable& table) {
    log(console, "");
    log(console, "Connate Sw            {}", number(table.ConnateSw));
    log(console, "Critical Sg           {}", number(table.CriticalSg));
    log(console, "Residual So @ (o/w)   {}", number(table.ResidualSo));
    log(console, "Residual So @ (l/g)   {}", number(table.ResidualSo));
}

void printPairs(const Console& console, const FluidTables& tables) {
    const std::size_t count = tables.CNAMES.size();
    lineToLog(console, "");
    lineToLog(console, "BINARY COEFFICIENTS");
    for (std::size_t i = 1; i < count; ++i) {
        std::string line = fmt::format("{:>15}", tables.CNAMES[i]);
        for (std::size_t j = 0; j < i; ++j)
            line += fmt::format("{:>15}", number(tables.BIC[i * count + j], 7));
        lineToLog(console, line);
    }
}

/// Rankine, psia, ft3/lb-mole, lb/lb-mole.
void printComponents(const Console& console, const FluidTables& tables) {
    if (tables.TCRIT.empty()) return;
    printHead(console, "COMPONENT PROPERTY TABLE", {"name", "Tc", "Pc", "Vc", "MW", "acentric"});
    for (std::size_t i = 0; i < tables.TCRIT.size(); ++i) {
        std::string line = fmt::format("{:>15}", tables.CNAMES[i]);
        for (const Column* column : {&tables.TCRIT, &tables.PCRIT, &tables.VCRIT, &tables.MW, &tables.ACF})
            line += fmt::format("{:>15}", number((*column)[i], 7));
        lineToLog(console, line);
    }
    printPairs(console, tables);
    log(console, "");
    log(console, "Reservoir temperature [R]            {}", number(tables.reservoirTemperature));
}

}  // namespace

void printFluidTables(const Console& console, const UnitSystem& units, const FluidTables& tables) {
    printScalars(console, tables);
    printOil(console, units, tables);
    printGas(console, units, tables);
}

void printRockTables(const Console& console, const FluidTables& tables) {
    for (int region = 1; region <= static_cast<int>(ownRegions(tables)); ++region) {
        log(console, "");
        log(console, "Saturation table region {}", region);
        printWaterOilTable(console, tables, region);
        printGasOilTable(console, tables, region);
        printEndPoints(console, regionTable(tables, region));
    }
}

void printTables(const Console& console, const UnitSystem& units, const FluidTables& tables) {
    printFluidTables(console, units, tables);
    printComponents(console, tables);
    printRockTables(console, tables);
}

}  // namespace kvr
