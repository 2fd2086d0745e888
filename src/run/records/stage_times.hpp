#pragma once

namespace kvr {

/// Wall and processor seconds of one stage of a run, summed over the steps.
struct StageTime {
    double wall = 0.0;
    double cpu = 0.0;
};

/// Where the time of a run went; printed as a table at its end.
struct StageTimes {
    StageTime deck, initialisation, pressure, lines, splitting, reports;
    float cpuAtStart = 0.0F;  // processor seconds when the input had been found
};

/// Adds the time since its construction to a stage when it goes out of scope.
struct StageTimer {
    explicit StageTimer(StageTime& stage);
    ~StageTimer();
    StageTimer(const StageTimer&) = delete;
    StageTimer& operator=(const StageTimer&) = delete;

    StageTime& total;
    double wallStart;
    double cpuStart;
};

}  // namespace kvr
