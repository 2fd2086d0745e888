#include "pressure/pressure_lines.hpp"

#include "base/messages.hpp"

#include <cmath>
#include <string>
#include <string_view>

namespace kvr {

namespace {

constexpr double WideFormatDeltaP = 900000.0;  // psi, from here on the wider number format

constexpr std::string_view Dashes = "------------------------------------------------------------";

}  // namespace

LargestChange largestChange(std::span<const double> solution, CellId cells) {
    LargestChange largest{std::abs(solution[0]), 1};
    for (CellId c = 2; c <= cells; ++c) {
        const double change = std::abs(solution[static_cast<std::size_t>(c) - 1]);
        if (!(change <= largest.DIFFP) && !std::isnan(largest.DIFFP)) largest = {change, c};
    }
    return largest;
}

void printHead(const Console& console, const RunClock& clock) {
    lineToBoth(console, Dashes);
    both(console, "Time Begin : {}  Step : {}", number(clock.time), clock.stepCount);
    lineToBoth(console, Dashes);
    lineToBoth(console, "");
}

void printIteration(const Console& console, const GridModel& grid, int it, const LargestChange& largest) {
    const CellId c = largest.cell;
    const std::string place = fmt::format("ITE --> {:3d} dploc=({:4d} {:4d} {:4d})   DIFFP=", it,
                                          grid.CellI[c], grid.CellJ[c], grid.CellK[c]);
    if (largest.DIFFP >= WideFormatDeltaP)
        both(console, "{}{:24.6e}", place, largest.DIFFP);
    else
        both(console, "{}{:16.6f}", place, largest.DIFFP);
}

}  // namespace kvr
