#pragma once

#include "base/deck_place.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// By which law an analytic aquifer gives water.
enum class AquiferLaw : unsigned char { Fetkovich, CarterTracy };

/// A record of AQUFETP or AQUCT, internal units.
struct GivenAquifer {
    static constexpr double AtRest = -1.0;  // psia; in balance with the cells that it lies beside

    int number = 0;
    AquiferLaw law = AquiferLaw::Fetkovich;
    double datumDepth = 0.0;       // ft
    double pressure = AtRest;      // psia at that depth
    double compressibility = 0.0;  // 1/psi, of water and rock together
    int pvtTable = 1;              // of its water
    // Fetkovich
    double volume = 0.0;        // surface volume of its water, internal units
    double productivity = 0.0;  // surface volume a day and psi
    // Carter and Tracy
    double permeability = 0.0;  // md
    double porosity = 0.0;
    double radius = 0.0;     // ft, its inner one
    double thickness = 0.0;  // ft
    double angle = 360.0;    // degrees that it lies around
    int influenceTable = 1;  // of AQUTAB; 1: a circle without an outer border
    DeckPlace place;
};

/// A record of AQUANCON: faces of cells through which an aquifer gives water.
struct AquiferFaces {
    static constexpr double ByArea = -1.0;

    int number = 0;
    CellBox box;
    int face = 0;                 // 1..6, low x .. high z
    double coefficient = ByArea;  // what shares go by
    double multiplier = 1.0;
    bool inside = false;  // faces to active cells as well
};

/// The analytic aquifers of the deck.
struct GivenAquifers {
    std::vector<GivenAquifer> aquifers;
    std::vector<AquiferFaces> faces;
};

}  // namespace kvr
