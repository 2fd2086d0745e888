#pragma once

#include "base/units.hpp"
#include "deck/options.hpp"
#include "report/balance_record.hpp"

namespace kvr {

/// $ of an amount in internal volume, not discounted:
///   oil [bbl] * price.oil + water [bbl] * price.water + gas [Mscf] * price.gas
/// Production and injection have prices of their own and count with their magnitude.
inline double valueOf(const UnitSystem& units, const PhaseAmounts& amount, const PhasePrices& price) {
    return toBarrels(units, amount.oil) * price.oil + toBarrels(units, amount.water) * price.water +
           toMscf(units, amount.gas) * price.gas;
}

}  // namespace kvr
