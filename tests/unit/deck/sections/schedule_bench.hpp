#pragma once

#include "deck/sections/schedule_section.hpp"
#include "unit/deck/deck_bench.hpp"

#include <string>

namespace kvr {

/// A SCHEDULE section in memory with the records that it writes. Time zero is 1 January 2000.
struct ScheduleBench {
    DeckBench deck;
    RunOptions options;
    FluidTables tables;
    InitialConditions initial;
    Schedule schedule;
    RunClock clock;
    GridModel grid;
    ScheduleRecords records{options, tables, initial, schedule, clock, grid};

    explicit ScheduleBench(std::string_view text) : deck(text, "SCHEDULE") {}

    void read() { readScheduleSection(deck.reader, records); }
    void readAndClose() {
        read();
        closeSchedule(deck.console, schedule);
        buildTimeTables(deck.console, records);
    }
    const ScheduleWell& well(std::size_t n = 0) const { return schedule.steps.back().wells[n]; }
    const ScheduleStep& step() const { return schedule.steps.back(); }
};

inline const std::string TwoWells = "WELSPECS\n'P1' 'G1' 10 10 8400 'OIL' /\n'P2' 'G1' 1 1 8335 'OIL' /\n/\n";

}  // namespace kvr
