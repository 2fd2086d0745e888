#pragma once

#include "report/well_figures.hpp"

#include <span>
#include <string>
#include <string_view>

namespace kvr {

/// What a vector of a run measures; figures are kept in field units.
enum class Quantity {
    LiquidRate,
    GasRate,
    ReservoirRate,
    LiquidTotal,
    GasTotal,
    ReservoirTotal,
    Pressure,
    GasRatio,
    Fraction
};

/// The unit words of a deck's unit system and what turns a figure into it.
struct VectorUnit {
    std::string_view word;
    double factor = 1.0;
};
VectorUnit deckUnit(const UnitSystem& units, Quantity quantity);
/// The word of the field unit, in which figures are kept.
std::string_view fieldUnit(Quantity quantity);

/// A vector of the field, of every well, or of both: FOPR and WOPR are "OPR".
struct RunVector {
    std::string_view suffix;
    Quantity quantity;
    bool ofField = false;
    bool ofWells = false;
    double (*value)(const StepFigures&, const WellFigures&);  // of the field or of one well
    bool observed = false;                                    // what WCONHIST and WCONINJH say
    bool ofTubing = false;                                    // of wells with tables of VFPPROD, VFPINJ
};

/// All vectors, in the order of the columns of KVR_Summary.csv.
std::span<const RunVector> runVectors();

/// The vector of a mnemonic such as FOPR or WBHP; null for one that is not known.
const RunVector* vectorOf(std::string_view mnemonic);

}  // namespace kvr
