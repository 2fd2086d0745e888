#include "pressure/wells/well_listing.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace kvr {

namespace {

constexpr std::size_t WellsPerBlock = 8;  // columns of the control table that fit a console line
constexpr std::string_view ConnectionHeading =
    "** CxnID ***** Loc_ijk **  COORD x  *****  COORD y ******  COORD z  **  Direxn  ***  Dx  **********  "
    "Dy  **********  Dz  ********  PermX  ********  PermY  ******  PermZ  *******  WellRad  *****  R-eff  "
    "********  Keff   *******  Skin  *******  WelIdx  *******";

/// The target in the unit of its control.
double reportedTarget(const UnitSystem& units, const Well& well) {
    const bool gas = well.deckControl == "grat" || (well.deckControl == "rate" && well.InjectFluid == "gas");
    return gas ? toMscf(units, well.TargetRate) : toBarrels(units, well.TargetRate);
}

struct LabelRow {
    std::string_view label;
    std::string (*value)(const UnitSystem&, const Well&);
};

const std::array<LabelRow, 14> LabelRows = {{
    {"      Name :: ", [](const UnitSystem&, const Well& w) { return w.WellName; }},
    {"      Type :: ", [](const UnitSystem&, const Well& w) { return w.WellKind; }},
    {"      Ctrl :: ", [](const UnitSystem&, const Well& w) { return w.WellControl; }},
    {"      flid :: ", [](const UnitSystem&, const Well& w) { return w.InjectFluid; }},
    {"      Loci :: ", [](const UnitSystem&, const Well& w) { return std::to_string(w.LocI); }},
    {"      Locj :: ", [](const UnitSystem&, const Well& w) { return std::to_string(w.LocJ); }},
    {"      Topz :: ", [](const UnitSystem&, const Well& w) { return std::to_string(w.TopK); }},
    {"      Btmz :: ", [](const UnitSystem&, const Well& w) { return std::to_string(w.BottomK); }},
    {"      radi :: ", [](const UnitSystem&, const Well& w) { return number(w.WellRadius); }},
    {"      skin :: ", [](const UnitSystem&, const Well& w) { return number(w.Skin); }},
    {"      Trns :: ", [](const UnitSystem&, const Well& w) { return number(w.ConnFactor); }},
    {"      rate :: ", [](const UnitSystem& u, const Well& w) { return number(reportedTarget(u, w)); }},
    {"      bhp  :: ", [](const UnitSystem&, const Well& w) { return number(w.Bhp); }},
    {"      bhpc :: ", [](const UnitSystem&, const Well& w) { return number(w.BhpLimit); }},
}};

void listBlock(const Console& console, const UnitSystem& units, const WellRecord& wells, std::size_t first) {
    const std::size_t last = std::min(first + WellsPerBlock, wells.wells.size());
    for (const LabelRow& row : LabelRows) {
        std::string line(row.label);
        for (std::size_t w = first; w < last; ++w)
            line += fmt::format("{:<12}", row.value(units, wells.wells[w]));
        lineToBoth(console, line);
    }
    lineToBoth(console, "");
}

void listConnection(const Console& console, const GridModel& grid, const WellConnection& c) {
    const CellId cell = c.ConnCell;
    const double* centre = grid.CellCentre.row(cell);
    log(console,
        "{:8} {:5} {:5} {:5} {:14.6g} {:14.6g} {:14.6g} {:^8} {:14.6g} {:14.6g} {:14.6g} {:14.6g} {:14.6g} "
        "{:14.6g} {:14.6g} {:14.6g} {:14.6g} {:14.6g} {:14.9g}",
        c.completion, grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell], centre[0], centre[1], centre[2],
        c.ConnDirection, grid.DX[cell], grid.DY[cell], grid.DZ[cell], grid.PERMX[cell], grid.PERMY[cell],
        grid.PERMZ[cell], c.WellRadius, c.effectiveRadius, c.effectivePermeability, c.Skin, c.ConnWI);
}

}  // namespace

void listWellControls(const Console& console, const UnitSystem& units, const WellRecord& wells) {
    lineToBoth(console, "-- WELL Data Assigned to KVR from WCNPRD,WCNINJ,COMPDAT --");
    for (std::size_t first = 0; first < wells.wells.size(); first += WellsPerBlock)
        listBlock(console, units, wells, first);
}

void listConnections(const Console& console, const GridModel& grid, const WellRecord& wells) {
    lineToLog(console, "---------------  WELL to GRID Connection Information  --------------------");
    int number = 0;
    for (const Well& well : wells.wells) {
        log(console, " WellID :: {}", ++number);
        log(console, " Name   :: {}", well.WellName);
        log(console, " NumCxn :: {}", well.connections.size());
        lineToLog(console, ConnectionHeading);
        for (const WellConnection& connection : well.connections) listConnection(console, grid, connection);
    }
}

}  // namespace kvr
