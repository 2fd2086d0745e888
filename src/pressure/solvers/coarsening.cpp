#include "pressure/solvers/coarsening.hpp"

#include <algorithm>
#include <cmath>

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

/// Rounds of the independent set: leaders become coarse until every row is decided.
void electCoarse(const StrengthGraph& graph, const StrengthGraph& dependents,
                 const std::vector<double>& influence, std::vector<PointKind>& kind) {
    std::vector<int> open, leaders;
    for (int i = 0; i < static_cast<int>(kind.size()); ++i) {
        if (kind[i] == PointKind::Undecided) open.push_back(i);
    }
    while (!open.empty()) {
        leaders.clear();
        for (const int i : open) {
            if (leads(i, graph, dependents, influence, kind)) leaders.push_back(i);
        }
        for (const int i : leaders) makeCoarse(i, dependents, kind);
        std::erase_if(open, [&kind](int i) { return kind[i] != PointKind::Undecided; });
    }
}

}  // namespace

StrengthGraph strongDependence(const SparseMatrix& matrix) {
    StrengthGraph graph;
    graph.start.reserve(static_cast<std::size_t>(matrix.rows) + 1);
    graph.column.reserve(matrix.column.size());
    graph.start.push_back(0);
    for (int i = 0; i < matrix.rows; ++i) {
        const double limit = strongLimit(matrix, i);
        for (int k = matrix.start[i] + 1; k < matrix.start[i + 1]; ++k) {
            if (-matrix.value[k] >= limit) graph.column.push_back(matrix.column[k]);
        }
        graph.start.push_back(static_cast<int>(graph.column.size()));
    }
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
    for (int i = 0; i < rows; ++i) {
        if (kind[i] == PointKind::Fine && depends(graph, i) && !reachesCoarse(i, graph, kind))
            kind[i] = PointKind::Coarse;
    }
    return kind;
}

}  // namespace kvr
