#include "run/last_wells.hpp"

#include "report/run_vectors.hpp"
#include "report/text_table.hpp"
#include "run/report_rows.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr int NameWidth = 12;

struct WellColumn {
    std::string_view name;
    std::string_view produced, injected;  // mnemonics; blank: nothing to show
    int width;
    int decimals;
    bool ofGas;
};

constexpr WellColumn Columns[] = {
    {"Oil rate", "WOPR", "WOIR", 11, 1, false}, {"Water rate", "WWPR", "WWIR", 11, 1, false},
    {"Gas rate", "WGPR", "WGIR", 11, 1, true},  {"Water cut", "WWCT", "", 10, 3, false},
    {"Gas/oil", "WGOR", "", 9, 3, true},        {"BHP", "WBHP", "WBHP", 10, 1, false},
};

bool isShown(const WellColumn& column, const Simulation& s) {
    return !column.ofGas || s.options.hasGas;
}

void tellHead(const Simulation& s) {
    std::string names = fmt::format("{:<{}}", "Wells on", NameWidth);
    std::string units = fmt::format("{:<{}}", dateText(s.clock), NameWidth);
    for (const WellColumn& column : Columns) {
        if (!isShown(column, s)) continue;
        const Quantity quantity = vectorOf(column.produced)->quantity;
        names += fmt::format("{:>{}}", column.name, column.width);
        units += fmt::format("{:>{}}", deckUnit(s.units, quantity).word, column.width);
    }
    tell(s.console, "");
    tell(s.console, names);
    tell(s.console, units);
}

/// Another rate than that of its control holds the well.
bool isHeldByRateLimit(const Well& well) {
    return isRateControlled(well) && !well.givenControl.empty() && well.WellControl != well.givenControl;
}

std::string_view stateOf(const Well& well) {
    if (well.shut) return "  shut";
    if (isAtLimit(well)) return isInjector(well) ? "  injects, at its BHP limit" : "  at its BHP limit";
    if (isHeldByRateLimit(well)) return "  at a limit of its rates";
    return isInjector(well) ? "  injects" : "";
}

std::string rowText(const Simulation& s, const Well& well, const StepFigures& figures,
                    const WellFigures& figure) {
    std::string text = fmt::format("{:<{}}", withoutBlanks(well.WellName), NameWidth);
    for (const WellColumn& column : Columns) {
        if (!isShown(column, s)) continue;
        const std::string_view mnemonic = isInjector(well) ? column.injected : column.produced;
        if (mnemonic.empty()) {
            text += fmt::format("{:>{}}", "-", column.width);
            continue;
        }
        const RunVector& vector = *vectorOf(mnemonic);
        const double value = vector.value(figures, figure) * deckUnit(s.units, vector.quantity).factor;
        text += fmt::format("{:>{}.{}f}", value, column.width, column.decimals);
    }
    return text + std::string(stateOf(well));
}

}  // namespace

bool isAtLimit(const Well& well) {
    return !well.shut && well.WellControl == "bhp" && well.givenControl != "bhp";
}

void tellLastWells(const Simulation& simulation) {
    const std::vector<Well>& wells = simulation.wells.wells;
    if (wells.empty() || simulation.balance.rows.size() < 2) return;
    const StepFigures figures = stepFigures(simulation);
    tellHead(simulation);
    for (std::size_t w = 0; w < std::min(wells.size(), MostWellRows); ++w)
        tell(simulation.console, rowText(simulation, wells[w], figures, figures.wells[w]));
    if (wells.size() > MostWellRows)
        tell(simulation.console, fmt::format("and {} more", wells.size() - MostWellRows));
}

}  // namespace kvr
