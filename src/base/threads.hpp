#pragma once

namespace kvr {

/// Denormal numbers become zero, in the calling thread and in every thread of the OpenMP pool.
/// Called once at start-up.
void flushDenormalsInAllThreads();

}  // namespace kvr
