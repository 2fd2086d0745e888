#pragma once

#include "deck/reading/section_reader.hpp"
#include "model/grid.hpp"

#include <vector>

namespace kvr {

/// Rows that each list of array arithmetic holds; one more stops the run.
inline constexpr std::size_t MaxArithmeticRows = 500;

/// A box outside the grid or with its limits the wrong way round stops with the place.
void checkBox(const SectionReader& reader, const GridModel& grid, const CellBox& box);

/// Rows of name, value and box: EQUALS and both kinds of MULTIPLY. `keep(row)` is called for each row, whose
/// box has been checked and whose value is the deck's. Stops on the row beyond MaxArithmeticRows of `list`.
template <class Keep>
void readBoxRows(SectionReader& reader, const GridModel& grid, const std::vector<ArithmeticRow>& list,
                 const Keep& keep);

/// A row without a box behind one that has a box: it means the whole grid here, and the box before elsewhere.
void tellMissingBox(const SectionReader& reader, const ListEnd& row, bool& boxed);

/// What limits of a box that the first row of a list leaves out are: those of BOX, or open.
CellBox boxOfFirstRow(const SectionReader& reader);

/// One row each, the cursor in front of it. Text is cut to 8 characters. Limits left out are those of
/// `before`, which in the common form becomes the box of this row; only that form reads a box behind the
/// names of COPY.
ArithmeticRow readBoxRow(SectionReader& reader, const GridModel& grid, CellBox& before, ListEnd& end);
ArithmeticRow readCopyRow(SectionReader& reader, const GridModel& grid, CellBox& before, ListEnd& end);

/// A row of MULTIPLY whose factor is no number of 0 or more is told and not taken.
bool isNegativeFactor(const SectionReader& reader, const ArithmeticRow& row);

/// The slash that closes a list of rows in the unit copies.
void endCopiedList(const SectionReader& reader);

/// Stops when the list holds no further row.
void checkRoom(const SectionReader& reader, const std::vector<ArithmeticRow>& list);

template <class Keep>
void readBoxRows(SectionReader& reader, const GridModel& grid, const std::vector<ArithmeticRow>& list,
                 const Keep& keep) {
    RowLoop rows{RowSlash::EndsRow, RowStart::Name, {}, 0};
    bool boxed = false;
    CellBox before = boxOfFirstRow(reader);
    while (nextTableRow(reader, rows)) {
        checkRoom(reader, list);
        ArithmeticRow row = readBoxRow(reader, grid, before, rows.last);
        tellMissingBox(reader, rows.last, boxed);
        keep(std::move(row));
    }
}

}  // namespace kvr
