#include "deck/sections/schedule_streams.hpp"

#include "base/text.hpp"
#include "deck/sections/component_rules.hpp"
#include "deck/sections/well_rows.hpp"

#include <algorithm>

namespace kvr {

namespace {

/// A later row for a tracer replaces the earlier one.
void injectTracer(const std::string& tracer, double concentration, ScheduleWell& well) {
    well.tracerConcentration = concentration;
    for (InjectedTracer& known : well.injectedTracers) {
        if (known.name != tracer) continue;
        known.concentration = concentration;
        return;
    }
    well.injectedTracers.push_back({tracer, concentration});
}

/// A stream must stand before the wells that it is for.
void tellStream(const SectionReader& reader, const std::vector<InjectionStream>& streams,
                const std::string& fluid, const std::string& stream) {
    if (toUpper(trim(fluid)) != "STREAM") {
        warnHere(reader, "WARNING :: WINJGAS: FLUID {} IS NOT KNOWN, ONLY STREAM IS", fluid);
        return;
    }
    const bool isKnown = std::any_of(streams.begin(), streams.end(),
                                     [&stream](const InjectionStream& row) { return row.name == stream; });
    if (!isKnown) warnHere(reader, "WARNING :: WINJGAS: STREAM {} IS NOT GIVEN BY WELLSTRE BEFORE", stream);
}

}  // namespace

void readWtracer(SectionReader& reader, ScheduleRecords& records) {
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, tracer;
        double concentration = 0.0;
        readRow(reader, std::array<ListTarget, 3>{&name, &tracer, &concentration});
        forNamedWells(reader, presentStep(records), name,
                      [&](ScheduleWell& well) { injectTracer(tracer, concentration, well); });
    }
    announce(reader, "WTRACER");
}

void readWellstre(SectionReader& reader, ScheduleRecords& records) {
    std::vector<InjectionStream>& streams = records.schedule.streams;
    while (nextRow(reader)) {
        InjectionStream row;
        row.moleFraction.assign(static_cast<std::size_t>(std::max(0, records.options.componentCount)), 0.0);
        std::vector<ListTarget> targets = {&row.name};
        for (double& fraction : row.moleFraction) targets.emplace_back(&fraction);
        checkRead(reader, readList(*reader.cursor, targets));
        row.name = wellName(row.name);
        if (!row.moleFraction.empty()) checkComposition(reader, row.moleFraction);
        const auto known = std::find_if(streams.begin(), streams.end(),
                                        [&row](const InjectionStream& s) { return s.name == row.name; });
        if (known != streams.end())
            *known = row;
        else
            streams.push_back(row);
    }
    announce(reader, "WELLSTRE");
}

void readWinjgas(SectionReader& reader, ScheduleRecords& records) {
    while (nextWellRow(reader, presentStep(records))) {
        std::string name, fluid, stream;
        readRow(reader, std::array<ListTarget, 3>{&name, &fluid, &stream});
        if (records.options.componentCount > 0)
            tellStream(reader, records.schedule.streams, fluid, wellName(stream));
        forNamedWells(reader, presentStep(records), name,
                      [&](ScheduleWell& well) { well.injectionStream = wellName(stream); });
    }
    announce(reader, "WINJGAS");
}

}  // namespace kvr
