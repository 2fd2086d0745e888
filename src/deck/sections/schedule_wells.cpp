#include "deck/sections/schedule_wells.hpp"

#include "base/text.hpp"
#include "deck/sections/well_rows.hpp"
#include "fluid/black_oil.hpp"

#include <algorithm>
#include <array>

namespace kvr {

namespace {

constexpr double NotGiven = -1.0;  // of an item that has a default of its own
constexpr std::size_t MinTableRows = 2;

double injectionFactor(const UnitSystem& units, const std::string& fluid) {
    return toUpper(trim(fluid)).starts_with('G') ? units.gasRate : units.liquidRate;
}

void tellCount(const SectionReader& reader, std::string_view text, int count) {
    both(consoleOf(reader), "{} {}", text, count);
}

/// The well of a defining row, made when the step does not have it. Null for a blank name.
ScheduleWell* defineWell(const SectionReader& reader, ScheduleStep& step, const std::string& text) {
    const std::string name = wellName(text);
    if (name.empty()) {
        warnHere(reader, "WARNING :: WELL WITHOUT NAME, ROW SKIPPED");
        return nullptr;
    }
    if (ScheduleWell* known = changeWell(step, name); known != nullptr) return known;
    ScheduleWell well;
    well.name = name;
    well.place = placeOf(reader);
    step.wells.push_back(std::move(well));
    return &step.wells.own(step.wells.size() - 1);
}

char directionOf(const SectionReader& reader, const std::string& word) {
    const std::string letter = toUpper(trim(word).substr(0, 1));
    if (letter == "X" || letter == "Y" || letter == "Z") return letter.front();
    warnHere(reader, "WARNING :: DIRECTION {} IS NOT X, Y OR Z, SET TO Z", word);
    return 'Z';
}

/// Type word of a WELSPEC row: an injector of a fluid, "INJ" one of water, anything else a producer.
void takeWelspecType(const std::string& word, ScheduleWell& well) {
    const std::string type = toUpper(trim(word));
    well.isInjector = type.starts_with('I') || type.starts_with('W') || type.starts_with('G');
    well.injType = type.starts_with('G') ? "GAS" : "WATER";
}

/// The one number of a WELSPEC row goes to what its control word names: a pressure under BHP.
void takeWelspecControl(const SectionReader& reader, const std::string& control, double value,
                        ScheduleWell& well) {
    well.hasControl = true;
    well.holdsLimits = false;  // the one number is the control's
    setStatus("OPEN", well);
    well.control = control;
    const UnitSystem& units = *reader.units;
    if (toUpper(trim(control)).starts_with("BH")) {
        well.injBhp = pressureFrom(reader, value, DefaultInjectorBhp);
        well.prodBhp = pressureFrom(reader, value, DefaultProducerBhp);
    } else if (well.isInjector) {
        well.injRate = rateFrom(reader, value, injectionFactor(units, well.injType));
    } else {
        well.prodOil = well.prodWater = well.prodLiquid = well.prodResv =
            rateFrom(reader, value, units.liquidRate);
        well.prodGas = rateFrom(reader, value, units.gasRate);
    }
}

/// Items of WCONPROD and WCONHIST rows, deck units.
struct ProducerItems {
    std::string name, status = "OPEN", control;
    double oil = 0.0, water = 0.0, gas = 0.0, liquid = 0.0, resv = 0.0;
    double bhp = NotGiven, thp = 0.0;
    int liftTable = 0;
    double artificialLift = 0.0;
};

/// A well whose control is that of its group: by itself it stands at its pressure limit.
void takeControl(const SectionReader& reader, const std::string& control, ScheduleWell& well) {
    well.waitsForGroup = reader.commonForm && toUpper(trim(control)).starts_with("GRU");
    well.control = well.waitsForGroup ? "BHP" : control;
}

void takeProducer(const SectionReader& reader, const ProducerItems& row, ScheduleWell& well) {
    const UnitSystem& units = *reader.units;
    well.isInjector = false;
    well.hasControl = true;
    setStatus(row.status, well);
    takeControl(reader, row.control, well);
    well.prodOil = rateFrom(reader, row.oil, units.liquidRate);
    well.prodWater = rateFrom(reader, row.water, units.liquidRate);
    well.prodGas = rateFrom(reader, row.gas, units.gasRate);
    well.prodLiquid = rateFrom(reader, row.liquid, units.liquidRate);
    well.prodResv = rateFrom(reader, row.resv, units.liquidRate);
    well.prodBhp = pressureFrom(reader, row.bhp, DefaultProducerBhp);
    well.prodThp = row.thp * units.pressure;
    well.holdsLimits = reader.keyword == "WCONPROD";  // observed rates are no limits
    well.liftTable = row.liftTable;
    well.artificialLift = row.artificialLift;
}

/// Items of WCONINJE and WCONINJH rows, deck units.
struct InjectorItems {
    std::string name, type, status = "OPEN", control = "RATE";
    double rate = 0.0, resv = 0.0;
    double bhp = NotGiven, thp = 0.0;
    int liftTable = 0;
};

void takeInjector(const SectionReader& reader, const InjectorItems& row, ScheduleWell& well) {
    const UnitSystem& units = *reader.units;
    well.isInjector = true;
    well.hasControl = true;
    well.injType = row.type;
    setStatus(row.status, well);
    takeControl(reader, row.control, well);
    well.injRate = rateFrom(reader, row.rate, injectionFactor(units, row.type));
    well.injResv = rateFrom(reader, row.resv, units.liquidRate);
    well.holdsLimits = reader.keyword == "WCONINJE";
    well.injByReservoirRate =
        reader.commonForm && toUpper(trim(row.control)).starts_with("RE") && well.injResv > 0.0;
    if (well.holdsLimits && well.injResv > 0.0 && !well.injByReservoirRate)
        warnHere(reader, "WARNING :: WELL {}: THE LIMIT OF THE RESERVOIR RATE OF AN INJECTOR IS NOT HELD",
                 well.name);
}

/// Behind a keyword of prediction nothing is observed of the well any more.
void endHistory(ScheduleWell& well) {
    for (double* observed : {&well.histOil, &well.histWater, &well.histGas, &well.histThp, &well.histBhp,
                             &well.histInjRate, &well.histInjBhp, &well.histInjThp})
        *observed = 0.0;
}

/// Pressure at which the reservoir volume of observed rates is taken.
double historyPressure(double bhp, const InitialConditions& initial) {
    if (bhp > 0.0) return bhp;
    const double datum = initial.regions.front().datumPressure;
    return datum > 0.0 ? datum : StandardPressure;
}

void takeHistory(const SectionReader& reader, const ScheduleRecords& records, const ProducerItems& row,
                 ScheduleWell& well) {
    takeProducer(reader, row, well);
    well.histOil = well.prodOil;
    well.histWater = well.prodWater;
    well.histGas = well.prodGas;
    well.histThp = well.prodThp;
    well.histBhp = pressureFrom(reader, row.bhp, 0.0);
    well.prodLiquid = well.histOil + well.histWater;
    if (reader.commonForm) {
        const double p = historyPressure(0.0, records.initial);
        well.prodResv = reservoirVoidage(records.tables, p, well.histOil, well.histWater, well.histGas);
        return;
    }
    const double p = historyPressure(well.histBhp, records.initial);
    well.prodResv =
        std::max(0.0, historyReservoirRate(records.tables, p, well.histOil, well.histWater, well.histGas));
}

}  // namespace

double historyReservoirRate(const FluidTables& tables, double p, double qo, double qw, double qg) {
    // A schedule that stands in front of the tables finds their derived columns empty.
    const bool oilGiven = tables.OilInvFvf.size() >= MinTableRows;
    const bool gasGiven = tables.hasGas && tables.GasInvFvf.size() >= MinTableRows;
    const double Bo = oilGiven ? OilFvf(tables, p, p) : 1.0;
    const double Bg = gasGiven ? GasFvf(tables, p) : 1.0;
    const double Rs = oilGiven ? SolutionRs(tables, p) : 0.0;
    return WaterFvf(tables, p) * qw + Bo * qo + (qg * Bg - (qo / Bo) * Bg * Rs);
}

void readWelspec(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, step)) {
        std::string name, type, control;
        int headI = 0, headJ = 0;
        double diameter = 0.0, rate = 0.0;
        ScheduleCompletion row;
        readRow(reader, std::array<ListTarget, 10>{&name, &headI, &headJ, &row.k1, &row.k2, &diameter,
                                                   &row.skin, &type, &rate, &control});
        ++step.wellCount;
        ScheduleWell* well = defineWell(reader, step, name);
        if (well == nullptr) continue;
        well->headI = headI;
        well->headJ = headJ;
        takeWelspecType(type, *well);
        takeWelspecControl(reader, control, rate, *well);
        row.wellName = well->name;
        row.place = placeOf(reader);
        row.diameter = diameter * reader.units->length;
        keepCompletion(row, step);
        ++step.completionCount;
    }
    step.sourceHasWells = false;
    announce(reader, "WELSPEC : Keyword only for KVR");
    tellCount(reader, "-> Num of Well =", step.wellCount);
}

void readWelspecs(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, step)) {
        std::string name, group, phase;
        int headI = 0, headJ = 0;
        double depth = NoDatum;
        readRow(reader, std::array<ListTarget, 6>{&name, &group, &headI, &headJ, &depth, &phase});
        ++step.wellCount;
        ScheduleWell* well = defineWell(reader, step, name);
        if (well == nullptr) continue;
        well->group = wellName(group);
        well->headI = headI;
        well->headJ = headJ;
        well->refDepth = depth * reader.units->length;
        well->preferredPhase = wellName(phase);
    }
    announce(reader, "WELSPECS");
    tellCount(reader, "-> Num of Well =", step.wellCount);
}

void readCompdat(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, step)) {
        std::string name, direction = "Z";
        ScheduleCompletion row;
        readRow(reader, std::array<ListTarget, 13>{&name, &row.i, &row.j, &row.k1, &row.k2, &row.status,
                                                   &row.satTable, &row.transFactor, &row.diameter, &row.kh,
                                                   &row.skin, &row.dFactor, &direction});
        ++step.completionCount;
        row.place = placeOf(reader);
        row.direction = directionOf(reader, direction);
        row.diameter *= reader.units->length;
        if (reader.commonForm && row.transFactor == 0.0) row.transFactor = -1.0;  // as one left out
        if (row.transFactor >= 0.0) row.transFactor *= reader.units->connectionFactor;
        if (row.kh >= 0.0F) row.kh *= static_cast<float>(reader.units->length);
        forNamedWells(reader, step, name, [&](const ScheduleWell& well) {
            row.wellName = well.name;
            keepCompletion(row, step);
        });
    }
    announce(reader, "COMPDAT");
    tellCount(reader, "-> Num of COMPDAT =", step.completionCount);
}

void readWconprod(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, step)) {
        ProducerItems row;
        readRow(reader, std::array<ListTarget, 12>{&row.name, &row.status, &row.control, &row.oil, &row.water,
                                                   &row.gas, &row.liquid, &row.resv, &row.bhp, &row.thp,
                                                   &row.liftTable, &row.artificialLift});
        ++step.producerCount;
        forNamedWells(reader, step, row.name, [&](ScheduleWell& well) {
            takeProducer(reader, row, well);
            endHistory(well);
        });
    }
    announce(reader, "WCONPROD");
    tellCount(reader, "-> Num of Producer =", step.producerCount);
}

void readWconinje(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    while (nextWellRow(reader, step)) {
        InjectorItems row;
        readRow(reader, std::array<ListTarget, 9>{&row.name, &row.type, &row.status, &row.control, &row.rate,
                                                  &row.resv, &row.bhp, &row.thp, &row.liftTable});
        ++step.injectorCount;
        forNamedWells(reader, step, row.name, [&](ScheduleWell& well) {
            takeInjector(reader, row, well);
            endHistory(well);
            well.liftTable = row.liftTable;
            well.injBhp = pressureFrom(reader, row.bhp, DefaultInjectorBhp);
            well.injThp = row.thp * reader.units->pressure;
        });
    }
    announce(reader, "WCNINJE");
    tellCount(reader, "-> Num of Injector =", step.injectorCount);
}

void readWconhist(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    records.options.useHistoryControls = true;
    while (nextWellRow(reader, step)) {
        ProducerItems row;
        readRow(reader, std::array<ListTarget, 10>{&row.name, &row.status, &row.control, &row.oil, &row.water,
                                                   &row.gas, &row.liftTable, &row.artificialLift, &row.thp,
                                                   &row.bhp});
        if (!records.historyControl.empty()) row.control = records.historyControl;
        ++step.producerCount;
        forNamedWells(reader, step, row.name,
                      [&](ScheduleWell& well) { takeHistory(reader, records, row, well); });
    }
    announce(reader, "WCONHIST");
    tellCount(reader, "-> Num of Producer =", step.producerCount);
}

void readWconinjh(SectionReader& reader, ScheduleRecords& records) {
    ScheduleStep& step = presentStep(records);
    records.options.useHistoryControls = true;
    while (nextWellRow(reader, step)) {
        InjectorItems row;
        readRow(reader,
                std::array<ListTarget, 6>{&row.name, &row.type, &row.status, &row.rate, &row.bhp, &row.thp});
        ++step.injectorCount;
        forNamedWells(reader, step, row.name, [&](ScheduleWell& well) {
            takeInjector(reader, row, well);
            well.injBhp = DefaultInjectorBhp;  // an observed pressure is no limit
            well.histInjRate = well.injRate;
            well.histInjBhp = pressureFrom(reader, row.bhp, 0.0);
            well.histInjThp = row.thp * reader.units->pressure;
        });
    }
    announce(reader, "WCONINJH");
    tellCount(reader, "-> Num of Injector =", step.injectorCount);
}

void readWhistctl(SectionReader& reader, ScheduleRecords& records) {
    announce(reader, reader.keyword);
    skipCommentLines(reader);
    std::string control = "NONE", ends = "NO";
    const std::array<ListTarget, 2> targets = {&control, &ends};
    checkRead(reader, readList(*reader.cursor, targets));
    control = toUpper(trim(control));
    records.historyControl = control == "NONE" ? "" : control;
    if (toUpper(trim(ends)).starts_with('Y'))
        warnHere(reader,
                 "WARNING :: WHISTCTL: THE RUN DOES NOT END WHERE A WELL COMES TO ITS PRESSURE LIMIT");
}

}  // namespace kvr
