#include "run/run_files.hpp"

#include "base/text.hpp"
#include "base/written_files.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fnmatch.h>
#include <fstream>

namespace kvr {

namespace {

namespace fs = std::filesystem;

/// Kinds of files of which a later run may leave fewer than an earlier one.
constexpr std::array<OutputFile, 18> ReportKinds = {
    OutputFile::EclipseRestart, OutputFile::EclipseSummary, OutputFile::EclipseLines,
    OutputFile::LinePlots,      OutputFile::RunRegions,     OutputFile::RateChanges,
    OutputFile::RateSchedule,   OutputFile::RateSteps,      OutputFile::PairMaps,
    OutputFile::PressureMap,    OutputFile::Co2Balance,     OutputFile::Co2Stores,
    OutputFile::Co2FreeZone,    OutputFile::Co2TrappedZone, OutputFile::Co2DissolvedZone,
    OutputFile::Co2SolidZone,   OutputFile::Co2KxZone,      OutputFile::Co2PorosityZone};

/// Name or pattern of a file in a run of the given header and prefix.
std::string nameOf(const std::string& header, const std::string& prefix, OutputFile file) {
    const std::string_view name = outputName(file);
    if (name.starts_with("*.")) return header + std::string(name.substr(1));
    return outputFileName(prefix, name);
}

std::string runName(const Simulation& s, OutputFile file) {
    return nameOf(s.options.headerName, s.outputs.prefix, file);
}

/// The name of a deck in a pattern means itself, whatever characters it has.
std::string literal(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (std::string_view("*?[\\").find(c) != std::string_view::npos) pattern += '\\';
        pattern += c;
    }
    return pattern;
}

std::string runPattern(const Simulation& s, OutputFile file) {
    return nameOf(literal(s.options.headerName), literal(s.outputs.prefix), file);
}

bool matches(const std::string& pattern, const std::string& name) {
    return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

/// A file of the outside run that this one reads or drives, though it has the name of one of ours.
bool isOutside(const RunOptions& options, OutputFile file) {
    const bool standsOnOutsideRun =
        options.traceFromRestart || options.eclipseToTecplot || options.eclipseToIx || options.ixExtract;
    if (!standsOnOutsideRun) return false;
    switch (file) {
        case OutputFile::EclipseGrid:
        case OutputFile::EclipseInit:
        case OutputFile::EclipseRestart:
        case OutputFile::EclipseSummarySpec:
        case OutputFile::EclipseSummary:
        case OutputFile::EclipseRft:
        case OutputFile::EclipseEnd:
            return true;
        default:
            return false;
    }
}

/// Regular files of the folder, by name.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code failure;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) names.push_back(entry->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// First words of the lines of the index that an earlier run left.
std::vector<std::string> listedBefore(const Simulation& s) {
    std::vector<std::string> names;
    std::ifstream index(outputPath(s.outputs, outputName(OutputFile::FilesIndex)));
    for (std::string line; std::getline(index, line);) names.emplace_back(firstWord(line));
    return names;
}

bool isStale(const Simulation& s, const std::string& name, const std::vector<std::string>& listed) {
    const bool ours = std::find(listed.begin(), listed.end(), name) != listed.end();
    return std::any_of(ReportKinds.begin(), ReportKinds.end(), [&](OutputFile kind) {
        return !isOutside(s.options, kind) && (ours || isOn(s.options, rowOf(kind).output)) &&
               matches(runPattern(s, kind), name);
    });
}

/// What a row says it holds; rows of one text stand behind each other.
std::string plainContent(std::string_view content) {
    std::string text(content.substr(0, content.find(": [")));
    std::erase(text, '`');
    return text;
}

}  // namespace

void removeStaleFiles(const Simulation& s) {
    const std::vector<std::string> listed = listedBefore(s);
    int removed = 0;
    for (const std::string& name : namesIn(s.outputs.folder)) {
        if (!isStale(s, name, listed)) continue;
        std::error_code failure;
        removed += fs::remove(s.outputs.folder + name, failure) ? 1 : 0;
    }
    if (removed > 0) both(s.console, "FILES OF AN EARLIER RUN REMOVED :: {}", removed);
}

void removeEmptyFiles(const Simulation& s) {
    if (!isNamed(s.command)) return;
    for (std::size_t n = 0; n < static_cast<std::size_t>(OutputFile::AllCount); ++n) {
        const auto file = static_cast<OutputFile>(n);
        if (isOutside(s.options, file)) continue;
        const std::string path = s.outputs.folder + runName(s, file);
        std::error_code failure;
        if (fs::is_regular_file(path, failure) && fs::file_size(path, failure) == 0)
            fs::remove(path, failure);
    }
}

void writeFilesIndex(const Simulation& s) {
    std::FILE* index = openBeside(s.console, s.outputs, OutputFile::FilesIndex);
    const std::vector<std::string> names = namesIn(s.outputs.folder);
    for (std::size_t n = 0; n < static_cast<std::size_t>(OutputFile::AllCount); ++n) {
        const auto file = static_cast<OutputFile>(n);
        if (file == OutputFile::FilesIndex || isOutside(s.options, file)) continue;
        const std::string pattern = runPattern(s, file);
        for (const std::string& name : names) {
            std::error_code failure;
            if (!matches(pattern, name) || fs::file_size(s.outputs.folder + name, failure) == 0) continue;
            std::fputs(fmt::format("{:<32} {}\n", name, plainContent(rowOf(file).content)).c_str(), index);
        }
    }
    closeWhole(s.console, index);
}

}  // namespace kvr
