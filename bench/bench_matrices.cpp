#include "bench_matrices.hpp"

#include "pressure/pressure_step.hpp"
#include "run/start_up.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <filesystem>
#include <memory>
#include <utility>

namespace kvr::bench {

namespace {

constexpr test::Box SmallField = {60, 220, 5};
constexpr test::Box LargeField = {60, 220, 85};

/// Wells in balance, two in and two out: the answer is then no large mean pressure in which the residual
/// would be lost to rounding.
LinearSystem fieldSystem(const test::Box& box, double deviation, std::array<double, 3> factors) {
    constexpr std::array<double, 5> Flows = {1000.0, -1000.0, 1000.0, -1000.0, 0.0};
    const std::vector<double> field = test::lognormalField(box.cells(), deviation, 2024);
    const std::vector<test::GeneratedWell> wells = test::fiveSpotWells(box, field);
    LinearSystem system = boxSystem(box, field, factors, 1e-6, wells);
    for (std::size_t w = 0; w < wells.size(); ++w)
        system.rhs[static_cast<std::size_t>(system.cellRows) + w] = Flows[w] * wells[w].rowWeight;
    return system;
}

void addVariants(const test::Box& box, const std::string& ending, std::vector<NamedSystem>& systems) {
    systems.push_back({"lognormal" + ending, fieldSystem(box, 2.0, {1.0, 4.0, 30.0})});
    systems.push_back({"strongly anisotropic" + ending, fieldSystem(box, 2.0, {1.0, 1.0, 1e3})});
    systems.push_back({"homogeneous" + ending, fieldSystem(box, 0.0, {1.0, 1.0, 1.0})});
    systems.push_back({"one-sided multipliers" + ending, fieldSystem(box, 2.0, {1.0, 4.0, 30.0})});
    test::oneSidedMultipliers(systems.back().system, 0.02, 7);
}

}  // namespace

NamedSystem assembledSystem(const std::string& folder) {
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    const auto simulation = std::make_unique<Simulation>();
    startUp(*simulation);
    simulation->clock.dt = 50.0;
    PressureStep(*simulation, 0, 1);
    std::filesystem::current_path(here);
    LinearSystem system = simulation->pressureWork.matrix.system;
    system.reference = 0.0;  // both solvers go by the right side as it is
    return {std::filesystem::path(folder).filename().string(), std::move(system)};
}

std::vector<NamedSystem> generatedSystems(bool large) {
    std::vector<NamedSystem> systems;
    addVariants(SmallField, "", systems);
    if (large) addVariants(LargeField, ", large", systems);
    return systems;
}

}  // namespace kvr::bench
