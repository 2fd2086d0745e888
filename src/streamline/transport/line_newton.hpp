#pragma once

#include "fluid/tables.hpp"
#include "streamline/transport/line_dump.hpp"
#include "streamline/transport/line_gravity.hpp"
#include "streamline/transport/line_matrix.hpp"
#include "streamline/transport/solver_line.hpp"

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

/// Unknowns of a node, volumes per pore volume at its held factors: with gas Bw Cw, Bo Co and Bg Cg; without,
/// water alone, where it is the saturation. And the phases that flow.
template <bool Gas>
using Unknowns = std::array<double, Gas ? 3 : 1>;
template <bool Gas>
using Fluxes = std::array<double, Gas ? 3 : 2>;

/// d flux of phase p / d unknown q at [p][q].
template <bool Gas>
using FluxSlopes = std::array<Unknowns<Gas>, Gas ? 3 : 2>;

/// What a position holds at the start of a Newton step.
struct NodeStart {
    double Sw = 0.0, So = 0.0, Sg = 0.0, Rs = 0.0, bubblePoint = 0.0;
    double Cw = 0.0, Co = 0.0, Cg = 0.0;
    double fill = 1.0;  // share of the pores, runs with gas
};

/// Gravity exchange over the face behind a node: surface amounts per unit of total flow, and what the
/// unknowns of the two nodes do to them.
template <bool Gas>
struct FaceSlopes {
    Fluxes<Gas> rate{};
    FluxSlopes<Gas> here{}, next{};
};

/// Arrays over the positions of a line, [0..N].
template <bool Gas>
struct NewtonWork {
    std::vector<Unknowns<Gas>> unknowns;     // the iterate
    std::vector<Unknowns<Gas>> evaluated;    // where fluxes and slopes were worked out
    std::vector<Unknowns<Gas>> update;       // of the linear system, before its limits
    std::vector<Unknowns<Gas>> lastMove;     // with gravity: of the iteration before
    std::vector<double> mostMove;            // with gravity: what a node may move by
    std::vector<Fluxes<Gas>> evaluatedFlux;  // there
    std::vector<Fluxes<Gas>> iterateFlux;    // at the iterate
    std::vector<Fluxes<Gas>> closingFlux;    // what closes the balances of the iterate
    std::vector<FluxSlopes<Gas>> slopes;
    std::vector<FaceSlopes<Gas>> faces;  // [0] and [N] nothing; used with gravity only
};

/// Work record of implicit transport, one a thread: it reaches its size within the first lines.
struct LineNewton {
    LineMatrix matrix;
    std::vector<NodeStart> start;                     // [0..N]
    std::vector<std::array<GravityNode, 4>> gravity;  // [0..N], as evaluated and with each unknown raised
    NewtonWork<false> water;
    NewtonWork<true> three;
};

/// How Newton steps go.
struct NewtonControl {
    double tolerance = 1e-4;  // of the unknowns' change, at most 0.005
    int maximumIterations = 30;
    bool keepEndPoints = false;
    LineRoute route = LineRoute::Forward;
    const LineDump* dump = nullptr;  // where the matrices go, null: nowhere
};

/// Change of an unknown that is taken as it stands. Smaller costs more work on single nodes, larger more
/// iterations; measured flat between 0.003 and 0.02.
inline constexpr double LargestLinearStep = 0.005;

/// One backward Euler step of dt days on a loaded line, by Newton's method on all nodes at once:
///   B_p (C_p - C_p,old) + dt B_p (out F_p(i) - in F_p(i-1)) + dt B_p source_p = 0
/// for water, and with gas for water, oil and gas, F the upstream value, in and out the rates of the node
/// (1/DeltaTof where nothing is compressible), position 0 fixed; without gas oil fills the rest. Slopes are
/// one-sided differences of 1e-6. Sources are the gravity exchange along the line, where it is in use.
///
/// Updates are limited in flow order: where an unknown would change by more than 0.005, or what flows in
/// differs from what the linear system counted on, the balance of the node alone is solved with what now
/// flows in, by steps of at most 0.2 that are halved whenever they turn back. With gravity along the line,
/// where a node depends on both its neighbours, it takes the linear update in such steps instead, and how
/// full a node with gas is stays within twice and half of the start. Converged when no unknown changes by
/// more than the tolerance. The new amounts then come from the fluxes of the last linearisation, or from
/// those that leave a limited node what its iterate says, so that mass is conserved to rounding however loose
/// the tolerance; the states come from the amounts by the recovery of explicit transport. Adds dt times the
/// outlet fluxes to the line's sums. Tracers move with the water of the same fluxes, implicit like it.
///
/// `elapsed` days of the step are over; it only names dumped matrices.
/// Returns the iterations used; 0 where it did not converge: the line is then as it was.
int newtonStep(const FluidTables& tables, const NewtonControl& control, double elapsed, double dt,
               LineNewton& newton, SolverLine& line);

/// Readies the work record for a line that has been loaded: its arrays, and the fluxes at position 0.
void beginNewton(bool hasGas, LineNewton& newton, const SolverLine& line);

}  // namespace kvr
