#pragma once

#include "base/console.hpp"
#include "deck/options.hpp"
#include "deck/schedule.hpp"
#include "eclipse/records.hpp"
#include "eclipse/well_response.hpp"

#include <span>
#include <string>
#include <string_view>

namespace kvr {

/// Vectors of an outside summary, as its index (.SMSPEC) names them.
struct SummarySpec {
    std::int32_t vectorCount = 0;  // that of KEYWORDS where DIMENS tells another
    std::vector<Text8> keywords;
    std::vector<Text8> wells;
    std::vector<std::int32_t> numbers;
    std::vector<Text8> units;
};

/// Reads an open .SMSPEC file. KEYWORDS and WGNAMES must be equally long, else the reading fails.
ReadResult readSummarySpec(const Console& console, RecordReader& reader, SummarySpec& spec);

/// Which vector gives the time, which ones give a response: places in PARAMS, 0-based.
struct SummaryPlan {
    int time = -1;  // -1: none; the last TIME counts
    struct Entry {
        std::size_t place;
        std::size_t target;  // in SummaryResponse::vectors, or ::connections
        bool isConnection;
    };
    std::vector<Entry> entries;
};

/// Matches the vectors with the mnemonics. A well's vectors share the slot of its name, if it is one of
/// `wells`; others, and a second vector of the same mnemonic and name, are passed over. Those of connections
/// are taken all.
SummaryPlan planResponse(const Console& console, const SummarySpec& spec, int componentCount,
                         std::span<const std::string> wells, SummaryResponse& response);

/// Whether the PARAMS of a step had the length that the index gives.
enum class StepFit { Fits, OtherLength };

/// Reads an open .S file into a new report of the response: the last PARAMS of the file, those before it
/// being the steps on the way there. A file without PARAMS gives no report.
ReadResult readSummaryStep(RecordReader& reader, const SummarySpec& spec, const SummaryPlan& plan,
                           SummaryResponse& response, StepFit& fit);

/// Reads .SMSPEC and the .S files from `firstStep` on that an outside run left in the working folder, and
/// replaces WELL_CALCULATED.DATA there; with history controls WELL_OBSERVED.DATA too. The wells of the whole
/// schedule bound the vectors of a mnemonic, and injectors have no rows.
void read_ECL_response(const Console& console, const RunOptions& options, const Schedule& schedule,
                       std::string_view header, int firstStep, SummaryResponse& response);

}  // namespace kvr
