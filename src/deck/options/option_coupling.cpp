#include "base/text.hpp"
#include "deck/options/option_handlers.hpp"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kvr {

namespace {

constexpr std::size_t CommandWidth = 2048;     // characters of the command line
constexpr std::size_t CopiedLineWidth = 1024;  // characters of a line that PERMFILE copies
constexpr std::string_view ConversionCommand = "ecl2ix";

/// A keyword without data.
void announceSwitch(SectionReader& reader, bool& flag, std::string_view message) {
    announce(reader, reader.keyword);
    flag = true;
    lineToBoth(consoleOf(reader), message);
}

void stopIfMissing(const SectionReader& reader, const std::string& path, std::string_view message) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) return;
    both(consoleOf(reader), "{}", message);
    lineToBoth(consoleOf(reader), path);
    stopAtPlace(reader);
}

[[noreturn]] void stopOnCopyFailure(const SectionReader& reader, const std::string& path) {
    const int status = errno;
    lineToBoth(consoleOf(reader), "ERROR: INCLUDE File Open Error");
    both(consoleOf(reader), "File I/O Error, {}", status);
    lineToBoth(consoleOf(reader), path);
    stopAtPlace(reader);
}

/// The lines of a file, each cut to the width that the copy keeps. Read whole before anything is
/// written: both names may mean the same file.
std::string linesToCopy(const SectionReader& reader, const std::string& path) {
    errno = 0;
    std::ifstream in(path);
    if (!in) stopOnCopyFailure(reader, path);
    std::string text;
    for (std::string line; std::getline(in, line);) text.append(line, 0, CopiedLineWidth).push_back('\n');
    return text;
}

}  // namespace

void setRestartTracing(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.traceFromRestart, "TRACING FROM ECLIPSE");
    lineToBoth(consoleOf(reader), "JUST TRACING STREAMLINE FROM RST");
    options.inputMode = input_mode::EclipseForm;
}

void setWellHistoryOutput(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.outputWellHistory,
                   "Output WCHONHIST Data end of the simulation, check WCHONHIST_TEMP.DATA");
}

void setEclipseToTecplot(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.eclipseToTecplot, "Output Convert_ECL2Tecplot at the starting simulation");
}

void setDeleteEclipseRun(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.deleteEclipseRun, "Delete previous ECL run at the starting simulation");
}

void readSimulatorCommand(SectionReader& reader, RunOptions& options) {
    beginRecord(reader, reader.keyword);
    std::string_view line;
    if (nextLine(*reader.cursor, line)) options.simulatorCommand = trim(line.substr(0, CommandWidth));
    tellValue(reader, "-> ECLIPSE Run Command Specified    :", options.simulatorCommand);
    if (options.simulatorCommand.find(ConversionCommand) != std::string::npos) options.eclipseToIx = true;
}

void setEclipsePressure(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.useEclipsePressure, "ECLIPSE Pressure : USE Pressure data from ECLIPSE");
    options.traceFromRestart = true;
}

void setEclipseSaturation(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.useEclipseSaturation, "ECLIPSE Pressure : USE Pressure data from ECLIPSE");
    options.traceFromRestart = true;
}

void setEclipseTrans(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.useEclipseTrans, "USE Transmisibility data from ECLIPSE INIT file");
}

void setLinuxRun(SectionReader& reader, RunOptions& options) {
    announceSwitch(reader, options.linuxRun, "ECLIPSE Run by Linux System");
}

void copyPermFile(SectionReader& reader, RunOptions& options) {
    std::string target;
    std::string initial;
    const std::array<ListTarget, 2> targets = {&target, &initial};
    readRecord(reader, targets);
    const std::string folder(trim(reader.workingFolder));
    target = folder + std::string(trim(target));
    initial = folder + std::string(trim(initial));
    stopIfMissing(reader, target, "Error :: HistoryMatching, cannot find target  input file by PERMFILE");
    stopIfMissing(reader, initial, "Error :: HistoryMatching, cannot find initial  input file by PERMFILE");

    const std::string text = linesToCopy(reader, initial);
    options.permFileReplaced = text != linesToCopy(reader, target);
    std::ofstream out(target, std::ios::trunc);
    if (!(out << text).flush()) stopOnCopyFailure(reader, target);
    options.permFileTarget = target;
    tellValue(reader, "-> Finished Replacing HistoryMatch target File ::", target);
    tellValue(reader, "-> Finished Replacing HistoryMatch Initial  File ::", initial);
}

}  // namespace kvr
