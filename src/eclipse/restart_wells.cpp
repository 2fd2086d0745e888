#include "eclipse/restart_wells.hpp"

#include "base/messages.hpp"
#include "eclipse/restart_flux.hpp"
#include "pressure/wells/well_heads.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kvr {

namespace {

constexpr double LeastRate = 1e-8;  // volume a day; a well below it does not flow

bool isInside(const GridModel& grid, const std::array<int, 3>& place) {
    return place[0] >= 1 && place[0] <= grid.NX && place[1] >= 1 && place[1] <= grid.NY && place[2] >= 1 &&
           place[2] <= grid.NZ;
}

CellId cellAt(const GridModel& grid, const std::array<int, 3>& place) {
    return isInside(grid, place) ? cellIndex(grid, place[0], place[1], place[2]) : 0;
}

bool hasNames(std::span<const FileWell> file) {
    return std::any_of(file.begin(), file.end(), [](const FileWell& well) { return !well.name.empty(); });
}

/// The file's entry of a well of the run; null where it has none.
const FileWell* entryOf(std::span<const FileWell> file, const Well& well, std::size_t place) {
    if (!hasNames(file)) return place < file.size() ? &file[place] : nullptr;
    const auto found = std::find_if(file.begin(), file.end(),
                                    [&](const FileWell& entry) { return entry.name == well.WellName; });
    return found == file.end() ? nullptr : &*found;
}

bool agrees(const GridModel& grid, const FileWell& entry, const Well& well) {
    if (static_cast<std::size_t>(std::max(entry.connectionCount, 0)) != well.connections.size()) return false;
    if (entry.kind != well.WellKind) return false;
    if (!entry.fluid.empty() && entry.fluid != well.InjectFluid) return false;
    return well.connections.empty() || cellAt(grid, entry.head) == well.connections.front().ConnCell;
}

// --- wells that only the file knows ----------------------------------------------------------------------

void addConnections(const GridModel& grid, const FileWell& entry, Well& well) {
    for (const FileConnection& given : entry.connections) {
        const CellId cell = cellAt(grid, given.place);
        if (cell == 0 || grid.Active[cell] == 0) continue;
        WellConnection connection;
        connection.ConnCell = cell;
        connection.completion = static_cast<int>(well.connections.size()) + 1;
        connection.ConnDirection = given.direction;
        connection.WellRadius = 0.5 * given.diameter;
        connection.ConnFactor = connection.ConnWI = given.open ? std::max(given.factor, 0.0) : 0.0;
        well.connections.push_back(connection);
        well.TopK = well.TopK == 0 ? given.place[2] : std::min(well.TopK, given.place[2]);
        well.BottomK = std::max(well.BottomK, given.place[2]);
    }
}

Well wellFrom(const GridModel& grid, const FileWell& entry) {
    Well well;
    well.WellName = entry.name;
    well.WellKind = entry.kind;
    well.InjectFluid = entry.fluid;
    well.WellControl = well.deckControl = well.givenControl = "bhp";
    well.LocI = entry.head[0];
    well.LocJ = entry.head[1];
    well.BhpLimit = entry.bhp;
    addConnections(grid, entry, well);
    if (!well.connections.empty()) well.WellRadius = well.connections.front().WellRadius;
    return well;
}

// --- rates -----------------------------------------------------------------------------------------------

/// Reservoir volume a day of surface rates in a cell; free gas of the other sign than the gas is rounding.
double reservoirVolume(const CellState& state, CellId cell, const FileRates& rates) {
    double freeGas = rates.gas - state.Rs[cell] * rates.oil;
    if (freeGas * rates.gas < 0.0) freeGas = 0.0;
    return state.Bo[cell] * rates.oil + state.Bw[cell] * rates.water + state.Bg[cell] * freeGas;
}

/// The part of a rate that has the well's own direction.
double ownDirection(const Well& well, double rate) {
    return isInjector(well) ? std::max(rate, 0.0) : std::min(rate, 0.0);
}

void setFileRates(const CellState& state, const Well& well, const FileRates& rates,
                  WellConnection& connection) {
    connection.ConnQo = rates.oil;
    connection.ConnQw = rates.water;
    connection.ConnQg = rates.gas;
    connection.reservoirRate = ownDirection(well, reservoirVolume(state, connection.ConnCell, rates));
}

/// Surface rates that make up a reservoir rate: what the injector injects, or what the cell lets through.
FileRates surfaceRates(const CellState& state, const Well& well, CellId cell, double reservoir) {
    const double Bo = state.Bo[cell], Bw = state.Bw[cell], Bg = state.Bg[cell];
    if (isInjector(well)) {
        if (well.InjectFluid == "oil") return {reservoir / Bo, 0.0, 0.0};
        if (well.InjectFluid == "gas") return {0.0, 0.0, reservoir / Bg};
        return {0.0, reservoir / Bw, 0.0};
    }
    const double mobility = state.LambdaO[cell] + state.LambdaW[cell] + state.LambdaG[cell];
    if (!(mobility > 0.0)) return {};
    const double flow = reservoir / mobility;
    const double oil = flow * state.LambdaO[cell] / Bo;
    return {oil, flow * state.LambdaW[cell] / Bw, flow * state.LambdaG[cell] / Bg + state.Rs[cell] * oil};
}

void setFieldRates(const CellState& state, const VelocityField& velocity, const Well& well,
                   WellConnection& connection) {
    const double rate = ownDirection(well, netOutflow(velocity, connection.ConnCell));
    setFileRates(state, well, surfaceRates(state, well, connection.ConnCell, rate), connection);
    connection.reservoirRate = rate;
}

const FileConnection* connectionIn(const GridModel& grid, const FileWell& entry, CellId cell) {
    const auto found =
        std::find_if(entry.connections.begin(), entry.connections.end(),
                     [&](const FileConnection& given) { return cellAt(grid, given.place) == cell; });
    return found == entry.connections.end() ? nullptr : &*found;
}

/// The file tells what the connections of the well flow.
bool tellsConnections(const FileWell* entry) {
    return entry != nullptr && !entry->connections.empty() && entry->connections.front().hasRates;
}

void setConnectionRates(const GridModel& grid, const CellState& state, const VelocityField& velocity,
                        const FileWell* entry, Well& well) {
    for (WellConnection& connection : well.connections) {
        if (tellsConnections(entry)) {
            const FileConnection* given = connectionIn(grid, *entry, connection.ConnCell);
            setFileRates(state, well, given == nullptr ? FileRates{} : given->rates, connection);
        } else if (!well.shut && (entry == nullptr || entry->bhp <= 0.0)) {
            setFieldRates(state, velocity, well, connection);
        }
    }
}

bool flowsAnywhere(const Well& well) {
    return std::any_of(
        well.connections.begin(), well.connections.end(),
        [](const WellConnection& connection) { return std::abs(connection.reservoirRate) > LeastRate; });
}

/// The rates of the well over its connections by their factors, evenly where these have none.
void shareWellRates(const CellState& state, const FileRates& rates, Well& well) {
    double factors = 0.0;
    for (const WellConnection& connection : well.connections) factors += connection.ConnWI;
    const double even = 1.0 / static_cast<double>(well.connections.size());
    for (WellConnection& connection : well.connections) {
        const double share = factors > 0.0 ? connection.ConnWI / factors : even;
        setFileRates(state, well, {share * rates.oil, share * rates.water, share * rates.gas}, connection);
    }
}

void sumRates(const FileWell* entry, Well& well) {
    well.WellQo = well.WellQw = well.WellQg = well.reservoirRate = 0.0;
    for (const WellConnection& connection : well.connections) {
        well.WellQo += connection.ConnQo;
        well.WellQw += connection.ConnQw;
        well.WellQg += connection.ConnQg;
        well.reservoirRate += connection.reservoirRate;
    }
    if (entry != nullptr && entry->hasRates) {
        well.WellQo = entry->rates.oil;
        well.WellQw = entry->rates.water;
        well.WellQg = entry->rates.gas;
    }
    well.rateAtDeckControl = namedRate(well, well.deckControl);
}

/// Pressure and status ahead of the well model: a well of the file is open until its rates are known.
void openWell(const FileWell* entry, Well& well) {
    if (entry == nullptr) return;
    well.shut = false;
    if (entry->bhp > 0.0) well.Bhp = entry->bhp;
}

/// A well that the file does not know keeps the status that the deck gives it.
void closeWell(const FileWell* entry, Well& well) {
    if (entry != nullptr) {
        well.shut = !entry->open || !(std::abs(well.reservoirRate) > LeastRate);
        if (entry->bhp > 0.0) well.Bhp = entry->bhp;
    }
}

}  // namespace

void checkWells(const Console& console, const GridModel& grid, std::span<const FileWell> file,
                const WellRecord& wells) {
    for (const FileWell& entry : file)
        if (!isInside(grid, entry.head)) lineToBoth(console, "ERROR :: Invailed Well Input Data (Location)");
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const FileWell* entry = entryOf(file, wells.wells[w], w);
        if (entry == nullptr || !agrees(grid, *entry, wells.wells[w]))
            warn(console, "WARNING :: Well Data from ECL is not consistent with KVR {}",
                 wells.wells[w].WellName);
    }
}

void nameWells(std::span<const std::string> names, std::vector<FileWell>& file) {
    for (std::size_t n = 0; n < file.size(); ++n)
        if (file[n].name.empty())
            file[n].name = names.size() == file.size() ? names[n] : fmt::format("W{}", n + 1);
}

void makeWells(const Console& console, const GridModel& grid, std::span<const FileWell> file,
               WellRecord& wells) {
    for (Well& well : wells.wells) {
        well.shut = true;
        for (WellConnection& connection : well.connections) connection.ConnFactor = connection.ConnWI = 0.0;
    }
    for (const FileWell& entry : file) {
        if (!isInside(grid, entry.head)) {
            lineToBoth(console, "ERROR :: Invailed Well Input Data (Location)");
            continue;
        }
        if (entry.kind.empty()) continue;
        const auto known = std::find_if(wells.wells.begin(), wells.wells.end(),
                                        [&](const Well& well) { return well.WellName == entry.name; });
        if (known != wells.wells.end())
            *known = wellFrom(grid, entry);
        else
            wells.wells.push_back(wellFrom(grid, entry));
    }
}

void updateWells(const UnitSystem& units, const GridModel& grid, const ConnectionTable& connections,
                 const FluidTables& tables, const CellState& state, const VelocityField& velocity,
                 std::span<const FileWell> file, WellRecord& wells, PressureStage& stage) {
    std::vector<const FileWell*> entries;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        entries.push_back(entryOf(file, wells.wells[w], w));
        openWell(entries[w], wells.wells[w]);
    }
    WellHead(grid, connections, tables, state, wells);
    UpdateWellRates(units, grid, tables, state, wells, stage);
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        Well& well = wells.wells[w];
        setConnectionRates(grid, state, velocity, entries[w], well);
        if (entries[w] != nullptr && entries[w]->hasRates && !flowsAnywhere(well) &&
            !well.connections.empty())
            shareWellRates(state, entries[w]->rates, well);
        sumRates(entries[w], well);
        closeWell(entries[w], well);
    }
}

}  // namespace kvr
