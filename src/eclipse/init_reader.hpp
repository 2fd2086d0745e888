#pragma once

#include "base/console.hpp"
#include "base/units.hpp"
#include "deck/options.hpp"
#include "eclipse/records.hpp"
#include "model/connections.hpp"
#include "model/grid.hpp"

#include <array>
#include <string_view>

namespace kvr {

/// Sums of the absolute differences between what was held and what a file brought, beyond single precision.
struct InitDifferences {
    std::array<double, 3> trans{};  // rb cp/(day psi), along x, y, z
    double poreVolume = 0.0;        // internal volume
};

/// Takes sizes, permeabilities, net-to-gross, porosity, pore volume and transmissibilities from an open
/// .INIT file: arrays of every cell as they are, arrays of the active cells spread over them. The header is
/// compared with the model; differences are told. A model without cells gets them from the header, provided
/// that the file has pore volumes for as many, and nothing else is read. PORV is filled from PORO, NTG and
/// BulkVolume first where the model has none, with 0 in inactive cells. Where PORV of the file is not that
/// product, PORO becomes what makes it so. Values that no such quantity can have are left out and told.
ReadResult readInitBlocks(const Console& console, const RunOptions& options, const UnitSystem& units,
                          RecordReader& reader, GridModel& grid, ConnectionTable& connections,
                          InitDifferences& differences);

/// The same for the .INIT file of an outside run in the working folder; then the transmissibilities of the
/// low faces from the neighbours, and the sums of the differences. A missing file is told.
void input_INIT_TRANS(const Console& console, const RunOptions& options, const UnitSystem& units,
                      std::string_view header, GridModel& grid, ConnectionTable& connections);

}  // namespace kvr
