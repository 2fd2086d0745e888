#include "pressure/solvers/coarsening.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kvr {

namespace {

/// Finaliser of the splitmix64 generator (Steele, Lea and Flood 2014), as a number in [0, 1).
double hashedFraction(int row) {
    std::uint64_t z = (static_cast<std::uint64_t>(row) + 1) * 0x9e3779b97f4a7c15ULL;
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebULL;
    z ^= z >> 31U;
    return static_cast<double>(z >> 11U) / 9007199254740992.0;
}

/// Smallest negative coupling size of row i that is strong; above every coupling when none is.
double strongLimit(const SparseMatrix& matrix, int i) {
    double largest = 0.0, sum = 0.0;
    for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
        largest = std::max(largest, -matrix.value[k]);
        sum += std::abs(matrix.value[k]);
    }
    const bool dominant = sum < (1.0 - DominanceLimit) * std::abs(matrix.value[matrix.start[i]]);
    return dominant || largest <= 0.0 ? HUGE_VAL : StrengthThreshold * largest;
}

bool depends(const StrengthGraph& graph, int i) {
    return graph.start[i] < graph.start[i + 1];
}

/// Makes `i` coarse and every undecided row that depends on it fine.
void makeCoarse(int i, const StrengthGraph& dependents, std::vector<PointKind>& kind) {
    kind[i] = PointKind::Coarse;
    for (int k = dependents.start[i]; k < dependents.start[i + 1]; ++k) {
        PointKind& other = kind[dependents.column[k]];
        if (other == PointKind::Undecided) other = PointKind::Fine;
    }
}

/// True when no undecided neighbour in either direction has more influence than row i.
bool leads(int i, const StrengthGraph& graph, const StrengthGraph& dependents,
           const std::vector<double>& influence, const std::vector<PointKind>& kind) {
    for (const StrengthGraph* side : {&graph, &dependents}) {
        for (int k = side->start[i]; k < side->start[i + 1]; ++k) {
            const int j = side->column[k];
            if (kind[j] == PointKind::Undecided && influence[j] > influence[i]) return false;
        }
    }
    return true;
}

bool reachesCoarse(int i, const StrengthGraph& graph, const std::vector<PointKind>& kind) {
    for (int k = graph.start[i]; k < graph.start[i + 1]; ++k) {
        const int j = graph.column[k];
        if (kind[j] == PointKind::Coarse) return true;
        for (int m = graph.start[j]; m < graph.start[j + 1]; ++m) {
            if (kind[graph.column[m]] == PointKind::Coarse) return true;
        }
    }
    return false;
}

bool dependsOnCoarse(int i, const StrengthGraph& graph, const std::vector<PointKind>& kind) {
    return std::any_of(graph.column.begin() + graph.start[i], graph.column.begin() + graph.start[i + 1],
                       [&kind](int j) { return kind[j] == PointKind::Coarse; });
}

/// Marks the open rows for which holds(row); `kind` must not change meanwhile.
template <class Property>
void markOpen(const std::vector<int>& open, const Property& holds, std::vector<std::uint8_t>& mark) {
    mark.resize(open.size());
    forRanges(cutRows(static_cast<int>(open.size()), ShortestSetUpRange), [&](RowRange range) {
        for (int o = range.first; o < range.end; ++o) mark[o] = holds(open[o]) ? 1 : 0;
    });
}

void setMarked(const std::vector<int>& open, const std::vector<std::uint8_t>& mark, PointKind value,
               std::vector<PointKind>& kind) {
    for (std::size_t o = 0; o < open.size(); ++o) {
        if (mark[o] != 0) kind[open[o]] = value;
    }
}

/// Rounds of the independent set: leaders become coarse, rows that depend on them fine, until every row
/// is decided.
void electCoarse(const StrengthGraph& graph, const StrengthGraph& dependents,
                 const std::vector<double>& influence, std::vector<PointKind>& kind) {
    std::vector<int> open;
    std::vector<std::uint8_t> mark;
    for (int i = 0; i < static_cast<int>(kind.size()); ++i) {
        if (kind[i] == PointKind::Undecided) open.push_back(i);
    }
    const auto decided = [&kind](int i) { return kind[i] != PointKind::Undecided; };
    while (!open.empty()) {
        markOpen(
            open, [&](int i) { return leads(i, graph, dependents, influence, kind); }, mark);
        setMarked(open, mark, PointKind::Coarse, kind);
        std::erase_if(open, decided);
        markOpen(
            open, [&](int i) { return dependsOnCoarse(i, graph, kind); }, mark);
        setMarked(open, mark, PointKind::Fine, kind);
        std::erase_if(open, decided);
    }
}

/// Fine rows that depend on something but reach no coarse point become coarse, in row order.
void rescueUnreached(const StrengthGraph& graph, std::vector<PointKind>& kind) {
    const auto unreached = [&](int i) {
        return kind[i] == PointKind::Fine && depends(graph, i) && !reachesCoarse(i, graph, kind);
    };
    const RowRanges ranges = cutRows(static_cast<int>(kind.size()), ShortestSetUpRange);
    std::vector<std::vector<int>> found(static_cast<std::size_t>(ranges.count));
#pragma omp parallel for schedule(static) if (ranges.count > 1)
    for (int r = 0; r < ranges.count; ++r) {
        for (int i = ranges[r].first; i < ranges[r].end; ++i) {
            if (unreached(i)) found[r].push_back(i);
        }
    }
    for (const std::vector<int>& rows : found) {
        for (const int i : rows) {
            if (unreached(i)) kind[i] = PointKind::Coarse;
        }
    }
}

}  // namespace

StrengthGraph strongDependence(const SparseMatrix& matrix) {
    const RowRanges ranges = cutRows(matrix.rows, ShortestSetUpRange);
    const auto size = static_cast<std::size_t>(matrix.rows);
    StrengthGraph graph;
    std::vector<double> limit(size);
    graph.start.resize(size + 1);
    graph.start[0] = 0;
    forRanges(ranges, [&](RowRange range) {
        for (int i = range.first; i < range.end; ++i) {
            limit[i] = strongLimit(matrix, i);
            int count = 0;
            for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k)
                count += -matrix.value[k] >= limit[i] ? 1 : 0;
            graph.start[i + 1] = count;
        }
    });
    for (int i = 0; i < matrix.rows; ++i) graph.start[i + 1] += graph.start[i];
    graph.column.resize(static_cast<std::size_t>(graph.start[matrix.rows]));
    forRanges(ranges, [&](RowRange range) {
        int place = graph.start[range.first];
        for (int i = range.first; i < range.end; ++i) {
            for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
                if (-matrix.value[k] >= limit[i]) graph.column[place++] = matrix.column[k];
            }
        }
    });
    return graph;
}

StrengthGraph turnedRound(const StrengthGraph& graph) {
    const int rows = static_cast<int>(graph.start.size()) - 1;
    StrengthGraph turned;
    turned.start.assign(graph.start.size() + 1, 0);
    turned.column.resize(graph.column.size());
    for (const int j : graph.column) ++turned.start[j + 2];
    for (int j = 0; j < rows; ++j) turned.start[j + 2] += turned.start[j + 1];
    for (int i = 0; i < rows; ++i) {
        for (int k = graph.start[i]; k < graph.start[i + 1]; ++k)
            turned.column[turned.start[graph.column[k] + 1]++] = i;
    }
    turned.start.pop_back();
    return turned;
}

std::vector<PointKind> chooseCoarsePoints(const StrengthGraph& graph, int keptRows) {
    const int rows = static_cast<int>(graph.start.size()) - 1;
    const StrengthGraph dependents = turnedRound(graph);
    std::vector<PointKind> kind(static_cast<std::size_t>(rows), PointKind::Undecided);
    std::vector<double> influence(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i) {
        const int count = dependents.start[i + 1] - dependents.start[i];
        influence[i] = count + hashedFraction(i);
        if (count == 0) kind[i] = PointKind::Fine;
    }
    for (int i = rows - keptRows; i < rows; ++i) makeCoarse(i, dependents, kind);
    electCoarse(graph, dependents, influence, kind);
    rescueUnreached(graph, kind);
    return kind;
}

}  // namespace kvr
