#include "deck/sections/grid_barriers.hpp"

#include "base/text.hpp"
#include "deck/reading/unit_copies.hpp"
#include "deck/sections/arithmetic_rows.hpp"
#include "deck/sections/given_arrays.hpp"
#include "deck/sections/grid_arithmetic.hpp"
#include "model/cell_box.hpp"
#include "model/multipliers.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

struct FaceWord {
    std::string_view word;
    int face;
};
constexpr FaceWord FaceWords[] = {
    {"X", 2},  {"X+", 2}, {"I", 2},  {"I+", 2}, {"X-", 1}, {"I-", 1}, {"Y", 4},  {"Y+", 4}, {"J", 4},
    {"J+", 4}, {"Y-", 3}, {"J-", 3}, {"Z", 6},  {"Z+", 6}, {"K", 6},  {"K+", 6}, {"Z-", 5}, {"K-", 5},
};
constexpr FaceWord MinusArrays[] = {{"MULTX-", 1}, {"MULTY-", 3}, {"MULTZ-", 5}};
constexpr std::string_view PoreVolumeArray = "MULTPV";

CellArray<double>& sized(const GridModel& grid, CellArray<double>& factors) {
    if (factors.empty()) factors.assign(grid.NCELLS, 1.0);
    return factors;
}

CellArray<double>& factorsOf(GridModel& grid, int face) {
    return sized(grid, grid.faceMultiplier[static_cast<std::size_t>(face) - 1]);
}

/// The factors that a row of EQUALS or MULTIPLY names; null for any other name.
CellArray<double>* namedFactors(std::string_view name, GridModel& grid) {
    if (matchesInThreeForms(name, PoreVolumeArray)) return &sized(grid, grid.MULTPV);
    for (const FaceWord& known : MinusArrays)
        if (matchesInThreeForms(name, known.word)) return &factorsOf(grid, known.face);
    return nullptr;
}

/// Factors of one value per cell, those below 0 told and taken for none.
void readFactors(SectionReader& reader, std::span<double> factors) {
    readCellArray(reader, factors);
    const auto isBad = [](double value) { return !(value >= 0.0); };
    const auto bad = std::count_if(factors.begin(), factors.end(), isBad);
    if (bad == 0) return;
    std::replace_if(factors.begin(), factors.end(), isBad, 1.0);
    warnHere(reader, "WARNING :: {} MULTIPLIERS BELOW ZERO, SET TO 1", bad);
}

std::string faultName(const std::string& text) {
    return std::string(trim(text));
}

bool isNamed(const std::string& fault, const std::string& name) {
    if (name.ends_with('*')) return fault.starts_with(name.substr(0, name.size() - 1));
    return fault == name;
}

/// Names of the faults that a row of MULTFLT stands for, each once.
std::vector<std::string> namedFaults(const GridModel& grid, const std::string& name) {
    std::vector<std::string> found;
    for (const FaultFaces& row : grid.faultFaces)
        if (isNamed(row.fault, name) && std::find(found.begin(), found.end(), row.fault) == found.end())
            found.push_back(row.fault);
    return found;
}

void keepFactor(const std::string& fault, double value, FaultMeans means,
                std::vector<FaultMultiplier>& kept) {
    for (FaultMultiplier& known : kept)
        if (known.fault == fault) {
            known.value = means == FaultMeans::Replace ? value : known.value * value;
            return;
        }
    kept.push_back({fault, value});
}

/// A factor below 0 would let fluids run uphill in pressure: it is taken for none.
double soundFactor(const SectionReader& reader, double value) {
    if (value >= 0.0) return value;
    warnHere(reader, "WARNING :: MULTIPLIER {} IS BELOW ZERO, SET TO 1", number(value));
    return 1.0;
}

}  // namespace

int faceOf(const SectionReader& reader, const std::string& word) {
    const std::string upper = toUpper(trim(word));
    for (const FaceWord& known : FaceWords)
        if (upper == known.word) return known.face;
    both(consoleOf(reader), "ERROR :: FACE {} IS NONE OF X, X-, Y, Y-, Z, Z-, I, I-, J, J-, K, K-", word);
    stopAtPlace(reader);
}

void readFaceMultiplier(SectionReader& reader, int face, GridModel& grid) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    readFactors(reader, factorsOf(grid, face).cells());
}

void readPoreVolumeMultiplier(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    readFactors(reader, sized(grid, grid.MULTPV).cells());
}

bool setFactors(const ArithmeticRow& row, bool multiplies, GridModel& grid) {
    CellArray<double>* factors = namedFactors(trim(row.name), grid);
    if (factors == nullptr) return false;
    forEachCell(grid, row.box, [&](CellId cell) {
        (*factors)[cell] = multiplies ? (*factors)[cell] * row.value : row.value;
    });
    return true;
}

void readFaults(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    int rows = 0;
    for (; nextRow(reader); ++rows) {
        FaultFaces row;
        CellBox& box = row.box;
        std::string name, face;
        const std::array<ListTarget, 8> targets = {&name,   &box.i1, &box.i2, &box.j1,
                                                   &box.j2, &box.k1, &box.k2, &face};
        checkRead(reader, readList(*reader.cursor, targets));
        checkBox(reader, grid, box);
        row.fault = faultName(name);
        row.face = faceOf(reader, face);
        copyRow(reader, {{.text = row.fault},
                         {1.0 * box.i1},
                         {1.0 * box.i2},
                         {1.0 * box.j1},
                         {1.0 * box.j2},
                         {1.0 * box.k1},
                         {1.0 * box.k2},
                         {.text = face}});
        grid.faultFaces.push_back(std::move(row));
    }
    endCopiedList(reader);
    both(consoleOf(reader), "-> Rows of faults = {}", rows);
}

void readFaultMultipliers(SectionReader& reader, FaultMeans means, const GridModel& grid,
                          std::vector<FaultMultiplier>& kept) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    while (nextRow(reader)) {
        std::string name;
        double value = 1.0;
        const std::array<ListTarget, 2> targets = {&name, &value};
        checkRead(reader, readList(*reader.cursor, targets));
        name = faultName(name);
        value = soundFactor(reader, value);
        copyRow(reader, {{.text = name}, {value}});
        const std::vector<std::string> faults = namedFaults(grid, name);
        if (faults.empty()) warnHere(reader, "WARNING :: FAULT {} IS NOT KNOWN, ROW SKIPPED", name);
        for (const std::string& fault : faults) keepFactor(fault, value, means, kept);
    }
    endCopiedList(reader);
}

namespace {

using Place = std::array<int, 3>;

CellId cellAt(const SectionReader& reader, const GridModel& grid, const Place& ijk) {
    checkBox(reader, grid, {ijk[0], ijk[0], ijk[1], ijk[1], ijk[2], ijk[2]});
    return *std::min_element(ijk.begin(), ijk.end()) < 1 ? 0 : cellIndex(grid, ijk[0], ijk[1], ijk[2]);
}

}  // namespace

void readConnectionRows(SectionReader& reader, ConnectionRow::Means means, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    const bool isFactor = means == ConnectionRow::Means::Multiply;
    const UnitSystem& units = *reader.units;
    const double unit = isFactor ? 1.0 : units.connectionFactor;
    const double copied = isFactor ? 1.0 : unit / otherUnits(units).connectionFactor;
    int rows = 0, withRegions = 0;
    for (; nextRow(reader); ++rows) {
        ConnectionRow row;
        Place a{}, b{};
        row.value = isFactor ? 1.0 : 0.0;
        std::array<int, 4> regions{};  // of saturation and of pressure tables, one a side
        const std::array<ListTarget, 11> targets = {&a[0],       &a[1],       &a[2],      &b[0],
                                                    &b[1],       &b[2],       &row.value, &regions[0],
                                                    &regions[1], &regions[2], &regions[3]};
        checkRead(reader, readList(*reader.cursor, targets));
        withRegions += regions != std::array<int, 4>{} ? 1 : 0;
        copyRow(reader, {{1.0 * a[0]},
                         {1.0 * a[1]},
                         {1.0 * a[2]},
                         {1.0 * b[0]},
                         {1.0 * b[1]},
                         {1.0 * b[2]},
                         {row.value, copied, {}}});
        row.first = cellAt(reader, grid, a);
        row.second = cellAt(reader, grid, b);
        row.means = means;
        if (row.first == row.second || row.first == 0 || row.second == 0 || !(row.value >= 0.0)) {
            warnHere(reader, "WARNING :: A ROW OF {} WITHOUT TWO CELLS, OR BELOW 0, IS SKIPPED",
                     reader.keyword);
            continue;
        }
        row.value *= unit;
        grid.connectionRows.push_back(row);
    }
    endCopiedList(reader);
    if (withRegions > 0)
        warnHere(reader, "WARNING :: REGIONS IN {} ROWS OF {} ARE NOT USED, CELLS KEEP THEIR OWN TABLES",
                 withRegions, reader.keyword);
    both(consoleOf(reader), "-> Rows of connections = {}", rows);
}

namespace {

RegionMultiplier::Further furtherOf(const SectionReader& reader, const std::string& text) {
    const std::string word = toUpper(trim(text));
    if (word == "NNC") return RegionMultiplier::Further::Alone;
    if (word == "NONNC") return RegionMultiplier::Further::Not;
    if (word != "ALL" && word != "NOAQUNNC")
        warnHere(reader, "WARNING :: MULTREGT: {} IS NONE OF ALL, NNC, NONNC, NOAQUNNC, SET TO ALL", text);
    return RegionMultiplier::Further::Too;
}

}  // namespace

void readRegionMultipliers(SectionReader& reader, GridModel& grid) {
    announce(reader, reader.keyword);
    copyKeyword(reader);
    while (nextRow(reader)) {
        RegionMultiplier row;
        std::string axes = "XYZ", further = "ALL", set;
        const std::array<ListTarget, 6> targets = {&row.first, &row.second, &row.value,
                                                   &axes,      &further,    &set};
        checkRead(reader, readList(*reader.cursor, targets));
        copyRow(reader, {{1.0 * row.first},
                         {1.0 * row.second},
                         {row.value},
                         {.text = axes},
                         {.text = further},
                         {.text = set}});
        row.value = soundFactor(reader, row.value);
        const std::string letters = toUpper(axes);
        for (std::size_t axis = 0; axis < row.axes.size(); ++axis)
            row.axes[axis] = letters.find("XYZ"[axis]) != std::string::npos;
        row.further = furtherOf(reader, further);
        row.regionSet = regionSetOf(reader, set);
        grid.regionMultipliers.push_back(row);
    }
    endCopiedList(reader);
}

}  // namespace kvr
