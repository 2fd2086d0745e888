#pragma once

#include <string_view>

namespace kvr {

inline constexpr std::string_view Version = "1.1.0";

}  // namespace kvr
