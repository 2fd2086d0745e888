#pragma once

#include "matching/prior_field.hpp"
#include "matching/secant_rows.hpp"
#include "matching/sensitivity_rows.hpp"

#include <cstddef>
#include <vector>

namespace kvr {

/// Data with their errors.
struct ErrorData {
    SensitivityRows rows;
    std::vector<double> misfit;      // of each row, observed minus calculated, unit of the datum
    std::vector<double> error;       // deviation of each row, unit of the datum; above 0
    std::vector<std::size_t> datum;  // of each row, its place in the list of all data, rows or none
};

/// One step toward the most probable field.
struct ProbableStep {
    std::vector<double> error;  // of each row; those of the histories, or larger ones that hold the step back
    SecantTerms shown;          // beside the rows
    double pull = 1.0;          // share of the pull to the starting field
};

/// What the rows, with what runs have shown, foretell of the data for a change of ln k.
std::vector<double> foretold(const SensitivityRows& rows, const SecantTerms& shown,
                             const CellArray<double>& change);

/// The change x of ln k from the starting field that a step toward the most probable one behind the data
/// leads to, from the present field, which lies x_now from the starting one. With G the rows, linear about
/// the present field, d = x - x_now and s the share of the pull to the starting field, x is the least of
///   |(misfit - G d) / error|^2 + s x' C^-1 x + (1 - s) d' C^-1 d,
/// the errors being those of a step that is held back: squares 1 / s of what they are for the histories
/// themselves. s = 1 is the Gauss-Newton step (Tarantola, Inverse Problem Theory, 2005, 3.51), with s < 1 the
/// length of the step counts too (Levenberg-Marquardt). It is
///   d = C G' (G C G' + errors^2)^-1 (misfit + s G x_now) - s x_now,
/// a dense matrix of the data. False where that cannot be factorised: x is x_now then.
bool mostProbableChange(const PriorCovariance& prior, const ErrorData& data, const ProbableStep& step,
                        const CellArray<double>& present, CellArray<double>& change);

}  // namespace kvr
