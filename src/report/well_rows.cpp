#include "report/well_rows.hpp"

#include "report/text_table.hpp"

#include <array>

namespace kvr {

namespace {

constexpr std::string_view BlockHead =
    "NO. TYPE I   J  CMPLTN  CTRL   WOPR       WGPR       WIR        BHP       WCT\n";
constexpr std::string_view WellHeadLine =
    "TIME\tNAME\tTYPE\tI\tJ\tCMPLTN\tCTRL\tWOPR\tWWPR\tWGPR\tWOIR\tWWIR\tWGIR\tWBHP\tWWCT\tWOPT\tWWPT\tWGPT\t"
    "WOIT\tWWIT\tWGIT\n";

/// What one completed cell of the block table shows; rates in reported units, production positive.
struct BlockLine {
    int i = 0, j = 0, layer = 0;
    double oil = 0.0, gas = 0.0, injection = 0.0, bhp = 0.0, cut = 0.0;
};

/// The part of a rate that comes out of the reservoir, positive.
double outOf(double rate) {
    return rate < 0.0 ? -rate : 0.0;
}

BlockLine blockLine(const UnitSystem& units, const Well& well, const WellConnection& connection) {
    BlockLine line;
    line.bhp = well.Bhp;
    if (isInjector(well)) {
        line.injection = well.InjectFluid == "gas" ? toMscf(units, connection.ConnQg)
                                                   : toBarrels(units, connection.ConnQo + connection.ConnQw);
        return line;
    }
    line.oil = toBarrels(units, outOf(connection.ConnQo));
    line.gas = toMscf(units, outOf(connection.ConnQg));
    line.cut = waterCut({line.oil, toBarrels(units, outOf(connection.ConnQw)), line.gas, 0.0});
    return line;
}

void putBlockLine(NumberWriter& table, std::size_t number, const Well& well, const BlockLine& line) {
    fmt::format_to(std::back_inserter(table.buffer),
                   "{:<3} {:<4} {:<3} {:<3} {:<6} {:<5} {:<14.9g} {:<14.9g} {:<14.9g} {:<14.9g} {:<14.9g}\n",
                   number, mainPhase(well), line.i, line.j, line.layer, well.WellControl, line.oil, line.gas,
                   line.injection, line.bhp, line.cut);
}

/// A row for every producer: time, name, and what `values` makes of its figures; the names of the columns
/// before the first row of a file.
template <class Values>
void addProducerRows(const StepFigures& figures, const WellRecord& wells,
                     std::initializer_list<std::string_view> columns, const Values& values, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    if (isEmptyFile(file)) {
        for (const std::string_view name : columns) putHeading(table, name);
        put(table, "\n");
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        if (isInjector(wells.wells[w])) continue;
        putColumn(table, figures.time);
        putHeading(table, withoutBlanks(wells.wells[w].WellName));
        for (const double value : values(figures.wells[w])) putColumn(table, value);
        put(table, "\n");
    }
    flush(table);
}

}  // namespace

std::string mainPhase(const Well& well) {
    if (isInjector(well)) return well.InjectFluid;
    const bool liquid = well.WellQo != 0.0 || well.WellQw != 0.0;
    if (!liquid && well.WellQg != 0.0) return "gas";
    return well.WellQw < well.WellQo ? "wat" : "oil";
}

void addWellBlocks(const GridModel& grid, const UnitSystem& units, const WellRecord& wells, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        put(table, BlockHead);
        for (const WellConnection& connection : well.connections) {
            BlockLine line = blockLine(units, well, connection);
            line.i = grid.CellI[connection.ConnCell];
            line.j = grid.CellJ[connection.ConnCell];
            line.layer = grid.CellK[connection.ConnCell];
            putBlockLine(table, w + 1, well, line);
        }
        if (!well.connections.empty()) continue;
        BlockLine line;
        line.i = well.LocI;
        line.j = well.LocJ;
        putBlockLine(table, w + 1, well, line);
    }
    flush(table);
}

void addWellRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file) {
    NumberWriter table;
    table.file = file;
    if (isEmptyFile(file)) put(table, WellHeadLine);
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        const WellFigures& f = figures.wells[w];
        fmt::format_to(std::back_inserter(table.buffer), "{:.10g}\t{}\t{}\t{}\t{}\t{}\t{}", figures.time,
                       well.WellName, mainPhase(well), well.LocI, well.LocJ, well.TopK, well.WellControl);
        for (const double value :
             {f.production.oil, f.production.water, f.production.gas, f.injection.oil, f.injection.water,
              f.injection.gas, f.bhp, waterCut(f.production), f.produced.oil, f.produced.water,
              f.produced.gas, f.injected.oil, f.injected.water, f.injected.gas})
            fmt::format_to(std::back_inserter(table.buffer), "\t{:.10g}", value);
        put(table, "\n");
    }
    flush(table);
}

void addProductionRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file) {
    addProducerRows(
        figures, wells, {"TIME", "NAME", "WOPR", "WWPR", "WGPR"},
        [](const WellFigures& f) {
            return std::array<double, 3>{f.production.oil, f.production.water, f.production.gas};
        },
        file);
}

void addWaterCutRows(const StepFigures& figures, const WellRecord& wells, std::FILE* file) {
    addProducerRows(
        figures, wells, {"TIME", "NAME", "WWCT"},
        [](const WellFigures& f) { return std::array<double, 1>{waterCut(f.production)}; }, file);
}

}  // namespace kvr
