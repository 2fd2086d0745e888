#pragma once

namespace kvr {

/// Threads that wait at a barrier give up their core, so that a run beside other work does not spin against
/// it. The threading runtime reads its settings before main begins: where the user has not set
/// OMP_WAIT_POLICY the program sets it and starts itself anew, once. Where that fails it goes on as it is.
/// The library of dense algebra gets no threads of its own in the same way.
void letWaitingThreadsSleep(char* arguments[]);

}  // namespace kvr
