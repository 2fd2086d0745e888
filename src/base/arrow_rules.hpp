#pragma once

#include <string_view>

namespace kvr {

/// Rows before and behind what a routine says of its work.
inline constexpr std::string_view OpeningArrow = "------------------------------------------------------->";
inline constexpr std::string_view ClosingArrow = "<------------------------------------------------------";

}  // namespace kvr
