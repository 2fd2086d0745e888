#pragma once

namespace kvr {

/// Denormal numbers become zero, in the calling thread and in every thread of the OpenMP pool.
/// Called once at start-up.
void flushDenormalsInAllThreads();

/// From this many cells on loops over cells are shared among threads; below it waking them costs more.
inline constexpr int ParallelCells = 50000;
/// The same where the work on a cell is heavy: look-ups in several tables, exchange over all faces.
inline constexpr int ParallelHeavyCells = 1000;

}  // namespace kvr
