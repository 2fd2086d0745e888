#include "bench_matrices.hpp"

#include "pressure/pressure_step.hpp"
#include "run/start_up.hpp"
#include "unit/pressure/solvers/generated_systems.hpp"

#include <filesystem>
#include <memory>

namespace kvr::bench {

namespace {

constexpr test::Box SmallField = {60, 220, 5};
constexpr test::Box LargeField = {60, 220, 85};

LinearSystem fieldSystem(const test::Box& box, double deviation, std::array<double, 3> factors) {
    const std::vector<double> field = test::lognormalField(box.cells(), deviation, 2024);
    LinearSystem system = boxSystem(box, field, factors, 1e-6, test::fiveSpotWells(box, field));
    for (int w = system.cellRows; w < system.size; ++w) system.rhs[w] = w % 2 == 0 ? 1000.0 : -1000.0;
    return system;
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
    return {std::filesystem::path(folder).filename().string(), simulation->pressureWork.matrix.system};
}

std::vector<NamedSystem> generatedSystems() {
    std::vector<NamedSystem> systems;
    systems.push_back({"lognormal", fieldSystem(SmallField, 2.0, {1.0, 4.0, 30.0})});
    systems.push_back({"strongly anisotropic", fieldSystem(SmallField, 2.0, {1.0, 1.0, 1e4})});
    systems.push_back({"homogeneous", fieldSystem(SmallField, 0.0, {1.0, 1.0, 1.0})});
    systems.push_back({"one-sided multipliers", fieldSystem(SmallField, 2.0, {1.0, 4.0, 30.0})});
    test::oneSidedMultipliers(systems.back().system, 0.02, 7);
    systems.push_back({"lognormal, large", fieldSystem(LargeField, 2.0, {1.0, 4.0, 30.0})});
    return systems;
}

}  // namespace kvr::bench
