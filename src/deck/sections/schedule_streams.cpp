#include "deck/sections/schedule_streams.hpp"

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
        forNamedWells(reader, presentStep(records), name,
                      [&](ScheduleWell& well) { well.injectionStream = wellName(stream); });
    }
    announce(reader, "WINJGAS");
}

}  // namespace kvr
