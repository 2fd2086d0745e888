#pragma once

#include <string>
#include <vector>

namespace kvr {

/// A vector that the deck's SUMMARY section asks for.
struct SummaryRequest {
    std::string mnemonic;            // "FOPR", "WOPR"
    std::vector<std::string> wells;  // of a W vector, as in the deck; empty: every well
};

}  // namespace kvr
