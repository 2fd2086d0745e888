#include "base/hard_stop.hpp"

#include <cstdlib>

namespace kvr {

void hardStop(const Console& console) {
    if (console.log != nullptr) std::fflush(console.log);
    unfold(console, true);
    waitForLine(console);
    std::exit(EXIT_FAILURE);
}

void normalStop() {
    std::exit(EXIT_SUCCESS);
}

}  // namespace kvr
