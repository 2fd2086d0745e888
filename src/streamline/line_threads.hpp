#pragma once

#include "streamline/line_worker.hpp"

#include <omp.h>
#include <vector>

namespace kvr {

/// Calls work(k, worker) for the lines k = 0..count - 1 of a block, on as many threads as there are workers,
/// and beside(), once, on one of them meanwhile. A thread has one worker, so that no two calls at once share
/// one; their order is any.
template <class Work, class Beside>
void workLines(int count, std::vector<LineWorker>& workers, const Work& work, const Beside& beside) {
    const auto threads = static_cast<int>(workers.size());
    if (threads == 1) {
        for (int k = 0; k < count; ++k) work(k, workers.front());
        beside();
        return;
    }
#pragma omp parallel num_threads(threads)
    {
#pragma omp single nowait
        beside();
#pragma omp for schedule(dynamic, 1)
        for (int k = 0; k < count; ++k) work(k, workers[static_cast<std::size_t>(omp_get_thread_num())]);
    }
}

}  // namespace kvr
