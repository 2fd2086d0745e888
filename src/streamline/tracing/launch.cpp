#include "streamline/tracing/launch.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "streamline/tracing/cell_tags.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kvr {

namespace {

constexpr long long MostLines = 50'000'000;  // lines of one step; their start data take 3 GB

using FaceCounts = std::array<int, 6>;

struct SideRates {
    double injection = 0.0;
    double production = 0.0;
};

bool hasWellOfKind(const WellRecord& wells, std::string_view kind) {
    return std::any_of(wells.wells.begin(), wells.wells.end(), [kind](const Well& well) {
        return well.WellKind == kind && (!well.aquifer || well.reservoirRate != 0.0);
    });
}

double completionRate(const WellConnection& connection) {
    return std::abs(connection.reservoirRate);
}

SideRates sideRates(const WellRecord& wells) {
    SideRates rates;
    for (const Well& well : wells.wells)
        for (const WellConnection& connection : well.connections) {
            if (well.WellKind == "inj") rates.injection += completionRate(connection);
            if (well.WellKind == "prd") rates.production += completionRate(connection);
        }
    return rates;
}

/// What the faces of a completion cell offer to lines; tagged neighbours take none.
std::array<double, 6> launchFluxes(const ConnectionTable& connections, const VelocityField& velocity,
                                   const CellTags& tags, CellId cell) {
    std::array<double, 6> fluxes{};
    for (int face = 1; face <= FaceCount; ++face) {
        const CellId neighbour = connections.Neighbour(cell, face);
        if (neighbour > 0 && tags.CellTag[neighbour] != CellTagKind::Pop) continue;
        fluxes[static_cast<std::size_t>(face) - 1] = std::abs(velocity.CellFaceFlux(cell, face));
    }
    return fluxes;
}

/// Nearest integers, halves away from zero. `valid` is false where a quotient is not a number (no flux at
/// all, or no rate on the whole side); the counts are 0 then.
FaceCounts faceCounts(const std::array<double, 6>& fluxes, double rate, double ratePerLine, bool& valid) {
    const double sum = std::accumulate(fluxes.begin(), fluxes.end(), 0.0);
    FaceCounts counts{};
    valid = true;
    for (std::size_t f = 0; f < counts.size(); ++f) {
        const double lines = ((fluxes[f] * rate) / sum) / ratePerLine;
        if (std::isfinite(lines))
            counts[f] = static_cast<int>(std::min(std::round(lines), static_cast<double>(MostLines)));
        else
            valid = false;
    }
    return counts;
}

long long total(const FaceCounts& counts) {
    return std::accumulate(counts.begin(), counts.end(), 0LL);
}

int held(const Console& console, long long lines) {
    if (lines <= MostLines) return static_cast<int>(lines);
    both(console, "Error :: Number of streamlines beyond limit : {}", lines);
    hardStop(console);
}

void sizeCounts(const WellRecord& wells, LaunchPlan& plan) {
    plan.counts.resize(wells.wells.size());
    plan.wellCounts.assign(wells.wells.size(), 0);
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        plan.counts[w].assign(wells.wells[w].connections.size(), FaceCounts{});
}

/// The first pass, over both sides: only the sums by well are kept of it.
void countBySide(const Console& console, const WellRecord& wells, const ConnectionTable& connections,
                 const VelocityField& velocity, const CellTags& tags, const SideRates& ratePerLine,
                 LaunchPlan& plan) {
    double q = 0.0;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        if (well.WellKind == "inj") q = ratePerLine.injection;
        if (well.WellKind == "prd") q = ratePerLine.production;
        long long lines = 0;
        for (const WellConnection& connection : well.connections) {
            bool valid = true;
            lines += total(faceCounts(launchFluxes(connections, velocity, tags, connection.ConnCell),
                                      completionRate(connection), q, valid));
        }
        plan.wellCounts[w] = held(console, lines);
    }
}

void tellOfNoLines(const Console& console, const Well& well, CellId cell) {
    constexpr std::string_view Format =
        " WARNING :: Zero SL Launched from Well : {:<8.8} Perfolation grid : {}";
    const std::string text = fmt::format(Format, well.WellName, cell);
    lineToLog(console, text);
    if (!well.shut && !well.aquifer) noteWarning(console, Format, text);
}

long long countLaunchingSide(const Console& console, const WellRecord& wells,
                             const ConnectionTable& connections, const VelocityField& velocity,
                             const CellTags& tags, double ratePerLine, LaunchPlan& plan) {
    long long lines = 0;
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        if (well.WellKind != plan.LaunchMode) continue;
        for (std::size_t c = 0; c < well.connections.size(); ++c) {
            const WellConnection& connection = well.connections[c];
            bool valid = true;
            plan.counts[w][c] = faceCounts(launchFluxes(connections, velocity, tags, connection.ConnCell),
                                           completionRate(connection), ratePerLine, valid);
            lines += total(plan.counts[w][c]);
            if (!valid && startsOrEndsLines(well, connection))
                tellOfNoLines(console, well, connection.ConnCell);
        }
    }
    return lines;
}

// --- placement ------------------------------------------------------------------------------------

/// Where a regular start point stands along an axis that lies in the face.
enum class Along { Spread, Middle, Unset };

struct RegularRow {
    std::string_view dimensionality;
    std::array<std::array<Along, 3>, 3> byFaceAxis;  // [axis of the face][axis]; its own axis unused
};

constexpr Along S = Along::Spread, M = Along::Middle, U = Along::Unset;
constexpr std::array<RegularRow, 3> RegularRows = {{
    {"x_1d", {{{U, M, M}, {S, U, U}, {S, U, U}}}},
    {"xy_2d", {{{U, S, M}, {S, U, M}, {S, U, U}}}},
    {"xz_2d", {{{U, M, S}, {S, U, U}, {S, M, U}}}},
}};

const RegularRow* regularRow(std::string_view dimensionality) {
    const auto* row = std::find_if(RegularRows.begin(), RegularRows.end(),
                                   [&](const RegularRow& r) { return r.dimensionality == dimensionality; });
    return row == RegularRows.end() ? nullptr : row;
}

/// Uniform in [0, 1), 53 random bits.
double uniformDraw(std::mt19937_64& random) {
    constexpr int UnusedBits = 11;
    constexpr double PerUnit = 0x1.0p-53;
    return static_cast<double>(random() >> UnusedBits) * PerUnit;
}

std::array<double, 3> lengthsOf(const GridModel& grid, CellId cell, bool referenceCube) {
    if (referenceCube) return {1.0, 1.0, 1.0};
    return {grid.DX[cell], grid.DY[cell], grid.DZ[cell]};
}

std::array<double, 3> onFace(int face, const std::array<double, 3>& length) {
    std::array<double, 3> point{};
    const auto axis = static_cast<std::size_t>(face - 1) / 2;
    point[axis] = face % 2 == 0 ? length[axis] : 0.0;
    return point;
}

/// Point i of n (from 1) of a face.
std::array<double, 3> regularPoint(const RegularRow& row, int face, int i, int n,
                                   const std::array<double, 3>& length) {
    std::array<double, 3> point = onFace(face, length);
    const auto faceAxis = static_cast<std::size_t>(face - 1) / 2;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (axis == faceAxis) continue;
        const Along along = row.byFaceAxis[faceAxis][axis];
        if (along == Along::Spread) point[axis] = (i - 0.5) * length[axis] / n;
        if (along == Along::Middle) point[axis] = 0.5 * length[axis];
    }
    return point;
}

std::array<double, 3> randomPoint(int face, const std::array<double, 3>& length, std::mt19937_64& random) {
    std::array<double, 3> point = onFace(face, length);
    const auto faceAxis = static_cast<std::size_t>(face - 1) / 2;
    for (std::size_t axis = 0; axis < 3; ++axis)
        if (axis != faceAxis) point[axis] = uniformDraw(random) * length[axis];
    return point;
}

void placeOnCompletion(const GridModel& grid, const PlacementRule& rule, const FaceCounts& counts,
                       LineStart start, LaunchPlan& plan) {
    const RegularRow* regular = regularRow(rule.dimensionality);
    const std::array<double, 3> length = lengthsOf(grid, start.cell, rule.referenceCube);
    for (int face = 1; face <= FaceCount; ++face) {
        const int n = counts[static_cast<std::size_t>(face) - 1];
        start.face = face;
        for (int i = 1; i <= n; ++i) {
            start.point = regular != nullptr ? regularPoint(*regular, face, i, n, length)
                                             : randomPoint(face, length, plan.random);
            plan.starts.push_back(start);
        }
    }
}

}  // namespace

void countLines(const Console& console, const WellRecord& wells, const ConnectionTable& connections,
                const VelocityField& velocity, const CellTags& tags, LaunchPlan& plan) {
    sizeCounts(wells, plan);
    plan.successfulLines = 0;
    if (!hasWellOfKind(wells, "prd")) plan.LaunchMode = "inj";
    if (!hasWellOfKind(wells, "inj")) plan.LaunchMode = "prd";
    log(console, "Streamline Start from : {}", plan.LaunchMode);

    const SideRates rates = sideRates(wells);
    const double requested = std::max(1, plan.RequestedLines);
    const SideRates perLine{rates.injection / requested, rates.production / requested};
    countBySide(console, wells, connections, velocity, tags, perLine, plan);

    if (plan.LaunchMode == "inj") plan.LineFlux = perLine.injection;
    if (plan.LaunchMode == "prd") plan.LineFlux = perLine.production;
    plan.ActiveLines =
        held(console, countLaunchingSide(console, wells, connections, velocity, tags, plan.LineFlux, plan));
    plan.launchedLines = plan.ActiveLines;
    if (plan.ActiveLines == 0) return;
    plan.LineFlux = (plan.LaunchMode == "inj" ? rates.injection : rates.production) / plan.ActiveLines;
    both(console, "Number of Streamline : {}", plan.ActiveLines);
    both(console, "One Streamline flow  : {}", number(plan.LineFlux));
}

void placeLines(const GridModel& grid, const WellRecord& wells, const PlacementRule& rule, LaunchPlan& plan) {
    plan.starts.clear();
    plan.starts.reserve(static_cast<std::size_t>(plan.ActiveLines));
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        if (well.WellKind != plan.LaunchMode) continue;
        for (std::size_t c = 0; c < well.connections.size(); ++c) {
            LineStart start;
            start.completion = static_cast<int>(c) + 1;
            start.cell = well.connections[c].ConnCell;
            start.well = static_cast<int>(w) + 1;
            placeOnCompletion(grid, rule, plan.counts[w][c], start, plan);
        }
    }
}

void clearLaunch(LaunchPlan& plan) {
    plan.counts.clear();
    plan.wellCounts.clear();
    plan.starts.clear();
    plan.ActiveLines = 0;
    plan.launchedLines = 0;
}

}  // namespace kvr
