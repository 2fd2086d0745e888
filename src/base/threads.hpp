#pragma once

namespace kvr {

/// Denormal numbers become zero, in the calling thread and in every thread of the OpenMP pool.
/// Called once at start-up.
void flushDenormalsInAllThreads();

/// Dense linear algebra stays on one thread: shared among several it rounds by their number, and a run would
/// not give the same bits for any number of threads. Called once at start-up.
void keepDenseAlgebraOnOneThread();

// Work below which a loop stays on one thread. Waiting threads sleep (letWaitingThreadsSleep), and waking
// them takes tens of microseconds.

/// From this many cells on loops over cells are shared among threads.
inline constexpr int ParallelCells = 50000;
/// The same where the work on a cell is heavy: look-ups in several tables, exchange over all faces.
inline constexpr int ParallelHeavyCells = 1000;

// Rows of the shortest range that loops of the linear solvers are cut into (cutRows); one range is one
// thread. The cut decides the order of sums and of sweeps, so these are part of what a run prints.

/// Of a vector.
inline constexpr int ShortestVectorRange = 16384;
/// Of a product with a transfer between grids.
inline constexpr int ShortestTransferRange = 8192;
/// Of a sweep over a matrix.
inline constexpr int ShortestSweepRange = 4096;
/// Of the set-up of a matrix, where every range has a scratch of its own.
inline constexpr int ShortestSetUpRange = 4096;

}  // namespace kvr
