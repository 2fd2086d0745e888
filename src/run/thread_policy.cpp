#include "run/thread_policy.hpp"

#include <cstdlib>
#include <unistd.h>

namespace kvr {

void letWaitingThreadsSleep(char* arguments[]) {
    struct Setting {
        const char* name;
        const char* value;
    };
    // The library of dense algebra would start threads of its own that are never used.
    constexpr Setting Settings[] = {{"OMP_WAIT_POLICY", "passive"}, {"OPENBLAS_NUM_THREADS", "1"}};
    constexpr int KeepWhatIsSet = 0;
    bool changed = false;
    for (const Setting& setting : Settings)
        if (std::getenv(setting.name) == nullptr)
            changed = setenv(setting.name, setting.value, KeepWhatIsSet) == 0 || changed;
    if (changed) execv("/proc/self/exe", arguments);
}

}  // namespace kvr
