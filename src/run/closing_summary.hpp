#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// Notes what the closing summary tells of the wells; comes behind every step.
void noteCourse(Simulation& simulation);

/// The same of wells that an economic limit has closed behind the step.
void noteClosedWells(Simulation& simulation);

/// A balance error above the tolerable one is a warning; comes before the messages are counted.
void warnOfBalance(const Simulation& simulation);

/// Warns of a run by the fully implicit method alone whose steps were long for what happened in them.
void warnOfCoarseSteps(const Simulation& simulation);

/// The last lines of a run: how far it came and why it ended, totals and balance, wells that never flowed or
/// met their limit, warnings by kind, keywords that were not used, the files to open first.
void tellClosingSummary(const Simulation& simulation, std::string_view ending);

/// Warnings and unused keywords alone, behind a check of the deck.
void tellMessages(const Simulation& simulation);

}  // namespace kvr
