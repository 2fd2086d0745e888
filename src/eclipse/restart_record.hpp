#pragma once

namespace kvr {

/// What the reader of outside restarts keeps from call to call.
struct RestartRecord {
    bool wellsFromFile = false;  // the deck has none: the wells are those of the last restart
};

}  // namespace kvr
