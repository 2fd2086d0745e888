#include "fluid/under_saturated.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr std::size_t RowValues = 3;  // pressure, B, mu

bool hasRows(const OilRowsOfRs& record) {
    return record.size() >= 2 * RowValues;
}

/// The record whose rows serve record r.
std::size_t servingRecord(std::span<const OilRowsOfRs> records, std::size_t r) {
    for (std::size_t above = r; above < records.size(); ++above)
        if (hasRows(records[above])) return above;
    while (!hasRows(records[r])) --r;
    return r;
}

/// Nodes of a saturated row by the rows of `from`; one that does not rise adds none.
void addNodes(const OilRowsOfRs& from, UnderSaturatedRows& rows) {
    double last = 0.0;
    for (std::size_t n = RowValues; n + RowValues <= from.size(); n += RowValues) {
        const double step = from[n] - from[0];
        if (!(step > last) || !(from[n + 1] > 0.0) || !(from[n + 2] > 0.0)) continue;
        last = step;
        rows.step.push_back(step);
        rows.invFvf.push_back(from[1] / from[n + 1]);
        rows.invFvfVisc.push_back(from[1] * from[2] / (from[n + 1] * from[n + 2]));
    }
}

/// The factor of a row that falls by `change` < 0 beyond its last node, where it is `end`: its reciprocal
/// goes on in a straight line, so that no pressure brings it to 0.
double fallingBeyond(double end, double change) {
    return end * end / (end - change);
}

double factorOfRow(const UnderSaturatedRows& rows, std::span<const double> column, int row, double rise) {
    const std::size_t first = rows.first[static_cast<std::size_t>(row)];
    const std::size_t end = rows.first[static_cast<std::size_t>(row) + 1];
    if (first == end) return 1.0;
    std::size_t node = first;
    while (node + 1 < end && rows.step[node] < rise) ++node;
    const double stepBefore = node > first ? rows.step[node - 1] : 0.0;
    const double before = node > first ? column[node - 1] : 1.0;
    const double slope = (column[node] - before) / (rows.step[node] - stepBefore);
    const double beyond = rise - rows.step[node];
    if (beyond > 0.0 && slope < 0.0) return fallingBeyond(column[node], slope * beyond);
    return before + (rise - stepBefore) * slope;
}

}  // namespace

UnderSaturatedRows underSaturatedRows(std::span<const OilRowsOfRs> records) {
    UnderSaturatedRows rows;
    if (std::none_of(records.begin(), records.end(), hasRows)) return rows;
    for (std::size_t r = 0; r < records.size(); ++r) {
        rows.first.push_back(rows.step.size());
        addNodes(records[servingRecord(records, r)], rows);
    }
    rows.first.push_back(rows.step.size());
    return rows;
}

double underSaturatedFactor(const UnderSaturatedRows& rows, std::span<const double> column,
                            const TablePlace& place, double rise) {
    const double low = factorOfRow(rows, column, place.low, rise);
    if (place.low == place.high) return low;
    const double share = std::clamp(place.weight, 0.0, 1.0);
    return low + share * (factorOfRow(rows, column, place.high, rise) - low);
}

}  // namespace kvr
