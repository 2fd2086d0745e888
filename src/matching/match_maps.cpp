#include "matching/match_maps.hpp"

#include "base/number_writer.hpp"
#include "base/written_files.hpp"
#include "report/block_zone.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr std::string_view UpdatedTitle = "UpKx", ChangeTitle = "CgKx";
constexpr int InitialK = 10, FinalK = 1, IncrementK = 5;  // behind OutputFile::InvFirst

double logRatio(double now, double before) {
    return now > 0.0 && before > 0.0 ? std::log(now / before) : 0.0;
}

void addMap(const Simulation& s, std::FILE* file, const CellValue& value, std::string_view title) {
    writeBlockZone(file, s.grid, zoneNodes(s.options), value, s.clock.hmIteration, title);
}

void replaceMap(const Simulation& s, const std::string& name, const CellValue& value,
                std::string_view title) {
    std::FILE* file = openForReplace(s.console, outputPath(s.outputs, name));
    addMap(s, file, value, title);
    closeWhole(s.console, file);
}

void replaceInversionMap(Simulation& s, int offset, const CellValue& value, std::string_view title) {
    const auto file = static_cast<OutputFile>(static_cast<int>(OutputFile::InvFirst) + offset);
    replaceOutput(s.console, file, s.outputs);
    addMap(s, stream(s.outputs, file), value, title);
}

void writeLatest(const Simulation& s) {
    const CellArray<double>& k = s.grid.PERMX;
    replaceMap(
        s, std::string(outputName(OutputFile::HmPermLatest)), [&](CellId c) { return k[c]; }, "PERMX");
    replaceMap(
        s, std::string(outputName(OutputFile::HmPermLatestLog)), [&](CellId c) { return plottedLog10(k[c]); },
        "Kx_Log");
}

/// One zone for every update.
void addHistory(const Simulation& s) {
    if (!isOn(s.options, OutputSwitch::Tecplot)) return;
    const CellArray<double>& k = s.grid.PERMX;
    const auto add = [&](OutputFile file, const CellValue& value, std::string_view title) {
        addMap(s, stream(s.outputs, file), value, title);
    };
    add(
        OutputFile::HmPermChangeCum, [&](CellId c) { return logRatio(k[c], s.match.prior[c]); }, ChangeTitle);
    add(
        OutputFile::HmPermChangeInc, [&](CellId c) { return logRatio(k[c], s.match.base.x[c]); },
        ChangeTitle);
    add(
        OutputFile::HmPermHist, [&](CellId c) { return k[c]; }, UpdatedTitle);
    add(
        OutputFile::HmPermHistLog, [&](CellId c) { return plottedLog10(k[c]); }, "Kx_Log");
}

constexpr int ValuesPerLine = 6;

void putKeyword(NumberWriter& writer, std::string_view keyword, const CellArray<double>& values) {
    put(writer, keyword);
    for (CellId cell = 1; cell <= values.count(); ++cell) {
        put(writer, cell % ValuesPerLine == 1 ? "\n" : " ");
        putNumber(writer, values[cell]);
    }
    put(writer, "\n/\n");
}

/// The field as deck text.
void writeInclude(const Simulation& s) {
    NumberWriter writer;
    writer.file = openBeside(s.console, s.outputs, OutputFile::HmPermInclude);
    putKeyword(writer, "PERMX", s.grid.PERMX);
    putKeyword(writer, "PERMY", s.grid.PERMY);
    putKeyword(writer, "PERMZ", s.grid.PERMZ);
    flush(writer);
    closeWhole(s.console, writer.file);
}

/// What an outside simulator reads: its own values times the change, so that what its deck does to them acts
/// once.
void writeOutsidePermeability(const Simulation& s) {
    if (s.match.permFile.path.empty()) return;
    CellArray<double> ratio;
    ratio.assign(s.grid.NCELLS, 1.0);
    for (CellId cell = 1; cell <= ratio.count(); ++cell)
        if (s.match.prior[cell] > 0.0) ratio[cell] = s.grid.PERMX[cell] / s.match.prior[cell];
    writePermFile(s.console, s.match.permFile, ratio);
}

}  // namespace

void writeFirstMaps(Simulation& s) {
    replaceInversionMap(
        s, InitialK, [&](CellId c) { return s.match.prior[c]; }, UpdatedTitle);
    writeLatest(s);
}

void writeUpdateMaps(Simulation& s) {
    const CellArray<double>& k = s.grid.PERMX;
    replaceInversionMap(
        s, InitialK, [&](CellId c) { return s.match.prior[c]; }, UpdatedTitle);
    replaceInversionMap(
        s, FinalK, [&](CellId c) { return k[c]; }, UpdatedTitle);
    replaceInversionMap(
        s, IncrementK, [&](CellId c) { return logRatio(k[c], s.match.base.x[c]); }, UpdatedTitle);
    writeLatest(s);
    replaceMap(
        s, std::string(outputName(OutputFile::HmPermChange)),
        [&](CellId c) { return logRatio(k[c], s.match.prior[c]); }, ChangeTitle);
    // An update that is halved, or put back, keeps its number.
    const std::size_t number = std::max<std::size_t>(s.match.accepted.size(), 1);
    replaceMap(
        s, fmt::format("HM_ITE_{:04}", number), [&](CellId c) { return k[c]; }, "PERMX");
    addHistory(s);
    writeInclude(s);
    writeOutsidePermeability(s);
    flushOutputs(s.outputs);
}

}  // namespace kvr
