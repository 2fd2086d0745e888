#pragma once

#include "deck/options.hpp"
#include "deck/reading/section_reader.hpp"

namespace kvr {

/// Values set between the two passes over the deck.
void setOptionDefaults(RunOptions& options);

/// The TUNEKVR section, up to the next section word or the end of the file.
void readOptionSection(SectionReader& reader, RunOptions& options);

}  // namespace kvr
