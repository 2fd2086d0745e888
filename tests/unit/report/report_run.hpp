#pragma once

#include "run/records/simulation.hpp"
#include "unit/report/box_model.hpp"
#include "unit/report/plot_file_parser.hpp"
#include "unit/scratch_folder.hpp"

#include <filesystem>

namespace kvr {

/// A small run, 4 by 3 by 2 cells, with its output set open in a scratch folder.
struct ReportRun {
    ReportRun() {
        run.console = {nullptr, nullptr, nullptr};
        openOutputs(folder.path, run.outputs, run.console);
        run.grid = boxModel(4, 3, 2);
        allocateCellState(run.grid.NCELLS, 2, run.state);
        run.options.outputPlt = "Yes";
        run.options.outputXls = "Yes";
        for (double& value : run.state.Pressure.slots) value = 3000.0;
        for (double& value : run.state.Sw.slots) value = 0.3;
        for (double& value : run.state.So.slots) value = 0.7;
    }
    ~ReportRun() {
        closeOutputs(run.outputs);
        closeLog(run.outputs, run.console);
    }
    [[nodiscard]] std::vector<PlotZone> zones(const std::string& name) const {
        return PlotFileParser(folder.read(name)).zones();
    }
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(folder.path + name);
    }
    [[nodiscard]] std::string logText() const {
        flushOutputs(run.outputs);
        return folder.read("KVR_dbg.out");
    }
    ScratchFolder folder;
    Simulation run;
};

}  // namespace kvr
