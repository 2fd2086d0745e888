#pragma once

#include "deck/reading/section_reader.hpp"
#include "deck/summary_request.hpp"

#include <vector>

namespace kvr {

/// SUMMARY: vectors of the field, each alone on its line; vectors of wells, each with the names of its wells
/// (none: all of them, `*` stands for any end of a name) up to a slash. Others are reported and skipped.
void readSummary(SectionReader& reader, std::vector<SummaryRequest>& requests);

}  // namespace kvr
