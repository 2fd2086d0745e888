#pragma once

namespace kvr {

/// Seconds of a steady wall clock, from an arbitrary origin.
double wallSeconds();

/// Processor seconds of this process since its start.
double cpuSeconds();

}  // namespace kvr
