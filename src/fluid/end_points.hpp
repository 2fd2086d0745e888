#pragma once

#include "base/cell_array.hpp"

#include <array>
#include <compare>
#include <string_view>

namespace kvr {

/// End points of the saturation functions of a table or of a cell, by the names that decks have for them.
struct EndPoints {
    double SWL = 0.0, SWCR = 0.0, SWU = 1.0;  // least, highest immobile and greatest saturation of water
    double SGL = 0.0, SGCR = 0.0, SGU = 1.0;  // of gas
    double SOWCR = 0.0, SOGCR = 0.0;          // oil that does not flow beside water, beside gas
    double KRW = 1.0, KROW = 1.0, KRG = 1.0, KROG = 1.0;              // greatest relative permeabilities
    double KRWR = Unset, KRORW = Unset, KRGR = Unset, KRORG = Unset;  // where the other phase stops flowing
    double PCW = 0.0, PCG = 0.0;  // capillary pressures at SWL and SGU, psi

    static constexpr double Unset = -1.0;  // follows the greatest value

    auto operator<=>(const EndPoints&) const = default;
};

/// An array by cell that gives one of them, or for KRO two at once.
struct EndPointKeyword {
    std::string_view name;
    double EndPoints::*point;
    double EndPoints::*second = nullptr;
    bool isPressure = false;
};

inline constexpr std::array EndPointKeywords = {
    EndPointKeyword{"SWL", &EndPoints::SWL},
    EndPointKeyword{"SWCR", &EndPoints::SWCR},
    EndPointKeyword{"SWU", &EndPoints::SWU},
    EndPointKeyword{"SGL", &EndPoints::SGL},
    EndPointKeyword{"SGCR", &EndPoints::SGCR},
    EndPointKeyword{"SGU", &EndPoints::SGU},
    EndPointKeyword{"SOWCR", &EndPoints::SOWCR},
    EndPointKeyword{"SOGCR", &EndPoints::SOGCR},
    EndPointKeyword{"KRW", &EndPoints::KRW},
    EndPointKeyword{"KRO", &EndPoints::KROW, &EndPoints::KROG},
    EndPointKeyword{"KRG", &EndPoints::KRG},
    EndPointKeyword{"KRWR", &EndPoints::KRWR},
    EndPointKeyword{"KRORW", &EndPoints::KRORW},
    EndPointKeyword{"KRGR", &EndPoints::KRGR},
    EndPointKeyword{"KRORG", &EndPoints::KRORG},
    EndPointKeyword{"PCW", &EndPoints::PCW, nullptr, true},
    EndPointKeyword{"PCG", &EndPoints::PCG, nullptr, true},
};

/// What a deck says about the scaling of its saturation functions.
struct EndPointScaling {
    bool isSet = false;       // ENDSCALE
    bool threePoint = false;  // SCALECRS: also the saturation at which the other phase stops flowing
    // In the order of EndPointKeywords, NaN in cells that have the point of their table; empty: all have.
    std::array<CellArray<double>, EndPointKeywords.size()> given;
    CellArray<double> initialWater;  // SWATINIT, alike
};

}  // namespace kvr
