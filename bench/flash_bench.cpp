/// Flashes a second from the last K-values, as the cells of a running simulation ask for them: pressure and
/// feed move a little from call to call. Counter: million flashes a second of one core.
#include "fluid/components/flash.hpp"
#include "unit/fluid/components/component_samples.hpp"

#include <benchmark/benchmark.h>
#include <cmath>

namespace kvr::bench {
namespace {

constexpr double PressureSwing = 0.02, FeedSwing = 0.02;  // of the pressure; moles of the lightest
constexpr double PressurePhase = 0.013, FeedPhase = 0.01;

/// Three of the six components.
ComponentSet threeOf(const ComponentSet& six) {
    ComponentSet set = six;
    set.count = 3;
    const std::size_t kept[] = {0, 1, 3};
    for (std::size_t i = 0; i < 3; ++i) {
        set.Tc[i] = six.Tc[kept[i]], set.Pc[i] = six.Pc[kept[i]], set.Acf[i] = six.Acf[kept[i]];
        set.Mw[i] = six.Mw[kept[i]], set.Vc[i] = six.Vc[kept[i]];
        set.a[i] = six.a[kept[i]], set.b[i] = six.b[kept[i]];
        for (std::size_t j = 0; j < 3; ++j) set.cross[i][j] = six.cross[kept[i]][kept[j]];
    }
    return set;
}

void flashes(benchmark::State& state, const ComponentSet& set, const Composition& feed, double pressure) {
    FlashState last;
    FlashPT(set, feed, pressure, last);
    double k = 0.0;
    for (auto _ : state) {
        Composition moved = feed;
        const double change = FeedSwing * std::sin(FeedPhase * k);
        moved[0] += change;
        moved[static_cast<std::size_t>(set.count) - 1] -= change;
        FlashPT(set, moved, pressure * (1.0 + PressureSwing * std::cos(PressurePhase * k)), last);
        benchmark::DoNotOptimize(last.vapourFraction);
        k += 1.0;
    }
    state.counters["million/s"] = {static_cast<double>(state.iterations()) / 1e6,
                                   benchmark::Counter::kIsRate};
}

}  // namespace
}  // namespace kvr::bench

int main(int argumentCount, char** arguments) {
    using namespace kvr;
    const ComponentSet six = sixComponentOil(620.0), three = bench::threeOf(six);
    const Composition oilOfThree = {0.5, 0.2, 0.3}, oilOfSix = {0.5, 0.08, 0.12, 0.15, 0.1, 0.05};
    const struct {
        const char* name;
        const ComponentSet& set;
        const Composition& feed;
        double pressure;
    } rows[] = {{"flash/3 components, two phases", three, oilOfThree, 1500.0},
                {"flash/6 components, two phases", six, oilOfSix, 1500.0},
                {"flash/3 components, one phase", three, oilOfThree, 4500.0},
                {"flash/6 components, one phase", six, oilOfSix, 4500.0}};
    for (const auto& row : rows)
        benchmark::RegisterBenchmark(row.name, [&row](benchmark::State& state) {
            bench::flashes(state, row.set, row.feed, row.pressure);
        });
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
