#pragma once

#include "deck/options.hpp"

namespace kvr {

/// "Output KVR Inversion": the set of binary files for outside viewers.
inline bool writesEclipseFiles(const RunOptions& options) {
    return options.outputEclipse == "Yes";
}

/// "Output KVR SL inv file" on top of that.
inline bool writesLineFiles(const RunOptions& options) {
    return writesEclipseFiles(options) && options.outputSln == "Yes";
}

}  // namespace kvr
