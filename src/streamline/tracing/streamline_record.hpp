#pragma once

#include "base/cell_array.hpp"

#include <array>
#include <cstdint>
#include <vector>

namespace kvr {

/// How a trace ended.
enum class TraceStatus { DiedInside = 0, ReachedWell = 1, Rejected = 2 };

/// Node list of the one line being traced; the next line overwrites it. Node n stands at [n], node 0 is
/// the launching end at time 0.
struct StreamlineRecord {
    int nodeCount = 0;  // nodes in use; below 2 the line is rejected
    int MaxNodes = 0;
    int enteredNodes = 0;  // last node whose cell was entered, the dropped one of a dead line included
    TraceStatus status = TraceStatus::Rejected;
    std::vector<CellId> NodeCell;                       // [0..MaxNodes]; [0] repeats the start cell
    std::vector<std::array<double, 3>> NodeLocalPoint;  // where the traverse ended, in that cell
    std::vector<std::array<double, 3>> NodePosition;    // ft; reference-cube family only
    std::vector<double> NodeStepLength;                 // ft
    std::vector<double> NodeTof;                        // days from the launching end; [0] is 0
    std::vector<std::uint8_t> NodeExitFace;             // 1..6
    int injector = 0;                                   // 1-based wells at the two ends, 0 for none
    int producer = 0;
};

/// Exit flags of every cell, bit (face - 1) of one byte per cell.
struct ExitFlags {
    CellArray<std::uint8_t> ExitFacesForward;
    CellArray<std::uint8_t> ExitFacesBackward;
    int stagnantBlocks = 0;
};

}  // namespace kvr
