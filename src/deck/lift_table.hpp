#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvr {

/// What the axes of a table of VFPPROD or VFPINJ measure.
enum class LiftRate : std::uint8_t { Oil, Liquid, Gas, Water };
enum class LiftWater : std::uint8_t { PerOil, Cut, PerGas };
enum class LiftGas : std::uint8_t { PerOil, PerLiquid, OilPerGas };

/// Bottom-hole pressure of a well by its rate, its pressure at the tubing head, the ratios of what it gives
/// and artificial lift. Internal units: surface volumes a day, psia, ratios of surface volumes.
struct LiftTable {
    enum Axis : std::size_t { Rate, Head, Water, Gas, Lift };

    int number = 0;
    bool ofInjector = false;
    double datumDepth = 0.0;  // ft, where its bottom-hole pressures stand
    LiftRate rate = LiftRate::Liquid;
    LiftWater water = LiftWater::PerOil;
    LiftGas gas = LiftGas::PerOil;
    std::array<std::vector<double>, 5> axes;  // rising, each with a value or more
    std::vector<double> bhp;                  // the rate fastest, then lift, gas, water, head
};

}  // namespace kvr
