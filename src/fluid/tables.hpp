#pragma once

#include "base/cell_array.hpp"
#include "fluid/end_points.hpp"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace kvr {

/// Table columns hold row 1 at [0]; the look-ups take 1-based row numbers.
using Column = std::vector<double>;

/// What a search on a saturation axis has ready: the axis is cut into equal buckets, each with the last row
/// below it, from where the right row is a step or two away.
struct AxisSearch {
    double start = 0.0;                   // first axis value
    double bucketsPerUnit = 0.0;          // buckets over the length of the axis
    double lastBucket = 0.0;              // number of the last bucket, which also takes all above
    std::vector<std::uint32_t> firstRow;  // by bucket: 0-based row to start from
    Column inverseStep;                   // 1 / (row r + 1 minus row r) at [r], 0 for no width
    // Values outside are taken as these, beyond which the end segments are not extended.
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
};

/// How oil flows beside water and gas, see Kro3Fn.
enum class OilRule : std::uint8_t { Stone2, Weighted };

/// SWOF and SGOF of one SATNUM region, with its end points.
struct SaturationTable {
    Column SwAxis, Krw, Krow, Pcow;  // Pcow psi (or J with JFUNC)
    Column SgAxis, Krg, Krog, Pcog;
    AxisSearch SwSearch, SgSearch;
    double InverseOilAtConnate = 0.0;  // 1 / krow of the first SWOF row, the c of the three-phase rule
    OilRule oilRule = OilRule::Stone2;
    bool holdsEnds = false;  // outside of its axes a table is as at their ends
    double ConnateSw = 0.0;
    double CriticalSg = 0.0;
    double ResidualSo = 0.0;
};

/// SWFN, SGFN and SOF2 or SOF3 of one SATNUM region, until they are combined into SWOF and SGOF.
struct PhaseTables {
    Column Sw, Krw, Pcow;
    Column Sg, Krg, Pcog;
    Column So, Krow, Krog;
};

/// Oil above its bubble point by the rows of every Rs: of saturated row r the nodes first[r] to first[r + 1],
/// at pressures above its bubble point, with the factors of 1/B and 1/(B mu) from there.
struct UnderSaturatedRows {
    std::vector<std::size_t> first;  // empty: the rows behind the last Rs serve all
    Column step;                     // psi, rising from node to node
    Column invFvf, invFvfVisc;
};

/// AQUTAB: dimensionless pressure by dimensionless time, of an aquifer that gives at a constant rate.
struct InfluenceTable {
    Column time, pressure;
};

/// Black-oil PVT, saturation tables and scalars. psia, cp, lb/ft3; Rs and Bg are dimensionless
/// (surface barrels of gas per stb, rb per surface barrel).
struct FluidTables {
    // PVTO or PVDO: rows 1..SatRows saturated, the UnderRows rows behind them under-saturated.
    Column OilPressure, OilFvf, OilViscosity, OilRs, OilInvFvf, OilInvFvfVisc;
    Column UnderPressureStep, UnderFvfSlope,
        UnderViscSlope;  // row SatRows + k minus the row before, at [k - 1]
    UnderSaturatedRows underRows;
    int OilRows = 0;
    int UnderRows = 0;
    int SatRows = 0;
    double MaxRs = 0.0;  // 0 or less: dead oil

    // PVDG
    Column GasPressure, GasFvf, GasViscosity, GasInvFvf, GasInvFvfVisc;
    int GasRows = 0;

    // Fluid and rock tables of the PVT regions 2 and on: of each only the columns and scalars of fluids and
    // rock are used. `PvtRegionCell`: region of a cell less 1; empty with one region.
    std::vector<FluidTables> furtherPvt;
    CellArray<std::uint16_t> PvtRegionCell;

    std::vector<PhaseTables> phaseTables;  // of decks that give relative permeabilities phase by phase
    std::vector<SaturationTable> regions;  // SATNUM region r at [r - 1]; never empty once finished
    EndPointScaling scaling;
    std::size_t scaledRegions = 0;  // the last ones, made of those of the deck for cells with own end points
    bool ofContinua = false;        // given by the names of the continua: region 1 matrix, region 2 fractures
    Column SwAxisSingle, KrwSingle, KrowSingle, SgAxisSingle, KrgSingle, KrogSingle;  // copy of region 1
    CellArray<std::uint8_t>
        RegionTableCell;    // 1: the region tables serve this cell; empty: raised everywhere
    double PcowSpan = 0.0;  // |Pc(first)| + |Pc(last)| of region 1, or the largest of all; 1e-8 or less: off
    double PcogSpan = 0.0;

    std::vector<InfluenceTable> influenceTables;  // AQUTAB number n at [n - 2]

    bool hasGas = false;                  // the run has a gas phase
    OilRule oilRule = OilRule::Weighted;  // of a deck that names none; for regions with both tables
    bool holdsEnds = false;               // of all saturation tables, see SaturationTable
    double referencePressureWater = 0.0;
    double waterFvf = 0.0;
    double waterCompressibility = 0.0;
    double waterViscosity = 0.0;
    double waterViscosibility = 0.0;
    double rockReferencePressure = 0.0;
    double rockCompressibility = 0.0;
    double oilDensity = 0.0;
    double waterDensity = 0.0;
    double gasDensity = 0.0;
    double reservoirTemperature = 0.0;  // Rankine
    double surfaceTemperature = 0.0;    // Rankine
    double surfacePressure = 0.0;

    std::vector<std::string> tracerNames;
    std::vector<std::string> tracerUnits;

    // Component data, read and held for compositional runs.
    std::vector<std::string> CNAMES;
    Column TCRIT, PCRIT, VCRIT, MW, ACF;
    std::vector<double> BIC;    // square, row-major
    std::vector<double> ZMFVD;  // rows of depth and one fraction per component
    std::vector<double> ZI;
};

/// Capillary pressure below this span (psi) is taken as none.
inline constexpr double CapillarySpanLimit = 1e-8;

/// The tables that hold the fluids and the rock of a cell.
inline const FluidTables& pvtAt(const FluidTables& tables, CellId cell) {
    if (tables.PvtRegionCell.empty()) return tables;
    const std::size_t region = tables.PvtRegionCell[cell];
    return region == 0 ? tables : tables.furtherPvt[region - 1];
}

inline const SaturationTable& regionTable(const FluidTables& tables, int region) {
    return tables.regions[static_cast<std::size_t>(region) - 1];
}

/// Saturation regions that the deck has tables for.
inline std::size_t ownRegions(const FluidTables& tables) {
    return tables.regions.size() - tables.scaledRegions;
}

}  // namespace kvr
