#pragma once

#include "matching/prior_field.hpp"
#include "matching/sensitivity_rows.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

/// Data with their errors.
struct ErrorData {
    SensitivityRows rows;
    std::vector<double> misfit;  // of each row, observed minus calculated, unit of the datum
    std::vector<double> error;   // deviation of each row, unit of the datum; above 0
};

/// The change x of ln k from the starting field that is most probable behind the data,
///   least of  |(d - G x) / error|^2 + x' C^-1 x,   d = misfit + G x_now,
/// with G the rows, linear about the present field, which lies x_now from the starting one (Gauss-Newton
/// steps of this sum are those of Tarantola, Inverse Problem Theory, 2005, 3.51). It is
///   x = C G' (G C G' + errors^2)^-1 d,
/// a dense matrix of the data. False where that cannot be factorised: x is x_now then.
bool mostProbableChange(const PriorCovariance& prior, const ErrorData& data, const CellArray<double>& present,
                        CellArray<double>& change);

}  // namespace kvr
