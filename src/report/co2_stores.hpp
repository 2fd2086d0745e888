#pragma once

#include "run/records/simulation.hpp"

namespace kvr {

/// CO2 of a cell or of the field by where it is, surface volume of gas in internal units.
///   trapped = PV min(Sg, CriticalSg) / Bg
/// is the free CO2 that the saturation table does not let move; free CO2 is both of the first two.
struct Co2Stores {
    double mobile = 0.0, trapped = 0.0;
    double dissolved = 0.0;
    double solid = 0.0;
};
inline double freeOf(const Co2Stores& stores) {
    return stores.mobile + stores.trapped;
}
inline double totalOf(const Co2Stores& stores) {
    return freeOf(stores) + stores.dissolved + stores.solid;
}

/// Makes the store of solid CO2 of a run with CO2MBM, empty of it; stops with "Error :: Rs - Depth table"
/// where there is no memory for it.
void allocateStores(const Console& console, const RunOptions& options, CellId count, CellState& state);

/// Stores of a cell with what it holds beyond its saturations (`carried`, empty: nothing).
Co2Stores storesOfCell(const GridModel& grid, const FluidTables& tables, const CellState& state,
                       const CellAmounts& carried, CellId cell);
/// The same of the field.
Co2Stores sumStores(const Simulation& simulation);

/// A row of the present time in Mass_Balance_CO2.out and KVR_CO2_Stores.csv, behind the one of the balance;
/// nothing without CO2MBM.
void reportStores(const Simulation& simulation);

/// A zone of the present time in the maps of the stores, of K_x and of porosity; files are made anew before
/// the first row of the balance. Nothing without CO2MBM.
void addStoreZones(const Simulation& simulation);

}  // namespace kvr
