#include "deck/deck_opening.hpp"

#include "base/hard_stop.hpp"

#include <cerrno>

namespace kvr {

namespace {

[[noreturn]] void stopOnOpenFailure(const Console& console, const std::string& name, int status) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error at ECLIPSE input mode");
    else
        both(console, "ERROR: File handling error in ECLIPSE input mode, code = {}", status);
    both(console, "File {}", name);
    hardStop(console);
}

}  // namespace

int loadDeckFile(const std::string& name, DeckCursor& cursor) {
    const std::string path = existingPath(name);
    if (path.empty()) return OpenErrorStatus;
    errno = 0;
    if (loadDeck(path, cursor)) return 0;
    return errno != 0 ? errno : HandlingErrorStatus;
}

void openFirstDeck(const Console& console, const std::vector<std::string>& names, DeckCursor& cursor) {
    for (const std::string& name : names) {
        const int status = loadDeckFile(name, cursor);
        if (status == 0) return;
        if (status != OpenErrorStatus) stopOnOpenFailure(console, existingPath(name), status);
    }
    stopOnOpenFailure(console, names.front(), OpenErrorStatus);
}

}  // namespace kvr
