#pragma once

#include "fluid/tables.hpp"
#include "streamline/line_dump.hpp"
#include "streamline/line_gravity.hpp"
#include "streamline/line_matrix.hpp"
#include "streamline/solver_line.hpp"

#include <array>
#include <vector>

namespace kvr {

/// What the Newton loop of implicit transport did; summed over lines for the closing table.
struct NewtonCounts {
    long long steps = 0;       // accepted
    long long iterations = 0;  // of accepted and repeated steps
    long long halvings = 0;
};

NewtonCounts& operator+=(NewtonCounts& sum, const NewtonCounts& more);

/// What a position holds at the start of a Newton step.
struct NodeStart {
    double Sw = 0.0, So = 0.0, Sg = 0.0, Rs = 0.0, bubblePoint = 0.0;
    double Cw = 0.0, Co = 0.0, Cg = 0.0;
};

/// Unknowns of a node as volumes per pore volume at its held factors: Bw Cw, and with gas Bo Co and Bg Cg.
using NodeUnknowns = std::array<double, 3>;

/// d flux of phase p / d unknown q at [p][q].
using NodeSlopes = std::array<std::array<double, 3>, 3>;

/// Gravity exchange over the face behind a node: surface amounts per unit of total flow, and what the
/// unknowns of the two nodes do to them.
struct FaceSlopes {
    std::array<double, 3> rate{};
    NodeSlopes here{}, next{};
};

/// Work record of implicit transport, one a thread: it reaches its size within the first lines.
struct LineNewton {
    LineMatrix matrix;
    std::vector<NodeStart> start;         // [0..N]
    std::vector<NodeUnknowns> unknowns;   // [0..N], the iterate
    std::vector<NodeUnknowns> evaluated;  // [0..N], where fluxes and slopes were worked out
    std::vector<NodeUnknowns> update;     // [0..N], last change of the iterate, before its limits
    std::vector<NodeSlopes> slopes;       // [0..N], of the fluxes F
    std::vector<std::array<GravityNode, 4>> gravity;  // [0..N], at the iterate and with each unknown raised
    std::vector<std::array<double, 3>> flux;  // [0..N], what closes the balances of the iterate
    std::vector<FaceSlopes> faces;        // [0..N], [0] and [N] nothing; used with gravity only
};

/// How Newton steps go.
struct NewtonControl {
    double tolerance = 1e-4;  // of the unknowns' change
    int maximumIterations = 30;
    bool keepEndPoints = false;
    LineRoute route = LineRoute::Forward;
    const LineDump* dump = nullptr;  // where the matrices go, null: nowhere
};

inline constexpr double SlopeStep = 1e-6;        // by which an unknown is raised for a slope
inline constexpr double LargestLinearStep = 0.05;  // change of an unknown that is taken as it stands

/// One backward Euler step of dt days on a loaded line, by Newton's method on all nodes at once:
///   B_p (C_p - C_p,old) + dt B_p (out F_p(i) - in F_p(i-1)) + dt B_p source_p = 0
/// for water, and with gas for water, oil and gas, F the upstream value, in and out the rates of the node
/// (1/DeltaTof where nothing is compressible), position 0 fixed; without gas oil fills the rest. Slopes are
/// one-sided differences of 1e-6. Sources are the gravity exchange along the line, where it is in use.
///
/// Updates are limited in flow order: where an unknown would change by more than 0.05, or the node before
/// was limited, the balance of the node alone is solved with what now flows in (see limitUpdate). Converged
/// when no unknown changes by more than the tolerance. The new amounts then come from the fluxes of the last
/// linearisation, so that mass is conserved to rounding however loose the tolerance, and the states from
/// the amounts by the recovery of explicit transport. Adds dt times the outlet fluxes to the line's sums.
///
/// Tracers move with the water of the same fluxes, implicit like it.
///
/// `elapsed` days of the step are over; it only names dumped matrices.
/// Returns the iterations used; 0 where it did not converge: the line is then as it was.
int newtonStep(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
               LineNewton& newton, SolverLine& line);

/// Readies the work record for a line that has been loaded: its arrays, and the fluxes at position 0.
void beginNewton(bool hasGas, LineNewton& newton, SolverLine& line);

}  // namespace kvr
