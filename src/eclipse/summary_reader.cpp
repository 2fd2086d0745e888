#include "eclipse/summary_reader.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "base/text.hpp"
#include "eclipse/file_failure.hpp"
#include "eclipse/file_names.hpp"
#include "eclipse/keyword_loop.hpp"
#include "eclipse/well_data_files.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace kvr {

namespace {

constexpr int LastStep = 9999;
constexpr std::uint64_t MostSpecHeaders = 100000000, MostStepHeaders = 10000000;
constexpr std::string_view TimeKeyword = "TIME    ";

std::string nameOf(const Text8& text) {
    return std::string(trim(view(text)));
}

[[noreturn]] void stopOnSummaryFault(const Console& console, const RecordReader& reader) {
    lineToBoth(console, "ERROR: Summary file error( .SXXXX file )");
    lineToBoth(console, "       File I/O Error, in Summary file");
    both(console, "ERROR: File reading error, code = {}", reader.fault.status);
    both(console, "       Reading error, Last Keyword was {}", view(reader.lastKeyword));
    tellFaultPlace(console, reader);
    hardStop(console);
}

bool takeSpecBlock(const BlockHeader& header, const BlockData& data, SummarySpec& spec) {
    const std::string_view keyword = view(header.keyword);
    if (keyword == "DIMENS  ") {
        if (!data.integers.empty()) spec.vectorCount = data.integers.front();
        return true;
    }
    if (keyword == "KEYWORDS") {
        spec.keywords = data.texts;
        return true;
    }
    if (keyword == "WGNAMES ") {
        spec.wells = data.texts;
        return true;
    }
    if (keyword == "NUMS    ") {
        spec.numbers = data.integers;
        return true;
    }
    // The system of units alone is taken from these, so they do not count as used.
    if (keyword == "UNITS   ") spec.units = data.texts;
    return false;
}

/// Rates of liquids show the system.
ResponseUnits unitsOf(const SummarySpec& spec) {
    for (const Text8& unit : spec.units) {
        const std::string word = toUpper(nameOf(unit));
        if (word.starts_with("SM3")) return ResponseUnits::Metric;
        if (word.starts_with("STB") || word.starts_with("MSCF")) return ResponseUnits::Field;
    }
    return ResponseUnits::Unknown;
}

/// The slot of a well's name, a new one where it is the first vector of the well; 0 for a well that the run
/// does not have.
int slotOf(const std::string& well, std::span<const std::string> wells, SummaryResponse& response) {
    std::vector<std::string>& names = response.wellNames;
    const auto known = std::find(names.begin(), names.end(), well);
    const auto slot = static_cast<int>(known - names.begin()) + 1;
    if (known != names.end()) return slot;
    if (std::find(wells.begin(), wells.end(), well) == wells.end()) return 0;
    names.push_back(well);
    return slot;
}

/// Adds the vectors of one place in the summary index to the plan.
void planPlace(const Console& console, const SummarySpec& spec,
               const std::vector<ResponseMnemonic>& mnemonics, std::span<const std::string> wells,
               std::size_t place, std::set<std::pair<int, int>>& used,
               std::map<std::string, int>& connections, SummaryPlan& plan, SummaryResponse& response) {
    const std::string keyword = padded(nameOf(spec.keywords[place]), TimeKeyword.size());
    for (const ResponseMnemonic& mnemonic : mnemonics) {
        if (keyword != mnemonic.name) continue;
        const std::string well = nameOf(spec.wells[place]);
        if (mnemonic.id == response::CVFR) {
            const int number = place < spec.numbers.size() ? spec.numbers[place] : 0;
            plan.entries.push_back({place, response.connections.size(), true});
            response.connections.push_back({well, number, ++connections[well], {}});
        } else {
            const bool ofField = mnemonic.id >= response::FPR && mnemonic.id <= response::FGIR;
            const int slot = ofField ? 1 : slotOf(well, wells, response);
            if (slot == 0 || !used.emplace(mnemonic.id, slot).second) continue;
            plan.entries.push_back({place, response.vectors.size(), false});
            response.vectors.push_back({mnemonic.id, slot, {}});
        }
        log(console, " Key Found -> {} :: {}", mnemonic.name, view(spec.wells[place]));
    }
}

double valueAt(const std::vector<float>& params, std::size_t place) {
    return place < params.size() ? static_cast<double>(params[place]) : 0.0;
}

/// A step that leads to the next report; one that ends at a report stands in its place.
StepBetween stepBetween(const std::vector<float>& params, const SummaryPlan& plan,
                        const SummaryResponse& response) {
    StepBetween step{valueAt(params, static_cast<std::size_t>(plan.time)), response.time.size(), {}};
    step.values.resize(response.vectors.size());
    for (const SummaryPlan::Entry& entry : plan.entries)
        if (!entry.isConnection) step.values[entry.target] = valueAt(params, entry.place);
    return step;
}

void storeReport(const std::vector<float>& params, const SummaryPlan& plan, SummaryResponse& response) {
    response.time.push_back(valueAt(params, static_cast<std::size_t>(plan.time)));
    for (const SummaryPlan::Entry& entry : plan.entries) {
        const double value = valueAt(params, entry.place);
        if (entry.isConnection)
            response.connections[entry.target].values.push_back(value);
        else
            response.vectors[entry.target].values.push_back(value);
    }
}

void openSpec(const Console& console, const RunOptions& options, std::string_view header,
              RecordReader& reader) {
    const std::string path = outsideFile(options, header, ".SMSPEC");
    if (open_read(path, ByteOrder::Big, reader) == 0)
        return lineToLog(console, " ECLIPSE .SMSPEC File Found. ");
    lineToBoth(console, "ERROR: SMSPEC file is not given. Cannot Check .SXXXX file.");
    lineToBoth(console, "       File I/O Error, in Summary file");
    lineToBoth(console, path);
    hardStop(console);
}

bool hasVector(const SummaryResponse& response, int id) {
    return std::any_of(response.vectors.begin(), response.vectors.end(),
                       [id](const ResponseVector& vector) { return vector.id == id; });
}

void readSteps(const Console& console, const RunOptions& options, std::string_view header,
               const SummarySpec& spec, const SummaryPlan& plan, SummaryResponse& response) {
    for (int step = response.firstStep;; ++step) {
        if (step > LastStep)
            return lineToBoth(console, "ERROR :: Time Step does not match with SMSPEC and SUMMARY file");
        const std::string path = outsideFile(options, header, ".S", step);
        RecordReader reader;
        if (open_read(path, ByteOrder::Big, reader) != 0) {
            log(console, " Not Found -> {}", path);
            if (step == 0) continue;  // not every simulator writes one of time zero
            return;
        }
        log(console, " Start Reading -> {}", path);
        StepFit fit = StepFit::Fits;
        if (readSummaryStep(reader, spec, plan, response, fit) == ReadResult::Error)
            stopOnSummaryFault(console, reader);
        close(reader);
        if (fit == StepFit::OtherLength)
            return lineToBoth(console, "No. of Vectors not same in .smspec, .unsmry files");
        log(console, " -> Finished Reading {}", path);
    }
}

}  // namespace

ReadResult readSummarySpec(const Console& console, RecordReader& reader, SummarySpec& spec) {
    BlockHeader last;
    const ReadResult result = readBlocks(
        reader,
        [&](const BlockHeader& header, const BlockData& data) {
            last = header;
            const bool employed = takeSpecBlock(header, data, spec);
            log(console, "{}{}",
                employed ? " SMSPEC Key employd -> " : " SMSPEC Key ignored :  ", view(header.keyword));
            return ReadResult::Ok;
        },
        MostSpecHeaders);
    if (result == ReadResult::Error) return result;
    if (spec.keywords.size() != spec.wells.size())
        return rejectBlock(reader, last, "KEYWORDS and WGNAMES are not equally long");
    // Files of this program tell the number of vectors of one well; what KEYWORDS counts holds then.
    spec.vectorCount = static_cast<std::int32_t>(spec.keywords.size());
    lineToLog(console, " -> Finished Reading SMSPEC.");
    return ReadResult::Ok;
}

SummaryPlan planResponse(const Console& console, const SummarySpec& spec, int componentCount,
                         std::span<const std::string> wells, SummaryResponse& response) {
    const std::vector<ResponseMnemonic> mnemonics = responseMnemonics(componentCount);
    std::set<std::pair<int, int>> used;  // mnemonic and slot
    std::map<std::string, int> connections;
    SummaryPlan plan;
    response.units = unitsOf(spec);
    for (std::size_t place = 0; place < spec.keywords.size(); ++place) {
        if (padded(nameOf(spec.keywords[place]), TimeKeyword.size()) == TimeKeyword)
            plan.time = static_cast<int>(place);
        else
            planPlace(console, spec, mnemonics, wells, place, used, connections, plan, response);
    }
    return plan;
}

ReadResult readSummaryStep(RecordReader& reader, const SummarySpec& spec, const SummaryPlan& plan,
                           SummaryResponse& response, StepFit& fit) {
    fit = StepFit::Fits;
    std::vector<float> params;
    std::vector<StepBetween> between;
    const ReadResult result = readBlocks(
        reader,
        [&](const BlockHeader& header, const BlockData& data) {
            if (view(header.keyword) != "PARAMS  ") return ReadResult::Ok;
            if (data.reals.size() != static_cast<std::size_t>(spec.vectorCount)) {
                fit = StepFit::OtherLength;
                return ReadResult::EndOfFile;
            }
            if (!params.empty()) between.push_back(stepBetween(params, plan, response));
            params = data.reals;
            return ReadResult::Ok;
        },
        MostStepHeaders);
    if (result != ReadResult::Ok || fit != StepFit::Fits || params.empty()) return result;
    storeReport(params, plan, response);
    response.between.insert(response.between.end(), between.begin(), between.end());
    return result;
}

void read_ECL_response(const Console& console, const RunOptions& options, const Schedule& schedule,
                       std::string_view header, int firstStep, SummaryResponse& response) {
    logReaderStart(console, " Function Called : read_ECL_response");
    response = {};
    response.firstStep = firstStep;
    RecordReader reader;
    openSpec(console, options, header, reader);
    WellDataFiles files = openWellData(console, options);
    SummarySpec spec;
    if (readSummarySpec(console, reader, spec) == ReadResult::Error) stopOnSummaryFault(console, reader);
    close(reader);
    // The last step of a schedule has every well.
    const SharedElements<ScheduleWell> wells =
        schedule.steps.empty() ? SharedElements<ScheduleWell>{} : schedule.steps.back().wells;
    std::vector<std::string> names;
    for (const ScheduleWell& well : wells) names.push_back(well.name);
    const SummaryPlan plan = planResponse(console, spec, options.componentCount, names, response);
    if (!names.empty() && !hasVector(response, response::WOPR))
        warn(console, "WARNING :: No WOPR is in the .SMSPEC file, oil rates of wells are not known");
    writeWellDataHeads(options.componentCount, files);
    if (plan.time < 0)
        lineToBoth(console, "ERROR :: No TIME keyword was in the .SMSPEC file.");
    else
        readSteps(console, options, header, spec, plan, response);
    writeWellDataRows(options.componentCount, wells, response, files);
    closeWellData(console, files);
    logReaderEnd(console, " Function Ends : read_ECL_response");
}

}  // namespace kvr
