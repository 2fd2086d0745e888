#pragma once

#include "eclipse/records.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// Number of cells whose ACTNUM is above 0.
CellId activeCount(const GridModel& grid);

/// Goes through the active cells in natural order.
struct ActiveWalk {
    const GridModel& grid;
    CellId cell = 0;

    CellId next() {
        do ++cell;
        while (grid.Active[cell] == 0);
        return cell;
    }
};

/// A block of one single-precision value per active cell, in natural order; value(cell) is asked as the
/// block is written, so no second copy of an array stands in memory.
template <class Value>
void writeActiveCells(RecordWriter& writer, std::string_view keyword, const GridModel& grid, CellId active,
                      Value value) {
    ActiveWalk walk{grid};
    write_keyword<float>(writer, keyword, active,
                         [&](std::size_t) { return static_cast<float>(value(walk.next())); });
}

/// The same for every cell, active or not.
template <class Value>
void writeAllCells(RecordWriter& writer, std::string_view keyword, const GridModel& grid, Value value) {
    write_keyword<float>(writer, keyword, grid.NCELLS, [&](std::size_t n) {
        return static_cast<float>(value(static_cast<CellId>(n) + 1));
    });
}

/// A short fixed list of integers, slots 1-based as descriptions of the files count them.
template <std::size_t Count>
struct HeadList {
    std::array<std::int32_t, Count> slots{};
    std::int32_t& operator[](std::size_t slot) { return slots[slot - 1]; }
};

template <std::size_t Count>
void writeHead(RecordWriter& writer, std::string_view keyword, const HeadList<Count>& head) {
    write_keyword(writer, keyword, std::span<const std::int32_t>(head.slots), Cut::OneRecord);
}

/// Eight-character words of a fixed list.
template <std::size_t Count>
void writeWords(RecordWriter& writer, std::string_view keyword,
                const std::array<std::string_view, Count>& words) {
    write_keyword<Text8>(
        writer, keyword, static_cast<std::int32_t>(Count), [&](std::size_t n) { return text8(words[n]); },
        Cut::OneRecord);
}

/// Whether all values are places on earth, in any unit of length.
bool areCoordinates(const std::vector<float>& values);

}  // namespace kvr
