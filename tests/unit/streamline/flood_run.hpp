#pragma once

#include "flow_samples.hpp"
#include "line_samples.hpp"
#include "streamline/streamline_step.hpp"

#include <omp.h>

namespace kvr::samples {

/// A flow of `plainFlood` fluids as one run, ready for steps of `step` days.
struct FloodRun {
    Simulation s;
    QuietConsole quiet;

    FloodRun(const Flow& flow, int lines, double step, int threads = 1) {
        omp_set_num_threads(threads);
        s.console = quiet.console;
        s.options = flow.options;
        s.options.cfl = 0.8;
        s.options.minCflStep = 0.01;
        s.options.requestedLines = lines;
        s.options.lineCompressibility = false;
        s.options.outputKvrView = "No";
        s.grid = flow.grid;
        s.connections = flow.connections;
        s.velocity = flow.velocity;
        s.wells = flow.wells;
        s.tags = flow.tags;
        s.fluids = plainFlood();
        s.state = flow.state;
        for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell) {
            s.grid.SATNUM[cell] = 1;
            s.state.Pressure[cell] = 3000.0;
            s.state.Sw[cell] = 0.2;
            s.state.So[cell] = 0.8;
            s.state.MuW[cell] = 0.5;
            s.state.MuO[cell] = 2.0;
            // Pore volumes are recomputed behind every transport.
            s.grid.BulkVolume[cell] = s.state.PoreVolume[cell] / (s.grid.NTG[cell] * s.grid.PORO[cell]);
        }
        for (Well& well : s.wells.wells)
            if (isInjector(well)) well.connections[0].ConnQw = well.connections[0].reservoirRate;
        s.timeLevel = s.state;
        s.clock.endTime = 1000.0;
        s.clock.dt = s.clock.workDt = step;
        allocateStreamlines(s);
        omp_set_num_threads(1);
    }
    void advance(int steps) {
        for (int k = 0; k < steps; ++k) {
            s.pressure.moved = {};  // as a pressure step leaves it
            StreamlineStep(s, 0, 0, s.clock.endTime - s.clock.time - s.clock.dt, 1.0);
            s.clock.time += s.clock.dt;
        }
    }
    [[nodiscard]] double waterGained() const {
        double sum = 0.0;
        for (CellId cell = 1; cell <= s.grid.NCELLS; ++cell)
            sum += (s.state.Sw[cell] - 0.2) * s.state.PoreVolume[cell];
        return sum;
    }
};

}  // namespace kvr::samples
