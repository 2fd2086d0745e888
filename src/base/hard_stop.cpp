#include "base/hard_stop.hpp"

#include "base/messages.hpp"
#include "base/written_files.hpp"

#include <cstdlib>

namespace kvr {

void hardStop(const Console& console) {
    settleFiles(console);
    if (console.messages != nullptr) ++console.messages->errors;
    if (console.atStop != nullptr) (*console.atStop)();
    unfold(console, true);
    waitForLine(console);
    std::exit(EXIT_FAILURE);
}

void normalStop() {
    std::exit(EXIT_SUCCESS);
}

}  // namespace kvr
