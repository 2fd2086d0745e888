#pragma once

#include <cstdio>
#include <malloc.h>
#include <unistd.h>

namespace kvr::bench {

/// Resident size of this process, what the allocator holds unused given back first.
inline double residentMegabytes() {
    malloc_trim(0);
    long pages = 0, resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr) return 0.0;
    const int read = std::fscanf(file, "%ld %ld", &pages, &resident);
    std::fclose(file);
    constexpr double Megabyte = 1048576.0;
    return read == 2 ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / Megabyte
                     : 0.0;
}

}  // namespace kvr::bench
