#include "eclipse/well_response.hpp"

#include "base/text.hpp"

#include <fmt/format.h>

namespace kvr {

namespace {

struct MnemonicRow {
    int id;
    std::string_view name;
};

constexpr MnemonicRow Mnemonics[] = {
    {1, "WOPR"},  {2, "WWPR"},  {3, "WGPR"},   {4, "WBHP"},   {5, "WWCT"},   {6, "WGOR"},  {7, "WOPRH"},
    {8, "WWPRH"}, {9, "WGPRH"}, {10, "WBHPH"}, {11, "WWCTH"}, {12, "WGORH"}, {15, "CVFR"}, {20, "WWIR"},
    {21, "WGIR"}, {22, "WOIR"}, {23, "WWIRH"}, {24, "WGIRH"}, {25, "WOIRH"}, {26, "WVIR"}, {27, "WVPR"},
    {41, "FPR"},  {42, "FOE"},  {43, "FOEW"},  {44, "FOPR"},  {45, "FGPR"},  {46, "FWPR"}, {47, "FWCT"},
    {48, "FGOR"}, {49, "FWIR"}, {50, "FGIR"}};

}  // namespace

std::vector<ResponseMnemonic> responseMnemonics(int componentCount) {
    std::vector<ResponseMnemonic> all;
    for (const MnemonicRow& row : Mnemonics) all.push_back({padded(row.name, 8), row.id});
    for (const int first : {response::FirstComponent, response::SecondComponentRun})
        for (int c = 1; c <= componentCount; ++c)
            all.push_back({padded(fmt::format("WZMF_{:04d}", c), 8), first + c - 1});
    return all;
}

const std::vector<double>* responseOf(const SummaryResponse& response, int id, int slot) {
    for (const ResponseVector& vector : response.vectors)
        if (vector.id == id && vector.slot == slot) return &vector.values;
    return nullptr;
}

std::optional<double> responseAt(const SummaryResponse& response, int id, int slot,
                                 const ResponsePlace& place) {
    for (std::size_t n = 0; n < response.vectors.size(); ++n) {
        const ResponseVector& vector = response.vectors[n];
        if (vector.id != id || vector.slot != slot) continue;
        const std::vector<double>& values = place.between == nullptr ? vector.values : place.between->values;
        const std::size_t at = place.between == nullptr ? place.report : n;
        if (at < values.size()) return values[at];
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace kvr
