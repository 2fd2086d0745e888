#include "eclipse/restart_velocity.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/init_file.hpp"
#include "eclipse/keyword_loop.hpp"
#include "eclipse/line_files.hpp"
#include "eclipse/restart_cells.hpp"
#include "eclipse/restart_flux.hpp"
#include "eclipse/restart_units.hpp"
#include "eclipse/restart_wells.hpp"
#include "eclipse/summary_reader.hpp"
#include "model/neighbours.hpp"
#include "pressure/properties.hpp"
#include "pressure/velocity.hpp"
#include "streamline/tracing/cell_tags.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

/// What the blocks of one file leave.
struct RestartScan {
    FileUnits units;
    RestartCells cells;
    RestartFluxes fluxes;
    RestartWellTables wells;
    double time = 0.0;  // days
    bool hasTime = false;
    bool hasFractions = false;  // of a compositional run
};

std::int32_t slotOf(const std::vector<std::int32_t>& head, std::size_t slot) {
    return slot <= head.size() ? head[slot - 1] : 0;
}

/// The file's word for its units; without one it is taken as those of the deck.
FileUnits unitsOf(const Console& console, const UnitSystem& run, std::int32_t code) {
    if (const std::optional<FileUnits> known = fileUnits(code, run)) return *known;
    constexpr std::int32_t Metric = 1;
    warn(console, " WARNING :: Unit system {} of the restart is not known, that of the deck is taken", code);
    return *fileUnits(run.deck == DeckUnits::Metric ? Metric : inte_head::FieldUnits, run);
}

void checkHead(const Console& console, const GridModel& grid, const std::vector<std::int32_t>& head) {
    if (slotOf(head, inte_head::ActiveCells) != activeCount(grid))
        lineToBoth(console, " ERROR :: ACTNUM not match from INIT and KVR");
    double cells = 1.0;  // of what a damaged header may say, no integer holds the product
    for (const std::size_t slot : {inte_head::NX, inte_head::NY, inte_head::NZ})
        cells *= static_cast<double>(slotOf(head, slot));
    if (cells != static_cast<double>(grid.NCELLS))
        lineToBoth(console, "Dimension does not match - Restart and Grid file");
}

void takeHead(const Simulation& run, const std::vector<std::int32_t>& head, RestartScan& scan) {
    checkHead(run.console, run.grid, head);
    scan.units = unitsOf(run.console, run.units, slotOf(head, inte_head::Units));
    takeWellLengths(head, scan.wells);
    if (run.wells.wells.empty() && scan.wells.wells > 0)
        warn(run.console, "WARNING :: Welldata not read from Input - Overwrite from SUMMRY file");
}

void takeTime(const BlockData& data, RestartScan& scan) {
    if (data.doubles.empty() || !std::isfinite(data.doubles.front())) return;
    scan.time = data.doubles.front();
    scan.hasTime = true;
}

bool bringsFactors(const RunOptions& options, const RestartCells& cells) {
    const auto given = [&cells](CellArray<double> CellState::*array) {
        return std::find(cells.given.begin(), cells.given.end(), array) != cells.given.end();
    };
    return (!options.hasOil || given(&CellState::Bo)) && (!options.hasWater || given(&CellState::Bw)) &&
           (!options.hasGas || given(&CellState::Bg));
}

/// A field from the pressures of a compositional run needs a flash, which this version does not have.
void requireBlackOil(const Simulation& run, const RestartScan& scan) {
    if (anyFlux(scan.fluxes)) return;
    if (!scan.hasFractions && run.options.componentCount == 0) return;
    lineToBoth(run.console, scan.hasFractions
                                ? "ERROR :: The restart is compositional (ZMF1) and has no fluxes, "
                                  "this version makes no field of its pressures"
                                : "ERROR :: Cannot construc velocity, Total mole fraction is missing...");
    hardStop(run.console);
}

/// Takes a block; false for a keyword that has no use.
bool takeBlock(Simulation& run, const BlockHeader& header, const BlockData& data, RestartScan& scan) {
    const std::string_view keyword = view(header.keyword);
    if (keyword == "INTEHEAD") {
        takeHead(run, data.integers, scan);
        return true;
    }
    if (keyword == "DOUBHEAD") {
        takeTime(data, scan);
        return true;
    }
    scan.hasFractions = scan.hasFractions || keyword == "ZMF1    ";
    if (takeWellBlock(header, data, scan.wells)) return true;
    if (takeFluxBlock(run.console, run.grid, header, data, scan.fluxes)) return true;
    return takeCellBlock(run.console, run.grid, scan.units, header, data, scan.cells, run.state);
}

void readFile(Simulation& run, RecordReader& reader, RestartScan& scan) {
    const ReadResult result = readBlocks(reader, [&](const BlockHeader& header, const BlockData& data) {
        const bool used = takeBlock(run, header, data, scan);
        log(run.console, "{}{}",
            used ? " RESTART Key employd -> " : " RESTART Key ignored  : ", view(header.keyword));
        return ReadResult::Ok;
    });
    if (result == ReadResult::Error) stopOnRecordFault(run.console, reader);
    close(reader);
}

/// Length of the step that ends at the restart.
void setStepLength(const Console& console, const RunOptions& options, const RestartScan& scan,
                   RunClock& clock) {
    if (!scan.hasTime || options.useEclipsePressure) return;
    const double gap = scan.time - clock.time;
    if (gap > TimeTolerance)
        clock.dt = gap;
    else if (gap < -TimeTolerance)
        warn(console, " WARNING :: The restart stands at {} days, the run at {} already", number(scan.time),
             number(clock.time));
}

/// Names of the wells in the order of the outside run's summary; none where there is no index.
std::vector<std::string> summaryWells(const Simulation& run, std::string_view header) {
    std::vector<std::string> names;
    RecordReader reader;
    if (open_read(outsideFile(run.options, header, ".SMSPEC"), ByteOrder::Big, reader) != 0) return names;
    SummarySpec spec;
    if (readSummarySpec(run.console, reader, spec) != ReadResult::Error) {
        for (std::size_t n = 0; n < std::min(spec.keywords.size(), spec.wells.size()); ++n) {
            const std::string name(trim(view(spec.wells[n])));
            const char kind = view(spec.keywords[n]).front();  // vectors of wells and of their connections
            const bool ofWell = (kind == 'W' || kind == 'C') && !name.starts_with(':');
            if (ofWell && !name.empty() && std::find(names.begin(), names.end(), name) == names.end())
                names.push_back(name);
        }
    }
    close(reader);
    return names;
}

/// The field made from the pressures of the cells, or from the fluxes of the file.
void makeField(Simulation& run, RestartScan& scan) {
    completeSaturations(run.grid, scan.cells, run.state);
    const bool fromPressures = !anyFlux(scan.fluxes);
    if (fromPressures) {
        lineToBoth(run.console, "FLUX NOT FOUND...");
        lineToBoth(run.console, "Construct Velocity Field from Pressure");
    } else {
        lineToBoth(run.console, "FLUX DATA FOUND :: Trace Streamline using FLO_X+");
    }
    // Also where the file has no pressures: factors of absent phases are still those of the restart before.
    completeProperties(run.grid, run.fluids, scan.cells.given, run.state);
    if (fromPressures) {
        BuildVelocityFromPressure(run.options, run.units, run.grid, run.connections, run.state, {},
                                  run.velocity);
        return;
    }
    assembleFluxes(run.grid, run.connections, scan.units, run.state, scan.cells.vaporisedOil, scan.fluxes,
                   run.velocity);
    velocitiesOfFluxes(run.options, run.units, run.grid, run.connections, run.velocity);
}

/// The index of line files anew for wells that were not known when it was written.
void tellLineFiles(Simulation& run) {
    std::vector<std::string> names;
    for (const Well& well : run.wells.wells) names.push_back(well.WellName);
    if (names == run.restart.namedWells) return;
    run.restart.namedWells = names;
    run.eclipse.wellCount = names.size();
    writeLineSpec(run.console, run.options, run.grid, names, run.eclipse.paths);
}

/// A well that flows by the file marks its cells, whatever target the deck has for it.
void tagFlowingWells(const WellRecord& wells, CellTags& tags) {
    for (const Well& well : wells.wells) {
        if (well.shut || well.reservoirRate == 0.0) continue;
        for (const WellConnection& connection : well.connections)
            tags.CellTag[connection.ConnCell] = tagKindOf(well.WellKind);
    }
}

/// The wells behind the field; a deck without wells has those of the file.
void takeWells(Simulation& run, std::string_view header, const RestartScan& scan) {
    std::vector<FileWell> file = wellsOf(scan.wells, scan.units);
    const bool hasTable = !scan.wells.IWEL.empty();
    if (run.wells.wells.empty()) run.restart.wellsFromFile = true;
    if (run.restart.wellsFromFile) {
        const bool named =
            std::all_of(file.begin(), file.end(), [](const FileWell& w) { return !w.name.empty(); });
        if (!named) nameWells(summaryWells(run, header), file);
        makeWells(run.console, run.grid, file, run.wells);
        tellLineFiles(run);
    } else if (hasTable) {
        checkWells(run.console, run.grid, file, run.wells);
    }
    updateWells(run.units, run.grid, run.connections, run.fluids, run.state, run.velocity, file, run.wells,
                run.pressure);
    rebuildCellTags(run.grid.NCELLS, run.wells, run.tags);
    tagFlowingWells(run.wells, run.tags);
}

}  // namespace

RestartReading input_RST2Velocity(Simulation& simulation, std::string_view header, int step) {
    const Console& console = simulation.console;
    RestartReading reading;
    reading.time = simulation.clock.time;
    logReaderStart(console, " Function Called : input_RST2Velocity");
    const std::string path = outsideFile(simulation.options, header, ".X", step);
    RecordReader reader;
    if (open_read(path, ByteOrder::Big, reader) != 0) {
        both(console, " RESTART File Not Found :: {}", path);
        return reading;
    }
    log(console, " EXTRACT RESTART -> {}", path);
    RestartScan scan;
    scan.units = *fileUnits(inte_head::FieldUnits, simulation.units);
    scan.cells.keepSaturations =
        simulation.options.useEclipsePressure && step > 0;  // those of the start are taken
    closeInactiveCells(simulation.grid, simulation.connections);
    readFile(simulation, reader, scan);
    requireBlackOil(simulation, scan);
    setStepLength(console, simulation.options, scan, simulation.clock);
    reading.found = true;
    reading.hasFluxes = anyFlux(scan.fluxes);
    reading.hasFactors = bringsFactors(simulation.options, scan.cells);
    if (scan.hasTime) reading.time = scan.time;
    makeField(simulation, scan);
    takeWells(simulation, header, scan);
    neutralAbsentPhases(simulation.grid, simulation.state);
    if (reading.hasFluxes) logReaderEnd(console, " Function Ends Normally : input_RST2Velocity");
    return reading;
}

}  // namespace kvr
