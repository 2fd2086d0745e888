#pragma once

#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/ilu.hpp"
#include "pressure/solvers/krylov.hpp"
#include "pressure/solvers/multigrid.hpp"

namespace kvr {

struct SolverMemory {
    DenseStorage dense;
    IncompleteFactors factors;
    KrylovVectors vectors;
    MultigridMemory multigrid;
};

}  // namespace kvr
