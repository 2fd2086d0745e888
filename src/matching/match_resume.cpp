#include "matching/match_resume.hpp"

#include "base/messages.hpp"
#include "base/written_files.hpp"
#include "eclipse/file_names.hpp"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace kvr {

namespace {

constexpr std::string_view Magic = "KVRMATCH0003";
constexpr std::uint64_t HashStart = 14695981039346656037ULL, HashFactor = 1099511628211ULL;  // FNV-1a
constexpr std::uint64_t MostItems = 1ULL << 24U, MostNumbers = 1ULL << 40U;

std::uint64_t hashOf(std::string_view bytes, std::uint64_t hash = HashStart) {
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= HashFactor;
    }
    return hash;
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string_view bytesOf(const std::vector<double>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double)};
}

/// Observed rates in the deck and the files that it includes.
std::uint64_t hashOfHistoryControls(const Schedule& schedule, std::uint64_t hash) {
    hash = hashOf(bytesOf(schedule.reportEnd), hash);
    for (const ScheduleStep& step : schedule.steps)
        for (const ScheduleWell& well : step.wells) {
            const double values[] = {well.histOil, well.histWater, well.histGas, well.histBhp};
            hash = hashOf({reinterpret_cast<const char*>(values), sizeof values}, hashOf(well.name, hash));
        }
    return hash;
}

/// Deck, observed histories and rock. Only what the deck says of the model counts, so the field of the first
/// run and not the present one; and of histories the user's file or, where the first run makes the file, the
/// rates that it is made of.
std::uint64_t fingerprint(const Simulation& s, bool observedGiven) {
    std::uint64_t hash = hashOf(contentsOf(s.options.deckFile));
    if (s.options.useHistoryControls && !observedGiven) {
        hash = hashOfHistoryControls(s.schedule, hash);
    } else {
        const std::string own = s.options.workingFolder + "WELL_OBSERVED.DATA";
        hash =
            hashOf(contentsOf(fileExists(own) ? own : outsideFolder(s.options) + "WELL_OBSERVED.DATA"), hash);
    }
    hash = hashOf(bytesOf(s.match.prior.slots), hash);
    return hashOf(bytesOf(s.grid.PORO.slots), hash);
}

/// A file that is being written, and the sum over what it holds so far.
struct Sink {
    std::FILE* file = nullptr;
    std::uint64_t hash = HashStart;
};

void put(Sink& sink, std::string_view bytes) {
    if (bytes.empty()) return;  // their address may be null
    sink.hash = hashOf(bytes, sink.hash);
    std::fwrite(bytes.data(), 1, bytes.size(), sink.file);
}

template <class T>
void putItem(Sink& sink, const T& item) {
    put(sink, {reinterpret_cast<const char*>(&item), sizeof item});
}

void putList(Sink& sink, const std::vector<double>& list) {
    putItem(sink, static_cast<std::uint64_t>(list.size()));
    put(sink, bytesOf(list));
}

void putText(Sink& sink, const std::string& text) {
    putItem(sink, static_cast<std::uint64_t>(text.size()));
    put(sink, text);
}

/// Bytes behind each other; what was put is what is taken.
struct Bytes {
    std::string text;
    std::size_t at = 0;
    bool good = true;
};

template <class T>
void takeItem(Bytes& bytes, T& item) {
    if (bytes.text.size() - bytes.at < sizeof item) {
        bytes.good = false;
        return;
    }
    std::memcpy(&item, bytes.text.data() + bytes.at, sizeof item);
    bytes.at += sizeof item;
}

void takeList(Bytes& bytes, std::vector<double>& list) {
    std::uint64_t size = 0;
    takeItem(bytes, size);
    if (!bytes.good || size > (bytes.text.size() - bytes.at) / sizeof(double)) {
        bytes.good = false;
        return;
    }
    list.resize(size);
    if (list.empty()) return;  // its data may be null
    std::memcpy(list.data(), bytes.text.data() + bytes.at, size * sizeof(double));
    bytes.at += size * sizeof(double);
}

void takeText(Bytes& bytes, std::string& text) {
    std::uint64_t size = 0;
    takeItem(bytes, size);
    if (!bytes.good || size > bytes.text.size() - bytes.at) {
        bytes.good = false;
        return;
    }
    text = bytes.text.substr(bytes.at, size);
    bytes.at += size;
}

/// The same walk puts and takes: `item`, `list` and `text` are one pair of routines or the other.
template <class Item, class List, class Text>
struct Walk {
    Item item;
    List list;
    Text text;
};

template <class Walk>
void walkSeries(const Walk& walk, WellSeries& series) {
    walk.text(series.name);
    for (std::vector<double>* list : {&series.time, &series.oil, &series.water, &series.gas, &series.pressure,
                                      &series.cut, &series.gasOilRatio})
        walk.list(*list);
    auto count = static_cast<std::uint64_t>(series.fractions.size());
    walk.item(count);
    if (count >= MostItems) return;
    series.fractions.resize(count);
    for (std::vector<double>& list : series.fractions) walk.list(list);
}

template <class Walk>
void walkRun(const Walk& walk, RunMisfit& run) {
    for (double* value :
         {&run.shiftRms, &run.shift, &run.matched, &run.pressure, &run.judged, &run.largestChange})
        walk.item(*value);
    walk.item(run.halvings);
    auto count = static_cast<std::uint64_t>(run.wells.size());
    walk.item(count);
    if (count >= MostItems) return;
    run.wells.resize(count);
    for (WellMisfit& well : run.wells) walk.item(well);
}

template <class Walk>
void walkWells(const Walk& walk, std::vector<WellMatch>& wells) {
    auto count = static_cast<std::uint64_t>(wells.size());
    walk.item(count);
    if (count >= MostItems) return;
    wells.resize(count);
    for (WellMatch& well : wells) {
        walk.text(well.name);
        walkSeries(walk, well.obs);
        walkSeries(walk, well.cal);
    }
}

template <class Walk, class T>
void walkNumbers(const Walk& walk, std::vector<T>& numbers) {
    auto count = static_cast<std::uint64_t>(numbers.size());
    walk.item(count);
    if (count >= MostNumbers) return;
    numbers.resize(count);
    for (T& number : numbers) walk.item(number);
}

template <class Walk>
void walkTried(const Walk& walk, TriedField& field) {
    walk.list(field.lnk.slots);
    walk.list(field.misfit);
}

template <class Walk>
void walkProbable(const Walk& walk, ProbableRecord& kept) {
    walkNumbers(walk, kept.data.rows.start);
    walkNumbers(walk, kept.data.rows.cell);
    walk.list(kept.data.rows.value);
    walk.list(kept.data.misfit);
    walk.list(kept.data.error);
    walkNumbers(walk, kept.data.datum);
    walkNumbers(walk, kept.kindEnds);
    auto names = static_cast<std::uint64_t>(kept.kindNames.size());
    walk.item(names);
    if (names >= MostItems) return;
    kept.kindNames.resize(names);
    for (std::string& name : kept.kindNames) walk.text(name);
    auto tried = static_cast<std::uint64_t>(kept.tried.size());
    walk.item(tried);
    if (tried >= MostItems) return;
    kept.tried.resize(tried);
    for (TriedField& field : kept.tried) walkTried(walk, field);
    walkTried(walk, kept.present);
}

template <class Walk>
void walkMatch(const Walk& walk, int& iteration, MatchRecord& match) {
    walk.item(iteration);
    walk.item(match.halvings);
    walk.item(match.lastUpdateMade);
    walk.item(match.closingRun);
    auto runs = static_cast<std::uint64_t>(match.accepted.size());
    walk.item(runs);
    if (runs >= MostItems) return;
    match.accepted.resize(runs);
    for (RunMisfit& run : match.accepted) walkRun(walk, run);
    walkWells(walk, match.firstWells);
    walkWells(walk, match.keptWells);
    for (CellArray<double>* field : {&match.base.x, &match.base.y, &match.base.z, &match.dlnk})
        walk.list(field->slots);
    walkProbable(walk, match.probable);
}

std::string pathOf(const Simulation& s) {
    return outputPath(s.outputs, outputName(OutputFile::HmResume));
}

bool fits(const Simulation& s, const MatchRecord& match) {
    const std::size_t slots = s.grid.PERMX.slots.size();
    for (const CellArray<double>* field : {&match.base.x, &match.base.y, &match.base.z, &match.dlnk})
        if (field->slots.size() != slots) return false;
    return !match.accepted.empty();
}

}  // namespace

void writeMatchResume(Simulation& s) {
    // A killed process leaves the old file whole or the new one.
    const std::string path = pathOf(s), fresh = path + ".new";
    Sink sink{openForReplace(s.console, fresh)};
    put(sink, Magic);
    putItem(sink, static_cast<std::uint64_t>(s.match.observedGiven ? 1 : 0));
    putItem(sink, fingerprint(s, s.match.observedGiven));
    const Walk walk{[&](const auto& item) { putItem(sink, item); },
                    [&](const std::vector<double>& list) { putList(sink, list); },
                    [&](const std::string& text) { putText(sink, text); }};
    int iteration = s.clock.hmIteration;
    walkMatch(walk, iteration, s.match);
    putItem(sink, std::uint64_t{sink.hash});
    closeWhole(s.console, sink.file);
    std::error_code failure;
    std::filesystem::rename(fresh, path, failure);
    if (failure)
        warn(s.console,
             "WARNING :: {} CANNOT BE REPLACED, A MATCH THAT IS STOPPED DOES NOT GO ON FROM HERE: {}", path,
             failure.message());
}

ResumeState readMatchResume(Simulation& s) {
    const std::string path = pathOf(s);
    if (!fileExists(path)) return ResumeState::None;
    Bytes bytes{contentsOf(path), Magic.size(), true};
    std::uint64_t sum = 0, print = 0, given = 0;
    if (bytes.text.size() < Magic.size() + 3 * sizeof sum || !bytes.text.starts_with(Magic))
        return ResumeState::Foreign;
    const std::size_t body = bytes.text.size() - sizeof sum;
    std::memcpy(&sum, bytes.text.data() + body, sizeof sum);
    bytes.text.resize(body);
    takeItem(bytes, given);
    takeItem(bytes, print);
    if (sum != hashOf(bytes.text) || print != fingerprint(s, given != 0)) return ResumeState::Foreign;
    const Walk walk{[&](auto& item) { takeItem(bytes, item); },
                    [&](std::vector<double>& list) { takeList(bytes, list); },
                    [&](std::string& text) { takeText(bytes, text); }};
    MatchRecord match = s.match;
    int iteration = 0;
    walkMatch(walk, iteration, match);
    if (!bytes.good || !fits(s, match)) return ResumeState::Foreign;
    s.match = std::move(match);
    s.match.observedGiven = given != 0;  // the file in the folder may be that of the run that was stopped
    s.clock.hmIteration = iteration;
    return ResumeState::Taken;
}

void removeMatchResume(const Simulation& s) {
    std::error_code ignored;
    std::filesystem::remove(pathOf(s), ignored);
}

}  // namespace kvr
