#pragma once

#include "pressure/solvers/linear_system.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace kvr::test {

/// Reproducible numbers on every platform (linear congruential, 64 bit).
struct RandomNumbers {
    std::uint64_t state = 1;
    double uniform();   // (0, 1)
    double gaussian();  // mean 0, deviation 1
};

struct Box {
    int nx = 1, ny = 1, nz = 1;
    [[nodiscard]] int cells() const { return nx * ny * nz; }
};

/// A rate well: its row is the sum over cells of index * rowWeight, its column in the cells' rows index.
struct GeneratedWell {
    std::vector<int> cells;  // 0-based
    std::vector<double> index;
    double rowWeight = 1.0;
};

/// Seven-point system on a box with cell permeabilities (harmonic means, axis factors) and storage on
/// the diagonal, wells behind the cells; the right-hand side is 0.
LinearSystem boxSystem(const Box& box, std::span<const double> permeability, std::array<double, 3> axisFactor,
                       double storage, std::span<const GeneratedWell> wells = {});

/// Permeabilities exp(deviation * gaussian).
std::vector<double> lognormalField(int count, double deviation, std::uint64_t seed);

/// Five wells through all layers (four corners and centre), indices of the size of a cell's own
/// couplings; row weights as for surface rates of liquids and of gas.
std::vector<GeneratedWell> fiveSpotWells(const Box& box, std::span<const double> permeability);

/// Multiplies couplings of randomly chosen rows on one side of a face only, a tenth of them by 0.
void oneSidedMultipliers(LinearSystem& system, double share, std::uint64_t seed);

/// A full matrix, row by row, as a system without rate wells.
LinearSystem fromFull(const std::vector<std::vector<double>>& rows, std::vector<double> rhs);

void randomRhs(LinearSystem& system, std::uint64_t seed);

/// ||b - A x|| / ||b||, summed here and not by the code under test.
double trueResidual(const LinearSystem& system, std::span<const double> x);

/// Solution by Gaussian elimination with partial pivoting, written out: the slow twin.
std::vector<double> eliminated(const LinearSystem& system);

}  // namespace kvr::test
