#include "streamline/transport/node_data.hpp"

#include "unit/fluid/table_samples.hpp"
#include "unit/streamline/flow_samples.hpp"
#include "unit/streamline/line_samples.hpp"

#include <gtest/gtest.h>

namespace kvr {
namespace {

/// One node whose cell is an injector's, with the end points Swc .2, Sor .1, Sgc .05.
struct Inlet {
    FluidTables fluids = samples::lightOil();
    WellRecord wells;
    std::vector<NodeData> nodes{2};
    SolverLine line;

    explicit Inlet(const std::string& fluid) {
        fluids.regions[0].ConnateSw = 0.2;
        fluids.regions[0].ResidualSo = 0.1;
        fluids.regions[0].CriticalSg = 0.05;
        Well well;
        well.WellKind = "inj";
        well.InjectFluid = fluid;
        wells.wells.push_back(well);
        sizeSolverLine(1, 1.0, 0, line);
        line.tracedNodeCount = line.nodeCount = 1;
        line.tracedCell[1] = 1;
        line.injector = 1;
        nodes[1].Sw = 0.3;
        nodes[1].So = 0.6;
        nodes[1].Sg = 0.1;
        nodes[1].Rs = 150.0;
        nodes[1].Bw = 1.02;
    }
    void load(bool firstCellInjects) { loadInlet(nodes, fluids, wells, firstCellInjects, line); }
};

TEST(LoadNodes, GivesALongNodeWhatItCoversOfEveryCell) {
    // Cells of 10, 20 and 40 days under two nodes of 35: 10 and 20 days and 5 of the last, then 35 of it.
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {10.0, 20.0, 40.0});
    std::vector<NodeData> nodes(4);
    const double water[] = {0.0, 0.8, 0.5, 0.2};
    for (std::size_t c = 1; c <= 3; ++c) {
        line.tracedCell[c] = static_cast<CellId>(c);
        nodes[c].Sw = nodes[c].Cw = water[c];
        nodes[c].So = nodes[c].Co = 1.0 - water[c];
        nodes[c].expansion = 0.001 * static_cast<double>(c);
    }
    layNodes(NodeControl::Regular, 2.0 / 3.0, 1.0, line);
    ASSERT_EQ(line.nodeCount, 2);
    loadNodes(nodes, tables, {}, true, line);
    EXPECT_NEAR(line.nodes[1].Cw, (10.0 * 0.8 + 20.0 * 0.5 + 5.0 * 0.2) / 35.0, 1e-12);
    EXPECT_NEAR(line.nodes[1].Sw, line.nodes[1].Cw, 1e-12);
    EXPECT_NEAR(line.nodes[1].So, 1.0 - line.nodes[1].Cw, 1e-12);
    EXPECT_NEAR(line.nodes[1].expansion, 0.001 * (10.0 + 40.0 + 15.0) / 35.0, 1e-12);
    EXPECT_NEAR(line.nodes[2].Cw, 0.2, 1e-12);
    // The plain average over lines takes the cell at the middle of a node.
    loadNodes(nodes, tables, {}, false, line);
    EXPECT_EQ(line.nodes[1].Cw, 0.5);
}

TEST(LoadNodes, GivesALongNodeTheTablesAndTheLimitOfSolutionGasOfTheCellAtItsCentre) {
    const FluidTables tables = samples::lightOil();
    const FluidTables other = samples::lightOil();
    SolverLine line = samples::floodedLine(tables, {10.0, 20.0, 40.0});
    std::vector<NodeData> nodes(4);
    for (std::size_t c = 1; c <= 3; ++c) {
        line.tracedCell[c] = static_cast<CellId>(c);
        nodes[c].Sw = 0.2;
        nodes[c].So = 0.8;
        nodes[c].pressure = 3000.0;
        nodes[c].pvt = c == 2 ? &other : &tables;
        nodes[c].limitsRs = c == 2;
    }
    layNodes(NodeControl::Regular, 2.0 / 3.0, 1.0, line);
    loadNodes(nodes, tables, {}, true, line);
    EXPECT_EQ(line.nodes[1].pvt, &other);
    EXPECT_TRUE(line.nodes[1].limitsRs);
    EXPECT_EQ(line.nodes[2].pvt, &tables);
    EXPECT_FALSE(line.nodes[2].limitsRs);
}

TEST(LoadInlet, GivesInjectedWaterAllThatItsEndPointsLeave) {
    Inlet inlet("wat");
    inlet.load(true);
    EXPECT_DOUBLE_EQ(inlet.line.nodes[0].Sw, 0.85);
    EXPECT_DOUBLE_EQ(inlet.line.nodes[0].So, 0.1);
    EXPECT_DOUBLE_EQ(inlet.line.nodes[0].Sg, 0.05);
    EXPECT_DOUBLE_EQ(inlet.line.nodes[0].Cw, 0.85 / 1.02);
}

TEST(LoadInlet, MakesWaterTheOnlyFlowingPhaseOfAWaterInjector) {
    const FluidTables tables = samples::plainFlood();
    SolverLine line = samples::floodedLine(tables, {1.0});
    line.tracedCell[1] = 1;
    line.injector = 1;
    WellRecord wells;
    wells.wells.resize(1);
    wells.wells[0].WellKind = "inj";
    wells.wells[0].InjectFluid = "wat";
    std::vector<NodeData> nodes(2);
    nodes[1].Bw = 1.04;
    nodes[1].MuW = 0.5;
    nodes[1].MuO = 2.0;
    loadInlet(nodes, tables, wells, true, line);
    evaluateFluxes(tables.hasGas, 0, 0, line);
    EXPECT_NEAR(line.nodes[0].Fw, 1.0 / 1.04, 1e-12);
    EXPECT_EQ(line.nodes[0].Fo, 0.0);
}

TEST(LoadInlet, InjectsOilWithoutGasAndGasAtItsEndPoint) {
    Inlet oil("oil");
    oil.load(true);
    EXPECT_DOUBLE_EQ(oil.line.nodes[0].So, 0.75);
    EXPECT_EQ(oil.line.nodes[0].Rs, 0.0);
    Inlet gas("gas");
    gas.load(true);
    EXPECT_DOUBLE_EQ(gas.line.nodes[0].Sg, 0.7);
    EXPECT_DOUBLE_EQ(gas.line.nodes[0].Sw, 0.2);
}

TEST(LoadInlet, TakesTheCellAsItIsWhereNothingInjects) {
    Inlet inlet("wat");
    inlet.load(false);
    EXPECT_EQ(inlet.line.nodes[0].Sw, 0.3);
    EXPECT_EQ(inlet.line.nodes[0].Rs, 150.0);
    inlet.line.injector = 0;  // an injector cell whose well is not known: end points only
    inlet.load(true);
    EXPECT_EQ(inlet.line.nodes[0].Sw, 0.2);
    EXPECT_EQ(inlet.line.nodes[0].So, 0.1);
    EXPECT_EQ(inlet.line.nodes[0].Sg, 0.05);
}

TEST(LoadInlet, InjectsEachTracerByTheRowThatNamesIt) {
    Inlet inlet("wat");
    sizeSolverLine(1, 1.0, 2, inlet.line);
    inlet.line.tracedNodeCount = inlet.line.nodeCount = 1;
    inlet.line.tracedCell[1] = 1;
    inlet.fluids.tracerNames = {"SEA", "RIVER"};
    inlet.wells.wells[0].injectedTracers = {{"RIVE", 0.7}};
    inlet.load(true);
    EXPECT_EQ(inlet.line.tracer[0][0], 0.0);
    EXPECT_EQ(inlet.line.tracer[1][0], 0.7);
    inlet.wells.wells[0].injectedTracers = {{"ANY", 0.2}};  // names no tracer of the run: stands for all
    inlet.load(true);
    EXPECT_EQ(inlet.line.tracer[0][0], 0.2);
    EXPECT_EQ(inlet.line.tracer[1][0], 0.2);
}

TEST(GatherNodeData, KeepsTheAmountsOfTheOldLevelPerPresentPoreVolume) {
    samples::Flow flow = samples::column(3, 1000.0, 50.0);
    const FluidTables fluids = samples::plainFlood();
    CellState old = flow.state;
    for (CellId cell = 1; cell <= 3; ++cell) {
        flow.grid.SATNUM[cell] = 1;
        old.Sw[cell] = 0.3;
        old.So[cell] = 0.7;
        old.Bw[cell] = 1.01;
        old.Bo[cell] = 1.2;
        old.PoreFraction[cell] = 0.2;
        flow.state.Sw[cell] = 0.31;
        flow.state.So[cell] = 0.69;
        flow.state.Bw[cell] = 1.02;
        flow.state.Bo[cell] = 1.25;
        flow.state.PoreFraction[cell] = 0.19;
    }
    flow.velocity.CellFaceFlux(2, 2) = 60.0;  // cell 2 lets out 10 more than it takes in
    std::vector<NodeData> nodes;
    gatherNodeData(fluids, flow.grid, flow.state, old, flow.velocity, flow.wells, Storage::TimeLevel, 10.0,
                   nodes);
    EXPECT_NEAR(nodes[2].Cw, 0.3 / 1.01 * 0.2 / 0.19, 1e-14);
    EXPECT_NEAR(nodes[2].Co, 0.7 / 1.2 * 0.2 / 0.19, 1e-14);
    EXPECT_DOUBLE_EQ(nodes[2].expansion, 10.0 / 1000.0);
    EXPECT_EQ(nodes[1].expansion, 0.0);  // well cells
    EXPECT_EQ(nodes[3].expansion, 0.0);

    gatherNodeData(fluids, flow.grid, flow.state, old, flow.velocity, flow.wells, Storage::Expanded, 10.0,
                   nodes);
    EXPECT_NEAR(nodes[2].Cw, 1.1 * 0.31 / 1.02, 1e-14);
    gatherNodeData(fluids, flow.grid, flow.state, old, flow.velocity, flow.wells, Storage::Present, 10.0,
                   nodes);
    EXPECT_NEAR(nodes[2].Cw, 0.31 / 1.02, 1e-14);
    EXPECT_EQ(nodes[2].expansion, 0.0);
}

TEST(StorageOf, UsesTheOldLevelOnlyWhereItIsTheStartOfTheStep) {
    const FluidTables fluids = samples::plainFlood();
    RunOptions options;
    EXPECT_EQ(storageOf(options, fluids), Storage::TimeLevel);
    options.mapCount = 3;
    EXPECT_EQ(storageOf(options, fluids), Storage::Expanded);
    options.mapCount = 1;
    options.pressureUpdateFrequency = 2;
    EXPECT_EQ(storageOf(options, fluids), Storage::Expanded);
    options.lineCompressibility = false;
    EXPECT_EQ(storageOf(options, fluids), Storage::Present);
}

TEST(StorageOf, KeepsWholeAmountsInRunsWithGasOnExplicitCompressibleLines) {
    FluidTables fluids = samples::plainFlood();
    fluids.hasGas = true;
    RunOptions options;
    options.method = "streamline";
    EXPECT_EQ(storageOf(options, fluids), Storage::Whole);
    options.solverPhaseName = {"mas", "imp"};
    EXPECT_EQ(storageOf(options, fluids), Storage::TimeLevel);
    options.solverPhaseName = {"mas"};
    options.conservativeMapping = false;
    EXPECT_EQ(storageOf(options, fluids), Storage::TimeLevel);
    options.conservativeMapping = true;
    options.lineCompressibility = false;
    EXPECT_EQ(storageOf(options, fluids), Storage::Present);
}

TEST(AddCarriedAmounts, PutsWhatACellHoldsBeyondItsSaturationsOnItsNodes) {
    samples::Flow flow = samples::emptyFlow(2, 1, 1, 10.0, 10.0, 10.0);
    flow.state.PoreVolume[1] = flow.state.PoreVolume[2] = 50.0;
    std::vector<NodeData> nodes(3);
    nodes[2].Cg = 7.0;
    CellAmounts carried;
    for (CellArray<double>* array : {&carried.water, &carried.oil, &carried.gas}) array->assign(2, 0.0);
    carried.gas[2] = -100.0;
    addCarriedAmounts(flow.state, carried, nodes);
    EXPECT_DOUBLE_EQ(nodes[2].Cg, 5.0);
    EXPECT_TRUE(nodes[2].keepsAmounts);
}

}  // namespace
}  // namespace kvr
