#include "deck/sections/props_tables.hpp"

#include "base/constants.hpp"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace kvr {

void fillOpenValues(const Column& axis, Column& column) {
    for (std::size_t r = 0; r < column.size(); ++r) {
        if (!std::isnan(column[r])) continue;
        std::size_t next = r + 1;
        while (next < column.size() && std::isnan(column[next])) ++next;
        const bool above = r > 0, below = next < column.size();
        if (above && below)
            column[r] = column[r - 1] +
                        (column[next] - column[r - 1]) * (axis[r] - axis[r - 1]) / (axis[next] - axis[r - 1]);
        else
            column[r] = above ? column[r - 1] : below ? column[next] : 0.0;
    }
}

void setDeadOil(FluidTables& tables) {
    tables.OilRs.assign(tables.OilPressure.size(), 0.0);
    tables.UnderRows = 0;
    tables.underRows = {};
}

void tabulateConstantOil(const std::array<double, 5>& item, FluidTables& tables) {
    constexpr int Rows = 801;
    constexpr double LastPressure = 40000.0;  // psia
    const auto [reference, Bo, C, MuO, V] = item;
    const auto series = [](double x) { return 1.0 + x + 0.5 * x * x; };
    for (Column* column : {&tables.OilPressure, &tables.OilFvf, &tables.OilViscosity}) column->clear();
    for (int r = 0; r < Rows; ++r) {
        const double p = StandardPressure + (LastPressure - StandardPressure) * r / (Rows - 1);
        const double fvf = Bo / series(C * (p - reference));
        tables.OilPressure.push_back(p);
        tables.OilFvf.push_back(fvf);
        tables.OilViscosity.push_back(MuO * Bo / (fvf * series((C - V) * (p - reference))));
    }
    setDeadOil(tables);
}

void requireTables(SectionReader& reader, const PropsRecords& records) {
    const RunOptions& options = records.options;
    const FluidTables& tables = records.tables;
    const auto hasTable = [&tables](Column SaturationTable::*axis) {
        return std::any_of(tables.regions.begin(), tables.regions.end(),
                           [axis](const SaturationTable& table) { return !(table.*axis).empty(); });
    };
    struct Need {
        bool missing;
        std::string_view keyword;
        std::string_view what;
    };
    const Need needs[] = {
        {options.hasOil && options.componentCount == 0 && tables.OilPressure.empty(), "PVDO",
         "NO PVT TABLE OF OIL: PVDO, PVTO OR PVCDO"},
        {options.hasGas && options.componentCount == 0 && tables.GasPressure.empty(), "PVDG",
         "NO PVT TABLE OF GAS: PVDG"},
        {options.hasOil && options.hasWater && !hasTable(&SaturationTable::SwAxis), "SWOF",
         "NO RELATIVE PERMEABILITIES OF WATER AND OIL: SWOF, OR SWFN WITH SOF2 OR SOF3"},
        {(options.hasOil || options.componentCount > 0) && options.hasGas &&
             !hasTable(&SaturationTable::SgAxis),
         "SGOF", "NO RELATIVE PERMEABILITIES OF GAS AND OIL: SGOF, OR SGFN WITH SOF2 OR SOF3"},
    };
    for (const Need& need : needs) {
        if (!need.missing) continue;
        both(consoleOf(reader), "ERROR :: {}", need.what);
        reader.keyword = need.keyword;
        stopAtPlace(reader);
    }
}

}  // namespace kvr
