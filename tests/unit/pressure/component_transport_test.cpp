#include "pressure/component_transport.hpp"

#include "component_row.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

constexpr double FaceFlow = 5.0;  // internal volume a day

/// A row without wells, on a flow of its own toward the last cell.
struct Stream {
    Row row;
    ComponentMakeUp makeUp;

    explicit Stream(CellId cells) : row(threeComponents(), cells, 100.0 * cells, 0.0) {
        row.fill({0.2, 0.3, 0.5}, 1500.0);
        for (CellId c = 1; c < cells; ++c) row.run.velocity.CellFaceFlux(c, 2) = FaceFlow;
        makeUp.count = 3;
        makeUp.faceKnown.assign(cells, AxisCount, ToldNowhere);
        makeUp.face.assign(cells, AxisCount * 4, 0.0);
        makeUp.end.assign(cells, 4, -1.0);
    }
    /// Through the upper face of a cell, as shares of what the cell itself would pass.
    void tell(CellId c, const Composition& shares) {
        const FlashState& flash = row.stage.cells.flash[static_cast<std::size_t>(c)];
        const double moles = phaseMolesIn(row.stage, row.run.units.VolumeFactor, row.state, c, true);
        makeUp.faceKnown(c, 1) = ToldUpward;
        for (std::size_t i = 0; i < 3; ++i) makeUp.face.row(c)[i] = shares[i] * moles * flash.liquid[i];
    }
    void move(double dt) {
        std::vector<SourceTotals> moved;
        moveComponents(row.run.units, row.grid, row.connections, row.tables, row.run.velocity, {}, makeUp, dt,
                       row.stage, row.state, moved);
    }
};

TEST(ComponentTransport, PassesAFaceAsItIsTold) {
    Stream told(3), own(3);
    told.tell(1, {0.5, 1.0, 1.25});
    const double before[] = {told.row.molesOf(0), told.row.molesOf(1), told.row.molesOf(2)};
    const double held = told.row.stage.amounts.moles(1, 1);
    const double asked = 2.0 * FaceFlow * told.makeUp.face.row(1)[0];
    told.move(2.0);
    own.move(2.0);
    EXPECT_NEAR(held - told.row.stage.amounts.moles(1, 1), asked, 1e-12 * held);
    EXPECT_NEAR(held - own.row.stage.amounts.moles(1, 1), 2.0 * asked, 1e-9 * held);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(told.row.molesOf(i), before[i], 1e-13 * before[i]) << i;
}

TEST(ComponentTransport, MeansOfMobilitiesCoverTheStepInCellsBesideAndAwayFromAFlow) {
    Stream stream(4);
    stream.row.run.velocity.CellFaceFlux(2, 2) = stream.row.run.velocity.CellFaceFlux(3, 2) = 0.0;
    const double idle = stream.row.stage.amounts.moles(4, 1);
    const double moles = stream.row.molesOf(0);
    stream.move(0.3 * stream.row.state.PoreVolume[1] / FaceFlow);
    // One phase has the same mobility whatever the substeps.
    for (CellId c = 1; c <= 4; ++c)
        EXPECT_NEAR(stream.row.stage.mean.oil[c], stream.row.state.LambdaO[c],
                    1e-12 * stream.row.state.LambdaO[c])
            << c;
    EXPECT_EQ(stream.row.stage.amounts.moles(4, 1), idle);
    EXPECT_NEAR(stream.row.molesOf(0), moles, 1e-13 * moles);
    EXPECT_LT(stream.row.stage.amounts.moles(1, 1), stream.row.stage.amounts.moles(2, 1));
}

TEST(ComponentTransport, LeavesAMakeUpThatIsToldForTheOtherDirection) {
    Stream told(3), own(3);
    told.tell(1, {0.5, 1.0, 1.25});
    told.makeUp.faceKnown(1, 1) = ToldDownward;
    told.move(2.0);
    own.move(2.0);
    EXPECT_EQ(told.row.stage.amounts.moles(1, 1), own.row.stage.amounts.moles(1, 1));
}

TEST(ComponentTransport, FollowsNoMakeUpThatWouldOverdrawTheCell) {
    Stream told(3);
    told.tell(1, {400.0, 0.0, 0.0});
    const double before = told.row.molesOf(0);
    told.move(2.0);
    for (CellId c = 1; c <= 3; ++c) EXPECT_GE(told.row.stage.amounts.moles(c, 1), 0.0);
    EXPECT_NEAR(told.row.molesOf(0), before, 1e-13 * before);
}

TEST(ComponentTransport, BringsCellsToWhatLinesLeaveAsFarAsTheFlowTurnsThemOver) {
    for (const double turns : {0.25, 1.0}) {
        Stream stream(3);
        auto& moles = stream.row.stage.amounts.moles;
        const double pores = stream.row.state.PoreVolume[1], all = moles(2, 1) + moles(2, 2) + moles(2, 3);
        for (const CellId c : {1, 2}) stream.tell(c, {1.0, 1.0, 1.0});
        stream.makeUp.left.assign(3, 4, 0.0);
        for (CellId c = 1; c <= 3; ++c)
            for (int i = 1; i <= 3; ++i) stream.makeUp.left(c, i) = moles(c, i) / pores;
        const double left = moles(2, 1), excess = 0.1 * all;
        // The first cell has what it gives beside what it is left; the next one something that it is not.
        for (int i = 1; i <= 3; ++i) moles(1, i) *= 1.0 + turns;
        moles(2, 1) += excess;
        const double before = stream.row.molesOf(0);
        stream.move(turns * pores / FaceFlow);
        EXPECT_NEAR(moles(2, 1), left + (1.0 - turns) * excess, 1e-5 * left) << turns;
        EXPECT_NEAR(stream.row.molesOf(0), before, 1e-12 * before) << turns;
    }
}

TEST(ComponentTransport, FollowsLittleOfAMakeUpThatTheLinesDoNotAgreeWith) {
    Stream told(3), own(3);
    told.tell(1, {0.9, 1.0, 1.1});
    const double pores = told.row.state.PoreVolume[1];
    const double days = 4.0 * pores / FaceFlow;  // four contents: a quarter of the flow follows
    // Enough flows in for the cell to give that.
    for (Stream* stream : {&told, &own})
        for (int i = 1; i <= 3; ++i) stream->row.stage.amounts.moles(1, i) *= 1000.0;
    const double start = told.row.stage.amounts.moles(1, 1);
    const double all = days * FaceFlow * told.makeUp.face.row(1)[0];
    told.move(days);
    own.move(days);
    const double gone = start - told.row.stage.amounts.moles(1, 1);
    const double goneOwn = start - own.row.stage.amounts.moles(1, 1);
    EXPECT_NEAR(goneOwn - gone, 0.25 * (goneOwn - all), 0.05 * (goneOwn - all));
}

}  // namespace
}  // namespace kvr
