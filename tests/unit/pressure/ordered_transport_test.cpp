#include "pressure/ordered_transport.hpp"

#include "unit/fluid/table_samples.hpp"
#include "unit/streamline/flow_samples.hpp"
#include "unit/streamline/line_samples.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace kvr {
namespace {

/// Cells of a flow with everything that the transport reads; amounts are surface amounts.
struct TransportRun {
    samples::Flow flow;
    FluidTables fluids;
    CellAmounts amounts;
    TransportAccount account;
    MakeUp makeUp;

    TransportRun(samples::Flow made, FluidTables tables) : flow(std::move(made)), fluids(std::move(tables)) {
        for (CellId cell = 1; cell <= count(); ++cell) {
            flow.grid.SATNUM[cell] = 1;
            flow.state.Pressure[cell] = 3000.0;
            flow.state.MuW[cell] = 0.5;
            flow.state.MuO[cell] = 2.0;
        }
        for (CellArray<double>* array : {&amounts.water, &amounts.oil, &amounts.gas})
            array->assign(count(), 0.0);
    }
    [[nodiscard]] CellId count() const { return flow.grid.NCELLS; }
    void fill(double sw) {
        for (CellId cell = 1; cell <= count(); ++cell) {
            amounts.water[cell] = sw * flow.state.PoreVolume[cell] / flow.state.Bw[cell];
            amounts.oil[cell] = (1.0 - sw) * flow.state.PoreVolume[cell] / flow.state.Bo[cell];
        }
    }
    Buoyancy buoyancy;
    void advance(double days, double slope) {
        advanceInOrder(days, {slope, {}}, flow.grid, flow.connections, fluids, flow.velocity.CellFaceFlux,
                       flow.wells, makeUp, buoyancy, flow.state, amounts, account);
    }
    [[nodiscard]] ConservedAmounts total() const {
        ConservedAmounts sum;
        for (CellId cell = 1; cell <= count(); ++cell) {
            sum.water += amounts.water[cell];
            sum.oil += amounts.oil[cell];
            sum.gas += amounts.gas[cell];
        }
        return sum;
    }
    [[nodiscard]] ConservedAmounts throughWells() const {
        ConservedAmounts sum;
        for (const auto& well : account.wellRates)
            for (const ConservedAmounts& rate : well) {
                sum.water += rate.water;
                sum.oil += rate.oil;
                sum.gas += rate.gas;
            }
        return sum;
    }
    [[nodiscard]] double least() const {
        double least = 0.0;
        for (const CellArray<double>* array : {&amounts.water, &amounts.oil, &amounts.gas})
            for (const double amount : array->cells()) least = std::min(least, amount);
        return least;
    }
    void setFlow(CellId low, int axis, double rate) {
        flow.velocity.CellFaceFlux(low, 2 * axis) = rate;
        flow.velocity.CellFaceFlux(flow.connections.Neighbour(low, 2 * axis), 2 * axis - 1) = rate;
    }
    /// Adds a flow that turns about the high corner of a cell in the plane of x and y.
    void turn(CellId low, double rate) {
        const CellId right = flow.connections.Neighbour(low, 2), up = flow.connections.Neighbour(low, 4);
        setFlow(low, 1, flow.velocity.CellFaceFlux(low, 2) + rate);
        setFlow(right, 2, flow.velocity.CellFaceFlux(right, 4) + rate);
        setFlow(up, 1, flow.velocity.CellFaceFlux(up, 2) - rate);
        setFlow(low, 2, flow.velocity.CellFaceFlux(low, 4) - rate);
    }
};

TransportRun shareRow(int cells, double pores, double rate) {
    TransportRun run(samples::column(cells, pores, rate), samples::sharesFlow());
    for (CellId cell = 1; cell <= cells; ++cell) run.flow.state.MuW[cell] = run.flow.state.MuO[cell] = 1.0;
    run.flow.wells.wells[0].connections[0].ConnQw = rate;
    return run;
}

void expectConserved(const TransportRun& run, const ConservedAmounts& before, double days) {
    const ConservedAmounts after = run.total(), wells = run.throughWells();
    EXPECT_NEAR(after.water, before.water + days * wells.water, 1e-12 * (before.water + before.oil));
    EXPECT_NEAR(after.oil, before.oil + days * wells.oil, 1e-12 * (before.water + before.oil));
    EXPECT_NEAR(after.gas, before.gas + days * wells.gas, 1e-12 * before.gas);
}

/// Over a short step of so many days, a longer and a very long one; oil is produced in each.
void expectConservedOverSteps(TransportRun& run, double shortest) {
    for (const double days : {shortest, 30.0, 1000.0}) {
        const ConservedAmounts before = run.total();
        run.account = {};
        run.advance(days, 4.0);
        expectConserved(run, before, days);
        EXPECT_GE(run.least(), 0.0);
        EXPECT_LT(run.throughWells().oil, 0.0);
    }
}

/// What a chain of tanks with a linear fraction holds after water of one pore volume of each has run in: of
/// the n-th 1 - e^-1 sum 1/k!, k < n (Erlang).
constexpr double ErlangShares[] = {0.6321206, 0.2642411, 0.0803014};

TEST(AdvanceInOrder, PassesWaterThroughAllCellsOfAChainInOneStep) {
    // Water reaches a tank more and more in the course of the step; did it come evenly, the third would hold
    // 8.55 and let out 0.498 a day.
    TransportRun run = shareRow(3, 100.0, 10.0);
    run.fill(0.0);
    run.advance(10.0, 800.0);  // substeps of a thousandth
    const double passed = 10.0 * (1.0 - ErlangShares[0] - ErlangShares[1] - ErlangShares[2]);
    EXPECT_NEAR(run.amounts.water[1], 100.0 * ErlangShares[0], 0.1);
    EXPECT_NEAR(run.amounts.water[2], 100.0 * ErlangShares[1], 0.1);
    EXPECT_NEAR(run.amounts.water[3], 100.0 * ErlangShares[2], 0.5);
    EXPECT_NEAR(run.account.wellRates[1][0].water, -passed, 0.05);
    EXPECT_NEAR(run.account.wellRates[1][0].oil, -(10.0 - passed), 0.05);
}

/// By how much water the last of three tanks is wrong after one pore volume in `steps` steps.
double errorOfChain(int steps) {
    TransportRun run = shareRow(3, 100.0, 10.0);
    run.fill(0.0);
    for (int step = 0; step < steps; ++step) run.advance(10.0 / steps, 1600.0);
    return std::abs(run.amounts.water[3] - 100.0 * ErlangShares[2]);
}

TEST(AdvanceInOrder, IsOfSecondOrderInTheStepDownAChain) {
    EXPECT_LT(errorOfChain(2), 0.3 * errorOfChain(1));
    EXPECT_LT(errorOfChain(4), 0.3 * errorOfChain(2));
}

TEST(AdvanceInOrder, RunsAgainstTheIndexAsWithIt) {
    TransportRun with = shareRow(4, 100.0, 10.0), against = shareRow(4, 100.0, 10.0);
    for (const CellId low : {1, 2, 3}) against.setFlow(low, 1, -10.0);
    against.flow.wells.wells[0].connections[0].ConnCell = 4;
    against.flow.wells.wells[1].connections[0].ConnCell = 1;
    for (TransportRun* run : {&with, &against}) {
        run->fill(0.3);
        run->advance(17.0, 3.0);
    }
    for (CellId cell = 1; cell <= 4; ++cell)
        EXPECT_DOUBLE_EQ(with.amounts.water[cell], against.amounts.water[5 - cell]);
    EXPECT_GT(with.amounts.water[1], with.amounts.water[4] + 1.0);
}

TEST(AdvanceInOrder, TakesTheKnownMakeUpOfFacesAndProducers) {
    TransportRun run = shareRow(2, 100.0, 10.0);
    run.fill(0.5);
    run.makeUp.faceKnown.assign(2, 3, 0);
    run.makeUp.face.assign(2, 3, {});
    run.makeUp.faceKnown(1, 1) = 1;
    run.makeUp.face(1, 1) = {0.2, 0.8, 0.0};
    run.makeUp.connectionKnown = {{0}, {1}};
    run.makeUp.connection = {{{}}, {{0.1, 0.9, 0.0}}};
    run.advance(3.0, 2.0);
    EXPECT_NEAR(run.amounts.water[1], 50.0 + 30.0 * (1.0 - 0.2), 1e-12);
    EXPECT_NEAR(run.amounts.water[2], 50.0 + 30.0 * (0.2 - 0.1), 1e-12);
    EXPECT_NEAR(run.amounts.oil[2], 50.0 + 30.0 * (0.8 - 0.9), 1e-12);
    EXPECT_NEAR(run.account.wellRates[1][0].water, -1.0, 1e-12);
    EXPECT_NEAR(run.account.wellRates[1][0].oil, -9.0, 1e-12);
    EXPECT_NEAR(run.account.wellRates[0][0].water, 10.0, 1e-12);
    EXPECT_EQ(run.account.deficit, 0.0);
}

/// A cell of 100 pore volumes half full of either fluid, into which 10 a day come in so many streams, `in` of
/// them water; a known make-up takes `out` parts of water.
TransportRun knownOutlet(double toldSw, double in = 8.0, double out = 0.82, int streams = 1) {
    TransportRun run = shareRow(2, 100.0, 10.0);
    std::vector<WellConnection>& inlets = run.flow.wells.wells[0].connections;
    inlets[0].ConnQw = in / streams;
    inlets[0].ConnQo = (10.0 - in) / streams;
    inlets.resize(static_cast<std::size_t>(streams), inlets[0]);
    run.fill(0.5);
    run.makeUp.faceKnown.assign(2, 3, 0);
    run.makeUp.face.assign(2, 3, {});
    run.makeUp.faceKnown(1, 1) = 1;
    run.makeUp.face(1, 1) = {out, 1.0 - out, 0.0};
    run.makeUp.Sw.assign(2, toldSw);
    return run;
}

TEST(AdvanceInOrder, FollowsAMakeUpInPartWhereItsSourceTellsAnotherSaturation) {
    // Followed in full, 40 days of 8 - 8.2 leave a water saturation of 0.42, off by 0.08: one part in eight
    // is followed by that, a quarter because the content turns over four times. Then
    // W' = 8 - 2.5 0.82 - 7.5 W / 100, from 50 towards 79.333 by exp(-3).
    TransportRun off = knownOutlet(0.5);
    off.advance(40.0, 790.0);
    EXPECT_NEAR(off.amounts.water[1], 79.3333 - 29.3333 * std::exp(-3.0), 0.005);
    expectConserved(off, {100.0, 100.0, 0.0}, 40.0);
}

TEST(AdvanceInOrder, FollowsAMakeUpInFullWhereItsSourceAgreesOrTheContentTurnsOverLessThanOnce) {
    TransportRun right = knownOutlet(0.42);
    right.advance(40.0, 1.0);
    EXPECT_NEAR(right.amounts.water[1], 42.0, 1e-12);
    TransportRun near = knownOutlet(0.429);
    near.advance(40.0, 1.0);
    EXPECT_NEAR(near.amounts.water[1], 42.0, 1e-12);
    TransportRun shortStep = knownOutlet(0.9);
    shortStep.advance(9.0, 1.0);
    EXPECT_NEAR(shortStep.amounts.water[1], 48.2, 1e-12);
}

TEST(AdvanceInOrder, FollowsAMakeUpAsFarAsAFrontStandsInTheCell) {
    // Water comes in at 0.51 and what is known is 0.52, where 0.5 leave: W' = 5.1 - 10 W / 100.
    TransportRun smooth = knownOutlet(0.491, 5.1, 0.52, 2);
    smooth.advance(9.0, 800.0);
    EXPECT_NEAR(smooth.amounts.water[1], 51.0 - std::exp(-0.9), 0.002);
    // 0.625 are off by a fifth of themselves, half way from a tenth to three: W' = 6.25 - 5 0.6 - 5 W / 100.
    TransportRun half = knownOutlet(0.5225, 6.25, 0.6, 2);
    half.advance(9.0, 800.0);
    EXPECT_NEAR(half.amounts.water[1], 65.0 - 15.0 * std::exp(-0.45), 0.002);
    // One way in and one way out is as lines tell.
    TransportRun straight = knownOutlet(0.491, 5.1, 0.52);
    straight.advance(9.0, 1.0);
    EXPECT_NEAR(straight.amounts.water[1], 50.0 - 9.0 * 0.1, 1e-12);
    // What lines know may be the front: 0.8 are off by three eighths. W' = 5 - 8.
    TransportRun told = knownOutlet(0.23, 5.0, 0.8, 2);
    told.advance(9.0, 1.0);
    EXPECT_NEAR(told.amounts.water[1], 23.0, 1e-12);
    expectConserved(half, {100.0, 100.0, 0.0}, 9.0);
}

/// Cells of 100 that hold 70 of dead oil and 30 of gas, all of 1 cp and a factor of 1: krg = krog = 0.2, so
/// that either makes up half of what flows. The known make-ups are gas alone.
TransportRun gassedRow(double shownSg) {
    FluidTables fluids = samples::sharesFlow();
    fluids.hasGas = true;
    TransportRun run(samples::column(2, 100.0, 10.0), fluids);
    run.flow.wells.wells[0].connections[0].ConnQw = 10.0;
    for (CellId cell = 1; cell <= 2; ++cell) {
        CellState& state = run.flow.state;
        state.Bg[cell] = state.MuW[cell] = state.MuO[cell] = state.MuG[cell] = 1.0;
        state.Sg[cell] = shownSg;
        run.amounts.oil[cell] = 70.0;
        run.amounts.gas[cell] = 30.0;
    }
    run.makeUp.faceKnown.assign(2, 3, 0);
    run.makeUp.face.assign(2, 3, {});
    run.makeUp.faceKnown(1, 1) = 1;
    run.makeUp.face(1, 1) = {0.0, 0.0, 1.0};
    run.makeUp.connectionKnown = {{0}, {1}};
    run.makeUp.connection = {{{}}, {{0.0, 0.0, 1.0}}};
    return run;
}

TEST(AdvanceInOrder, LetsCellsWithFreeGasMakeUpWhatLeavesThem) {
    TransportRun free = gassedRow(0.3);
    free.advance(0.01, 1.0);
    EXPECT_NEAR(free.account.passed(1, 1).oil, 5.0, 1e-12);
    EXPECT_NEAR(free.account.passed(1, 1).gas, 5.0, 1e-12);
    EXPECT_NEAR(free.account.wellRates[1][0].oil, -5.0, 1e-12);
    EXPECT_NEAR(free.account.wellRates[1][0].gas, -5.0, 1e-12);
    expectConserved(free, {0.0, 140.0, 60.0}, 0.01);
    TransportRun without = gassedRow(0.0);
    without.advance(0.01, 1.0);
    EXPECT_NEAR(without.account.passed(1, 1).gas, 10.0, 1e-12);
    EXPECT_NEAR(without.account.wellRates[1][0].gas, -10.0, 1e-12);
}

TEST(AdvanceInOrder, TakesNothingThatIsNotThere) {
    // The producer asks its cell for more than it and what comes in hold.
    TransportRun run = shareRow(2, 100.0, 10.0);
    run.flow.wells.wells[1].connections[0].reservoirRate = -100.0;
    run.fill(0.5);
    const ConservedAmounts before = run.total();
    run.advance(10.0, 2.0);
    expectConserved(run, before, 10.0);
    EXPECT_GE(run.least(), 0.0);
    // 1000 asked for, 100 there and 100 come in: 800 or a little more are lacking.
    EXPECT_NEAR(run.account.deficit, 800.0 + run.amounts.water[2] + run.amounts.oil[2], 1e-9);
    EXPECT_LT(run.amounts.water[2] + run.amounts.oil[2], 20.0);
}

/// Rock of any strength between wells in all corners, and two rings.
TransportRun tangledField(FluidTables tables) {
    samples::Flow flow = samples::emptyFlow(9, 7, 2, 100.0, 100.0, 10.0);
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> any(0.0, 3.0);
    for (CellId cell = 1; cell <= flow.grid.NCELLS; ++cell)
        flow.grid.PERMX[cell] = std::pow(10.0, any(generator));
    samples::addWell(flow, "I1", "inj", 1, 300.0);
    samples::addWell(flow, "I2", "inj", 40, 100.0);
    samples::addWell(flow, "P1", "prd", 63, -250.0);
    samples::addWell(flow, "P2", "prd", 120, -150.0);
    samples::solveFlow(flow);
    TransportRun run(std::move(flow), std::move(tables));
    run.turn(12, 500.0);
    run.turn(90, 20.0);
    return run;
}

TEST(AdvanceInOrder, KeepsEveryComponentOnAnyField) {
    TransportRun run = tangledField(samples::plainFlood());
    for (CellId cell = 1; cell <= run.count(); ++cell) run.flow.state.Bo[cell] = 1.2 + 0.001 * cell;
    run.flow.wells.wells[0].connections[0].ConnQw = 300.0;
    run.flow.wells.wells[1].connections[0].ConnQw = 100.0;
    run.fill(0.25);
    expectConservedOverSteps(run, 1.0);
}

TEST(AdvanceInOrder, KeepsEveryComponentOfThreePhases) {
    TransportRun run = tangledField(samples::lightOil());
    for (CellId cell = 1; cell <= run.count(); ++cell) {
        run.flow.state.Bw[cell] = 1.04;
        run.flow.state.Bo[cell] = 1.5;
        run.flow.state.Bg[cell] = 1.1 * GasRatioFactor;
        run.flow.state.MuG[cell] = 0.02;
    }
    run.flow.wells.wells[0].connections[0].ConnQg = 300.0 / (1.1 * GasRatioFactor);
    run.flow.wells.wells[1].connections[0].ConnQw = 100.0 / 1.04;
    run.fill(0.25);
    for (CellId cell = 1; cell <= run.count(); ++cell) run.amounts.gas[cell] = 0.5 * run.amounts.oil[cell];
    expectConservedOverSteps(run, 1.0);
}

/// Four cells of 100 of pore volume: water comes into 1 and 4 gives, 10 a day; 1 -> 2 -> 4 -> 3 -> 1 turns.
TransportRun turningSquare(double turn) {
    TransportRun run(samples::emptyFlow(2, 2, 1, 10.0, 10.0, 10.0), samples::sharesFlow());
    samples::addWell(run.flow, "I", "inj", 1, 10.0);
    samples::addWell(run.flow, "P", "prd", 4, -10.0);
    for (CellId cell = 1; cell <= 4; ++cell) {
        run.flow.state.PoreVolume[cell] = 100.0;
        run.flow.state.MuW[cell] = run.flow.state.MuO[cell] = 1.0;
    }
    for (const auto& [low, axis] : {std::pair(1, 1), std::pair(1, 2), std::pair(2, 2), std::pair(3, 1)})
        run.setFlow(low, axis, 5.0);
    run.turn(1, turn);
    run.flow.wells.wells[0].connections[0].ConnQw = 10.0;
    run.fill(0.0);
    return run;
}

TEST(AdvanceInOrder, LetsTheCellsOfARingFeedEachOther) {
    // Water comes into 1, 1 -> 2 -> 4 -> 3 -> 1 turns, 4 gives. With a linear fraction and an even inflow of
    // the share w a cell without water ends at w (1 - e) and lets out w (1 - (1 - e) / n) in the mean, n its
    // throughput in pore volumes and e = exp(-n).
    constexpr double Days = 20.0, Pores = 100.0, Turn = 100.0;
    TransportRun run = turningSquare(Turn);
    const ConservedAmounts before = run.total();
    run.advance(Days, 100.0);  // substeps of less than a hundredth of a pore volume
    expectConserved(run, before, Days);
    EXPECT_GE(run.least(), 0.0);

    const double fast = Days * (Turn + 5.0) / Pores, slow = Days * (Turn - 5.0) / Pores;
    const auto meanShare = [](double n) { return 1.0 - (1.0 - std::exp(-n)) / n; };
    double w1 = 0.0, w2 = 0.0, w4 = 0.0, w3 = 0.0;
    for (int pass = 0; pass < 10000; ++pass) {
        w1 = (10.0 + (Turn - 5.0) * w3 * meanShare(slow)) / (Turn + 5.0);
        w2 = w1 * meanShare(fast);
        w4 = w2 * meanShare(fast);
        w3 = w4 * meanShare(fast);
    }
    EXPECT_NEAR(run.amounts.water[1] / Pores, w1 * (1.0 - std::exp(-fast)), 0.002);
    EXPECT_NEAR(run.amounts.water[2] / Pores, w2 * (1.0 - std::exp(-fast)), 0.002);
    EXPECT_NEAR(run.amounts.water[4] / Pores, w4 * (1.0 - std::exp(-fast)), 0.002);
    EXPECT_NEAR(run.amounts.water[3] / Pores, w3 * (1.0 - std::exp(-slow)), 0.002);
    EXPECT_NEAR(run.account.wellRates[1][0].water, -10.0 * w4 * meanShare(fast), 0.02);
}

TEST(AdvanceInOrder, MakesARingThatTurnsAThousandTimesTheFlowAStirredTank) {
    // 200 of water into 400 of pores, well mixed: 1 - e^-0.5 at the end; what leaves is the rest of 200.
    TransportRun run = turningSquare(10000.0);
    const ConservedAmounts before = run.total();
    run.advance(20.0, 800.0);  // substeps of a thousandth of the pore volume
    expectConserved(run, before, 20.0);
    const double share = 1.0 - std::exp(-0.5);
    for (CellId cell = 1; cell <= 4; ++cell) {
        EXPECT_NEAR(run.amounts.water[cell] / 100.0, share, 1e-3) << cell;
        EXPECT_NEAR(run.amounts.oil[cell] / 100.0, 1.0 - share, 1e-3) << cell;
    }
    EXPECT_NEAR(-20.0 * run.account.wellRates[1][0].water, 200.0 - 400.0 * share, 0.4);
    EXPECT_EQ(run.account.deficit, 0.0);
}

TEST(AdvanceInOrder, BringsRingsOfAnySpeedToTheirFixedPoint) {
    // By hand as in LetsTheCellsOfARingFeedEachOther: shares of what enters the four cells. The plain
    // iteration takes as many rounds as the ring turns times the flow through it.
    for (const double turn : {7.0, 40.0, 120.0, 159.0}) {
        constexpr double Days = 200.0;
        TransportRun run = turningSquare(turn);
        const ConservedAmounts before = run.total();
        run.advance(Days, 100.0);
        expectConserved(run, before, Days);
        EXPECT_GE(run.least(), 0.0);
        const double fast = Days * (turn + 5.0) / 100.0, slow = Days * (turn - 5.0) / 100.0;
        const auto mean = [](double n) { return 1.0 - (1.0 - std::exp(-n)) / n; };
        const double m = mean(fast) * mean(fast) * mean(fast) * mean(slow);
        const double w1 = 10.0 / (turn + 5.0 - (turn - 5.0) * m);  // the ring closed in one go
        EXPECT_NEAR(run.amounts.water[1] / 100.0, w1 * (1.0 - std::exp(-fast)), 0.002) << turn;
        EXPECT_NEAR(run.amounts.water[3] / 100.0,
                    w1 * mean(fast) * mean(fast) * mean(fast) * (1.0 - std::exp(-slow)), 0.002)
            << turn;
    }
}

TEST(AdvanceInOrder, KeepsEveryComponentInFastAndSlowRingsThatCross) {
    for (const double strength : {100.0, 1e4, 1e6}) {
        TransportRun run = tangledField(samples::plainFlood());
        run.turn(13, 0.3 * strength);
        run.turn(20, 2.0 * strength);
        run.turn(75, strength);
        for (CellId cell = 1; cell <= run.count(); ++cell) run.flow.state.Bo[cell] = 1.2 + 0.001 * cell;
        run.flow.wells.wells[0].connections[0].ConnQw = 300.0;
        run.flow.wells.wells[1].connections[0].ConnQw = 100.0;
        run.fill(0.25);
        expectConservedOverSteps(run, 0.1);
    }
}

/// 10 a day from one cell into the next, both half full of water, mobilities 0.5 and 0.5; 64 and 53 lb/ft3.
TransportRun slopingRow(double depthOfSecond, double trans) {
    TransportRun run = shareRow(2, 100.0, 10.0);
    run.fill(0.5);
    run.flow.connections.DepthDiff.assign(2, 6, 0.0);
    run.flow.connections.DepthDiff(1, 2) = depthOfSecond;
    run.flow.connections.DepthDiff(2, 1) = -depthOfSecond;
    run.flow.connections.Trans.assign(2, 6, trans);
    run.flow.state.RhoW.assign(2, 64.0);
    run.flow.state.RhoO.assign(2, 53.0);
    run.buoyancy.acts = true;
    return run;
}

/// Water that passes a day in a step too short for the cells to change.
double waterPassed(double depthOfSecond, double trans, double capillary = 0.0) {
    TransportRun run = slopingRow(depthOfSecond, trans);
    if (capillary != 0.0) {
        run.buoyancy.pcow.assign(2, 0.0);
        run.buoyancy.pcow[2] = capillary;
    }
    run.advance(1e-7, 1.0);
    return run.account.passed(1, 1).water;
}

TEST(AdvanceInOrder, HoldsWaterBackOnTheWayUpAndOilOnTheWayDown) {
    // d = 11 * 20 / 144 psi = 1.527778, T 5, q 10: m lo = 5 * 1.527778 / 10 * 0.5 = 0.3819444 of the water
    // stay below, of the oil above.
    EXPECT_NEAR(waterPassed(-20.0, 5.0), 5.0 * (1.0 - 0.3819444), 1e-5);
    EXPECT_NEAR(waterPassed(20.0, 5.0), 10.0 - 5.0 * (1.0 - 0.3819444), 1e-5);
    EXPECT_NEAR(waterPassed(0.0, 5.0), 5.0, 1e-5) << "level";
}

TEST(AdvanceInOrder, TakesNoPhaseAlongThatGravityTurnsAgainstTheFlow) {
    EXPECT_NEAR(waterPassed(-20.0, 50.0), 0.0, 1e-5);
    EXPECT_NEAR(waterPassed(20.0, 50.0), 10.0, 1e-5);
}

TEST(AdvanceInOrder, LeavesOutOfGravityWhatCapillarityHoldsUp) {
    EXPECT_NEAR(waterPassed(-20.0, 5.0, 220.0 / 144.0), 5.0, 1e-5) << "at rest";
    EXPECT_NEAR(waterPassed(-20.0, 5.0, 110.0 / 144.0), 5.0 * (1.0 - 0.5 * 0.3819444), 1e-5) << "half";
    EXPECT_NEAR(waterPassed(-20.0, 5.0, -110.0 / 144.0), 5.0 * (1.0 - 0.3819444), 1e-5) << "the same way";
}

TEST(AdvanceInOrder, ChangesAKnownMakeUpByGravity) {
    TransportRun run = slopingRow(-20.0, 5.0);
    run.makeUp.faceKnown.assign(2, 3, 0);
    run.makeUp.face.assign(2, 3, {});
    run.makeUp.faceKnown(1, 1) = 1;
    run.makeUp.face(1, 1) = {0.3, 0.7, 0.0};
    run.advance(1e-7, 1.0);
    EXPECT_NEAR(run.account.passed(1, 1).water, 3.0 * (1.0 - 0.3819444), 1e-5);
    EXPECT_NEAR(run.account.passed(1, 1).oil, 7.0 + 3.0 * 0.3819444, 1e-5);
}

TEST(AdvanceInOrder, LeavesFacesOfCellsWithFreeGasToTheExchange) {
    TransportRun run = slopingRow(-20.0, 5.0);
    run.buoyancy.gasCells.assign(2, 0);
    run.buoyancy.gasCells[2] = 1;
    run.advance(1e-7, 1.0);
    EXPECT_NEAR(run.account.passed(1, 1).water, 5.0, 1e-5);
}

TEST(AdvanceInOrder, KeepsEveryComponentWithGravityOnTheWay) {
    for (const double depth : {-20.0, 20.0})
        for (const double trans : {5.0, 50.0}) {
            TransportRun run = slopingRow(depth, trans);
            expectConservedOverSteps(run, 0.1);
        }
}

}  // namespace
}  // namespace kvr
