#include "matching/match_reports.hpp"

#include "base/number_writer.hpp"

#include <cmath>

namespace kvr {

namespace {

constexpr std::string_view IterationHead = " Iteration   Traveltime RMS error   Total RMS error";
constexpr int Digits = 10;

struct QuantityFile {
    int offset;  // from OutputFile::HmObjFncNameFirst; the file of absolute values follows
    std::size_t place;
};
constexpr QuantityFile QuantityTables[] = {
    {0, quantity::Pressure}, {2, quantity::Fraction}, {4, quantity::GasOilRatio}, {6, quantity::Gas},
    {8, quantity::Oil},      {10, quantity::Cut},     {12, quantity::Water}};

OutputFile next(OutputFile file, int offset) {
    return static_cast<OutputFile>(static_cast<int>(file) + offset);
}

NumberWriter replaced(Simulation& s, OutputFile file) {
    replaceOutput(s.console, file, s.outputs);
    NumberWriter writer;
    writer.file = stream(s.outputs, file);
    return writer;
}

void putCell(NumberWriter& writer, double value) {
    put(writer, fmt::format(" {:>20}", number(value, Digits)));
}

void putIteration(NumberWriter& writer, std::size_t iteration) {
    put(writer, fmt::format(" {:>9}", iteration));
}

/// Iteration by iteration, a column for each value of `row`.
template <class Row>
void putByIteration(NumberWriter& writer, const std::vector<const RunMisfit*>& runs, const Row& row) {
    for (std::size_t n = 0; n < runs.size(); ++n) {
        putIteration(writer, n + 1);
        for (const double value : row(*runs[n])) putCell(writer, value);
        put(writer, "\n");
    }
    flush(writer);
}

void putWellHead(NumberWriter& writer, const std::vector<WellMatch>& wells, std::string_view last) {
    put(writer, fmt::format(" {:>9}", "Iteration"));
    for (const WellMatch& well : wells) put(writer, fmt::format(" {:>20}", well.name));
    if (!last.empty()) put(writer, fmt::format(" {:>20}", last));
    put(writer, "\n");
}

using WellValue = double (*)(const WellMisfit&, std::size_t);

void wellTable(Simulation& s, OutputFile file, const std::vector<const RunMisfit*>& runs, std::size_t place,
               WellValue value, bool summed) {
    NumberWriter writer = replaced(s, file);
    putWellHead(writer, s.match.keptWells, summed ? "Total" : "");
    putByIteration(writer, runs, [&](const RunMisfit& run) {
        std::vector<double> values;
        double total = 0.0;
        for (const WellMisfit& well : run.wells) {
            values.push_back(value(well, place));
            total += values.back();
        }
        if (summed) values.push_back(total);
        return values;
    });
}

double rms(const RunMisfit& run, double WellMisfit::*value) {
    double sum = 0.0;
    for (const WellMisfit& well : run.wells) sum += well.*value * well.*value;
    return run.wells.empty() ? 0.0 : std::sqrt(sum / static_cast<double>(run.wells.size()));
}

void iterationTables(Simulation& s, const std::vector<const RunMisfit*>& runs) {
    for (const OutputFile file : {OutputFile::HmObjFnc, OutputFile::InfoAspect}) {
        NumberWriter writer = replaced(s, file);
        put(writer, fmt::format("{}\n{}\n", IterationHead, std::string(IterationHead.size(), '-')));
        putByIteration(writer, runs, [](const RunMisfit& run) {
            return std::vector<double>{run.shiftRms, run.judged};
        });
    }
    NumberWriter times = replaced(s, OutputFile::InvLast);
    put(times, " Iteration   Pressure RMS error\n");
    putByIteration(times, runs,
                   [](const RunMisfit& run) { return std::vector<double>{rms(run, &WellMisfit::pressure)}; });
    NumberWriter shifts = replaced(s, next(OutputFile::InvFirst, 11));
    put(shifts, " Iteration   Traveltime RMS error   Sum of differences\n");
    putByIteration(shifts, runs, [](const RunMisfit& run) {
        return std::vector<double>{run.shiftRms, run.matched};
    });
}

/// Well, time, observed, calculated.
void curves(Simulation& s, OutputFile file, const std::vector<WellMatch>& wells, bool ofPressure) {
    const MisfitSettings settings = misfitSettings(s.options);
    NumberWriter writer = replaced(s, file);
    for (const WellMatch& well : wells) {
        const std::vector<double>& obs = ofPressure ? well.obs.pressure : matchedCurve(settings, well.obs);
        const std::vector<double>& cal = ofPressure ? well.cal.pressure : matchedCurve(settings, well.cal);
        for (std::size_t i = 0; i < obs.size(); ++i) {
            put(writer, fmt::format("{:<8}", well.name));
            for (const double value : {well.obs.time[i], obs[i], cal[i]}) putCell(writer, value);
            put(writer, "\n");
        }
    }
    flush(writer);
}

void wellValues(Simulation& s, OutputFile file, const RunMisfit& run, double WellMisfit::*value) {
    NumberWriter writer = replaced(s, file);
    for (std::size_t w = 0; w < run.wells.size(); ++w) {
        put(writer, fmt::format("{:<8}", s.match.keptWells[w].name));
        putCell(writer, run.wells[w].*value);
        put(writer, "\n");
    }
    flush(writer);
}

void curveTables(Simulation& s, const std::vector<const RunMisfit*>& runs) {
    const auto inversion = [](int offset) { return next(OutputFile::InvFirst, offset); };
    wellValues(s, inversion(0), *runs.back(), &WellMisfit::pressure);
    curves(s, inversion(2), s.match.keptWells, true);
    curves(s, inversion(3), s.match.keptWells, false);
    wellValues(s, inversion(4), *runs.back(), &WellMisfit::shift);
    wellValues(s, inversion(6), *runs.front(), &WellMisfit::pressure);
    curves(s, inversion(7), s.match.firstWells, true);
    curves(s, inversion(8), s.match.firstWells, false);
    wellValues(s, inversion(9), *runs.front(), &WellMisfit::shift);
}

}  // namespace

void writeMatchTables(Simulation& s, const RunMisfit& last) {
    std::vector<const RunMisfit*> runs;
    for (const RunMisfit& run : s.match.accepted) runs.push_back(&run);
    if (runs.empty() || runs.back() != &last) runs.push_back(&last);
    iterationTables(s, runs);
    for (const QuantityFile& table : QuantityTables) {
        const OutputFile file = next(OutputFile::HmObjFncNameFirst, table.offset);
        wellTable(
            s, file, runs, table.place, [](const WellMisfit& w, std::size_t q) { return w.sum[q]; }, true);
        wellTable(
            s, next(file, 1), runs, table.place,
            [](const WellMisfit& w, std::size_t q) { return w.sumAbs[q]; }, true);
    }
    wellTable(
        s, OutputFile::HmObjFncBeta, runs, 0, [](const WellMisfit& w, std::size_t) { return w.slope; },
        false);
    curveTables(s, runs);
}

}  // namespace kvr
