#include "step_field.hpp"

#include "pressure/pressure_step.hpp"
#include "run/start_up.hpp"
#include "streamline/tracing/exit_flags.hpp"
#include "streamline/tracing/launch.hpp"
#include "streamline/tracing/trace.hpp"

#include <filesystem>

namespace kvr::bench {

namespace {

constexpr double StepLength = 50.0;  // days

void launchAndBuildField(Simulation& s) {
    countLines(s.console, s.wells, s.connections, s.velocity, s.tags, s.launch);
    placeLines(s.grid, s.wells, {s.options.gridDimensionality, s.options.cornerPointTracing}, s.launch);
    s.lines.field.fromInjector = s.launch.LaunchMode != "prd";
    prepareExitFlags(s.console, s.connections, s.velocity, s.exitFlags);
    buildTraceField(s.options, s.grid, s.state, s.velocity, s.wells, s.tags, s.exitFlags,
                    s.lines.field.trace);
}

}  // namespace

std::unique_ptr<Simulation> firstStepField(const std::string& folder) {
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    auto simulation = std::make_unique<Simulation>();
    startUp(*simulation);
    simulation->clock.dt = simulation->clock.workDt = StepLength;
    PressureStep(*simulation, 0, 1);
    launchAndBuildField(*simulation);
    std::filesystem::current_path(here);
    return simulation;
}

std::string caseName(const std::string& folder) {
    return std::filesystem::path(folder).filename().string();
}

}  // namespace kvr::bench
