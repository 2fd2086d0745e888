#include "model/conditioning.hpp"

#include "base/constants.hpp"
#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "model/box_transmissibility.hpp"
#include "model/corner_transmissibility.hpp"
#include "model/dual_porosity.hpp"
#include "model/fault_faces.hpp"
#include "model/further_connections.hpp"
#include "model/given_by_cell.hpp"
#include "model/multipliers.hpp"
#include "model/neighbours.hpp"
#include "model/nine_point.hpp"
#include "model/pinch_outs.hpp"
#include "model/smoothing.hpp"
#include "model/upscaling.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <span>

namespace kvr {

namespace {

constexpr double TinyRock = 1e-20;            // porosity or net-to-gross at or below this is no rock
constexpr double LeastJPermeability = 1e-10;  // md; at or below this the J-function has no scale
constexpr float JUnitFactor = 4.61678F;       // sqrt(1/md)*dyn/cm to psi, in single precision as required

void sizeTables(CellId cells, int width, ConnectionTable& connections) {
    connections.NDIR = width;
    connections.Neighbour.assign(cells, width, 0);
    for (DirectionArray<double>* column :
         {&connections.Trans, &connections.HalfTrans, &connections.DepthDiff, &connections.HarmonicPerm,
          &connections.ConnArea, &connections.ConnLength})
        column->assign(cells, width, 0.0);
}

void allocateConnections(const Console& console, CellId cells, int width, ConnectionTable& connections) {
    try {
        sizeTables(cells, width, connections);
    } catch (const std::bad_alloc&) {
        lineToBoth(console, "Error :: Memory error, Transmissibility");
        hardStop(console);
    }
}

double jScale(double porosity, double permeability, double surfaceTension) {
    if (permeability <= LeastJPermeability) return 0.0;
    return std::sqrt(porosity / (permeability + MachineEpsilon)) * surfaceTension *
           static_cast<double>(JUnitFactor);
}

/// Cells without rock keep no permeability and take no part in flow.
void shutCellsWithoutRock(GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (grid.PORO[cell] > TinyRock && grid.NTG[cell] > TinyRock) continue;
        grid.PORO[cell] = grid.NTG[cell] = TinyRock;
        grid.PERMX[cell] = grid.PERMY[cell] = grid.PERMZ[cell] = 0.0;
        grid.Active[cell] = 0;
    }
}

/// After `shutCellsWithoutRock`, whose cells get 0 through their permeability.
void scaleJFunction(const RunOptions& options, GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        grid.JFactor[cell] =
            options.useJFunction ? jScale(grid.PORO[cell], grid.PERMX[cell], options.surfaceTension) : 1.0;
}

void reportRow(const Console& console, const ArithmeticRow& row, std::string_view report) {
    both(console, " {}{}", padded(row.name, 8), report);
}

/// Rows in deck order up to an empty name.
std::span<const ArithmeticRow> usedRows(const std::vector<ArithmeticRow>& rows) {
    const auto end = std::find_if(rows.begin(), rows.end(),
                                  [](const ArithmeticRow& row) { return trim(row.name).empty(); });
    return {rows.begin(), end};
}

/// MULTPV acts on PORO, as PORV of EDIT does; the checks of porosity lie behind.
void multiplyPoreVolumes(const Console& console, GridModel& grid) {
    if (grid.MULTPV.empty()) return;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) grid.PORO[cell] *= grid.MULTPV[cell];
    lineToBoth(console, " Pore volumes multiplied by MULTPV");
}

/// MULTPV and rock rows of EDIT: once per run, since the arrays keep the result.
void editRock(const Console& console, GridModel& grid) {
    if (grid.editRockApplied) return;
    grid.editRockApplied = true;
    multiplyPoreVolumes(console, grid);
    for (const ArithmeticRow& row : usedRows(grid.editRows)) {
        const MultiplierKeyword* keyword = findMultiplier(row.name);
        if (keyword == nullptr) {
            reportRow(console, row, "-> not surpported");
        } else if (keyword->target == MultiplierTarget::RockArray) {
            multiplyRock(grid, *keyword, row);
            reportRow(console, row, keyword->report);
        }
    }
}

/// Transmissibility rows, every time Trans has been rebuilt. Rock rows have acted before.
void multiplyTransRows(const Console& console, const GridModel& grid, const std::vector<ArithmeticRow>& rows,
                       ConnectionTable& connections) {
    for (const ArithmeticRow& row : usedRows(rows)) {
        const MultiplierKeyword* keyword = findMultiplier(row.name);
        if (keyword == nullptr || keyword->target != MultiplierTarget::Trans || row.region > 0) continue;
        multiplyTrans(grid, *keyword, row, connections);
        reportRow(console, row, keyword->report);
    }
}

/// Given pore volumes, the cells that are too small by MINPV, and what lies above and below them: behind the
/// formulas, which form the bulk volumes. Pore volumes once per run, since PORO keeps the result.
void settlePoreVolumes(const Console& console, bool isFirst, bool cornerFormula, GridModel& grid,
                       ConnectionTable& connections) {
    if (isFirst) takeGivenPoreVolumes(grid);
    const double least = grid.leastPoreVolume;
    if (!(least > 0.0) && grid.given.poreVolume.empty() && !grid.pinch.isSet) return;
    const CellArray<std::uint8_t> before = grid.Active;
    if (const CellId closed = closeSmallCells(grid, connections); closed > 0 && least > 0.0)
        both(console, "NOTE at GRID :: INACTIVE GRID (PORE VOLUME BELOW MINPV) :: {}", closed);
    if (!grid.pinch.isSet || !grid.PinchedOut.empty()) return;
    both(console, " Pairs of cells joined across pinch-outs: {}",
         joinAcrossPinchOuts(cornerFormula, before, grid, connections));
}

/// Depths along the directions beyond the faces, which the formulas leave out.
void storeDiagonalDepths(const GridModel& grid, ConnectionTable& connections) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        for (int d = FaceCount + 1; d <= connections.NDIR; ++d)
            if (const CellId n = connections.Neighbour(cell, d); n > 0)
                connections.DepthDiff(cell, d) = grid.CellCentre(n, 3) - grid.CellCentre(cell, 3);
}

void rebalance(const Console& console, const GridModel& grid, ConnectionTable& connections) {
    const int notANumber = rebalanceNinePoint(grid, connections);
    for (int line = 0; line < notANumber; ++line) lineToBoth(console, " ");
}

/// Smallest and largest of the values shown so far.
struct Range {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();

    void show(double value) {
        least = std::min(least, value);
        most = std::max(most, value);
    }
};

struct ConnectionSummary {
    long long count = 0;
    Range sizeX, sizeY, sizeZ;
    Range area, length, permeability, trans;
};

ConnectionSummary summarise(const GridModel& grid, const ConnectionTable& connections) {
    ConnectionSummary summary;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        summary.sizeX.show(grid.DX[cell]);
        summary.sizeY.show(grid.DY[cell]);
        summary.sizeZ.show(grid.DZ[cell]);
        for (int d = 1; d <= connections.NDIR; ++d) {
            if (connections.Neighbour(cell, d) <= 0) continue;
            ++summary.count;
            if (d > FaceCount) continue;  // diagonals and transfers have no area or length
            summary.area.show(connections.ConnArea(cell, d));
            summary.length.show(connections.ConnLength(cell, d));
            summary.permeability.show(connections.HarmonicPerm(cell, d) / DarcyConstant);
            summary.trans.show(connections.Trans(cell, d));
        }
    }
    return summary;
}

void printSummary(const Console& console, const ConnectionSummary& summary) {
    constexpr std::string_view Rule = "---------------------------------------------";
    const auto line = [&](std::string_view label, double value, std::string_view unit) {
        both(console, "{} {}{}", label, number(std::isfinite(value) ? value : 0.0), unit);
    };
    lineToBoth(console, Rule);
    lineToBoth(console, "--- PRECONDITIONED GEOLOGICAL INFORMATION ---");
    lineToBoth(console, Rule);
    both(console, "Total Connection of Cells  : {}", summary.count);
    line("Max Extention of Geo_X dir :", summary.sizeX.most, " Feet");
    line("Min Extention of Geo_X dir :", summary.sizeX.least, " Feet");
    line("Max Extention of Geo_Y dir :", summary.sizeY.most, " Feet");
    line("Min Extention of Geo_Y dir :", summary.sizeY.least, " Feet");
    line("Max Extention of Geo_Z dir :", summary.sizeZ.most, " Feet");
    line("Min Extention of Geo_Z dir :", summary.sizeZ.least, " Feet");
    line("Minimum Area of Connection :", summary.area.least, " Ft^2");
    line("Maximum Area of Connection :", summary.area.most, " Ft^2");
    line("Minimum Length of Connecti :", summary.length.least, " Feet");
    line("Maximum Length of Connecti :", summary.length.most, " Feet");
    line("Minimum Harmonic Permeabil :", summary.permeability.least, " MD");
    line("Maximum Harmonic Permeabil :", summary.permeability.most, " MD");
    line("Minimum Transmissibility   :", summary.trans.least, " BBL-");
    line("Maximum Transmissibility   :", summary.trans.most, " BBL-");
    lineToBoth(console, Rule);
}

/// What joins cells that are not neighbours is for runs whose transport knows of it.
void leaveOutFurther(const Console& console, const RunOptions& options, GridModel& grid) {
    if (!options.ninePoint && !grid.dual.isSet && options.componentCount == 0) return;
    if (!grid.connectionRows.empty())
        warn(console, "WARNING :: NNC, EDITNNC, EDITNNCR HAVE NO EFFECT WITH NINEPOIN, DUALPORO OR COMPS");
    if (grid.joinsAcrossFaults && options.useNewtran && !facesAcrossFaults(grid).empty())
        warn(console,
             "WARNING :: CELLS ARE NOT JOINED ACROSS FAULTS WITH NINEPOIN, DUALPORO OR COMPS, ONLY THOSE OF "
             "A LAYER");
    grid.connectionRows.clear();
    grid.joinsAcrossFaults = false;
}

}  // namespace

void prepareRock(const RunOptions& options, GridModel& grid) {
    shutCellsWithoutRock(grid);
    scaleJFunction(options, grid);
}

void releaseConditioning(bool keepAreas, ConnectionTable& connections) {
    connections.HalfTrans = {};
    connections.HarmonicPerm = {};
    connections.ConnLength = {};
    if (!keepAreas) connections.ConnArea = {};
}

void CALCTRANS_STATICGEOPART(const Console& console, const RunOptions& options, const UnitSystem& units,
                             GridModel& grid, ConnectionTable& connections) {
    const int faces = grid.dual.isSet ? TransferDirection : FaceCount;
    leaveOutFurther(console, options, grid);
    const std::vector<SharedFace> shared =
        grid.joinsAcrossFaults && options.useNewtran ? facesAcrossFaults(grid) : std::vector<SharedFace>{};
    listFurther(grid, shared, connections);
    const int width =
        options.ninePoint ? static_cast<int>(DirectionOffset.size()) : std::max(faces, connections.NDIR);
    allocateConnections(console, grid.NCELLS, width, connections);
    prepareRock(options, grid);
    buildNeighbours(grid, connections);
    placeFurther(grid, connections);
    const bool isFirst = !grid.editRockApplied;
    editRock(console, grid);
    shutCellsWithoutRock(grid);  // a repeated conditioning would find them before the edits
    if (options.useNewtran)
        connectByCornerFormula(grid, connections, units.VolumeFactor);
    else
        connectByBoxFormula(grid, connections, units.VolumeFactor);
    connectAcrossFaults(grid, shared, connections);
    settlePoreVolumes(console, isFirst, options.useNewtran, grid, connections);
    storeDiagonalDepths(grid, connections);
    // Only the fully implicit method lets the diagonals flow: faces that had given part of their flow to
    // them would leave the velocity field of the other methods short.
    if (options.ninePoint && options.method == "FIM") rebalance(console, grid, connections);
    // The connections are made from the rock as it was read: smoothing leaves them.
    if (options.parameterSmoothing) smoothRock(console, options.smoothingRows, grid);
    if (options.flowUpscaling) upscaleRock(console, options.upscaleRows, grid);
    multiplyTransRows(console, grid, grid.equalsRows, connections);
    multiplyTransRows(console, grid, grid.multiplyRows, connections);
    multiplyTransRows(console, grid, grid.editRows, connections);
    connectContinua(units.VolumeFactor, grid, connections);
    takeGivenTrans(grid, connections);
    if (const long long multiplied = multiplyFaces(grid, connections); multiplied > 0)
        both(console, " Connections multiplied by MULTX .. MULTZ-, MULTFLT: {}", multiplied);
    if (const int lost = applyConnectionRows(grid, connections); lost > 0)
        warn(console, "WARNING :: {} ROWS OF NNC, EDITNNC OR EDITNNCR FIND NO CONNECTION OF ACTIVE CELLS",
             lost);
    if (const long long multiplied = multiplyRegions(grid, connections); multiplied > 0)
        both(console, " Connections multiplied by MULTREGT: {}", multiplied);
    if (!connections.further.empty())
        both(console, " Connections of cells that are not neighbours: {}", connections.further.size());
    printSummary(console, summarise(grid, connections));
}

}  // namespace kvr
