#include "streamline/tracing/exit_flags.hpp"

#include <algorithm>

namespace kvr {

std::uint8_t exitFaces(const double* flux, const CellId* neighbour, double direction) {
    unsigned bits = 0;
    for (int low = 0; low < 6; low += 2) {
        const double fLow = direction * flux[low];
        const double fHigh = direction * flux[low + 1];
        if (fLow > 0.0 && fHigh < 0.0) continue;
        if (neighbour[low] > 0 && fLow < 0.0) bits |= 1U << low;
        if (neighbour[low + 1] > 0 && fHigh > 0.0) bits |= 2U << low;
    }
    return static_cast<std::uint8_t>(bits);
}

void prepareExitFlags(const Console& console, const ConnectionTable& connections,
                      const VelocityField& velocity, ExitFlags& flags) {
    const int width = std::max(1, velocity.CellFaceFlux.width);
    const auto count =
        static_cast<CellId>(velocity.CellFaceFlux.slots.size() / static_cast<std::size_t>(width)) - 1;
    flags.ExitFacesForward.assign(count, 0);
    flags.ExitFacesBackward.assign(count, 0);
    flags.stagnantBlocks = 0;
    for (CellId cell = 1; cell <= count; ++cell) {
        const double* flux = velocity.CellFaceFlux.row(cell);
        const CellId* neighbour = connections.Neighbour.row(cell);
        flags.ExitFacesForward[cell] = exitFaces(flux, neighbour, 1.0);
        flags.ExitFacesBackward[cell] = exitFaces(flux, neighbour, -1.0);
        if (flags.ExitFacesForward[cell] == 0) ++flags.stagnantBlocks;
    }
    both(console, "Total Stagnant Block : {}", flags.stagnantBlocks);
}

}  // namespace kvr
