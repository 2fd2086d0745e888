#include "deck/sections/grid_continua.hpp"

#include "deck/reading/unit_copies.hpp"
#include "model/dual_porosity.hpp"

#include <algorithm>
#include <array>
#include <limits>

namespace kvr {

namespace {

constexpr ValueRule NotNegative{0.0, std::numeric_limits<double>::max(), true};

enum class Measure { Length, InverseArea, Share };

/// What a factor of lengths is for the measure.
double factorFor(Measure measure, double length) {
    if (measure == Measure::Share) return 1.0;
    return measure == Measure::Length ? length : 1.0 / (length * length);
}

/// False, and the keyword passed over, in a run without dual porosity.
bool appliesTo(SectionReader& reader, const GridModel& grid) {
    if (grid.dual.isSet) return true;
    warnHere(reader, "WARNING :: {} HAS NO EFFECT WITHOUT DUALPORO", reader.keyword);
    neglectKeyword(reader);
    return false;
}

/// One value for all matrix blocks.
void readUniform(SectionReader& reader, Measure measure, GridModel& grid, CellArray<double>& array) {
    if (!appliesTo(reader, grid)) return;
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::array<double, 1> value = {0.0};
    checkRead(reader, readDoubles(*reader.cursor, value));
    if (!(value[0] >= 0.0)) {
        both(consoleOf(reader), "ERROR :: {} BELOW 0: {}", reader.keyword, number(value[0]));
        stopAtPlace(reader);
    }
    array.assign(grid.NCELLS, value[0] * factorFor(measure, reader.units->length));
    copyKeyword(reader);
    copyRow(reader, {{value[0], factorFor(measure, reader.units->copyLength)}});
}

/// One value per cell, those of the upper half at least.
void readByCell(SectionReader& reader, Measure measure, GridModel& grid, CellArray<double>& array) {
    if (!appliesTo(reader, grid)) return;
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    if (array.empty()) array.assign(grid.NCELLS, 0.0);
    const bool before = reader.halfRepeats;
    reader.halfRepeats = true;
    readCheckedArray(reader, NotNegative, array.cells(), factorFor(measure, reader.units->length),
                     factorFor(measure, reader.units->copyLength));
    reader.halfRepeats = before;
}

}  // namespace

void readDpgrid(SectionReader& reader, GridRecords& records) {
    if (!appliesTo(reader, records.grid)) return;
    announce(reader, reader.keyword);
    records.grid.dual.fracturesFromMatrix = true;
    reader.halfRepeats = true;
    copyKeyword(reader);
}

void readSigma(SectionReader& reader, GridRecords& records) {
    readUniform(reader, Measure::InverseArea, records.grid, records.grid.dual.SIGMA);
}

void readSigmav(SectionReader& reader, GridRecords& records) {
    readByCell(reader, Measure::InverseArea, records.grid, records.grid.dual.SIGMA);
}

void readDzmtrx(SectionReader& reader, GridRecords& records) {
    readUniform(reader, Measure::Length, records.grid, records.grid.dual.DZMTRX);
}

void readDzmtrxv(SectionReader& reader, GridRecords& records) {
    readByCell(reader, Measure::Length, records.grid, records.grid.dual.DZMTRX);
}

void readNodppm(SectionReader& reader, GridRecords& records) {
    if (!appliesTo(reader, records.grid)) return;
    announce(reader, reader.keyword);
    records.grid.dual.permeabilityEffective = true;
    copyKeyword(reader);
}

void readMatrixPorosity(SectionReader& reader, GridRecords& records) {
    CellArray<double> read = records.grid.PORO;
    readByCell(reader, Measure::Share, records.grid, read);
    const auto matrix = read.cells().first(read.cells().size() / 2);
    std::copy(matrix.begin(), matrix.end(), records.grid.PORO.cells().begin());
}

void refuseDpnum(SectionReader& reader, GridRecords&) {
    both(consoleOf(reader), "ERROR :: {}: CELLS OF ONE CONTINUUM AMONG THOSE OF TWO ARE NOT KNOWN HERE",
         reader.keyword);
    stopAtPlace(reader);
}

void completeContinua(const SectionReader& reader, GridModel& grid) {
    if (!grid.dual.isSet) return;
    const Console& console = consoleOf(reader);
    if (grid.dual.fracturesFromMatrix) fillFracturesFromMatrix(grid);
    shareSizes(grid);
    if (!grid.dual.permeabilityEffective) {
        makeFracturePermeabilityEffective(grid);
        lineToBoth(console, "-> Permeability of fractures multiplied by their porosity (NODPPM: as read)");
    }
    const auto factors = grid.dual.SIGMA.cells();
    if (std::none_of(factors.begin(), factors.end(), [](double sigma) { return sigma > 0.0; }))
        warn(console, "WARNING :: NEITHER SIGMA NOR SIGMAV ABOVE 0, MATRIX AND FRACTURES EXCHANGE NOTHING");
}

}  // namespace kvr
