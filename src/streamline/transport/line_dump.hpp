#pragma once

#include "base/console.hpp"
#include "streamline/transport/line_matrix.hpp"

#include <string>

namespace kvr {

/// Where the matrices of implicit lines are dumped, for those who look into the solver.
struct LineDump {
    const Console* console = nullptr;
    std::string folder;  // prefix of the file name
    double time = 0.0;   // simulated days at the start of the step
};

/// The system of one Newton iteration in "SMatrix_T_<time>_dt_<dt>_ite_<iteration>.xls": a line per row,
/// every entry and then the right-hand side, separated by tabs. Lines of one step overwrite each other's
/// files where time, dt and iteration agree. `elapsed` counts from the start of the step, days. A file that
/// cannot be opened stops the run.
void dumpLineMatrix(const LineDump& dump, double elapsed, double dt, int iteration, const LineMatrix& matrix);

}  // namespace kvr
