#pragma once

#include "model/conditioning.hpp"
#include "run/records/simulation.hpp"
#include "unit/model/small_grids.hpp"
#include "unit/scratch_folder.hpp"

#include <string>
#include <vector>

namespace kvr {

/// A run whose files go to a scratch folder under the name CASE, with the binary output on.
struct SmallCase {
    SmallCase(int nx, int ny, int nz) {
        run.console = Console{nullptr, nullptr, nullptr};
        run.options.dataFileBase = folder.path + "CASE";
        run.options.workingFolder = folder.path;
        run.options.headerName = "CASE";
        run.options.outputEclipse = "Yes";
        run.options.useNewtran = false;
        run.options.startDay = 3;
        run.options.startMonth = 2;
        run.options.startYear = 2001;
        run.clock.day = 3;
        run.clock.month = 2;
        run.clock.year = 2001;
        run.grid = uniformBlocks(nx, ny, nz, 100.0, 100.0, 20.0);
        CALCTRANS_STATICGEOPART(run.console, run.options, run.units, run.grid, run.connections);
        allocateCellState(run.grid.NCELLS, 0, run.state);
        for (CellId c = 1; c <= run.grid.NCELLS; ++c) {
            run.state.Pressure[c] = 3000.0 + c;
            run.state.Sw[c] = 0.25;
            run.state.So[c] = 0.75;
        }
    }

    /// A well with one completion in each of the given cells.
    Well& addWell(const std::string& name, const std::string& kind, const std::vector<CellId>& cells = {}) {
        Well well;
        well.WellName = name;
        well.WellKind = kind;
        for (const CellId cell : cells) {
            WellConnection connection;
            connection.ConnCell = cell;
            well.connections.push_back(connection);
        }
        run.wells.wells.push_back(well);
        run.eclipse.wellCount = run.wells.wells.size();
        return run.wells.wells.back();
    }

    [[nodiscard]] std::string path(const std::string& extension) const {
        return folder.path + "CASE" + extension;
    }
    [[nodiscard]] std::size_t size(const std::string& extension) const {
        return folder.read("CASE" + extension).size();
    }

    ScratchFolder folder;
    Simulation run;
};

}  // namespace kvr
