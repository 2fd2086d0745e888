#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace kvr {

/// One well whose bottom hole pressure is an unknown of its own, bordering the cell rows:
///   row of cell i    ... + B_i bhp      (B_i: blockSize values, one per equation of the cell)
///   row of the well  sum_i C_i x_i + D bhp = rhs   (C_i: blockSize values, one per unknown of the cell)
/// A well held at its pressure has C = 0, D = 1. D must not be 0: a row whose D vanishes counts as D = 1.
struct WellBorder {
    std::vector<int> cells;            // [completions] rows, 0-based, each at most once
    std::vector<double> columnBlocks;  // [completions * blockSize] B
    std::vector<double> rowBlocks;     // [completions * blockSize] C
    double diagonal = 1.0;             // D
    double rhs = 0.0;
};

/// Coupled system of cells with 2 or 3 unknowns each and of wells with one. Rows are 0-based cells, block
/// rows compressed with columns rising, blocks dense and row-major: the entry of equation e and unknown u
/// of the block at place k is value[(k * blockSize + e) * blockSize + u]. Unknown 0 of a cell is its
/// pressure. The pattern is built once per grid; values, right sides and wells are refilled per iteration.
/// Signs and units are free: the solver scales rows and columns itself.
struct BlockSystem {
    int blockSize = 2;          // 2 or 3
    int rows = 0;               // cells
    std::vector<int> rowStart;  // [rows + 1]
    std::vector<int> column;    // [blocks]
    std::vector<int> diagonal;  // [rows] place of the diagonal block
    std::vector<double> value;  // [blocks * blockSize * blockSize]
    std::vector<double> rhs;    // [rows * blockSize]
    std::vector<WellBorder> wells;
    /// The part of the diagonal blocks that comes from accumulation, [rows * blockSize * blockSize]. Where
    /// given, the pressure equation of the two-stage method is formed with it; may stay empty.
    std::vector<double> accumulation;
    std::uint64_t patternStamp = 0;  // changes whenever the pattern does

    [[nodiscard]] std::size_t blocks() const { return column.size(); }
    [[nodiscard]] std::span<double> block(int place) {
        const auto size = static_cast<std::size_t>(blockSize) * static_cast<std::size_t>(blockSize);
        return {value.data() + static_cast<std::size_t>(place) * size, size};
    }
};

/// Where a connection stands in the pattern: block (first, second) and block (second, first).
struct ConnectionPlaces {
    int forward = 0;
    int backward = 0;
};

/// Builds pattern and storage from the connected pairs of rows (0-based, either order, repeats allowed, no
/// pair of a row with itself). Returns the places of each pair in the order given, so that assembly looks
/// nothing up.
std::vector<ConnectionPlaces> buildBlockPattern(int rows, int blockSize,
                                                std::span<const std::pair<int, int>> connections,
                                                BlockSystem& system);

/// Sets values, right sides, accumulation and the wells' numbers to 0; the storage stays.
void clearValues(BlockSystem& system);

/// How the Krylov iteration is preconditioned.
enum class BlockPreconditioner {
    Automatic,  // block ILU(0), two stages once those have been seen to cost less
    BlockIlu,
    TwoStage,
};

struct BlockSolveLimits {
    double tolerance = 0.005;  // of ||r|| / ||b||, rows scaled so that all equations weigh alike
    int iterations = 200;
    BlockPreconditioner preconditioner = BlockPreconditioner::Automatic;
};

/// What is kept from solve to solve: factors, hierarchy, work vectors, the record of costs.
struct BlockSolverMemory;
struct BlockSolverMemoryDeleter {
    void operator()(BlockSolverMemory* memory) const;
};
using BlockSolverMemoryPointer = std::unique_ptr<BlockSolverMemory, BlockSolverMemoryDeleter>;
BlockSolverMemoryPointer makeBlockSolverMemory();

/// Solves for the cells' unknowns, solution[row * blockSize + unknown], and the wells' pressures,
/// bhp[well]. Both enter with any content. Residual is the true one in the scale of the tolerance.
/// Failures: NotConverged (limit or breakdown above the tolerance; the best vectors stay),
/// NotANumber (also for a matrix with entries that are not finite).
SolveResult solveBlockSystem(const BlockSystem& system, const BlockSolveLimits& limits,
                             std::span<double> solution, std::span<double> bhp, BlockSolverMemory& memory);

/// Whether a solver word is answered by dense factors for coupled systems: the dense words are, and every
/// word on fewer cells than SmallestIterative.
bool solvesBlocksDensely(std::string_view word, int cells);
inline constexpr int SmallestIterative = 27;

/// The same system by dense LU factors with row pivoting: Singular, NotANumber, or Memory where it does
/// not fit.
SolveResult solveBlockSystemDense(const BlockSystem& system, std::span<double> solution,
                                  std::span<double> bhp, BlockSolverMemory& memory);

}  // namespace kvr
