#include "base/constants.hpp"
#include "base/text.hpp"
#include "deck/options/option_handlers.hpp"

namespace kvr {

namespace {

constexpr std::string_view AlHutaliText = "Waterflood Optimization Activated - Al-Hutali Method";

/// One price record; the three price keywords share their first line.
void readPrices(SectionReader& reader, PhasePrices& prices) {
    beginRecord(reader, "NPV");
    const std::array<ListTarget, 3> targets = {&prices.oil, &prices.water, &prices.gas};
    checkRead(reader, readList(*reader.cursor, targets));
}

void setWaterfloodDefaults(RunOptions& options) {
    const RunOptions builtIn;
    options.optimizationStart = builtIn.optimizationStart;
    options.optimizationEmin = builtIn.optimizationEmin;
    options.optimizationEmax = builtIn.optimizationEmax;
    options.optimizationAlpha = builtIn.optimizationAlpha;
    options.optimizationWmin = builtIn.optimizationWmin;
    options.optimizationWmax = builtIn.optimizationWmax;
    options.optimizationMinFlux = builtIn.optimizationMinFlux;
    options.optimizationTofUsage = builtIn.optimizationTofUsage;
    options.optimizationTolerance = builtIn.optimizationTolerance;
}

}  // namespace

void setOptimize(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.rateOptimization = true;
    lineToBoth(consoleOf(reader), "Waterflood Optimization Activated");
}

void readWaterfloodNumbers(SectionReader& reader, RunOptions& options) {
    setWaterfloodDefaults(options);
    const std::array<ListTarget, 9> targets = {
        &options.optimizationStart,   &options.optimizationEmin,     &options.optimizationEmax,
        &options.optimizationAlpha,   &options.optimizationWmin,     &options.optimizationWmax,
        &options.optimizationMinFlux, &options.optimizationTofUsage, &options.optimizationTolerance};
    readRecord(reader, targets);
    // On purpose the check looks at what has been read so far: in front of OPTIMIZE it does not fire.
    if (options.rateOptimization && options.optimizationMinFlux < MachineEpsilon) {
        lineToBoth(consoleOf(reader), "ERROR : Option 7 should not be zero at WFOOPT. Provide constraint");
        stopAtPlace(reader);
    }
}

void setEqualArrival(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.equalArrival = true;
    options.rateOptimization = false;
    lineToBoth(consoleOf(reader), AlHutaliText);
}

void setNpvOptimization(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.npvOptimization = true;
    options.rateOptimization = true;
    options.equalArrival = false;
    options.equalizeWafs = false;
    lineToBoth(consoleOf(reader), AlHutaliText);
}

void readNpvPrice(SectionReader& reader, RunOptions& options) {
    readPrices(reader, options.productionPrice);
    const PhasePrices& production = options.productionPrice;
    // Injected oil and gas cost what they earn when produced; water costs at both ends, so its sign stays.
    options.injectionPrice = {-production.oil, production.water, -production.gas};
    both(consoleOf(reader), "Price of OIL,WATER and GAS, $/bbl,$/bbl and $/Mscf {} {} {}",
         number(production.oil), number(production.water), number(production.gas));
}

void readInjectionPrice(SectionReader& reader, RunOptions& options) {
    readPrices(reader, options.injectionPrice);
}

void readProductionPrice(SectionReader& reader, RunOptions& options) {
    readPrices(reader, options.productionPrice);
}

void readComponentPrice(SectionReader& reader, RunOptions& options) {
    options.componentPrice.assign(static_cast<std::size_t>(options.componentCount), 1.0);
    readRecord(reader, std::span<double>(options.componentPrice));
}

void setEqualizeWafs(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.rateOptimization = true;
    options.equalArrival = false;
    options.equalizeWafs = true;
    lineToBoth(consoleOf(reader), "Waterflood Optimization Activated - Thieles Method");
}

void setMinimumMiscibility(SectionReader& reader, RunOptions& options) {
    announce(reader, reader.keyword);
    options.minimumMiscibility = true;
    lineToBoth(consoleOf(reader), "Flow Optimizatio : Missibility Pressure option Activated");
}

void readMiscibilityTarget(SectionReader& reader, RunOptions& options) {
    double target = 0.0;
    const std::array<ListTarget, 1> targets = {&target};
    readRecord(reader, targets);
    if (!(target >= 0.0)) {
        warnHere(reader, "WARNING :: MMPTARGET {} IS BELOW 0, NO PRESSURE IS AIMED AT", number(target));
        target = 0.0;
    }
    const double toPsi = reader.units != nullptr ? reader.units->pressure : 1.0;
    options.miscibilityTarget = target * toPsi;
    tellValue(reader, "-> Average pressure to be kept, psia :", options.miscibilityTarget);
}

void readRateInterval(SectionReader& reader, RunOptions& options) {
    const std::array<ListTarget, 1> targets = {&options.rateInterval};
    readRecord(reader, targets);
    options.rateInterval = within(options.rateInterval, 0.0, LargestSetting, 0.0);
    tellValue(reader, "-> Days between changes of rates     :", options.rateInterval);
}

void readBaseSummary(SectionReader& reader, RunOptions& options) {
    std::string name;
    const std::array<ListTarget, 1> targets = {&name};
    readRecord(reader, targets);
    name = trim(name);
    const bool absolute = !name.empty() && name.front() == '/';
    options.baseSummary = absolute ? name : std::string(trim(reader.workingFolder)) + name;
    tellValue(reader, "-> Compared with the run of          :", options.baseSummary);
}

}  // namespace kvr
