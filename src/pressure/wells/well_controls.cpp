#include "pressure/wells/well_controls.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "model/dual_porosity.hpp"
#include "pressure/wells/rate_limits.hpp"
#include "pressure/wells/well_groups.hpp"
#include "pressure/wells/well_index.hpp"
#include "pressure/wells/well_listing.hpp"

#include <algorithm>
#include <span>
#include <string_view>
#include <tuple>
#include <unordered_map>

namespace kvr {

namespace {

constexpr std::size_t ControlLetters = 2;  // of a control word that are compared

struct ControlWord {
    std::string_view letters;  // upper case
    std::string_view control;
};
constexpr ControlWord ProducerControls[] = {{"OR", "orat"}, {"WR", "wrat"}, {"GR", "grat"}, {"LR", "lrat"},
                                            {"RE", "resv"}, {"BH", "bhp"},  {"TH", "bhp"}};
constexpr ControlWord InjectorControls[] = {{"RA", "rate"}, {"BH", "bhp"}, {"TH", "bhp"}};
constexpr ControlWord InjectedFluids[] = {{"O", "oil"}, {"W", "wat"}, {"G", "gas"}};

/// The lower-case word of the row whose letters begin `word`; blank when none does.
std::string matchWord(std::span<const ControlWord> rows, std::string_view word, std::size_t letters) {
    const std::string start = toUpper(trim(word).substr(0, letters));
    for (const ControlWord& row : rows)
        if (start == row.letters) return std::string(row.control);
    return {};
}

bool isShutStatus(std::string_view status) {
    const std::string letters = toUpper(trim(status).substr(0, ControlLetters));
    return letters == "SH" || letters == "ST";
}

[[noreturn]] void stopAtControl(const Console& console, const ScheduleWell& source,
                                std::string_view screenText, std::string_view logText) {
    lineToScreen(console, screenText);
    lineToLog(console, logText);
    both(console, "Well {}: control '{}', fluid '{}'; introduced in {}, line {}", source.name, source.control,
         source.injType, source.place.fileName, source.place.lineNumber);
    lineToBoth(console, source.isInjector ? "Known: RATE, BHP, THP of WATER, GAS, OIL"
                                          : "Known: ORAT, WRAT, GRAT, LRAT, RESV, BHP, THP");
    hardStop(console);
}

[[noreturn]] void stopAtLocation(const Console& console, const std::string& name, const GridModel& grid,
                                 const std::string& where, const DeckPlace& place) {
    lineToBoth(console, "ERROR :: Invailed Well Input Data (Location)");
    both(console, "Well {}: {} in a grid of {} by {} by {} cells", name, where, grid.NX, grid.NY, grid.NZ);
    lineToBoth(console, placeText(place, "COMPDAT or WELSPECS"));
    hardStop(console);
}

double producerTarget(const Well& well) {
    if (well.deckControl == "orat") return well.targetOil;
    if (well.deckControl == "wrat") return well.targetWater;
    if (well.deckControl == "grat") return well.targetGas;
    if (well.deckControl == "lrat") return well.targetLiquid;
    if (well.deckControl == "resv") return well.targetResv;
    return 0.0;
}

void assignProducer(const Console& console, const ScheduleWell& source, Well& well) {
    well.WellKind = "prd";
    well.deckControl = matchWord(ProducerControls, source.control, ControlLetters);
    if (well.deckControl.empty())
        stopAtControl(console, source, "Invalid producer control type", "INVALID PRODUCER CONTROL TYPE.");
    well.targetOil = -source.prodOil;
    well.targetWater = -source.prodWater;
    well.targetGas = -source.prodGas;
    well.targetLiquid = -source.prodLiquid;
    well.targetResv = -source.prodResv;
    well.TargetRate = producerTarget(well);
    well.holdsLimits = source.holdsLimits;
    well.BhpLimit = source.prodBhp > 0.0 ? source.prodBhp : DefaultProducerBhp;
}

/// A well at a given pressure that has limits of rates: any of them serves as the rate control that waits,
/// the first step takes the most restrictive.
void takeLimitsBesidePressure(Well& well) {
    struct Row {
        std::string_view control;
        double Well::*target;
    };
    static constexpr Row Rows[] = {{"orat", &Well::targetOil},
                                   {"wlim", &Well::targetWater},
                                   {"grat", &Well::targetGas},
                                   {"lrat", &Well::targetLiquid},
                                   {"resv", &Well::targetResv}};
    if (!well.holdsLimits || well.givenControl != "bhp") return;
    for (const Row& row : Rows) {
        if (well.*row.target == 0.0) continue;
        well.deckControl = isInjector(well) ? "rate" : row.control;
        well.TargetRate = well.*row.target;
        return;
    }
}

void assignInjector(const Console& console, const ScheduleWell& source, Well& well) {
    well.WellKind = "inj";
    well.deckControl =
        source.injByReservoirRate ? "resv" : matchWord(InjectorControls, source.control, ControlLetters);
    well.InjectFluid = matchWord(InjectedFluids, source.injType, 1);
    if (well.deckControl.empty() || well.InjectFluid.empty())
        stopAtControl(console, source, "Invalid injector control type", "INVALID INJECTOR CONTROL TYPE.");
    if (well.InjectFluid == "oil") well.targetOil = source.injRate;
    if (well.InjectFluid == "wat") well.targetWater = source.injRate;
    if (well.InjectFluid == "gas") well.targetGas = source.injRate;
    well.targetResv = source.injResv;
    well.TargetRate = well.deckControl == "rate"   ? source.injRate
                      : well.deckControl == "resv" ? source.injResv
                                                   : 0.0;
    well.holdsLimits = source.holdsLimits && source.injRate > 0.0;
    well.BhpLimit = source.injBhp > 0.0 ? source.injBhp : DefaultInjectorBhp;
}

/// A well that no control keyword has named, or that is shut without a control: on the list, no flow.
void assignIdle(const ScheduleWell& source, Well& well) {
    well.WellKind = source.isInjector ? "inj" : "prd";
    well.deckControl = source.isInjector ? "rate" : "orat";
    if (source.isInjector) well.InjectFluid = matchWord(InjectedFluids, source.injType, 1);
    if (source.isInjector && well.InjectFluid.empty()) well.InjectFluid = "wat";
    well.BhpLimit = source.isInjector ? source.injBhp : source.prodBhp;
    well.shut = true;
}

/// Rates are means over time: the well is on for the share `efficiency` of it.
void scaleTargets(Well& well) {
    for (double* target : {&well.TargetRate, &well.targetOil, &well.targetWater, &well.targetGas,
                           &well.targetLiquid, &well.targetResv})
        *target *= well.efficiency;
}

Well assignControl(const Console& console, const ScheduleWell& source) {
    Well well;
    well.WellName = source.name;
    well.LocI = source.headI;
    well.LocJ = source.headJ;
    well.datumDepth = source.refDepth;
    well.tracerConcentration = source.tracerConcentration;
    well.injectedTracers = source.injectedTracers;
    well.injectionStream = source.injectionStream;
    well.efficiency = source.efficiency;
    well.limits = source.limits;
    well.openings = source.openings;
    well.connectionOpenings = source.connectionOpenings;
    const bool shutStatus = isShutStatus(source.status);
    if (!source.hasControl || (shutStatus && trim(source.control).empty()))
        assignIdle(source, well);
    else if (source.isInjector)
        assignInjector(console, source, well);
    else
        assignProducer(console, source, well);
    well.WellControl = well.givenControl = well.deckControl;
    takeLimitsBesidePressure(well);
    scaleTargets(well);
    well.shut = well.shut || shutStatus || (isRateControlled(well) && well.TargetRate == 0.0);
    if (!isRateControlled(well)) well.Bhp = well.BhpLimit;
    return well;
}

/// The table of its number for the kind of the well; its pressure limit is formed from it step by step. What
/// has been observed is no limit.
void takeLift(const Console& console, const Schedule& schedule, const ScheduleWell& source, Well& well) {
    const double head = isInjector(well) ? source.injThp : source.prodThp;
    well.lift.head = source.holdsLimits ? head : 0.0;
    well.lift.artificial = source.artificialLift;
    well.lift.ownLimit = well.BhpLimit;
    for (const std::shared_ptr<const LiftTable>& table : schedule.liftTables)
        if (table->number == source.liftTable && table->ofInjector == isInjector(well))
            well.lift.table = table;
    const bool isControl = toUpper(trim(source.control)).starts_with("TH");
    const bool hasBoth = well.lift.table != nullptr && well.lift.head > 0.0;
    if (hasBoth || well.shut || !(isControl || (well.lift.head > 0.0 && source.liftTable > 0))) return;
    warn(console, "WARNING :: WELL {}: NO TABLE {} OF VFPPROD OR VFPINJ, OR NO PRESSURE AT THE TUBING HEAD",
         well.WellName, source.liftTable);
}

// --- completions -----------------------------------------------------------------------------------

/// Connections while the rows of a step are gone through: a later row for a cell replaces the earlier.
struct OpenCompletion {
    WellConnection connection;
    bool open = true;
};
struct WellCompletions {
    std::vector<OpenCompletion> list;
    std::unordered_map<CellId, std::size_t> placeOfCell;
};

bool insideGrid(const GridModel& grid, int i, int j) {
    return i >= 1 && i <= grid.NX && j >= 1 && j <= grid.NY;
}

void requireHead(const Console& console, const GridModel& grid, const std::string& name, int i, int j,
                 const DeckPlace& place) {
    if (insideGrid(grid, i, j)) return;
    stopAtLocation(console, name, grid, fmt::format("head at I {}, J {}", i, j), place);
}

WellConnection connectionOfRow(const ScheduleCompletion& row, CellId cell) {
    WellConnection connection;
    connection.ConnCell = cell;
    connection.ConnDirection = row.direction;
    connection.WellRadius = 0.5 * row.diameter;
    connection.Skin = static_cast<double>(row.skin);
    connection.ConnFactor = row.transFactor;
    connection.multiplier = row.multiplier;
    connection.givenKh = static_cast<double>(row.kh);
    return connection;
}

/// A completion in a matrix cell is one in its fractures: the matrix gives its fluid to nothing else.
CellId flowingCell(const GridModel& grid, CellId cell) {
    return isMatrixCell(grid, cell) ? partnerOf(grid, cell) : cell;
}

void addCell(const ScheduleCompletion& row, CellId cell, WellCompletions& completions) {
    const OpenCompletion completion{connectionOfRow(row, cell), !isShutStatus(row.status)};
    const auto [place, isNew] = completions.placeOfCell.try_emplace(cell, completions.list.size());
    if (isNew)
        completions.list.push_back(completion);
    else
        completions.list[place->second] = completion;
}

/// Checks one row and adds its cells to the well's list, in the order in which the row runs.
void addRow(const Console& console, const GridModel& grid, const ScheduleCompletion& row, Well& well,
            WellCompletions& completions) {
    const int i = row.i > 0 ? row.i : well.LocI;
    const int j = row.j > 0 ? row.j : well.LocJ;
    const int top = std::min(row.k1, row.k2);
    const int bottom = std::max(row.k1, row.k2);
    const bool valid = row.i >= 0 && row.j >= 0 && insideGrid(grid, i, j) && top >= 1 && bottom <= grid.NZ;
    if (!valid || !(row.diameter > 0.0))
        stopAtLocation(
            console, well.WellName, grid,
            fmt::format("I {}, J {}, K {} to {}, diameter {} ft", i, j, row.k1, row.k2, number(row.diameter)),
            row.place);
    if (completions.list.empty()) {
        well.WellRadius = 0.5 * row.diameter;
        well.Skin = static_cast<double>(row.skin);
        well.ConnFactor = row.transFactor;
        well.TopK = top;
        well.BottomK = bottom;
    }
    well.TopK = std::min(well.TopK, top);
    well.BottomK = std::max(well.BottomK, bottom);
    const int step = row.k1 <= row.k2 ? 1 : -1;
    for (int k = row.k1;; k += step) {
        addCell(row, flowingCell(grid, cellIndex(grid, i, j, k)), completions);
        if (k == row.k2) break;
    }
}

void keepOpenCompletions(WellCompletions& completions, Well& well) {
    for (OpenCompletion& completion : completions.list) {
        if (!completion.open) continue;
        well.connections.push_back(completion.connection);
        well.connections.back().completion = static_cast<int>(well.connections.size());
    }
    well.shut = well.shut || well.connections.empty();
}

void assignCompletions(const Console& console, const GridModel& grid, const ScheduleStep& step,
                       WellRecord& wells) {
    std::unordered_map<std::string_view, std::size_t> wellOfName;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) wellOfName.emplace(wells.wells[w].WellName, w);
    std::vector<WellCompletions> completions(wells.wells.size());
    for (const ScheduleCompletion& row : step.completions) {
        const auto found = wellOfName.find(row.wellName);
        if (found == wellOfName.end()) continue;
        addRow(console, grid, row, wells.wells[found->second], completions[found->second]);
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        requireHead(console, grid, well.WellName, well.LocI, well.LocJ, step.wells[w].place);
        keepOpenCompletions(completions[w], wells.wells[w]);
    }
}

/// Whether a row of a well says something that the step before has not said yet.
bool saysNew(const ScheduleWell& well, const ScheduleStep& before, std::size_t place) {
    if (place >= before.wells.size()) return true;
    const ScheduleWell& old = before.wells[place];
    return std::tie(well.name, well.control, well.injType, well.status, well.headI, well.headJ) !=
           std::tie(old.name, old.control, old.injType, old.status, old.headI, old.headJ);
}

bool saysNew(const ScheduleCompletion& row, const ScheduleStep& before, std::size_t place) {
    return place >= before.completions.size() ||
           row.place.lineNumber != before.completions[place].place.lineNumber ||
           row.wellName != before.completions[place].wellName;
}

void checkStep(const Console& console, const GridModel& grid, const ScheduleStep& step,
               const ScheduleStep& before) {
    for (std::size_t w = 0; w < step.wells.size(); ++w) {
        const ScheduleWell& source = step.wells[w];
        if (!saysNew(source, before, w)) continue;
        assignControl(console, source);
        requireHead(console, grid, source.name, source.headI, source.headJ, source.place);
    }
    for (std::size_t n = 0; n < step.completions.size(); ++n) {
        const ScheduleCompletion& row = step.completions[n];
        const auto source =
            std::find_if(step.wells.begin(), step.wells.end(),
                         [&row](const ScheduleWell& well) { return well.name == row.wellName; });
        if (source == step.wells.end() || !saysNew(row, before, n)) continue;
        Well well;
        well.WellName = source->name;
        well.LocI = source->headI;
        well.LocJ = source->headJ;
        WellCompletions completions;
        addRow(console, grid, row, well, completions);
    }
}

// --- the rest of the table ---------------------------------------------------------------------------

/// The limit of rates that has held a well goes on to do so where the deck still has it.
void carryRateLimit(const Well& before, Well& well) {
    if (before.shut || before.deckControl == before.givenControl) return;
    if (const auto limit = rateLimit(well, before.deckControl); limit.has_value())
        setRateControl(*limit, well);
}

/// Rate wells that were open before start from the bottom-hole pressure that they had.
void carryBottomHolePressures(const WellRecord& before, WellRecord& wells) {
    std::unordered_map<std::string_view, const Well*> old;
    for (const Well& well : before.wells) old.emplace(well.WellName, &well);
    for (Well& well : wells.wells) {
        const auto found = old.find(well.WellName);
        if (found == old.end()) continue;
        carryRateLimit(*found->second, well);
        if (!isRateControlled(well)) continue;
        if (!found->second->shut && found->second->WellKind == well.WellKind) well.Bhp = found->second->Bhp;
    }
}

/// What limits have closed stays so until the deck sets the status of the well again, or connections that of
/// some of them.
void carryClosures(const WellRecord& before, WellRecord& wells) {
    for (Well& well : wells.wells) {
        const auto old = std::find_if(before.wells.begin(), before.wells.end(),
                                      [&well](const Well& other) { return other.WellName == well.WellName; });
        if (old == before.wells.end() || old->openings != well.openings) continue;
        well.closedByLimit = old->closedByLimit;
        if (old->connectionOpenings == well.connectionOpenings) well.closedCells = old->closedCells;
        const auto isClosed = [&well](const WellConnection& connection) {
            return std::find(well.closedCells.begin(), well.closedCells.end(), connection.ConnCell) !=
                   well.closedCells.end();
        };
        std::erase_if(well.connections, isClosed);
        for (std::size_t n = 0; n < well.connections.size(); ++n)
            well.connections[n].completion = static_cast<int>(n) + 1;
        well.shut = well.shut || well.closedByLimit || well.connections.empty();
    }
}

void warnOfConnectionsWithoutFlow(const Console& console, const WellRecord& wells) {
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections)
            if (connection.ConnWI <= 0.0)
                warn(console, "WARNING :: Well {} has no flow through cell {}", well.WellName,
                     connection.ConnCell);
}

bool phaseIsPresent(const RunOptions& options, std::string_view fluid) {
    if (fluid == "gas") return options.hasGas;
    return fluid == "oil" ? options.hasOil : options.hasWater;
}

void warnOfAbsentPhases(const Console& console, const RunOptions& options, const WellRecord& wells) {
    for (const Well& well : wells.wells)
        if (isInjector(well) && !well.shut && !phaseIsPresent(options, well.InjectFluid))
            warn(console, "WARNING :: Well {} injects {}, which is not a phase of this run", well.WellName,
                 well.InjectFluid);
}

int countRateWells(const WellRecord& wells) {
    return static_cast<int>(std::count_if(wells.wells.begin(), wells.wells.end(), isRateControlled));
}

}  // namespace

void checkLaterWells(const Console& console, const GridModel& grid, const Schedule& schedule) {
    for (std::size_t n = 1; n < schedule.steps.size(); ++n)
        checkStep(console, grid, schedule.steps[n], schedule.steps[n - 1]);
}

void AssignWells(int stepIndex, const Console& console, const RunOptions& options, const UnitSystem& units,
                 const Schedule& schedule, const GridModel& grid, WellRecord& wells) {
    WellRecord assigned;
    if (stepIndex >= 1 && static_cast<std::size_t>(stepIndex) <= schedule.steps.size()) {
        const ScheduleStep& step = schedule.steps[static_cast<std::size_t>(stepIndex) - 1];
        for (const ScheduleWell& source : step.wells)
            takeLift(console, schedule, source, assigned.wells.emplace_back(assignControl(console, source)));
        assignCompletions(console, grid, step, assigned);
        assignGroups(console, step, assigned);
    }
    carryClosures(wells, assigned);
    if (stepIndex > 1) carryBottomHolePressures(wells, assigned);
    assigned.RateWellCount = countRateWells(assigned);
    computeWellIndices(grid, assigned);
    wells = std::move(assigned);
    listWellControls(console, units, wells);
    listConnections(console, grid, wells);
    warnOfConnectionsWithoutFlow(console, wells);
    warnOfAbsentPhases(console, options, wells);
}

}  // namespace kvr
