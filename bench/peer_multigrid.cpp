#include "peer_multigrid.hpp"

#include "resident_size.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <HYPRE.h>
#include <HYPRE_IJ_mv.h>
#include <HYPRE_krylov.h>
#include <HYPRE_parcsr_ls.h>
#include <algorithm>
#include <chrono>
#include <mpi.h>
#include <numeric>

namespace kvr::bench {

namespace {

constexpr double Tolerance = 1e-9;
constexpr int MaxIterations = 300;

/// The system in the peer's own arrays.
struct PeerSystem {
    HYPRE_IJMatrix matrix = nullptr;
    HYPRE_IJVector rhs = nullptr, solution = nullptr;
    HYPRE_ParCSRMatrix a = nullptr;
    HYPRE_ParVector b = nullptr, x = nullptr;
};

HYPRE_IJVector makeVector(const std::vector<double>& values) {
    HYPRE_IJVector vector = nullptr;
    const auto last = static_cast<HYPRE_BigInt>(values.size()) - 1;
    HYPRE_IJVectorCreate(MPI_COMM_SELF, 0, last, &vector);
    HYPRE_IJVectorSetObjectType(vector, HYPRE_PARCSR);
    HYPRE_IJVectorInitialize(vector);
    std::vector<HYPRE_BigInt> index(values.size());
    std::iota(index.begin(), index.end(), 0);
    HYPRE_IJVectorSetValues(vector, static_cast<HYPRE_Int>(values.size()), index.data(), values.data());
    HYPRE_IJVectorAssemble(vector);
    return vector;
}

PeerSystem makeSystem(const LinearSystem& system) {
    PeerSystem peer;
    HYPRE_IJMatrixCreate(MPI_COMM_SELF, 0, system.size - 1, 0, system.size - 1, &peer.matrix);
    HYPRE_IJMatrixSetObjectType(peer.matrix, HYPRE_PARCSR);
    HYPRE_IJMatrixInitialize(peer.matrix);
    std::vector<HYPRE_BigInt> columns;
    for (HYPRE_BigInt i = 0; i < system.size; ++i) {
        const auto first = system.rowStart[i], end = system.rowStart[i + 1];
        columns.assign(system.column.begin() + first, system.column.begin() + end);
        auto count = static_cast<HYPRE_Int>(end - first);
        HYPRE_IJMatrixSetValues(peer.matrix, 1, &count, &i, columns.data(), system.value.data() + first);
    }
    HYPRE_IJMatrixAssemble(peer.matrix);
    peer.rhs = makeVector(system.rhs);
    peer.solution = makeVector(std::vector<double>(static_cast<std::size_t>(system.size), 0.0));
    void* object = nullptr;
    HYPRE_IJMatrixGetObject(peer.matrix, &object);
    peer.a = static_cast<HYPRE_ParCSRMatrix>(object);
    HYPRE_IJVectorGetObject(peer.rhs, &object);
    peer.b = static_cast<HYPRE_ParVector>(object);
    HYPRE_IJVectorGetObject(peer.solution, &object);
    peer.x = static_cast<HYPRE_ParVector>(object);
    return peer;
}

HYPRE_Solver makePreconditioner() {
    constexpr HYPRE_Int Hmis = 10, ExtendedI = 6, Weights = 4, SymmetricGaussSeidel = 6;
    HYPRE_Solver amg = nullptr;
    HYPRE_BoomerAMGCreate(&amg);
    HYPRE_BoomerAMGSetCoarsenType(amg, Hmis);
    HYPRE_BoomerAMGSetInterpType(amg, ExtendedI);
    HYPRE_BoomerAMGSetPMaxElmts(amg, Weights);
    HYPRE_BoomerAMGSetStrongThreshold(amg, 0.25);
    HYPRE_BoomerAMGSetRelaxType(amg, SymmetricGaussSeidel);
    HYPRE_BoomerAMGSetTol(amg, 0.0);
    HYPRE_BoomerAMGSetMaxIter(amg, 1);
    return amg;
}

/// Set-up and solve; returns its wall time in s.
double solveOnce(PeerSystem& peer, PeerTiming& timing) {
    const double before = residentMegabytes();
    const auto start = std::chrono::steady_clock::now();
    HYPRE_Solver amg = makePreconditioner(), krylov = nullptr;
    HYPRE_ParCSRBiCGSTABCreate(MPI_COMM_SELF, &krylov);
    HYPRE_BiCGSTABSetTol(krylov, Tolerance);
    HYPRE_BiCGSTABSetMaxIter(krylov, MaxIterations);
    HYPRE_BiCGSTABSetPrecond(krylov, reinterpret_cast<HYPRE_PtrToSolverFcn>(HYPRE_BoomerAMGSolve),
                             reinterpret_cast<HYPRE_PtrToSolverFcn>(HYPRE_BoomerAMGSetup), amg);
    HYPRE_ParVectorSetConstantValues(peer.x, 0.0);
    HYPRE_ParCSRBiCGSTABSetup(krylov, peer.a, peer.b, peer.x);
    HYPRE_ParCSRBiCGSTABSolve(krylov, peer.a, peer.b, peer.x);
    HYPRE_Int iterations = 0;
    HYPRE_BiCGSTABGetNumIterations(krylov, &iterations);
    timing.iterations = static_cast<int>(iterations);
    const auto finish = std::chrono::steady_clock::now();
    timing.megabytes = residentMegabytes() - before;
    HYPRE_ParCSRBiCGSTABDestroy(krylov);
    HYPRE_BoomerAMGDestroy(amg);
    return std::chrono::duration<double>(finish - start).count();
}

double residualOf(const LinearSystem& system, const PeerSystem& peer) {
    std::vector<double> x(static_cast<std::size_t>(system.size));
    std::vector<HYPRE_BigInt> index(x.size());
    std::iota(index.begin(), index.end(), 0);
    HYPRE_IJVectorGetValues(peer.solution, static_cast<HYPRE_Int>(x.size()), index.data(), x.data());
    return test::trueResidual(system, x);
}

}  // namespace

PeerTiming timePeer(const LinearSystem& system, int repeats) {
    int started = 0;
    MPI_Initialized(&started);
    if (started == 0) {
        MPI_Init(nullptr, nullptr);
        HYPRE_Init();
    }
    PeerSystem peer = makeSystem(system);
    PeerTiming timing;
    timing.available = true;
    std::vector<double> seconds;
    for (int k = 0; k < repeats; ++k) seconds.push_back(solveOnce(peer, timing));
    std::sort(seconds.begin(), seconds.end());
    timing.seconds = seconds[seconds.size() / 2];
    timing.residual = residualOf(system, peer);
    HYPRE_IJMatrixDestroy(peer.matrix);
    HYPRE_IJVectorDestroy(peer.rhs);
    HYPRE_IJVectorDestroy(peer.solution);
    return timing;
}

}  // namespace kvr::bench
