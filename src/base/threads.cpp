#include "base/threads.hpp"

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

// Of OpenBLAS; other libraries have none of it, and no threads of their own.
extern "C" void openblas_set_num_threads(int count) __attribute__((weak));

namespace kvr {

namespace {

void flushDenormals() {
#if defined(__SSE__)
    constexpr unsigned DenormalsAreZero = 0x0040U;  // MXCSR bit 6
    _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
    _mm_setcsr(_mm_getcsr() | DenormalsAreZero);
#endif
}

}  // namespace

void flushDenormalsInAllThreads() {
    flushDenormals();
#pragma omp parallel
    flushDenormals();
}

void keepDenseAlgebraOnOneThread() {
    if (openblas_set_num_threads != nullptr) openblas_set_num_threads(1);
}

}  // namespace kvr
