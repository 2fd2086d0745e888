#include "run/thread_policy.hpp"

#include <cstdlib>
#include <unistd.h>

namespace kvr {

void letWaitingThreadsSleep(char* arguments[]) {
    constexpr const char* Policy = "OMP_WAIT_POLICY";
    constexpr int KeepWhatIsSet = 0;
    if (std::getenv(Policy) != nullptr || setenv(Policy, "passive", KeepWhatIsSet) != 0) return;
    execv("/proc/self/exe", arguments);
}

}  // namespace kvr
