#pragma once

#include "model/grid.hpp"
#include "pressure/records/cell_state.hpp"

namespace kvr {

/// Mean pressure of many cells as the vectors FPR and RPR have it: by the pore volume that oil and gas fill,
///
///   sum(V (1 - Sw) p) / sum(V (1 - Sw)),
///
/// or by the whole pore volume where there are neither. In a water flood it is below the mean over the pore
/// volume, since the flooded part is the one of high pressure.
struct MeanPressure {
    double volume = 0.0, byVolume = 0.0;              // volumes, volumes times psia
    double hydrocarbons = 0.0, byHydrocarbons = 0.0;  // the same of oil and gas
};

inline void addPressure(const CellState& state, CellId cell, MeanPressure& mean) {
    const double volume = state.PoreVolume[cell];
    const double hydrocarbons = volume * (1.0 - state.Sw[cell]);
    mean.volume += volume;
    mean.byVolume += volume * state.Pressure[cell];
    mean.hydrocarbons += hydrocarbons;
    mean.byHydrocarbons += hydrocarbons * state.Pressure[cell];
}

/// psia; 0 of no cells at all.
inline double meanOf(const MeanPressure& mean) {
    constexpr double LeastShare = 1e-10;  // of the pore volume: less is water with rounding
    if (mean.hydrocarbons > LeastShare * mean.volume) return mean.byHydrocarbons / mean.hydrocarbons;
    return mean.volume > 0.0 ? mean.byVolume / mean.volume : 0.0;
}

/// Over the active cells, psia.
inline double fieldPressure(const GridModel& grid, const CellState& state) {
    MeanPressure mean;
    for (CellId cell = 1; cell <= grid.NCELLS; ++cell)
        if (grid.Active[cell] != 0) addPressure(state, cell, mean);
    return meanOf(mean);
}

}  // namespace kvr
