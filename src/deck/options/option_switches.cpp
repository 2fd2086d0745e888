#include "deck/options/option_handlers.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int FirstStepOnly = 99999;         // pressure update frequency that no run reaches
constexpr std::size_t SwitchesOfMethod = 6;  // of OPTIONKVR, its first a count
constexpr int MaxGlobalIterations = 1000;    // repeats of one step
constexpr int MaxBoundaryRows = 200;         // of BPCONST
constexpr int MaxConditioningRows = 10;      // of UPSCALE, SMTHPRM
constexpr std::size_t PropertyWidth = 8;     // characters of a word in the tables

void cutToWidth(std::string& word) {
    if (word.size() > PropertyWidth) word.resize(PropertyWidth);
}

void tellOptionSwitches(const SectionReader& reader, const RunOptions& options) {
    tellValue(reader, "-> Pressure Update Freq (0 <= 1upda) :", options.pressureUpdateFrequency);
    tellValue(reader, "-> Tecplot 8-point Corner (Fault)    :", yesNo(options.cornerPointHiRes));
    tellValue(reader, "-> Check Irreduciable Saturation     :", yesNo(options.keepIrreducibleSaturation));
    tellValue(reader, "-> Output Sensitivity for inversion? :", yesNo(options.outputSensitivity));
    tellValue(reader, "-> Constraint Upper Solution GOR     :", yesNo(options.bubblePointMaxLimit));
    tellValue(reader, "-> Constraint Lower Solution GOR     :", yesNo(options.bubblePointMinLimit));
    tellValue(reader, "-> Make sure that this option is false :", yesNo(options.internalDebug == 1));
    tellValue(reader, "-> Iterative IMPES, how many iteration :", options.globalIterations);
}

/// Tells of a switch whose value is neither 0 nor 1, and what it counts as.
void tellSwitchValue(const SectionReader& reader, std::size_t position, int value, int others) {
    if (value == 0 || value == 1) return;
    warnHere(reader, "WARNING :: {} {}: {} IS NEITHER 0 NOR 1, TAKEN AS {}", reader.keyword, position, value,
             others);
}

/// One output switch: position in the record is the position in the table. A switch is a flag or a
/// "Yes"/"No" word; the view files are on unless they are switched off.
struct OutputSwitch {
    std::string_view text;
    bool RunOptions::*flag;
    std::string RunOptions::*word;
    int acts;  // value that changes the switch
};

constexpr std::array<OutputSwitch, 10> OutputSwitches = {{
    {"-> Output in Debug(This file)          :", &RunOptions::debugOutput, nullptr, 1},
    {"-> Output in Excel   (.xls)            :", nullptr, &RunOptions::outputXls, 1},
    {"-> Output in Tecplot (.plt)            :", nullptr, &RunOptions::outputPlt, 1},
    {"-> Output Streamline                   :", &RunOptions::outputStreamline, nullptr, 1},
    {"-> Output Diffusive TOF                :", &RunOptions::outputDiffusiveTof, nullptr, 1},
    {"-> Output Pressure Matrix (Very Heavy) :", &RunOptions::outputPressureMatrix, nullptr, 1},
    {"-> Output Saturati Matrix (Very Heavy) :", &RunOptions::outputSaturationMatrix, nullptr, 1},
    {"-> Output in KVR view files            :", nullptr, &RunOptions::outputKvrView, 0},
    {"-> Output in ECLIPSE format (Binary)   :", nullptr, &RunOptions::outputEclipse, 1},
    {"-> Output Streamline in .SLN           :", nullptr, &RunOptions::outputSln, 1},
}};

void applyOutputSwitch(const OutputSwitch& row, int value, RunOptions& options) {
    if (value != row.acts) return;
    if (row.flag != nullptr)
        options.*row.flag = value == 1;
    else
        options.*row.word = yesNo(value == 1);
}

}  // namespace

void readOptionSwitches(SectionReader& reader, RunOptions& options) {
    std::array<int, 8> record = {1, 0, 0, 0, 0, 0, 0, 0};
    readRecord(reader, record);
    for (std::size_t n = 1; n < SwitchesOfMethod; ++n) tellSwitchValue(reader, n + 1, record[n], 0);
    options.pressureUpdateFrequency = record[0] < 1 ? FirstStepOnly : record[0];
    if (record[1] == 1) options.cornerPointHiRes = true;
    if (record[2] == 1) options.keepIrreducibleSaturation = true;
    if (record[3] == 1) options.outputSensitivity = true;
    if (record[4] == 1 || !options.hasGas) options.bubblePointMaxLimit = true;
    if (record[5] == 1 || !options.hasGas) options.bubblePointMinLimit = true;
    options.internalDebug = record[6];
    if (record[7] > MaxGlobalIterations)
        warnHere(reader, "WARNING :: {} 8: {} REPEATS OF EVERY STEP, {} ARE TAKEN", reader.keyword, record[7],
                 MaxGlobalIterations);
    if (record[7] > 0) options.globalIterations = std::min(record[7], MaxGlobalIterations);
    tellOptionSwitches(reader, options);
}

void readOutputSwitches(SectionReader& reader, RunOptions& options) {
    std::array<int, OutputSwitches.size()> record = {0, 0, 0, 0, 0, 0, 0, 1, 0, 0};
    readRecord(reader, record);
    for (std::size_t n = 0; n < record.size(); ++n) {
        const OutputSwitch& row = OutputSwitches[n];
        tellSwitchValue(reader, n + 1, record[n], 1 - row.acts);
        applyOutputSwitch(row, record[n], options);
        tellValue(reader, row.text,
                  row.flag != nullptr ? yesNo(options.*row.flag) : std::string_view(options.*row.word));
    }
}

void readBoundaryPressures(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.boundaryPressureRows.clear();
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    while (rows.rows < MaxBoundaryRows && nextTableRow(reader, rows)) {
        BoundaryPressureRow row;
        std::array<int, 7>& n = row.integers;
        const std::array<ListTarget, 9> targets = {&row.firstWord, &n[0], &n[1], &n[2],        &n[3],
                                                   &n[4],          &n[5], &n[6], &row.lastWord};
        rows.last = readList(*reader.cursor, targets);
        checkRead(reader, rows.last);
        cutToWidth(row.firstWord);
        cutToWidth(row.lastWord);
        options.boundaryPressureRows.push_back(row);
    }
}

void readUpscaling(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.flowUpscaling = true;
    options.upscaleRows.clear();
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    while (rows.rows < MaxConditioningRows && nextTableRow(reader, rows)) {
        ConditioningRow row;
        std::array<int, 3>& window = row.window;
        const std::array<ListTarget, 4> targets = {&row.name, &window[0], &window[1], &window[2]};
        rows.last = readList(*reader.cursor, targets);
        checkRead(reader, rows.last);
        cutToWidth(row.name);
        options.upscaleRows.push_back(row);
        both(consoleOf(reader), "UPSCALE : {} By WindowSize {} {} {}", row.name, window[0], window[1],
             window[2]);
    }
}

void readSmoothing(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.parameterSmoothing = true;
    options.smoothingRows.clear();
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    while (rows.rows < MaxConditioningRows && nextTableRow(reader, rows)) {
        ConditioningRow row;
        const std::array<ListTarget, 2> targets = {&row.name, &row.iterations};
        rows.last = readList(*reader.cursor, targets);
        checkRead(reader, rows.last);
        cutToWidth(row.name);
        options.smoothingRows.push_back(row);
        both(consoleOf(reader), "Smoothing Parameter : {} By {}", row.name, row.iterations);
    }
}

void setCo2Model(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.co2Model = true;
    options.tracerActive = true;
    options.tracerCount = 1;
    lineToBoth(consoleOf(reader), "Black Oil CO2 Sequestration Option By M.Blunt Model");
}

void readCo2SolidRate(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.co2SolidRate};
    readRecord(reader, targets);
    if (!(options.co2SolidRate >= 0.0 && options.co2SolidRate <= LargestSetting)) {
        warnHere(reader, "WARNING :: CO2SOLID {} IS NO RATE, NOTHING TURNS SOLID",
                 number(options.co2SolidRate));
        options.co2SolidRate = 0.0;
    }
    tellValue(reader, "-> Dissolved CO2 that turns solid, 1/day :", options.co2SolidRate);
}

}  // namespace kvr
