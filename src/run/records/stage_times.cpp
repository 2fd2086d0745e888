#include "run/records/stage_times.hpp"

#include "base/stopwatch.hpp"

namespace kvr {

StageTimer::StageTimer(StageTime& stage) : total(stage), wallStart(wallSeconds()), cpuStart(cpuSeconds()) {}

StageTimer::~StageTimer() {
    total.wall += wallSeconds() - wallStart;
    total.cpu += cpuSeconds() - cpuStart;
}

}  // namespace kvr
