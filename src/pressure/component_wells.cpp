#include "pressure/component_wells.hpp"

#include "base/hard_stop.hpp"
#include "base/messages.hpp"
#include "pressure/wells/well_rates.hpp"

#include <algorithm>
#include <cmath>

namespace kvr {

namespace {

constexpr double LeastVolume = 1e-12;  // surface volume a lb-mole, ft3; less is none

bool bringsComponents(const Well& well) {
    return isInjector(well) && well.InjectFluid != "wat";
}

double sumOf(const Composition& z, int count) {
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += z[i];
    return sum;
}

/// Surface volumes, internal units, of a lb-mole of a stream.
PhaseVolumes surfaceOf(const UnitSystem& units, const SurfaceFluid& surface, WellMixture& mixture) {
    PhaseVolumes volumes = surfaceVolumes(surface, mixture.stream, mixture.surface);
    volumes.liquid /= units.VolumeFactor;
    volumes.vapour /= units.VolumeFactor;
    return volumes;
}

/// What draws the fluids of a cell into a connection, psi; nothing where they do not come.
double drawnInto(const CellState& state, const Well& well, const WellConnection& connection) {
    return std::max(0.0, -drawdown(state, well, connection));
}

/// Fractions of all that the connections of a producer let through, at one drawdown where none draws; false
/// where that is no component at all.
bool takeProducedStream(const UnitSystem& units, const ComponentStage& stage, const CellState& state,
                        double follow, const Well& well, WellMixture& mixture) {
    Composition sum{};
    const bool draws = std::any_of(
        well.connections.begin(), well.connections.end(),
        [&](const WellConnection& connection) { return drawnInto(state, well, connection) > 0.0; });
    for (const WellConnection& connection : well.connections) {
        const CellId c = connection.ConnCell;
        const FlashState& flash = stage.cells.flash[static_cast<std::size_t>(c)];
        const double drawn = draws ? drawnInto(state, well, connection) : 1.0;
        const double liquid = drawn * connection.ConnWI * state.LambdaO[c] *
                              phaseMolesIn(stage, units.VolumeFactor, state, c, true);
        const double vapour = drawn * connection.ConnWI * state.LambdaG[c] *
                              phaseMolesIn(stage, units.VolumeFactor, state, c, false);
        for (int i = 0; i < stage.set.count; ++i)
            sum[i] += liquid * flash.liquid[i] + vapour * flash.vapour[i];
    }
    const double total = sumOf(sum, stage.set.count);
    if (!(total > 0.0)) return false;
    for (int i = 0; i < stage.set.count; ++i)
        mixture.stream[i] += follow * (sum[i] / total - mixture.stream[i]);
    return true;
}

double producedDensity(const CellState& state, const Well& well) {
    double mass = 0.0, mobility = 0.0;
    for (const WellConnection& connection : well.connections) {
        const CellId c = connection.ConnCell;
        const double wi = connection.ConnWI;
        mass += wi * (state.LambdaO[c] * state.RhoO[c] + state.LambdaW[c] * state.RhoW[c] +
                      state.LambdaG[c] * state.RhoG[c]);
        mobility += wi * (state.LambdaO[c] + state.LambdaW[c] + state.LambdaG[c]);
    }
    return mobility > 0.0 ? mass / mobility : 0.0;
}

/// The yields of what a producer drew: by connection the lb-mole in a reservoir volume of all that it takes,
/// referred to the volumes of liquid and vapour among it. False where it drew none, or where one has neither.
bool yieldDrawn(const UnitSystem& units, const SurfaceFluid& surface, const CellState& state,
                const DrawnMixture& drawn, WellMixture& mixture, Well& well) {
    if (drawn.perVolume.size() != well.connections.size()) return false;
    const auto hasNone = [&state](const WellConnection& connection) {
        return !(state.LambdaO[connection.ConnCell] + state.LambdaG[connection.ConnCell] > 0.0);
    };
    if (std::any_of(well.connections.begin(), well.connections.end(), hasNone)) return false;
    mixture.stream = drawn.stream;
    const PhaseVolumes volumes = surfaceOf(units, surface, mixture);
    for (std::size_t n = 0; n < well.connections.size(); ++n) {
        WellConnection& connection = well.connections[n];
        const CellId c = connection.ConnCell;
        const double carrying = state.LambdaO[c] + state.LambdaG[c];
        const double moles = drawn.perVolume[n] * (carrying + state.LambdaW[c]) / carrying;
        const double oil = moles * volumes.liquid, gas = moles * volumes.vapour;
        connection.mixture = {true, oil, gas, oil, gas, 0.0};
    }
    return true;
}

void yieldProducer(const UnitSystem& units, const SurfaceFluid& surface, const ComponentStage& stage,
                   const CellState& state, double follow, WellMixture& mixture, Well& well) {
    well.mixtureDensity = producedDensity(state, well);
    PhaseVolumes volumes;
    if (takeProducedStream(units, stage, state, follow, well, mixture))
        volumes = surfaceOf(units, surface, mixture);
    for (WellConnection& connection : well.connections) {
        const CellId c = connection.ConnCell;
        const double liquid = phaseMolesIn(stage, units.VolumeFactor, state, c, true);
        const double vapour = phaseMolesIn(stage, units.VolumeFactor, state, c, false);
        connection.mixture = {true,
                              liquid * volumes.liquid,
                              liquid * volumes.vapour,
                              vapour * volumes.liquid,
                              vapour * volumes.vapour,
                              0.0};
    }
}

void yieldInjector(const ComponentSet& set, const DirectionArray<double>& partial, const CellState& state,
                   WellMixture& mixture, Well& well) {
    for (WellConnection& connection : well.connections) {
        double perMole = 0.0;
        for (int i = 0; i < set.count; ++i)
            perMole += mixture.stream[i] * partial(connection.ConnCell, i + 1);
        connection.mixture = {true, 0.0, 0.0, 0.0, 0.0, perMole * mixture.perSurface};
    }
    if (well.connections.empty()) return;
    const double p = state.Pressure[well.connections.front().ConnCell];
    if (!(p > 0.0)) return;
    FlashPT(set, mixture.stream, p, mixture.bore);
    const PhaseVolumes volumes = phaseVolumes(set, p, mixture.bore);
    well.mixtureDensity = molarMass(set, mixture.stream) / (volumes.liquid + volumes.vapour);
}

const InjectionStream* findStream(const Schedule& schedule, const std::string& name) {
    const auto found = std::find_if(schedule.streams.begin(), schedule.streams.end(),
                                    [&name](const InjectionStream& s) { return s.name == name; });
    return found == schedule.streams.end() ? nullptr : &*found;
}

void takeStream(const Console& console, const UnitSystem& units, const SurfaceFluid& surface,
                const Schedule& schedule, const Well& well, WellMixture& mixture) {
    mixture.hasStream = bringsComponents(well);
    if (!mixture.hasStream) return;
    const InjectionStream* const stream = findStream(schedule, well.injectionStream);
    if (stream == nullptr) {
        if (well.shut) return;
        both(console, "ERROR :: WELL {} INJECTS {} WITHOUT A STREAM, GIVE WELLSTRE AND WINJGAS",
             well.WellName, well.InjectFluid == "gas" ? "GAS" : "OIL");
        hardStop(console);
    }
    const auto count = std::min<std::size_t>(stream->moleFraction.size(), MaxComponents);
    std::copy_n(stream->moleFraction.begin(), count, mixture.stream.begin());
    const PhaseVolumes volumes = surfaceOf(units, surface, mixture);
    const double named = well.InjectFluid == "gas" ? volumes.vapour : volumes.liquid;
    if (!(named > LeastVolume)) {
        both(console, "ERROR :: STREAM {} OF WELL {} HAS NO {} AT THE SURFACE", stream->name, well.WellName,
             well.InjectFluid == "gas" ? "GAS" : "OIL");
        hardStop(console);
    }
    mixture.perSurface = 1.0 / named;
}

}  // namespace

void takeStreams(const Console& console, const UnitSystem& units, const SurfaceFluid& surface,
                 const Schedule& schedule, const WellRecord& wells, std::vector<WellMixture>& mixtures) {
    mixtures.resize(std::max(mixtures.size(), wells.wells.size()));
    for (std::size_t w = 0; w < wells.wells.size(); ++w)
        takeStream(console, units, surface, schedule, wells.wells[w], mixtures[w]);
}

void yieldWells(const UnitSystem& units, const SurfaceFluid& surface, const ComponentStage& stage,
                const CellState& state, double follow, std::span<const DrawnMixture> drawn,
                std::vector<WellMixture>& mixtures, WellRecord& wells) {
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        Well& well = wells.wells[w];
        if (!isInjector(well) && w < drawn.size() &&
            yieldDrawn(units, surface, state, drawn[w], mixtures[w], well))
            well.mixtureDensity = producedDensity(state, well);
        else if (!isInjector(well))
            yieldProducer(units, surface, stage, state, follow, mixtures[w], well);
        else if (mixtures[w].hasStream && mixtures[w].perSurface > 0.0)
            yieldInjector(stage.set, stage.Partial, state, mixtures[w], well);
    }
}

void takeSources(const WellRecord& wells, const std::vector<WellMixture>& mixtures,
                 std::vector<ComponentSource>& sources) {
    sources.clear();
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        const Well& well = wells.wells[w];
        for (std::size_t n = 0; n < well.connections.size(); ++n) {
            const WellConnection& connection = well.connections[n];
            ComponentSource source;
            source.cell = connection.ConnCell;
            source.well = w;
            source.place = n;
            if (!isInjector(well)) {
                source.produced = std::max(0.0, -connection.reservoirRate);
            } else if (mixtures[w].hasStream) {
                const double surface = well.InjectFluid == "gas" ? connection.ConnQg : connection.ConnQo;
                for (int i = 0; i < MaxComponents; ++i)
                    source.stream[i] = surface * mixtures[w].perSurface * mixtures[w].stream[i];
            } else {
                source.waterStream = connection.ConnQw;
            }
            sources.push_back(source);
        }
    }
}

void takeDrawn(double dt, int count, const std::vector<ComponentSource>& sources,
               const std::vector<SourceTotals>& moved, const WellRecord& wells,
               std::vector<DrawnMixture>& drawn) {
    drawn.assign(wells.wells.size(), {});
    std::vector<double> totals(wells.wells.size(), 0.0);
    for (std::size_t s = 0; s < sources.size(); ++s) {
        if (isInjector(wells.wells[sources[s].well])) continue;
        DrawnMixture& mixture = drawn[sources[s].well];
        const double moles = -sumOf(moved[s].moles, count), volume = dt * sources[s].produced;
        for (int i = 0; i < count; ++i) mixture.stream[i] -= moved[s].moles[i];
        totals[sources[s].well] += moles;
        mixture.perVolume.push_back(volume > 0.0 ? moles / volume : 0.0);
    }
    for (std::size_t w = 0; w < drawn.size(); ++w) {
        const bool isKnown = std::all_of(drawn[w].perVolume.begin(), drawn[w].perVolume.end(),
                                         [](double moles) { return moles > 0.0; });
        if (!isKnown || !(totals[w] > 0.0)) drawn[w].perVolume.clear();
        for (int i = 0; isKnown && i < count; ++i) drawn[w].stream[i] /= totals[w];
    }
}

void rateWells(const UnitSystem& units, const SurfaceFluid& surface, double dt,
               const std::vector<ComponentSource>& sources, const std::vector<SourceTotals>& moved,
               std::vector<WellMixture>& mixtures, WellRecord& wells) {
    const int count = surface.set.count;
    for (WellMixture& mixture : mixtures) mixture.step = {};
    for (Well& well : wells.wells) well.WellQo = well.WellQw = well.WellQg = 0.0;
    for (std::size_t s = 0; s < sources.size(); ++s) {
        SourceTotals& sum = mixtures[sources[s].well].step;
        for (int i = 0; i < count; ++i) sum.moles[i] += moved[s].moles[i];
        sum.water += moved[s].water;
    }
    for (std::size_t w = 0; w < wells.wells.size(); ++w) {
        WellMixture& mixture = mixtures[w];
        SourceTotals& total = isInjector(wells.wells[w]) ? mixture.injected : mixture.produced;
        const double sign = isInjector(wells.wells[w]) ? 1.0 : -1.0;
        const double moles = sumOf(mixture.step.moles, count);
        for (int i = 0; i < count; ++i) {
            total.moles[i] += sign * mixture.step.moles[i];
            if (moles != 0.0 && sign < 0.0) mixture.stream[i] = mixture.step.moles[i] / moles;
        }
        total.water += sign * mixture.step.water;
    }
    for (std::size_t s = 0; s < sources.size(); ++s) {
        WellMixture& mixture = mixtures[sources[s].well];
        Well& well = wells.wells[sources[s].well];
        WellConnection& connection = well.connections[sources[s].place];
        const double moles = sumOf(moved[s].moles, count) / dt;
        const PhaseVolumes volumes = moles != 0.0 ? surfaceOf(units, surface, mixture) : PhaseVolumes{};
        connection.ConnQo = moles * volumes.liquid;
        connection.ConnQg = moles * volumes.vapour;
        connection.ConnQw = moved[s].water / dt;
        well.WellQo += connection.ConnQo;
        well.WellQg += connection.ConnQg;
        well.WellQw += connection.ConnQw;
    }
}

}  // namespace kvr
