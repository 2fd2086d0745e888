#pragma once

#include "deck/reading/section_reader.hpp"

#include <string_view>

namespace kvr {

/// Units that items of keywords have and that differ between decks in field and in metric units.
enum class ItemUnit {
    None,
    Length,
    Pressure,
    LiquidRate,
    GasRate,
    GasRatio,     // Rs and gas-oil ratios
    LiquidRatio,  // of water to gas
    GasFvf,
    ConnectionFactor,
    Temperature,
    PerPressure,   // compressibilities
    Productivity,  // liquid rate per pressure; a liquid volume has the unit of a rate
    Injected,      // rate of the fluid in item 2
    Target,        // of the word in item 2
    WellControl    // of WELSPEC: of the type in item 8 and the control in item 10
};

/// What a number in units of the deck is in the other system's: `value * factor` but for temperatures.
double inOtherUnits(const SectionReader& reader, ItemUnit unit, double value);

/// A keyword whose handler has not copied anything, as the deck has it: its line, and from `begin` on the
/// lines up to the cursor, comments aside (they have been copied). In the copy of the other unit system the
/// items that have a unit are converted, a record's items counted from one slash to the next; defaults,
/// repeat counts and words stay as they are.
void copySource(const SectionReader& reader, std::string_view keywordLine, std::size_t begin);

}  // namespace kvr
