#include "deck/sections/grid_checks.hpp"

#include "base/constants.hpp"
#include "base/messages.hpp"

#include <algorithm>

namespace kvr {

namespace {

constexpr double LeastTop = 0.0;  // ft; a surface value must not lie above sea level
constexpr double LeastRock =
    1e-12;  // one porosity, and one permeability of each direction, must lie above it

template <class Test>
int switchOff(GridModel& grid, const Test& test) {
    int count = 0;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (!test(cell)) continue;
        grid.Active[cell] = 0;
        ++count;
    }
    return count;
}

int repairPermeability(GridModel& grid) {
    int count = 0;
    for (CellArray<double>* array : {&grid.PERMX, &grid.PERMY, &grid.PERMZ})
        for (double& value : array->cells())
            if (!(value >= 0.0)) {
                value = 0.0;
                ++count;
            }
    return count;
}

bool noneAbove(const CellArray<double>& array, double least) {
    return std::none_of(array.cells().begin(), array.cells().end(),
                        [least](double value) { return value > least; });
}

[[noreturn]] void stop(SectionReader& reader, std::string_view keyword, std::string_view message) {
    lineToBoth(consoleOf(reader), message);
    reader.keyword = keyword;
    stopAtPlace(reader);
}

struct ArrayCheck {
    std::string_view keyword;
    CellArray<double> GridModel::*array;
    std::string_view message;
};

constexpr ArrayCheck SizeChecks[] = {
    {"DX", &GridModel::DX, "ERROR at GRID :: DX NOT ENOUGH"},
    {"DY", &GridModel::DY, "ERROR at GRID :: DY NOT ENOUGH"},
    {"DZ", &GridModel::DZ, "ERROR at GRID :: DZ NOT ENOUGH"},
};

constexpr ArrayCheck RockChecks[] = {
    {"PORO", &GridModel::PORO, "ERROR at GRID :: INITIAL POROSITY IS ERRORNEOUS"},
    {"PERMX", &GridModel::PERMX, "ERROR at GRID :: PERMEABILITY IS ERRORNEOUS"},
    {"PERMY", &GridModel::PERMY, "ERROR at GRID :: PERMEABILITY IS ERRORNEOUS"},
    {"PERMZ", &GridModel::PERMZ, "ERROR at GRID :: PERMEABILITY IS ERRORNEOUS"},
};

/// EQUALS, MULTIPLY and COPY may have made what the arrays were not.
void checkPorosity(SectionReader& reader, const GridModel& grid) {
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell) {
        if (!(grid.PORO[cell] > 1.0)) continue;
        both(consoleOf(reader), "ERROR :: POROSITY ABOVE 1; FIRST: CELL {} (I {}, J {}, K {}), {}", cell,
             grid.CellI[cell], grid.CellJ[cell], grid.CellK[cell], number(grid.PORO[cell]));
        reader.keyword = "PORO";
        stopAtPlace(reader);
    }
}

void checkTops(SectionReader& reader, const GridModel& grid) {
    const auto tops =
        grid.TOPS.cells().first(static_cast<std::size_t>(grid.NX) * static_cast<std::size_t>(grid.NY));
    const bool sound = std::all_of(tops.begin(), tops.end(), [](double top) { return top >= LeastTop; });
    if (!sound) stop(reader, "TOPS", "ERROR at GRID :: SURFACE DATA (TOPS) IS ERRORNEOUS");
}

}  // namespace

void checkDimensionsKnown(const SectionReader& reader, const GridModel& grid) {
    if (grid.NCELLS > 0) return;
    lineToBoth(consoleOf(reader), "ERROR :: DIMENS NOT SPECIFIED");
    stopAtPlace(reader);
}

void settleActivity(const SectionReader& reader, GridModel& grid) {
    const Console& console = consoleOf(reader);
    const int noRock = switchOff(grid, [&](CellId cell) {
        return !(grid.PORO[cell] >= MachineEpsilon) || !(grid.NTG[cell] >= MachineEpsilon);
    });
    both(console, "NOTE at GRID :: INACTIVE GRID (PORO or NTG is tiny, treat as INACTIVE) :: {}", noRock);
    const int noVolume = switchOff(grid, [&](CellId cell) {
        return !(grid.DX[cell] > 0.0 && grid.DY[cell] > 0.0 && grid.DZ[cell] > 0.0);
    });
    if (noVolume > 0)
        both(console, "NOTE at GRID :: INACTIVE GRID (NO VOLUME, treat as INACTIVE) :: {}", noVolume);
    const int repaired = repairPermeability(grid);
    if (repaired > 0) warn(console, "WARNING :: PERMEABILITY BELOW ZERO, SET TO ZERO :: {}", repaired);
}

void checkGridArrays(SectionReader& reader, const GridModel& grid) {
    for (const ArrayCheck& check : SizeChecks) {
        const auto row = (grid.*check.array).cells().first(static_cast<std::size_t>(grid.NX));
        const bool sound = std::all_of(row.begin(), row.end(), [](double size) { return size > 0.0; });
        if (!sound) stop(reader, check.keyword, check.message);
    }
    checkTops(reader, grid);
    checkPorosity(reader, grid);
    for (const ArrayCheck& check : RockChecks) {
        if (!noneAbove(grid.*check.array, LeastRock)) continue;
        if (check.keyword != "PORO")
            both(consoleOf(reader), "ALL VALUES OF {} ARE 0; CELLS THAT ARE TO STAY APART TAKE 1E-6",
                 check.keyword);
        stop(reader, check.keyword, check.message);
    }
}

}  // namespace kvr
