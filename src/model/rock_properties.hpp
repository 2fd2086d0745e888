#pragma once

#include "base/text.hpp"
#include "model/grid.hpp"

#include <array>
#include <string>
#include <string_view>

namespace kvr {

/// A property that SMTHPRM and UPSCALE can name, where it stands and where its average goes.
struct RockProperty {
    static constexpr int NoAxis = -1;

    std::string_view name;
    CellArray<double> GridModel::*array;
    CellArray<double> UpscaledRock::*upscaled;
    int axis;  // of a permeability, 0 to 2; NoAxis for porosity
};

inline constexpr RockProperty RockPORO = {"PORO", &GridModel::PORO, &UpscaledRock::PORO,
                                          RockProperty::NoAxis};
inline constexpr RockProperty RockPERMX = {"PERMX", &GridModel::PERMX, &UpscaledRock::PERMX, 0};
inline constexpr RockProperty RockPERMY = {"PERMY", &GridModel::PERMY, &UpscaledRock::PERMY, 1};
inline constexpr RockProperty RockPERMZ = {"PERMZ", &GridModel::PERMZ, &UpscaledRock::PERMZ, 2};
inline constexpr std::array RockProperties = {RockPORO, RockPERMX, RockPERMY, RockPERMZ};

/// The row of a name in any case, blanks around it aside; nullptr for any other property.
inline const RockProperty* findRockProperty(std::string_view name) {
    const std::string word = toUpper(trim(name));
    for (const RockProperty& property : RockProperties)
        if (property.name == word) return &property;
    return nullptr;
}

}  // namespace kvr
