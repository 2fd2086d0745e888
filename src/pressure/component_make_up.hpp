#pragma once

#include "base/cell_array.hpp"

#include <cstddef>
#include <cstdint>

namespace kvr {

/// For which direction of the flow through a face its make-up is told.
enum FaceTold : std::uint8_t { ToldNowhere = 0, ToldUpward = 1, ToldDownward = 2 };

/// What the flow through faces is made of where lines of components tell it, a reservoir volume: lb-mole of
/// each component, then the surface volume of water. Nothing is told where `faceKnown` has no width.
struct ComponentMakeUp {
    int count = 0;                           // components
    DirectionArray<std::uint8_t> faceKnown;  // by low cell and axis 1..3; see FaceTold
    DirectionArray<double> face;             // (low cell, row of the axis)
    DirectionArray<double> end;              // (cell): mean fractions of the components that lines leave, and
                                             // the water saturation; that below 0 where they tell nothing
    DirectionArray<double> left;             // (cell): amounts that lines leave, a pore volume, where cells
                                             // come to them whatever they held at first; else no width
    [[nodiscard]] bool isEmpty() const { return faceKnown.width == 0; }
    /// `flow` along the axis.
    [[nodiscard]] bool isTold(CellId low, int axis, double flow) const {
        return faceKnown(low, axis) == (flow > 0.0 ? ToldUpward : ToldDownward);
    }
    [[nodiscard]] std::size_t rowOf(int axis) const {
        return static_cast<std::size_t>((axis - 1) * (count + 1));
    }
};

}  // namespace kvr
