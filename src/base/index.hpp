#pragma once

#include <cstddef>

namespace kvr {

/// Place of an index in a standard container: indices are int, as cells, wells and nodes are counted.
inline std::size_t at(int n) {
    return static_cast<std::size_t>(n);
}

}  // namespace kvr
