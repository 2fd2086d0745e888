#include "pressure/flow_rings.hpp"

#include "base/index.hpp"
#include "pressure/flow_order.hpp"

#include <algorithm>
#include <limits>

namespace kvr {

namespace {

constexpr int Unseen = 0;
constexpr double TurnOverThrough = 16.0;  // of the weakest flow of a unit over what passes through it
constexpr double TurnOverContent = 10.0;  // of the same over a step, in pore volumes of the unit
constexpr double LevelStep = 0.5;         // between the flows that are tried
constexpr int MostLevels = 40;

/// Working arrays of the search for components; see strongComponents.
struct Search {
    std::vector<int> number, lowest;  // in order of discovery, from 1
    std::vector<char> waiting;
    std::vector<int> stack;
    struct Visit {
        int node = 0;
        std::size_t next = 0;
    };
    std::vector<Visit> path;
    int discovered = 0, closed = 0;
};

void enter(const FlowGraph& graph, int node, Search& search) {
    search.number[at(node)] = search.lowest[at(node)] = ++search.discovered;
    search.stack.push_back(node);
    search.waiting[at(node)] = 1;
    search.path.push_back({node, graph.start[at(node)]});
}

void leave(Search& search, std::vector<int>& component) {
    const int node = search.path.back().node;
    search.path.pop_back();
    if (search.lowest[at(node)] == search.number[at(node)]) {
        for (int member = -1; member != node;) {
            member = search.stack.back();
            search.stack.pop_back();
            search.waiting[at(member)] = 0;
            component[at(member)] = search.closed;
        }
        ++search.closed;
    }
    if (search.path.empty()) return;
    const int above = search.path.back().node;
    search.lowest[at(above)] = std::min(search.lowest[at(above)], search.lowest[at(node)]);
}

/// Goes on with the node at the end of the path: into the next one that it flows to, or back.
void advance(const FlowGraph& graph, double least, Search& search, std::vector<int>& component) {
    Search::Visit& visit = search.path.back();
    const std::size_t end = graph.start[at(visit.node) + 1];
    while (visit.next < end) {
        const FlowGraph::Edge& edge = graph.edges[visit.next++];
        if (edge.flow < least) continue;
        if (search.number[at(edge.to)] == Unseen) return enter(graph, edge.to, search);
        if (search.waiting[at(edge.to)] != 0)
            search.lowest[at(visit.node)] =
                std::min(search.lowest[at(visit.node)], search.number[at(edge.to)]);
    }
    leave(search, component);
}

/// What a component of the ring holds and what passes through it.
struct Turnover {
    double poreVolume = 0.0, in = 0.0, out = 0.0;
    int members = 0;
};

/// Sums over every component at the present level.
std::vector<Turnover> turnovers(const FlowGraph& graph, const std::vector<double>& poreVolume,
                                const std::vector<double>& in, const std::vector<double>& out,
                                const std::vector<int>& component, int count) {
    std::vector<Turnover> sums(at(count));
    for (int n = 0; n < graph.count(); ++n) {
        Turnover& own = sums[at(component[at(n)])];
        own.poreVolume += poreVolume[at(n)];
        own.in += in[at(n)];
        own.out += out[at(n)];
        ++own.members;
        for (std::size_t e = graph.start[at(n)]; e < graph.start[at(n) + 1]; ++e) {
            Turnover& other = sums[at(component[at(graph.edges[e].to)])];
            if (&other == &own) continue;
            own.out += graph.edges[e].flow;
            other.in += graph.edges[e].flow;
        }
    }
    return sums;
}

/// The graph of a ring, with what flows in and out beside its edges.
struct RingGraph {
    FlowGraph graph;
    std::vector<double> poreVolume, in, out;
    double largest = 0.0, smallestPores = std::numeric_limits<double>::max();
};

RingGraph graphOf(const RingField& field, std::span<const CellId> ring) {
    RingGraph result;
    std::vector<std::pair<CellId, int>> places;
    for (std::size_t n = 0; n < ring.size(); ++n) places.emplace_back(ring[n], static_cast<int>(n));
    std::sort(places.begin(), places.end());
    const auto placeOf = [&](CellId cell) {
        const auto found = std::lower_bound(places.begin(), places.end(), std::pair(cell, 0));
        return found != places.end() && found->first == cell ? found->second : -1;
    };
    result.in = field.wellIn;
    result.out = field.wellOut;
    result.graph.start.assign(1, 0);
    for (std::size_t n = 0; n < ring.size(); ++n) {
        result.poreVolume.push_back(field.poreVolume[ring[n]]);
        result.smallestPores = std::min(result.smallestPores, result.poreVolume.back());
        for (int face = 1; face <= field.connections.flowDirections; ++face) {
            const CellId neighbour = field.connections.Neighbour(ring[n], face);
            if (neighbour <= 0) continue;
            const double flow = outflowThrough(field.connections, field.flux, ring[n], face);
            const int to = placeOf(neighbour);
            if (to < 0) (flow > 0.0 ? result.out[n] : result.in[n]) += std::abs(flow);
            if (to < 0 || !(flow > 0.0)) continue;
            result.graph.edges.push_back({to, flow});
            result.largest = std::max(result.largest, flow);
        }
        result.graph.start.push_back(result.graph.edges.size());
    }
    return result;
}

/// Unit by node: the widest component that turns fast enough, else the node alone.
std::vector<int> unitsOf(const RingGraph& ring, double dt, int& count) {
    const int nodes = ring.graph.count();
    std::vector<int> unit(at(nodes));
    for (int n = 0; n < nodes; ++n) unit[at(n)] = n;
    count = nodes;
    const double least = TurnOverContent * ring.smallestPores / dt;
    std::vector<int> component;
    double level = ring.largest;
    for (int k = 0; k < MostLevels && level >= least; ++k, level *= LevelStep) {
        const int found = strongComponents(ring.graph, level, component);
        const std::vector<Turnover> sums =
            turnovers(ring.graph, ring.poreVolume, ring.in, ring.out, component, found);
        for (int n = 0; n < nodes; ++n) {
            const Turnover& sum = sums[at(component[at(n)])];
            const bool fast = sum.members > 1 && level >= TurnOverThrough * std::max(sum.in, sum.out) &&
                              level * dt >= TurnOverContent * sum.poreVolume;
            if (fast) unit[at(n)] = count + component[at(n)];
        }
        count += found;
    }
    return unit;
}

/// Numbers the units that are in use in the order of their first nodes.
int renumber(std::vector<int>& unit, int count) {
    std::vector<int> number(at(count), -1);
    int used = 0;
    for (int& u : unit) {
        if (number[at(u)] < 0) number[at(u)] = used++;
        u = number[at(u)];
    }
    return used;
}

FlowGraph condensed(const FlowGraph& graph, const std::vector<int>& unit, int count) {
    FlowGraph units;
    units.start.assign(at(count) + 1, 0);
    const auto eachEdge = [&](const auto& use) {
        for (int n = 0; n < graph.count(); ++n)
            for (std::size_t e = graph.start[at(n)]; e < graph.start[at(n) + 1]; ++e) {
                const int from = unit[at(n)], to = unit[at(graph.edges[e].to)];
                if (from != to) use(from, to, graph.edges[e].flow);
            }
    };
    eachEdge([&](int from, int, double) { ++units.start[at(from) + 1]; });
    for (std::size_t u = 1; u < units.start.size(); ++u) units.start[u] += units.start[u - 1];
    units.edges.resize(units.start.back());
    std::vector<std::size_t> next(units.start.begin(), units.start.end() - 1);
    eachEdge([&](int from, int to, double flow) { units.edges[next[at(from)]++] = {to, flow}; });
    return units;
}

}  // namespace

int strongComponents(const FlowGraph& graph, double least, std::vector<int>& component) {
    const std::size_t count = at(graph.count());
    Search search;
    search.number.assign(count, Unseen);
    search.lowest.assign(count, Unseen);
    search.waiting.assign(count, 0);
    component.assign(count, 0);
    for (int n = 0; n < graph.count(); ++n) {
        if (search.number[at(n)] != Unseen) continue;
        enter(graph, n, search);
        while (!search.path.empty()) advance(graph, least, search, component);
    }
    for (int& number : component) number = search.closed - 1 - number;  // ends of the flow are found first
    return search.closed;
}

void planRing(const RingField& field, std::span<const CellId> ring, RingPlan& plan) {
    const RingGraph graph = graphOf(field, ring);
    int units = 0;
    std::vector<int> unit = unitsOf(graph, field.mixes ? field.dt : 0.0, units);  // in no time nothing turns
    units = renumber(unit, units);
    std::vector<int> group;
    const int groups = strongComponents(condensed(graph.graph, unit, units), 0.0, group);
    std::vector<std::size_t> order(ring.size());
    for (std::size_t n = 0; n < order.size(); ++n) order[n] = n;
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        const int u = unit[a], v = unit[b];
        return group[at(u)] != group[at(v)] ? group[at(u)] < group[at(v)] : u < v;
    });
    plan.cells.clear();
    plan.unitStart.clear();
    plan.groupStart.clear();
    plan.groupStart.reserve(at(groups) + 1);
    for (std::size_t k = 0; k < order.size(); ++k) {
        const int u = unit[order[k]];
        const bool newUnit = k == 0 || unit[order[k - 1]] != u;
        const bool newGroup = k == 0 || group[at(unit[order[k - 1]])] != group[at(u)];
        if (newGroup) plan.groupStart.push_back(plan.unitStart.size());
        if (newUnit) plan.unitStart.push_back(k);
        plan.cells.push_back(ring[order[k]]);
    }
    plan.groupStart.push_back(plan.unitStart.size());
    plan.unitStart.push_back(plan.cells.size());
}

}  // namespace kvr
