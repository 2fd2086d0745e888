#pragma once

#include "base/units.hpp"
#include "report/balance_record.hpp"
#include "report/component_balance.hpp"

#include <string>

namespace kvr {

/// Head of KVR_Run_SweepVolume.out: the labels between bars.
std::string balanceTableHead();

/// One row of it, in stb, Mscf, rb, psia and days.
std::string balanceTableRow(const UnitSystem& units, const BalanceRecord& record, const BalanceRow& row,
                            const ComponentSums& components = {});

/// One row of KVR_Excl_mbe.xls: time, pore volumes injected, the three errors and the share of the run
/// that is done, the last four in percent.
std::string balanceSheetRow(const BalanceRow& row, double endTime);

}  // namespace kvr
