#include "run/records/output_streams.hpp"

#include "base/hard_stop.hpp"
#include "base/written_files.hpp"

#include <array>
#include <cerrno>

namespace kvr {

namespace {

constexpr std::size_t FileCount = static_cast<std::size_t>(OutputFile::Count);
constexpr int LastClosedStream = 200;  // streams up to this number end with the run, the rest with the log

// Heads that stand in their files from the start, whatever the options are.
struct HeadRow {
    OutputFile file;
    const char* text;
};
constexpr HeadRow Heads[] = {
    {OutputFile::ExclMbe, "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\n"},
    {OutputFile::ExclMbec,
     "TIME\tPVI\tMBE_O %\tMBE_W %\tMBE_G %\tPCT %\tMassbyCompoent ->     \tComponents ->     \n"},
    {OutputFile::DebugLog, "BLACKOIL   KVR   LAST UPDATE :   **/**/2012\n"},
};

[[noreturn]] void stopOnOpenFailure(const Console& console, const std::string& path, int status) {
    if (status == OpenErrorStatus)
        lineToBoth(console, "ERROR: File Open Error");
    else if (status == HandlingErrorStatus)
        lineToBoth(console, "ERROR: File handling Error");
    else
        both(console, "ERROR: File handling error, code = {}", status);
    lineToBoth(console, "Cannot create file for output. Check Directry path.");
    lineToBoth(console, path);
    hardStop(console);
}

std::FILE* openOrStop(const Console& console, const std::string& path, const char* mode) {
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), mode);
    if (file == nullptr) stopOnOpenFailure(console, path, errno);
    return file;
}

std::FILE*& slot(OutputStreams& outputs, OutputFile file) {
    return outputs.streams[static_cast<std::size_t>(file)];
}

void closeRange(OutputStreams& outputs, bool (*wanted)(int number)) {
    for (std::size_t n = 0; n < outputs.streams.size(); ++n) {
        std::FILE*& open = outputs.streams[n];
        if (open == nullptr || !wanted(streamNumber(static_cast<OutputFile>(n)))) continue;
        std::fclose(open);
        open = nullptr;
    }
}

}  // namespace

std::FILE* stream(const OutputStreams& outputs, OutputFile file) {
    const auto index = static_cast<std::size_t>(file);
    return index < outputs.streams.size() ? outputs.streams[index] : nullptr;
}

std::FILE* openForReplace(const Console& console, const std::string& path) {
    return openOrStop(console, path, "w");
}

std::FILE* openForAppend(const Console& console, const std::string& path) {
    return openOrStop(console, path, "a");
}

std::string outputPath(const OutputStreams& outputs, std::string_view name) {
    return outputs.folder + outputFileName(outputs.prefix, name);
}

std::FILE* openBeside(const Console& console, const OutputStreams& outputs, OutputFile file) {
    return openForReplace(console, outputPath(outputs, outputName(file)));
}

void openOutputs(const std::string& folder, OutputStreams& outputs, Console& console) {
    outputs.folder = folder;
    outputs.streams.assign(FileCount, nullptr);
    for (std::size_t n = 0; n < FileCount; ++n) {
        const std::string path = outputPath(outputs, outputName(static_cast<OutputFile>(n)));
        outputs.streams[n] = openForReplace(console, path);
        watchFile(console, outputs.streams[n], path);
    }
    for (const HeadRow& head : Heads) std::fputs(head.text, slot(outputs, head.file));
    console.log = stream(outputs, OutputFile::DebugLog);
}

void replaceOutput(const Console& console, OutputFile file, OutputStreams& outputs) {
    if (stream(outputs, file) == nullptr) return;
    const std::string path = outputPath(outputs, outputName(file));
    errno = 0;
    slot(outputs, file) = std::freopen(path.c_str(), "w", slot(outputs, file));
    if (slot(outputs, file) == nullptr) stopOnOpenFailure(console, path, errno);
    unwatchFile(console, slot(outputs, file));
    watchFile(console, slot(outputs, file), path);
}

void flushOutputs(const OutputStreams& outputs) {
    for (std::FILE* open : outputs.streams)
        if (open != nullptr) std::fflush(open);
}

void closeOutputs(OutputStreams& outputs) {
    closeRange(outputs, [](int number) { return number <= LastClosedStream; });
}

void closeLog(OutputStreams& outputs, Console& console) {
    if (console.files != nullptr) console.files->open.clear();
    console.log = nullptr;
    closeRange(outputs, [](int number) { return number > LastClosedStream; });
}

}  // namespace kvr
