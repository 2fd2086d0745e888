// gas_drive_row CELLS STEP: a row of methane, butane and decane behind 0.4 pore volumes of gas
// (tests/support/gas_drive.py), taken by the IMPES step of components in steps of STEP days; prints the
// composition of every cell.

#include "unit/pressure/component_row.hpp"

#include <cstdio>
#include <cstdlib>

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) return 2;
    const auto cells = static_cast<kvr::CellId>(std::atoi(arguments[1]));
    const double dt = std::atof(arguments[2]);
    kvr::Row row(kvr::threeComponents(), cells, 1000.0, 0.0);
    // Rock so permeable that all of it is at one pressure, as in the script.
    for (double& trans : row.connections.Trans.slots) trans *= 100.0;
    row.fill({0.2, 0.3, 0.5}, 1500.0);
    row.drive({0.9, 0.1, 0.0}, 0.002, 1500.0);
    for (double time = 0.0; time < 200.0 - 1e-9; time += dt)
        if (!row.step(dt)) return 1;
    for (kvr::CellId c = 1; c <= cells; ++c)
        std::printf("%.12g %.12g %.12g %.12g\n", row.stage.cells.z(c, 1), row.stage.cells.z(c, 2),
                    row.stage.cells.z(c, 3), row.state.Sg[c]);
}
