#pragma once

#include "base/console.hpp"
#include "base/messages.hpp"
#include "base/units.hpp"
#include "base/written_files.hpp"
#include "deck/aquifers.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "deck/summary_request.hpp"
#include "eclipse/output_record.hpp"
#include "eclipse/outside_record.hpp"
#include "eclipse/restart_record.hpp"
#include "fluid/initial_conditions.hpp"
#include "fluid/tables.hpp"
#include "implicit/implicit_work.hpp"
#include "matching/match_record.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"
#include "optimization/records/optimization_record.hpp"
#include "pressure/component_stage.hpp"
#include "pressure/records/cell_state.hpp"
#include "pressure/records/pressure_work.hpp"
#include "pressure/records/velocity_field.hpp"
#include "pressure/wells/aquifer_record.hpp"
#include "pressure/wells/wells.hpp"
#include "report/balance_record.hpp"
#include "run/records/clock.hpp"
#include "run/records/command_line.hpp"
#include "run/records/match_start.hpp"
#include "run/records/output_streams.hpp"
#include "run/records/run_course.hpp"
#include "run/records/stage_times.hpp"
#include "run/records/step_record.hpp"
#include "streamline/line_stage.hpp"
#include "streamline/mapping/mapping_sums.hpp"
#include "streamline/tracing/launch_plan.hpp"
#include "streamline/tracing/streamline_record.hpp"

namespace kvr {

/// The records of one run. Made in main and handed down by reference: only the driver and the stages
/// directly under it see it whole; everything below takes the records it needs.
struct Simulation {
    Console console;
    OutputStreams outputs;
    UnitSystem units;
    RunOptions options;
    Schedule schedule;
    RunClock clock;
    StageTimes times;
    StatusLine status;  // what the console shows while it is a terminal
    ScreenAccount account;
    MessageRecord messages;
    WrittenFiles written;
    std::function<void()> atStop;
    CommandLine command;
    std::vector<SummaryRequest> summaryRequests;
    RunCourse course;
    StepLevel stepLevel;  // of the step that is being attempted
    StepControl control;
    int toldHundredth = 0;   // of the schedule, by the last line of progress
    double loopStart = 0.0;  // s, wall clock at the start of the time loop

    GridModel grid;
    ConnectionTable connections;
    FluidTables fluids;
    InitialConditions initial;
    GivenAquifers givenAquifers;

    CellState state;           // present
    CellState timeLevel;       // start of the pressure step, for accumulation and step cuts
    CellState iterationStart;  // old level of a step with global iterations
    PressureStage pressure;
    PressureWork pressureWork;
    WellRecord wells;
    WellRecord timeLevelWells;
    AquiferRecord aquifers;
    ComponentRun components;
    ImplicitWork implicit;
    VelocityField velocity;

    LaunchPlan launch;
    CellTags tags;
    ExitFlags exitFlags;
    MappingSums mapping;
    LineStage lines;
    double flatBedValue = -1.0;  // ft; largest lateral depth difference, kept for the run; negative: unset

    BalanceRecord balance;
    EclipseOutput eclipse;
    OutsideRun outside;
    RestartRecord restart;
    MatchRecord match;
    MatchStart matchStart;
    OptimizationRecord optimization;
};

}  // namespace kvr
