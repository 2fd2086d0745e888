#pragma once

#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/ilu.hpp"
#include "pressure/solvers/krylov.hpp"

namespace kvr {

struct SolverMemory {
    DenseStorage dense;
    IncompleteFactors factors;
    KrylovVectors vectors;
};

}  // namespace kvr
