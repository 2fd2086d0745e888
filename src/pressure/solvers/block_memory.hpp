#pragma once

#include "pressure/solvers/block_ilu.hpp"
#include "pressure/solvers/dense.hpp"
#include "pressure/solvers/krylov.hpp"
#include "pressure/solvers/preconditioner_choice.hpp"
#include "pressure/solvers/pressure_stage.hpp"
#include "pressure/solvers/scaled_blocks.hpp"

namespace kvr {

struct BlockSolverMemory {
    ScaledBlocks scaled;
    BlockFactors factors;
    CoupledPressure pressure;
    KrylovVectors vectors;
    PreconditionerChoice choice;
    DenseStorage dense;
};

}  // namespace kvr
