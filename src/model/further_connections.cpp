#include "model/further_connections.hpp"

#include "model/corner_transmissibility.hpp"
#include "model/neighbours.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// The direction of a neighbour through a face, 0 if they are none.
int faceBetween(const GridModel& grid, CellId cell, CellId other) {
    for (int face = 1; face <= FaceCount; ++face)
        if (neighbourOf(grid, cell, face) == other) return face;
    return 0;
}

int directionBetween(const ConnectionTable& connections, CellId cell, CellId other) {
    for (int d = 1; d <= connections.NDIR; ++d)
        if (connections.Neighbour(cell, d) == other) return d;
    return 0;
}

/// Pairs that stand twice become one; that across a fault keeps its face.
void keepOneOfEach(std::vector<FurtherConnection>& further) {
    std::sort(further.begin(), further.end(), [](const FurtherConnection& a, const FurtherConnection& b) {
        if (a.first != b.first) return a.first < b.first;
        return a.second != b.second ? a.second < b.second : a.face > b.face;
    });
    const auto same = [](const FurtherConnection& a, const FurtherConnection& b) {
        return a.first == b.first && a.second == b.second;
    };
    further.erase(std::unique(further.begin(), further.end(), same), further.end());
}

void setBothSides(CellId cell, int direction, double trans, ConnectionTable& connections) {
    const CellId other = connections.Neighbour(cell, direction);
    connections.Trans(cell, direction) = trans;
    connections.Trans(other, directionBack(connections, cell, other, direction)) = trans;
}

}  // namespace

void listFurther(const GridModel& grid, const std::vector<SharedFace>& faces, ConnectionTable& connections) {
    std::vector<FurtherConnection>& further = connections.further;
    further.clear();
    for (const SharedFace& shared : faces)
        if (shared.area > 0.0 && faceBetween(grid, shared.first, shared.second) == 0)
            further.push_back({shared.first, shared.second, 0, 0, shared.face});
    for (const ConnectionRow& row : grid.connectionRows)
        if (row.means == ConnectionRow::Means::Add && faceBetween(grid, row.first, row.second) == 0)
            further.push_back({std::min(row.first, row.second), std::max(row.first, row.second), 0, 0, 0});
    keepOneOfEach(further);
    CellArray<int> taken;
    taken.assign(grid.NCELLS, FaceCount);
    int most = FaceCount;
    for (FurtherConnection& connection : further) {
        connection.fromFirst = ++taken[connection.first];
        connection.fromSecond = ++taken[connection.second];
        most = std::max({most, connection.fromFirst, connection.fromSecond});
    }
    connections.NDIR = connections.flowDirections = most;
}

void placeFurther(const GridModel& grid, ConnectionTable& connections) {
    for (const FurtherConnection& connection : connections.further) {
        if (grid.Active[connection.first] == 0 || grid.Active[connection.second] == 0) continue;
        connections.Neighbour(connection.first, connection.fromFirst) = connection.second;
        connections.Neighbour(connection.second, connection.fromSecond) = connection.first;
    }
}

void connectAcrossFaults(const GridModel& grid, const std::vector<SharedFace>& faces,
                         ConnectionTable& connections) {
    for (const SharedFace& shared : faces) {
        if (grid.Active[shared.first] == 0 || grid.Active[shared.second] == 0) continue;
        const int direction = directionBetween(connections, shared.first, shared.second);
        if (direction == 0) continue;
        const double own = halfTransmissibility(grid, shared.first, shared.face, shared.area);
        const double other =
            halfTransmissibility(grid, shared.second, oppositeFace(shared.face), shared.area);
        setBothSides(shared.first, direction,
                     own > 0.0 && other > 0.0 ? 1.0 / (1.0 / own + 1.0 / other) : 0.0, connections);
    }
}

int applyConnectionRows(const GridModel& grid, ConnectionTable& connections) {
    int lost = 0;
    for (const ConnectionRow& row : grid.connectionRows) {
        const bool active = grid.Active[row.first] != 0 && grid.Active[row.second] != 0;
        const int direction = active ? directionBetween(connections, row.first, row.second) : 0;
        if (direction == 0) {
            ++lost;
            continue;
        }
        const double before = connections.Trans(row.first, direction);
        const double after = row.means == ConnectionRow::Means::Add        ? before + row.value
                             : row.means == ConnectionRow::Means::Multiply ? before * row.value
                                                                           : row.value;
        setBothSides(row.first, direction, after, connections);
    }
    return lost;
}

void closeFurther(const GridModel& grid, ConnectionTable& connections) {
    for (const FurtherConnection& connection : connections.further)
        if (grid.Active[connection.first] == 0 || grid.Active[connection.second] == 0) {
            connections.Trans(connection.first, connection.fromFirst) = 0.0;
            connections.Trans(connection.second, connection.fromSecond) = 0.0;
        }
}

}  // namespace kvr
