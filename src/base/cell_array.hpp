#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kvr {

/// 1-based natural cell index over the whole box, i fastest; 0 or less means "no cell".
using CellId = std::int32_t;

/// One value per cell, addressed by CellId; slot 0 exists and is unused, so that a deck index,
/// a file index and an array index are one number.
template <class T>
struct CellArray {
    std::vector<T> slots;  // [0..count], slot 0 unused

    void assign(CellId count, const T& value) { slots.assign(static_cast<std::size_t>(count) + 1, value); }
    [[nodiscard]] bool empty() const { return slots.size() < 2; }
    [[nodiscard]] CellId count() const { return slots.empty() ? 0 : static_cast<CellId>(slots.size() - 1); }
    T& operator[](CellId cell) { return slots[static_cast<std::size_t>(cell)]; }
    const T& operator[](CellId cell) const { return slots[static_cast<std::size_t>(cell)]; }

    /// The values of cells 1..count, without the unused slot.
    std::span<T> cells() { return slots.empty() ? std::span<T>() : std::span<T>(slots).subspan(1); }
    [[nodiscard]] std::span<const T> cells() const {
        return slots.empty() ? std::span<const T>() : std::span<const T>(slots).subspan(1);
    }
};

/// `width` values per cell stored side by side, addressed by (CellId, 1..width): face values,
/// directions, components. One block, the second index fastest.
template <class T>
struct DirectionArray {
    int width = 0;
    std::vector<T> slots;  // [(count + 1) * width]

    void assign(CellId count, int newWidth, const T& value) {
        width = newWidth;
        slots.assign((static_cast<std::size_t>(count) + 1) * static_cast<std::size_t>(newWidth), value);
    }
    T& operator()(CellId cell, int direction) { return row(cell)[direction - 1]; }
    const T& operator()(CellId cell, int direction) const { return row(cell)[direction - 1]; }

    /// First of the `width` values of a cell; direction d stands at [d - 1].
    T* row(CellId cell) {
        return slots.data() + static_cast<std::size_t>(cell) * static_cast<std::size_t>(width);
    }
    const T* row(CellId cell) const {
        return slots.data() + static_cast<std::size_t>(cell) * static_cast<std::size_t>(width);
    }
};

}  // namespace kvr
